// Windows: the runtime's _strtod_l with a "C" locale made once per process.
#include "platform/ClassicNumbers.h"

#include <clocale>
#include <cstdlib>
#include <locale.h>

namespace {
_locale_t classicLocale() {
  static const _locale_t locale = _create_locale(LC_NUMERIC, "C");
  return locale;
}
} // namespace

double classicStrtod(const char *text, char **end) {
  const _locale_t locale = classicLocale();
  return locale != nullptr ? _strtod_l(text, end, locale) : std::strtod(text, end);
}
