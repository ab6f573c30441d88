// The vector kernel of the ordered dither: a run of samples in doubles, the
// arithmetic of ditherSampleFast (reduce.h) lane by lane, chosen once a call
// for the processor at hand.
#pragma once

#include "reduce.h"

namespace kel::reduce {

// The most lanes of doubles a vector holds on any target.
inline constexpr int kMaxRunLanes = 8;

// n samples, sample i against thresholds[i] with guards[i]; both arrays hold
// n + kMaxRunLanes entries.  Every sample is written; for each vector with a
// refused lane the index of its first sample is put in `refused`, and the
// count of them returned: the caller writes samples refused[j] to
// refused[j] + kMaxRunLanes - 1 (those below n) again in the extended type.
template <class T>
using DitherRun = int (*)(const typename T::Source* src, typename T::Destination* dst, int n,
                          const double* thresholds, const double* guards, const FastLevels& k, int* refused);

// The kernel for this processor; null in a build without SIMD.
template <class T>
DitherRun<T> chooseDitherRun();

} // namespace kel::reduce
