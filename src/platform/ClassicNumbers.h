// Number reading that ignores the host's locale. A host that calls setlocale
// (a French one writes "12,5") must not change how the configuration's
// "12.5" reads: files always use "." as the decimal point.
#pragma once

// Reads a decimal number as strtod does in the "C" locale: leading white
// space, a sign, digits with "." as the decimal point, an exponent. `end`
// (when not null) receives where reading stopped; at `text` when no number
// was found, and then 0 is returned.
double classicStrtod(const char *text, char **end);
