// The vector row of the 8-bit pixel-order colour twist against the extended
// scalar row, byte for byte, on every SIMD target this processor runs; and,
// for one ordinary matrix, every one of the 2^24 colours through the C3R
// member against a long double model of the sum and its rounding.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/targets.h"
#include "twistsimd.h"

namespace {

using namespace kel::twist;

using Matrix = std::array<Kel32f, 12>;

constexpr float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

// Matrices of every kind the row may meet: decimal weights, exact ties,
// negative and huge weights, NaN and infinite entries, and random floats of
// mixed magnitudes.
std::vector<Matrix> matrices()
{
    std::vector<Matrix> all = {
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0},
        {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0},
        {0.15f, 0.2f, 0.95f, 0, 0.95f, -0.15f, 0.2f, 3.25f, 0.299f, 0.587f, 0.114f, -7.5f},
        {0.95f, 0.2f, -0.15f, 10.7f, -0.2f, 0.95f, 0.15f, -0.3f, 0.15f, 0.15f, 0.2f, 100.1f},
        {0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0},
        {0.5f, 0.5f, 0.5f, 0.5f, 0.25f, 0.25f, 0, 0.5f, 0.75f, -0.25f, 0.5f, 0.25f},
        {0.5f, -0.5f, 0, 127.5f, 0.125f, 0.125f, 0.25f, -0.375f, 1.5f, 0, -0.5f, -0.5f},
        {-1, 0, 0, 255, 0, -0.5f, 0, 127.5f, -0.25f, -0.25f, -0.5f, 0},
        {300, -200, 50, 1000, 1e6f, 1e6f, 1e6f, 0, -1e7f, 0.5f, 0, -3},
        {1e30f, -1e30f, 1e-30f, 0, 3e38f, 3e38f, 3e38f, -3e38f, 1e-40f, 1, 0, 0.5f},
        {kNaN, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0},
        {1, 0, 0, 0, 0, 1, 0, kInf, 0, 0, 1, 0},
        {kInf, 0, 0, -kInf, 0, -kInf, 0, 0, 1, 1, 1, kNaN},
        {0.9f, 0.25f, -0.12f, 6.5f, -0.08f, 1.05f, 0.10f, -3.0f, 0.15f, -0.20f, 0.95f, 12.25f},
    };
    std::mt19937 gen(4242);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    std::uniform_int_distribution<int> magnitude(-24, 10);
    for (int k = 0; k < 24; ++k) {
        Matrix m{};
        for (float& w : m) w = std::ldexp(unit(gen), magnitude(gen));
        for (int i = 3; i < 12 && k % 2 == 0; i += 4) m[i] = 300 * unit(gen);
        all.push_back(m);
    }
    return all;
}

// Pixel rows: random bytes, all 0, all 255, and a mix of 0, 1, 254, 255.
std::vector<std::vector<Kel8u>> sourceRows(int width, std::mt19937& gen)
{
    const std::size_t n = static_cast<std::size_t>(3 * width);
    std::vector<std::vector<Kel8u>> rows(4, std::vector<Kel8u>(n));
    static const Kel8u kExtremes[4] = {0, 1, 254, 255};
    for (std::size_t i = 0; i < n; ++i) {
        rows[0][i] = static_cast<Kel8u>(gen());
        rows[1][i] = 0;
        rows[2][i] = 255;
        rows[3][i] = kExtremes[gen() % 4];
    }
    return rows;
}

// The vector row as the row layer uses it: the pixels it wrote, then the
// scalar row for the rest.
void vectorRow(FastRow<Kel8u> row, const Kel8u* src, Kel8u* dst, std::int64_t count, const Kel32f* t)
{
    const std::int64_t done = row != nullptr ? row(src, dst, count, t) : 0;
    ASSERT_GE(done, 0);
    ASSERT_LE(done, count);
    twistRowExact8u(src + 3 * done, dst + 3 * done, count - done, t);
}

TEST(SimdTwist, VectorRowMatchesTheExtendedRow)
{
    const auto all = matrices();
    kt::forEachSimdTarget([&](const std::string& target) {
        const FastRow<Kel8u> row = chooseTwistRow8u();
#if KELCC_SIMD
        ASSERT_NE(nullptr, row) << target;
#endif
        for (int width : kt::simdTestWidths({1000, 4099})) {
            std::mt19937 gen(static_cast<std::uint32_t>(width));
            for (std::size_t k = 0; k < all.size(); ++k) {
                for (const auto& src : sourceRows(width, gen)) {
                    // Destinations start alike and random, with a tail that
                    // neither row may touch.
                    std::vector<Kel8u> fast(src.size() + 64), exact(src.size() + 64);
                    for (auto& b : fast) b = static_cast<Kel8u>(gen());
                    exact = fast;
                    vectorRow(row, src.data(), fast.data(), width, all[k].data());
                    twistRowExact8u(src.data(), exact.data(), width, all[k].data());
                    ASSERT_TRUE(fast == exact) << target << ", width " << width << ", matrix " << k;

                    // In place.
                    std::vector<Kel8u> inPlace = src;
                    vectorRow(row, inPlace.data(), inPlace.data(), width, all[k].data());
                    ASSERT_TRUE(std::equal(inPlace.begin(), inPlace.end(), exact.begin()))
                        << target << ", in place, width " << width << ", matrix " << k;
                }
            }
        }
    });
}

// The scalar row itself against the model on the same rows, so that the
// comparison above compares with the right values.
long double sum(const Kel32f* t, int i, long double c0, long double c1, long double c2)
{
    const long double w0 = t[4 * i], w1 = t[4 * i + 1], w2 = t[4 * i + 2], k = t[4 * i + 3];
    return ((w0 * c0 + k) + w1 * c1) + w2 * c2;
}

// Saturated at 0 and 255 before rounding, then half to even by the unsigned
// form; NaN gives 0.
Kel8u byteOf(long double s)
{
    if (s >= 255) return 255;
    if (s <= 0) return 0;
    if (std::isnan(s)) return 0;
    const long double y = s + 0.5L;
    long double n = std::trunc(y);
    if (std::fmod(n, 2.0L) != 0 && n == y) n -= 1;
    return static_cast<Kel8u>(n);
}

TEST(SimdTwist, ExtendedRowMatchesTheModel)
{
    const auto all = matrices();
    std::mt19937 gen(7);
    for (const Matrix& m : all)
        for (const auto& src : sourceRows(300, gen)) {
            std::vector<Kel8u> out(src.size());
            twistRowExact8u(src.data(), out.data(), 300, m.data());
            for (int x = 0; x < 300; ++x)
                for (int i = 0; i < 3; ++i)
                    ASSERT_EQ(byteOf(sum(m.data(), i, src[3 * x], src[3 * x + 1], src[3 * x + 2])), out[3 * x + i])
                        << "pixel " << x << ", channel " << i;
        }
}

// Every colour, as a 4096 x 4096 image in one call, on every target: for
// this matrix the member gives the model's byte everywhere.
TEST(SimdTwist, EveryColourOfOneMatrixThroughTheMember)
{
    const Matrix t{0.90f, 0.25f, -0.12f, 6.5f, -0.08f, 1.05f, 0.10f, -3.0f, 0.15f, -0.20f, 0.95f, 12.25f};
    const int side = 4096;
    const std::size_t pixels = static_cast<std::size_t>(side) * side;
    std::vector<Kel8u> src(3 * pixels), want(3 * pixels), got(3 * pixels);
    for (std::size_t p = 0; p < pixels; ++p) {
        const int c0 = static_cast<int>(p >> 16), c1 = static_cast<int>((p >> 8) & 255), c2 = static_cast<int>(p & 255);
        src[3 * p] = static_cast<Kel8u>(c0);
        src[3 * p + 1] = static_cast<Kel8u>(c1);
        src[3 * p + 2] = static_cast<Kel8u>(c2);
        for (int i = 0; i < 3; ++i) want[3 * p + i] = byteOf(sum(t.data(), i, c0, c1, c2));
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::fill(got.begin(), got.end(), Kel8u{0x5A});
        ASSERT_EQ(kelOk, keliColorTwist32f_8u_C3R(src.data(), 3 * side, got.data(), 3 * side, {side, side}, t.data()));
        std::size_t bad = 0, first = 0;
        for (std::size_t i = 0; i < got.size(); ++i)
            if (got[i] != want[i] && bad++ == 0) first = i;
        EXPECT_EQ(0u, bad) << target << ": first at pixel " << first / 3 << " channel " << first % 3 << ", want "
                           << int(want[first]) << ", got " << int(got[first]);
    });
}

} // namespace
