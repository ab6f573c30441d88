// Bayer demosaic: one filtered sample a pixel to R, G, B, bilinear with
// reflection near the frame's edges and a gradient test for green inside.
#include "bayer.h"

#include <cstdint>

#include "callframe.h"

using namespace kel;
using namespace kel::bayer;

namespace {

// ---- the frame and its sites ----------------------------------------------------------------------------

// The colour of the cell (x & 1, y & 1) of each grid's tile, cells in the
// order (0,0), (1,0), (0,1), (1,1).
constexpr Colour kTiles[4][4] = {
    {Colour::Blue, Colour::Green, Colour::Green, Colour::Red},  // BGGR
    {Colour::Red, Colour::Green, Colour::Green, Colour::Blue},  // RGGB
    {Colour::Green, Colour::Blue, Colour::Red, Colour::Green},  // GBRG
    {Colour::Green, Colour::Red, Colour::Blue, Colour::Green},  // GRBG
};

Colour colourAt(KelBayerGrid grid, std::int64_t x, std::int64_t y)
{
    return kTiles[grid][(y & 1) * 2 + (x & 1)];
}

template <typename Sample>
struct Frame {
    const Sample* origin;
    int step;  // samples
    int width, height;
    const Sample* row(int y) const { return origin + static_cast<std::ptrdiff_t>(step) * y; }
};

template <typename Sample>
void myCFAToRGB(const Sample* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep, Sample* pDst, int dstStep,
                KelBayerGrid grid);

} // namespace

// ---- public functions -------------------------------------------------------------------------------------

KEL_API KelResult keliCFAToRGB_8u_C1C3R(const Kel8u* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep,
                                        Kel8u* pDst, int dstStep, KelBayerGrid grid)
{
    if (anyNull(pSrc, pDst))            return kelErrNullPointer;
    if (sizeBelow(srcSize, 2, 2))       return kelErrSize;
    if (grid < 0 || grid > 3)           return kelErrBadArg;
    myCFAToRGB(pSrc, srcRoi, srcSize, srcStep, pDst, dstStep, grid);
    return kelOk;
}

KEL_API KelResult keliCFAToRGB_16u_C1C3R(const Kel16u* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep,
                                         Kel16u* pDst, int dstStep, KelBayerGrid grid)
{
    if (anyNull(pSrc, pDst))            return kelErrNullPointer;
    if (sizeBelow(srcSize, 2, 2))       return kelErrSize;
    if (grid < 0 || grid > 3)           return kelErrBadArg;
    myCFAToRGB(pSrc, srcRoi, srcSize, elementStride<Kel16u>(srcStep), pDst, elementStride<Kel16u>(dstStep), grid);
    return kelOk;
}

// ---- row layer --------------------------------------------------------------------------------------------

namespace {

template <typename Sample>
void ownBayerBorder(const Frame<Sample>& frame, int x0, int y0, int x1, int y1, int roiX, int roiY, Sample* pDst,
                    int dstStep, KelBayerGrid grid);
template <typename Sample>
void ownBayerRect(const Frame<Sample>& frame, int x0, int y0, int x1, int y1, Sample* dst, int dstStep,
                  KelBayerGrid grid);

// The region cut to the frame on every side (a region the frame holds is cut
// only at the right and bottom), then the edge part, then the interior:
// columns 2 .. W - 3 of rows 2 .. H - 3.  Positions are worked out in 64
// bits, so no region, however placed, wraps.
template <typename Sample>
void myCFAToRGB(const Sample* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep, Sample* pDst, int dstStep,
                KelBayerGrid grid)
{
    const Frame<Sample> frame{pSrc, srcStep, srcSize.width, srcSize.height};
    const std::int64_t left = srcRoi.x, top = srcRoi.y;
    const std::int64_t right = left + srcRoi.width, bottom = top + srcRoi.height;  // one past
    const std::int64_t x0 = left > 0 ? left : 0, y0 = top > 0 ? top : 0;
    const std::int64_t x1 = right < frame.width ? right : frame.width, y1 = bottom < frame.height ? bottom : frame.height;
    if (x0 >= x1 || y0 >= y1) return;
    // The destination pixel of frame position (x0, y0).
    Sample* dst = pDst + static_cast<std::ptrdiff_t>(dstStep) * (y0 - top) + 3 * (x0 - left);
    ownBayerBorder(frame, static_cast<int>(x0), static_cast<int>(y0), static_cast<int>(x1), static_cast<int>(y1),
                   static_cast<int>(x0), static_cast<int>(y0), dst, dstStep, grid);
    const std::int64_t ix0 = x0 > 2 ? x0 : 2, iy0 = y0 > 2 ? y0 : 2;
    const std::int64_t ix1 = x1 < frame.width - 2 ? x1 : frame.width - 2, iy1 = y1 < frame.height - 2 ? y1 : frame.height - 2;
    if (ix0 >= ix1 || iy0 >= iy1) return;
    ownBayerRect(frame, static_cast<int>(ix0), static_cast<int>(iy0), static_cast<int>(ix1), static_cast<int>(iy1),
                 dst + static_cast<std::ptrdiff_t>(dstStep) * (iy0 - y0) + 3 * (ix0 - x0), dstStep, grid);
}

// ---- the edge part ----------------------------------------------------------------------------------------

// Reflection about the frame's edge sample: -1 reads 1, n reads n - 2.
inline int reflect(int i, int n)
{
    return i < 0 ? -i : (i >= n ? 2 * (n - 1) - i : i);
}

// A pixel of the two outermost rows or columns: bilinear, the neighbours
// beyond the frame reflected, green at a red or blue site the mean of four.
template <typename Sample>
void edgePixel(const Frame<Sample>& frame, int x, int y, KelBayerGrid grid, Sample* out)
{
    const auto N = [&](int dx, int dy) -> std::int32_t {
        return frame.row(reflect(y + dy, frame.height))[reflect(x + dx, frame.width)];
    };
    const Colour site = colourAt(grid, x, y);
    std::int32_t red, green, blue;
    if (site == Colour::Green) {
        green = N(0, 0);
        const std::int32_t along = (N(-1, 0) + N(1, 0) + 1) >> 1, across = (N(0, -1) + N(0, 1) + 1) >> 1;
        const bool rowIsRed = colourAt(grid, x + 1, y) == Colour::Red;
        red = rowIsRed ? along : across;
        blue = rowIsRed ? across : along;
    } else {
        const std::int32_t own = N(0, 0);
        const std::int32_t opposite = (N(-1, -1) + N(1, -1) + N(-1, 1) + N(1, 1) + 2) >> 2;
        green = (N(-1, 0) + N(1, 0) + N(0, -1) + N(0, 1) + 2) >> 2;
        red = site == Colour::Red ? own : opposite;
        blue = site == Colour::Red ? opposite : own;
    }
    out[0] = static_cast<Sample>(red);
    out[1] = static_cast<Sample>(green);
    out[2] = static_cast<Sample>(blue);
}

// The pixels of the region [x0, x1) x [y0, y1) that lie in the two outermost
// rows or columns of the frame, row by row; dst is frame position (dstX, dstY).
template <typename Sample>
void ownBayerBorder(const Frame<Sample>& frame, int x0, int y0, int x1, int y1, int dstX, int dstY, Sample* pDst,
                    int dstStep, KelBayerGrid grid)
{
    const int W = frame.width, H = frame.height;
    for (int y = y0; y < y1; ++y) {
        Sample* row = pDst + static_cast<std::ptrdiff_t>(dstStep) * (y - dstY);
        const bool edgeRow = y < 2 || y >= H - 2;
        for (int x = x0; x < x1; ++x) {
            if (edgeRow || x < 2 || x >= W - 2) edgePixel(frame, x, y, grid, row + 3 * static_cast<std::ptrdiff_t>(x - dstX));
            else x = W - 3;  // the interior's columns are the tile kernels'
        }
    }
}

// ---- the interior -----------------------------------------------------------------------------------------

// The tile kernel of the interior rectangle's first site: its rows alternate
// between the first row's kind and the other, and each row's pixels between
// its first site and the other, so no pixel tests its colour.
template <typename Sample>
void ownBayerRect(const Frame<Sample>& frame, int x0, int y0, int x1, int y1, Sample* dst, int dstStep,
                  KelBayerGrid grid)
{
    const Colour first = colourAt(grid, x0, y0), next = colourAt(grid, x0 + 1, y0);
    // The first row: is its first site green, is its non-green colour red.
    const bool firstGreen = first == Colour::Green;
    const bool firstRowRed = (firstGreen ? next : first) == Colour::Red;
    const RowKernel<Sample> rows[2] = {chooseInteriorRow<Sample>(firstGreen, firstRowRed),
                                       chooseInteriorRow<Sample>(!firstGreen, !firstRowRed)};
    for (int y = y0; y < y1; ++y) {
        rows[(y - y0) & 1](frame.row(y) + x0, frame.step, dst + static_cast<std::ptrdiff_t>(dstStep) * (y - y0),
                           x1 - x0);
    }
}

} // namespace

// ---- row kernels ------------------------------------------------------------------------------------------

namespace kel::bayer {

namespace {

// A green site: the row's colour from left and right, the column's from
// above and below.
template <typename Sample>
inline void greenSite(const Sample* c, int step, std::int32_t& along, std::int32_t& green, std::int32_t& across)
{
    green = c[0];
    along = (c[-1] + c[1] + 1) >> 1;
    across = (c[-step] + c[step] + 1) >> 1;
}

// A red or blue site: the opposite colour from the four diagonals, green
// along the direction of the smaller change in the site's own colour, from
// all four on a tie.
template <typename Sample>
inline void colourSite(const Sample* c, int step, std::int32_t& own, std::int32_t& green, std::int32_t& opposite)
{
    own = c[0];
    opposite = (c[-step - 1] + c[-step + 1] + c[step - 1] + c[step + 1] + 2) >> 2;
    const std::int32_t vertical = c[-2 * step] - c[2 * step], horizontal = c[-2] - c[2];
    const std::int32_t V = vertical < 0 ? -vertical : vertical, Hz = horizontal < 0 ? -horizontal : horizontal;
    if (V < Hz) green = (c[-step] + c[step] + 1) >> 1;
    else if (Hz < V) green = (c[-1] + c[1] + 1) >> 1;
    else green = (c[-1] + c[1] + c[-step] + c[step] + 2) >> 2;
}

template <typename Sample, bool RowIsRed>
inline void store(Sample* out, std::int32_t rowColour, std::int32_t green, std::int32_t otherColour)
{
    out[0] = static_cast<Sample>(RowIsRed ? rowColour : otherColour);
    out[1] = static_cast<Sample>(green);
    out[2] = static_cast<Sample>(RowIsRed ? otherColour : rowColour);
}

} // namespace

// Pixels in pairs of the first site's kind and the other; a last odd pixel
// is of the first kind.
template <typename Sample, bool FirstGreen, bool RowIsRed>
void innerBayerRow(const Sample* c, int step, Sample* dst, int width)
{
    const auto site = [&](bool green, const Sample* at, Sample* out) {
        std::int32_t rowColour, g, otherColour;
        if (green) greenSite(at, step, rowColour, g, otherColour);
        else colourSite(at, step, rowColour, g, otherColour);
        store<Sample, RowIsRed>(out, rowColour, g, otherColour);
    };
    int x = 0;
    for (; x + 2 <= width; x += 2) {
        site(FirstGreen, c + x, dst + 3 * x);
        site(!FirstGreen, c + x + 1, dst + 3 * x + 3);
    }
    if (x < width) site(FirstGreen, c + x, dst + 3 * x);
}

#define KEL_BAYER_ROWS(Sample)                                                 \
    template void innerBayerRow<Sample, false, false>(const Sample*, int, Sample*, int); \
    template void innerBayerRow<Sample, false, true>(const Sample*, int, Sample*, int);  \
    template void innerBayerRow<Sample, true, false>(const Sample*, int, Sample*, int);  \
    template void innerBayerRow<Sample, true, true>(const Sample*, int, Sample*, int);
KEL_BAYER_ROWS(Kel8u)
KEL_BAYER_ROWS(Kel16u)

} // namespace kel::bayer
