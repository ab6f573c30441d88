// Row sharing across OpenMP threads: the one parallel region through which
// every row-sharing family runs its row kernel.
#pragma once

#include <cstdint>

#include "kelcore.h"

namespace kel {

// Images up to this many pixels (64 x 64) stay on the calling thread in the
// families that have a threshold.
inline constexpr std::int32_t kSerialPixels = 4096;

// width * height as the 32-bit product the threshold test compares; a product
// that wraps may come out small and run serially, which changes no byte.
inline std::int32_t pixelCount32(int width, int height)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height));
}

// Whether rows `step` apart, `length` long (in the same unit), keep clear of
// each other.  Destination rows that overlap (a step of 0 above all, which the
// members without step tests accept) are written by the calling thread alone:
// shared among a team, two threads would write the same bytes at once.
inline bool rowsApart(int step, std::int64_t length)
{
    const std::int64_t s = step;
    return (s < 0 ? -s : s) >= length;
}

// Runs row(y) once for every y in 0..height-1, the rows divided among a team
// of threads_omp_of_n_kel threads by a static schedule (one contiguous block
// each, walked upward).  With fork false the same region runs as a team of
// one on the calling thread.  Rows must be independent of each other.
template <typename RowFn>
inline void shareRows(int height, bool fork, const RowFn& row)
{
#pragma omp parallel num_threads(threads_omp_of_n_kel) if (fork)
    {
#pragma omp for schedule(static)
        for (int y = 0; y < height; ++y) row(y);
    }
}

// Families without a threshold: the region opens at every size (as a team of
// one where the destination rows overlap).
template <typename RowFn>
inline void shareRowsAlways(int height, bool apart, const RowFn& row)
{
    shareRows(height, apart, row);
}

// Families with a threshold: below 4097 pixels the rows run serially.
template <typename RowFn>
inline void shareRowsAboveThreshold(int width, int height, bool apart, const RowFn& row)
{
    shareRows(height, apart && pixelCount32(width, height) > kSerialPixels, row);
}

} // namespace kel
