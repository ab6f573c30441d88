// Colour twist: all 31 members against a model of the matrix sum in the
// 80-bit type, with its bounds and half-to-even rounding written out here;
// worked values at the ties and limits, argument order, odd byte strides,
// matrices holding NaN or infinities, in-place forms and the whole-image path
// of the float members.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the members ------------------------------------------------------------------

enum class Type { U8, S8, U16, S16, F32 };
enum class Walk { C3, AC4, P3, C4 };

// src is ignored by the in-place forms, which work on dst.
using TwistCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize, const Kel32f*);

struct Member {
    const char* name;
    Type type;
    Walk walk;
    bool inPlace;
    TwistCall call;
};

template <typename S, typename D, auto F>
KelResult outOfPlace(const void* s, int ss, void* d, int ds, KelImageSize z, const Kel32f* t)
{
    return F(static_cast<S>(s), ss, static_cast<D>(d), ds, z, t);
}
template <typename D, auto F> KelResult inPlace(const void*, int, void* d, int ds, KelImageSize z, const Kel32f* t)
{
    return F(static_cast<D>(d), ds, z, t);
}

#define TWIST(STEM, T, TYPE)                                                                                    \
    {#STEM "_C3R", TYPE, Walk::C3, false, outOfPlace<const T*, T*, STEM##_C3R>},                               \
    {#STEM "_C3IR", TYPE, Walk::C3, true, inPlace<T*, STEM##_C3IR>},                                           \
    {#STEM "_AC4R", TYPE, Walk::AC4, false, outOfPlace<const T*, T*, STEM##_AC4R>},                            \
    {#STEM "_AC4IR", TYPE, Walk::AC4, true, inPlace<T*, STEM##_AC4IR>},                                        \
    {#STEM "_P3R", TYPE, Walk::P3, false, outOfPlace<const T* const*, T* const*, STEM##_P3R>},                 \
    {#STEM "_IP3R", TYPE, Walk::P3, true, inPlace<T* const*, STEM##_IP3R>}

const Member kMembers[] = {
    TWIST(keliColorTwist32f_8u, Kel8u, Type::U8),    TWIST(keliColorTwist32f_8s, Kel8s, Type::S8),
    TWIST(keliColorTwist32f_16u, Kel16u, Type::U16), TWIST(keliColorTwist32f_16s, Kel16s, Type::S16),
    TWIST(keliColorTwist_32f, Kel32f, Type::F32),
    {"keliColorTwist_32f_C4R", Type::F32, Walk::C4, false, outOfPlace<const Kel32f*, Kel32f*, keliColorTwist_32f_C4R>},
};

// gtest names a failing member by its name.
void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

int sampleBytes(Type t) { return t == Type::U8 || t == Type::S8 ? 1 : t == Type::F32 ? 4 : 2; }
int pitch(Walk w) { return w == Walk::C3 ? 3 : w == Walk::P3 ? 1 : 4; }
int channels(Walk w) { return w == Walk::P3 ? 3 : pitch(w); }

// ---- the model ------------------------------------------------------------------------

// Half to even by the unsigned form: y = s + 0.5, n = trunc(y), an odd n equal
// to y moves down by one.
long double unsignedForm(long double s)
{
    const long double y = s + 0.5L;
    long double n = std::trunc(y);
    if (std::fmod(n, 2.0L) != 0 && n == y) n -= 1;
    return n;
}

// The signed form: s - 0.5 below 0, and an odd tie moves toward zero.
long double signedForm(long double s)
{
    const bool nonNegative = s >= 0;
    const long double y = nonNegative ? s + 0.5L : s - 0.5L;
    long double n = std::trunc(y);
    if (std::fmod(n, 2.0L) != 0 && n == y) n += nonNegative ? -1 : 1;
    return n;
}

// The limits are tested on the sum before rounding; a NaN sum gives 0.
long double toInteger(long double s, long double low, long double high, bool isSigned)
{
    if (s >= high) return high;
    if (s <= low) return low;
    if (std::isnan(s)) return 0;
    return isSigned ? signedForm(s) : unsignedForm(s);
}

long double load(Type type, const std::uint8_t* p)
{
    switch (type) {
    case Type::U8: return *p;
    case Type::S8: return static_cast<Kel8s>(*p);
    case Type::U16: { Kel16u v; std::memcpy(&v, p, 2); return v; }
    case Type::S16: { Kel16s v; std::memcpy(&v, p, 2); return v; }
    case Type::F32: { Kel32f v; std::memcpy(&v, p, 4); return v; }
    }
    return 0;
}

template <typename T> void put(std::uint8_t* p, long double v)
{
    const T t = static_cast<T>(v);
    std::memcpy(p, &t, sizeof(T));
}

void store(Type type, std::uint8_t* p, long double s)
{
    switch (type) {
    case Type::U8: put<Kel8u>(p, toInteger(s, 0, 255, false)); break;
    case Type::S8: put<Kel8s>(p, toInteger(s, -128, 127, true)); break;
    case Type::U16: put<Kel16u>(p, toInteger(s, 0, 65535, false)); break;
    case Type::S16: put<Kel16s>(p, toInteger(s, -32768, 32767, true)); break;
    case Type::F32: put<Kel32f>(p, s); break;  // rounded once, no clamp
    }
}

// Output channel i of a three-channel pixel: the constant added second.
long double sum3(const Kel32f* t, int i, const long double* c)
{
    const long double w0 = t[4 * i], w1 = t[4 * i + 1], w2 = t[4 * i + 2], k = t[4 * i + 3];
    return ((w0 * c[0] + k) + w1 * c[1]) + w2 * c[2];
}

// Output channel i of the four-channel float member: no constant.
long double sum4(const Kel32f* t, int i, const long double* c)
{
    const long double w0 = t[4 * i], w1 = t[4 * i + 1], w2 = t[4 * i + 2], w3 = t[4 * i + 3];
    return ((w0 * c[0] + w1 * c[1]) + w2 * c[2]) + w3 * c[3];
}

// ---- images ------------------------------------------------------------------------------

// A member's image in guarded buffers (one of pixels, or three planes of one
// stride), with the row padding and the offset of row 0 chosen by the test:
// odd ones put 16-bit and float rows at odd addresses.
class Twisted {
public:
    Twisted(const Member& m, int width, int height, std::size_t padding = 13, std::size_t misalign = 0,
            Placement placement = Placement::Guarded)
        : type_(m.type), walk_(m.walk), width_(width), height_(height), bytes_(sampleBytes(m.type))
    {
        const std::size_t rowBytes = static_cast<std::size_t>(width) * pitch(m.walk) * bytes_;
        for (int i = 0; i < (m.walk == Walk::P3 ? 3 : 1); ++i) {
            buffers_.push_back(std::make_unique<GuardedImage>(rowBytes, height, placement, padding, misalign));
            pointers[i] = buffers_.back()->data();
        }
        step = buffers_[0]->step();
    }

    std::uint8_t* at(int x, int y, int c)
    {
        const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(step) * y;
        return walk_ == Walk::P3 ? pointers[c] + row + x * bytes_ : pointers[0] + row + (x * pitch(walk_) + c) * bytes_;
    }
    long double sample(int x, int y, int c) { return load(type_, at(x, y, c)); }

    // Random samples: every bit pattern for integers, floats of three decimals
    // within +-1000 (zero unsigned), alpha included.
    void fill(std::uint32_t seed)
    {
        for (std::size_t i = 0; i < buffers_.size(); ++i) buffers_[i]->fillRandom(seed + 101 * static_cast<std::uint32_t>(i));
        if (type_ != Type::F32) return;
        std::mt19937 gen(seed);
        forEachSample([&](int x, int y, int c) {
            put<Kel32f>(at(x, y, c), static_cast<Kel32f>(static_cast<int>(gen() % 2000001) - 1000000) / 1000.0f);
        });
    }
    void copyFrom(Twisted& other)
    {
        forEachSample([&](int x, int y, int c) { std::memcpy(at(x, y, c), other.at(x, y, c), bytes_); });
    }
    template <typename F> void forEachSample(const F& f)
    {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                for (int c = 0; c < channels(walk_); ++c) f(x, y, c);
    }

    std::vector<std::uint8_t> rows() const
    {
        std::vector<std::uint8_t> all;
        for (const auto& b : buffers_) {
            const auto r = b->rows();
            all.insert(all.end(), r.begin(), r.end());
        }
        return all;
    }
    bool intact() const
    {
        for (const auto& b : buffers_)
            if (!b->fenceIntact()) return false;
        return true;
    }
    void* arg() { return walk_ == Walk::P3 ? static_cast<void*>(pointers.data()) : pointers[0]; }

    std::array<std::uint8_t*, 3> pointers{};
    int step = 0;

private:
    Type type_;
    Walk walk_;
    int width_, height_, bytes_;
    std::vector<std::unique_ptr<GuardedImage>> buffers_;
};

// What the member writes into `out` (holding the destination as it was) for
// the pixels of `in`; the fourth sample of an AC4 pixel stays as it is.
void model(const Member& m, const Kel32f* t, Twisted& in, Twisted& out, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            long double c[4];
            for (int k = 0; k < (m.walk == Walk::C4 ? 4 : 3); ++k) c[k] = in.sample(x, y, k);
            if (m.walk == Walk::C4) {
                for (int i = 0; i < 4; ++i) store(m.type, out.at(x, y, i), sum4(t, i, c));
            } else {
                for (int i = 0; i < 3; ++i) store(m.type, out.at(x, y, i), sum3(t, i, c));
            }
        }
}

// The first sample at which two snapshots differ, or -1; float samples that
// are both NaN agree.
long firstMismatch(Type type, const std::vector<std::uint8_t>& want, const std::vector<std::uint8_t>& got)
{
    if (want.size() != got.size()) return 0;
    const int bytes = sampleBytes(type);
    for (std::size_t i = 0; i < want.size(); i += bytes) {
        if (std::memcmp(&want[i], &got[i], bytes) == 0) continue;
        if (type == Type::F32 && std::isnan(static_cast<float>(load(type, &want[i]))) &&
            std::isnan(static_cast<float>(load(type, &got[i]))))
            continue;
        return static_cast<long>(i / bytes);
    }
    return -1;
}

std::string describe(Type type, const std::vector<std::uint8_t>& want, const std::vector<std::uint8_t>& got, long at)
{
    if (at < 0) return "";
    const int bytes = sampleBytes(type);
    return "sample " + std::to_string(at) + ": want " +
           std::to_string(static_cast<double>(load(type, &want[at * bytes]))) + ", got " +
           std::to_string(static_cast<double>(load(type, &got[at * bytes])));
}

// ---- matrices ------------------------------------------------------------------------------

// 16 floats: the three rows of a three-channel matrix and a fourth row, which
// only the four-channel member reads (there every row weighs four channels).
struct Matrix {
    const char* name;
    std::array<Kel32f, 16> t;
};

constexpr float kInf = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

const Matrix kIdentity{"identity", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
const Matrix kSwap02{"swap 0 and 2", {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1}};

std::vector<Matrix> ordinaryMatrices()
{
    std::vector<Matrix> all = {
        kIdentity,
        kSwap02,
        {"rotate", {0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0.5f, 0, 0, 0.5f}},
        {"decimal", {0.15f, 0.2f, 0.95f, 0, 0.95f, -0.15f, 0.2f, 3.25f, 0.299f, 0.587f, 0.114f, -7.5f, 0.2f, 0.15f, 0.95f, -0.1f}},
        {"decimal offsets", {0.95f, 0.2f, -0.15f, 10.7f, -0.2f, 0.95f, 0.15f, -0.3f, 0.15f, 0.15f, 0.2f, 100.1f, 1, 0.2f, 0, 0.95f}},
        {"halves", {0.5f, 0, 0, 0, 0.5f, 0.5f, 0, 0, 0.5f, 0.5f, 0.5f, 0.5f, 0.5f, -0.5f, 0.25f, 0.75f}},
        {"quarters", {0.25f, 0.25f, 0, 0.5f, 0.75f, -0.25f, 0.5f, 0.25f, -0.25f, 0.5f, 0.25f, -0.5f, 0.25f, 0.25f, 0.25f, 0.25f}},
        {"negative", {-1, 0, 0, 255, 0, -0.5f, 0, 127.5f, -0.25f, -0.25f, -0.5f, 0, -1, -1, -1, -1}},
        {"large", {300, -200, 50, 1000, 1e6f, 1e6f, 1e6f, 0, -1e7f, 0.5f, 0, -3, 1e30f, -1e30f, 0, 1}},
        {"sixteen-bit", {0.5f, 0.25f, 0.125f, 16384.5f, -0.75f, 1.5f, 0.1f, -1000.25f, 1.0f / 3, 1.0f / 3, 1.0f / 3, 0,
                         0.1f, 0.2f, 0.3f, 0.4f}},
    };
    std::mt19937 gen(2024);
    std::uniform_real_distribution<float> weight(-2.0f, 2.0f), constant(-300.0f, 300.0f);
    for (int k = 0; k < 2; ++k) {
        Matrix random{"random", {}};
        for (int i = 0; i < 16; ++i) random.t[i] = i % 4 == 3 && i < 12 ? constant(gen) : weight(gen);
        all.push_back(random);
    }
    return all;
}

const Matrix kBadMatrices[] = {
    {"NaN weight", {kNaN, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, kInf, 1, 0, 0, kNaN}},
    {"infinite weights", {kInf, 0, 0, 0, -kInf, 0, 0, 0, 1, kInf, 0, -kInf, kInf, 0, 0, 0}},
    {"NaN constant", {1, 0, 0, kNaN, 0, -kInf, 0, 5, kInf, kInf, kInf, 0, 0, kNaN, 0, 1}},
};

// ---- every member against the model ----------------------------------------------------

class TwistMember : public ::testing::TestWithParam<Member> {};

// Runs the member on a random image of width x height with `t`, checks the
// destination against the model, the source unchanged and every guard and
// padding byte intact.
void expectModel(const Member& m, const Matrix& matrix, int width, int height, std::uint32_t seed,
                 std::size_t padding = 13, std::size_t misalign = 0, Placement placement = Placement::Guarded)
{
    Twisted src(m, width, height, padding, misalign, placement), dst(m, width, height, padding, misalign, placement);
    Twisted expected(m, width, height);
    src.fill(seed);
    dst.fill(seed + 7);
    expected.copyFrom(dst);
    model(m, matrix.t.data(), m.inPlace ? dst : src, expected, width, height);
    const auto srcBefore = src.rows();
    ASSERT_EQ(kelOk, m.call(src.arg(), src.step, dst.arg(), dst.step, {width, height}, matrix.t.data()));
    const auto want = expected.rows(), got = dst.rows();
    const long at = firstMismatch(m.type, want, got);
    EXPECT_EQ(-1, at) << matrix.name << ", " << width << "x" << height << ", " << describe(m.type, want, got, at);
    if (!m.inPlace) EXPECT_EQ(srcBefore, src.rows()) << matrix.name << ", " << width << "x" << height;
    EXPECT_TRUE(src.intact() && dst.intact()) << matrix.name << ", " << width << "x" << height;
}

TEST_P(TwistMember, MatchesTheModelOnRandomImages)
{
    const Member& m = GetParam();
    std::uint32_t seed = 1;
    for (int width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 17, 67, 1000})
        for (int height = 1; height <= 4; ++height)
            for (const Matrix& matrix : ordinaryMatrices()) {
                const Placement placement = (width + height) % 2 ? Placement::Fenced : Placement::Guarded;
                expectModel(m, matrix, width, height, seed++, 13, 0, placement);
                if (HasFatalFailure()) return;
            }
}

// NaN and infinite entries: on integer images the sum saturates (+inf to
// the top, -inf to the bottom) or, when NaN, gives 0; float images take what
// IEEE arithmetic gives.
TEST_P(TwistMember, MatricesWithNaNAndInfinitiesFollowTheModel)
{
    const Member& m = GetParam();
    std::uint32_t seed = 500;
    for (int width : {1, 5, 17, 67})
        for (const Matrix& matrix : kBadMatrices) expectModel(m, matrix, width, 3, seed++);
}

// Odd byte strides, row 0 one or three bytes past a 64-byte boundary: 16-bit
// and float samples at odd addresses.
TEST_P(TwistMember, OddByteStridesGiveTheModelsValues)
{
    const Member& m = GetParam();
    std::uint32_t seed = 900;
    for (int width : {1, 2, 3, 7, 9, 67})
        for (const Matrix& matrix : {ordinaryMatrices()[3], ordinaryMatrices()[9]}) {
            expectModel(m, matrix, width, 3, seed++, 7, 1);
            expectModel(m, matrix, width, 2, seed++, 1, 3);
        }
}

// Pointers (twist included, each plane of a planar image), then size, then
// strides; nothing is written on failure.
TEST_P(TwistMember, NullsAndPlanesThenSizeThenStrides)
{
    const Member& m = GetParam();
    const auto image = [&m] {
        const int bytes = sampleBytes(m.type);
        return m.walk == Walk::P3 ? planes(3, 2, 3, bytes) : pixels(3, 2, pitch(m.walk), false, bytes);
    };
    Image src = image(), dst = image();
    const auto through = [&m](const Kel32f* t) {
        return [&m, t](Image& s, Image& d, KelImageSize z) { return m.call(s.arg(), s.step(), d.arg(), d.step(), z, t); };
    };
    expectArgumentOrder(through(kIdentity.t.data()), m.inPlace ? dst : src, dst, {3, 2}, {1, 1}, true,
                        Strides::AfterSize);

    // A null matrix comes before the size and the strides.
    Image& input = m.inPlace ? dst : src;
    dst.fillWith(0x5A);
    const auto before = dst.rows();
    const auto noMatrix = through(nullptr);
    EXPECT_EQ(kelErrNullPointer, noMatrix(input, dst, {3, 2}));
    EXPECT_EQ(kelErrNullPointer, noMatrix(input, dst, {0, 0}));
    EXPECT_EQ(kelErrNullPointer, noMatrix(input, dst, {-1, 2}));
    input.steps[0] = 0;
    dst.steps[0] = -3;
    EXPECT_EQ(kelErrNullPointer, noMatrix(input, dst, {3, 2}));
    EXPECT_EQ(kelErrSize, through(kIdentity.t.data())(input, dst, {3, 0}));
    EXPECT_EQ(kelErrStep, through(kIdentity.t.data())(input, dst, {3, 2}));
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(src.intact() && dst.intact());
}

INSTANTIATE_TEST_SUITE_P(Twist, TwistMember, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// ---- worked values -------------------------------------------------------------------------

// One pixel through a C3R member; matrix rows given as four numbers each.
template <typename T>
std::array<T, 3> twist1(KelResult (*f)(const T*, int, T*, int, KelImageSize, const Kel32f*), std::array<T, 3> in,
                        std::array<Kel32f, 12> t)
{
    std::array<T, 3> out{};
    EXPECT_EQ(kelOk, f(in.data(), 3 * sizeof(T), out.data(), 3 * sizeof(T), {1, 1}, t.data()));
    return out;
}

// Row i: weight 1 on channel 0 and the constant k[i]; the three outputs show
// c0 + k[0], c0 + k[1], c0 + k[2].
std::array<Kel32f, 12> plus(Kel32f k0, Kel32f k1, Kel32f k2) { return {1, 0, 0, k0, 1, 0, 0, k1, 1, 0, 0, k2}; }

using A8u = std::array<Kel8u, 3>;
using A8s = std::array<Kel8s, 3>;
using A16u = std::array<Kel16u, 3>;
using A16s = std::array<Kel16s, 3>;

TEST(TwistValues, HalfDiagonalTiesToEvenOn8u)
{
    const std::array<Kel32f, 12> half{0.5f, 0, 0, 0, 0, 0.5f, 0, 0, 0, 0, 0.5f, 0};
    EXPECT_EQ((A8u{0, 2, 2}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {1, 3, 5}, half));
    EXPECT_EQ((A8u{128, 128, 128}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {255, 255, 255}, half));
    EXPECT_EQ((A8u{0, 1, 2}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {0, 2, 4}, half));
}

TEST(TwistValues, EightBitUnsignedTopIsReachedByRoundingOrByTheBound)
{
    const auto f = keliColorTwist32f_8u_C3R;
    EXPECT_EQ((A8u{254, 255, 255}), twist1<Kel8u>(f, {254, 0, 0}, plus(0.5f, 0.9f, 1.0f)));   // 254.5, 254.9, 255
    EXPECT_EQ((A8u{255, 255, 255}), twist1<Kel8u>(f, {255, 0, 0}, plus(0, 0.5f, 1000.0f)));   // 255, 255.5, 1255
    EXPECT_EQ((A8u{253, 254, 254}), twist1<Kel8u>(f, {253, 0, 0}, plus(0.4f, 0.5f, 1.5f)));  // 253.4, 253.5, 254.5
}

TEST(TwistValues, UnsignedBottomIsReachedByRoundingOrByTheBound)
{
    EXPECT_EQ((A8u{0, 0, 0}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {0, 0, 0}, plus(0, -0.5f, 0.4f)));
    EXPECT_EQ((A8u{0, 0, 1}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {0, 0, 0}, plus(-300.0f, 0.5f, 0.6f)));
    EXPECT_EQ((A8u{0, 2, 2}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {1, 0, 0}, plus(-1.5f, 0.5f, 1.0f)));
    EXPECT_EQ((A16u{0, 0, 0}), twist1<Kel16u>(keliColorTwist32f_16u_C3R, {0, 0, 0}, plus(0, -0.5f, 0.4f)));
    EXPECT_EQ((A16u{0, 0, 2}), twist1<Kel16u>(keliColorTwist32f_16u_C3R, {0, 0, 0}, plus(-1e9f, 0.5f, 1.5f)));
}

TEST(TwistValues, SixteenBitUnsignedTop)
{
    const auto f = keliColorTwist32f_16u_C3R;
    EXPECT_EQ((A16u{65534, 65535, 65535}), twist1<Kel16u>(f, {65534, 0, 0}, plus(0.5f, 0.9f, 1.0f)));
    EXPECT_EQ((A16u{65535, 65535, 65535}), twist1<Kel16u>(f, {65535, 0, 0}, plus(0, 0.5f, 1e9f)));
    EXPECT_EQ((A16u{32768, 32768, 32770}), twist1<Kel16u>(f, {32767, 0, 0}, plus(0.5f, 1.5f, 2.5f)));
}

TEST(TwistValues, EightBitSignedTiesAndBounds)
{
    const auto f = keliColorTwist32f_8s_C3R;
    EXPECT_EQ((A8s{-128, -128, -128}), twist1<Kel8s>(f, {-127, 0, 0}, plus(-0.5f, -1.0f, -1000.0f)));  // -127.5, -128, -1127
    EXPECT_EQ((A8s{126, 127, 127}), twist1<Kel8s>(f, {126, 0, 0}, plus(0.5f, 1.0f, 0.6f)));            // 126.5, 127, 126.6
    EXPECT_EQ((A8s{127, 127, -128}), twist1<Kel8s>(f, {127, 0, 0}, plus(0, 1000.0f, -255.0f)));         // 127, 1127, -128
    EXPECT_EQ((A8s{-128, -128, -128}), twist1<Kel8s>(f, {-128, 0, 0}, plus(0, -0.5f, 0.5f)));  // -128, -128.5, -127.5
    EXPECT_EQ((A8s{-126, -126, -124}), twist1<Kel8s>(f, {-128, 0, 0}, plus(1.5f, 2.5f, 3.5f)));  // -126.5, -125.5, -124.5
    // -0.5, -1.5, -2.5 and 0.5, 1.5, 2.5.
    EXPECT_EQ((A8s{0, -2, -2}), twist1<Kel8s>(f, {0, 0, 0}, plus(-0.5f, -1.5f, -2.5f)));
    EXPECT_EQ((A8s{0, 2, 2}), twist1<Kel8s>(f, {0, 0, 0}, plus(0.5f, 1.5f, 2.5f)));
    EXPECT_EQ((A8s{-1, -1, 0}), twist1<Kel8s>(f, {0, 0, 0}, plus(-0.6f, -1.4f, -0.4f)));
}

TEST(TwistValues, SixteenBitSignedTiesAndBounds)
{
    const auto f = keliColorTwist32f_16s_C3R;
    EXPECT_EQ((A16s{-32768, -32768, -32767}), twist1<Kel16s>(f, {-32767, 0, 0}, plus(-0.5f, -1.0f, 0.0f)));
    EXPECT_EQ((A16s{32766, 32767, 32767}), twist1<Kel16s>(f, {32766, 0, 0}, plus(0.5f, 1.0f, 1e9f)));
    EXPECT_EQ((A16s{-32768, 32767, 0}), twist1<Kel16s>(f, {-32768, 0, 0}, plus(-0.5f, 65535.0f, 32768.4f)));
    EXPECT_EQ((A16s{0, -2, -2}), twist1<Kel16s>(f, {0, 0, 0}, plus(-0.5f, -1.5f, -2.5f)));
}

TEST(TwistValues, SignedSamplesEnterWithTheirSign)
{
    const std::array<Kel32f, 12> identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
    const std::array<Kel32f, 12> negate{-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0};
    const std::array<Kel32f, 12> total{1, 1, 1, 0, 0.5f, 0, 0, 0, 0, 0, 2, 0};
    EXPECT_EQ((A8s{-1, -128, 127}), twist1<Kel8s>(keliColorTwist32f_8s_C3R, {-1, -128, 127}, identity));
    EXPECT_EQ((A8s{1, 127, -127}), twist1<Kel8s>(keliColorTwist32f_8s_C3R, {-1, -128, 127}, negate));
    EXPECT_EQ((A8s{-3, 0, -2}), twist1<Kel8s>(keliColorTwist32f_8s_C3R, {-1, -1, -1}, total));  // -0.5 ties to 0
    EXPECT_EQ((A16s{-1, -32768, 32767}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {-1, -32768, 32767}, identity));
    EXPECT_EQ((A16s{1, 32767, -32767}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {-1, -32768, 32767}, negate));
    EXPECT_EQ((A16s{-3, 0, -2}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {-1, -1, -1}, total));
    EXPECT_EQ((A16s{-1, -1, -1}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {-3, -3, 0}, {0.25f, 0.25f, 0, 0.5f, 0.5f, 0, 0, 0.5f, 0, 0, 0, -1}));
}

TEST(TwistValues, FloatSumsAreNotClamped)
{
    std::array<Kel32f, 3> in{1000.0f, 1000.0f, -7.0f}, out{};
    const std::array<Kel32f, 12> t{1, 0, 0, 0.25f, 0, 0, 0, 1000000.5f, 0, -2, 0.5f, 0};
    ASSERT_EQ(kelOk, keliColorTwist_32f_C3R(in.data(), 12, out.data(), 12, {1, 1}, t.data()));
    EXPECT_EQ(1000.25f, out[0]);
    EXPECT_EQ(1000000.5f, out[1]);
    EXPECT_EQ(-2003.5f, out[2]);
}

// The sum is rounded once, from the extended type: 1 + 2^-24 + 2^-24 is
// 1 + 2^-23 there, where float arithmetic would give 1 at each step.
TEST(TwistValues, FloatSumRoundsOnceAtTheStore)
{
    const float e = std::ldexp(1.0f, -24);
    std::array<Kel32f, 3> in{1.0f, e, e}, out{};
    const std::array<Kel32f, 12> t{1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0};
    ASSERT_EQ(kelOk, keliColorTwist_32f_C3R(in.data(), 12, out.data(), 12, {1, 1}, t.data()));
    EXPECT_EQ(1.0f + 2 * e, out[0]);
    std::array<Kel32f, 4> in4{1.0f, e, e, 0}, out4{};
    const std::array<Kel32f, 16> t4{1, 1, 1, 0, 1, 1, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0};
    ASSERT_EQ(kelOk, keliColorTwist_32f_C4R(in4.data(), 16, out4.data(), 16, {1, 1}, t4.data()));
    EXPECT_EQ((std::array<Kel32f, 4>{1.0f + 2 * e, 1.0f + 2 * e, 0, 1.0f}), out4);
}

// The bad entries of a matrix as concrete outputs: NaN gives 0, +inf the top,
// -inf the bottom, inf times 0 (NaN) gives 0.
TEST(TwistValues, NaNAndInfiniteSumsOnIntegerImages)
{
    const std::array<Kel32f, 12> t{kNaN, 0, 0, 0, kInf, 0, 0, 0, -kInf, 0, 0, 0};
    EXPECT_EQ((A8u{0, 255, 0}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {7, 0, 0}, t));
    EXPECT_EQ((A8u{0, 0, 0}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {0, 9, 9}, t));
    EXPECT_EQ((A8s{0, 127, -128}), twist1<Kel8s>(keliColorTwist32f_8s_C3R, {7, 0, 0}, t));
    EXPECT_EQ((A8s{0, -128, 127}), twist1<Kel8s>(keliColorTwist32f_8s_C3R, {-7, 0, 0}, t));
    EXPECT_EQ((A16u{0, 65535, 0}), twist1<Kel16u>(keliColorTwist32f_16u_C3R, {7, 0, 0}, t));
    EXPECT_EQ((A16s{0, -32768, 32767}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {-7, 0, 0}, t));
    // Infinities of opposite signs in one row.
    const std::array<Kel32f, 12> opposite{kInf, 0, 0, -kInf, 0, kInf, 0, 1, 0, 0, 0, kInf};
    EXPECT_EQ((A16s{0, 32767, 32767}), twist1<Kel16s>(keliColorTwist32f_16s_C3R, {5, 5, 0}, opposite));
    EXPECT_EQ((A8u{0, 0, 255}), twist1<Kel8u>(keliColorTwist32f_8u_C3R, {5, 0, 0}, opposite));  // inf * 0 in row 1
}

TEST(TwistValues, NaNAndInfinitiesPassThroughFloatImages)
{
    std::array<Kel32f, 3> in{2.0f, 0.0f, -1.0f}, out{};
    const std::array<Kel32f, 12> t{kNaN, 0, 0, 0, 0, kInf, 0, 0, 0, 0, kInf, 1};
    ASSERT_EQ(kelOk, keliColorTwist_32f_C3R(in.data(), 12, out.data(), 12, {1, 1}, t.data()));
    EXPECT_TRUE(std::isnan(out[0]));
    EXPECT_TRUE(std::isnan(out[1]));  // inf * 0
    EXPECT_EQ(-kInf, out[2]);
    std::array<Kel32f, 3> big{3e38f, 3e38f, 0};
    const std::array<Kel32f, 12> add{1, 1, 0, 0, 1, -1, 0, 0, -2, 0, 0, 0};
    ASSERT_EQ(kelOk, keliColorTwist_32f_C3R(big.data(), 12, out.data(), 12, {1, 1}, add.data()));
    EXPECT_EQ(kInf, out[0]);  // 6e38 overflows the float at the store
    EXPECT_EQ(0.0f, out[1]);
    EXPECT_EQ(-kInf, out[2]);
}

// ---- identity and in-place swaps ---------------------------------------------------------

const Member& member(const std::string& name)
{
    for (const Member& m : kMembers)
        if (name == m.name) return m;
    throw std::logic_error("no member " + name);
}

TEST(TwistImages, IdentityReturnsTheImage)
{
    for (const Member& m : kMembers) {
        if (m.inPlace) continue;
        const int width = 67, height = 3;
        Twisted src(m, width, height), dst(m, width, height), expected(m, width, height);
        src.fill(41);
        dst.fill(42);
        expected.copyFrom(dst);
        src.forEachSample([&](int x, int y, int c) {
            if (m.walk != Walk::AC4 || c < 3) std::memcpy(expected.at(x, y, c), src.at(x, y, c), sampleBytes(m.type));
        });
        ASSERT_EQ(kelOk, m.call(src.arg(), src.step, dst.arg(), dst.step, {width, height}, kIdentity.t.data()));
        EXPECT_EQ(expected.rows(), dst.rows()) << m.name;  // AC4: the alpha it held
        EXPECT_TRUE(dst.intact()) << m.name;
    }
}

// In-place forms form all three sums before storing any: a swap of channels
// 0 and 2 swaps them, the fourth sample stays, and the bytes are those of the
// out-of-place form.
TEST(TwistImages, InPlaceSwapOfChannelsZeroAndTwo)
{
    for (const Member& m : kMembers) {
        if (!m.inPlace) continue;
        std::string name = m.name;
        name = m.walk == Walk::P3 ? name.replace(name.size() - 4, 4, "P3R") : name.replace(name.size() - 2, 2, "R");
        const Member& outOf = member(name);
        const int width = 17, height = 3;
        Twisted image(m, width, height), src(m, width, height), dst(m, width, height), expected(m, width, height);
        image.fill(51);
        src.copyFrom(image);
        dst.copyFrom(image);  // the fourth samples alike
        expected.copyFrom(image);
        image.forEachSample([&](int x, int y, int c) {
            if (c == 0 || c == 2) std::memcpy(expected.at(x, y, 2 - c), image.at(x, y, c), sampleBytes(m.type));
        });
        ASSERT_EQ(kelOk, m.call(nullptr, 0, image.arg(), image.step, {width, height}, kSwap02.t.data()));
        ASSERT_EQ(kelOk, outOf.call(src.arg(), src.step, dst.arg(), dst.step, {width, height}, kSwap02.t.data()));
        EXPECT_EQ(expected.rows(), image.rows()) << m.name;
        EXPECT_EQ(image.rows(), dst.rows()) << m.name << " and " << outOf.name;  // AC4: both alphas came from 51
        EXPECT_TRUE(image.intact() && dst.intact()) << m.name;
    }
}

// ---- the whole-image path of the float members ----------------------------------------

// Rows that follow each other with no gap (steps of exactly width * 12 or
// width * 16 bytes) give what padded rows give, and the model's values.
TEST(TwistImages, FloatRowsWithNoGapGiveWhatPaddedRowsGive)
{
    const Matrix matrix = ordinaryMatrices()[4];
    for (const char* name : {"keliColorTwist_32f_C3R", "keliColorTwist_32f_C4R", "keliColorTwist_32f_C3IR"}) {
        const Member& m = member(name);
        for (int width : {1, 2, 3, 5, 9, 67})
            for (int height = 1; height <= 4; ++height) {
                Twisted src(m, width, height, 0), dst(m, width, height, 0);
                Twisted paddedSrc(m, width, height, 20), paddedDst(m, width, height, 20);
                Twisted expected(m, width, height);
                src.fill(61);
                dst.fill(62);
                paddedSrc.copyFrom(src);
                paddedDst.copyFrom(dst);
                expected.copyFrom(dst);
                ASSERT_EQ(width * (m.walk == Walk::C4 ? 16 : 12), src.step);
                model(m, matrix.t.data(), m.inPlace ? dst : src, expected, width, height);
                ASSERT_EQ(kelOk, m.call(src.arg(), src.step, dst.arg(), dst.step, {width, height}, matrix.t.data()));
                ASSERT_EQ(kelOk, m.call(paddedSrc.arg(), paddedSrc.step, paddedDst.arg(), paddedDst.step,
                                        {width, height}, matrix.t.data()));
                EXPECT_EQ(expected.rows(), dst.rows()) << name << ", " << width << "x" << height;
                EXPECT_EQ(paddedDst.rows(), dst.rows()) << name << ", " << width << "x" << height;
                EXPECT_TRUE(src.intact() && dst.intact() && paddedDst.intact());
                // One step with no gap and one padded: rows taken one by one.
                Twisted mixed(m, width, height, 20);
                mixed.copyFrom(paddedDst);
                ASSERT_EQ(kelOk, m.call(src.arg(), src.step, mixed.arg(), mixed.step, {width, height}, matrix.t.data()));
                if (!m.inPlace) EXPECT_EQ(dst.rows(), mixed.rows()) << name << ", " << width << "x" << height;
            }
    }
}

} // namespace
