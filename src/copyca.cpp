// One-channel 8-bit copy and fill, row by row; the copy goes forward through
// each row, so an overlapping copy gives the bytes of a forward byte loop.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "callframe.h"

using namespace kel;

namespace {

void copyForward(Kel8u* dst, const Kel8u* src, std::size_t bytes);

} // namespace

extern "C" {

KEL_API KelResult keliCopy_8u_C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    const auto width = static_cast<std::size_t>(roiSize.width);
    if (srcStep == roiSize.width && dstStep == roiSize.width) {
        // Compact rows follow one another: the forward copy of the whole
        // block is the forward copy of each row in turn.
        copyForward(pDst, pSrc, width * static_cast<std::size_t>(roiSize.height));
        return kelOk;
    }
    forEachRow(roiSize.height, [&](int y) { copyForward(rowAt(pDst, dstStep, y), rowAt(pSrc, srcStep, y), width); });
    return kelOk;
}

KEL_API KelResult keliSet_8u_C1R(Kel8u value, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pDst))             return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    forEachRow(roiSize.height,
               [&](int y) { std::memset(rowAt(pDst, dstStep, y), value, static_cast<std::size_t>(roiSize.width)); });
    return kelOk;
}

} // extern "C"

// ---- row kernel -------------------------------------------------------------

namespace {

// A forward byte copy; bytes that do not overlap go as one block move, which
// gives the same bytes.
void copyForward(Kel8u* dst, const Kel8u* src, std::size_t bytes)
{
    const auto d = reinterpret_cast<std::uintptr_t>(dst), s = reinterpret_cast<std::uintptr_t>(src);
    if (d + bytes <= s || s + bytes <= d) {
        std::memcpy(dst, src, bytes);
        return;
    }
    for (std::size_t x = 0; x < bytes; ++x) dst[x] = src[x];
}

} // namespace
