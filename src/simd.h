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
// a target has been chosen.  Choosing first, as that entry does, means the
// entry a row layer takes once per call is already the target's own kernel.
inline void detectSimdTargets()
{
    hwy::ChosenTarget& chosen = hwy::GetChosenTarget();
    if (!chosen.IsInitialized()) chosen.Update(hwy::SupportedTargets());
}
#endif

} // namespace kel
