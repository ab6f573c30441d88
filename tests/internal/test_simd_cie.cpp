// The vector rows of the XYZ and LUV members against their scalar kernels,
// byte for byte, on every SIMD target this processor runs: every input colour
// through each 8-bit row (XYZ, LUV and YCC both ways), float samples of every
// kind through the float rows; C3 and AC4 (the fourth element kept), every
// width up to 70 and a few wide ones, in place.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "mskcolor.h"
#include "mskcolorciesimd.h"
#include "support/targets.h"

namespace {

using namespace kel::cie;

struct Member {
    const char* name;
    ModelVectorRow which;
    int pitch;
    void (*kernel)(const Kel8u*, Kel8u*, int, int);
};

const Member kMembers[] = {
    {"RGBToXYZ C3", ModelVectorRow::RGBToXYZ8u, 3, innerRGBToXYZ_8u_C3R},
    {"RGBToXYZ AC4", ModelVectorRow::RGBToXYZ8u, 4, innerRGBToXYZ_8u_C3R},
    {"XYZToRGB C3", ModelVectorRow::XYZToRGB8u, 3, innerXYZToRGB_8u_C3R},
    {"XYZToRGB AC4", ModelVectorRow::XYZToRGB8u, 4, innerXYZToRGB_8u_C3R},
    {"RGBToLUV C3", ModelVectorRow::RGBToLUV8u, 3, innerRGBToLUV_8u_C3R},
    {"RGBToLUV AC4", ModelVectorRow::RGBToLUV8u, 4, innerRGBToLUV_8u_C3R},
    {"RGBToYCC C3", ModelVectorRow::RGBToYCC8u, 3, innerRGBToYCC_8u_C3R},
    {"RGBToYCC AC4", ModelVectorRow::RGBToYCC8u, 4, innerRGBToYCC_8u_C3R},
    {"YCCToRGB C3", ModelVectorRow::YCCToRGB8u, 3, innerYCCToRGB_8u_C3R},
    {"YCCToRGB AC4", ModelVectorRow::YCCToRGB8u, 4, innerYCCToRGB_8u_C3R},
    {"LUVToRGB C3", ModelVectorRow::LUVToRGB8u, 3, innerLUVToRGB_8u_C3R},
    {"LUVToRGB AC4", ModelVectorRow::LUVToRGB8u, 4, innerLUVToRGB_8u_C3R},
};

TEST(SimdCie, EveryTargetHasItsRows)
{
    for (const Member& m : kMembers) {
        const auto chosen = kt::chosenOnEveryTarget([&] { return chooseRow8u(m.which, m.pitch); });
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
        EXPECT_EQ(0u, chosen.kernels.count(nullptr)) << m.name;
#else
        EXPECT_EQ(1u, chosen.kernels.count(nullptr)) << m.name;
#endif
    }
    EXPECT_EQ(nullptr, chooseRow8u(ModelVectorRow::None, 3));
}

TEST(SimdCie, RowsMatchTheKernelsAtEveryWidthAndInPlace)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (const Member& m : kMembers) {
            const Row8u row = chooseRow8u(m.which, m.pitch);
            if (row == nullptr) continue;
            for (int width : kt::simdTestWidths()) {
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                std::vector<Kel8u> src(static_cast<std::size_t>(m.pitch) * width + 40), fast(src.size());
                for (auto& b : src) b = static_cast<Kel8u>(gen());
                for (auto& b : fast) b = static_cast<Kel8u>(gen());
                std::vector<Kel8u> exact = fast;
                row(src.data(), fast.data(), width);
                m.kernel(src.data(), exact.data(), width, m.pitch);
                ASSERT_TRUE(fast == exact) << target << ", " << m.name << ", width " << width;

                std::vector<Kel8u> inPlace = src, inPlaceExact = src;
                row(inPlace.data(), inPlace.data(), width);
                m.kernel(inPlaceExact.data(), inPlaceExact.data(), width, m.pitch);
                ASSERT_TRUE(inPlace == inPlaceExact) << target << ", " << m.name << " in place, width " << width;
            }
        }
    });
}

TEST(SimdCie, EveryInputColourThroughEachByteRow)
{
    const int width = 1 << 24;
    for (const Member& m : kMembers) {
        std::vector<Kel8u> src(static_cast<std::size_t>(m.pitch) * width);
        for (int p = 0; p < width; ++p) {
            src[static_cast<std::size_t>(m.pitch) * p] = static_cast<Kel8u>(p >> 16);
            src[static_cast<std::size_t>(m.pitch) * p + 1] = static_cast<Kel8u>(p >> 8);
            src[static_cast<std::size_t>(m.pitch) * p + 2] = static_cast<Kel8u>(p);
            if (m.pitch == 4) src[4 * static_cast<std::size_t>(p) + 3] = static_cast<Kel8u>(p * 7);
        }
        std::vector<Kel8u> exact(src.size(), 0x3C);
        m.kernel(src.data(), exact.data(), width, m.pitch);
        kt::forEachSimdTarget([&](const std::string& target) {
            const Row8u row = chooseRow8u(m.which, m.pitch);
            if (row == nullptr) return;
            std::vector<Kel8u> fast(src.size(), 0x3C);
            const std::int64_t refused = row(src.data(), fast.data(), width);
            EXPECT_LT(refused, width / 1000) << target << ", " << m.name;  // 5.8e-4 at most, the inverse LUV
            std::size_t bad = 0, first = 0;
            for (std::size_t i = 0; i < fast.size(); ++i)
                if (fast[i] != exact[i] && bad++ == 0) first = i;
            EXPECT_EQ(0u, bad) << target << ", " << m.name << ": first at byte " << first;
        });
    }
}

// Float samples of every kind: in 0..1, a little outside it, exact binary
// fractions (sums that are exact, float midpoints among them), values whose
// sums land near 0 and 1, huge and tiny values, NaN and the infinities.
std::vector<Kel32f> floatSamples(std::size_t n, std::mt19937& gen)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float specials[] = {0.0f, -0.0f, 1.0f, 0.5f, 1e-30f, -1e-30f, 3e38f, -3e38f, inf, -inf,
                              std::numeric_limits<float>::quiet_NaN(), 1e-45f};
    std::vector<Kel32f> v(n);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f), wide(-2.0f, 2.0f);
    for (auto& x : v) {
        switch (gen() % 8) {
        case 0: x = wide(gen); break;
        case 1: x = static_cast<float>(gen() % 257) / 256; break;
        case 2: x = static_cast<float>(gen() % 65537) / 65536; break;
        case 3: x = specials[gen() % 12]; break;
        case 4: x = std::nextafter(1.0f, static_cast<float>(gen() % 2)); break;
        default: x = unit(gen); break;
        }
    }
    return v;
}

bool sameBits(const std::vector<Kel32f>& a, const std::vector<Kel32f>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Kel32f)) == 0;
}

struct FloatMember {
    const char* name;
    ModelVectorRow which;
    int pitch;
    void (*kernel)(const Kel32f*, Kel32f*, int, int);
};

const FloatMember kFloatMembers[] = {
    {"RGBToXYZ 32f C3", ModelVectorRow::RGBToXYZ32f, 3, innerRGBToXYZ_32f_C3R},
    {"RGBToXYZ 32f AC4", ModelVectorRow::RGBToXYZ32f, 4, innerRGBToXYZ_32f_C3R},
    {"XYZToRGB 32f C3", ModelVectorRow::XYZToRGB32f, 3, innerXYZToRGB_32f_C3R},
    {"XYZToRGB 32f AC4", ModelVectorRow::XYZToRGB32f, 4, innerXYZToRGB_32f_C3R},
    {"RGBToLUV 32f C3", ModelVectorRow::RGBToLUV32f, 3, innerRGBToLUV_32f_C3R},
    {"RGBToLUV 32f AC4", ModelVectorRow::RGBToLUV32f, 4, innerRGBToLUV_32f_C3R},
    {"LUVToRGB 32f C3", ModelVectorRow::LUVToRGB32f, 3, innerLUVToRGB_32f_C3R},
    {"LUVToRGB 32f AC4", ModelVectorRow::LUVToRGB32f, 4, innerLUVToRGB_32f_C3R},
};

TEST(SimdCie, FloatRowsMatchTheKernels)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (const FloatMember& m : kFloatMembers) {
            const Row32f row = chooseRow32f(m.which, m.pitch);
#if KELCC_SIMD
            ASSERT_NE(nullptr, row) << target;
#else
            if (row == nullptr) return;
#endif
            for (int width : kt::simdTestWidths({5000})) {
                std::mt19937 gen(static_cast<std::uint32_t>(width + 17 * m.pitch));
                const std::vector<Kel32f> src = floatSamples(static_cast<std::size_t>(m.pitch) * width + 9, gen);
                std::vector<Kel32f> fast(src.size());
                for (auto& x : fast) x = static_cast<Kel32f>(gen() % 100);
                std::vector<Kel32f> exact = fast;
                row(src.data(), fast.data(), width);
                m.kernel(src.data(), exact.data(), width, m.pitch);
                ASSERT_TRUE(sameBits(fast, exact)) << target << ", " << m.name << ", width " << width;

                std::vector<Kel32f> inPlace = src, inPlaceExact = src;
                row(inPlace.data(), inPlace.data(), width);
                m.kernel(inPlaceExact.data(), inPlaceExact.data(), width, m.pitch);
                ASSERT_TRUE(sameBits(inPlace, inPlaceExact)) << target << ", " << m.name << " in place, width " << width;
            }
        }
    });
}

// Ordinary colours are almost never refused (LUV inputs: the LUV of random
// colours).
TEST(SimdCie, FewFloatPixelsAreRefused)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (const FloatMember& m : kFloatMembers) {
            const Row32f row = chooseRow32f(m.which, m.pitch);
            if (row == nullptr) return;
            std::mt19937 gen(9);
            std::uniform_real_distribution<float> unit(0.0f, 1.0f);
            const int width = 1 << 16;
            std::vector<Kel32f> src(static_cast<std::size_t>(m.pitch) * width), dst(src.size());
            for (auto& x : src) x = unit(gen);
            if (m.which == ModelVectorRow::LUVToRGB32f) {
                std::vector<Kel32f> luv(src.size());
                ASSERT_EQ(kelOk, (m.pitch == 3 ? keliRGBToLUV_32f_C3R : keliRGBToLUV_32f_AC4R)(
                                     src.data(), m.pitch * 4 * width, luv.data(), m.pitch * 4 * width, {width, 1}));
                src = luv;
            }
            // The forward LUV refuses about 0.4% of random colours; the others
            // below 0.1%.
            const int bound = m.which == ModelVectorRow::RGBToLUV32f ? width / 100 : width / 1000;
            EXPECT_LT(row(src.data(), dst.data(), width), bound) << target << ", " << m.name;
        }
    });
}

} // namespace

namespace {

// 10^8 pixels through each float row on the processor's own target: colours
// of every kind (as above) and the LUV of random colours for the inverse;
// every result against the scalar kernel, and the refused share.
TEST(LongSweepCie, HundredMillionFloatPixelsEachRow)
{
    const std::int64_t total = 100'000'000;
    const int width = 1 << 20;
    for (const FloatMember& m : kFloatMembers) {
        if (m.pitch != 3) continue;
        const Row32f row = chooseRow32f(m.which, 3);
        if (row == nullptr) GTEST_SKIP() << "no vector rows in this build";
        std::mt19937 gen(77);
        std::int64_t refused = 0, mismatches = 0;
        for (std::int64_t done = 0; done < total; done += width) {
            std::vector<Kel32f> src = floatSamples(3 * static_cast<std::size_t>(width), gen);
            if (m.which == ModelVectorRow::LUVToRGB32f && done / width % 2 == 0) {
                std::vector<Kel32f> luv(src.size());
                keliRGBToLUV_32f_C3R(src.data(), 12 * width, luv.data(), 12 * width, {width, 1});
                src = luv;
            }
            std::vector<Kel32f> fast(src.size()), exact(src.size());
            refused += row(src.data(), fast.data(), width);
            m.kernel(src.data(), exact.data(), width, 3);
            if (!sameBits(fast, exact))
                for (std::size_t i = 0; i < fast.size(); ++i)
                    if (std::bit_cast<std::uint32_t>(fast[i]) != std::bit_cast<std::uint32_t>(exact[i]) && mismatches++ < 5)
                        ADD_FAILURE() << m.name << ": pixel " << i / 3 << " channel " << i % 3 << " want " << exact[i]
                                      << " got " << fast[i];
        }
        EXPECT_EQ(0, mismatches) << m.name;
        std::printf("%s: %lld pixels, %lld refused (%.2e)\n", m.name, static_cast<long long>(total),
                    static_cast<long long>(refused), static_cast<double>(refused) / static_cast<double>(total));
    }
}

} // namespace
