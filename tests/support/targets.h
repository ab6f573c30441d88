// Runs a test body once for every SIMD target the library was built for and
// this processor runs, with dispatch held to that target, then gives dispatch
// back to the processor's own choice.  For the internal tests (src/simd.h).
#pragma once

#include <cstdint>
#include <string>

#include "simd.h"

namespace kt {

#if KELCC_SIMD
// Puts dispatch back to the processor's choice however the body ends.
struct TargetRestore {
    TargetRestore() = default;
    TargetRestore(const TargetRestore&) = delete;
    TargetRestore& operator=(const TargetRestore&) = delete;
    ~TargetRestore() { hwy::SetSupportedTargetsForTest(0); }
};
#endif

// body(name) runs with dispatch on one target, named as Highway names it
// ("AVX3_DL", "AVX2", "SSSE3", ...); in a build without SIMD it runs once,
// named "scalar".
template <typename Body>
void forEachSimdTarget(const Body& body)
{
#if KELCC_SIMD
    const TargetRestore restore;
    const std::int64_t runnable = kel::simdTargetsBuilt() & hwy::SupportedTargets();
    for (std::int64_t rest = runnable; rest != 0; rest &= rest - 1) {
        const std::int64_t target = rest & -rest;
        hwy::SetSupportedTargetsForTest(target);
        body(std::string(hwy::TargetName(target)));
    }
#else
    body(std::string("scalar"));
#endif
}

} // namespace kt
