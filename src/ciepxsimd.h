// Vector rows of the four Lab conversions, byte-identical to the extended
// kernels: the arithmetic in doubles in the extended kernels' order, each
// result taken from the doubles only where a derived bound shows that the
// extended value rounds or truncates the same way (the derivations are in
// ciepxsimd.cpp); a pixel it cannot decide is converted by the extended
// arithmetic.  Chosen once a call for the processor at hand.
#pragma once

#include <cstdint>

#include "kelcc.h"

namespace kel::lab {

// Converts whole vector steps from the start of the row, adds to *refused the
// pixels of them it handed to the extended conversion, and returns the pixels
// it wrote; the caller's scalar kernel finishes the row.
template <typename Src, typename Dst>
using LabRow = int (*)(const Src* src, Dst* dst, int width, std::int64_t* refused);

// Null in a build without SIMD.
LabRow<Kel8u, Kel8u> chooseBGRToLabRow8u();
LabRow<Kel8u, Kel16u> chooseBGRToLabRow8u16u();
LabRow<Kel8u, Kel8u> chooseLabToBGRRow8u();
LabRow<Kel16u, Kel8u> chooseLabToBGRRow16u8u();

// The extended conversion (ciepx.cpp, compiled for the baseline) of the
// pixels of src whose bit is set in `which` (bit i: pixel i), written to the
// same pixels of out, three samples a pixel.
void bgrToLabPixels8u(const Kel8u* src, Kel8u* out, std::uint32_t which);
void bgrToLabPixels8u16u(const Kel8u* src, Kel16u* out, std::uint32_t which);
void labToBGRPixels8u(const Kel8u* src, Kel8u* out, std::uint32_t which);
void labToBGRPixels16u8u(const Kel16u* src, Kel8u* out, std::uint32_t which);

// The vector rows' power y^p (p the double holding the float nearest 1/3)
// for y in [2^-8, 2), one lane at a time on the chosen target: for the
// tests of its error bound.  Writes count results; count is at most 4096.
void thirdPowerForTest(const double* y, double* out, int count);

} // namespace kel::lab
