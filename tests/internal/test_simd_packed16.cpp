// The whole-vector kernels of packed 16-bit 565 output (4:2:0 planes and 4:2:2
// pixel order, truncated and dithered) against the scalar kernels, byte for
// byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "rgbxxxpx.h"
#include "rgbxxxsimd.h"
#include "support/targets.h"

namespace {

using namespace kel::packed;

// ---- buffers -------------------------------------------------------------------------------------

// 16-bit rows in a buffer of their own: `lead` guard elements, rows `step`
// elements apart, 37 guard elements after; every element random at first.
struct WordRows {
    WordRows(int rows, int step, int lead, std::mt19937& gen)
        : step(step), lead(lead), words(static_cast<std::size_t>(lead) + static_cast<std::size_t>(step) * rows + 37)
    {
        for (auto& w : words) w = static_cast<Kel16u>(gen());
    }
    Kel16u* row(int y) { return words.data() + lead + static_cast<std::ptrdiff_t>(step) * y; }
    int step, lead;
    std::vector<Kel16u> words;
};

// The threshold row of image row y, as the walks give it.
template <bool Dither>
const std::int32_t* thresholds(int y)
{
    return thresholdRow<Packing::k565, Dither>(y);
}

// ---- 4:2:0 planes ---------------------------------------------------------------------------------

// A 4:2:0 565 member with its chooser and its scalar walk (no vector kernel).
struct MemberCells {
    const char* name;
    KelResult (*call)(const Kel8u* const*, const int*, Kel16u*, int, KelImageSize);
    bool swapRB, dither;
    CellRowsKernel (*choose)();
    void (*scalarWalk)(const Kel8u* const*, const int*, Kel16u*, int, int, int, bool);
    void (*scalarRows)(const Kel8u*, const Kel8u*, const Kel8u*, const Kel8u*, Kel16u*, Kel16u*, int, int, bool,
                       const std::int32_t*, const std::int32_t*);
};

const MemberCells kCellMembers[] = {
    {"YCbCr420ToRGB565", keliYCbCr420ToRGB565_8u16u_P3C3R, false, false, kel::simdpacked::chooseCells565,
     walkCells<Coarse, Packing::k565, false, true>, innerCellRows<Coarse, Packing::k565, false>},
    {"YCbCr420ToBGR565", keliYCbCr420ToBGR565_8u16u_P3C3R, true, false, kel::simdpacked::chooseCells565,
     walkCells<Coarse, Packing::k565, false, true>, innerCellRows<Coarse, Packing::k565, false>},
    {"YCbCr420ToRGB565Dither", keliYCbCr420ToRGB565Dither_8u16u_P3C3R, false, true,
     kel::simdpacked::chooseCells565Dither, walkCells<Coarse, Packing::k565, true, true>,
     innerCellRows<Coarse, Packing::k565, true>},
    {"YCbCr420ToBGR565Dither", keliYCbCr420ToBGR565Dither_8u16u_P3C3R, true, true,
     kel::simdpacked::chooseCells565Dither, walkCells<Coarse, Packing::k565, true, true>,
     innerCellRows<Coarse, Packing::k565, true>},
};

const std::int32_t* thresholdsOf(const MemberCells& m, int y)
{
    return m.dither ? thresholds<true>(y) : nullptr;
}

// Source planes and a destination of one 4:2:0 image: odd strides, rows that
// start off any alignment, guards around every plane.
struct Image420 {
    Image420(int width, int height, std::uint32_t seed)
        : gen(seed),
          luma(height, width + 5 + (width & 1), 1, gen),
          cb((height + 1) / 2, (width + 1) / 2 + 3, 3, gen),
          cr((height + 1) / 2, (width + 1) / 2 + 6, 2, gen),
          dst(height, width + 3, 5, gen)
    {
    }
    std::mt19937 gen;
    kt::RandomRows luma, cb, cr;
    WordRows dst;
};

TEST(SimdPacked16, EveryTargetHasItsOwnKernel)
{
    const auto distinct = [](auto choose, const char* name) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
        EXPECT_GE(chosen.targets, 1) << name;
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
        EXPECT_EQ(0u, chosen.kernels.count(nullptr)) << name;
#else
        EXPECT_EQ(1u, chosen.kernels.count(nullptr)) << name;
#endif
    };
    distinct(kel::simdpacked::chooseCells565, "cells 565");
    distinct(kel::simdpacked::chooseCells565Dither, "cells 565 dither");
    distinct(kel::simdpacked::choosePairs565, "pairs 565");
    distinct(kel::simdpacked::choosePairs565Dither, "pairs 565 dither");
}

// The kernel alone, one and two rows, every threshold row phase: an even
// count within the row's pairs, and with the scalar kernel finishing from it
// the same words as the scalar kernel alone; nothing else touched.
TEST(SimdPacked16, CellKernelMatchesScalarKernelAtEveryWidth)
{
    for (const MemberCells& m : kCellMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            const CellRowsKernel kernel = m.choose();
            if (kernel == nullptr) return;
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    for (int rows = 1; rows <= 2; ++rows) {
                        std::mt19937 gen(static_cast<std::uint32_t>(width * 8 + lead * 2 + rows));
                        kt::RandomRows luma(2, width + 3, lead, gen), cb(1, width / 2 + 1, lead + 1, gen),
                            cr(1, width / 2 + 1, 3 - lead, gen);
                        WordRows fast(2, width + 1, lead, gen);
                        WordRows scalar = fast;
                        const int phase = (lead + rows) & 3;  // threshold rows phase, phase + 1
                        const bool two = rows == 2;
                        const std::int32_t* t0 = thresholdsOf(m, phase);
                        const std::int32_t* t1 = two ? thresholdsOf(m, phase + 1) : nullptr;
                        const Kel8u* y1 = two ? luma.row(1) : nullptr;
                        const int done = kernel(luma.row(0), y1, cb.row(0), cr.row(0), fast.row(0),
                                                two ? fast.row(1) : nullptr, width, m.swapRB, t0, t1);
                        ASSERT_EQ(0, done & 1) << m.name << " on " << target << ", width " << width;
                        ASSERT_LE(done, width & ~1) << m.name << " on " << target << ", width " << width;
                        m.scalarRows(luma.row(0), y1, cb.row(0), cr.row(0), fast.row(0), two ? fast.row(1) : nullptr,
                                     done, width, m.swapRB, t0, t1);
                        m.scalarRows(luma.row(0), y1, cb.row(0), cr.row(0), scalar.row(0),
                                     two ? scalar.row(1) : nullptr, 0, width, m.swapRB, t0, t1);
                        ASSERT_TRUE(fast.words == scalar.words) << m.name << " on " << target << ", width " << width
                                                                << ", lead " << lead << ", rows " << rows;
                    }
                }
            }
        });
    }
}

// The public functions at heights 1 to 9: every element of the destination
// buffer (rows, padding, guards) as the scalar walk leaves it.
TEST(SimdPacked16, CellMembersMatchScalarWalkAtEverySize)
{
    for (const MemberCells& m : kCellMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    Image420 image(width, height, static_cast<std::uint32_t>(width * 16 + height));
                    WordRows expected = image.dst;
                    const Kel8u* planes[3] = {image.luma.row(0), image.cb.row(0), image.cr.row(0)};
                    const int steps[3] = {image.luma.step, image.cb.step, image.cr.step};
                    // An odd byte step: its low bit is dropped.
                    const int dstStep = 2 * image.dst.step + 1;
                    m.scalarWalk(planes, steps, expected.row(0), image.dst.step, width, height, m.swapRB);
                    ASSERT_EQ(kelOk, m.call(planes, steps, image.dst.row(0), dstStep, {width, height}));
                    ASSERT_TRUE(image.dst.words == expected.words)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// ---- 4:2:2 pixel order -------------------------------------------------------------------------------

struct MemberPairs {
    const char* name;
    KelResult (*call)(const Kel8u*, int, Kel16u*, int, KelImageSize);
    bool swapRB, dither;
    PairsRowKernel (*choose)();
    void (*scalarWalk)(const Kel8u*, int, Kel16u*, int, int, int, bool);
    void (*scalarRow)(const Kel8u*, Kel16u*, int, int, bool, const std::int32_t*);
};

const MemberPairs kPairMembers[] = {
    {"YCbCr422ToRGB565", keliYCbCr422ToRGB565_8u16u_C2C3R, false, false, kel::simdpacked::choosePairs565,
     walkPairs<Folded, Packing::k565, false>, innerPairsRow<Folded, Packing::k565, false>},
    {"YCbCr422ToBGR565", keliYCbCr422ToBGR565_8u16u_C2C3R, true, false, kel::simdpacked::choosePairs565,
     walkPairs<Folded, Packing::k565, false>, innerPairsRow<Folded, Packing::k565, false>},
    {"YCbCr422ToRGB565Dither", keliYCbCr422ToRGB565Dither_8u16u_C2C3R, false, true,
     kel::simdpacked::choosePairs565Dither, walkPairs<Coarse, Packing::k565, true>,
     innerPairsRow<Coarse, Packing::k565, true>},
    {"YCbCr422ToBGR565Dither", keliYCbCr422ToBGR565Dither_8u16u_C2C3R, true, true,
     kel::simdpacked::choosePairs565Dither, walkPairs<Coarse, Packing::k565, true>,
     innerPairsRow<Coarse, Packing::k565, true>},
};

// The kernel alone on one row: an even count that never takes the odd last
// pixel, and the scalar kernel's words once it has finished the row.
TEST(SimdPacked16, PairKernelMatchesScalarKernelAtEveryWidth)
{
    for (const MemberPairs& m : kPairMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            const PairsRowKernel kernel = m.choose();
            if (kernel == nullptr) return;
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, 2 * width + 1, lead, gen);
                    WordRows fast(1, width + 1, lead, gen);
                    WordRows scalar = fast;
                    const std::int32_t* t = m.dither ? thresholds<true>(lead) : nullptr;
                    const int done = kernel(src.row(0), fast.row(0), width, m.swapRB, t);
                    ASSERT_EQ(0, done & 1) << m.name << " on " << target << ", width " << width;
                    ASSERT_LE(done, width & ~1) << m.name << " on " << target << ", width " << width;
                    m.scalarRow(src.row(0), fast.row(0), done, width, m.swapRB, t);
                    m.scalarRow(src.row(0), scalar.row(0), 0, width, m.swapRB, t);
                    ASSERT_TRUE(fast.words == scalar.words)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9, with rows apart (odd source and
// byte destination steps) and back to back (the whole-image path).
TEST(SimdPacked16, PairMembersMatchScalarWalkAtEverySize)
{
    for (const MemberPairs& m : kPairMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    for (const bool packed : {false, true}) {
                        std::mt19937 gen(static_cast<std::uint32_t>(width * 32 + height * 2 + packed));
                        const int srcStep = packed ? 2 * width : 2 * width + 3;
                        const int dstElements = packed ? width : width + 2;
                        kt::RandomRows src(height, srcStep, packed ? 0 : 1, gen);
                        WordRows dst(height, dstElements, packed ? 0 : 3, gen);
                        WordRows expected = dst;
                        m.scalarWalk(src.row(0), srcStep, expected.row(0), dstElements, width, height, m.swapRB);
                        const int dstStep = 2 * dstElements + (packed ? 0 : 1);
                        ASSERT_EQ(kelOk, m.call(src.row(0), srcStep, dst.row(0), dstStep, {width, height}));
                        ASSERT_TRUE(dst.words == expected.words) << m.name << " on " << target << ", " << width
                                                                 << " x " << height << (packed ? ", packed" : "");
                    }
                }
            }
        });
    }
}

// ---- every (Y, Cb, Cr) -----------------------------------------------------------------------------

// Every (Y, Cb, Cr) once in a 4096 x 4096 4:2:0 image: cell k (2048 a row)
// holds Cb = k & 255, Cr = (k >> 8) & 255 and the four luma values
// 4 (k >> 16) .. 4 (k >> 16) + 3.  As one 4:2:2 pixel-order row of 2^24
// pixels, pair k holds Cb, Cr = k & 255, (k >> 8) & 255 and Y = 2 (k >> 16),
// 2 (k >> 16) + 1.
constexpr int kSide = 4096, kCells = kSide / 2;

TEST(SimdPacked16, CellKernelsMatchScalarKernelOnEveryYCbCr)
{
    std::vector<Kel8u> luma(static_cast<std::size_t>(kSide) * kSide), cb(kCells * kCells), cr(kCells * kCells);
    for (int k = 0; k < kCells * kCells; ++k) {
        const int cy = k / kCells, cx = k % kCells;
        cb[k] = static_cast<Kel8u>(k & 0xFF);
        cr[k] = static_cast<Kel8u>(k >> 8 & 0xFF);
        for (int p = 0; p < 4; ++p) {
            luma[static_cast<std::size_t>(2 * cy + p / 2) * kSide + 2 * cx + p % 2] = static_cast<Kel8u>(4 * (k >> 16) + p);
        }
    }
    for (const MemberCells& m : kCellMembers) {
        std::vector<Kel16u> expected(luma.size());
        for (int pair = 0; pair < kCells; ++pair) {
            const std::size_t top = static_cast<std::size_t>(2 * pair) * kSide;
            m.scalarRows(&luma[top], &luma[top + kSide], &cb[pair * kCells], &cr[pair * kCells], &expected[top],
                         &expected[top + kSide], 0, kSide, m.swapRB, thresholdsOf(m, 2 * pair),
                         thresholdsOf(m, 2 * pair + 1));
        }
        kt::forEachSimdTarget([&](const std::string& target) {
            const CellRowsKernel kernel = m.choose();
            if (kernel == nullptr) return;
            std::vector<Kel16u> words(luma.size());
            for (int pair = 0; pair < kCells; ++pair) {
                const std::size_t top = static_cast<std::size_t>(2 * pair) * kSide;
                const int done = kernel(&luma[top], &luma[top + kSide], &cb[pair * kCells], &cr[pair * kCells],
                                        &words[top], &words[top + kSide], kSide, m.swapRB, thresholdsOf(m, 2 * pair),
                                        thresholdsOf(m, 2 * pair + 1));
                ASSERT_EQ(kSide, done) << m.name << " on " << target;
            }
            for (std::size_t i = 0; i < words.size(); ++i) {
                const int y = static_cast<int>(i / kSide), x = static_cast<int>(i % kSide);
                const int k = (y / 2) * kCells + x / 2;
                ASSERT_EQ(expected[i], words[i]) << m.name << " on " << target << ": Y " << int(luma[i]) << ", Cb "
                                                 << int(cb[k]) << ", Cr " << int(cr[k]) << ", row " << y << ", column "
                                                 << x;
            }
        });
    }
}

TEST(SimdPacked16, PairKernelsMatchScalarKernelOnEveryYCbCr)
{
    constexpr int kPixels = 1 << 24;
    std::vector<Kel8u> src(2 * static_cast<std::size_t>(kPixels));
    for (int k = 0; k < kPixels / 2; ++k) {
        Kel8u* p = &src[4 * static_cast<std::size_t>(k)];
        p[0] = static_cast<Kel8u>(2 * (k >> 16));
        p[1] = static_cast<Kel8u>(k & 0xFF);
        p[2] = static_cast<Kel8u>(2 * (k >> 16) + 1);
        p[3] = static_cast<Kel8u>(k >> 8 & 0xFF);
    }
    for (const MemberPairs& m : kPairMembers) {
        if (m.swapRB) continue;  // the colour path does not depend on the order
        // Every fourth row's thresholds, so that each phase meets all values.
        for (int phase = 0; phase < (m.dither ? 4 : 1); ++phase) {
            const std::int32_t* t = m.dither ? thresholds<true>(phase) : nullptr;
            std::vector<Kel16u> expected(kPixels);
            m.scalarRow(src.data(), expected.data(), 0, kPixels, m.swapRB, t);
            kt::forEachSimdTarget([&](const std::string& target) {
                const PairsRowKernel kernel = m.choose();
                if (kernel == nullptr) return;
                std::vector<Kel16u> words(kPixels);
                ASSERT_EQ(kPixels, kernel(src.data(), words.data(), kPixels, m.swapRB, t)) << m.name;
                for (std::size_t i = 0; i < words.size(); ++i) {
                    const Kel8u* p = &src[2 * (i & ~std::size_t{1})];
                    ASSERT_EQ(expected[i], words[i]) << m.name << " on " << target << ": Y " << int(src[2 * i])
                                                     << ", Cb " << int(p[1]) << ", Cr " << int(p[3]) << ", column "
                                                     << i << ", phase " << phase;
                }
            });
        }
    }
}

} // namespace
