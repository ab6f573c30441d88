// The whole-vector full-resolution RGB <-> YUV kernels against the scalar
// kernels, byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "support/targets.h"
#include "yuv01simd.h"
#include "yuvconv.h"

namespace {

using kel::YUVRow;

// One image in a buffer of its own: `lead` guard bytes, rows `step` apart,
// trailing guard bytes; every byte random at first.  A planar image keeps
// its planes one after another, `rows` rows each.
struct Buffer {
    Buffer(int rows, int planes, int step, int lead, std::mt19937& gen)
        : rows(rows), step(step), lead(lead),
          bytes(static_cast<std::size_t>(lead) + static_cast<std::size_t>(step) * rows * planes + 67)
    {
        for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    }
    Kel8u* row(int plane, int y) { return bytes.data() + lead + static_cast<std::ptrdiff_t>(step) * (plane * rows + y); }
    int rows, step, lead;
    std::vector<std::uint8_t> bytes;
};

constexpr bool isPlanar(int pitch)
{
    return pitch == 0;
}

// Row y of a buffer as a kernel or public function takes it: a pointer, or
// the address of three plane pointers (the planes in an order of their own).
template <class Arg>
struct RowArgument {
    static constexpr bool kPlanar = std::is_pointer_v<std::remove_pointer_t<Arg>>;
    using Element = std::conditional_t<kPlanar, std::remove_pointer_t<std::remove_const_t<std::remove_pointer_t<Arg>>>,
                                       std::remove_pointer_t<Arg>>;
    Element* rows[3];
    RowArgument(Buffer& b, int y)
        : rows{b.row(0, y), kPlanar ? b.row(2, y) : nullptr, kPlanar ? b.row(1, y) : nullptr}
    {
    }
    Arg get() const
    {
        if constexpr (kPlanar) return rows;
        else return rows[0];
    }
};

template <class Src, class Dst>
struct Member {
    const char* name;
    KelResult (*call)(Src, int, Dst, int, KelImageSize);
    YUVRow<Src, Dst> (*choose)();
    YUVRow<Src, Dst> scalar;
    int srcPitch, dstPitch;  // bytes a pixel; 0 for planes
};

template <class Src, class Dst>
void rowMatchesScalar(const Member<Src, Dst>& m)
{
    const int srcPlanes = isPlanar(m.srcPitch) ? 3 : 1, dstPlanes = isPlanar(m.dstPitch) ? 3 : 1;
    const int srcPitch = isPlanar(m.srcPitch) ? 1 : m.srcPitch, dstPitch = isPlanar(m.dstPitch) ? 1 : m.dstPitch;
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                Buffer src(1, srcPlanes, srcPitch * width + 3, lead, gen);
                Buffer fast(1, dstPlanes, dstPitch * width + 1, 3 - lead, gen);
                Buffer scalar = fast;
                const RowArgument<Src> srcRow(src, 0);
                const RowArgument<Dst> fastRow(fast, 0), scalarRow(scalar, 0);
                m.choose()(srcRow.get(), fastRow.get(), width);
                m.scalar(srcRow.get(), scalarRow.get(), width);
                ASSERT_TRUE(fast.bytes == scalar.bytes)
                    << m.name << " on " << target << ", width " << width << ", lead " << lead;
            }
        }
    });
}

template <class Src, class Dst>
void publicMatchesScalar(const Member<Src, Dst>& m)
{
    const int srcPlanes = isPlanar(m.srcPitch) ? 3 : 1, dstPlanes = isPlanar(m.dstPitch) ? 3 : 1;
    const int srcPitch = isPlanar(m.srcPitch) ? 1 : m.srcPitch, dstPitch = isPlanar(m.dstPitch) ? 1 : m.dstPitch;
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                const int srcBytes = srcPitch * width, dstBytes = dstPitch * width;
                Buffer src(height, srcPlanes, srcBytes + 5 + (srcBytes & 1), 1, gen);
                Buffer dst(height, dstPlanes, dstBytes + 9 + (dstBytes & 1), 3, gen);
                Buffer expected = dst;
                for (int y = 0; y < height; ++y) {
                    const RowArgument<Src> srcRow(src, y);
                    const RowArgument<Dst> dstRow(expected, y);
                    m.scalar(srcRow.get(), dstRow.get(), width);
                }
                const RowArgument<Src> srcRow(src, 0);
                const RowArgument<Dst> dstRow(dst, 0);
                ASSERT_EQ(kelOk, m.call(srcRow.get(), src.step, dstRow.get(), dst.step, {width, height}));
                ASSERT_TRUE(dst.bytes == expected.bytes)
                    << m.name << " on " << target << ", " << width << " x " << height;
            }
        }
    });
}

template <class Src, class Dst>
void chosenOncePerTarget(const Member<Src, Dst>& m)
{
    const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(m.choose);
    EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
}

using PixelMember = Member<const Kel8u*, Kel8u*>;
const PixelMember kPixelMembers[] = {
    {"RGBToYUV_C3R", keliRGBToYUV_8u_C3R, kel::chooseRGBToYUV_8u_C3R, innerRGBToYUV_8u_C3R, 3, 3},
    {"RGBToYUV_AC4R", keliRGBToYUV_8u_AC4R, kel::chooseRGBToYUV_8u_AC4R, innerRGBToYUV_8u_AC4R, 4, 4},
    {"YUVToRGB_C3R", keliYUVToRGB_8u_C3R, kel::chooseYUVToRGB_8u_C3R, innerYUVToRGB_8u_C3R, 3, 3},
    {"YUVToRGB_AC4R", keliYUVToRGB_8u_AC4R, kel::chooseYUVToRGB_8u_AC4R, innerYUVToRGB_8u_AC4R, 4, 4},
};
using PlaneMember = Member<const Kel8u* const*, Kel8u* const*>;
const PlaneMember kPlaneMembers[] = {
    {"RGBToYUV_P3R", keliRGBToYUV_8u_P3R, kel::chooseRGBToYUV_8u_P3R, innerRGBToYUV_8u_P3R, 0, 0},
    {"YUVToRGB_P3R", keliYUVToRGB_8u_P3R, kel::chooseYUVToRGB_8u_P3R, innerYUVToRGB_8u_P3R, 0, 0},
};
const Member<const Kel8u*, Kel8u* const*> kToPlanes{"RGBToYUV_C3P3R", keliRGBToYUV_8u_C3P3R,
                                                    kel::chooseRGBToYUV_8u_C3P3R, innerRGBToYUV_8u_C3P3R, 3, 0};
const Member<const Kel8u* const*, Kel8u*> kFromPlanes{"YUVToRGB_P3C3R", keliYUVToRGB_8u_P3C3R,
                                                      kel::chooseYUVToRGB_8u_P3C3R, innerYUVToRGB_8u_P3C3R, 0, 3};

template <class Check>
void forEveryMember(const Check& check)
{
    for (const PixelMember& m : kPixelMembers) check(m);
    for (const PlaneMember& m : kPlaneMembers) check(m);
    check(kToPlanes);
    check(kFromPlanes);
}

TEST(SimdYUV, EveryTargetHasItsOwnKernel)
{
    forEveryMember([](const auto& m) { chosenOncePerTarget(m); });
}

// The row kernel alone: the same bytes as the scalar kernel, and nothing
// written past the row, at every width and start offset.
TEST(SimdYUV, RowMatchesScalarKernelAtEveryWidth)
{
    forEveryMember([](const auto& m) { rowMatchesScalar(m); });
}

// The public functions at heights 1 to 9 with odd strides: every byte of the
// destination buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYUV, PublicFunctionsMatchScalarKernelAtEverySize)
{
    forEveryMember([](const auto& m) { publicMatchesScalar(m); });
}

// A destination that is its source converts in place; one that overlaps it a
// few bytes off takes the scalar kernel's order, whatever that gives.
TEST(SimdYUV, OverlappingRowsGiveTheScalarKernelsBytes)
{
    for (const PixelMember& m : kPixelMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : {1, 16, 63, 64, 65, 200}) {
                for (int shift : {0, -5, -1, 1, 3, 64, 191}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 256 + shift + 32));
                    Buffer fast(1, 1, m.srcPitch * width + 400, 200, gen);
                    Buffer scalar = fast;
                    m.choose()(fast.row(0, 0), fast.row(0, 0) + shift, width);
                    m.scalar(scalar.row(0, 0), scalar.row(0, 0) + shift, width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", shift " << shift;
                }
            }
        });
    }
}

// Every (R, G, B) and every (Y, U, V) as one 4096 x 4096 image each, held to
// the one-pixel formulas.
std::vector<Kel8u> everyTriple()
{
    std::vector<Kel8u> pixels(3u << 24);
    for (std::uint32_t i = 0; i < (1u << 24); ++i) {
        pixels[3 * i + 0] = static_cast<Kel8u>(i >> 16);
        pixels[3 * i + 1] = static_cast<Kel8u>(i >> 8);
        pixels[3 * i + 2] = static_cast<Kel8u>(i);
    }
    return pixels;
}

template <typename Formula>
void expectEveryTriple(KelResult (*call)(const Kel8u*, int, Kel8u*, int, KelImageSize), const char* name)
{
    constexpr int kSide = 4096;
    const std::vector<Kel8u> src = everyTriple();
    std::vector<Kel8u> expected(src.size());
    for (std::size_t i = 0; i < src.size(); i += 3) Formula::pixel(src.data() + i, expected.data() + i);
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> dst(src.size());
        ASSERT_EQ(kelOk, call(src.data(), 3 * kSide, dst.data(), 3 * kSide, {kSide, kSide}));
        if (dst == expected) return;
        for (std::size_t i = 0; i < dst.size(); ++i) {
            ASSERT_EQ(expected[i], dst[i]) << name << " on " << target << ": " << int(src[i - i % 3]) << ", "
                                           << int(src[i - i % 3 + 1]) << ", " << int(src[i - i % 3 + 2])
                                           << ", channel " << i % 3;
        }
    });
}

struct ForwardFormula {
    static void pixel(const Kel8u* rgb, Kel8u* yuv)
    {
        const std::int32_t sum = kel::yuv::lumaSum(rgb[0], rgb[1], rgb[2]);
        yuv[0] = static_cast<Kel8u>(sum >> 16);
        yuv[1] = kel::yuv::chromaU<0>(rgb[2], sum);
        yuv[2] = kel::yuv::chromaV<0>(rgb[0], sum);
    }
};

struct InverseFormula {
    static void pixel(const Kel8u* yuv, Kel8u* rgb)
    {
        kel::yuv::toRGB<kel::yuv::inverse1>(yuv[0], yuv[1], yuv[2], rgb[0], rgb[1], rgb[2]);
    }
};

TEST(SimdYUV, EveryRGBMatchesTheFormula)
{
    expectEveryTriple<ForwardFormula>(keliRGBToYUV_8u_C3R, "RGBToYUV");
}

TEST(SimdYUV, EveryYUVOfSet1MatchesTheFormula)
{
    expectEveryTriple<InverseFormula>(keliYUVToRGB_8u_C3R, "YUVToRGB");
}

} // namespace
