// The vector rows of the 8-bit hue conversions against the extended scalar
// kernels, byte for byte, on every SIMD target this processor runs: every
// layout at every width up to 70 and a few wide ones (what lies past the row,
// in the padding and in a kept fourth channel stays as it was), and each of
// the seven arithmetics over all 2^24 inputs.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "kelcc.h"
#include "mskcolor.h"
#include "mskcolorsimd.h"
#include "support/targets.h"

// The blue-first plane family's row kernels (defined with their members).
void ownpi_BGRToHLS_8u_AP4(const Kel8u* const* src, Kel8u* const* dst, int width);
void ownpi_BGRToHLS_8u_AP4C4(const Kel8u* const* src, Kel8u* dst, int width);
void ownpi_BGRToHLS_8u_AC4P4(const Kel8u* src, Kel8u* const* dst, int width);
void ownpi_BGRToHLS_8u_P3(const Kel8u* const* src, Kel8u* const* dst, int width);
void ownpi_BGRToHLS_8u_P3C3(const Kel8u* const* src, Kel8u* dst, int width);
void ownpi_BGRToHLS_8u_C3P3(const Kel8u* src, Kel8u* const* dst, int width);
void ownpi_HLSToBGR_8u_AP4(const Kel8u* const* src, Kel8u* const* dst, int width);
void ownpi_HLSToBGR_8u_AP4C4(const Kel8u* const* src, Kel8u* dst, int width);
void ownpi_HLSToBGR_8u_AC4P4(const Kel8u* src, Kel8u* const* dst, int width);
void ownpi_HLSToBGR_8u_P3(const Kel8u* const* src, Kel8u* const* dst, int width);
void ownpi_HLSToBGR_8u_P3C3(const Kel8u* const* src, Kel8u* dst, int width);
void ownpi_HLSToBGR_8u_C3P3(const Kel8u* src, Kel8u* const* dst, int width);
void innerBGRToHLS_8u_AC4R(const Kel8u* src, Kel8u* dst, int width);

namespace {

using namespace kel::hue;

using Kernel = std::function<void(const Kel8u* const src[4], Kel8u* const dst[4], int width)>;

struct Shape {
    const char* name;
    HueConversion conversion;
    bool rounding, blueFirst;
    int srcPitch, dstPitch;
    HueAlpha alpha;
    Kernel kernel;  // the scalar kernel on the same channel pointers
};

template <void (*K)(const Kel8u*, Kel8u*, int, int), int Pitch>
Kernel pixelKernel()
{
    return [](const Kel8u* const s[4], Kel8u* const d[4], int w) { K(s[0], d[0], w, Pitch); };
}

// A plane-family kernel, whichever side is planar.
template <typename S, typename D, void (*K)(S, D, int)>
Kernel planeKernel()
{
    return [](const Kel8u* const s[4], Kel8u* const d[4], int w) {
        S src;
        D dst;
        if constexpr (std::is_pointer_v<std::remove_pointer_t<S>>) src = s;
        else src = s[0];
        if constexpr (std::is_pointer_v<std::remove_pointer_t<D>>) dst = d;
        else dst = d[0];
        K(src, dst, w);
    };
}

using Planes = const Kel8u* const*;
using OutPlanes = Kel8u* const*;
using Row = const Kel8u*;
using OutRow = Kel8u*;

const std::vector<Shape>& shapes()
{
    using C = HueConversion;
    using A = HueAlpha;
    static const std::vector<Shape> all = {
        {"RGBToHSV C3", C::RGBToHSV, true, false, 3, 3, A::None, pixelKernel<innerRGBToHSV_8u_C3R, 3>()},
        {"RGBToHSV AC4", C::RGBToHSV, true, false, 4, 4, A::Keep, pixelKernel<innerRGBToHSV_8u_C3R, 4>()},
        {"HSVToRGB C3", C::HSVToRGB, true, false, 3, 3, A::None, pixelKernel<innerHSVToRGB_8u_C3R, 3>()},
        {"HSVToRGB AC4", C::HSVToRGB, true, false, 4, 4, A::Keep, pixelKernel<innerHSVToRGB_8u_C3R, 4>()},
        {"RGBToHLS C3", C::RGBToHLS, true, false, 3, 3, A::None, pixelKernel<innerRGBToHLS_8u_C3R, 3>()},
        {"RGBToHLS AC4", C::RGBToHLS, true, false, 4, 4, A::Keep, pixelKernel<innerRGBToHLS_8u_C3R, 4>()},
        {"HLSToRGB C3", C::HLSToRGB, true, false, 3, 3, A::None, pixelKernel<innerHLSToRGB_8u_C3R, 3>()},
        {"HLSToRGB AC4", C::HLSToRGB, true, false, 4, 4, A::Keep, pixelKernel<innerHLSToRGB_8u_C3R, 4>()},
        {"BGRToHLS AC4", C::RGBToHLS, true, true, 4, 4, A::Keep,
         [](const Kel8u* const s[4], Kel8u* const d[4], int w) { innerBGRToHLS_8u_AC4R(s[0], d[0], w); }},
        {"BGRToHLS AP4", C::RGBToHLS, false, true, 1, 1, A::Copy, planeKernel<Planes, OutPlanes, ownpi_BGRToHLS_8u_AP4>()},
        {"BGRToHLS AP4C4", C::RGBToHLS, false, true, 1, 4, A::Copy, planeKernel<Planes, OutRow, ownpi_BGRToHLS_8u_AP4C4>()},
        {"BGRToHLS AC4P4", C::RGBToHLS, false, true, 4, 1, A::Copy, planeKernel<Row, OutPlanes, ownpi_BGRToHLS_8u_AC4P4>()},
        {"BGRToHLS P3", C::RGBToHLS, false, true, 1, 1, A::None, planeKernel<Planes, OutPlanes, ownpi_BGRToHLS_8u_P3>()},
        {"BGRToHLS P3C3", C::RGBToHLS, false, true, 1, 3, A::None, planeKernel<Planes, OutRow, ownpi_BGRToHLS_8u_P3C3>()},
        {"BGRToHLS C3P3", C::RGBToHLS, false, true, 3, 1, A::None, planeKernel<Row, OutPlanes, ownpi_BGRToHLS_8u_C3P3>()},
        {"HLSToBGR AP4", C::HLSToRGB, false, true, 1, 1, A::Copy, planeKernel<Planes, OutPlanes, ownpi_HLSToBGR_8u_AP4>()},
        {"HLSToBGR AP4C4", C::HLSToRGB, false, true, 1, 4, A::Copy, planeKernel<Planes, OutRow, ownpi_HLSToBGR_8u_AP4C4>()},
        {"HLSToBGR AC4P4", C::HLSToRGB, false, true, 4, 1, A::Copy, planeKernel<Row, OutPlanes, ownpi_HLSToBGR_8u_AC4P4>()},
        {"HLSToBGR P3", C::HLSToRGB, false, true, 1, 1, A::None, planeKernel<Planes, OutPlanes, ownpi_HLSToBGR_8u_P3>()},
        {"HLSToBGR P3C3", C::HLSToRGB, false, true, 1, 3, A::None, planeKernel<Planes, OutRow, ownpi_HLSToBGR_8u_P3C3>()},
        {"HLSToBGR C3P3", C::HLSToRGB, false, true, 3, 1, A::None, planeKernel<Row, OutPlanes, ownpi_HLSToBGR_8u_C3P3>()},
    };
    return all;
}

HueRow8u rowOf(const Shape& s)
{
    return chooseHueRow8u(s.conversion, s.rounding, s.blueFirst, s.srcPitch, s.dstPitch, s.alpha);
}

// One side of a row: four planes of `width + pad` bytes, or one pixel-order
// row, every byte random; channels() gives the pointers a row takes.
struct Side {
    Side(int pitch, int width, std::mt19937& gen)
        : pitch(pitch), span(static_cast<std::size_t>(pitch == 1 ? width : pitch * width) + 37),
          bytes((pitch == 1 ? 4 : 1) * span)
    {
        for (auto& b : bytes) b = static_cast<Kel8u>(gen());
    }
    Kel8u* at(int channel, std::size_t pixel)
    {
        return pitch == 1 ? bytes.data() + channel * span + pixel : bytes.data() + pitch * pixel + channel;
    }
    std::vector<Kel8u*> channels(std::size_t from = 0)
    {
        if (pitch == 1) return {at(0, from), at(1, from), at(2, from), at(3, from)};
        Kel8u* row = at(0, from);
        return {row, row, row, row};
    }
    int pitch;
    std::size_t span;
    std::vector<Kel8u> bytes;
};

// The vector row then the kernel for the rest, as the row layers run them.
void fastThenKernel(const Shape& s, HueRow8u fast, Side& src, Side& dst, int width)
{
    const auto in = src.channels(), out = dst.channels();
    const int done = fast != nullptr ? fast(in.data(), out.data(), width) : 0;
    ASSERT_GE(done, 0);
    ASSERT_LE(done, width);
    const auto inRest = src.channels(done), outRest = dst.channels(done);
    s.kernel(inRest.data(), outRest.data(), width - done);
}

TEST(SimdHue, EveryTargetHasARowForEveryShape)
{
    for (const Shape& s : shapes()) {
        const auto chosen = kt::chosenOnEveryTarget([&] { return rowOf(s); });
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct()) << s.name;
        EXPECT_EQ(0u, chosen.kernels.count(nullptr)) << s.name;
#else
        EXPECT_EQ(1u, chosen.kernels.count(nullptr)) << s.name;
#endif
    }
    EXPECT_EQ(nullptr, chooseHueRow8u(HueConversion::RGBToHSV, false, true, 1, 1, HueAlpha::None));
}

TEST(SimdHue, VectorRowsMatchTheKernelsInEveryLayout)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (const Shape& s : shapes()) {
            const HueRow8u fast = rowOf(s);
            for (int width : kt::simdTestWidths({1000})) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 31 + s.srcPitch));
                Side src(s.srcPitch, width, gen), fastOut(s.dstPitch, width, gen);
                Side exactOut = fastOut;
                fastThenKernel(s, fast, src, fastOut, width);
                s.kernel(src.channels().data(), exactOut.channels().data(), width);
                ASSERT_TRUE(fastOut.bytes == exactOut.bytes) << target << ", " << s.name << ", width " << width;
            }
        }
    });
}

TEST(SimdHue, PixelOrderRowsInPlace)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (const Shape& s : shapes()) {
            if (s.srcPitch != s.dstPitch || s.srcPitch == 1) continue;
            const HueRow8u fast = rowOf(s);
            for (int width : {1, 63, 64, 65, 200}) {
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                Side image(s.srcPitch, width, gen);
                Side exact = image;
                {
                    Side source = exact;
                    s.kernel(source.channels().data(), exact.channels().data(), width);
                }
                fastThenKernel(s, fast, image, image, width);
                ASSERT_TRUE(image.bytes == exact.bytes) << target << ", " << s.name << ", width " << width;
            }
        }
    });
}

// Every input colour (all 2^24 triples) through each arithmetic: HSV both
// ways, HLS both ways rounding and truncating, and the rounding blue-first
// forward member.
TEST(SimdHue, EveryInputOfEveryArithmetic)
{
    const int width = 1 << 24;
    const char* arithmetics[] = {"RGBToHSV C3", "HSVToRGB C3", "RGBToHLS C3",   "HLSToRGB C3",
                                 "BGRToHLS AC4", "BGRToHLS C3P3", "HLSToBGR C3P3"};
    for (const char* name : arithmetics) {
        const Shape* shape = nullptr;
        for (const Shape& s : shapes())
            if (std::string(s.name) == name) shape = &s;
        ASSERT_NE(nullptr, shape);
        std::mt19937 gen(5);
        Side src(shape->srcPitch, width, gen), exact(shape->dstPitch, width, gen);
        for (int p = 0; p < width; ++p) {
            *src.at(0, p) = static_cast<Kel8u>(p >> 16);
            *src.at(1, p) = static_cast<Kel8u>(p >> 8);
            *src.at(2, p) = static_cast<Kel8u>(p);
        }
        const Side start = exact;
        shape->kernel(src.channels().data(), exact.channels().data(), width);
        kt::forEachSimdTarget([&](const std::string& target) {
            Side fast = start;
            fastThenKernel(*shape, rowOf(*shape), src, fast, width);
            std::size_t bad = 0, first = 0;
            for (std::size_t i = 0; i < fast.bytes.size(); ++i)
                if (fast.bytes[i] != exact.bytes[i] && bad++ == 0) first = i;
            EXPECT_EQ(0u, bad) << target << ", " << name << ": first difference at byte " << first << ", want "
                               << int(exact.bytes[first]) << ", got " << int(fast.bytes[first]);
        });
    }
}

} // namespace
