// The vector row of the 8-bit pixel-order colour twist: the sums in floats,
// each output the extended kernel's wherever a derived bound cannot rule out
// a different rounding; chosen once a call for the processor at hand.
#pragma once

#include "twist.h"

namespace kel::twist {

// Null in a build without SIMD.
FastRow<Kel8u> chooseTwistRow8u();

// The scalar row (the extended type), which the vector row hands the pixels
// of any step it refuses.
void twistRowExact8u(const Kel8u* src, Kel8u* dst, std::int64_t count, const Kel32f* t);

// Whether all 12 entries of the matrix are finite (the vector row takes no
// other matrix).
bool matrixFinite(const Kel32f* t);

} // namespace kel::twist
