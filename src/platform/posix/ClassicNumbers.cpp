// POSIX: strtod_l with a "C" locale object made once per process.
#include "platform/ClassicNumbers.h"

#include <clocale>
#include <cstdlib>
#include <locale.h>

namespace {
locale_t classicLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return locale;
}
} // namespace

double classicStrtod(const char *text, char **end) {
  const locale_t locale = classicLocale();
  // newlocale("C") cannot fail short of memory; the plain strtod is then
  // the best there is.
  return locale != static_cast<locale_t>(nullptr) ? strtod_l(text, end, locale)
                                                  : std::strtod(text, end);
}
