// The overlap test of the full-resolution whole-vector kernels, compiled for
// the baseline: the row layers' choice of kernel, not a kernel.
#include "pairsimd.h"

#include <cstdint>

namespace kel {

bool inPlaceOrApart(const Kel8u* const src[], int srcPlanes, std::size_t srcBytes, Kel8u* const dst[], int dstPlanes,
                    std::size_t dstBytes)
{
    if (srcPlanes == 1 && dstPlanes == 1 && src[0] == dst[0] && srcBytes == dstBytes) return true;
    for (int s = 0; s < srcPlanes; ++s) {
        const auto source = reinterpret_cast<std::uintptr_t>(src[s]);
        for (int d = 0; d < dstPlanes; ++d) {
            const auto destination = reinterpret_cast<std::uintptr_t>(dst[d]);
            if (source < destination + dstBytes && destination < source + srcBytes) return false;
        }
    }
    return true;
}

} // namespace kel
