// Fuzz target of the Bayer demosaic: keliCFAToRGB at 8u and 16u, with the
// frame's size, the region, both strides and the grid from the input.
//
// The call takes the whole frame (pSrc at its pixel (0, 0), srcSize, srcStep)
// and a region of it, and writes the destination pixel of each frame position
// of the region that lies inside the frame, the destination's first pixel
// standing for the region's corner (srcRoi.x, srcRoi.y).  The region comes
// mostly from inside the frame, else reaches past it, starts on its last
// column or row or past it, has a width or height of 0, negative or huge, or
// starts a few pixels before the frame (a region left to the implementation:
// this one cuts it to the frame, and the target holds it to that).  So the
// destination is a buffer for the frame positions the region covers inside
// the frame, its first row and column those of the cut region; the pointer
// the call gets stands back from it by the columns and rows cut off.  Neither
// stride is tested: either takes any value the harness draws.  The frame's
// size is refused below 2, with empty buffers then; the grid is refused
// outside 0 .. 3.  The status is held to the order of the tests: null
// pointers, then the size, then the grid.
#include "harness.h"

namespace {

using kfz::Buffer;
using kfz::Input;

inline int clampInt(std::int64_t v) { return static_cast<int>(std::clamp<std::int64_t>(v, INT_MIN, INT_MAX)); }

// A start along one axis of a frame of n (at least 1): inside it mostly, else
// its last sample, just past it, far past it, or a few samples before it.
int drawStart(Input& in, int n)
{
    switch (in.u8() % 16) {
    case 0: return 0;
    case 1: return n - 1;
    case 2: return n - 2;
    case 3: return n;
    case 4: return clampInt(std::int64_t{n} + in.u8());
    case 5: return INT_MAX - in.u8();
    case 6: return -1 - in.u8() % 8;
    default: return in.below(n);
    }
}

// A length from `start`: up to the frame's end mostly, else exactly to it,
// past it, 0, negative or huge.
int drawLength(Input& in, int start, int n)
{
    const std::int64_t left = std::int64_t{n} - start;
    switch (in.u8() % 16) {
    case 0: return 0;
    case 1: return -1 - in.u8();
    case 2: return INT_MIN;
    case 3: return INT_MAX;
    case 4: return 1;
    case 5: return left > 0 ? clampInt(left) : 1;
    case 6: return clampInt(std::max<std::int64_t>(left, 0) + 1 + in.u8());
    default: return left > 0 ? 1 + in.below(static_cast<int>(std::min<std::int64_t>(left, 65535))) : 1 + in.u8() % 8;
    }
}

KelBayerGrid drawGrid(Input& in)
{
    switch (in.u8() % 16) {
    case 13: return 4 + in.u8();
    case 14: return -1 - in.u8();
    case 15: return in.anyInt();
    default: return in.u8() % 4;
    }
}

template <typename T>
using Demosaic = KelResult (*)(const T*, KelImageRect, KelImageSize, int, T*, int, KelBayerGrid);

template <typename T> void cfa(Input& in, const char* name, Demosaic<T> f)
{
    constexpr int sb = sizeof(T);
    int w = in.dimension(), h = in.dimension();
    const bool refused = w < 2 || h < 2;
    if (!refused) kfz::shrink(w, h, 4 * sb);  // the frame, and a destination of at most three samples a pixel of it
    KelImageRect roi{};
    roi.x = drawStart(in, std::max(w, 1));
    roi.y = drawStart(in, std::max(h, 1));
    roi.width = drawLength(in, roi.x, w);
    roi.height = drawLength(in, roi.y, h);
    const KelBayerGrid grid = drawGrid(in);

    // The region cut to the frame: columns x0 .. x1 - 1, rows y0 .. y1 - 1.
    const std::int64_t x0 = std::max(roi.x, 0), y0 = std::max(roi.y, 0);
    const std::int64_t x1 = std::min<std::int64_t>(static_cast<std::int64_t>(roi.x) + roi.width, w);
    const std::int64_t y1 = std::min<std::int64_t>(static_cast<std::int64_t>(roi.y) + roi.height, h);
    const bool written = !refused && x0 < x1 && y0 < y1;

    kfz::record() = kfz::CallRecord{};
    kfz::record().name = name;
    kfz::record().size = {w, h};
    const int srcStep = refused ? in.anyInt() / sb * sb : kfz::drawStride(in, std::int64_t{w} * sb, h, sb, false);
    Buffer src(refused ? 0 : std::int64_t{w} * sb, 0, refused ? 0 : h, srcStep, in.oneIn(4));
    // The destination holds the rows of the cut region, row 0 of the buffer
    // being the region's row 0 (frame row roi.y): rows y0 - roi.y ..
    // y1 - roi.y - 1, each from the cut region's first column.
    const std::int64_t rowBytes = written ? 3 * sb * (x1 - x0) : 0;
    const int first = written ? static_cast<int>(y0 - roi.y) : 0, end = written ? static_cast<int>(y1 - roi.y) : 0;
    int dstStep = written ? kfz::drawStride(in, rowBytes, end, sb, false) : in.anyInt() / sb * sb;
    Buffer dst(rowBytes, first, end, dstStep, in.oneIn(4));
    const bool nullSrc = in.oneIn(24), nullDst = in.oneIn(24);
    // What the call gets stands back from the buffer's first column by the
    // columns cut off at the left.
    T* dstArg = reinterpret_cast<T*>(dst.origin() - (written ? 3 * sb * (x0 - roi.x) : 0));
    std::snprintf(kfz::record().strides, sizeof kfz::record().strides, "src step %d, dst step %d", srcStep, dstStep);
    std::snprintf(kfz::record().detail, sizeof kfz::record().detail, "roi %d, %d, %d x %d, grid %d", roi.x, roi.y,
                  roi.width, roi.height, grid);
    src.fill(in);
    dst.fill(in);
    src.snapshot();
    dst.snapshot();
    const KelResult status = f(nullSrc ? nullptr : reinterpret_cast<const T*>(src.origin()), roi, KelImageSize{w, h},
                               srcStep, nullDst ? nullptr : dstArg, dstStep, grid);
    kfz::record().status = status;
    const KelResult expected = nullSrc || nullDst ? kelErrNullPointer
                               : refused          ? kelErrSize
                               : grid < 0 || grid > 3 ? kelErrBadArg
                                                      : kelOk;
    if (status != expected) kfz::fail("a status other than the argument tests give");
    if (src.changed()) kfz::fail("the source changed");
    if (status != kelOk || !written) {
        if (dst.changed()) kfz::fail("a call that did nothing changed its destination");
        return;
    }
    const std::int64_t at = dst.changedOutside(rowBytes, first, end);
    if (at != INT64_MIN) {
        std::snprintf(kfz::record().detail, sizeof kfz::record().detail,
                      "roi %d, %d, %d x %d, grid %d: byte %lld from row 0 of the cut region", roi.x, roi.y, roi.width,
                      roi.height, grid, static_cast<long long>(at));
        kfz::fail("write outside the region's pixels in the frame");
    }
}

const kfz::Member kMembers[] = {
    {"keliCFAToRGB_8u_C1C3R", [](Input& in) { cfa<Kel8u>(in, "keliCFAToRGB_8u_C1C3R", keliCFAToRGB_8u_C1C3R); }},
    {"keliCFAToRGB_16u_C1C3R", [](Input& in) { cfa<Kel16u>(in, "keliCFAToRGB_16u_C1C3R", keliCFAToRGB_16u_C1C3R); }},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}
