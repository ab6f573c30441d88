// The SIMD layer's common ground: which targets the library was built for,
// and the processor detection that lets a row layer choose a kernel once.
#pragma once

#include <cstdint>

#if KELCC_SIMD
#include <hwy/targets.h>
#endif

namespace kel {

// Highway's target bits (HWY_SSSE3, HWY_AVX2, ...) of the kernels compiled
// into the library, before the processor's say; 0 in a build without SIMD.
std::int64_t simdTargetsBuilt();

#if KELCC_SIMD
// A dispatch table's first entry detects the processor on every call until
// some dispatch has run.  Detecting first means the entry a row layer takes
// once per call is already the target's own kernel.
inline void detectSimdTargets()
{
    if (!hwy::GetChosenTarget().IsInitialized()) hwy::SupportedTargets();
}
#endif

} // namespace kel
