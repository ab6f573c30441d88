// Vector rows of the four Lab conversions, for every SIMD target: the
// extended kernels' formulas in doubles, in the same order, and each byte or
// word taken from the doubles only where a bound shows that the extended
// value truncates (or rounds to a float) the same way.  A pixel the bounds
// cannot decide is converted by the extended arithmetic (ciepx.cpp, compiled
// for the baseline).  No fused multiply-add anywhere.
//
// Notation: u = 2^-53 (a double's unit roundoff), u' = 2^-64 (the extended
// type's).  Every bound below is the distance of the double result from the
// exact real value plus the same distance for the extended result, which is
// the first with u' in place of u (2^-11 of it), so the factors 1.001 below.
//
// ---- BGR to Lab ----------------------------------------------------------------------
//
// The colour sums.  A 32-bit weight times a byte is a multiple of the
// weight's ulp (2^-29 at the smallest, 0.019334) below 2^9: 38 bits, exact in
// both types, and so is each sum of three.  So x, y, z are the correctly
// rounded quotients of the same exact sums in both types: x = q (1 + d),
// |d| <= u for the doubles, u' for the extended values.
//
// Threshold tests.  t0 is a double, and rounding is monotone: a double y
// above t0 means the exact quotient is above t0 and so is its extended
// rounding (equal to t0 only if the quotient lies within half an extended
// ulp of t0, when the double would be t0 too).  Likewise below.  Only a
// double equal to t0 is undecided: such pixels go to the extended kernel.
// After the cubic branch of y, x and z are floats in both types (below), and
// the tests compare the same values.
//
// x and z rounded to floats.  The two quotients lie within 1.001 u x of each
// other, less than 2 units of the double x's last place: the float is
// decided where x lies 2 units or more from a point halfway between two
// floats (floatDecided).  x and z are above 7e-4 here (y above t0 needs a
// channel above 0), so their floats are normal.
//
// The powers.  The extended kernel calls pow (error below 1 ulp, 2u of the
// result) on its quotient rounded to a double, which may be the double next
// to ours (a double rounding): relatively 2u apart, p * 2u = 0.67u apart
// after the power.  thirdPower's own error is below 10u (its derivation is at
// the function, a test measures it): 12.7u.  The linear pieces y s + o carry
// three roundings and the extended kernel may round them to a double: 4u.
// So every f (fx, fy, fz) lies within rf = 16u of f relatively.
//
// L.  Cubic: 116 fy - 16 is exact in the extended type (fy a double above
// 0.2, a multiple of 2^-55; 116 fy a multiple of 2^-53 below 2^7: 60 bits,
// and so is the difference), and L is at least 7.99.  The doubles add two
// roundings (116 fy and the difference, 216u at most) to 116 fy rf: below
// 116 * 1.0001 * 16u + 216u = 2073u, relatively 2073u / 7.99 < 260u.
// Linear: k y carries one rounding on top of y's, 2.01u relatively.  So L is
// within rL = 2^-44 (512u) of L relatively.
//   Held as a float (8-bit codes): decided like x and z; rL L is below 2^9
//   units of L's last place, so 512 units from a halfway point decide it.
//   Then trunc((Lf 255) / 100 + 0.5) is exact in doubles: Lf 255 is exact (32
//   bits), and with L at least 0.255 (the smallest non-zero y times k) Lf 255
//   is a multiple of 2^-25, so t / 100 + 0.5 is an integer or at least
//   2^-25 / 100 below one, where no rounding of either type reaches.
//   Held as a double (16-bit codes): v = (L 65535) / 100 adds L's rounding
//   to a double and two roundings of each type: |v - v'| < v (rL + 3.01u),
//   below v 2^-43.
//
// a and b.  a = (fx - fy) 500 with f below 1.0001 and a in -432..432: the
// f's give 500 * 2.0002 * rf = 16002u, the difference and the product at
// most 2 * 432 * 1.001u, the addend 128.5 560 * 1.001u: 17430u < 2^-38
// from the extended value; b (200 times) stays below a's bound.  16-bit:
// (a + 128) 255 is 255 times a's 17430u and 561u for the sum, plus 143000u
// for the product: 4.74e6 u < 2^-30.
//
// Every code is a truncation toward zero (the stored byte or word being its
// low bits), so it is decided where its value lies further than the bound
// from every integer.
//
// Black is the one pixel with exact results: X = Y = Z = 0 (all weights are
// positive), every f is o exactly, L, a and b are 0 in both types, and the
// doubles give the codes (0, 32640, 32640 at 16 bits) exactly: its bound is 0.
//
// ---- Lab to BGR ----------------------------------------------------------------------
//
// No branch: P, Q, W, their cubes and three sums of products.  Absolute
// errors of the doubles (16-bit codes; the 8-bit ones are smaller):
//   P in [0.138, 1]: three roundings of positive values, 3.01u.
//   Q = ((a / 255 - 128) / 500) + P in [-0.12, 1.26]: 257u + 129u for the
//   quotient and difference, / 500 and its rounding 1.03u, plus P's and the
//   sum's: 5.3u.  W = P - (b / 255 - 128) / 200 in [-0.51, 1.65]: 7.24u.
//   X = Xw Q^3 below 482.5: 3 Xw Q^2 * 5.3u + 3.01u * 482.5 = 7551u.
//   Y = 255 P^3 below 255: 765 * 3.01u + 3.01u * 255 = 3071u.
//   Z = Zw W^3 below 1236: 2254 * 7.24u + 3.01u * 1236 = 20038u.
//   r = (3.240479 X - 1.53715 Y) - 0.498535 Z: the weighted errors 39180u,
//   three products and two sums rounded (below 2572 each) 7100u: 46280u;
//   g 16854u, b 25084u; the 8-bit + 0.5 adds 2572u.
// So every sum is within 1.001 * 48852u < 2^-37 of the extended one, and a
// byte is decided where its value lies further than 2^-37 from every integer
// from 1 to 255 (the clamp makes all below 1 one byte, all from 255 another).
#include "ciepxsimd.h"

#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ciepxsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#ifndef KELCC_CIEPXSIMD_CONSTANTS
#define KELCC_CIEPXSIMD_CONSTANTS
namespace kel::lab {

// Every constant is a 32-bit float widened, as in the extended kernels, but
// the exponent, the double holding the float nearest 1/3.
constexpr double kWhiteX = 242.366f, kWhiteZ = 277.632f, kThreshold = 0.008856f;
constexpr double kLinearSlope = 7.787f, kLinearOffset = 0.13793103f, kLowLightSlope = 903.3f;
constexpr double kThird = 0.3333333432674408;
constexpr double kToX[3] = {0.180423f, 0.35758f, 0.412453f};  // blue, green, red
constexpr double kToY[3] = {0.072169f, 0.71516f, 0.212671f};
constexpr double kToZ[3] = {0.950227f, 0.119193f, 0.019334f};
constexpr double kToR[3] = {3.240479f, -1.53715f, -0.498535f};  // X, Y, Z
constexpr double kToG[3] = {-0.969256f, 1.875991f, 0.041556f};
constexpr double kToB[3] = {0.055648f, -0.204043f, 1.057311f};

// The bounds derived above.
constexpr std::int64_t kQuotientReach = 2;  // x and z, in units of their last place
constexpr std::int64_t kLightReach = 512;   // L held as a float, likewise
constexpr double kLight16Bound = 0x1p-43;   // (L 65535) / 100, relative
constexpr double kChroma8Bound = 0x1p-38;   // a + 128.5, b + 128.5
constexpr double kChroma16Bound = 0x1p-30;  // (a + 128) 255, (b + 128) 255
constexpr double kInverseBound = 0x1p-37;   // the colour sums of the inverse

// Near-minimax polynomials (Chebyshev interpolation in 50-digit arithmetic,
// rounded to doubles), lowest degree first:
//   log2(m) / s as a polynomial in s^2, s = (m - 1) / (m + 1), s^2 in [0, 0.02945]:
//   relatively within 0.011u;
//   2^r on [-0.501, 0.501]: within 0.042u of values above 0.70.
constexpr int kLogTerms = 8, kExpTerms = 12;
constexpr double kLog2Series[kLogTerms] = {
    2.8853900817779268,  0.96179669392598977, 0.57707801634549358, 0.41219858584694021,
    0.32059853426872768, 0.26233438759167224, 0.22091214476562217, 0.21366877961402537};
constexpr double kExp2Series[kExpTerms] = {
    1.0,                   0.69314718055994531,   0.24022650695910161,    0.055504108664821628,
    0.0096181291075865922, 0.0013333558146406117, 0.00015403530464573219, 1.5252733842009232e-5,
    1.3215432100216046e-6, 1.0178056855501161e-7, 7.0742716010737187e-9,  4.4558591123302077e-10};

} // namespace kel::lab
#endif

HWY_BEFORE_NAMESPACE();
namespace kel::lab {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::ScalableTag<double>;
using VF = hn::Vec<DF>;
using MF = hn::Mask<DF>;
using DU64 = hn::RebindToUnsigned<DF>;
using DI32 = hn::Rebind<std::int32_t, DF>;
using DF32 = hn::Rebind<float, DF>;
using DU32 = hn::Rebind<std::uint32_t, DF>;
using D8 = hn::Rebind<std::uint8_t, DF>;
using D16 = hn::Rebind<std::uint16_t, DF>;

HWY_INLINE VF constant(double v)
{
    return hn::Set(DF(), v);
}

// ---- the power ---------------------------------------------------------------------------
//
// sum c[k] t^k for k from First, Count terms, by Estrin's scheme: the lower
// terms plus t^h times the upper ones, h the largest power of two below Count,
// both halves alike down to single terms; powers[j] = t^(2^j).  The chain of
// dependent steps is short, and each step rounds once.
template <int First, int Count>
HWY_INLINE VF estrin(const double* c, const VF* powers)
{
    if constexpr (Count == 1) {
        return constant(c[First]);
    } else {
        constexpr int level = Count > 8 ? 3 : (Count > 4 ? 2 : (Count > 2 ? 1 : 0));
        constexpr int lower = 1 << level;
        return hn::Add(estrin<First, lower>(c, powers),
                       hn::Mul(estrin<First + lower, Count - lower>(c, powers), powers[level]));
    }
}

template <int Terms>
HWY_INLINE VF polynomial(const double (&c)[Terms], VF t)
{
    static_assert(Terms <= 16, "powers up to t^8");
    VF powers[4];
    powers[0] = t;
    for (int j = 1; j < 4; ++j) powers[j] = hn::Mul(powers[j - 1], powers[j - 1]);
    return estrin<0, Terms>(c, powers);
}

// y^p = 2^(p log2 y) for y in [2^-8, 2).  Below, "half an ulp" of a value
// in [2^k, 2^(k+1)) is 2^k u.
//   y = m 2^e with m in [0.707, 1.415], exact (from the bits).
//   s = (m - 1) / (m + 1): m - 1 exact, the sum and the quotient rounded:
//   relatively 2.01u; |s| <= 0.1716, s^2 <= 0.02945 (5u relatively).
//   P(s^2) = log2(m) / s, near 2.885..2.914: the fit 0.011u, the rounding of
//   c0 (2u, half an ulp of 2.885) and of the three sums Estrin's scheme ends
//   in (2u each), all relative to 2.885: 2.8u; the products and s^2's error
//   reach P through terms below 0.03 of it: 0.1u.  log2 m = s P: 2.01u + 2.9u
//   + u = 5.9u relatively, and |log2 m| <= 0.5: 2.95u absolutely.
//   p e is exact (p has 24 bits, |e| <= 8); n is the nearest integer to
//   p e + p log2 m, r = (p e - n) + p log2 m with p e - n exact: p's share of
//   log2 m's error (0.98u), the product's rounding (0.125u) and the sum's
//   (0.5u, |r| <= 0.501): 1.6u absolutely, a relative error of 1.11u in 2^r.
//   2^r by its 12-term fit (0.042u) in Estrin's steps: 1 + c1 r rounded
//   twice (1.25u), the three sums after it (u each, all below 1.42), the
//   inner terms (0.2u), the coefficients' rounding (u times the sum of the
//   terms beyond the first, below 0.42): 4.9u absolutely of a value at least
//   0.707, 7u relatively.  2^n is exact.
// So thirdPower is within 8.2u of y^p relatively, below the 10u the guards
// assume (a test measures under 2u).  At y = 1 every step is exact and the
// power is 1.
HWY_INLINE VF thirdPower(VF y)
{
    const DF df;
    const DU64 du;
    const VF one = constant(1.0);
    const auto bits = hn::BitCast(du, y);
    // The biased exponent as a double: its bits laid under 2^52's.
    const VF biased = hn::Sub(hn::BitCast(df, hn::Or(hn::ShiftRight<52>(bits), hn::Set(du, 0x4330000000000000ull))),
                              constant(0x1p52 + 1023));
    // The significand under 1.0's exponent: m in [1, 2).
    VF m = hn::BitCast(df, hn::Or(hn::And(bits, hn::Set(du, 0x000FFFFFFFFFFFFFull)),
                                  hn::Set(du, 0x3FF0000000000000ull)));
    const MF high = hn::Gt(m, constant(1.4142135623730951));
    m = hn::IfThenElse(high, hn::Mul(m, constant(0.5)), m);
    const VF e = hn::IfThenElse(high, hn::Add(biased, one), biased);

    const VF s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
    const VF log2m = hn::Mul(s, polynomial(kLog2Series, hn::Mul(s, s)));

    const VF third = constant(kThird);
    const VF pe = hn::Mul(third, e);
    const VF pl = hn::Mul(third, log2m);
    const VF n = hn::Round(hn::Add(pe, pl));
    const VF r = hn::Add(hn::Sub(pe, n), pl);
    const VF power = polynomial(kExp2Series, r);
    // 2^n from n's bits laid under 2^52's, shifted into the exponent field.
    const VF scale = hn::BitCast(df, hn::ShiftLeft<52>(hn::BitCast(du, hn::Add(n, constant(0x1p52 + 1023)))));
    return hn::Mul(power, scale);
}

// ---- the guards -----------------------------------------------------------------------

// The float nearest v (v >= 0, zero or a normal float), and whether every
// value within `reach` units of v's last place rounds to it: the float's
// rounding changes only where the 29 bits it drops from the double read
// exactly 2^28 (halfway between two floats), so v is decided where those bits
// lie `reach` or more from 2^28.  (The next binade's halfway point lies 2^28
// units away.)
template <std::int64_t kReach>
HWY_INLINE MF floatDecided(VF v, VF& rounded)
{
    const hn::RebindToSigned<DF> di;
    rounded = hn::PromoteTo(DF(), hn::DemoteTo(DF32(), v));
    const auto dropped = hn::And(hn::BitCast(di, v), hn::Set(di, (std::int64_t{1} << 29) - 1));
    constexpr std::int64_t kHalfway = std::int64_t{1} << 28;
    return hn::RebindMask(DF(), hn::Or(hn::Gt(dropped, hn::Set(di, kHalfway + kReach - 1)),
                                       hn::Lt(dropped, hn::Set(di, kHalfway - kReach + 1))));
}

// Whether every value within err of v truncates as v does: v lies further
// than err from the nearest integer.
HWY_INLINE MF truncationDecided(VF v, VF err)
{
    return hn::Gt(hn::Abs(hn::Sub(v, hn::Round(v))), err);
}

// The low `Mask` bits of trunc(v) (|v| below 2^31).
template <std::int32_t Mask>
HWY_INLINE hn::Vec<DI32> lowBits(VF v)
{
    const DI32 di;
    return hn::And(hn::DemoteTo(di, v), hn::Set(di, Mask));
}

// ---- BGR to Lab -----------------------------------------------------------------------

struct LabLanes {
    VF L, a, b;
    MF decided, black;
};

// The forward steps in doubles, x and z rounded to floats where y takes the
// cubic piece; `decided` clears the lanes whose branches or float roundings
// might differ from the extended kernel's.
HWY_INLINE LabLanes bgrToLab(VF B, VF G, VF R)
{
    const VF one = constant(1.0), t0 = constant(kThreshold);
    // Blue's term first, as the extended kernels add them.
    const auto sum = [&](const double (&w)[3]) {
        return hn::Add(hn::Add(hn::Mul(constant(w[0]), B), hn::Mul(constant(w[1]), G)), hn::Mul(constant(w[2]), R));
    };
    const VF X = sum(kToX), Y = sum(kToY), Z = sum(kToZ);
    VF x = hn::Div(X, constant(kWhiteX));
    const VF y = hn::Div(Y, constant(255.0));
    VF z = hn::Div(Z, constant(kWhiteZ));

    const MF cubicY = hn::Gt(y, t0);
    VF xFloat, zFloat;
    const MF xDecided = floatDecided<kQuotientReach>(x, xFloat);
    const MF zDecided = floatDecided<kQuotientReach>(z, zFloat);
    x = hn::IfThenElse(cubicY, xFloat, x);
    z = hn::IfThenElse(cubicY, zFloat, z);
    const MF cubicX = hn::Gt(x, t0), cubicZ = hn::Gt(z, t0);
    MF decided = hn::And(hn::Ne(y, t0), hn::And(hn::Ne(x, t0), hn::Ne(z, t0)));
    decided = hn::And(decided, hn::Or(hn::Not(cubicY), hn::And(xDecided, zDecided)));

    const VF s = constant(kLinearSlope), o = constant(kLinearOffset);
    const VF fy = hn::IfThenElse(cubicY, thirdPower(hn::IfThenElse(cubicY, y, one)), hn::Add(hn::Mul(y, s), o));
    const VF fx = hn::IfThenElse(cubicX, thirdPower(hn::IfThenElse(cubicX, x, one)), hn::Add(hn::Mul(x, s), o));
    const VF fz = hn::IfThenElse(cubicZ, thirdPower(hn::IfThenElse(cubicZ, z, one)), hn::Add(hn::Mul(z, s), o));
    LabLanes lab;
    lab.L = hn::IfThenElse(cubicY, hn::Sub(hn::Mul(constant(116.0), fy), constant(16.0)),
                           hn::Mul(constant(kLowLightSlope), y));
    lab.a = hn::Mul(hn::Sub(fx, fy), constant(500.0));
    lab.b = hn::Mul(hn::Sub(fy, fz), constant(200.0));
    lab.decided = decided;
    lab.black = hn::Eq(Y, hn::Zero(DF()));
    return lab;
}

// 8-bit codes: L through its float, a and b + 128.5, each truncated.
HWY_INLINE void labCodes8u(const LabLanes& lab, hn::Vec<DI32>& L, hn::Vec<DI32>& a, hn::Vec<DI32>& b,
                           MF& decided)
{
    VF lightFloat;
    const MF lightDecided = floatDecided<kLightReach>(lab.L, lightFloat);
    const VF l = hn::Add(hn::Div(hn::Mul(lightFloat, constant(255.0)), constant(100.0)), constant(0.5));
    const VF av = hn::Add(lab.a, constant(128.5)), bv = hn::Add(lab.b, constant(128.5));
    const VF bound = constant(kChroma8Bound);
    decided = hn::And(lab.decided,
                      hn::And(lightDecided, hn::And(truncationDecided(av, bound), truncationDecided(bv, bound))));
    decided = hn::Or(decided, lab.black);
    L = lowBits<0xFF>(l);
    a = lowBits<0xFF>(av);
    b = lowBits<0xFF>(bv);
}

// 16-bit codes: (L 65535) / 100, (a + 128) 255 and (b + 128) 255 truncated.
HWY_INLINE void labCodes16u(const LabLanes& lab, hn::Vec<DI32>& L, hn::Vec<DI32>& a, hn::Vec<DI32>& b,
                            MF& decided)
{
    const VF l = hn::Div(hn::Mul(lab.L, constant(65535.0)), constant(100.0));
    const VF av = hn::Mul(hn::Add(lab.a, constant(128.0)), constant(255.0));
    const VF bv = hn::Mul(hn::Add(lab.b, constant(128.0)), constant(255.0));
    const VF bound = constant(kChroma16Bound);
    decided = hn::And(lab.decided, hn::And(truncationDecided(l, hn::Mul(l, constant(kLight16Bound))),
                                           hn::And(truncationDecided(av, bound), truncationDecided(bv, bound))));
    decided = hn::Or(decided, lab.black);
    L = lowBits<0xFFFF>(l);
    a = lowBits<0xFFFF>(av);
    b = lowBits<0xFFFF>(bv);
}

// ---- Lab to BGR ----------------------------------------------------------------------

// r, g, b' from P, Q, W as the extended kernels form them; the 8-bit kernel
// adds blue's Z term first.
template <bool ZTermFirstInBlue>
HWY_INLINE void xyzToBGR(VF P, VF Q, VF W, VF& r, VF& g, VF& b)
{
    const VF X = hn::Mul(hn::Mul(hn::Mul(constant(kWhiteX), Q), Q), Q);
    const VF Y = hn::Mul(hn::Mul(hn::Mul(constant(255.0), P), P), P);
    const VF Z = hn::Mul(W, hn::Mul(hn::Mul(constant(kWhiteZ), W), W));
    r = hn::Add(hn::Add(hn::Mul(constant(kToR[0]), X), hn::Mul(constant(kToR[1]), Y)), hn::Mul(constant(kToR[2]), Z));
    g = hn::Add(hn::Add(hn::Mul(constant(kToG[0]), X), hn::Mul(constant(kToG[1]), Y)), hn::Mul(constant(kToG[2]), Z));
    const VF xy = hn::Add(hn::Mul(constant(kToB[0]), X), hn::Mul(constant(kToB[1]), Y));
    b = ZTermFirstInBlue ? hn::Add(hn::Mul(constant(kToB[2]), Z), xy) : hn::Add(xy, hn::Mul(constant(kToB[2]), Z));
}

// A colour sum to its byte: clamped into [0.5, 255.5] (below 1 is 0, from
// 255 on is 255), truncated.
HWY_INLINE hn::Vec<DI32> colourByte(VF v, MF& decided)
{
    const VF clamped = hn::Min(hn::Max(v, constant(0.5)), constant(255.5));
    decided = hn::And(decided, truncationDecided(clamped, constant(kInverseBound)));
    return hn::DemoteTo(DI32(), clamped);
}

// ---- the rows ---------------------------------------------------------------------------

constexpr int kStep = 16;  // pixels a step; each step's refused pixels fit a 32-bit set

// The three channels of a step's 16 pixels, each in its own small array.
template <typename T>
struct Channels {
    HWY_ALIGN T c[3][kStep];
};

HWY_INLINE void loadStep(const Kel8u* src, Channels<Kel8u>& in)
{
    const hn::Full128<std::uint8_t> d;
    hn::Vec<decltype(d)> v0, v1, v2;
    hn::LoadInterleaved3(d, src, v0, v1, v2);
    hn::Store(v0, d, in.c[0]);
    hn::Store(v1, d, in.c[1]);
    hn::Store(v2, d, in.c[2]);
}

HWY_INLINE void loadStep(const Kel16u* src, Channels<Kel16u>& in)
{
    const hn::Full128<std::uint16_t> d;
    constexpr int kHalf = kStep / 2;
    hn::Vec<decltype(d)> v0, v1, v2;
    for (int h = 0; h < kStep; h += kHalf) {
        hn::LoadInterleaved3(d, src + 3 * h, v0, v1, v2);
        hn::Store(v0, d, in.c[0] + h);
        hn::Store(v1, d, in.c[1] + h);
        hn::Store(v2, d, in.c[2] + h);
    }
}

HWY_INLINE void storeStep(const Channels<Kel8u>& out, Kel8u* dst)
{
    const hn::Full128<std::uint8_t> d;
    hn::StoreInterleaved3(hn::Load(d, out.c[0]), hn::Load(d, out.c[1]), hn::Load(d, out.c[2]), d, dst);
}

HWY_INLINE void storeStep(const Channels<Kel16u>& out, Kel16u* dst)
{
    const hn::Full128<std::uint16_t> d;
    constexpr int kHalf = kStep / 2;
    for (int h = 0; h < kStep; h += kHalf)
        hn::StoreInterleaved3(hn::Load(d, out.c[0] + h), hn::Load(d, out.c[1] + h), hn::Load(d, out.c[2] + h), d,
                              dst + 3 * h);
}

template <typename T>
HWY_INLINE VF channelLanes(const Channels<T>& in, int c, int part)
{
    const hn::Rebind<T, DF> dt;
    return hn::PromoteTo(DF(), hn::PromoteTo(DI32(), hn::LoadU(dt, in.c[c] + part)));
}

template <typename T>
HWY_INLINE void storeCodes(hn::Vec<DI32> code, Channels<T>& out, int c, int part)
{
    const hn::Rebind<T, DF> dt;
    hn::StoreU(hn::DemoteTo(dt, code), dt, out.c[c] + part);
}

// The undecided lanes of a part as bits from `part` on.
HWY_INLINE std::uint32_t refusedBits(MF decided, int part)
{
    std::uint8_t bits[8] = {};
    hn::StoreMaskBits(DF(), hn::Not(decided), bits);
    return static_cast<std::uint32_t>(bits[0]) << part;
}

// Steps of 16 pixels: de-interleaved whole, worked a vector of doubles at a
// time.  A step with undecided pixels is written to a scratch step, whose
// undecided pixels the extended conversion replaces, and copied out: nothing
// of the step is stored before its source is read, so a row converted in
// place still holds the pixels the extended conversion reads.
using Codes = hn::Vec<DI32>;

template <typename Src, typename Dst, void (*kConvert)(VF, VF, VF, Codes&, Codes&, Codes&, MF&),
          void (*kExact)(const Src*, Dst*, std::uint32_t)>
HWY_INLINE int labRow(const Src* src, Dst* dst, int width, std::int64_t* refused)
{
    const int lanes = static_cast<int>(hn::Lanes(DF()));
    Channels<Src> in;
    Channels<Dst> out;
    HWY_ALIGN Dst scratch[3 * kStep];
    int x = 0;
    for (; x + kStep <= width; x += kStep) {
        loadStep(src + 3 * x, in);
        std::uint32_t undecided = 0;
        for (int part = 0; part < kStep; part += lanes) {
            Codes c0, c1, c2;
            MF decided;
            kConvert(channelLanes(in, 0, part), channelLanes(in, 1, part), channelLanes(in, 2, part), c0, c1, c2,
                     decided);
            storeCodes(c0, out, 0, part);
            storeCodes(c1, out, 1, part);
            storeCodes(c2, out, 2, part);
            undecided |= refusedBits(decided, part);
        }
        if (undecided == 0) {
            storeStep(out, dst + 3 * x);
            continue;
        }
        storeStep(out, scratch);
        kExact(src + 3 * x, scratch, undecided);
        *refused += hwy::PopCount(undecided);
        const hn::ScalableTag<std::uint8_t> d8;
        const int bytes = static_cast<int>(sizeof scratch), vector = static_cast<int>(hn::Lanes(d8));
        const Kel8u* from = reinterpret_cast<const Kel8u*>(scratch);
        Kel8u* to = reinterpret_cast<Kel8u*>(dst + 3 * x);
        int at = 0;
        for (; at + vector <= bytes; at += vector) hn::StoreU(hn::LoadU(d8, from + at), d8, to + at);
        const hn::Full128<std::uint8_t> d16;  // 48 and 96 bytes: whole 16-byte pieces
        for (; at < bytes; at += 16) hn::StoreU(hn::LoadU(d16, from + at), d16, to + at);
    }
    return x;
}

HWY_INLINE void toLab8u(VF B, VF G, VF R, Codes& L, Codes& a, Codes& b, MF& decided)
{
    labCodes8u(bgrToLab(B, G, R), L, a, b, decided);
}

HWY_INLINE void toLab8u16u(VF B, VF G, VF R, Codes& L, Codes& a, Codes& b, MF& decided)
{
    labCodes16u(bgrToLab(B, G, R), L, a, b, decided);
}

// P = ((L 100) / 255 + 16) / 116, Q = (a - 128) / 500 + P, W = P - (b - 128) / 200,
// the differences on integers; R = trunc(r + 0.5).
HWY_INLINE void toBGR8u(VF L, VF a, VF b, Codes& B, Codes& G, Codes& R, MF& decided)
{
    const VF P = hn::Div(hn::Add(hn::Div(hn::Mul(L, constant(100.0)), constant(255.0)), constant(16.0)),
                         constant(116.0));
    const VF Q = hn::Add(hn::Div(hn::Sub(a, constant(128.0)), constant(500.0)), P);
    const VF W = hn::Sub(P, hn::Div(hn::Sub(b, constant(128.0)), constant(200.0)));
    VF r, g, bl;
    xyzToBGR<true>(P, Q, W, r, g, bl);
    const VF half = constant(0.5);
    decided = hn::Eq(half, half);
    B = colourByte(hn::Add(bl, half), decided);
    G = colourByte(hn::Add(g, half), decided);
    R = colourByte(hn::Add(r, half), decided);
}

// P = ((L 100) / 65535 + 16) / 116, Q = ((a / 255) - 128) / 500 + P,
// W = P - ((b / 255) - 128) / 200; R = trunc(r).
HWY_INLINE void toBGR16u8u(VF L, VF a, VF b, Codes& B, Codes& G, Codes& R, MF& decided)
{
    const VF k255 = constant(255.0), k128 = constant(128.0);
    const VF P = hn::Div(hn::Add(hn::Div(hn::Mul(L, constant(100.0)), constant(65535.0)), constant(16.0)),
                         constant(116.0));
    const VF Q = hn::Add(hn::Div(hn::Sub(hn::Div(a, k255), k128), constant(500.0)), P);
    const VF W = hn::Sub(P, hn::Div(hn::Sub(hn::Div(b, k255), k128), constant(200.0)));
    VF r, g, bl;
    xyzToBGR<false>(P, Q, W, r, g, bl);
    decided = hn::Eq(P, P);
    B = colourByte(bl, decided);
    G = colourByte(g, decided);
    R = colourByte(r, decided);
}

int bgrToLabRow8u(const Kel8u* src, Kel8u* dst, int width, std::int64_t* refused)
{
    return labRow<Kel8u, Kel8u, toLab8u, bgrToLabPixels8u>(src, dst, width, refused);
}

int bgrToLabRow8u16u(const Kel8u* src, Kel16u* dst, int width, std::int64_t* refused)
{
    return labRow<Kel8u, Kel16u, toLab8u16u, bgrToLabPixels8u16u>(src, dst, width, refused);
}

int labToBGRRow8u(const Kel8u* src, Kel8u* dst, int width, std::int64_t* refused)
{
    return labRow<Kel8u, Kel8u, toBGR8u, labToBGRPixels8u>(src, dst, width, refused);
}

int labToBGRRow16u8u(const Kel16u* src, Kel8u* dst, int width, std::int64_t* refused)
{
    return labRow<Kel16u, Kel8u, toBGR16u8u, labToBGRPixels16u8u>(src, dst, width, refused);
}

// Whole vectors of thirdPower over an array (count a multiple of 8).
void thirdPowers(const double* y, double* out, int count)
{
    const DF df;
    const int lanes = static_cast<int>(hn::Lanes(df));
    for (int i = 0; i + lanes <= count; i += lanes) hn::StoreU(thirdPower(hn::LoadU(df, y + i)), df, out + i);
}

} // namespace HWY_NAMESPACE
} // namespace kel::lab
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::lab {

HWY_EXPORT(bgrToLabRow8u);
HWY_EXPORT(bgrToLabRow8u16u);
HWY_EXPORT(labToBGRRow8u);
HWY_EXPORT(labToBGRRow16u8u);
HWY_EXPORT(thirdPowers);

LabRow<Kel8u, Kel8u> chooseBGRToLabRow8u()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(bgrToLabRow8u);
}

LabRow<Kel8u, Kel16u> chooseBGRToLabRow8u16u()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(bgrToLabRow8u16u);
}

LabRow<Kel8u, Kel8u> chooseLabToBGRRow8u()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(labToBGRRow8u);
}

LabRow<Kel16u, Kel8u> chooseLabToBGRRow16u8u()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(labToBGRRow16u8u);
}

void thirdPowerForTest(const double* y, double* out, int count)
{
    detectSimdTargets();
    HWY_DYNAMIC_DISPATCH(thirdPowers)(y, out, count);
}

} // namespace kel::lab
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::lab {

LabRow<Kel8u, Kel8u> chooseBGRToLabRow8u()
{
    return nullptr;
}
LabRow<Kel8u, Kel16u> chooseBGRToLabRow8u16u()
{
    return nullptr;
}
LabRow<Kel8u, Kel8u> chooseLabToBGRRow8u()
{
    return nullptr;
}
LabRow<Kel16u, Kel8u> chooseLabToBGRRow16u8u()
{
    return nullptr;
}
void thirdPowerForTest(const double*, double*, int) {}

} // namespace kel::lab

#endif // KELCC_SIMD
