// Runs a test body once for every SIMD target the library was built for and
// this processor runs, with dispatch held to that target, then gives dispatch
// back to the processor's own choice.  For the internal tests (src/simd.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <set>
#include <string>
#include <vector>

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

// The kernels `choose` gives with dispatch held to each target in turn, and
// how many targets ran: every target should have a kernel of its own.
struct ChosenKernels {
    int targets = 0;
    std::set<const void*> kernels;
    int distinct() const { return static_cast<int>(kernels.size()); }
};
template <typename Choose>
ChosenKernels chosenOnEveryTarget(const Choose& choose)
{
    ChosenKernels chosen;
    forEachSimdTarget([&](const std::string&) {
        chosen.kernels.insert(reinterpret_cast<const void*>(choose()));
        ++chosen.targets;
    });
    return chosen;
}

// Widths for comparing a vector kernel with its scalar kernel: every one up to
// 70 (all step remainders of 16, 32 and 64 pixels), wide rows with long tails,
// and a kernel's own extra widths (around the runs it works in).
inline std::vector<int> simdTestWidths(std::initializer_list<int> extra = {})
{
    std::vector<int> widths;
    for (int w = 0; w <= 70; ++w) widths.push_back(w);
    for (int w : {127, 128, 129, 1919, 1920, 4097}) widths.push_back(w);
    widths.insert(widths.end(), extra);
    return widths;
}

// Rows in a buffer of their own: `lead` guard bytes, rows `step` apart (step
// may exceed the row), 67 guard bytes after; every byte random at first.  Two
// copies written by two kernels compare whole, guards and padding included.
struct RandomRows {
    RandomRows(int rows, int step, int lead, std::mt19937& gen)
        : step(step), lead(lead), bytes(static_cast<std::size_t>(lead) + static_cast<std::size_t>(step) * rows + 67)
    {
        for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    }
    std::uint8_t* row(int y) { return bytes.data() + lead + static_cast<std::ptrdiff_t>(step) * y; }
    int step, lead;
    std::vector<std::uint8_t> bytes;
};

} // namespace kt
