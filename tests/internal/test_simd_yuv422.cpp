// The whole-vector full-range YUV 4:2:2 kernels, pixel order (Y0 U Y1 V pairs)
// and planar, against the scalar kernels, byte for byte, on every SIMD target
// this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/targets.h"
#include "yuvconv.h"
#include "yuvpxsimd.h"

namespace {

using kel::PlaneSource;
using kel::PlaneStore;
using kel::Row422;
using kel::Row422ToPixels;
using kel::YUVPlaneRow;

// A 4:2:2 pixel-order member with its row chooser, its scalar row kernel and
// its bytes a pixel in source and destination.
struct Member422 {
    const char* name;
    KelResult (*call)(const Kel8u*, int, Kel8u*, int, KelImageSize);
    Row422 (*choose)();
    Row422 scalar;
    int srcPitch, dstPitch;
    int minWidth;  // of the row kernel: the inverse's last single pixel borrows V from the pair before
};

const Member422 kMembers[] = {
    {"YUV422ToRGB_8u_C2C3R", keliYUV422ToRGB_8u_C2C3R, kel::chooseYUV422ToRGB_8u_C2C3R, innerYUV422ToRGB_8u_C2C3R, 2, 3,
     2},
    {"RGBToYUV422_8u_C3C2R", keliRGBToYUV422_8u_C3C2R, kel::chooseRGBToYUV422_8u_C3C2R, innerRGBToYUV422_8u_C3C2R, 3, 2,
     0},
};

// Odd strides that exceed the rows.
int oddStep(int rowBytes, int extra)
{
    return rowBytes + extra + (rowBytes & 1);
}

TEST(SimdYUV422, EveryTargetHasItsOwnKernel)
{
    for (const Member422& m : kMembers) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(m.choose);
        EXPECT_GE(chosen.targets, 1) << m.name;
        EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
    }
}

// The row kernels alone: the same bytes as the scalar kernel, nothing
// written past the row.  The source starts one pair into its buffer, so the
// inverse's borrowed V is always a byte of the buffer.
TEST(SimdYUV422, RowMatchesScalarKernelAtEveryWidth)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width < m.minWidth) continue;
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, m.srcPitch * width + 1, lead + 4, gen), fast(1, m.dstPitch * width + 1, lead, gen);
                    kt::RandomRows scalar = fast;
                    m.choose()(src.row(0), fast.row(0), width);
                    m.scalar(src.row(0), scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9: every byte of the destination
// buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYUV422, PublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, oddStep(m.srcPitch * width, 5), 3, gen);
                    kt::RandomRows dst(height, oddStep(m.dstPitch * width, 9), 1, gen);
                    kt::RandomRows expected = dst;
                    for (int y = 0; y < height; ++y) {
                        // A row of one pixel is the member's own case, the same on every target.
                        if (width >= m.minWidth) m.scalar(src.row(y), expected.row(y), width);
                    }
                    const KelResult status = m.call(src.row(0), src.step, dst.row(0), dst.step, {width, height});
                    ASSERT_EQ(kelOk, status);
                    if (width < m.minWidth) continue;
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every (Y, U, V): 2^23 pairs, pair p holding U = p & 255, V = p >> 8 & 255
// and the lumas 2 (p >> 16) and 2 (p >> 16) + 1, so that all 256 luma values
// meet every chroma pair.  Each pixel is held to the one-pixel formula.
TEST(SimdYUV422, EveryYUVMatchesTheFormula)
{
    constexpr int kSide = 4096;
    std::vector<Kel8u> src(static_cast<std::size_t>(kSide) * kSide * 2);
    std::vector<Kel8u> expected(static_cast<std::size_t>(kSide) * kSide * 3);
    for (std::size_t p = 0; p < src.size() / 4; ++p) {
        Kel8u* pair = &src[4 * p];
        pair[0] = static_cast<Kel8u>(2 * (p >> 16));
        pair[1] = static_cast<Kel8u>(p);
        pair[2] = static_cast<Kel8u>(2 * (p >> 16) + 1);
        pair[3] = static_cast<Kel8u>(p >> 8);
        for (int i = 0; i < 2; ++i) {
            Kel8u* pixel = &expected[6 * p + 3 * i];
            kel::yuv::toRGB<kel::yuv::inverse1>(pair[2 * i], pair[1], pair[3], pixel[0], pixel[1], pixel[2]);
        }
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size());
        ASSERT_EQ(kelOk, keliYUV422ToRGB_8u_C2C3R(src.data(), 2 * kSide, rgb.data(), 3 * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const std::size_t p = i / 6;
            ASSERT_EQ(expected[i], rgb[i]) << target << ": pair " << p << ", channel " << i % 3;
        }
    });
}

// Every RGB colour once, pixel (x, y) the colour y * 4096 + x: each Y held to
// the one-pixel formula, each pair's U and V to the pair formulas.
TEST(SimdYUV422, EveryRGBMatchesTheFormulas)
{
    constexpr int kSide = 4096;
    const std::size_t pixels = static_cast<std::size_t>(kSide) * kSide;
    std::vector<Kel8u> rgb(pixels * 3), expected(pixels * 2);
    for (std::size_t at = 0; at < pixels; ++at) {
        rgb[3 * at + 0] = static_cast<Kel8u>(at >> 16);
        rgb[3 * at + 1] = static_cast<Kel8u>(at >> 8);
        rgb[3 * at + 2] = static_cast<Kel8u>(at);
    }
    using namespace kel::yuv;
    for (std::size_t p = 0; p < pixels / 2; ++p) {
        const Kel8u* a = &rgb[6 * p];
        const Kel8u* b = a + 3;
        const std::int32_t sumA = lumaSum(a[0], a[1], a[2]), sumB = lumaSum(b[0], b[1], b[2]);
        Kel8u* pair = &expected[4 * p];
        pair[0] = static_cast<Kel8u>(sumA >> 16);
        pair[1] = chromaU<1>(a[2] + b[2], sumA + sumB);
        pair[2] = static_cast<Kel8u>(sumB >> 16);
        pair[3] = chromaV<1>(a[0] + b[0], sumA + sumB);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> yuv(expected.size());
        ASSERT_EQ(kelOk, keliRGBToYUV422_8u_C3C2R(rgb.data(), 3 * kSide, yuv.data(), 2 * kSide, {kSide, kSide}));
        if (yuv == expected) return;
        for (std::size_t i = 0; i < yuv.size(); ++i)
            ASSERT_EQ(expected[i], yuv[i]) << target << ": pair " << i / 4 << ", byte " << i % 4;
    });
}

// ---- planar 4:2:2 ----------------------------------------------------------------------------------------

// Chroma columns of a planar 4:2:2 row: a last single pixel has one of its own.
int chromaWidth(int width)
{
    return width / 2 + (width & 1);
}

// A planar inverse member into pixel-order rows, with its row chooser, its
// scalar row kernel and its bytes a pixel.
struct PlanarInverse {
    const char* name;
    KelResult (*call)(const Kel8u* const*, const int*, Kel8u*, int, KelImageSize);
    KelResult (*callWithoutSteps)(const Kel8u* const*, Kel8u*, KelImageSize);  // null: no such form
    Row422ToPixels (*choose)();
    Row422ToPixels scalar;
    int pitch;
};

const PlanarInverse kPlanarInverse[] = {
    {"YUV422ToRGB_8u_P3C3R", keliYUV422ToRGB_8u_P3C3R, keliYUV422ToRGB_8u_P3C3, kel::chooseYUV422ToRGB_8u_P3C3R,
     innerYUV422ToRGB_8u_P3C3R, 3},
    {"YUV422ToRGB_8u_P3AC4R", keliYUV422ToRGB_8u_P3AC4R, nullptr, kel::chooseYUV422ToRGB_8u_P3AC4R,
     innerYUV422ToRGB_8u_P3AC4R, 4},
};

// Y, U and V planes of one image, each in a guarded buffer; `packed` puts
// the rows back to back, with the strides the forms without strides derive.
// `planes` and `steps` are for the calls: a copy still points at the original.
struct Planes422 {
    Planes422(int width, int height, bool packed, int lead, std::mt19937& gen)
        : luma(height, packed ? width : oddStep(width, 5), lead, gen),
          u(height, packed ? chromaWidth(width) : oddStep(chromaWidth(width), 3), 3 - lead, gen),
          v(height, packed ? chromaWidth(width) : oddStep(chromaWidth(width), 7), lead + 1, gen)
    {
    }
    template <typename Byte>
    YUVPlaneRow<Byte> row(int y)
    {
        return {luma.row(y), u.row(y), v.row(y)};
    }
    bool operator==(const Planes422& o) const
    {
        return luma.bytes == o.luma.bytes && u.bytes == o.u.bytes && v.bytes == o.v.bytes;
    }
    kt::RandomRows luma, u, v;
    Kel8u* planes[3] = {luma.row(0), u.row(0), v.row(0)};
    int steps[3] = {luma.step, u.step, v.step};
};

// R, G, B planes of one image with one stride, each in a guarded buffer
// (`planes`, as above, for the calls).
struct PlanesRGB {
    PlanesRGB(int height, int step, int lead, std::mt19937& gen)
        : red(height, step, lead, gen), green(height, step, 3 - lead, gen), blue(height, step, lead + 2, gen)
    {
    }
    PlaneStore store(int y) { return {red.row(y), green.row(y), blue.row(y)}; }
    PlaneSource source(int y) { return {red.row(y), green.row(y), blue.row(y)}; }
    bool operator==(const PlanesRGB& o) const
    {
        return red.bytes == o.red.bytes && green.bytes == o.green.bytes && blue.bytes == o.blue.bytes;
    }
    kt::RandomRows red, green, blue;
    Kel8u* planes[3] = {red.row(0), green.row(0), blue.row(0)};
};

TEST(SimdYUV422, EveryPlanarTargetHasItsOwnKernel)
{
    std::vector<std::set<const void*>> kernels(5);
    int targets = 0;
    kt::forEachSimdTarget([&](const std::string&) {
        kernels[0].insert(reinterpret_cast<const void*>(kel::chooseYUV422ToRGB_8u_P3C3R()));
        kernels[1].insert(reinterpret_cast<const void*>(kel::chooseYUV422ToRGB_8u_P3AC4R()));
        kernels[2].insert(reinterpret_cast<const void*>(kel::chooseYUV422ToRGB_8u_P3R()));
        kernels[3].insert(reinterpret_cast<const void*>(kel::chooseRGBToYUV422_8u_C3P3R()));
        kernels[4].insert(reinterpret_cast<const void*>(kel::chooseRGBToYUV422_8u_P3R()));
        ++targets;
    });
    EXPECT_GE(targets, 1);
    for (const auto& set : kernels) EXPECT_EQ(targets, static_cast<int>(set.size()));
}

// The planar row kernels alone, widths 0 up, every start alignment: the same
// bytes as the scalar kernel, nothing written past the row.
TEST(SimdYUV422, PlanarInverseRowMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 5));
                Planes422 src(width, 1, false, lead, gen);
                for (const PlanarInverse& m : kPlanarInverse) {
                    kt::RandomRows fast(1, m.pitch * width + 1, lead, gen);
                    kt::RandomRows scalar = fast;
                    m.choose()(src.row<const Kel8u>(0), fast.row(0), width);
                    m.scalar(src.row<const Kel8u>(0), scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
                PlanesRGB fast(1, width + 1, lead, gen);
                PlanesRGB scalar = fast;
                kel::chooseYUV422ToRGB_8u_P3R()(src.row<const Kel8u>(0), fast.store(0), width);
                innerYUV422ToRGB_8u_P3R(src.row<const Kel8u>(0), scalar.store(0), width);
                ASSERT_TRUE(fast == scalar) << "YUV422ToRGB_8u_P3R on " << target << ", width " << width << ", lead "
                                            << lead;
            }
        }
    });
}

TEST(SimdYUV422, PlanarForwardRowMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 6));
                kt::RandomRows rgb(1, 3 * width + 1, lead, gen);
                Planes422 fast(width, 1, false, lead, gen);
                Planes422 scalar = fast;
                kel::chooseRGBToYUV422_8u_C3P3R()(rgb.row(0), fast.row<Kel8u>(0), width);
                innerRGBToYUV422_8u_C3P3R(rgb.row(0), scalar.row<Kel8u>(0), width);
                ASSERT_TRUE(fast == scalar) << "RGBToYUV422_8u_C3P3R on " << target << ", width " << width << ", lead "
                                            << lead;

                PlanesRGB planes(1, width + 1, lead, gen);
                kel::chooseRGBToYUV422_8u_P3R()(planes.source(0), fast.row<Kel8u>(0), width);
                innerRGBToYUV422_8u_P3R(planes.source(0), scalar.row<Kel8u>(0), width);
                ASSERT_TRUE(fast == scalar) << "RGBToYUV422_8u_P3R on " << target << ", width " << width << ", lead "
                                            << lead;
            }
        }
    });
}

// The public functions at heights 1 to 9, with odd strides (`packed` false)
// and in the forms without strides (`packed` true, rows back to back, which
// the even-width forms convert as one long row): every byte of the
// destination buffers as the scalar row kernel leaves them.
TEST(SimdYUV422, PlanarInversePublicFunctionsMatchScalarKernelAtEverySize)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                for (bool packed : {false, true}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 32 + height * 2 + packed));
                    Planes422 src(width, height, packed, height & 3, gen);
                    const Kel8u* const planes[3] = {src.planes[0], src.planes[1], src.planes[2]};
                    const KelImageSize size{width, height};
                    for (const PlanarInverse& m : kPlanarInverse) {
                        if (packed && !m.callWithoutSteps) continue;
                        kt::RandomRows dst(height, packed ? m.pitch * width : oddStep(m.pitch * width, 9), 1, gen);
                        kt::RandomRows expected = dst;
                        for (int y = 0; y < height; ++y) m.scalar(src.row<const Kel8u>(y), expected.row(y), width);
                        const KelResult status = packed ? m.callWithoutSteps(planes, dst.row(0), size)
                                                        : m.call(planes, src.steps, dst.row(0), dst.step, size);
                        ASSERT_EQ(kelOk, status);
                        ASSERT_TRUE(dst.bytes == expected.bytes)
                            << m.name << (packed ? " without strides" : "") << " on " << target << ", " << width
                            << " x " << height;
                    }
                    PlanesRGB dst(height, packed ? width : oddStep(width, 3), 2, gen);
                    PlanesRGB expected = dst;
                    for (int y = 0; y < height; ++y)
                        innerYUV422ToRGB_8u_P3R(src.row<const Kel8u>(y), expected.store(y), width);
                    const KelResult status = packed ? keliYUV422ToRGB_8u_P3(planes, dst.planes, size)
                                                    : keliYUV422ToRGB_8u_P3R(planes, src.steps, dst.planes,
                                                                             dst.red.step, size);
                    ASSERT_EQ(kelOk, status);
                    ASSERT_TRUE(dst == expected) << "YUV422ToRGB_8u_P3R" << (packed ? " without strides" : "") << " on "
                                                 << target << ", " << width << " x " << height;
                }
            }
        }
    });
}

TEST(SimdYUV422, PlanarForwardPublicFunctionsMatchScalarKernelAtEverySize)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                for (bool packed : {false, true}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 32 + height * 2 + packed + 3));
                    const KelImageSize size{width, height};
                    Planes422 dst(width, height, packed, (height + 1) & 3, gen);
                    Planes422 expected = dst;

                    kt::RandomRows rgb(height, packed ? 3 * width : oddStep(3 * width, 7), 3, gen);
                    for (int y = 0; y < height; ++y)
                        innerRGBToYUV422_8u_C3P3R(rgb.row(y), expected.row<Kel8u>(y), width);
                    const KelResult status = packed ? keliRGBToYUV422_8u_C3P3(rgb.row(0), dst.planes, size)
                                                    : keliRGBToYUV422_8u_C3P3R(rgb.row(0), rgb.step, dst.planes,
                                                                               dst.steps, size);
                    ASSERT_EQ(kelOk, status);
                    ASSERT_TRUE(dst == expected) << "RGBToYUV422_8u_C3P3R" << (packed ? " without strides" : "")
                                                 << " on " << target << ", " << width << " x " << height;

                    PlanesRGB planes(height, packed ? width : oddStep(width, 1), 1, gen);
                    const Kel8u* const source[3] = {planes.planes[0], planes.planes[1], planes.planes[2]};
                    for (int y = 0; y < height; ++y)
                        innerRGBToYUV422_8u_P3R(planes.source(y), expected.row<Kel8u>(y), width);
                    const KelResult planarStatus = packed ? keliRGBToYUV422_8u_P3(source, dst.planes, size)
                                                          : keliRGBToYUV422_8u_P3R(source, planes.red.step, dst.planes,
                                                                                   dst.steps, size);
                    ASSERT_EQ(kelOk, planarStatus);
                    ASSERT_TRUE(dst == expected) << "RGBToYUV422_8u_P3R" << (packed ? " without strides" : "") << " on "
                                                 << target << ", " << width << " x " << height;
                }
            }
        }
    });
}

} // namespace
