// The whole-vector kernels of planar YCbCr (4:2:2, 4:1:1, full resolution,
// filtered 4:2:0) to RGB, BGR and BGRA, and of 4:2:2 pixel order to planes,
// against the scalar kernels, byte for byte, on every SIMD target this
// processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "cbcrpx.h"
#include "support/targets.h"
#include "ycbcr05simd.h"

// The width-1 paths of the pixel-order members to planes (ycbcr05.cpp).
void unrealYCbCrP(const Kel8u* src, Kel8u* const dst[3]);
void unrealYCrCbP(const Kel8u* src, Kel8u* const dst[3]);

namespace {

// Three destination planes (or three source planes) of one size.
struct ThreeBuffers {
    ThreeBuffers(int rows, int step, std::mt19937& gen)
        : planes{kt::RandomRows(rows, step, 1, gen), kt::RandomRows(rows, step, 2, gen), kt::RandomRows(rows, step, 3, gen)}
    {
    }
    bool operator==(const ThreeBuffers& o) const
    {
        return planes[0].bytes == o.planes[0].bytes && planes[1].bytes == o.planes[1].bytes &&
               planes[2].bytes == o.planes[2].bytes;
    }
    kt::RandomRows planes[3];
};

template <typename Choose>
void expectOneKernelPerTarget(const char* name, Choose choose)
{
    const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
    EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
    EXPECT_GE(chosen.targets, 1) << name;
}

// ---- 4:2:2 pixel order to planes ------------------------------------------------------------------

struct ToPlanesMember {
    const char* name;
    kel::PixelRowToPlanes (*choose)();
    kel::PixelRowToPlanes scalar;
    void (*widthOne)(const Kel8u*, Kel8u* const[3]);
    KelResult (*call)(const Kel8u*, int, Kel8u* const[3], int, KelImageSize);
};

const ToPlanesMember kToPlanes[] = {
    {"YCbCr422ToRGB_C2P3R", kel::chooseYCbCr422ToRGBPlanes, innerYCbCr422ToRGB_C2_C3P2R, unrealYCbCrP,
     keliYCbCr422ToRGB_8u_C2P3R},
    {"YCrCb422ToRGB_C2P3R", kel::chooseYCrCb422ToRGBPlanes, innerYCrCb422ToRGB_C2_C3P2R, unrealYCrCbP,
     keliYCrCb422ToRGB_8u_C2P3R},
};

TEST(SimdYCbCr05b, PixelOrderToPlanesHasOneKernelPerTarget)
{
    for (const ToPlanesMember& m : kToPlanes) expectOneKernelPerTarget(m.name, m.choose);
}

TEST(SimdYCbCr05b, PixelOrderToPlanesRowMatchesScalarKernel)
{
    for (const ToPlanesMember& m : kToPlanes) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, 2 * width + 1, lead, gen);
                    ThreeBuffers fast(1, width + 1, gen);
                    ThreeBuffers scalar = fast;
                    Kel8u* const fastRows[3] = {fast.planes[0].row(0), fast.planes[1].row(0), fast.planes[2].row(0)};
                    Kel8u* const scalarRows[3] = {scalar.planes[0].row(0), scalar.planes[1].row(0),
                                                  scalar.planes[2].row(0)};
                    m.choose()(src.row(0), fastRows, width);
                    m.scalar(src.row(0), scalarRows, width);
                    ASSERT_TRUE(fast == scalar) << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

TEST(SimdYCbCr05b, PixelOrderToPlanesPublicFunctionsMatchScalarKernel)
{
    for (const ToPlanesMember& m : kToPlanes) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width < 1) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, 2 * width + 3 + (width & 1), 1 + height % 3, gen);
                    const int dstStep = width + 5 + (width & 1);
                    ThreeBuffers dst(height, dstStep, gen);
                    ThreeBuffers expected = dst;
                    for (int y = 0; y < height; ++y) {
                        Kel8u* const rows[3] = {expected.planes[0].row(y), expected.planes[1].row(y),
                                                expected.planes[2].row(y)};
                        if (width == 1) m.widthOne(src.row(y), rows);
                        else m.scalar(src.row(y), rows, width);
                    }
                    Kel8u* const planes[3] = {dst.planes[0].row(0), dst.planes[1].row(0), dst.planes[2].row(0)};
                    ASSERT_EQ(kelOk, m.call(src.row(0), src.step, planes, dstStep, {width, height}));
                    ASSERT_TRUE(dst == expected) << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// ---- planar sources to pixel order ----------------------------------------------------------------

// A member's row kernel, as dispatch chooses it and as the scalar reference,
// and its public function; three-byte members have an alpha they ignore.
// `span` pixels share a chroma sample; `oneStride` members take one stride
// for all three planes.
struct PlaneMember {
    const char* name;
    int pitch, span, minWidth;
    kel::PlaneRow (*choose)();
    kel::PlaneRow scalar;
    kel::PlaneRowAlpha (*chooseAlpha)();
    kel::PlaneRowAlpha scalarAlpha;
    KelResult (*call)(const Kel8u* const[3], const int[3], Kel8u*, int, KelImageSize);
    KelResult (*callAlpha)(const Kel8u* const[3], const int[3], Kel8u*, int, KelImageSize, Kel8u);
    KelResult (*callOneStride)(const Kel8u* const[3], int, Kel8u*, int, KelImageSize);
    KelResult (*callOneStrideAlpha)(const Kel8u* const[3], int, Kel8u*, int, KelImageSize, Kel8u);

    void* chosen() const
    {
        return pitch == 4 ? reinterpret_cast<void*>(chooseAlpha()) : reinterpret_cast<void*>(choose());
    }
    void fast(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha) const
    {
        if (pitch == 4) chooseAlpha()(y, cb, cr, dst, width, alpha);
        else choose()(y, cb, cr, dst, width);
    }
    void reference(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha) const
    {
        if (pitch == 4) scalarAlpha(y, cb, cr, dst, width, alpha);
        else scalar(y, cb, cr, dst, width);
    }
    // The chroma samples of a row of `width` pixels.
    int chromaWidth(int width) const { return (width + span - 1) / span; }
};

const PlaneMember kPlaneMembers[] = {
    {"YCbCr422ToRGB_P3C3R", 3, 2, 1, kel::chooseYCbCr422PlanesToRGB, innerYCbCr422ToRGB_8u_P3C3R, nullptr, nullptr,
     keliYCbCr422ToRGB_8u_P3C3R, nullptr, nullptr, nullptr},
    {"YCbCr411ToBGR_P3C3R", 3, 4, 4, kel::chooseYCbCr411ToBGR, innerYCbCr411ToBGR_8u_P3C3R, nullptr, nullptr,
     keliYCbCr411ToBGR_8u_P3C3R, nullptr, nullptr, nullptr},
    {"YCbCr411ToBGR_P3C4R", 4, 4, 4, nullptr, nullptr, kel::chooseYCbCr411ToBGRA, innerYCbCr411ToBGR_8u_P3C4R,
     nullptr, keliYCbCr411ToBGR_8u_P3C4R, nullptr, nullptr},
    {"YCbCrToBGR_P3C3R", 3, 1, 1, kel::chooseYCbCrPlanesToBGR, innerYCbCrToBGR_8u_P3C3R, nullptr, nullptr, nullptr,
     nullptr, keliYCbCrToBGR_8u_P3C3R, nullptr},
    {"YCbCrToBGR_P3C4R", 4, 1, 1, nullptr, nullptr, kel::chooseYCbCrPlanesToBGRA, innerYCbCrToBGR_8u_P3C4R, nullptr,
     nullptr, nullptr, keliYCbCrToBGR_8u_P3C4R},
};

TEST(SimdYCbCr05b, PlanarMembersHaveOneKernelPerTarget)
{
    for (const PlaneMember& m : kPlaneMembers) expectOneKernelPerTarget(m.name, [&] { return m.chosen(); });
}

// The row kernel alone at every width its member converts, planes off any
// alignment; a 4:1:1 row is given the group before it, as the row kernel may
// read it for a short row.
TEST(SimdYCbCr05b, PlanarRowMatchesScalarKernelAtEveryWidth)
{
    for (const PlaneMember& m : kPlaneMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width < m.minWidth) continue;
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows y(1, width + 1, lead, gen), cb(1, m.chromaWidth(width) + 1, 3 - lead, gen),
                        cr(1, m.chromaWidth(width) + 1, (lead + 1) % 4, gen), fast(1, m.pitch * width + 1, 3 - lead, gen);
                    kt::RandomRows scalar = fast;
                    const Kel8u alpha = static_cast<Kel8u>(gen());
                    m.fast(y.row(0), cb.row(0), cr.row(0), fast.row(0), width, alpha);
                    m.reference(y.row(0), cb.row(0), cr.row(0), scalar.row(0), width, alpha);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9 with odd strides: every byte of the
// destination buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYCbCr05b, PlanarPublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const PlaneMember& m : kPlaneMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width < m.minWidth) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    const bool oneStride = m.callOneStride || m.callOneStrideAlpha;
                    const int lumaStep = width + 3 + (width & 1);
                    const int chromaStep = oneStride ? lumaStep : m.chromaWidth(width) + 1 + height % 2;
                    kt::RandomRows y(height, lumaStep, 1, gen), cb(height, chromaStep, 2, gen), cr(height, chromaStep, 3, gen),
                        dst(height, m.pitch * width + 5 + (width & 1), 2, gen);
                    kt::RandomRows expected = dst;
                    const Kel8u alpha = static_cast<Kel8u>(gen());
                    for (int row = 0; row < height; ++row) {
                        m.reference(y.row(row), cb.row(row), cr.row(row), expected.row(row), width, alpha);
                    }
                    const Kel8u* const planes[3] = {y.row(0), cb.row(0), cr.row(0)};
                    const int steps[3] = {lumaStep, chromaStep, chromaStep};
                    const KelImageSize size{width, height};
                    KelResult result;
                    if (m.call) result = m.call(planes, steps, dst.row(0), dst.step, size);
                    else if (m.callAlpha) result = m.callAlpha(planes, steps, dst.row(0), dst.step, size, alpha);
                    else if (m.callOneStride) result = m.callOneStride(planes, lumaStep, dst.row(0), dst.step, size);
                    else result = m.callOneStrideAlpha(planes, lumaStep, dst.row(0), dst.step, size, alpha);
                    ASSERT_EQ(kelOk, result);
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every (Y, Cb, Cr) through a member whose chroma sample serves `span`
// pixels: a 4096 x 4096 image whose chroma pairs take each (Cb, Cr) 4096 /
// span times, each time with other luma values, so that all 256 luma values
// meet every pair.  Each pixel is held to its set's formula.
template <const kel::InverseYCbCr& K, int Span>
void checkEveryYCbCr(const PlaneMember& m)
{
    constexpr int kSide = 4096, kChroma = kSide / Span;
    std::vector<Kel8u> luma(static_cast<std::size_t>(kSide) * kSide), cb(static_cast<std::size_t>(kChroma) * kSide),
        cr(cb.size());
    for (std::size_t i = 0; i < cb.size(); ++i) {
        cb[i] = static_cast<Kel8u>(i & 0xFF);
        cr[i] = static_cast<Kel8u>(i >> 8 & 0xFF);
    }
    for (std::size_t i = 0; i < luma.size(); ++i) {
        const std::size_t cell = i / Span;  // chroma sample index, row by row
        luma[i] = static_cast<Kel8u>((cell >> 16) * Span + i % Span);
    }
    using Formula = kel::InverseRGB<K>;
    std::vector<Kel8u> expected(luma.size() * m.pitch);
    for (std::size_t i = 0; i < luma.size(); ++i) {
        const std::size_t cell = i / Span;
        const int b = Formula::b(luma[i], cb[cell], cr[cell]), g = Formula::g(luma[i], cb[cell], cr[cell]),
                  r = Formula::r(luma[i], cb[cell], cr[cell]);
        Kel8u* pixel = expected.data() + m.pitch * i;
        pixel[0] = static_cast<Kel8u>(b);
        pixel[1] = static_cast<Kel8u>(g);
        pixel[2] = static_cast<Kel8u>(r);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> out(expected.size());
        const Kel8u* const planes[3] = {luma.data(), cb.data(), cr.data()};
        const int steps[3] = {kSide, kChroma, kChroma};
        const KelImageSize size{kSide, kSide};
        const KelResult result = m.call ? m.call(planes, steps, out.data(), m.pitch * kSide, size)
                                        : m.callOneStride(planes, kSide, out.data(), m.pitch * kSide, size);
        ASSERT_EQ(kelOk, result);
        if (out == expected) return;
        for (std::size_t i = 0; i < out.size(); ++i) {
            const std::size_t pixel = i / m.pitch, cell = pixel / Span;
            ASSERT_EQ(expected[i], out[i]) << m.name << " on " << target << ": Y " << int(luma[pixel]) << ", Cb "
                                           << int(cb[cell]) << ", Cr " << int(cr[cell]) << ", byte " << i % m.pitch;
        }
    });
}

TEST(SimdYCbCr05b, EveryYCbCrOfSetQMatchesTheFormula)
{
    checkEveryYCbCr<kel::inverseQ, 4>(kPlaneMembers[1]);
}

TEST(SimdYCbCr05b, EveryYCbCrOfSetRAtFullResolutionMatchesTheFormula)
{
    checkEveryYCbCr<kel::inverseR, 1>(kPlaneMembers[3]);
}

// ---- filtered 4:2:0 ---------------------------------------------------------------------------------

TEST(SimdYCbCr05b, FilteredHasOneKernelPerTarget)
{
    expectOneKernelPerTarget("YCrCb420ToBGR_Filter", kel::chooseYCrCb420FilterToBGRA);
}

TEST(SimdYCbCr05b, FilteredRowPairMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                kt::RandomRows y(2, width + 3, lead, gen), cb(1, width / 2 + 1, 3 - lead, gen), cr(1, width / 2 + 1, 1, gen),
                    fast(2, 4 * width + 1, 3 - lead, gen);
                kt::RandomRows scalar = fast;
                const Kel8u alpha = static_cast<Kel8u>(gen());
                kel::chooseYCrCb420FilterToBGRA()(y.row(0), y.row(1), cb.row(0), cr.row(0), fast.row(0), fast.row(1),
                                                  width, alpha);
                innerYCrCb420ToBGR_8u_P3C4R(y.row(0), y.row(1), cb.row(0), cr.row(0), scalar.row(0), scalar.row(1),
                                            width, alpha);
                ASSERT_TRUE(fast.bytes == scalar.bytes) << target << ", width " << width << ", lead " << lead;
            }
        }
    });
}

// Heights 1 to 9: an odd last row is left alone and the warning comes after
// the work; plane 1 is Cr and plane 2 Cb.
TEST(SimdYCbCr05b, FilteredPublicFunctionMatchesScalarKernelAtEverySize)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width < 1) continue;
            for (int height = 1; height <= 9; ++height) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                const int lumaStep = width + 3 + (width & 1), chromaStep = width / 2 + 2 + height % 2;
                kt::RandomRows y(height, lumaStep, 1, gen), cr(height / 2 + 1, chromaStep, 2, gen),
                    cb(height / 2 + 1, chromaStep, 3, gen), dst(height, 4 * width + 5 + (width & 1), 2, gen);
                kt::RandomRows expected = dst;
                const Kel8u alpha = static_cast<Kel8u>(gen());
                for (int pair = 0; pair < height / 2; ++pair) {
                    innerYCrCb420ToBGR_8u_P3C4R(y.row(2 * pair), y.row(2 * pair + 1), cb.row(pair), cr.row(pair),
                                                expected.row(2 * pair), expected.row(2 * pair + 1), width, alpha);
                }
                const Kel8u* const planes[3] = {y.row(0), cr.row(0), cb.row(0)};
                const int steps[3] = {lumaStep, chromaStep, chromaStep};
                const KelResult want = (width | height) & 1 ? kelWarnOddSize : kelOk;
                ASSERT_EQ(want, keliYCrCb420ToBGR_Filter_8u_P3C4R(planes, steps, dst.row(0), dst.step, {width, height},
                                                                  alpha));
                ASSERT_TRUE(dst.bytes == expected.bytes) << target << ", " << width << " x " << height;
            }
        }
    });
}

} // namespace
