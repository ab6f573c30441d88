// The logging allocator hooks of hooks.h.
#include "support/hooks.h"

#include <algorithm>
#include <cstdlib>

namespace kt {

namespace {

HookLog* gLog = nullptr;

void* loggingMalloc(std::size_t size)
{
    gLog->sizes.push_back(size);
    if (gLog->fail || static_cast<int>(gLog->sizes.size()) == gLog->failAt) return nullptr;
    void* base = std::aligned_alloc(32, (size + gLog->offset + 31) / 32 * 32 + 32);
    void* raw = static_cast<char*>(base) + gLog->offset;
    gLog->bases.push_back(base);
    gLog->handedOut.push_back(raw);
    return raw;
}

// The base is found from the address handed out, whatever the offset is now.
void loggingFree(void* raw)
{
    gLog->freed.push_back(raw);
    const auto at = std::find(gLog->handedOut.begin(), gLog->handedOut.end(), raw);
    if (at != gLog->handedOut.end()) std::free(gLog->bases[static_cast<std::size_t>(at - gLog->handedOut.begin())]);
}

} // namespace

HookScope::HookScope(HookLog& log) : savedMalloc_(i_malloc), savedFree_(i_free)
{
    gLog = &log;
    i_malloc = loggingMalloc;
    i_free = loggingFree;
}

HookScope::~HookScope()
{
    i_malloc = savedMalloc_;
    i_free = savedFree_;
    gLog = nullptr;
}

} // namespace kt
