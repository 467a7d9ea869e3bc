#pragma once

// Musical time as hosts report it, turned into what the core keeps.

namespace halvern {

// The bar start in quarter notes, rounded to the beat of the time signature: with
// u = denominator / 4 (1 when that is 0 or less), round(u * barStart) / u, halves up.
double RoundedBarStart(double barStart, int denominator);

} // namespace halvern
