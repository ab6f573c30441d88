// Aligned scratch blocks for the families that allocate.
#pragma once

#include "kelcc.h"

// Owns one kelsMalloc_* block and gives it back with kelsFree on every way out.
template <typename T>
class ScratchBlock {
public:
    explicit ScratchBlock(T* block) : block_(block) {}
    ~ScratchBlock() { kelsFree(block_); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;
    T* get() const { return block_; }
    explicit operator bool() const { return block_ != nullptr; }

private:
    T* block_;
};
