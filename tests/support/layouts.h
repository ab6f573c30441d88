// The families' image layouts as channel maps over guarded buffers, and one
// type-erased call shape, so that table-driven tests run every member of a
// family the same way.
#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <utility>

#include "guarded.h"

namespace kt {

// Pixel order: `pitch` samples a pixel; channels 0..2 are R, G, B, stored in
// that order or blue first; channel 3 is the fourth sample of a pitch-4 pixel.
inline Image pixels(int width, int height, int pitch, bool blueFirst = false, std::size_t sampleBytes = 1,
                    Placement placement = Placement::Guarded, std::size_t misalign = 0)
{
    Image image(placement, sampleBytes, false, misalign);
    image.plane(width * pitch, height);
    for (int c = 0; c < pitch; ++c) image.channel({0, blueFirst && c < 3 ? 2 - c : c, pitch});
    return image;
}

// `count` planes of the full size, channel c in plane c.
inline Image planes(int width, int height, int count = 3, std::size_t sampleBytes = 1,
                    Placement placement = Placement::Guarded, std::size_t misalign = 0)
{
    Image image(placement, sampleBytes, true, misalign);
    for (int c = 0; c < count; ++c) image.plane(width, height).channel({c});
    return image;
}

// Luma and chroma, channels Y, Cb, Cr (or Y, U, V).
enum class Ycc { Planes, PlanesCrFirst, SemiPlanar, PairsYCbCr, PairsYCrCb, PairsCbYCr };

// One chroma pair for every xCell x yCell pixels. Chroma planes hold the
// number of cells rounded up, or with roundUp false rounded down (what a call
// may read, no more). Pixel-order pairs are Y0 Cb Y1 Cr, Y0 Cr Y1 Cb or
// Cb Y0 Cr Y1, two bytes a pixel: an odd last pixel has two bytes.
inline Image ycc(Ycc form, int width, int height, int xCell, int yCell, bool roundUp = true,
                 Placement placement = Placement::Guarded)
{
    const int cw = roundUp ? (width + xCell - 1) / xCell : width / xCell;
    const int ch = roundUp ? (height + yCell - 1) / yCell : height / yCell;
    Image image(placement, 1, form == Ycc::Planes || form == Ycc::PlanesCrFirst);
    switch (form) {
    case Ycc::Planes:
    case Ycc::PlanesCrFirst: {
        const int cb = form == Ycc::Planes ? 1 : 2;
        image.plane(width, height).plane(cw, ch).plane(cw, ch).channel({0});
        image.channel({cb, 0, 1, xCell, yCell}).channel({3 - cb, 0, 1, xCell, yCell});
        break;
    }
    case Ycc::SemiPlanar:
        image.plane(width, height).plane(2 * cw, ch).channel({0});
        image.channel({1, 0, 2, xCell, yCell}).channel({1, 1, 2, xCell, yCell});
        break;
    default: {
        const int y = form == Ycc::PairsCbYCr ? 1 : 0;
        const int cb = form == Ycc::PairsYCbCr ? 1 : form == Ycc::PairsYCrCb ? 3 : 0;
        const int cr = form == Ycc::PairsYCbCr ? 3 : form == Ycc::PairsYCrCb ? 1 : 2;
        image.plane(2 * width, height).channel({0, y, 2}).channel({0, cb, 4, 2}).channel({0, cr, 4, 2});
    }
    }
    return image;
}

// Channels 0..2 of every pixel of a width x height image set to `colour`.
inline void paint(Image& image, int width, int height, const int* colour)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c) image.at(x, y, c) = static_cast<Kel8u>(colour[c]);
}

// A member taking (src, srcStep, dst, dstStep, roiSize), its pointers erased:
// each is a pixel pointer or the address of a plane array.
using ErasedCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size);

template <typename Src, typename Dst, KelResult (*F)(Src, int, Dst, int, KelImageSize)>
KelResult erase(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size)
{
    return F(static_cast<Src>(src), srcStep, static_cast<Dst>(dst), dstStep, size);
}

// An erased member called on images, with their strides.
inline auto byImage(ErasedCall call)
{
    return [call](Image& s, Image& d, KelImageSize z) { return call(s.arg(), s.step(), d.arg(), d.step(), z); };
}

// One three-channel pixel through a pixel-order conversion, so that concrete
// values read as in = out.
template <typename S, typename D>
std::array<D, 3> convertPixel(KelResult (*convert)(const S*, int, D*, int, KelImageSize), std::array<S, 3> in)
{
    std::array<D, 3> out{};
    EXPECT_EQ(kelOk, convert(in.data(), 3 * sizeof(S), out.data(), 3 * sizeof(D), {1, 1}));
    return out;
}

// After a call from `src` into `dst`: its status, dst byte for byte as
// `expected` (filled alike, then given what the call writes), src unchanged,
// and every guard and padding byte of both intact.
template <typename Call, typename Img>
void expectWrites(KelResult status, Call call, Img& src, Img& dst, const Image& expected, KelImageSize size)
{
    const auto srcBefore = src.rows();
    EXPECT_EQ(status, call(src, dst, size)) << size.width << "x" << size.height;
    EXPECT_EQ(expected.rows(), dst.rows()) << size.width << "x" << size.height;
    EXPECT_EQ(srcBefore, src.rows());
    EXPECT_TRUE(src.intact() && dst.intact());
}

enum class Strides { Unseen, BeforeSize, AfterSize };

// A family's argument tests in its order. An absent image (a null pixel
// pointer or plane array) beats a bad size, and so does a null plane when
// `planesFirst`; otherwise the size comes first. A height below min.height
// 1 is refused, or at 0 never tested: nothing to do. Zero and negative
// strides are refused before or after the size, or not looked at. Nothing
// is written until the smallest accepted size. src may be dst (in place).
template <typename Call, typename Img>
void expectArgumentOrder(Call call, Img& src, Img& dst, KelImageSize good, KelImageSize min, bool planesFirst,
                         Strides strides = Strides::Unseen)
{
    dst.fillWith(0x3C);
    const auto before = dst.rows();
    const KelImageSize small{min.width - 1, good.height};
    const KelResult low = min.height > 0 ? kelErrSize : kelOk;
    EXPECT_EQ(kelErrSize, call(src, dst, small));
    EXPECT_EQ(kelErrSize, call(src, dst, KelImageSize{INT_MIN, good.height}));
    EXPECT_EQ(low, call(src, dst, KelImageSize{good.width, min.height - 1}));
    EXPECT_EQ(low, call(src, dst, KelImageSize{good.width, INT_MIN}));
    for (Img* side : {&src, &dst}) {
        if (side == &dst && &src == &dst) break;
        side->absent = true;
        EXPECT_EQ(kelErrNullPointer, call(src, dst, small)) << "absent " << (side == &src ? "source" : "destination");
        side->absent = false;
        for (std::size_t p = 0; p < side->count(); ++p) {
            Kel8u* const saved = std::exchange(side->pointers[p], nullptr);
            const bool plane = side->planar() && !planesFirst;
            EXPECT_EQ(plane ? kelErrSize : kelErrNullPointer, call(src, dst, small)) << "null buffer " << p;
            EXPECT_EQ(kelErrNullPointer, call(src, dst, good)) << "null buffer " << p;
            side->pointers[p] = saved;
        }
        for (int bad : {0, -1}) {
            const int saved = std::exchange(side->steps[0], bad);
            if (strides == Strides::BeforeSize) EXPECT_EQ(kelErrStep, call(src, dst, small)) << "stride " << bad;
            if (strides == Strides::AfterSize) EXPECT_EQ(kelErrSize, call(src, dst, small)) << "stride " << bad;
            if (strides == Strides::AfterSize) EXPECT_EQ(kelErrStep, call(src, dst, good)) << "stride " << bad;
            side->steps[0] = saved;
        }
    }
    EXPECT_EQ(before, dst.rows());
    if (strides == Strides::Unseen) {  // one row read and written again
        const int srcStep = std::exchange(src.steps[0], 0), dstStep = std::exchange(dst.steps[0], 0);
        EXPECT_EQ(kelOk, call(src, dst, good)) << "zero strides";
        dst.steps[0] = dstStep;
        src.steps[0] = srcStep;
    }
    EXPECT_LE(kelOk, call(src, dst, KelImageSize{min.width, min.height > 0 ? min.height : 1}));  // a warning at most
    EXPECT_TRUE(dst.intact());
}

using Trio = std::array<int, 3>;

// A worked value: a member, one pixel in and the pixel it must give.
struct Worked {
    const char* name;
    Trio (*convert)(Trio);
    Trio in, out;
};
template <typename S, typename D> Trio onePixel(KelResult (*convert)(const S*, int, D*, int, KelImageSize), Trio in)
{
    const auto out = convertPixel(convert, std::array<S, 3>{S(in[0]), S(in[1]), S(in[2])});
    return {int(out[0]), int(out[1]), int(out[2])};
}
template <auto F> Trio throughOnePixel(Trio in) { return onePixel(F, in); }
#define WORKED(F) #F, kt::throughOnePixel<F>

inline void expectWorked(std::initializer_list<Worked> table)
{
    for (const Worked& w : table)
        EXPECT_EQ(w.out, w.convert(w.in)) << w.name << " of " << w.in[0] << ", " << w.in[1] << ", " << w.in[2];
}

} // namespace kt
