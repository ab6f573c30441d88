// The row kernels of the Bayer demosaic's interior: the scalar kernels of
// bayer.cpp, the reference, and the vector kernels beside them, chosen once a
// call for the processor at hand.
#pragma once

#include "kelcc.h"

namespace kel::bayer {

enum class Colour { Red, Green, Blue };

// One interior row of `width` pixels from the site at c (frame rows `step`
// samples apart; two rows and two columns on each side readable), to R, G, B
// pixels at dst.  Sites alternate from the first: green or not; the row's
// non-green colour is red or blue.
template <typename Sample>
using RowKernel = void (*)(const Sample* c, int step, Sample* dst, int width);

template <typename Sample, bool FirstGreen, bool RowIsRed>
void innerBayerRow(const Sample* c, int step, Sample* dst, int width);

// The fastest kernel this processor runs for the row kind, the same samples
// as the scalar kernel; the scalar kernel itself in a build without SIMD.
RowKernel<Kel8u> chooseInteriorRow8u(bool firstGreen, bool rowIsRed);
RowKernel<Kel16u> chooseInteriorRow16u(bool firstGreen, bool rowIsRed);

template <typename Sample>
inline RowKernel<Sample> chooseInteriorRow(bool firstGreen, bool rowIsRed)
{
    if constexpr (sizeof(Sample) == 1) return chooseInteriorRow8u(firstGreen, rowIsRed);
    else return chooseInteriorRow16u(firstGreen, rowIsRed);
}

} // namespace kel::bayer
