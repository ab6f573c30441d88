// The filtered 4:2:0 family's vector kernels on every SIMD target this
// processor runs: the kernels alone against the row formulas (the taps over
// every input they take), and the five public functions against the same
// calls with the scalar kernels alone, every byte of every buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/targets.h"
#include "ycbcr44deintsimd.h"

namespace {

using kel::simddeint::Kernels;

// ---- the row formulas ----------------------------------------------------------------------

int lumaTap(int above, int row, int below, int round)
{
    return std::min((above + 2 * row + below + round) >> 2, 255);
}

int chromaTap(int first, int second, int round)
{
    return std::min((first + second + round) >> 1, 255);
}

int interpolated(int above, int upper, int lower, int below)
{
    return std::clamp((9 * (upper + lower) - above - below + 8) >> 4, 0, 255);
}

// A kernel's count: within the row, and the whole row but for a short tail
// once the row holds a few vectors.
void expectCount(int done, int count, int tail, const std::string& what)
{
    ASSERT_GE(done, 0) << what;
    ASSERT_LE(done, count) << what;
    if (count >= 512) ASSERT_GE(done, count - tail) << what;
}

std::vector<int> kernelWidths()
{
    std::vector<int> widths;
    for (int w = 0; w <= 70; ++w) widths.push_back(w);
    for (int w : {127, 128, 129, 130, 131, 1919, 1920, 4097}) widths.push_back(w);
    return widths;
}

// ---- kernels alone -------------------------------------------------------------------------------

TEST(SimdDeint, LumaRowMatchesTheTapAndWritesNothingElse)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        std::mt19937 gen(11);
        for (int width : kernelWidths()) {
            for (int round : {0, 4}) {
                kt::RandomRows src(3, width + 3, 5, gen), dst(1, width, 7, gen);
                kt::RandomRows expected = dst;
                const int done = fast->lumaRow(src.row(0), src.row(1), src.row(2), round, dst.row(0), width);
                const std::string what = target + " width " + std::to_string(width);
                expectCount(done, width, 0, what);
                for (int x = 0; x < done; ++x)
                    expected.row(0)[x] = static_cast<std::uint8_t>(lumaTap(src.row(0)[x], src.row(1)[x], src.row(2)[x], round));
                ASSERT_TRUE(dst.bytes == expected.bytes) << what;
            }
        }
    });
}

TEST(SimdDeint, ChromaRowMatchesTheTapAndWritesNothingElse)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        std::mt19937 gen(12);
        for (int samples : kernelWidths()) {
            for (int round : {0, 2}) {
                kt::RandomRows src(2, 2 * samples + 1, 3, gen), dst(2, samples + 5, 1, gen);
                kt::RandomRows expected = dst;
                const int done = fast->chromaRow(src.row(0), src.row(1), round, dst.row(0), dst.row(1), samples);
                const std::string what = target + " samples " + std::to_string(samples);
                expectCount(done, samples, 0, what);
                for (int k = 0; k < done; ++k) {
                    for (int c = 0; c < 2; ++c)
                        expected.row(c)[k] =
                            static_cast<std::uint8_t>(chromaTap(src.row(0)[2 * k + c], src.row(1)[2 * k + c], round));
                }
                ASSERT_TRUE(dst.bytes == expected.bytes) << what;
            }
        }
    });
}

TEST(SimdDeint, YUY2RowsMatchTheTapsAndWriteNothingElse)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        std::mt19937 gen(13);
        for (int width : kernelWidths()) {
            width &= ~1;
            for (int rounds = 0; rounds < 8; ++rounds) {
                const int upperRound = rounds & 1 ? 4 : 0, lowerRound = rounds & 2 ? 4 : 0,
                          chromaRound = rounds & 4 ? 2 : 0;
                kt::RandomRows luma(4, width + 1, 3, gen), chroma(2, width + 3, 2, gen), dst(2, 2 * width + 1, 5, gen);
                kt::RandomRows expected = dst;
                const int done = fast->yuy2Rows(luma.row(0), luma.row(1), luma.row(2), luma.row(3), upperRound,
                                                lowerRound, chroma.row(0), chroma.row(1), chromaRound, dst.row(0),
                                                dst.row(1), width);
                const std::string what = target + " width " + std::to_string(width) + " rounds " + std::to_string(rounds);
                expectCount(done, width, 0, what);
                ASSERT_EQ(0, done & 1) << what;
                for (int x = 0; x < done; ++x) {
                    const int c = chromaTap(chroma.row(0)[x], chroma.row(1)[x], chromaRound);
                    expected.row(0)[2 * x] =
                        static_cast<std::uint8_t>(lumaTap(luma.row(0)[x], luma.row(1)[x], luma.row(2)[x], upperRound));
                    expected.row(1)[2 * x] =
                        static_cast<std::uint8_t>(lumaTap(luma.row(1)[x], luma.row(2)[x], luma.row(3)[x], lowerRound));
                    expected.row(0)[2 * x + 1] = expected.row(1)[2 * x + 1] = static_cast<std::uint8_t>(c);
                }
                ASSERT_TRUE(dst.bytes == expected.bytes) << what;
            }
        }
    });
}

TEST(SimdDeint, InterpolatedRowMatchesTheFilterAndWritesNothingElse)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        std::mt19937 gen(14);
        for (int samples : kernelWidths()) {
            for (int extremes = 0; extremes < 2; ++extremes) {
                kt::RandomRows src(4, samples + 2, 1, gen), dst(1, samples, 6, gen);
                if (extremes) {
                    // 0 and 255 alone: both clamps and the largest and smallest sums.
                    for (auto& b : src.bytes) b = b & 1 ? 255 : 0;
                }
                kt::RandomRows expected = dst;
                const int done = fast->interpolatedRow(src.row(0), src.row(1), src.row(2), src.row(3), dst.row(0), samples);
                const std::string what = target + " samples " + std::to_string(samples);
                expectCount(done, samples, 0, what);
                for (int k = 0; k < done; ++k)
                    expected.row(0)[k] = static_cast<std::uint8_t>(
                        interpolated(src.row(0)[k], src.row(1)[k], src.row(2)[k], src.row(3)[k]));
                ASSERT_TRUE(dst.bytes == expected.bytes) << what;
            }
        }
    });
}

TEST(SimdDeint, RowCopiesReadNoFurtherThanTheirLastByte)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        std::mt19937 gen(15);
        for (int samples : kernelWidths()) {
            // Sources exactly as long as the row: a read past them leaves the
            // vector (a sanitizer build sees it), and the count says how far.
            std::vector<std::uint8_t> pairs(2 * static_cast<std::size_t>(samples)), row(samples);
            for (auto& b : pairs) b = static_cast<std::uint8_t>(gen());
            for (auto& b : row) b = static_cast<std::uint8_t>(gen());
            const std::string what = target + " samples " + std::to_string(samples);

            kt::RandomRows planes(2, samples + 1, 4, gen);
            kt::RandomRows expected = planes;
            const int done = fast->splitPairs(pairs.data(), planes.row(0), planes.row(1), samples);
            expectCount(done, samples, 0, what);
            for (int k = 0; k < done; ++k) {
                expected.row(0)[k] = pairs[2 * k];
                expected.row(1)[k] = pairs[2 * k + 1];
            }
            ASSERT_TRUE(planes.bytes == expected.bytes) << what;

            kt::RandomRows copy(1, samples, 3, gen);
            kt::RandomRows copyExpected = copy;
            const int copied = fast->copiedRow(row.data(), copy.row(0), samples);
            expectCount(copied, samples, 0, what);
            for (int k = 0; k < copied; ++k) copyExpected.row(0)[k] = row[k];
            ASSERT_TRUE(copy.bytes == copyExpected.bytes) << what;
        }
    });
}

// Every (above, row, below) and both rounds of the luma tap, every pair of
// the chroma tap, as rows of 2^24 and 2^16 samples.
TEST(SimdDeint, TapsMatchTheirFormulasOverEveryInput)
{
    constexpr int kLumaInputs = 1 << 24, kChromaInputs = 1 << 16;
    std::vector<std::uint8_t> a(kLumaInputs), b(kLumaInputs), c(kLumaInputs), out(kLumaInputs);
    for (int i = 0; i < kLumaInputs; ++i) {
        a[i] = static_cast<std::uint8_t>(i);
        b[i] = static_cast<std::uint8_t>(i >> 8);
        c[i] = static_cast<std::uint8_t>(i >> 16);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        for (int round : {0, 4}) {
            const int done = fast->lumaRow(a.data(), b.data(), c.data(), round, out.data(), kLumaInputs);
            ASSERT_EQ(kLumaInputs, done) << target;
            for (int i = 0; i < kLumaInputs; ++i)
                ASSERT_EQ(lumaTap(a[i], b[i], c[i], round), out[i]) << target << " input " << i << " round " << round;
        }
        for (int round : {0, 2}) {
            // Cb and Cr bytes of pairs: input i in both places of pair i.
            std::vector<std::uint8_t> first(2 * kChromaInputs), second(2 * kChromaInputs), cb(kChromaInputs),
                cr(kChromaInputs);
            for (int i = 0; i < kChromaInputs; ++i) {
                first[2 * i] = first[2 * i + 1] = static_cast<std::uint8_t>(i);
                second[2 * i] = second[2 * i + 1] = static_cast<std::uint8_t>(i >> 8);
            }
            const int done = fast->chromaRow(first.data(), second.data(), round, cb.data(), cr.data(), kChromaInputs);
            ASSERT_EQ(kChromaInputs, done) << target;
            for (int i = 0; i < kChromaInputs; ++i) {
                ASSERT_EQ(chromaTap(i & 0xFF, i >> 8, round), cb[i]) << target << " input " << i;
                ASSERT_EQ(chromaTap(i & 0xFF, i >> 8, round), cr[i]) << target << " input " << i;
            }
        }
    });
}

// The filter depends on its rows through upper + lower and above + below
// alone (0 .. 510 each): every pair of sums, at even and at odd bytes (the
// kernel works on the two in separate 16-bit lanes).
TEST(SimdDeint, InterpolatorMatchesItsFormulaOverEverySum)
{
    constexpr int kSums = 511, kInputs = kSums * kSums;
    std::vector<std::uint8_t> above(kInputs), upper(kInputs), lower(kInputs), below(kInputs), out(kInputs);
    for (int i = 0; i < kInputs; ++i) {
        const int inner = i / kSums, outer = i % kSums;
        upper[i] = static_cast<std::uint8_t>(inner / 2);
        lower[i] = static_cast<std::uint8_t>(inner - inner / 2);
        above[i] = static_cast<std::uint8_t>(outer / 2);
        below[i] = static_cast<std::uint8_t>(outer - outer / 2);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        const Kernels* fast = kel::simddeint::chooseKernels();
        if (!fast) return;
        for (int shift = 0; shift < 2; ++shift) {
            const int count = kInputs - shift;
            const int done = fast->interpolatedRow(above.data() + shift, upper.data() + shift, lower.data() + shift,
                                                   below.data() + shift, out.data(), count);
            ASSERT_EQ(count, done) << target;
            for (int i = shift; i < kInputs; ++i)
                ASSERT_EQ(interpolated(above[i], upper[i], lower[i], below[i]), out[i - shift])
                    << target << " input " << i;
        }
    });
}

// ---- the public functions ----------------------------------------------------------------------

// A plane with `margin` rows above and below the region (the slices read and
// write outside it), an odd stride, random bytes everywhere.
struct Plane {
    Plane(int rowBytes, int rows, int margin, std::mt19937& gen)
        : margin(margin), buffer(rows + 2 * margin, rowBytes + 3, 1 + rowBytes % 5, gen)
    {
    }
    Kel8u* at() { return buffer.row(margin); }
    int step() const { return buffer.step; }
    int margin;
    kt::RandomRows buffer;
};

std::vector<int> publicWidths()
{
    std::vector<int> widths;
    for (int w = 2; w <= 70; ++w) widths.push_back(w);
    for (int w : {127, 128, 129, 130, 131, 1920}) widths.push_back(w);
    return widths;
}

// Runs `call` with the scalar kernels alone, then on every target, each time
// on fresh copies of the same buffers, and compares every byte.
template <class Make, class Call>
void compareWithScalar(const Make& make, const Call& call, const std::string& what)
{
    auto reference = make();
    kel::simddeint::holdScalarForTest(true);
    const KelResult scalarStatus = call(reference);
    kel::simddeint::holdScalarForTest(false);
    kt::forEachSimdTarget([&](const std::string& target) {
        auto buffers = make();
        ASSERT_EQ(scalarStatus, call(buffers)) << what << " on " << target;
        for (std::size_t i = 0; i < buffers.size(); ++i)
            ASSERT_TRUE(buffers[i].buffer.bytes == reference[i].buffer.bytes)
                << what << " on " << target << ", plane " << i;
    });
}

TEST(SimdDeint, DeinterlacersMatchTheScalarKernels)
{
    for (int width : publicWidths()) {
        for (int height : {2, 3, 4, 6, 8, 10, 13}) {
            if (width == 1920 && height > 8) continue;
            for (int layout : {1, 4, 16, 21}) {  // top, middle, bottom slices, whole frame {
                const std::uint32_t seed = static_cast<std::uint32_t>(width * 1000 + height * 32 + layout);
                const auto make = [&]() {
                    std::mt19937 gen(seed);
                    std::vector<Plane> planes;
                    planes.emplace_back(width, height, 4, gen);             // Y
                    planes.emplace_back(width, height / 2 + 1, 4, gen);     // CbCr
                    planes.emplace_back(2 * width, height, 4, gen);         // YUY2
                    planes.emplace_back(width, height, 4, gen);             // Y
                    planes.emplace_back(width / 2, height / 2 + 1, 4, gen); // Cr
                    planes.emplace_back(width / 2, height / 2 + 1, 4, gen); // Cb
                    return planes;
                };
                const KelImageSize roi{width, height};
                const std::string what = "width " + std::to_string(width) + " height " + std::to_string(height) +
                                         " layout " + std::to_string(layout);
                compareWithScalar(make,
                                  [&](std::vector<Plane>& p) {
                                      return keliYCbCr420ToYCbCr422_Filter_8u_P2C2R(p[0].at(), p[0].step(), p[1].at(),
                                                                                    p[1].step(), p[2].at(), p[2].step(),
                                                                                    roi, layout);
                                  },
                                  "P2C2R " + what);
                compareWithScalar(make,
                                  [&](std::vector<Plane>& p) {
                                      Kel8u* dst[3] = {p[3].at(), p[4].at(), p[5].at()};
                                      const int steps[3] = {p[3].step(), p[4].step(), p[5].step()};
                                      return keliYCbCr420ToYCrCb420_Filter_8u_P2P3R(p[0].at(), p[0].step(), p[1].at(),
                                                                                    p[1].step(), dst, steps, roi, layout);
                                  },
                                  "P2P3R " + what);
            }
        }
    }
}

TEST(SimdDeint, InterpolatorsMatchTheScalarKernels)
{
    for (int width : publicWidths()) {
        for (int height : {8, 9, 16, 24, 31}) {
            if (width == 1920 && height > 16) continue;
            const std::uint32_t seed = static_cast<std::uint32_t>(width * 100 + height);
            const auto make = [&]() {
                std::mt19937 gen(seed);
                std::vector<Plane> planes;
                planes.emplace_back(width, height, 0, gen);                   // source Y
                planes.emplace_back((width + 1) / 2, (height + 1) / 2, 0, gen); // source chroma planes
                planes.emplace_back((width + 1) / 2, (height + 1) / 2, 0, gen);
                planes.emplace_back(width, (height + 1) / 2, 0, gen);         // source CbCr pairs
                planes.emplace_back(width, height, 0, gen);                   // destination Y, Cb, Cr
                planes.emplace_back((width + 1) / 2, height, 0, gen);
                planes.emplace_back((width + 1) / 2, height, 0, gen);
                return planes;
            };
            const KelImageSize roi{width, height};
            const std::string what = "width " + std::to_string(width) + " height " + std::to_string(height);
            const auto planesCall = [&](auto function) {
                return [&, function](std::vector<Plane>& p) {
                    const Kel8u* src[3] = {p[0].at(), p[1].at(), p[2].at()};
                    const int srcSteps[3] = {p[0].step(), p[1].step(), p[2].step()};
                    Kel8u* dst[3] = {p[4].at(), p[5].at(), p[6].at()};
                    const int dstSteps[3] = {p[4].step(), p[5].step(), p[6].step()};
                    return function(src, srcSteps, dst, dstSteps, roi);
                };
            };
            compareWithScalar(make, planesCall(keliYCbCr420ToYCbCr422_Filter_8u_P3R), "P3R " + what);
            compareWithScalar(make, planesCall(keliYCrCb420ToYCbCr422_Filter_8u_P3R), "CrCb P3R " + what);
            compareWithScalar(make,
                              [&](std::vector<Plane>& p) {
                                  Kel8u* dst[3] = {p[4].at(), p[5].at(), p[6].at()};
                                  const int dstSteps[3] = {p[4].step(), p[5].step(), p[6].step()};
                                  return keliYCbCr420ToYCbCr422_Filter_8u_P2P3R(p[0].at(), p[0].step(), p[3].at(),
                                                                                p[3].step(), dst, dstSteps, roi);
                              },
                              "P2P3R " + what);
        }
    }
}

} // namespace
