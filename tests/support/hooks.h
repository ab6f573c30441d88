// Allocator hooks for the tests: a log of what reaches i_malloc and i_free
// while a HookScope is open, with requests that can be refused.
#pragma once

#include <cstddef>
#include <vector>

#include "kelcc.h"

namespace kt {

// Request sizes, the addresses handed out (and the 32-aligned bases behind
// them) and the addresses freed.  `fail` refuses every request; `failAt`
// refuses request number failAt (from 1) alone; `offset` hands out addresses
// that far above a multiple of 32.
struct HookLog {
    std::vector<std::size_t> sizes;
    std::vector<void*> handedOut, bases, freed;
    bool fail = false;
    int failAt = 0;
    std::size_t offset = 0;

    std::size_t requests() const { return sizes.size(); }
};

// Installs the logging hooks for its lifetime and puts the previous ones back.
class HookScope {
public:
    explicit HookScope(HookLog& log);
    ~HookScope();
    HookScope(const HookScope&) = delete;
    HookScope& operator=(const HookScope&) = delete;

private:
    void* (*savedMalloc_)(std::size_t);
    void (*savedFree_)(void*);
};

} // namespace kt
