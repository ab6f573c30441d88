// Counting the pixels a fast path hands to the extended kernels.  Only a test
// build counts (KELCC_COUNT_FALLBACKS); in the released library the tally is
// empty and costs nothing, so the library keeps no state and no atomics.
#pragma once

#include <cstdint>

#if KELCC_COUNT_FALLBACKS
#include <atomic>
#endif

namespace kel {

#if KELCC_COUNT_FALLBACKS

// The calling thread's count from its last call that kept a tally.
std::int64_t& lastCallFallbacks();

// One call's count, summed over its rows (which may run on several threads),
// published to the calling thread when the call ends.
class FallbackTally {
public:
    FallbackTally() = default;
    FallbackTally(const FallbackTally&) = delete;
    FallbackTally& operator=(const FallbackTally&) = delete;
    ~FallbackTally() { lastCallFallbacks() = count_.load(std::memory_order_relaxed); }
    void add(std::int64_t pixels) { count_.fetch_add(pixels, std::memory_order_relaxed); }

private:
    std::atomic<std::int64_t> count_{0};
};

#else

class FallbackTally {
public:
    void add(std::int64_t) {}
};

#endif

} // namespace kel
