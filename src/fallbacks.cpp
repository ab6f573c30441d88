// The calling thread's fallback count of a test build.
#include "fallbacks.h"

#if KELCC_COUNT_FALLBACKS
namespace kel {

std::int64_t& lastCallFallbacks()
{
    thread_local std::int64_t count = 0;
    return count;
}

} // namespace kel
#endif
