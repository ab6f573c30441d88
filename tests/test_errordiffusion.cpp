// Error-diffusion forms of keliReduceBits: Floyd-Steinberg, Jarvis-Judice-Ninke
// and Stucki, plain and with noise, held to a model written here in long
// double (error rows in floats, guards, the rows carried from one channel to
// the next inside a section, the clamp, the midpoint test, the sum orders and
// the outputs by type), with the section plan for every team size, worked
// values, alpha, out-of-range floats and the allocations through the hooks.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"
#include "support/hooks.h"
#include "support/layouts.h"
#include "support/reducemembers.h"

using namespace kt;
using namespace kt::reducebits;

namespace {

// The bottom limit of the float sources: 2^-23, not 0.
const Ld kFloatBottom = 1.1920928955078125e-07L;

const std::vector<Member> kManyChannelMembers = membersWhere([](const Member& m) { return m.channels > 1; });
const std::vector<Member> kAlphaMembers = membersWhere([](const Member& m) { return m.pitch == 4 && m.channels == 3; });
const std::vector<Member> kFloatMembers = membersWhere([](const Member& m) { return floatSource(m.tag); });

const int kKinds[] = {kelDitherFloydSteinberg, kelDitherJarvisJudiceNinke, kelDitherStucki};

// ---- the level arithmetic --------------------------------------------------------------------

// The level width S and its inverse I as floats, the 8.8 step F of 8u.
struct Steps {
    int L;
    float S, I;
    std::uint32_t F;
};

Steps stepsFor(Tag t, int L)
{
    Steps k{L, 0, 0, 0};
    if (t == Tag::U8) {
        k.S = float((65280.0L / L) / 256);
        k.I = float(Ld(L) / 255);
    } else if (floatSource(t)) {
        k.S = float(1.0L / L);
        k.I = float(Ld(L));
    } else {
        k.S = float(65535.0L / L);
        k.I = float(Ld(L) / 65535);
    }
    k.F = std::uint32_t(std::int32_t(65280.0L / L + kBias));
    return k;
}

// ---- noise ---------------------------------------------------------------------------------------

// The two tables of a noise form, filled here through the public generator
// with seed 0: indices in 0..1024, values between (50 - n) S / 100 and
// (50 + n) S / 100, both ends formed from the float S and rounded to float.
struct Noise {
    std::array<Kel16s, 1024> index{};
    std::array<Kel32f, 1024> value{};
    Ld at(int x, int y) const { return value[(std::uint16_t(index[x & 1023]) + 2 * y + x) & 1023]; }
};

const Noise& noiseFor(int percent, float S)
{
    static std::map<std::pair<int, float>, Noise> tables;
    const auto key = std::make_pair(percent, S);
    auto found = tables.find(key);
    if (found != tables.end()) return found->second;
    Noise n;
    KelRandUniformState_16s* indexState = nullptr;
    KelRandUniformState_32f* valueState = nullptr;
    const float low = float(Ld(50 - percent) * Ld(S) / 100), high = float(Ld(50 + percent) * Ld(S) / 100);
    EXPECT_EQ(kelOk, kelsRandUniformInitAlloc_16s(&indexState, 0, 1024, 0));
    EXPECT_EQ(kelOk, kelsRandUniform_16s(n.index.data(), 1024, indexState));
    EXPECT_EQ(kelOk, kelsRandUniformFree_16s(indexState));
    EXPECT_EQ(kelOk, kelsRandUniformInitAlloc_32f(&valueState, low, high, 0));
    EXPECT_EQ(kelOk, kelsRandUniform_32f(n.value.data(), 1024, valueState));
    EXPECT_EQ(kelOk, kelsRandUniformFree_32f(valueState));
    return tables.emplace(key, n).first->second;
}

// ---- the section plan ----------------------------------------------------------------------------

// The channels of each section, in order, and the number of error buffers,
// for `channels` processed channels and a team of `threads`.
struct Plan {
    int buffers;
    std::vector<std::vector<int>> sections;
};

Plan planFor(int channels, int threads)
{
    if (channels == 1) return {1, {{0}}};
    int T = threads;
    if (channels == 3 && T >= 4) T -= 1;  // three channels never need a fourth buffer
    if (T == 1) return {1, {channels == 3 ? std::vector<int>{0, 1, 2} : std::vector<int>{0, 1, 2, 3}}};
    if (channels == 3) return {T, T == 2 ? std::vector<std::vector<int>>{{0, 1}, {2}} : std::vector<std::vector<int>>{{0}, {1}, {2}}};
    if (T == 2) return {T, {{0, 1}, {2, 3}}};
    if (T == 3) return {T, {{0, 1}, {2}, {3}}};
    return {T, {{0}, {1}, {2}, {3}}};
}

// ---- the model -----------------------------------------------------------------------------------

struct Request {
    int kind, noise, levels;
};

std::string describe(const Member& m, KelImageSize size, Request r, int threads)
{
    std::ostringstream s;
    s << m.name << " " << size.width << "x" << size.height << " kind " << r.kind << " noise " << r.noise << " levels "
      << r.levels << " threads " << threads;
    return s.str();
}

// One sample's decision from its diffused value v and the midpoint t: the
// output (unsigned scale) and the error left in the current row.
struct Decision {
    int out;
    float error;
};

Decision decide(const Member& m, const Steps& k, Ld v, Ld t)
{
    const Ld top = floatSource(m.tag) ? 1 : sourceRange(m.tag);
    const Ld bottom = floatSource(m.tag) ? kFloatBottom : 0;
    if (v >= top) return {topOf(m), 0.0f};
    if (!(v >= bottom)) return {0, 0.0f};  // a NaN counts as below the bottom
    std::int32_t q = std::int32_t(v * k.I + kBias);
    Ld r = v - q * Ld(k.S);
    if (r > t) {
        r = v - (q * Ld(k.S) + Ld(k.S));
        ++q;
    }
    return {levelOutput(m, k.F, q, q * Ld(k.S)), float(r)};
}

// Error rows of one section: two (Floyd-Steinberg) or three rows, each with
// two zero guards at either end, so that x - 2 .. x + 2 are always readable.
class ErrorRows {
public:
    ErrorRows(int count, int width) : rows_(std::size_t(count), std::vector<float>(std::size_t(width) + 4, 0.0f)) {}
    float* row(int i) { return rows_[std::size_t(i)].data() + 2; }

private:
    std::vector<std::vector<float>> rows_;
};

// What a call writes: for each section of the plan, its rows cleared once and
// then carried (swapped or rotated) through the rows of all its channels.
void model(const Member& m, const std::uint8_t* src, long srcStep, std::uint8_t* dst, long dstStep, KelImageSize size,
           Request r, int threads)
{
    const Steps k = stepsFor(m.tag, r.levels - 1);
    const Noise* noise = r.noise != 0 ? &noiseFor(r.noise, k.S) : nullptr;
    const Ld half = float(0.5L * Ld(k.S));
    const bool fs = r.kind == kelDitherFloydSteinberg;
    const bool stucki = r.kind == kelDitherStucki;
    const Ld a = stucki ? 2 : 3, b = stucki ? 4 : 5, c = stucki ? 8 : 7;
    const Ld d = float(stucki ? 1.0L / 42 : 1.0L / 48);
    const int width = size.width;
    for (const auto& section : planFor(m.channels, threads).sections) {
        ErrorRows rows(fs ? 2 : 3, width);
        int first = 0, second = 1, third = 2;  // previous, current; or two above, above, current
        for (int channel : section)
            for (int y = 0; y < size.height; ++y) {
                const std::uint8_t* in = src + y * srcStep + long(channel) * m.srcBytes;
                std::uint8_t* out = dst + y * dstStep + long(channel) * m.dstBytes;
                for (int x = 0; x < width; ++x) {
                    const Ld s = sourceValue(m.tag, in + long(x) * m.pitch * m.srcBytes);
                    Ld v;
                    float* C;
                    if (fs) {
                        const float* P = rows.row(first);
                        C = rows.row(second);
                        const Ld e = ((5 * Ld(P[x]) + 3 * Ld(P[x + 1])) + Ld(P[x - 1])) + 7 * Ld(C[x - 1]);
                        v = s + e * 0.0625L;
                    } else {
                        const float* A = rows.row(first);
                        const float* B = rows.row(second);
                        C = rows.row(third);
                        Ld e = a * A[x - 1] + A[x - 2];
                        e = e + b * A[x];
                        e = e + a * A[x + 1];
                        e = e + A[x + 2];
                        e = e + a * B[x - 2];
                        e = e + b * B[x - 1];
                        e = e + c * B[x];
                        e = e + b * B[x + 1];
                        e = e + a * B[x + 2];
                        e = e + b * C[x - 2];
                        e = e + c * C[x - 1];
                        v = e * d + s;
                    }
                    const Decision dec = decide(m, k, v, noise ? noise->at(x, y) : half);
                    C[x] = dec.error;
                    putOutput(m, out + long(x) * m.pitch * m.dstBytes, dec.out);
                }
                if (fs) {
                    std::swap(first, second);
                } else {
                    const int oldFirst = first;
                    first = second;
                    second = third;
                    third = oldFirst;
                }
            }
    }
}


// ---- sources -------------------------------------------------------------------------------------

// A value anywhere in the range, on a level, a unit off a level, halfway
// between two, or at either end; for floats also just above 1 and just below
// 2^-23 now and then.
Ld pickValue(Tag t, int levels, std::mt19937& gen)
{
    const int L = levels - 1;
    const int range = sourceRange(t);
    const int j = int(gen() % unsigned(L + 1));
    if (floatSource(t)) {
        const float level = float(Ld(j) / L);
        switch (gen() % 8) {
        case 0:
        case 1: return float((gen() >> 8) * 0x1p-24L);
        case 2: return level;
        case 3: return std::nextafter(level, 2.0f);
        case 4: return std::max(0.0f, std::nextafter(level, -1.0f));
        case 5: return float(std::min<Ld>(L, j + 0.5L) / L);
        case 6: return (gen() & 1) ? 1.0f : 0.0f;
        default: return (gen() & 1) ? 1e-8f : float(kFloatBottom);
        }
    }
    const long long level = std::llround(Ld(j) * range / L);
    switch (gen() % 6) {
    case 0:
    case 1: return gen() % unsigned(range + 1);
    case 2: return level;
    case 3: return std::min<long long>(range, level + 1);
    case 4: return std::max<long long>(0, level - 1);
    default: return (gen() & 1) ? range : 0;
    }
}

// Fills the processed channels of every pixel; the fourth sample of an AC4
// pixel gets `alpha` in every byte.
void fillSource(const Member& m, Image& src, KelImageSize size, int levels, std::uint32_t seed, std::uint8_t alpha = 0xFF)
{
    std::mt19937 gen(seed);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < m.pitch; ++c) {
                std::uint8_t* p = src.row(0, y) + (x * m.pitch + c) * m.srcBytes;
                if (c < m.channels)
                    putSource(m.tag, p, pickValue(m.tag, levels, gen));
                else
                    std::memset(p, alpha, std::size_t(m.srcBytes));
            }
}

void fillConstant(const Member& m, Image& src, KelImageSize size, Ld value)
{
    for (int y = 0; y < size.height; ++y)
        for (int i = 0; i < size.width * m.pitch; ++i) putSource(m.tag, src.row(0, y) + i * m.srcBytes, value);
}

// A destination read back channel by channel: out[c][y * width + x].
std::vector<std::vector<int>> channelsOf(const Member& m, Image& dst, KelImageSize size)
{
    std::vector<std::vector<int>> out(std::size_t(m.pitch));
    for (int c = 0; c < m.pitch; ++c)
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                out[std::size_t(c)].push_back(outputAt(m, dst.row(0, y) + (x * m.pitch + c) * m.dstBytes));
    return out;
}

const KelImageSize kSizes[] = {{1, 1}, {2, 1}, {3, 1}, {5, 1}, {17, 1}, {1, 2}, {2, 2}, {3, 2},
                               {5, 2}, {17, 2}, {1, 5}, {2, 5}, {3, 5}, {5, 5}, {17, 5}};

class ErrorDiffusion : public ::testing::TestWithParam<Member> {
protected:
    // One call on the source `src`, held to the model: destination rows
    // byte for byte (the fourth sample of AC4 untouched), the source
    // unchanged, guards and padding of both intact.
    void expectModelOn(Image& src, KelImageSize size, Request r, int threads, std::uint32_t seed)
    {
        const Member& m = GetParam();
        Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        Image expected = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        dst.fill(seed + 7);
        expected.fill(seed + 7);
        const auto srcBefore = src.rows();
        {
            ThreadCount team(threads);
            ASSERT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels))
                << describe(m, size, r, threads);
        }
        model(m, src.row(0, 0), src.step(), expected.row(0, 0), expected.step(), size, r, threads);
        const auto want = expected.rows(), got = dst.rows();
        const long at = firstDifference(want, got);
        EXPECT_EQ(-1, at) << describe(m, size, r, threads) << ": first difference at byte " << at << " of the rows, "
                          << (at >= 0 ? int(want[std::size_t(at)]) : 0) << " expected, "
                          << (at >= 0 ? int(got[std::size_t(at)]) : 0) << " written";
        EXPECT_EQ(srcBefore, src.rows()) << describe(m, size, r, threads);
        EXPECT_TRUE(src.intact() && dst.intact()) << describe(m, size, r, threads);
    }

    void expectModel(KelImageSize size, Request r, int threads, std::uint32_t seed)
    {
        const Member& m = GetParam();
        Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
        src.fill(seed);
        fillSource(m, src, size, r.levels, seed, std::uint8_t(seed));
        expectModelOn(src, size, r, threads, seed);
    }

    std::vector<int> someLevels() const
    {
        std::vector<int> levels{2, 3, 8, 16, 256};
        if (GetParam().maxLevels == 65536)
            for (int more : {1000, 65536}) levels.push_back(more);
        return levels;
    }

    // The destination of one call, channel by channel.
    std::vector<std::vector<int>> run(Image& src, KelImageSize size, Request r, int threads)
    {
        const Member& m = GetParam();
        Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
        dst.fill(3);
        ThreadCount team(threads);
        EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels))
            << describe(m, size, r, threads);
        EXPECT_TRUE(src.intact() && dst.intact()) << describe(m, size, r, threads);
        return channelsOf(m, dst, size);
    }
};

// ---- the engines against the model ---------------------------------------------------------------

// Every size with every level count; one call in five on a team of 2 to 5,
// in turn, the others on the calling thread alone. The calls are grouped by
// team size, so that the thread pool is not resized at every call.
struct Case {
    KelImageSize size;
    Request request;
    std::uint32_t seed;
};
int teamFor(std::uint32_t seed) { return seed % 5 ? 1 : int(2 + seed / 5 % 4); }

TEST_P(ErrorDiffusion, PlainFormsFollowTheModel)
{
    std::vector<Case> cases;
    std::uint32_t seed = 1000;
    for (int kind : kKinds)
        for (int levels : someLevels())
            for (KelImageSize size : kSizes) cases.push_back({size, {kind, 0, levels}, seed++});
    for (int threads = 1; threads <= 5; ++threads)
        for (const Case& c : cases)
            if (teamFor(c.seed) == threads) expectModel(c.size, c.request, threads, c.seed);
}

// Noise 30 on half the sizes, 100 on the other half, 1 on the largest.
TEST_P(ErrorDiffusion, NoiseFormsFollowTheModel)
{
    std::vector<Case> cases;
    std::uint32_t seed = 2000;
    for (int kind : kKinds)
        for (int levels : someLevels()) {
            for (std::size_t i = 0; i < std::size(kSizes); ++i)
                cases.push_back({kSizes[i], {kind, i % 2 ? 100 : 30, levels}, seed++});
            cases.push_back({{17, 5}, {kind, 1, levels}, seed++});
        }
    for (int threads = 1; threads <= 5; ++threads)
        for (const Case& c : cases)
            if (teamFor(c.seed) == threads) expectModel(c.size, c.request, threads, c.seed);
}

// Every team size on the same images: the plan decides which channels share
// their error rows.
TEST_P(ErrorDiffusion, EveryTeamSizeFollowsItsPlan)
{
    for (int threads = 1; threads <= 5; ++threads) {
        std::uint32_t seed = 3000;  // the same images for every team size
        for (int kind : kKinds)
            for (int noise : {0, 30})
                expectModel({17, 5}, {kind, noise, 3}, threads, seed++);
    }
}

// Wide rows: the noise index table repeats after 1024 columns, and the
// buffers of several sections lie one after the other.
TEST_P(ErrorDiffusion, WideRowsFollowTheModel)
{
    std::uint32_t seed = 4000;
    for (int kind : kKinds)
        for (int noise : {0, 60}) expectModel({1030, 2}, {kind, noise, 5}, int(1 + seed % 5), seed++);
}

// Floats anywhere: above 1 and +inf print the top, below 2^-23, negatives,
// -inf and NaN the bottom; none passes error on.
class ErrorDiffusionFloat : public ErrorDiffusion {};

TEST_P(ErrorDiffusionFloat, AnyFloatFollowsTheClamp)
{
    const Member& m = GetParam();
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float odd[] = {nan, -nan, inf, -inf, 1e30f, -1e30f, std::numeric_limits<float>::max(),
                         -std::numeric_limits<float>::max(), 2.0f, 1.0000001f, -0.25f, -1e-30f, 1e-8f,
                         std::numeric_limits<float>::denorm_min()};
    std::uint32_t seed = 5000;
    for (int kind : kKinds)
        for (int noise : {0, 100})
            for (int levels : {2, 3, 256}) {
                const KelImageSize size{17, 5};
                Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
                fillSource(m, src, size, levels, seed);
                std::mt19937 gen(seed);
                for (int y = 0; y < size.height; ++y)
                    for (int i = 0; i < size.width * m.pitch; ++i)
                        if (gen() % 3 == 0) putSource(m.tag, src.row(0, y) + i * 4, odd[gen() % std::size(odd)]);
                expectModelOn(src, size, {kind, noise, levels}, int(1 + seed % 5), seed);
                ++seed;
            }
}

// The engines take their strides in whole samples: a byte stride that is not
// one is cut down to the sample below, for the source and the destination.
TEST_P(ErrorDiffusion, ByteStridesAreCutToWholeSamples)
{
    const Member& m = GetParam();
    const KelImageSize size{5, 4};
    const int srcRow = size.width * m.pitch * m.srcBytes, dstRow = size.width * m.pitch * m.dstBytes;
    std::uint32_t seed = 6000;
    for (int extra : {1, 3})
        for (int kind : kKinds)
            for (int noise : {0, 30}) {
                const int srcStep = srcRow + extra, dstStep = dstRow + extra + 1;
                const long srcWhole = srcStep / m.srcBytes * m.srcBytes, dstWhole = dstStep / m.dstBytes * m.dstBytes;
                std::vector<std::uint8_t> src(std::size_t(srcStep) * size.height + 16, 0);
                std::vector<std::uint8_t> dst(std::size_t(dstStep) * size.height + 16, 0xC3), expected(dst);
                std::mt19937 gen(seed++);
                for (int y = 0; y < size.height; ++y)
                    for (int i = 0; i < size.width * m.pitch; ++i)
                        putSource(m.tag, src.data() + 8 + y * srcWhole + i * m.srcBytes, pickValue(m.tag, 5, gen));
                {
                    ThreadCount team(2);
                    ASSERT_EQ(kelOk, m.call(src.data() + 8, srcStep, dst.data() + 8, dstStep, size, noise, kind, 5));
                }
                model(m, src.data() + 8, srcWhole, expected.data() + 8, dstWhole, size, {kind, noise, 5}, 2);
                EXPECT_EQ(-1, firstDifference(expected, dst))
                    << describe(m, size, {kind, noise, 5}, 2) << " strides " << srcStep << ", " << dstStep;
            }
}

// ---- clamp and extremes --------------------------------------------------------------------------

// Black leaves a remainder of 0, which no midpoint of at least 0 lifts (noise
// up to 50 keeps every sample there); white is clamped. Neither passes error on.
TEST_P(ErrorDiffusion, ConstantBottomAndTopComeBackUnchanged)
{
    const Member& m = GetParam();
    const KelImageSize size{9, 4};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    for (int value : {0, 1})
        for (int kind : kKinds)
            for (int noise : {0, 50})
                for (int levels : {2, 3, 8, 42, m.maxLevels}) {
                    fillConstant(m, src, size, value * sourceRange(m.tag));
                    const auto out = run(src, size, {kind, noise, levels}, 1);
                    for (int c = 0; c < m.channels; ++c)
                        for (int o : out[std::size_t(c)])
                            ASSERT_EQ(value * topOf(m), o) << describe(m, size, {kind, noise, levels}, 1);
                }
}

TEST_P(ErrorDiffusionFloat, FloatOutsideZeroToOneSaturatesAndNaNGivesTheBottom)
{
    const Member& m = GetParam();
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const KelImageSize size{6, 3};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    for (float value : {nan, -nan, -inf, -1e30f, -1.0f, -1e-30f, 0.0f, 1e-8f, 1.0f, 1.5f, 1e30f, inf})
        for (int kind : kKinds)
            for (int noise : {0, 100})
                for (int levels : {2, 17, 256}) {
                    fillConstant(m, src, size, value);
                    const int want = value >= 1.0f ? topOf(m) : 0;
                    const auto out = run(src, size, {kind, noise, levels}, 1);
                    for (int c = 0; c < m.channels; ++c)
                        for (int o : out[std::size_t(c)])
                            ASSERT_EQ(want, o) << value << " " << describe(m, size, {kind, noise, levels}, 1);
                }
}

// ---- threads -------------------------------------------------------------------------------------

// Channel 0 always opens a section with cleared rows: the same bytes for
// every team size, as the one channel of C1 is.
TEST_P(ErrorDiffusion, FirstChannelIsTheSameForEveryTeamSize)
{
    const Member& m = GetParam();
    const KelImageSize size{13, 6};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    for (int kind : kKinds)
        for (int noise : {0, 40}) {
            fillSource(m, src, size, 4, std::uint32_t(kind * 100 + noise));
            const auto single = run(src, size, {kind, noise, 4}, 1);
            for (int threads = 2; threads <= 5; ++threads) {
                const auto out = run(src, size, {kind, noise, 4}, threads);
                EXPECT_EQ(single[0], out[0]) << describe(m, size, {kind, noise, 4}, threads);
                if (m.channels == 1) EXPECT_EQ(single, out) << describe(m, size, {kind, noise, 4}, threads);
            }
        }
}

class ErrorDiffusionChannels : public ErrorDiffusion {};

// With a section for each channel (three or more threads for three channels,
// four or more for four) the result no longer depends on the team size, and
// each channel is what the one-channel member gives for it alone.
TEST_P(ErrorDiffusionChannels, ChannelOfItsOwnSectionIsTheChannelAlone)
{
    const Member& m = GetParam();
    const Member& alone = *std::find_if(std::begin(kMembers), std::end(kMembers),
                                        [&](const Member& o) { return o.tag == m.tag && o.channels == 1; });
    const KelImageSize size{11, 5};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    for (int kind : kKinds)
        for (int noise : {0, 40}) {
            const Request r{kind, noise, 3};
            fillSource(m, src, size, 3, std::uint32_t(kind * 10 + noise));
            const auto own = run(src, size, r, m.channels);
            for (int threads = m.channels + 1; threads <= 6; ++threads)
                EXPECT_EQ(own, run(src, size, r, threads)) << describe(m, size, r, threads);
            for (int c = 0; c < m.channels; ++c) {
                Image plane = pixels(size.width, size.height, 1, false, m.srcBytes);
                Image out = pixels(size.width, size.height, 1, false, m.dstBytes);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        std::memcpy(plane.row(0, y) + x * m.srcBytes, src.row(0, y) + (x * m.pitch + c) * m.srcBytes,
                                    std::size_t(m.srcBytes));
                ASSERT_EQ(kelOk, alone.call(plane.ptr(), plane.step(), out.ptr(), out.step(), size, noise, kind, 3));
                EXPECT_EQ(channelsOf(alone, out, size)[0], own[std::size_t(c)]) << describe(m, size, r, m.channels)
                                                                               << " channel " << c;
            }
        }
}

// A later channel of a section starts from the rows its predecessor left:
// on a flat grey, the serial plan differs from a section a channel in
// channels 1 and 2.
TEST_P(ErrorDiffusionChannels, SharedSectionCarriesRowsIntoTheNextChannel)
{
    const Member& m = GetParam();
    const KelImageSize size{5, 3};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    const Ld grey = Ld(100) / 255 * sourceRange(m.tag);  // 100 of 255, 25700 of 65535
    fillConstant(m, src, size, floatSource(m.tag) ? grey : std::round(grey));
    for (int kind : kKinds) {
        const Request r{kind, 0, 2};
        const auto serial = run(src, size, r, 1), split = run(src, size, r, m.channels);
        EXPECT_EQ(serial[0], split[0]) << describe(m, size, r, 1);
        for (int c = 1; c < m.channels; ++c)
            EXPECT_NE(serial[std::size_t(c)], split[std::size_t(c)]) << describe(m, size, r, 1) << " channel " << c;
    }
}

// ---- alpha ---------------------------------------------------------------------------------------

class ErrorDiffusionAlpha : public ErrorDiffusion {};

TEST_P(ErrorDiffusionAlpha, FourthSampleIsNeitherReadNorWritten)
{
    const Member& m = GetParam();
    const KelImageSize size{7, 4};
    for (int threads : {1, 3})
        for (int kind : kKinds)
            for (int noise : {0, 50}) {
                std::vector<std::vector<int>> first;
                for (std::uint8_t alpha : {0x00, 0xFF, 0x7F}) {
                    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
                    src.fill(1);
                    fillSource(m, src, size, 6, 77, alpha);
                    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
                    dst.fill(9);
                    const auto before = dst.rows();
                    {
                        ThreadCount team(threads);
                        ASSERT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, noise, kind, 6));
                    }
                    const auto after = dst.rows();
                    for (int y = 0; y < size.height; ++y)
                        for (int x = 0; x < size.width; ++x) {
                            // rows() holds the rows without their padding
                            const std::size_t at = std::size_t(((y * size.width + x) * 4 + 3) * m.dstBytes);
                            ASSERT_EQ(0, std::memcmp(&before[at], &after[at], std::size_t(m.dstBytes)))
                                << describe(m, size, {kind, noise, 6}, threads) << " pixel " << x << "," << y;
                        }
                    EXPECT_TRUE(dst.intact());
                    const auto out = channelsOf(m, dst, size);
                    const std::vector<std::vector<int>> colour(out.begin(), out.begin() + 3);
                    if (first.empty())
                        first = colour;
                    else
                        EXPECT_EQ(first, colour) << describe(m, size, {kind, noise, 6}, threads) << " alpha " << int(alpha);
                }
            }
}

// ---- allocation ----------------------------------------------------------------------------------

class ErrorDiffusionAllocation : public ErrorDiffusion {};

const std::size_t kMargin = sizeof(void*) + 32;  // what the aligned allocator adds to each request

// Floats of the error buffers: T buffers of two rows with one-float guards
// (Floyd-Steinberg), or of three rows with two-float guards, the rows of the
// plain form rounded up to a multiple of 4.
std::size_t bufferFloats(const Member& m, Request r, int width, int threads)
{
    const std::size_t T = std::size_t(planFor(m.channels, threads).buffers);
    if (r.kind == kelDitherFloydSteinberg) return T * std::size_t(2 * width + 4);
    const int W = r.noise == 0 ? (width + 3) / 4 * 4 : width;
    return T * std::size_t(3 * W + 12);
}

TEST_P(ErrorDiffusionAllocation, OneBufferRequestSizedByThePlan)
{
    const Member& m = GetParam();
    for (int threads = 1; threads <= 5; ++threads)
        for (int width : {5})  // rounded up to 8 in the plain twelve-term form
            for (int kind : kKinds)
                for (int noise : {0, 20}) {
                    const KelImageSize size{width, 3};
                    const Request r{kind, noise, 4};
                    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
                    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
                    fillSource(m, src, size, 4, std::uint32_t(width));
                    kt::HookLog log;
                    KelResult status;
                    {
                        ThreadCount team(threads);
                        const kt::HookScope scope(log);
                        status = m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, noise, kind, 4);
                    }
                    const std::string what = describe(m, size, r, threads);
                    EXPECT_EQ(kelOk, status) << what;
                    ASSERT_FALSE(log.sizes.empty()) << what;
                    EXPECT_EQ(bufferFloats(m, r, width, threads) * sizeof(float) + kMargin, log.sizes.back()) << what;
                    if (noise == 0) {
                        EXPECT_EQ(1u, log.requests()) << what;
                    } else {
                        // The two tables (and the generators' records) come first.
                        const std::vector<std::size_t> before(log.sizes.begin(), log.sizes.end() - 1);
                        EXPECT_EQ(4u, before.size()) << what;
                        EXPECT_EQ(1, std::count(before.begin(), before.end(), 1024 * sizeof(Kel32f) + kMargin)) << what;
                        EXPECT_EQ(1, std::count(before.begin(), before.end(), 1024 * sizeof(Kel16s) + kMargin)) << what;
                    }
                    EXPECT_EQ(log.handedOut.size(), log.freed.size()) << what;
                    for (void* p : log.handedOut)
                        EXPECT_EQ(1, std::count(log.freed.begin(), log.freed.end(), p)) << what;
                    EXPECT_TRUE(dst.intact()) << what;
                }
}

TEST_P(ErrorDiffusionAllocation, EveryRefusalFailsCleanly)
{
    const Member& m = GetParam();
    const KelImageSize size{9, 4};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
    fillSource(m, src, size, 4, 21);
    for (int kind : kKinds)
        for (int noise : {0, 35}) {
            const Request r{kind, noise, 4};
            const int expectedRequests = noise == 0 ? 1 : 5;
            for (int n = 1; n <= expectedRequests + 1; ++n) {
                dst.fill(22);
                const auto before = dst.rows();
                kt::HookLog log;
                log.failAt = n;
                KelResult status;
                {
                    ThreadCount team(3);
                    const kt::HookScope scope(log);
                    status = m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, noise, kind, 4);
                }
                const std::string what = describe(m, size, r, 3) + " request " + std::to_string(n) + " refused";
                EXPECT_EQ(log.handedOut.size(), log.freed.size()) << what;
                for (void* p : log.handedOut)
                    EXPECT_EQ(1, std::count(log.freed.begin(), log.freed.end(), p)) << what;
                EXPECT_TRUE(dst.intact()) << what;
                if (n > expectedRequests) {
                    EXPECT_EQ(kelOk, status) << what;
                    EXPECT_EQ(std::size_t(expectedRequests), log.requests()) << what;
                    EXPECT_NE(before, dst.rows()) << what;
                    continue;
                }
                EXPECT_EQ(kelErrNoMemory, status) << what;
                EXPECT_EQ(before, dst.rows()) << what;
                EXPECT_EQ(std::size_t(n), log.requests()) << what << ": no request after a refusal";
            }
        }
}

// ---- the entry -----------------------------------------------------------------------------------

TEST_P(ErrorDiffusion, NoiseAboveAHundredAndOneLevelAreRefused)
{
    const Member& m = GetParam();
    const KelImageSize size{4, 2};
    Image src = pixels(size.width, size.height, m.pitch, false, m.srcBytes);
    Image dst = pixels(size.width, size.height, m.pitch, false, m.dstBytes);
    fillSource(m, src, size, 2, 5);
    dst.fill(6);
    const auto before = dst.rows();
    for (int kind : kKinds) {
        EXPECT_EQ(kelErrNoiseRange, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, 101, kind, 2)) << kind;
        EXPECT_EQ(kelErrDitherLevels, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, 0, kind, 1)) << kind;
        EXPECT_EQ(kelErrDitherLevels, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), size, 100, kind, 1)) << kind;
    }
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact());
}

const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(15); };
INSTANTIATE_TEST_SUITE_P(ReduceBits, ErrorDiffusion, ::testing::ValuesIn(kMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ErrorDiffusionChannels, ::testing::ValuesIn(kManyChannelMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ErrorDiffusionAlpha, ::testing::ValuesIn(kAlphaMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ErrorDiffusionFloat, ::testing::ValuesIn(kFloatMembers), memberName);
INSTANTIATE_TEST_SUITE_P(ReduceBits, ErrorDiffusionAllocation, ::testing::ValuesIn(kMembers), memberName);

// ---- worked values -------------------------------------------------------------------------------

// An 8u image of `pitch` samples a pixel through one call; rows of all
// samples back.
std::vector<std::vector<int>> reduce8u(const std::vector<int>& values, int pitch, KelImageSize size, Request r,
                                       int threads)
{
    Image src = pixels(size.width, size.height, pitch), dst = pixels(size.width, size.height, pitch);
    for (int y = 0; y < size.height; ++y)
        for (int i = 0; i < size.width * pitch; ++i) src.row(0, y)[i] = Kel8u(values[std::size_t(y * size.width * pitch + i)]);
    dst.fill(1);
    auto f = pitch == 1 ? keliReduceBits_8u_C1R : pitch == 3 ? keliReduceBits_8u_C3R : keliReduceBits_8u_C4R;
    {
        ThreadCount team(threads);
        EXPECT_EQ(kelOk, f(src.ptr(), src.step(), dst.ptr(), dst.step(), size, r.noise, r.kind, r.levels));
    }
    EXPECT_TRUE(dst.intact());
    std::vector<std::vector<int>> rows;
    for (int y = 0; y < size.height; ++y) rows.emplace_back(dst.row(0, y), dst.row(0, y) + size.width * pitch);
    return rows;
}

// The same through the model, so that the model is held to the worked values too.
std::vector<std::vector<int>> model8u(const std::vector<int>& values, int pitch, KelImageSize size, Request r, int threads)
{
    const Member& m = pitch == 1 ? kMembers[0] : pitch == 3 ? kMembers[1] : kMembers[3];
    std::vector<std::uint8_t> src(values.begin(), values.end()), dst(src.size(), 1);
    model(m, src.data(), size.width * pitch, dst.data(), size.width * pitch, size, r, threads);
    std::vector<std::vector<int>> rows;
    for (int y = 0; y < size.height; ++y)
        rows.emplace_back(dst.begin() + y * size.width * pitch, dst.begin() + (y + 1) * size.width * pitch);
    return rows;
}

using Rows = std::vector<std::vector<int>>;

TEST(ErrorDiffusionExamples, TwoLevelsOnEightByTwoGreyAlternate)
{
    const Rows want{{255, 0, 255, 0, 255, 0, 255, 0}, {0, 255, 0, 255, 0, 255, 0, 255}};
    const std::vector<int> grey(16, 128);
    EXPECT_EQ(want, model8u(grey, 1, {8, 2}, {kelDitherFloydSteinberg, 0, 2}, 1));
    for (int threads : {1, 4}) EXPECT_EQ(want, reduce8u(grey, 1, {8, 2}, {kelDitherFloydSteinberg, 0, 2}, threads));
}

// 5 x 3 of 100, three channels: the first row of each channel by team size.
TEST(ErrorDiffusionExamples, FirstRowsOfAThreeChannelGreyByTeamSize)
{
    const std::vector<int> fresh{0, 255, 0, 0, 255}, carried{0, 0, 255, 0, 0};
    const std::vector<int> grey(45, 100);
    const std::map<int, std::array<std::vector<int>, 3>> want{
        {1, {fresh, carried, carried}}, {2, {fresh, carried, fresh}}, {3, {fresh, fresh, fresh}}};
    for (const auto& [threads, rows] : want) {
        for (bool ofModel : {true, false}) {
            const Rows out = ofModel ? model8u(grey, 3, {5, 3}, {kelDitherFloydSteinberg, 0, 2}, threads)
                                     : reduce8u(grey, 3, {5, 3}, {kelDitherFloydSteinberg, 0, 2}, threads);
            for (int c = 0; c < 3; ++c) {
                std::vector<int> row;
                for (int x = 0; x < 5; ++x) row.push_back(out[0][std::size_t(3 * x + c)]);
                EXPECT_EQ(rows[std::size_t(c)], row) << (ofModel ? "model, " : "") << threads << " threads, channel " << c;
            }
        }
    }
}

TEST(ErrorDiffusionExamples, FullRangeIsTheIdentityForEveryKernel)
{
    std::vector<int> all;
    for (int i = 0; i < 3 * 256; ++i) all.push_back((i * 97 + i / 256) % 256);
    Rows want;
    for (int y = 0; y < 16; ++y) want.emplace_back(all.begin() + y * 48, all.begin() + (y + 1) * 48);
    for (int kind : kKinds)
        for (int pitch : {1, 3}) {
            const KelImageSize size{48 / pitch, 16};
            for (int threads : {1, 3}) EXPECT_EQ(want, reduce8u(all, pitch, size, {kind, 0, 256}, threads)) << kind;
        }
}

// Width 1: only the pixel above feeds a pixel, with 5/16 (the rest falls on
// guards). A column of 100 then reads 0, 255, 0, 0, 255; the weights of all
// four neighbours folded back would give another column.
TEST(ErrorDiffusionExamples, OneColumnTakesFiveSixteenthsFromAbove)
{
    const Rows want{{0}, {255}, {0}, {0}, {255}};
    const std::vector<int> grey(5, 100);
    EXPECT_EQ(want, model8u(grey, 1, {1, 5}, {kelDitherFloydSteinberg, 0, 2}, 1));
    EXPECT_EQ(want, reduce8u(grey, 1, {1, 5}, {kelDitherFloydSteinberg, 0, 2}, 1));
}

// 128 goes up to 255 and leaves -127 for its right neighbour: -127 * 7 / 16
// (Floyd-Steinberg), -127 * 7 / 48 (Jarvis-Judice-Ninke), -127 * 8 / 42
// (Stucki). The second pixel lands on either side of 127.5 by that weight.
TEST(ErrorDiffusionExamples, FirstErrorReachesTheRightNeighbourWithItsWeight)
{
    struct Case {
        int kind, below, above;  // largest second value printing 0, smallest printing 255
    };
    // 128 - 127 * 7 / 16 = 72.44; 127.5 + 55.5625 = 183.06
    // 127.5 + 18.52 = 146.02; 127.5 + 24.19 = 151.69
    for (Case k : {Case{kelDitherFloydSteinberg, 183, 184}, Case{kelDitherJarvisJudiceNinke, 146, 147},
                   Case{kelDitherStucki, 151, 152}}) {
        EXPECT_EQ((Rows{{255, 0}}), reduce8u({128, k.below}, 1, {2, 1}, {k.kind, 0, 2}, 1)) << k.kind;
        EXPECT_EQ((Rows{{255, 255}}), reduce8u({128, k.above}, 1, {2, 1}, {k.kind, 0, 2}, 1)) << k.kind;
        EXPECT_EQ((Rows{{255, 0}}), model8u({128, k.below}, 1, {2, 1}, {k.kind, 0, 2}, 1)) << k.kind;
        EXPECT_EQ((Rows{{255, 255}}), model8u({128, k.above}, 1, {2, 1}, {k.kind, 0, 2}, 1)) << k.kind;
    }
}

// The error of 128 at the first pixel, -127, times the float d: what is left
// at x = 1 on a row of 128 is 128 - 127 * 7 * d, below the midpoint.
TEST(ErrorDiffusionExamples, RoundedWeightsOfTheTwelveTermKernels)
{
    EXPECT_EQ(0.02083333395421505f, float(1.0L / 48));
    EXPECT_EQ(0.02380952425301075f, float(1.0L / 42));
    for (int kind : {kelDitherJarvisJudiceNinke, kelDitherStucki}) {
        const Rows out = reduce8u(std::vector<int>(6, 128), 1, {6, 1}, {kind, 0, 2}, 1);
        EXPECT_EQ(255, out[0][0]);
        EXPECT_EQ(0, out[0][1]);
        EXPECT_EQ(model8u(std::vector<int>(6, 128), 1, {6, 1}, {kind, 0, 2}, 1), out) << kind;
    }
}

// The twelve-term kernels scale their sum by d as a float, a little above
// 1/48 and 1/42. Two float samples s0 < 0.5, s1 at two levels: s0 prints 0
// and leaves s0, and s1 + c * s0 * d lands within that rounding above 0.5,
// where c * s0 / 48 (or / 42) would fall on or below it.
TEST(ErrorDiffusionExamples, TwelveTermSumIsScaledByTheFloatWeight)
{
    for (int kind : {kelDitherJarvisJudiceNinke, kelDitherStucki}) {
        const bool stucki = kind == kelDitherStucki;
        const Ld c = stucki ? 8 : 7, exact = stucki ? 1.0L / 42 : 1.0L / 48, d = float(exact);
        std::mt19937 gen{unsigned(kind)};
        float s0 = 0, s1 = 0;
        for (int tries = 0; tries < 100000; ++tries) {
            s0 = float(0.25L + (gen() >> 8) * 0x1p-26L);  // 0.25 .. 0.5
            const Ld target = 0.5L - c * s0 * exact;
            s1 = float(target);
            if (s1 > target) s1 = std::nextafter(s1, 0.0f);
            if (c * s0 * d + s1 > 0.5L) break;
        }
        ASSERT_LE(c * s0 * exact + s1, 0.5L) << kind;
        ASSERT_GT(c * s0 * d + s1, 0.5L) << kind;
        const float in[2] = {s0, s1};
        Kel16u out[2] = {7, 7};
        ASSERT_EQ(kelOk, keliReduceBits_32f16u_C1R(in, sizeof in, out, sizeof out, {2, 1}, 0, kind, 2));
        EXPECT_EQ(0, out[0]) << kind << " " << s0;
        EXPECT_EQ(65535, out[1]) << kind << " " << s0 << ", " << s1;
    }
}

TEST(ErrorDiffusionExamples, BlackAndWhiteComeBackAtEveryLevelCount)
{
    for (int value : {0, 255})
        for (int kind : kKinds)
            for (int levels = 2; levels <= 256; ++levels) {
                const std::vector<int> flat(3 * 4 * 3, value);
                const Rows out = reduce8u(flat, 3, {4, 3}, {kind, 0, levels}, 1);
                for (const auto& row : out)
                    for (int o : row) ASSERT_EQ(value, o) << kind << " levels " << levels;
            }
}

} // namespace
