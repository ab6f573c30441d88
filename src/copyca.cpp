// One-channel 8-bit copy and fill, row by row; the copy goes forward through
// each row, so an overlapping copy gives the bytes of a forward byte loop.
#include <cstdint>
#include <cstring>

#include "callframe.h"

using namespace kel;

namespace {

void copyRowForward(Kel8u* dst, const Kel8u* src, int width);

} // namespace

extern "C" {

KEL_API KelResult keliCopy_8u_C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    forEachRow(roiSize.height,
               [&](int y) { copyRowForward(rowAt(pDst, dstStep, y), rowAt(pSrc, srcStep, y), roiSize.width); });
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

// A forward byte copy; rows that do not overlap go as one block move, which
// gives the same bytes.
void copyRowForward(Kel8u* dst, const Kel8u* src, int width)
{
    const auto d = reinterpret_cast<std::uintptr_t>(dst), s = reinterpret_cast<std::uintptr_t>(src);
    const auto n = static_cast<std::uintptr_t>(width);
    if (d + n <= s || s + n <= d) {
        std::memcpy(dst, src, n);
        return;
    }
    for (int x = 0; x < width; ++x) dst[x] = src[x];
}

} // namespace
