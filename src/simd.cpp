// The targets the SIMD kernels were compiled for, as the tests need to know.
#include "simd.h"

#if KELCC_SIMD
#include <hwy/highway.h>
#endif

namespace kel {

std::int64_t simdTargetsBuilt()
{
#if KELCC_SIMD
    return HWY_TARGETS;
#else
    return 0;
#endif
}

} // namespace kel
