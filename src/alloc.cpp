// 32-byte aligned blocks on top of replaceable allocator hooks; the library's
// own scratch memory comes from here too.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "alloc.h"

extern "C" {

KEL_API void* (*i_malloc)(size_t size) = std::malloc;
KEL_API void* (*i_calloc)(size_t count, size_t size) = std::calloc;
KEL_API void* (*i_realloc)(void* ptr, size_t size) = std::realloc;
KEL_API void (*i_free)(void* ptr) = std::free;
KEL_API int i_version = 1;
KEL_API int i_min_version = 0;

} // extern "C"

namespace {

void* alignedBlock(std::int32_t len, std::int32_t elementSize);

} // namespace

extern "C" {

KEL_API Kel16s* kelsMalloc_16s(int len)
{
    return static_cast<Kel16s*>(alignedBlock(len, sizeof(Kel16s)));
}

KEL_API Kel16u* kelsMalloc_16u(int len)
{
    return static_cast<Kel16u*>(alignedBlock(len, sizeof(Kel16u)));
}

KEL_API Kel32f* kelsMalloc_32f(int len)
{
    return static_cast<Kel32f*>(alignedBlock(len, sizeof(Kel32f)));
}

KEL_API void kelsFree(void* ptr)
{
    if (ptr == nullptr) return;
    void* raw;
    std::memcpy(&raw, static_cast<const unsigned char*>(ptr) - sizeof(void*), sizeof(void*));
    i_free(raw);
}

} // extern "C"

// ---- the aligned block ------------------------------------------------------

namespace {

// The raw address is kept in the pointer-wide word just below the block; the
// margin covers that word, up to 31 bytes of alignment and one tail byte.
constexpr std::size_t kAlign = 32;
constexpr std::size_t kMargin = sizeof(void*) + (kAlign - 1) + 1;

void* alignedBlock(std::int32_t len, std::int32_t elementSize)
{
    if (len < 1) return nullptr;
    // The byte count is a 32-bit product; callers keep it below 2^31.
    const std::int32_t bytes = static_cast<std::int32_t>(static_cast<std::uint32_t>(len) *
                                                          static_cast<std::uint32_t>(elementSize));
    void* raw = i_malloc(static_cast<std::size_t>(static_cast<std::uint32_t>(bytes)) + kMargin);
    if (raw == nullptr) return nullptr;
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(raw);
    const std::uintptr_t block = (start + kMargin - 1) & ~static_cast<std::uintptr_t>(kAlign - 1);
    std::memcpy(reinterpret_cast<void*>(block - sizeof(void*)), &raw, sizeof(void*));
    return reinterpret_cast<void*>(block);
}

} // namespace
