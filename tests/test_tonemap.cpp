// Tone mapping: one float channel to 8 bits by a single gain, found from the
// image's maximum (Linear: the maximum goes to 255) or its mean (Mean: the
// mean goes to 127.5). Both against a model written here in long double: the
// statistic as the small image operations define it, the gain unrounded, the
// product truncated. Guards and row padding of both sides are checked after
// every call, and the float source's rows lie an odd number of bytes apart.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"

using namespace kt;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// A float image in a guarded buffer whose rows lie 4 * width + padding bytes
// apart: with an odd padding the samples of odd rows are not 4-byte aligned.
struct Floats {
    int w, h;
    GuardedImage bytes;
    Floats(int width, int height, std::size_t padding = 3) : w(width), h(height), bytes(4 * std::size_t(width), height, Placement::Guarded, padding) {}
    float get(int x, int y) const
    {
        float v;
        std::memcpy(&v, bytes.row(y) + 4 * x, 4);
        return v;
    }
    void set(int x, int y, float v) { std::memcpy(bytes.row(y) + 4 * x, &v, 4); }
    void fill(float v)
    {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) set(x, y, v);
    }
    const Kel32f* ptr() { return reinterpret_cast<const Kel32f*>(bytes.data()); }
    int step() const { return bytes.step(); }
};

// An 8-bit destination with row padding, filled with a pattern the call must
// overwrite (or, on a warning, leave).
struct Bytes {
    GuardedImage bytes;
    Bytes(int w, int h, std::size_t padding = 7) : bytes(std::size_t(w), h, Placement::Guarded, padding) { bytes.fill(0x3C); }
};

// ---- the model --------------------------------------------------------------------------------

// The running maximum starts from the first sample; a sample replaces it
// only when strictly greater, so a NaN counts only in the first place.
float maximumOf(const Floats& s)
{
    float m = s.get(0, 0);
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x)
            if (s.get(x, y) > m) m = s.get(x, y);
    return m;
}

// Two long double sums, even columns and odd columns, carried over the rows,
// added and rounded once to double; the mean divides in long double and
// rounds to double.
double meanOf(const Floats& s)
{
    long double even = 0, odd = 0;
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) (x % 2 == 0 ? even : odd) += s.get(x, y);
    const double sum = static_cast<double>(even + odd);
    return static_cast<double>(static_cast<long double>(sum) / (s.w * s.h));
}

// The smallest normal float, 2^-126: at or below it the image counts as black.
const long double kTiny = std::ldexp(1.0L, -126);

// trunc(s * g) in long double. A NaN, a negative value and anything below 1
// give 0; `clampHigh` sends 255 and above to 255.
int mapped(float s, long double g, bool clampHigh)
{
    const long double v = static_cast<long double>(s) * g;
    if (!(v >= 1)) return 0;
    if (clampHigh && v >= 255) return 255;
    return static_cast<int>(std::trunc(v));
}

struct Outcome {
    KelResult status;
    std::vector<Kel8u> rows;  // the destination's rows after the call
};

// `gainBase` is the statistic the gain divides (the maximum, or twice the mean).
Outcome model(const Floats& s, const Bytes& before, long double gainBase, bool clampHigh)
{
    Outcome out{kelOk, before.bytes.rows()};
    if (std::isnan(gainBase) || gainBase < 0) return {kelWarnNegativeMax, out.rows};
    std::size_t i = 0;
    if (gainBase <= kTiny) {
        for (auto& b : out.rows) b = 0;
        return out;
    }
    const long double g = 255.0L / gainBase;
    for (int y = 0; y < s.h; ++y)
        for (int x = 0; x < s.w; ++x) {
            const int o = mapped(s.get(x, y), g, clampHigh);
            EXPECT_LE(o, 255) << "the model passed 255 at " << x << ", " << y;
            out.rows[i++] = static_cast<Kel8u>(o);
        }
    return out;
}

Outcome linearModel(const Floats& s, const Bytes& before) { return model(s, before, maximumOf(s), false); }
Outcome meanModel(const Floats& s, const Bytes& before)
{
    const long double a = meanOf(s);
    return model(s, before, a + a, true);
}

TEST(ToneMapModel, TheThresholdIsTheSmallestNormalFloat)
{
    EXPECT_EQ(kTiny, static_cast<long double>(FLT_MIN));
    EXPECT_EQ(kTiny, static_cast<long double>(1.1754943508222875e-38));
}

TEST(ToneMapModel, AConstantImageHasItsValueAsMean)
{
    Floats s(7, 3);
    s.fill(0.1f);
    EXPECT_EQ(double(0.1f), meanOf(s));
    EXPECT_EQ(0.1f, maximumOf(s));
}

// ---- the members ------------------------------------------------------------------------------

using ToneCall = KelResult (*)(const Kel32f*, int, Kel8u*, int, KelImageSize);
struct ToneMember {
    const char* name;
    ToneCall call;
    Outcome (*model)(const Floats&, const Bytes&);
};
void PrintTo(const ToneMember& m, std::ostream* os) { *os << m.name; }

const ToneMember kMembers[] = {
    {"Linear", keliToneMapLinear_32f8u_C1R, linearModel},
    {"Mean", keliToneMapMean_32f8u_C1R, meanModel},
};

class ToneMap : public ::testing::TestWithParam<ToneMember> {
protected:
    // The call's status and destination as the model has them, the source
    // unchanged, guards and padding of both intact.
    void expectModel(Floats& s, const std::string& what)
    {
        Bytes d(s.w, s.h);
        const Outcome want = GetParam().model(s, d);
        const auto srcBefore = s.bytes.rows();
        EXPECT_EQ(want.status, GetParam().call(s.ptr(), s.step(), d.bytes.data(), d.bytes.step(), {s.w, s.h})) << what;
        EXPECT_EQ(want.rows, d.bytes.rows()) << what;
        EXPECT_EQ(srcBefore, s.bytes.rows()) << what;
        EXPECT_TRUE(s.bytes.fenceIntact() && d.bytes.fenceIntact()) << what;
    }
    // The status, and every destination byte equal to `value` (or, with
    // value < 0, left as it was).
    void expectAll(Floats& s, KelResult status, int value, const std::string& what)
    {
        Bytes d(s.w, s.h);
        std::vector<Kel8u> want = d.bytes.rows();
        if (value >= 0)
            for (auto& b : want) b = Kel8u(value);
        EXPECT_EQ(status, GetParam().call(s.ptr(), s.step(), d.bytes.data(), d.bytes.step(), {s.w, s.h})) << what;
        EXPECT_EQ(want, d.bytes.rows()) << what;
        EXPECT_TRUE(s.bytes.fenceIntact() && d.bytes.fenceIntact()) << what;
    }
};

// Statuses of the maximum or mean come through: a null source before the
// size, then a width or height below 1; nothing is written.
TEST_P(ToneMap, NullSourceThenSizeArePassedOn)
{
    Floats s(4, 3);
    s.fill(2.0f);
    Bytes d(4, 3);
    const auto before = d.bytes.rows();
    const auto call = [&](const Kel32f* src, KelImageSize z) { return GetParam().call(src, s.step(), d.bytes.data(), d.bytes.step(), z); };
    EXPECT_EQ(kelErrNullPointer, call(nullptr, {4, 3}));
    EXPECT_EQ(kelErrNullPointer, call(nullptr, {0, 3}));
    EXPECT_EQ(kelErrNullPointer, call(nullptr, {4, -1}));
    for (KelImageSize z : {KelImageSize{0, 3}, {4, 0}, {-1, 3}, {4, -5}, {0, 0}, {INT32_MIN, 3}, {4, INT32_MIN}})
        EXPECT_EQ(kelErrSize, call(s.ptr(), z)) << z.width << "x" << z.height;
    EXPECT_EQ(before, d.bytes.rows());
    EXPECT_TRUE(d.bytes.fenceIntact());
}

// A null destination on an ordinary image is refused; the source stays.
TEST_P(ToneMap, NullDestinationIsRefused)
{
    Floats s(5, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x) s.set(x, y, float(1 + x + 5 * y));
    const auto before = s.bytes.rows();
    EXPECT_EQ(kelErrNullPointer, GetParam().call(s.ptr(), s.step(), nullptr, 5, {5, 2}));
    EXPECT_EQ(before, s.bytes.rows());
}

// A black image goes through the fill, so a null destination is refused
// there too.
TEST_P(ToneMap, NullDestinationOfABlackImageIsRefused)
{
    Floats s(5, 2);
    s.fill(0.0f);
    EXPECT_EQ(kelErrNullPointer, GetParam().call(s.ptr(), s.step(), nullptr, 5, {5, 2}));
}

TEST_P(ToneMap, AnAllZeroImageGivesZeros)
{
    for (auto [w, h] : {std::pair{1, 1}, {7, 3}, {64, 2}})
        for (float zero : {0.0f, -0.0f}) {
            Floats s(w, h);
            s.fill(zero);
            expectAll(s, kelOk, 0, std::to_string(w) + "x" + std::to_string(h) + (std::signbit(zero) ? " -0" : " +0"));
        }
}

TEST_P(ToneMap, ImagesOfBothSignsGiveZeroForNegatives)
{
    Floats s(9, 3);
    std::mt19937 gen(5);
    std::uniform_real_distribution<float> mag(0.0f, 100.0f);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 9; ++x) s.set(x, y, (x + y) % 3 == 0 ? -mag(gen) - 1.0f : mag(gen) + 50.0f);
    Bytes d(9, 3);
    EXPECT_EQ(kelOk, GetParam().call(s.ptr(), s.step(), d.bytes.data(), d.bytes.step(), {9, 3}));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 9; ++x)
            if (s.get(x, y) < 0) EXPECT_EQ(0, d.bytes.row(y)[x]) << x << ", " << y;
            else EXPECT_LT(0, d.bytes.row(y)[x]) << x << ", " << y;
    EXPECT_TRUE(d.bytes.fenceIntact());
    expectModel(s, "both signs");
}

TEST_P(ToneMap, ANegativeMaximumWarnsAndWritesNothing)
{
    Floats s(5, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) s.set(x, y, -1.5f - float(x * y));
    expectAll(s, kelWarnNegativeMax, -1, "all negative");
    s.fill(-kInf);
    expectAll(s, kelWarnNegativeMax, -1, "all minus infinity");
    s.fill(-FLT_MIN);
    expectAll(s, kelWarnNegativeMax, -1, "all minus the smallest normal");
}

// An infinite statistic makes the gain 0: every sample, infinity itself
// included, gives 0.
TEST_P(ToneMap, APlusInfiniteSampleGivesZeros)
{
    Floats s(5, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x) s.set(x, y, float(10 * x + y));
    s.set(3, 1, kInf);
    expectAll(s, kelOk, 0, "one +inf");
    expectModel(s, "one +inf");
}

// Random images at many sizes: positive with a spread of magnitudes, and a
// share of negative samples, against the model.
TEST_P(ToneMap, RandomImagesFollowTheModel)
{
    std::mt19937 gen(91);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f), expo(-20.0f, 20.0f);
    int run = 0;
    for (int w : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 63, 64, 67, 255})
        for (int h : {1, 2, 3, 5})
            for (int kind = 0; kind < 3; ++kind) {
                Floats s(w, h, std::size_t(1 + 2 * (run++ % 4)));  // paddings 1, 3, 5, 7: odd strides
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x) {
                        float v;
                        if (kind == 0) v = unit(gen) * 1000.0f;                                   // plain
                        else if (kind == 1) v = std::exp2(expo(gen) * 0.25f);                     // a few stops of range
                        else v = (gen() % 5 == 0 ? -1.0f : 1.0f) * std::ldexp(unit(gen), -60);    // tiny, both signs
                        s.set(x, y, v);
                    }
                expectModel(s, std::to_string(w) + "x" + std::to_string(h) + " kind " + std::to_string(kind));
            }
    Floats big(1000, 40, 5);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 1000; ++x) big.set(x, y, std::exp2(expo(gen) * 0.3f) - 0.01f);
    expectModel(big, "1000x40");
}

// Whole-number images where every product is a near-tie for truncation.
TEST_P(ToneMap, SmallIntegerImagesFollowTheModel)
{
    for (int top : {1, 2, 3, 5, 17, 255, 256, 1000}) {
        Floats s(top + 1 < 300 ? top + 1 : 300, 2);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < s.w; ++x) s.set(x, y, float((x * 7 + y) % (top + 1)));
        expectModel(s, "integers to " + std::to_string(top));
    }
}

const auto memberName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(ToneMap, ToneMap, ::testing::ValuesIn(kMembers), memberName);

// ---- Linear -----------------------------------------------------------------------------------

// The destination's rows after the call (filled with 0x3C before it).
std::vector<Kel8u> mapLinear(Floats& s, KelResult status)
{
    Bytes d(s.w, s.h);
    EXPECT_EQ(status, keliToneMapLinear_32f8u_C1R(s.ptr(), s.step(), d.bytes.data(), d.bytes.step(), {s.w, s.h}));
    EXPECT_TRUE(d.bytes.fenceIntact() && s.bytes.fenceIntact());
    return d.bytes.rows();
}

TEST(ToneMapLinear, TheMaximumGoesTo255)
{
    Floats s(4, 1);
    for (int x = 0; x < 4; ++x) s.set(x, 0, float(x + 1));  // 1..4: gain 63.75
    const auto d = mapLinear(s, kelOk);
    EXPECT_EQ((std::vector<Kel8u>{63, 127, 191, 255}), d);
}

// Just above the smallest normal float the gain is some 2e40, which long
// double holds: the maximum maps to 255 or, truncated, 254.
TEST(ToneMapLinear, AMaximumJustAboveTheSmallestNormal)
{
    const float top = std::nextafter(FLT_MIN, 1.0f);
    Floats s(6, 2);
    const float samples[12] = {top, FLT_MIN, FLT_MIN / 2, std::ldexp(1.0f, -149), 0.0f, -top,
                               top / 3, -1.0f, 0.75f * FLT_MIN, top, std::ldexp(1.0f, -140), -0.0f};
    for (int i = 0; i < 12; ++i) s.set(i % 6, i / 6, samples[i]);
    const auto d = mapLinear(s, kelOk);
    const Kel8u atMax = d[0];
    EXPECT_TRUE(atMax == 255 || atMax == 254) << int(atMax);
    EXPECT_EQ(atMax, d[9]);
    Bytes fresh(6, 2);
    EXPECT_EQ(linearModel(s, fresh).rows, d);
}

TEST(ToneMapLinear, AMaximumAtTheSmallestNormalFills)
{
    Floats s(3, 2);
    const float samples[6] = {FLT_MIN / 2, FLT_MIN, -5.0f, 0.0f, std::ldexp(1.0f, -149), FLT_MIN};
    for (int i = 0; i < 6; ++i) s.set(i % 3, i / 3, samples[i]);
    const auto d = mapLinear(s, kelOk);
    EXPECT_EQ(std::vector<Kel8u>(6, 0), d);
}

// A maximum of 0 over negative samples is not negative: the fill.
TEST(ToneMapLinear, AZeroMaximumOverNegativesFills)
{
    Floats s(4, 2);
    s.fill(-3.0f);
    s.set(2, 1, 0.0f);
    const auto d = mapLinear(s, kelOk);
    EXPECT_EQ(std::vector<Kel8u>(8, 0), d);
}

TEST(ToneMapLinear, ANaNFirstSampleWarnsAndWritesNothing)
{
    Floats s(4, 2);
    s.fill(10.0f);
    s.set(0, 0, kNaN);
    const auto d = mapLinear(s, kelWarnNegativeMax);
    EXPECT_EQ(std::vector<Kel8u>(8, 0x3C), d);
}

// Anywhere else a NaN leaves the maximum alone and itself gives 0.
TEST(ToneMapLinear, ANaNElsewhereGivesZeroThere)
{
    for (int at : {1, 3, 4, 7}) {
        Floats s(4, 2);
        const int values[8] = {2, 4, 6, 8, 10, 12, 16, 16};  // the maximum twice: gain 255 / 16, exact
        for (int i = 0; i < 8; ++i) s.set(i % 4, i / 4, float(values[i]));
        s.set(at % 4, at / 4, kNaN);
        const auto d = mapLinear(s, kelOk);
        std::vector<Kel8u> want(8);
        for (int i = 0; i < 8; ++i) want[i] = i == at ? 0 : Kel8u(values[i] * 255 / 16);
        EXPECT_EQ(want, d) << "NaN at " << at;
    }
}

// Minus infinity beside a positive maximum gives 0; as the first sample it
// is simply overtaken.
TEST(ToneMapLinear, MinusInfinityGivesZero)
{
    Floats s(3, 1);
    s.set(0, 0, -kInf);
    s.set(1, 0, 5.0f);
    s.set(2, 0, 10.0f);
    const auto d = mapLinear(s, kelOk);
    EXPECT_EQ((std::vector<Kel8u>{0, 127, 255}), d);
}

// ---- Mean -------------------------------------------------------------------------------------

// The destination's rows after the call (filled with 0x3C before it).
std::vector<Kel8u> mapMean(Floats& s, KelResult status)
{
    Bytes d(s.w, s.h);
    EXPECT_EQ(status, keliToneMapMean_32f8u_C1R(s.ptr(), s.step(), d.bytes.data(), d.bytes.step(), {s.w, s.h}));
    EXPECT_TRUE(d.bytes.fenceIntact() && s.bytes.fenceIntact());
    return d.bytes.rows();
}

// A pixel at the mean gets 127.5 truncated: 127, whatever the constant, down
// to the one whose double is just above the smallest normal.
TEST(ToneMapMean, AConstantImageGives127)
{
    for (float c : {1.0f, 0.1f, 3.0f, 1e-3f, 12345.678f, 3e38f, FLT_MAX, FLT_MIN, std::nextafter(FLT_MIN / 2, 1.0f)})
        for (auto [w, h] : {std::pair{1, 1}, {5, 3}, {64, 2}}) {
            Floats s(w, h);
            s.fill(c);
            const auto d = mapMean(s, kelOk);
            EXPECT_EQ(std::vector<Kel8u>(std::size_t(w * h), 127), d) << c << " at " << w << "x" << h;
        }
}

// Twice the mean at the smallest normal float is not above it: the fill.
TEST(ToneMapMean, TwiceTheMeanAtTheSmallestNormalFills)
{
    Floats s(5, 2);
    s.fill(FLT_MIN / 2);
    const auto d = mapMean(s, kelOk);
    EXPECT_EQ(std::vector<Kel8u>(10, 0), d);
}

TEST(ToneMapMean, ANegativeMeanWarnsThoughTheMaximumIsPositive)
{
    Floats s(4, 1);
    const float samples[4] = {-10.0f, 1.0f, 2.0f, -3.0f};
    for (int x = 0; x < 4; ++x) s.set(x, 0, samples[x]);
    const auto d = mapMean(s, kelWarnNegativeMax);
    EXPECT_EQ(std::vector<Kel8u>(4, 0x3C), d);
    const auto e = mapLinear(s, kelOk);  // the maximum, 2, maps
    EXPECT_EQ((std::vector<Kel8u>{0, 127, 255, 0}), e);
}

// Any NaN makes the mean NaN, and so do infinities of both signs.
TEST(ToneMapMean, ANaNOrOpposedInfinitiesWarn)
{
    for (int at : {0, 2, 5}) {
        Floats s(3, 2);
        s.fill(4.0f);
        s.set(at % 3, at / 3, kNaN);
        const auto d = mapMean(s, kelWarnNegativeMax);
        EXPECT_EQ(std::vector<Kel8u>(6, 0x3C), d) << "NaN at " << at;
    }
    Floats s(3, 2);
    s.fill(4.0f);
    s.set(1, 0, kInf);
    s.set(2, 1, -kInf);
    const auto d = mapMean(s, kelWarnNegativeMax);
    EXPECT_EQ(std::vector<Kel8u>(6, 0x3C), d);
    s.set(1, 0, 4.0f);
    const auto e = mapMean(s, kelWarnNegativeMax);  // minus infinity alone: a negative mean
    EXPECT_EQ(std::vector<Kel8u>(6, 0x3C), e);
}

// Samples far above the mean stop at 255; those below half a step give 0.
TEST(ToneMapMean, FarAboveTheMeanStopsAt255)
{
    Floats s(4, 1);
    const float samples[4] = {0.001f, 1.0f, 1.0f, 6.0f};  // mean 2.00025
    for (int x = 0; x < 4; ++x) s.set(x, 0, samples[x]);
    const auto d = mapMean(s, kelOk);
    EXPECT_EQ((std::vector<Kel8u>{0, 63, 63, 255}), d);
}

} // namespace
