// The uniform random generator, both kinds: the streams against a reference
// generator written here, argument tests, tags, and the allocator hooks.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/hooks.h"

namespace {

// ---- reference ----------------------------------------------------------------

// The generator in plain terms: a congruential sequence from 1131199209, and a
// subtract-with-borrow sequence seeded with the seed and two congruential
// steps of it, borrowing at the start.  Each draw is the wrapped sum of both.
class ReferenceStream {
public:
    explicit ReferenceStream(std::uint32_t seed)
        : congruential_(1131199209u), newest_(seed), middle_(step(seed)), oldest_(step(middle_))
    {
    }

    std::int32_t next()
    {
        congruential_ = step(congruential_);
        std::int64_t difference = std::int64_t{wrap(middle_)} - wrap(oldest_) - (borrowing_ ? 1 : 0);
        difference = wrap(static_cast<std::uint32_t>(difference));
        borrowing_ = difference < 0;
        if (borrowing_) difference = wrap(static_cast<std::uint32_t>(difference - 18));
        oldest_ = middle_;
        middle_ = newest_;
        newest_ = static_cast<std::uint32_t>(difference);
        return wrap(static_cast<std::uint32_t>(difference + congruential_));
    }

    std::vector<std::int32_t> take(int count)
    {
        std::vector<std::int32_t> draws(static_cast<std::size_t>(count));
        for (auto& r : draws) r = next();
        return draws;
    }

private:
    static std::uint32_t step(std::uint32_t x) { return static_cast<std::uint32_t>(x * 69069ull + 1013904243ull); }
    static std::int32_t wrap(std::uint32_t x) { return static_cast<std::int32_t>(x); }

    std::uint32_t congruential_, newest_, middle_, oldest_;
    bool borrowing_ = true;
};

// 2^-32 and seven units in the last place: the step by which the range is
// spread over the signed 32-bit draws.
long double scaleStep()
{
    return std::bit_cast<double>(std::uint64_t{0x3DF0000000000007});
}

// A draw onto [low, high]: scale and mean in the extended type, each kept as
// a double, and r * scale + mean in the extended type.
long double spread(std::int32_t r, long double low, long double high)
{
    const double mean = static_cast<double>((low + high) / 2);
    const double scale = static_cast<double>((high - low) * scaleStep());
    return static_cast<long double>(r) * scale + mean;
}

// Samples of the same value; NaN counts as the same NaN.
bool same(Kel16s a, Kel16s b) { return a == b; }
bool same(Kel32f a, Kel32f b)
{
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// ---- the two kinds ------------------------------------------------------------

struct Kind16s {
    using Sample = Kel16s;
    using Limit = Kel16s;
    using State = KelRandUniformState_16s;
    using OtherState = KelRandUniformState_32f;
    using OtherSample = Kel32f;
    static constexpr std::size_t kRecordBytes = 48 * sizeof(Kel16s);

    static KelResult init(State** p, Limit low, Limit high, unsigned seed)
    {
        return kelsRandUniformInitAlloc_16s(p, low, high, seed);
    }
    static KelResult draw(Sample* dst, int len, State* s) { return kelsRandUniform_16s(dst, len, s); }
    static KelResult release(State* s) { return kelsRandUniformFree_16s(s); }
    static KelResult initOther(OtherState** p, unsigned seed) { return kelsRandUniformInitAlloc_32f(p, -1.0f, 1.0f, seed); }
    static KelResult drawOther(Kel32f* dst, int len, OtherState* s) { return kelsRandUniform_32f(dst, len, s); }
    static KelResult releaseOther(OtherState* s) { return kelsRandUniformFree_32f(s); }

    // Truncated towards zero; the low 16 bits of the integer are the sample.
    static Sample expected(std::int32_t r, Limit low, Limit high)
    {
        const auto whole = static_cast<std::int64_t>(std::trunc(spread(r, low, high)));
        return static_cast<Sample>(static_cast<std::uint16_t>(whole & 0xFFFF));
    }
    // The sample from plain arithmetic: within one of the exact spread.
    static double nearly(std::int32_t r, Limit low, Limit high)
    {
        return (low + high) / 2.0 + static_cast<double>(r) * (high - low) / 4294967296.0;
    }
    static constexpr double kNearlyTolerance = 1.0;

    static std::vector<std::pair<Limit, Limit>> limits()
    {
        return {{-32768, 32767}, {0, 255}, {-1, 1}, {100, -100}, {32767, -32768}, {-7, 3}, {-32768, -32768}};
    }
    static std::vector<Limit> equalLimits() { return {-32768, -1, 0, 1234, 32767}; }
};

struct Kind32f {
    using Sample = Kel32f;
    using Limit = Kel32f;
    using State = KelRandUniformState_32f;
    using OtherState = KelRandUniformState_16s;
    using OtherSample = Kel16s;
    static constexpr std::size_t kRecordBytes = 52 * sizeof(Kel32f);

    static KelResult init(State** p, Limit low, Limit high, unsigned seed)
    {
        return kelsRandUniformInitAlloc_32f(p, low, high, seed);
    }
    static KelResult draw(Sample* dst, int len, State* s) { return kelsRandUniform_32f(dst, len, s); }
    static KelResult release(State* s) { return kelsRandUniformFree_32f(s); }
    static KelResult initOther(OtherState** p, unsigned seed) { return kelsRandUniformInitAlloc_16s(p, -1000, 1000, seed); }
    static KelResult drawOther(Kel16s* dst, int len, OtherState* s) { return kelsRandUniform_16s(dst, len, s); }
    static KelResult releaseOther(OtherState* s) { return kelsRandUniformFree_16s(s); }

    // Rounded to the nearest float.
    static Sample expected(std::int32_t r, Limit low, Limit high)
    {
        return static_cast<Sample>(spread(r, low, high));
    }
    static double nearly(std::int32_t r, Limit low, Limit high)
    {
        return (low + static_cast<double>(high)) / 2.0 + static_cast<double>(r) * (high - static_cast<double>(low)) / 4294967296.0;
    }
    static constexpr double kNearlyTolerance = 1e-6;

    static std::vector<std::pair<Limit, Limit>> limits()
    {
        constexpr float inf = std::numeric_limits<float>::infinity();
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        return {{-1.0f, 1.0f}, {0.0f, 1.0f}, {0.25f, 0.75f},   {1e30f, -1e30f}, {-FLT_MAX, FLT_MAX},
                {-3.0f, 1e-3f}, {FLT_MIN, 2 * FLT_MIN}, {0.0f, inf}, {-inf, inf}, {nan, 1.0f}};
    }
    static std::vector<Limit> equalLimits() { return {0.1f, -3.5f, 1e30f, -FLT_MAX, FLT_MIN, 65536.0f}; }
};

// The first limits of each kind, spread wide so that samples show r.
template <typename K>
std::pair<typename K::Limit, typename K::Limit> wideLimits()
{
    return K::limits().front();
}

// A destination of `len` samples with guard bytes on both sides.
template <typename T>
struct GuardedSamples {
    explicit GuardedSamples(int len) : len(len), image(static_cast<std::size_t>(len) * sizeof(T), 1)
    {
        image.fill(0x5A);
    }
    T* data() { return reinterpret_cast<T*>(image.data()); }
    std::vector<T> values()
    {
        std::vector<T> v(static_cast<std::size_t>(len));
        std::memcpy(v.data(), image.data(), v.size() * sizeof(T));
        return v;
    }
    std::vector<std::uint8_t> bytes() const { return image.rows(); }
    bool intact() const { return image.fenceIntact(); }

    int len;
    kt::GuardedImage image;
};

template <typename K>
class RandUniform : public ::testing::Test {
protected:
    using Sample = typename K::Sample;
    using Limit = typename K::Limit;
    using State = typename K::State;

    State* make(Limit low, Limit high, unsigned seed)
    {
        State* state = nullptr;
        EXPECT_EQ(kelOk, K::init(&state, low, high, seed));
        return state;
    }

    // `len` samples in one call into a guarded destination.
    std::vector<Sample> drawn(State* state, int len)
    {
        GuardedSamples<Sample> dst(len);
        EXPECT_EQ(kelOk, K::draw(dst.data(), len, state));
        EXPECT_TRUE(dst.intact());
        return dst.values();
    }

    static std::vector<Sample> expectedFrom(const std::vector<std::int32_t>& draws, Limit low, Limit high)
    {
        std::vector<Sample> samples;
        for (std::int32_t r : draws) samples.push_back(K::expected(r, low, high));
        return samples;
    }

    static void expectSame(const std::vector<Sample>& expected, const std::vector<Sample>& actual)
    {
        ASSERT_EQ(expected.size(), actual.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_TRUE(same(expected[i], actual[i])) << "sample " << i << ": " << expected[i] << " vs " << actual[i];
    }

    // Every allocation of a test goes through the logging hooks.
    kt::HookLog hooks;
    kt::HookScope scope{hooks};
};

struct KindName {
    template <typename K>
    static std::string GetName(int)
    {
        return std::is_same_v<K, Kind16s> ? "16s" : "32f";
    }
};

using Kinds = ::testing::Types<Kind16s, Kind32f>;
TYPED_TEST_SUITE(RandUniform, Kinds, KindName);

// The first draws of seeds 1 and 0, known values.
const std::vector<std::int32_t> kSeed1Draws{1676100226, -1588522615, -1713702600, 59565502};
const std::vector<std::int32_t> kSeed0Draws{-2143376656, -1588453546, -1238212167};

TEST(RandReference, GivesTheKnownDrawsOfSeedsOneAndZero)
{
    EXPECT_EQ(kSeed1Draws, ReferenceStream(1).take(4));
    EXPECT_EQ(kSeed0Draws, ReferenceStream(0).take(3));
}

TYPED_TEST(RandUniform, FirstSamplesFollowTheKnownDraws)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    for (const auto& [seed, draws] : {std::pair{1u, kSeed1Draws}, std::pair{0u, kSeed0Draws}}) {
        auto* state = this->make(low, high, seed);
        const auto samples = this->drawn(state, static_cast<int>(draws.size()));
        this->expectSame(this->expectedFrom(draws, low, high), samples);
        for (std::size_t i = 0; i < draws.size(); ++i)
            EXPECT_NEAR(K::nearly(draws[i], low, high), samples[i], K::kNearlyTolerance) << "seed " << seed;
        EXPECT_EQ(kelOk, K::release(state));
    }
}

TYPED_TEST(RandUniform, MatchesTheReferenceForManySeedsAndLimits)
{
    using K = TypeParam;
    for (unsigned seed : {0u, 1u, 2u, 12345u, 0x80000000u, 0xFFFFFFFFu}) {
        for (const auto& [low, high] : K::limits()) {
            SCOPED_TRACE(::testing::Message() << "seed " << seed << ", limits " << low << ", " << high);
            auto* state = this->make(low, high, seed);
            const auto samples = this->drawn(state, 10000);
            this->expectSame(this->expectedFrom(ReferenceStream(seed).take(10000), low, high), samples);
            EXPECT_EQ(kelOk, K::release(state));
        }
    }
}

TYPED_TEST(RandUniform, StreamContinuesAcrossCalls)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    auto* whole = this->make(low, high, 77);
    const auto once = this->drawn(whole, 1000);
    for (const std::vector<int> parts : {std::vector<int>(10, 100), std::vector<int>{1, 2, 997}}) {
        auto* pieces = this->make(low, high, 77);
        std::vector<typename K::Sample> joined;
        for (int len : parts) {
            const auto piece = this->drawn(pieces, len);
            joined.insert(joined.end(), piece.begin(), piece.end());
        }
        this->expectSame(once, joined);
        EXPECT_EQ(kelOk, K::release(pieces));
    }
    EXPECT_EQ(kelOk, K::release(whole));
}

TYPED_TEST(RandUniform, SameSeedAndLimitsGiveTheSameStream)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    auto* first = this->make(low, high, 4242);
    auto* second = this->make(low, high, 4242);
    this->expectSame(this->drawn(first, 500), this->drawn(second, 500));
    EXPECT_EQ(kelOk, K::release(first));
    EXPECT_EQ(kelOk, K::release(second));
}

TYPED_TEST(RandUniform, EqualLimitsGiveThatValueEverywhere)
{
    using K = TypeParam;
    for (auto value : K::equalLimits()) {
        auto* state = this->make(value, value, 9);
        for (auto sample : this->drawn(state, 1000)) ASSERT_EQ(value, sample) << value;
        EXPECT_EQ(kelOk, K::release(state));
    }
}

// With the limits exchanged the scale changes sign and the mean stays 0, so
// every sample is negated exactly; truncation towards zero keeps that.
TYPED_TEST(RandUniform, ExchangedLimitsMirrorTheStream)
{
    using K = TypeParam;
    const auto [low, high] = std::pair<typename K::Limit, typename K::Limit>{-100, 100};
    auto* upward = this->make(low, high, 31);
    auto* downward = this->make(high, low, 31);
    const auto up = this->drawn(upward, 2000), down = this->drawn(downward, 2000);
    for (std::size_t i = 0; i < up.size(); ++i) ASSERT_EQ(up[i], -down[i]) << i;
    EXPECT_EQ(kelOk, K::release(upward));
    EXPECT_EQ(kelOk, K::release(downward));
}

TYPED_TEST(RandUniform, RecordOfTheOtherKindIsRefusedAndLeftAlone)
{
    using K = TypeParam;
    typename K::OtherState* other = nullptr;
    ASSERT_EQ(kelOk, K::initOther(&other, 5));
    auto* foreign = reinterpret_cast<typename K::State*>(other);

    GuardedSamples<typename TestFixture::Sample> dst(16);
    const auto before = dst.bytes();
    EXPECT_EQ(kelErrContext, K::draw(dst.data(), 16, foreign));
    EXPECT_EQ(before, dst.bytes());
    EXPECT_TRUE(dst.intact());
    EXPECT_EQ(kelErrContext, K::release(foreign));
    EXPECT_TRUE(this->hooks.freed.empty());

    // The record still starts its stream where a fresh one does.
    typename K::OtherState* fresh = nullptr;
    ASSERT_EQ(kelOk, K::initOther(&fresh, 5));
    using OtherSample = typename K::OtherSample;
    std::vector<OtherSample> a(64), b(64);
    EXPECT_EQ(kelOk, K::drawOther(a.data(), 64, other));
    EXPECT_EQ(kelOk, K::drawOther(b.data(), 64, fresh));
    EXPECT_EQ(0, std::memcmp(a.data(), b.data(), a.size() * sizeof(OtherSample)));
    EXPECT_EQ(kelOk, K::releaseOther(other));
    EXPECT_EQ(kelOk, K::releaseOther(fresh));
}

// Records are told only by their first four bytes.
TYPED_TEST(RandUniform, AnyOtherTagIsRefused)
{
    using K = TypeParam;
    for (std::int32_t tag : {0, 1, 35, 38, -1, INT32_MIN}) {
        alignas(64) unsigned char fake[256] = {};
        std::memcpy(fake, &tag, sizeof tag);
        auto* state = reinterpret_cast<typename K::State*>(fake);
        GuardedSamples<typename TestFixture::Sample> dst(4);
        const auto before = dst.bytes();
        EXPECT_EQ(kelErrContext, K::draw(dst.data(), 4, state)) << tag;
        EXPECT_EQ(kelErrContext, K::release(state)) << tag;
        EXPECT_EQ(before, dst.bytes());
        EXPECT_TRUE(dst.intact());
    }
    EXPECT_TRUE(this->hooks.freed.empty());
}

// Null pointers before the length, the length before the tag; nothing is
// written and the stream does not move on any refusal.
TYPED_TEST(RandUniform, DrawTestsPointersThenLengthThenTag)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    auto* state = this->make(low, high, 1);
    alignas(64) unsigned char wrongTag[256] = {};
    auto* foreign = reinterpret_cast<typename K::State*>(wrongTag);

    GuardedSamples<typename TestFixture::Sample> dst(8);
    const auto before = dst.bytes();
    EXPECT_EQ(kelErrNullPointer, K::draw(nullptr, 0, foreign));
    EXPECT_EQ(kelErrNullPointer, K::draw(nullptr, 8, state));
    EXPECT_EQ(kelErrNullPointer, K::draw(dst.data(), 0, nullptr));
    EXPECT_EQ(kelErrNullPointer, K::draw(dst.data(), 8, nullptr));
    for (int len : {0, -1, INT_MIN}) {
        EXPECT_EQ(kelErrSize, K::draw(dst.data(), len, foreign)) << len;
        EXPECT_EQ(kelErrSize, K::draw(dst.data(), len, state)) << len;
    }
    EXPECT_EQ(kelErrContext, K::draw(dst.data(), 8, foreign));
    EXPECT_EQ(before, dst.bytes());
    EXPECT_TRUE(dst.intact());

    this->expectSame(this->expectedFrom(kSeed1Draws, low, high), this->drawn(state, 4));
    EXPECT_EQ(kelOk, K::release(state));
}

TYPED_TEST(RandUniform, FreeRefusesANullRecord)
{
    using K = TypeParam;
    EXPECT_EQ(kelErrNullPointer, K::release(nullptr));
    EXPECT_TRUE(this->hooks.freed.empty());
}

TYPED_TEST(RandUniform, InitRefusesANullDestinationWithoutAllocating)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    EXPECT_EQ(kelErrNullPointer, K::init(nullptr, low, high, 1));
    EXPECT_TRUE(this->hooks.sizes.empty());
}

TYPED_TEST(RandUniform, FailedAllocationLeavesTheDestinationAsItWas)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    this->hooks.fail = true;
    alignas(64) unsigned char marker[64];
    auto* sentinel = reinterpret_cast<typename K::State*>(marker);
    typename K::State* state = sentinel;
    EXPECT_EQ(kelErrNoMemory, K::init(&state, low, high, 1));
    EXPECT_EQ(sentinel, state);
    EXPECT_EQ(1u, this->hooks.sizes.size());
    EXPECT_TRUE(this->hooks.freed.empty());
}

// The record is one aligned block of 48 16-bit or 52 float elements, given
// back to the hook it came from.
TYPED_TEST(RandUniform, RecordIsOneAlignedBlockFreedThroughTheHook)
{
    using K = TypeParam;
    const std::size_t margin = sizeof(void*) + 32;
    const auto [low, high] = wideLimits<K>();
    auto* state = this->make(low, high, 3);
    ASSERT_NE(nullptr, state);
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(state) % 32);
    EXPECT_EQ(std::vector<std::size_t>{K::kRecordBytes + margin}, this->hooks.sizes);
    this->drawn(state, 100);
    EXPECT_EQ(1u, this->hooks.sizes.size());
    EXPECT_EQ(kelOk, K::release(state));
    EXPECT_EQ(this->hooks.handedOut, this->hooks.freed);
}

TYPED_TEST(RandUniform, ManyRecordsLeakNothing)
{
    using K = TypeParam;
    const auto [low, high] = wideLimits<K>();
    std::vector<typename K::State*> states;
    for (unsigned seed = 0; seed < 20; ++seed) states.push_back(this->make(low, high, seed));
    for (auto* state : states) this->drawn(state, 37);
    for (auto* state : states) EXPECT_EQ(kelOk, K::release(state));
    EXPECT_EQ(20u, this->hooks.handedOut.size());
    auto handedOut = this->hooks.handedOut, freed = this->hooks.freed;
    std::sort(handedOut.begin(), handedOut.end());
    std::sort(freed.begin(), freed.end());
    EXPECT_EQ(handedOut, freed);
}

// ---- one kind -----------------------------------------------------------------

// v lies strictly between -1 and 1 unless r is -2^31, so the truncated
// samples are 0, and -1 for that one draw.
TEST(RandUniform16s, MinusOneToOneIsZeroButForTheLowestDraw)
{
    KelRandUniformState_16s* state = nullptr;
    ASSERT_EQ(kelOk, kelsRandUniformInitAlloc_16s(&state, -1, 1, 2024));
    GuardedSamples<Kel16s> dst(10000);
    ASSERT_EQ(kelOk, kelsRandUniform_16s(dst.data(), 10000, state));
    EXPECT_TRUE(dst.intact());
    const auto samples = dst.values();
    const auto draws = ReferenceStream(2024).take(10000);
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_EQ(draws[i] == INT32_MIN ? -1 : 0, samples[i]) << i;
    EXPECT_EQ(kelOk, kelsRandUniformFree_16s(state));
}

// With limits -32768 and 0 the mean is -16384 and the scale 2^-17 raised by
// seven units in the last place, so a positive draw r = m * 2^17 lands just
// above the negative integer m - 16384 and truncates towards zero to one more.
// A scale of exactly 2^-17 would give m - 16384 itself.
TEST(RandUniform16s, ScaleStepLiesAboveTwoToTheMinus32)
{
    unsigned seed = 0;
    int index = -1;
    for (; index < 0; ++seed) {
        ReferenceStream stream(seed);
        for (int i = 0; i < 1000 && index < 0; ++i) {
            const std::int32_t r = stream.next();
            if (r > 0 && r % (1 << 17) == 0) index = i;
        }
    }
    --seed;
    const std::int32_t r = ReferenceStream(seed).take(index + 1).back();

    KelRandUniformState_16s* state = nullptr;
    ASSERT_EQ(kelOk, kelsRandUniformInitAlloc_16s(&state, -32768, 0, seed));
    GuardedSamples<Kel16s> dst(index + 1);
    ASSERT_EQ(kelOk, kelsRandUniform_16s(dst.data(), index + 1, state));
    EXPECT_TRUE(dst.intact());
    EXPECT_EQ(r / (1 << 17) - 16384 + 1, dst.values().back()) << "seed " << seed << ", sample " << index;
    EXPECT_EQ(kelOk, kelsRandUniformFree_16s(state));
}

// The limits don't alter the draws: doubling the range doubles every float
// sample exactly, since a power of two scales without rounding.
TEST(RandUniform32f, DoubledLimitsDoubleEverySample)
{
    KelRandUniformState_32f *narrow = nullptr, *wide = nullptr;
    ASSERT_EQ(kelOk, kelsRandUniformInitAlloc_32f(&narrow, -1.5f, 1.0f, 8));
    ASSERT_EQ(kelOk, kelsRandUniformInitAlloc_32f(&wide, -3.0f, 2.0f, 8));
    std::vector<Kel32f> a(3000), b(3000);
    ASSERT_EQ(kelOk, kelsRandUniform_32f(a.data(), 3000, narrow));
    ASSERT_EQ(kelOk, kelsRandUniform_32f(b.data(), 3000, wide));
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_EQ(2 * a[i], b[i]) << i;
    EXPECT_EQ(kelOk, kelsRandUniformFree_32f(narrow));
    EXPECT_EQ(kelOk, kelsRandUniformFree_32f(wide));
}

TEST(RandUniform32f, InfiniteRangeGivesNaN)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    KelRandUniformState_32f* state = nullptr;
    ASSERT_EQ(kelOk, kelsRandUniformInitAlloc_32f(&state, -inf, inf, 1));
    GuardedSamples<Kel32f> dst(100);
    ASSERT_EQ(kelOk, kelsRandUniform_32f(dst.data(), 100, state));
    EXPECT_TRUE(dst.intact());
    for (float sample : dst.values()) ASSERT_TRUE(std::isnan(sample));
    EXPECT_EQ(kelOk, kelsRandUniformFree_32f(state));
}

} // namespace
