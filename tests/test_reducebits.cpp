// Bit-depth reduction, keliReduceBits: the entry's tests in their order, the
// no-dither engine and the ordered dither (plain and with noise) held to a model
// written here in long double, the worked rows, white and black at every level
// count, alpha per layout, strides, team sizes, out-of-range floats and failing
// allocations.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"
#include "support/hooks.h"
#include "support/layouts.h"
#include "support/reducemembers.h"

using namespace kt;
using namespace kt::reducebits;

namespace {

const std::vector<Member> kAlphaMembers = membersWhere([](const Member& m) { return m.pitch == 4 && m.channels == 3; });
const std::vector<Member> kWideMembers = membersWhere([](const Member& m) { return m.maxLevels > 256; });
const std::vector<Member> kFloatMembers = membersWhere([](const Member& m) { return floatSource(m.tag); });

// ---- the level arithmetic --------------------------------------------------------------------

// The step S (exact and as a float), its inverse I as a float, and for 8u the
// 8.8 fixed-point step F, for L intervals.
struct Steps {
    int L;
    Ld exactS;
    float S, I;
    int F;
};

Steps stepsFor(Tag t, int L)
{
    Steps k{L, 0, 0, 0, 0};
    if (t == Tag::U8) {
        k.exactS = (65280.0L / L) / 256;
        k.I = float(Ld(L) / 255);
    } else if (floatSource(t)) {
        k.exactS = 1.0L / L;
        k.I = float(L);
    } else {
        k.exactS = 65535.0L / L;
        k.I = float(Ld(L) / 65535);
    }
    k.S = float(k.exactS);
    k.F = int(65280.0L / L + kBias);
    return k;
}

// The 4 x 4 threshold pattern, k / 15 rounded to float.
const int kPatternK[16] = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
float patternAt(int cell) { return float(Ld(kPatternK[cell]) / 15); }

// Both noise tables, filled here through the public generator with seed 0.
struct Noise {
    std::array<Kel16s, 1024> index{};
    std::array<Kel32f, 1024> value{};
    Ld at(int x, int y) const { return value[(std::uint16_t(index[x & 1023]) + 2 * y + x) & 1023]; }
};

const Noise& noiseFor(int percent)
{
    static std::map<int, Noise> tables;
    auto found = tables.find(percent);
    if (found != tables.end()) return found->second;
    Noise n;
    KelRandUniformState_16s* indexState = nullptr;
    KelRandUniformState_32f* valueState = nullptr;
    const float high = float(Ld(percent) / 100);
    EXPECT_EQ(kelOk, kelsRandUniformInitAlloc_16s(&indexState, 0, 1024, 0));
    EXPECT_EQ(kelOk, kelsRandUniform_16s(n.index.data(), 1024, indexState));
    EXPECT_EQ(kelOk, kelsRandUniformFree_16s(indexState));
    EXPECT_EQ(kelOk, kelsRandUniformInitAlloc_32f(&valueState, -high, high, 0));
    EXPECT_EQ(kelOk, kelsRandUniform_32f(n.value.data(), 1024, valueState));
    EXPECT_EQ(kelOk, kelsRandUniformFree_32f(valueState));
    return tables.emplace(percent, n).first->second;
}

struct Request {
    int kind, noise, levels;
};

std::string describe(const Member& m, KelImageSize size, Request r)
{
    std::ostringstream s;
    s << m.name << " " << size.width << "x" << size.height << " kind " << r.kind << " noise " << r.noise
      << " levels " << r.levels;
    return s.str();
}

// What a call writes, by the level arithmetic evaluated here in long double:
// pixels of `src` (byte stride srcStep) into `dst` (byte stride dstStep). The
// ordered dither takes its strides in whole samples, so a byte stride is cut
// down to one; the no-dither engine uses the bytes as given. Other kinds write
// nothing.
void model(const Member& m, const std::uint8_t* src, long srcStep, std::uint8_t* dst, long dstStep, KelImageSize size,
           Request r)
{
    if (r.kind != kelDitherOff && r.kind != kelDitherOrdered) return;
    const int L = r.levels - 1;
    const Steps k = stepsFor(m.tag, L);
    const bool ordered = r.kind == kelDitherOrdered;
    if (ordered) {
        srcStep = srcStep / m.srcBytes * m.srcBytes - (srcStep % m.srcBytes < 0 ? m.srcBytes : 0);
        dstStep = dstStep / m.dstBytes * m.dstBytes - (dstStep % m.dstBytes < 0 ? m.dstBytes : 0);
    }
    float scaledPattern[16];
    for (int i = 0; i < 16; ++i) scaledPattern[i] = float(Ld(patternAt(i)) * k.exactS);
    const Noise* noise = ordered && r.noise != 0 ? &noiseFor(r.noise) : nullptr;
    const Ld inverse = 1.0L / L, half = 0.5L * inverse;
    const int scale = m.dstBytes == 1 ? 255 : 65535;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const int cell = (y & 3) * 4 + (x & 3);
            const Ld T = noise ? (Ld(patternAt(cell)) + noise->at(x, y)) * k.S : Ld(scaledPattern[cell]);
            for (int c = 0; c < m.channels; ++c) {
                const std::uint8_t* in = src + y * srcStep + long(x * m.pitch + c) * m.srcBytes;
                std::uint8_t* out = dst + y * dstStep + long(x * m.pitch + c) * m.dstBytes;
                const Ld v = sourceValue(m.tag, in);
                int o;
                if (ordered) {
                    const std::int32_t q = std::int32_t(v * k.I + kBias);
                    const Ld r2 = v - q * Ld(k.S);
                    int index = q;
                    Ld w = q * Ld(k.S);
                    if (r2 > T) {
                        w = q * Ld(k.S) + Ld(k.S);
                        ++index;
                    }
                    o = levelOutput(m, k.F, index, w);
                } else {
                    const Ld u = floatSource(m.tag) ? v : v / sourceRange(m.tag);
                    const std::int32_t q = std::int32_t(L * u);
                    Ld t = q * inverse;
                    if (u - t > half) t = t + inverse;
                    o = std::min<long long>(std::int32_t(t * scale), scale);
                }
                putOutput(m, out, o);
            }
        }
    }
}


// ---- sources -----------------------------------------------------------------------------------

// A value for the arithmetic to chew on: anywhere in the range, on a level,
// next to a level, or at either end.
Ld pickValue(Tag t, int levels, std::mt19937& gen)
{
    const int L = levels - 1;
    const int range = sourceRange(t);
    const int j = int(gen() % unsigned(L + 1));
    const Ld midway = std::min<Ld>(L, j + 0.5L) * range / L;  // between two levels
    if (floatSource(t)) {
        const float level = float(Ld(j) / L);
        switch (gen() % 6) {
        case 0: return float((gen() >> 8) * 0x1p-24L);
        case 1: return level;
        case 2: return std::min(1.0f, std::nextafter(level, 2.0f));
        case 3: return std::max(0.0f, std::nextafter(level, -1.0f));
        case 4: return float(midway);
        default: return (gen() & 1) ? 1.0f : 0.0f;
        }
    }
    const long long level = std::llround(Ld(j) * range / L);
    switch (gen() % 6) {
    case 0: return gen() % unsigned(range + 1);
    case 1: return level;
    case 2: return std::min<long long>(range, level + 1);
    case 3: return std::max<long long>(0, level - 1);
    case 4: return (gen() & 1) ? std::floor(midway) : std::ceil(midway);
    default: return (gen() & 1) ? range : 0;
    }
}

// Fills the processed channels of every pixel; the fourth sample of an AC4
// pixel gets `alpha` bytes (a NaN for floats unless told otherwise).
void fillSource(const Member& m, Image& src, KelImageSize size, int levels, std::uint32_t seed,
                std::uint8_t alpha = 0xFF)
{
    std::mt19937 gen(seed);
    for (int y = 0; y < size.height; ++y) {
        std::uint8_t* row = src.row(0, y);
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < m.pitch; ++c) {
                std::uint8_t* p = row + (x * m.pitch + c) * m.srcBytes;
                if (c < m.channels)
                    putSource(m.tag, p, pickValue(m.tag, levels, gen));
                else
                    std::memset(p, alpha, m.srcBytes);
            }
    }
}

// Values on the thresholds of the ordered dither: for each pixel a level q and
// the value nearest q * S + T, or one a unit (an integer, or a float's last
// place) beside it where the decision by T and by a near twin of T part: the
// pattern scaled by the float S or left unrounded, the noise threshold scaled
// by the exact S or rounded to float. A value where the twins agree is still
// next to the threshold, so ties r = T come up as well.
void fillThresholdEdges(const Member& m, Image& src, KelImageSize size, Request r, std::uint32_t seed)
{
    std::mt19937 gen(seed);
    const Steps k = stepsFor(m.tag, r.levels - 1);
    const Noise* noise = r.noise != 0 ? &noiseFor(r.noise) : nullptr;
    const int range = sourceRange(m.tag);
    auto rises = [&](Ld v, Ld T) {
        const std::int32_t q = std::int32_t(v * k.I + kBias);
        return v - q * Ld(k.S) > T;
    };
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const int cell = (y & 3) * 4 + (x & 3);
            const Ld b = patternAt(cell);
            Ld T, twins[2];
            if (noise) {
                const Ld n = noise->at(x, y);
                T = (b + n) * k.S;
                twins[0] = (b + n) * k.exactS;
                twins[1] = float((b + n) * k.S);
            } else {
                T = float(b * k.exactS);
                twins[0] = float(b * k.S);
                twins[1] = b * k.exactS;
            }
            for (int c = 0; c < m.channels; ++c) {
                const int q = int(gen() % unsigned(k.L));
                const Ld target = q * Ld(k.S) + T;
                std::vector<Ld> near;
                if (floatSource(m.tag)) {
                    float f = float(target);
                    for (int i = 0; i < 2; ++i) f = std::nextafter(f, -1.0f);
                    for (int i = 0; i < 5; ++i, f = std::nextafter(f, 2.0f))
                        if (f >= 0 && f <= 1) near.push_back(f);
                } else {
                    for (long long v = std::llround(std::floor(target)) - 1; v <= std::llround(std::floor(target)) + 2; ++v)
                        if (v >= 0 && v <= range) near.push_back(Ld(v));
                }
                if (near.empty()) near.push_back(0);
                Ld pick = near[near.size() / 2];
                for (Ld v : near)
                    if (rises(v, T) != rises(v, twins[0]) || rises(v, T) != rises(v, twins[1])) pick = v;
                putSource(m.tag, src.row(0, y) + (x * m.pitch + c) * m.srcBytes, pick);
            }
        }
}

class ReduceBitsMembers : public ::testing::TestWithParam<Member> {
protected:
    // Most tests run on the calling thread; the team sizes have a test of their own.
    ThreadCount serial_{1};

    // One call on a random image, held to the model: destination rows byte
    // for byte, source unchanged, guards and padding intact.
    void expectModel(KelImageSize size, Request r, std::uint32_t seed, bool onThresholds = false)
    {
        const Member& m = GetParam();
        Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
        Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        Image expected = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        src.fill(seed);
        fillSource(m, src, size, r.levels, seed);
        if (onThresholds) fillThresholdEdges(m, src, size, r, seed);
        dst.fill(seed + 7);
        expected.fill(seed + 7);
        const auto srcBefore = src.rows();
        ASSERT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels))
            << describe(m, size, r);
        model(m, src.row(0, 0), src.step(), expected.row(0, 0), expected.step(), size, r);
        const auto want = expected.rows(), got = dst.rows();
        const long at = firstDifference(want, got);
        EXPECT_EQ(-1, at) << describe(m, size, r) << ": first difference at byte " << at << " of the rows, "
                          << (at >= 0 ? int(want[at]) : 0) << " expected, " << (at >= 0 ? int(got[at]) : 0)
                          << " written";
        EXPECT_EQ(srcBefore, src.rows()) << describe(m, size, r);
        EXPECT_TRUE(src.intact() && dst.intact()) << describe(m, size, r);
    }

    std::vector<int> someLevels() const
    {
        const Member& m = GetParam();
        std::vector<int> levels{2, 3, 42, 255, 256};
        if (m.maxLevels == 65536)
            for (int more : {522, 1000, 40000, 65535, 65536}) levels.push_back(more);
        return levels;
    }

    // The destination bytes of one call on a small random image.
    std::vector<std::uint8_t> run(KelImageSize size, Request r, std::uint32_t seed, std::uint8_t alpha = 0xFF)
    {
        const Member& m = GetParam();
        Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
        Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        src.fill(seed);
        fillSource(m, src, size, r.levels, seed, alpha);
        dst.fill(3);
        EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels))
            << describe(m, size, r);
        EXPECT_TRUE(src.intact() && dst.intact()) << describe(m, size, r);
        return dst.rows();
    }
};

const KelImageSize kSizes[] = {{1, 1}, {3, 5}, {17, 9}, {1100, 2}};

// ---- the entry ---------------------------------------------------------------------------------

TEST_P(ReduceBitsMembers, NullThenSizeThenNoiseThenLevelsAndNothingWritten)
{
    const Member& m = GetParam();
    Image src = pixels(3, 2, m.pitch, false, m.srcBytes), dst = pixels(3, 2, m.pitch, false, m.dstBytes);
    src.fill(1);
    fillSource(m, src, {3, 2}, 2, 1);
    dst.fill(2);
    const auto before = dst.rows();
    const KelImageSize good{3, 2};
    auto call = [&](const void* s, void* d, KelImageSize z, int noise, int kind, int levels) {
        return m.call(s, src.step(), d, dst.step(), z, noise, kind, levels);
    };
    const void* s = src.ptr();
    void* d = dst.ptr();
    const int kinds[] = {0, 1, 2, 3, 4, 5, 7, -1, INT_MIN};
    for (int kind : kinds) {
        // A null pointer beats everything else.
        for (auto [ps, pd] : {std::pair<const void*, void*>{nullptr, d}, {s, nullptr}, {nullptr, nullptr}}) {
            EXPECT_EQ(kelErrNullPointer, call(ps, pd, good, 0, kind, 2)) << kind;
            EXPECT_EQ(kelErrNullPointer, call(ps, pd, {0, 0}, 101, kind, 1)) << kind;
            EXPECT_EQ(kelErrNullPointer, call(ps, pd, {-1, 2}, -1, kind, m.maxLevels + 1)) << kind;
        }
        // Then the size, before the noise and the levels.
        for (KelImageSize bad : {KelImageSize{0, 2}, {3, 0}, {-1, 2}, {3, -1}, {INT_MIN, 2}, {3, INT_MIN}, {0, 0}}) {
            EXPECT_EQ(kelErrSize, call(s, d, bad, 0, kind, 2)) << kind;
            EXPECT_EQ(kelErrSize, call(s, d, bad, 101, kind, 1)) << kind;
            EXPECT_EQ(kelErrSize, call(s, d, bad, INT_MIN, kind, INT_MAX)) << kind;
        }
        // Then the noise, whatever the kind, before the levels.
        for (int noise : {-1, 101, INT_MIN, INT_MAX}) {
            EXPECT_EQ(kelErrNoiseRange, call(s, d, good, noise, kind, 2)) << kind << " " << noise;
            EXPECT_EQ(kelErrNoiseRange, call(s, d, good, noise, kind, 1)) << kind << " " << noise;
            EXPECT_EQ(kelErrNoiseRange, call(s, d, good, noise, kind, m.maxLevels + 1)) << kind << " " << noise;
        }
        // Then the levels, whatever the kind.
        for (int levels : {1, 0, -1, INT_MIN, m.maxLevels + 1, INT_MAX})
            for (int noise : {0, 100})
                EXPECT_EQ(kelErrDitherLevels, call(s, d, good, noise, kind, levels)) << kind << " " << levels;
    }
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(src.intact() && dst.intact());
}

TEST_P(ReduceBitsMembers, LevelLimitsAndNoiseLimitsAreAccepted)
{
    const Member& m = GetParam();
    Image src = pixels(5, 3, m.pitch, false, m.srcBytes), dst = pixels(5, 3, m.pitch, false, m.dstBytes);
    src.fill(4);
    fillSource(m, src, {5, 3}, 2, 4);
    for (int kind : {kelDitherOff, kelDitherOrdered})
        for (int levels : {2, m.maxLevels})
            for (int noise : {0, 1, 100})
                EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), {5, 3}, noise, kind, levels))
                    << kind << " " << levels << " " << noise;
    EXPECT_TRUE(src.intact() && dst.intact());
}

TEST_P(ReduceBitsMembers, UnknownKindsReturnOkAndWriteNothing)
{
    const Member& m = GetParam();
    Image src = pixels(6, 5, m.pitch, false, m.srcBytes), dst = pixels(6, 5, m.pitch, false, m.dstBytes);
    src.fill(5);
    fillSource(m, src, {6, 5}, 2, 5);
    dst.fill(6);
    const auto before = dst.rows(), srcBefore = src.rows();
    for (int kind : {5, 7, -1, INT_MIN, INT_MAX})
        for (int noise : {0, 50, 100})
            for (int levels : {2, m.maxLevels})
                EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), {6, 5}, noise, kind, levels))
                    << kind;
    EXPECT_EQ(before, dst.rows());
    EXPECT_EQ(srcBefore, src.rows());
    EXPECT_TRUE(src.intact() && dst.intact());
}

// ---- the engines against the model -------------------------------------------------------------

TEST_P(ReduceBitsMembers, NoDitherFollowsTheMidpointArithmetic)
{
    std::uint32_t seed = 100;
    for (int levels : someLevels())
        for (KelImageSize size : kSizes) expectModel(size, {kelDitherOff, 0, levels}, seed++);
}

TEST_P(ReduceBitsMembers, NoDitherIgnoresTheNoiseAmount)
{
    std::uint32_t seed = 200;
    for (int levels : {2, 42, 256})
        for (int noise : {1, 60, 100}) {
            const KelImageSize size{17, 9};
            EXPECT_EQ(run(size, {kelDitherOff, 0, levels}, seed), run(size, {kelDitherOff, noise, levels}, seed));
            expectModel(size, {kelDitherOff, noise, levels}, seed++);
        }
}

TEST_P(ReduceBitsMembers, OrderedPlainFollowsTheScaledPattern)
{
    std::uint32_t seed = 300;
    for (int levels : someLevels())
        for (KelImageSize size : kSizes) expectModel(size, {kelDitherOrdered, 0, levels}, seed++);
}

TEST_P(ReduceBitsMembers, OrderedNoiseFollowsThePatternPlusTheNoiseTable)
{
    std::uint32_t seed = 400;
    for (int levels : someLevels())
        for (int noise : {1, 37, 100})
            for (KelImageSize size : kSizes) expectModel(size, {kelDitherOrdered, noise, levels}, seed++);
}

// Values next to the thresholds tell how T is formed: the plain pattern from
// the exact S rounded once to float, the noise threshold from the float S and
// not rounded.
TEST_P(ReduceBitsMembers, OrderedDecisionsRightAtTheThresholds)
{
    std::uint32_t seed = 500;
    for (int levels : someLevels())
        for (int noise : {0, 37, 100}) expectModel({33, 8}, {kelDitherOrdered, noise, levels}, seed++, true);
}

TEST_P(ReduceBitsMembers, NoiseFormsGiveTheSameBytesTwice)
{
    for (int noise : {5, 100}) {
        const KelImageSize size{1030, 3};
        const Request r{kelDitherOrdered, noise, 3};
        const auto first = run(size, r, 9);
        EXPECT_EQ(first, run(size, r, 9)) << noise;
        EXPECT_NE(first, run(size, {kelDitherOrdered, 0, 3}, 9)) << "the noise shows";
    }
}

// ---- white and black -----------------------------------------------------------------------------

// A 4 x 4 image (one of each cell) of one value in every processed channel.
std::vector<int> flatOutputs(const Member& m, Ld value, Request r)
{
    Image src = pixels(4, 4, m.pitch, false, m.srcBytes), dst = pixels(4, 4, m.pitch, false, m.dstBytes);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            for (int c = 0; c < m.pitch; ++c) putSource(m.tag, src.row(0, y) + (x * m.pitch + c) * m.srcBytes, value);
    dst.fill(8);
    EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), {4, 4}, r.noise, r.kind, r.levels))
        << describe(m, {4, 4}, r);
    std::vector<int> out;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            for (int c = 0; c < m.channels; ++c) out.push_back(outputAt(m, dst.row(0, y) + (x * m.pitch + c) * m.dstBytes));
    EXPECT_TRUE(dst.intact());
    return out;
}

// For every level count up to 256 white lands on the top level or above it
// (saturated), plain and with noise; it never wraps to a low value.
TEST_P(ReduceBitsMembers, OrderedWhiteStaysAtTheTopLevel)
{
    const Member& m = GetParam();
    for (int levels = 2; levels <= 256; ++levels) {
        const Steps k = stepsFor(m.tag, levels - 1);
        const int top = levelOutput(m, k.F, k.L, Ld(k.L) * k.S);
        for (int noise : {0, 1, 100})
            for (int o : flatOutputs(m, sourceRange(m.tag), {kelDitherOrdered, noise, levels}))
                ASSERT_LE(top, o) << m.name << " levels " << levels << " noise " << noise;
    }
}

// Above 256 levels (16u and 16s) the float I can put white one level below
// the top (q = L - 1), and then the remainder, about S, falls under the
// threshold of the cells with the largest k: the output is the level below
// the top there, never lower.
class ReduceBitsWide : public ReduceBitsMembers {};

TEST_P(ReduceBitsWide, OrderedWhiteNeverFallsMoreThanOneLevelAtAnyLevelCount)
{
    const Member& m = GetParam();
    for (int levels = 257; levels <= m.maxLevels; levels += (levels < 700 ? 1 : 97)) {
        const Steps k = stepsFor(m.tag, levels - 1);
        const int below = levelOutput(m, k.F, k.L - 1, Ld(k.L - 1) * k.S);
        for (int noise : {0, 100}) {
            const auto outs = flatOutputs(m, 65535, {kelDitherOrdered, noise, levels});
            for (std::size_t i = 0; i < outs.size(); ++i) {
                ASSERT_LE(below, outs[i]) << m.name << " levels " << levels << " noise " << noise;
                ASSERT_LE(outs[i], 65535);
            }
        }
    }
    Image src = pixels(4, 4, m.pitch, false, m.srcBytes), dst = pixels(4, 4, m.pitch, false, m.dstBytes),
          expected = pixels(4, 4, m.pitch, false, m.dstBytes);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4 * m.pitch; ++x) putSource(m.tag, src.row(0, y) + x * m.srcBytes, 65535);
    for (int levels : {522, 1000, 40000, 65535, 65536}) {
        dst.fill(1);
        expected.fill(1);
        ASSERT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), {4, 4}, 0, kelDitherOrdered, levels));
        model(m, src.row(0, 0), src.step(), expected.row(0, 0), expected.step(), {4, 4}, {kelDitherOrdered, 0, levels});
        EXPECT_EQ(expected.rows(), dst.rows()) << levels;
    }
    // 522 levels, the first count where it happens: I = float(521 / 65535) puts
    // 65535 * I + 9e-6 below 521, and on the cell k = 15 the remainder stays
    // under the threshold, so white prints level 520.
    const Steps k = stepsFor(m.tag, 521);
    ASSERT_EQ(520, std::int32_t(65535 * Ld(k.I) + kBias));
    const auto outs = flatOutputs(m, 65535, {kelDitherOrdered, 0, 522});
    EXPECT_EQ(levelOutput(m, k.F, 520, 520 * Ld(k.S)), outs[std::size_t(12 * m.channels)]);  // x 0, y 3
    EXPECT_EQ(65535, outs[0]);                                                          // k = 0 saturates
}

// Black stays at the bottom in the plain forms (a remainder of 0 never passes
// a threshold of at least 0).
TEST_P(ReduceBitsMembers, BlackStaysAtTheBottomWithoutNoise)
{
    const Member& m = GetParam();
    std::vector<int> counts{255, 256, m.maxLevels};
    for (int levels = 2; levels <= 80; ++levels) counts.push_back(levels);
    if (m.maxLevels > 256)
        for (int more : {257, 522, 1000, 40000, 65535}) counts.push_back(more);
    for (int levels : counts)
        for (int kind : {kelDitherOff, kelDitherOrdered})
            for (int o : flatOutputs(m, 0, {kind, 0, levels})) ASSERT_EQ(0, o) << m.name << " levels " << levels;
}

// With no dither, white is L * (1 / L) in extended precision, a little below 1
// for 29 values of L from 1 to 255, 41 the lowest; the truncation then gives
// one below the top. Every member, whatever its source scale, sees the same L.
TEST_P(ReduceBitsMembers, NoDitherWhiteFallsShortForTheSameTwentyNineL)
{
    const Member& m = GetParam();
    std::set<int> shortL;
    for (int L = 1; L <= 255; ++L)
        if (Ld(L) * (1.0L / L) < 1) shortL.insert(L);
    ASSERT_EQ(29u, shortL.size());
    ASSERT_EQ(41, *shortL.begin());
    for (int L = 1; L <= 255; ++L) {
        const int expect = topOf(m) - (shortL.count(L) ? 1 : 0);
        for (int o : flatOutputs(m, sourceRange(m.tag), {kelDitherOff, 0, L + 1}))
            ASSERT_EQ(expect, o) << m.name << " L " << L;
    }
}

// ---- alpha ---------------------------------------------------------------------------------------

class ReduceBitsAlpha : public ReduceBitsMembers {};

TEST_P(ReduceBitsAlpha, FourthSourceSampleIsNeverRead)
{
    const KelImageSize size{9, 6};
    for (Request r : {Request{kelDitherOff, 0, 5}, Request{kelDitherOrdered, 0, 5}, Request{kelDitherOrdered, 70, 5}}) {
        const auto a = run(size, r, 21, 0xFF), b = run(size, r, 21, 0x00), c = run(size, r, 21, 0x7F);
        EXPECT_EQ(a, b) << r.kind << " " << r.noise;
        EXPECT_EQ(a, c) << r.kind << " " << r.noise;
    }
}

TEST_P(ReduceBitsAlpha, FourthDestinationSampleIsNeverWritten)
{
    const Member& m = GetParam();
    const KelImageSize size{9, 6};
    for (Request r : {Request{kelDitherOff, 0, 5}, Request{kelDitherOrdered, 0, 5}, Request{kelDitherOrdered, 70, 5}})
        for (std::uint8_t fill : {0x00, 0xFF, 0x5A}) {
            Image src = pixels(size.width, size.height, 4, false, m.srcBytes);
            Image dst = pixels(size.width, size.height, 4, false, m.dstBytes);
            src.fill(3);
            fillSource(m, src, size, r.levels, 3);
            dst.fillWith(fill);
            ASSERT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels));
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    for (int b = 0; b < m.dstBytes; ++b)
                        ASSERT_EQ(fill, dst.row(0, y)[(x * 4 + 3) * m.dstBytes + b]) << x << "," << y;
            EXPECT_TRUE(dst.intact());
        }
}

// ---- strides -------------------------------------------------------------------------------------

// Byte buffers with any stride, even one that isn't a whole number of samples:
// rows placed by byte, samples written and read with memcpy; every byte of the
// destination buffer is compared, so padding and the bytes around the rows count.
TEST_P(ReduceBitsMembers, DithersCutByteStridesToSamplesNoDitherUsesThemAsGiven)
{
    const Member& m = GetParam();
    const KelImageSize size{7, 5};
    const int srcRow = size.width * m.pitch * m.srcBytes, dstRow = size.width * m.pitch * m.dstBytes;
    for (int extra : {1, 2, 3, 5, 6}) {
        const int srcStep = srcRow + extra, dstStep = dstRow + extra + 1;
        for (Request r : {Request{kelDitherOff, 0, 7}, Request{kelDitherOrdered, 0, 7}, Request{kelDitherOrdered, 30, 7},
                          Request{kelDitherOff, 0, m.maxLevels}}) {
            const std::size_t srcBytes = std::size_t(srcStep) * size.height + 16, dstBytes = std::size_t(dstStep) * size.height + 16;
            std::vector<std::uint8_t> src(srcBytes, 0xEE), dst(dstBytes, 0xC3), expected(dstBytes, 0xC3);
            // The rows where the call reads them: by byte without dither, by
            // whole samples in the dithers.
            std::mt19937 gen(extra);
            const long rowStart = r.kind == kelDitherOff ? srcStep : srcStep / m.srcBytes * m.srcBytes;
            for (int y = 0; y < size.height; ++y)
                    for (int i = 0; i < size.width * m.pitch; ++i)
                        putSource(m.tag, src.data() + 8 + y * rowStart + i * m.srcBytes, pickValue(m.tag, r.levels, gen));
            ASSERT_EQ(kelOk, m.call(src.data() + 8, srcStep, dst.data() + 8, dstStep, size, r.noise, r.kind, r.levels));
            model(m, src.data() + 8, srcStep, expected.data() + 8, dstStep, size, r);
            const long at = firstDifference(expected, dst);
            EXPECT_EQ(-1, at) << describe(m, size, r) << " strides " << srcStep << ", " << dstStep;
        }
    }
}

TEST_P(ReduceBitsMembers, ZeroAndNegativeSourceStridesAreTakenAsGiven)
{
    const Member& m = GetParam();
    const KelImageSize size{6, 4};
    const int srcRow = size.width * m.pitch * m.srcBytes, dstStep = size.width * m.pitch * m.dstBytes + 2 * m.dstBytes;
    for (Request r : {Request{kelDitherOff, 0, 9}, Request{kelDitherOrdered, 0, 9}, Request{kelDitherOrdered, 80, 9}})
        for (int srcStep : {0, -srcRow, -srcRow - 4 * m.srcBytes}) {
            std::vector<std::uint8_t> src(std::size_t(srcRow + 4 * m.srcBytes) * size.height, 0);
            std::mt19937 gen(srcStep);
            for (std::size_t i = 0; i + m.srcBytes <= src.size(); i += m.srcBytes)
                putSource(m.tag, src.data() + i, pickValue(m.tag, r.levels, gen));
            const std::uint8_t* first = srcStep < 0 ? src.data() + long(-srcStep) * (size.height - 1) : src.data();
            std::vector<std::uint8_t> dst(std::size_t(dstStep) * size.height, 0x99), expected(dst);
            ASSERT_EQ(kelOk, m.call(first, srcStep, dst.data(), dstStep, size, r.noise, r.kind, r.levels));
            model(m, first, srcStep, expected.data(), dstStep, size, r);
            EXPECT_EQ(-1, firstDifference(expected, dst)) << describe(m, size, r) << " source stride " << srcStep;
        }
}

// ---- threads -------------------------------------------------------------------------------------

TEST_P(ReduceBitsMembers, SameBytesForEveryTeamSize)
{
    for (int height : {1, 2, 7, 33})
        for (Request r : {Request{kelDitherOrdered, 0, 6}, Request{kelDitherOrdered, 45, 6}}) {
            std::vector<std::uint8_t> single;
            {
                ThreadCount one(1);
                single = run({23, height}, r, std::uint32_t(height));
            }
            for (int threads = 2; threads <= 5; ++threads) {
                ThreadCount count(threads);
                EXPECT_EQ(single, run({23, height}, r, std::uint32_t(height)))
                    << threads << " threads, height " << height << " noise " << r.noise;
            }
        }
}

// ---- allocation ----------------------------------------------------------------------------------

class ReduceBitsAllocation : public ReduceBitsMembers {};

TEST_P(ReduceBitsAllocation, NoiseFormFailsCleanlyAtEveryRequest)
{
    const Member& m = GetParam();
    const KelImageSize size{11, 6};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
    src.fill(12);
    fillSource(m, src, size, 4, 12);
    int failures = 0;
    for (int n = 1; n <= 20; ++n) {
        dst.fill(13);
        const auto before = dst.rows();
        kt::HookLog log;
        log.failAt = n;
        KelResult status;
        {
            const kt::HookScope scope(log);
            status = m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, 25, kelDitherOrdered, 4);
        }
        EXPECT_EQ(log.handedOut.size(), log.freed.size()) << "request " << n << " refused";
        EXPECT_TRUE(dst.intact());
        if (status == kelOk) {
            EXPECT_EQ(static_cast<std::size_t>(n - 1), log.handedOut.size())
                << "the call made as many requests as refusals needed";
            break;
        }
        EXPECT_EQ(kelErrNoMemory, status) << "request " << n << " refused";
        EXPECT_EQ(before, dst.rows()) << "request " << n << " refused";
        EXPECT_EQ(static_cast<std::size_t>(n), log.requests()) << "no request after a refusal";
        ++failures;
    }
    EXPECT_GE(failures, 2) << "both noise tables come from the allocator";
    EXPECT_LT(failures, 20);
}

TEST_P(ReduceBitsAllocation, PlainFormsAndNoDitherAllocateNothing)
{
    const Member& m = GetParam();
    const KelImageSize size{11, 6};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
    src.fill(14);
    fillSource(m, src, size, 4, 14);
    for (Request r : {Request{kelDitherOrdered, 0, 4}, Request{kelDitherOff, 0, 4}, Request{kelDitherOff, 90, 4},
                      Request{7, 50, 4}}) {
        kt::HookLog log;
        KelResult status;
        {
            const kt::HookScope scope(log);
            status = m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels);
        }
        EXPECT_EQ(kelOk, status);
        EXPECT_EQ(0u, log.requests()) << r.kind << " " << r.noise;
        EXPECT_EQ(0u, log.freed.size()) << r.kind << " " << r.noise;
    }
}

// ---- floats outside 0..1 -------------------------------------------------------------------------

class ReduceBitsFloat : public ReduceBitsMembers {};

TEST_P(ReduceBitsFloat, OutOfRangeSourcesSaturateAndNaNGivesTheBottom)
{
    const Member& m = GetParam();
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float low[] = {-0.25f, -1.0f, -3.5f, -1e30f, -inf, -std::numeric_limits<float>::max()};
    const float high[] = {1.5f, 2.0f, 7.25f, 1e30f, inf, std::numeric_limits<float>::max()};
    // With noise a threshold can fall to -S, so a value within S below 0 may
    // rise a level; the values below start at -1 there.
    auto check = [&](float value, int want) {
        for (int kind : {kelDitherOff, kelDitherOrdered})
            for (int noise : {0, 100})
                for (int levels : {2, 3, 42, 256}) {
                    if (kind == kelDitherOrdered && noise != 0 && value < 0 && value > -1) continue;
                    for (int o : flatOutputs(m, value, {kind, noise, levels}))
                        ASSERT_EQ(want, o) << m.name << " value " << value << " kind " << kind << " noise " << noise
                                           << " levels " << levels;
                }
    };
    for (float v : low) check(v, 0);
    for (float v : high) check(v, topOf(m));
    check(nan, 0);
    check(-nan, 0);
}

const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(15); };
INSTANTIATE_TEST_SUITE_P(ReduceBits, ReduceBitsMembers, ::testing::ValuesIn(kMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ReduceBitsAlpha, ::testing::ValuesIn(kAlphaMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ReduceBitsWide, ::testing::ValuesIn(kWideMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ReduceBitsAllocation, ::testing::ValuesIn(kMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ReduceBitsFloat, ::testing::ValuesIn(kFloatMembers), memberName);

// ---- worked values -------------------------------------------------------------------------------

std::vector<Kel8u> reduce8u(const std::vector<Kel8u>& values, KelImageSize size, Request r)
{
    ThreadCount serial(1);
    Image src = pixels(size.width, size.height, 1), dst = pixels(size.width, size.height, 1);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) src.at(x, y, 0) = values[std::size_t(y * size.width + x)];
    dst.fill(1);
    EXPECT_EQ(kelOk, keliReduceBits_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise,
                                            r.kind, r.levels));
    EXPECT_TRUE(dst.intact());
    std::vector<Kel8u> out;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) out.push_back(dst.at(x, y, 0));
    return out;
}

TEST(ReduceBitsExamples, TwoLevelsWithoutDitherSplitAtTheStrictMidpoint)
{
    std::vector<Kel8u> ramp(256);
    for (int i = 0; i < 256; ++i) ramp[std::size_t(i)] = Kel8u(i);
    const auto out = reduce8u(ramp, {256, 1}, {kelDitherOff, 0, 2});
    for (int i = 0; i < 256; ++i) EXPECT_EQ(i < 128 ? 0 : 255, out[std::size_t(i)]) << i;
}

TEST(ReduceBitsExamples, TwoLevelsOrderedOnTheEightColumnRamp)
{
    std::vector<Kel8u> ramp;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) ramp.push_back(Kel8u(36 * x));
    const auto out = reduce8u(ramp, {8, 4}, {kelDitherOrdered, 0, 2});
    const std::vector<Kel8u> row0{0, 0, 255, 0, 255, 255, 255, 255}, row1{0, 0, 0, 255, 0, 255, 0, 255},
        row2{0, 0, 255, 0, 255, 0, 255, 255};
    EXPECT_EQ(row0, std::vector<Kel8u>(out.begin(), out.begin() + 8));
    EXPECT_EQ(row1, std::vector<Kel8u>(out.begin() + 8, out.begin() + 16));
    EXPECT_EQ(row2, std::vector<Kel8u>(out.begin() + 16, out.begin() + 24));
    EXPECT_EQ(row1, std::vector<Kel8u>(out.begin() + 24, out.begin() + 32));
}

// Two levels: S = 255 and the threshold of cell k is 17 k, so a value rises
// exactly where it is above 17 k (255 itself is already the upper level);
// mid-grey fills half of every tile.
TEST(ReduceBitsExamples, TwoLevelsOrderedRiseAboveSeventeenK)
{
    for (int s = 0; s < 256; ++s) {
        const auto out = reduce8u(std::vector<Kel8u>(64, Kel8u(s)), {8, 8}, {kelDitherOrdered, 0, 2});
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int k = kPatternK[(y & 3) * 4 + (x & 3)];
                ASSERT_EQ(s == 255 || s > 17 * k ? 255 : 0, out[std::size_t(y * 8 + x)]) << s << " at " << x << "," << y;
            }
    }
    const auto grey = reduce8u(std::vector<Kel8u>(16, 128), {4, 4}, {kelDitherOrdered, 0, 2});
    int raised = 0;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(kPatternK[i] <= 7 ? 255 : 0, grey[std::size_t(i)]) << i;
        raised += grey[std::size_t(i)] == 255;
    }
    EXPECT_EQ(8, raised);
}

TEST(ReduceBitsExamples, FullRangeOrderedIsTheIdentity)
{
    // Every value on every cell: value v fills the 4 x 4 block (v % 16, v / 16).
    std::vector<Kel8u> all(64 * 64);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) all[std::size_t(y * 64 + x)] = Kel8u(x / 4 + 16 * (y / 4));
    EXPECT_EQ(all, reduce8u(all, {64, 64}, {kelDitherOrdered, 0, 256}));
    // 16u and 16s at 65536 levels: S = I = 1, the remainder is 0.
    std::vector<Kel16u> u(65536), uo(65536);
    std::vector<Kel16s> s(65536), so(65536);
    for (int i = 0; i < 65536; ++i) {
        u[std::size_t(i)] = Kel16u(i);
        s[std::size_t(i)] = Kel16s(i - 32768);
    }
    ASSERT_EQ(kelOk, keliReduceBits_16u_C1R(u.data(), 512, uo.data(), 512, {256, 256}, 0, kelDitherOrdered, 65536));
    ASSERT_EQ(kelOk, keliReduceBits_16s_C1R(s.data(), 512, so.data(), 512, {256, 256}, 0, kelDitherOrdered, 65536));
    EXPECT_EQ(u, uo);
    EXPECT_EQ(s, so);
}

// The 8u dithers print level q as (q * F) >> 8 with F truncated: the top level
// is 254 for 219 of the 255 values of L. White on the cell of the largest
// threshold stays on that top level.
TEST(ReduceBitsExamples, EightBitTopLevelIsTheTruncatedStepTimesL)
{
    ThreadCount serial(1);
    int at254 = 0;
    Image src = pixels(4, 4, 1), dst = pixels(4, 4, 1);
    src.fillWith(255);
    for (int levels = 2; levels <= 256; ++levels) {
        const int L = levels - 1;
        const int F = int(65280.0L / L + kBias);
        const int top = (L * F) >> 8;
        at254 += top == 254;
        ASSERT_TRUE(top == 254 || top == 255) << levels;
        ASSERT_EQ(kelOk, keliReduceBits_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), {4, 4}, 0,
                                                kelDitherOrdered, levels));
        EXPECT_EQ(top, dst.at(0, 3, 0)) << "levels " << levels;  // k = 15
    }
    EXPECT_EQ(219, at254);
    for (int levels : {2, 3, 4, 5, 6, 7, 9, 16, 18, 256}) EXPECT_EQ(255, ((levels - 1) * int(65280.0L / (levels - 1) + kBias)) >> 8);
    for (int levels : {8, 10, 12, 14}) EXPECT_EQ(254, ((levels - 1) * int(65280.0L / (levels - 1) + kBias)) >> 8);
}

TEST(ReduceBitsExamples, SixteenBitSignedRunsFromMinus32768To32767)
{
    const Kel16s ends[4] = {-32768, 32767, 32767, -32768};
    for (int kind : {kelDitherOff, kelDitherOrdered})
        for (int levels : {2, 3, 5, 17, 257}) {
            Kel16s out[4] = {1, 1, 1, 1};
            ASSERT_EQ(kelOk, keliReduceBits_16s_C1R(ends, 8, out, 8, {4, 1}, 0, kind, levels));
            EXPECT_EQ(std::vector<Kel16s>(ends, ends + 4), std::vector<Kel16s>(out, out + 4)) << kind << " " << levels;
            if (levels > 256) continue;  // the limit of 16s8u
            Kel8u narrow[4] = {1, 1, 1, 1};
            ASSERT_EQ(kelOk, keliReduceBits_16s8u_C1R(ends, 8, narrow, 4, {4, 1}, 0, kind, levels));
            EXPECT_EQ((std::vector<Kel8u>{0, 255, 255, 0}), std::vector<Kel8u>(narrow, narrow + 4)) << kind << " " << levels;
        }
    Kel16s out[4] = {1, 1, 1, 1};
    ASSERT_EQ(kelOk, keliReduceBits_16s_C1R(ends, 8, out, 8, {4, 1}, 0, kelDitherOrdered, 65536));
    EXPECT_EQ(std::vector<Kel16s>(ends, ends + 4), std::vector<Kel16s>(out, out + 4));
}

TEST(ReduceBitsExamples, SixtyFiveThousandLevelsOnlyForSixteenBitDestinations)
{
    const Kel32f src[1] = {0.5f};
    Kel16u u[1] = {7};
    Kel16s s[1] = {7};
    const Kel16u u16[1] = {1234};
    Kel16u out[1] = {0};
    EXPECT_EQ(kelErrDitherLevels, keliReduceBits_32f16u_C1R(src, 4, u, 2, {1, 1}, 0, kelDitherOff, 65536));
    EXPECT_EQ(kelErrDitherLevels, keliReduceBits_32f16s_C1R(src, 4, s, 2, {1, 1}, 0, kelDitherOrdered, 65536));
    EXPECT_EQ(kelErrDitherLevels, keliReduceBits_16u8u_C1R(u16, 2, reinterpret_cast<Kel8u*>(out), 1, {1, 1}, 0, kelDitherOff, 257));
    EXPECT_EQ(7, u[0]);
    EXPECT_EQ(7, s[0]);
    EXPECT_EQ(kelOk, keliReduceBits_16u_C1R(u16, 2, out, 2, {1, 1}, 0, kelDitherOrdered, 65536));
    EXPECT_EQ(1234, out[0]);
}

} // namespace
