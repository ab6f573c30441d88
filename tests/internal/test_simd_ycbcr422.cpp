// The whole-vector 4:2:2 pixel-order to RGB, BGR and BGRA kernels against the
// scalar kernels, byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "cbcrpx.h"
#include "support/targets.h"
#include "ycbcr05simd.h"

// The width-1 paths of the YCbCr and YCrCb members (ycbcr05.cpp).
void unrealYCbCr(const Kel8u* src, Kel8u* dst);
void unrealYCrCb(const Kel8u* src, Kel8u* dst);

namespace {

using kel::PixelRow422;
using kel::PixelRow422Alpha;

// A member's row kernel, as dispatch chooses it and as the scalar reference,
// and its public function; three-byte members have an alpha the kernel ignores.
struct Member422 {
    const char* name;
    int pitch;
    PixelRow422 (*choose)();
    PixelRow422 scalar;
    PixelRow422Alpha (*chooseAlpha)();
    PixelRow422Alpha scalarAlpha;
    KelResult (*call)(const Kel8u*, int, Kel8u*, int, KelImageSize);
    KelResult (*callAlpha)(const Kel8u*, int, Kel8u*, int, KelImageSize, Kel8u);
    void (*widthOne)(const Kel8u*, Kel8u*);  // the public function's own path at width 1, if it has one
    int minWidth;

    void fast(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha) const
    {
        if (pitch == 4) chooseAlpha()(src, dst, width, alpha);
        else choose()(src, dst, width);
    }
    void reference(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha) const
    {
        if (width == 1 && widthOne) widthOne(src, dst);
        else if (pitch == 4) scalarAlpha(src, dst, width, alpha);
        else scalar(src, dst, width);
    }
    KelResult publicCall(const Kel8u* src, int srcStep, Kel8u* dst, int dstStep, KelImageSize size, Kel8u alpha) const
    {
        return pitch == 4 ? callAlpha(src, srcStep, dst, dstStep, size, alpha) : call(src, srcStep, dst, dstStep, size);
    }
};

const Member422 kMembers[] = {
    {"YCbCr422ToRGB", 3, kel::chooseYCbCr422ToRGB, innerYCbCrToRGB422_C2_C3R, nullptr, nullptr,
     keliYCbCr422ToRGB_8u_C2C3R, nullptr, unrealYCbCr, 1},
    {"YCrCb422ToRGB", 3, kel::chooseYCrCb422ToRGB, innerYCrCbToRGB422_C2_C3R, nullptr, nullptr,
     keliYCrCb422ToRGB_8u_C2C3R, nullptr, unrealYCrCb, 1},
    {"YCbCr422ToBGR", 3, kel::chooseYCbCr422ToBGR, innerYCbCr422ToBGR_8u_C2C3R, nullptr, nullptr,
     keliYCbCr422ToBGR_8u_C2C3R, nullptr, nullptr, 2},
    {"CbYCr422ToRGB", 3, kel::chooseCbYCr422ToRGB, innerCbYCr422ToRGB_8u_C2C3R, nullptr, nullptr,
     keliCbYCr422ToRGB_8u_C2C3R, nullptr, nullptr, 1},
    {"YCbCr422ToBGRA", 4, nullptr, nullptr, kel::chooseYCbCr422ToBGRA, innerYCbCr422ToBGR_8u_C2C4R, nullptr,
     keliYCbCr422ToBGR_8u_C2C4R, nullptr, 2},
    {"CbYCr422ToBGRA", 4, nullptr, nullptr, kel::chooseCbYCr422ToBGRA, innerCbYCr422ToBGR_8u_C2AC4R, nullptr,
     keliCbYCr422ToBGR_8u_C2C4R, nullptr, 1},
};

TEST(SimdYCbCr422, EveryTargetHasItsOwnKernel)
{
    for (const Member422& m : kMembers) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(
            [&] { return m.pitch == 4 ? reinterpret_cast<const void*>(m.chooseAlpha()) : reinterpret_cast<const void*>(m.choose()); });
        EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
        EXPECT_GE(chosen.targets, 1) << m.name;
    }
}

// The row kernel alone, widths 0 up, rows off any alignment: the same bytes
// as the scalar kernel, and nothing written past the row.
TEST(SimdYCbCr422, RowMatchesScalarKernelAtEveryWidth)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, 2 * width + 1, lead, gen), fast(1, m.pitch * width + 1, 3 - lead, gen);
                    kt::RandomRows scalar = fast;
                    const Kel8u alpha = static_cast<Kel8u>(gen());
                    m.fast(src.row(0), fast.row(0), width, alpha);
                    if (m.pitch == 4) m.scalarAlpha(src.row(0), scalar.row(0), width, alpha);
                    else m.scalar(src.row(0), scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9 with odd strides: every byte of the
// destination buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYCbCr422, PublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width < m.minWidth) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, 2 * width + 3 + (width & 1), 1 + height % 3, gen),
                        dst(height, m.pitch * width + 5 + (width & 1), 2, gen);
                    kt::RandomRows expected = dst;
                    const Kel8u alpha = static_cast<Kel8u>(gen());
                    for (int y = 0; y < height; ++y) m.reference(src.row(y), expected.row(y), width, alpha);
                    ASSERT_EQ(kelOk, m.publicCall(src.row(0), src.step, dst.row(0), dst.step, {width, height}, alpha));
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every (Y, Cb, Cr) of set H through YCbCr422ToRGB and of set R through
// CbYCr422ToRGB: a 4096 x 4096 image whose pairs hold each (Cb, Cr) 128 times,
// each time with two other luma values, so that all 256 luma values meet
// every chroma pair.  Each pixel is held to the formula.
template <const kel::InverseYCbCr& K>
void checkEveryYCbCr(KelResult (*call)(const Kel8u*, int, Kel8u*, int, KelImageSize), kel::PairLayout layout)
{
    constexpr int kSide = 4096, kPairs = kSide / 2;
    std::vector<Kel8u> packed(static_cast<std::size_t>(kSide) * kSide * 2);
    for (int y = 0; y < kSide; ++y) {
        for (int p = 0; p < kPairs; ++p) {
            const int pair = y * kPairs + p;  // 2^23 pairs: chroma in the low 16 bits, a luma pair above
            Kel8u* at = packed.data() + 4 * static_cast<std::size_t>(pair);
            at[layout.cb] = static_cast<Kel8u>(pair & 0xFF);
            at[layout.cr] = static_cast<Kel8u>(pair >> 8 & 0xFF);
            at[layout.y0] = static_cast<Kel8u>(2 * (pair >> 16));
            at[layout.y1] = static_cast<Kel8u>(2 * (pair >> 16) + 1);
        }
    }
    using Formula = kel::InverseRGB<K>;
    std::vector<Kel8u> expected(static_cast<std::size_t>(kSide) * kSide * 3);
    for (std::size_t pair = 0; pair < expected.size() / 6; ++pair) {
        const Kel8u* at = packed.data() + 4 * pair;
        for (int i = 0; i < 2; ++i) {
            const int luma = at[i ? layout.y1 : layout.y0], cb = at[layout.cb], cr = at[layout.cr];
            Kel8u* rgb = expected.data() + 6 * pair + 3 * i;
            rgb[0] = Formula::r(luma, cb, cr);
            rgb[1] = Formula::g(luma, cb, cr);
            rgb[2] = Formula::b(luma, cb, cr);
        }
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size());
        ASSERT_EQ(kelOk, call(packed.data(), 2 * kSide, rgb.data(), 3 * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const Kel8u* at = packed.data() + 4 * (i / 6);
            ASSERT_EQ(expected[i], rgb[i]) << target << ": Y " << int(at[i % 6 < 3 ? layout.y0 : layout.y1]) << ", Cb "
                                           << int(at[layout.cb]) << ", Cr " << int(at[layout.cr]) << ", channel "
                                           << i % 3;
        }
    });
}

TEST(SimdYCbCr422, EveryYCbCrOfSetHMatchesTheFormula)
{
    checkEveryYCbCr<kel::inverseH>(keliYCbCr422ToRGB_8u_C2C3R, kel::kYCbCrPair);
}

TEST(SimdYCbCr422, EveryYCbCrOfSetRMatchesTheFormula)
{
    checkEveryYCbCr<kel::inverseR>(keliCbYCr422ToRGB_8u_C2C3R, kel::kCbYCrPair);
}

} // namespace
