#pragma once

#include <string>

namespace velmora {

/// `value` with a fixed number of decimals, as printf's "%.Nf" writes it.
std::string fixedText(double value, int decimals);

/// `value` rounded to the nearest whole number, halves away from zero ("-0" never appears).
std::string wholeText(double value);

}  // namespace velmora
