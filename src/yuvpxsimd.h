// Whole-vector kernels of RGB <-> full-range YUV 4:2:0 and 4:2:2, beside the scalar kernels of
// yuvpx.cpp, which stay the reference and finish every row.
#pragma once

#include "kelcc.h"
#include "rowstore.h"

namespace kel {

// One row of the Y, U and V planes of 4:2:2 (U and V at half width).  As the
// destination of the forward kernel it takes a pair's samples, or those of a
// last single pixel, which has chroma of its own in planes.
template <typename Byte>
struct YUVPlaneRow {
    Byte *y, *u, *v;

    void putPair(int pair, Kel8u y0, Kel8u y1, Kel8u cb, Kel8u cr) const
    {
        y[2 * pair] = y0;
        y[2 * pair + 1] = y1;
        u[pair] = cb;
        v[pair] = cr;
    }
    void putLast(int pair, Kel8u luma, Kel8u cb, Kel8u cr) const
    {
        y[2 * pair] = luma;
        u[pair] = cb;
        v[pair] = cr;
    }
    // The row from pixel `first` on (even: chroma at half the offset).
    YUVPlaneRow from(int first) const { return {y + first, u + first / 2, v + first / 2}; }
};

} // namespace kel

// The scalar row-pair kernels of 4:2:0 (yuvpx.cpp): two luma rows, their
// chroma row, two destination rows; an odd last column is left alone.
void innerYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width);
void innerYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                Kel8u* bottom, int width);
void innerYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                             kel::PlaneStore top, kel::PlaneStore bottom, int width);
void innerYUV420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width);

// The forward row-pair kernels: two source rows, two luma rows and the chroma
// row of their cells; an odd last column is left alone.
void innerRGBToYUV420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                               int width);
void innerRGBToYUV420_8u_P3R(kel::PlaneSource top, kel::PlaneSource bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                             Kel8u* v, int width);
// The same from B, G, R pixels with Y rounded half up, where the others
// truncate it: the arithmetic of the packed-source members.
void innerBGRToYUV420RoundedLuma_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                                          Kel8u* v, int width);

// The pixel-order 4:2:2 row kernels (Y0 U Y1 V pairs): a last single pixel
// in a pair cut after two bytes.  The inverse takes the V it lacks from the
// pair before, so it needs width 2 or more.
void innerYUV422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYUV422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width);

// The planar 4:2:2 row kernels: a last single pixel has chroma entry
// width / 2 of its own in the planes.
void innerYUV422ToRGB_8u_P3C3R(kel::YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width);
void innerYUV422ToRGB_8u_P3AC4R(kel::YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width);
void innerYUV422ToRGB_8u_P3R(kel::YUVPlaneRow<const Kel8u> src, kel::PlaneStore dst, int width);
void innerRGBToYUV422_8u_C3P3R(const Kel8u* src, kel::YUVPlaneRow<Kel8u> dst, int width);
void innerRGBToYUV422_8u_P3R(kel::PlaneSource src, kel::YUVPlaneRow<Kel8u> dst, int width);

namespace kel {

// A 4:2:0 inverse row pair into pixel-order rows, and into R, G, B planes.
using RowPairYUV420 = void (*)(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width);
using RowPairYUV420Planes = void (*)(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                                     PlaneStore top, PlaneStore bottom, int width);

// The fastest row-pair kernel this processor runs, the same bytes as the
// scalar kernel of the same name; the scalar kernel itself in a build
// without SIMD.
RowPairYUV420 chooseYUV420ToRGB_8u_P3C3R();
RowPairYUV420 chooseYUV420ToRGB_8u_P3AC4R();
RowPairYUV420Planes chooseYUV420ToRGB_8u_P3R();
RowPairYUV420 chooseYUV420ToBGR_8u_P3C3R();

// A 4:2:0 forward row pair from pixel-order rows, and from R, G, B planes.
using RowPairRGBToYUV420 = void (*)(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                                    Kel8u* v, int width);
using RowPairRGBToYUV420Planes = void (*)(PlaneSource top, PlaneSource bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                                          Kel8u* v, int width);
RowPairRGBToYUV420 chooseRGBToYUV420_8u_C3P3R();
RowPairRGBToYUV420 chooseBGRToYUV420RoundedLuma_8u_C3P3R();
RowPairRGBToYUV420Planes chooseRGBToYUV420_8u_P3R();

// A 4:2:2 row, pixel pairs to RGB24 or back.
using Row422 = void (*)(const Kel8u* src, Kel8u* dst, int width);
Row422 chooseYUV422ToRGB_8u_C2C3R();
Row422 chooseRGBToYUV422_8u_C3C2R();

// A planar 4:2:2 row to pixel-order rows or to R, G, B planes, and back from
// either.
using Row422ToPixels = void (*)(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width);
using Row422ToPlanes = void (*)(YUVPlaneRow<const Kel8u> src, PlaneStore dst, int width);
using RowPixelsTo422 = void (*)(const Kel8u* src, YUVPlaneRow<Kel8u> dst, int width);
using RowPlanesTo422 = void (*)(PlaneSource src, YUVPlaneRow<Kel8u> dst, int width);
Row422ToPixels chooseYUV422ToRGB_8u_P3C3R();
Row422ToPixels chooseYUV422ToRGB_8u_P3AC4R();
Row422ToPlanes chooseYUV422ToRGB_8u_P3R();
RowPixelsTo422 chooseRGBToYUV422_8u_C3P3R();
RowPlanesTo422 chooseRGBToYUV422_8u_P3R();

} // namespace kel
