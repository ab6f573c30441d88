// Repacking among 4:2:2, 4:2:0, 4:1:1 and 16:2:0: every member against the
// sample rules, effective sizes (what stays unwritten), argument tests, and
// the concrete cases: 13x9 regions, stacking round trips, 16:2:0 cells.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"

using namespace kt;

namespace {

enum class Form { P3, P3CrCb, P2, C2YCbCr, C2CbYCr, C2YCrCb };
enum class Scheme { S422, S420, S411, S1620 };
enum class Rule { Same, RowsDoubled, OddRowsDropped, OddColumnsDropped, ColumnsDoubled, ColumnsStacked, RowsUnstacked, None };

bool pixelOrder(Form f) { return f == Form::C2YCbCr || f == Form::C2CbYCr || f == Form::C2YCrCb; }

// Chroma plane size for a luma size, rounded up so that a rounded-down call
// leaves samples it must not touch.
int chromaColumns(Scheme s, int w) { return s == Scheme::S411 || s == Scheme::S1620 ? (w + 3) / 4 : (w + 1) / 2; }
int chromaRows(Scheme s, int h) { return s == Scheme::S420 ? (h + 1) / 2 : s == Scheme::S1620 ? (h + 3) / 4 : h; }

// One luma-chroma image in any of the layouts, in guarded buffers.
class YccImage {
public:
    YccImage(Form form, Scheme scheme, int width, int height, Placement placement = Placement::Guarded)
        : form_(form)
    {
        const int cw = chromaColumns(scheme, width), ch = chromaRows(scheme, height);
        if (pixelOrder(form)) {
            add(static_cast<std::size_t>(4 * ((width + 1) / 2)), height, placement);
        } else {
            add(width, height, placement);
            if (form == Form::P2) {
                add(2 * cw, ch, placement);
            } else {
                add(cw, ch, placement);
                add(cw, ch, placement);
            }
        }
    }
    void fill(std::uint32_t seed) { set_.fill(seed); }
    std::vector<std::uint8_t> rows() const { return set_.rows(); }
    bool intact() const { return set_.intact(); }
    Kel8u& luma(int x, int y)
    {
        if (!pixelOrder(form_)) return set_.row(0, y)[x];
        return set_.row(0, y)[2 * x + (form_ == Form::C2CbYCr ? 1 : 0)];
    }
    // Component c (0 Cb, 1 Cr), sample k of chroma row j.
    Kel8u& chroma(int c, int j, int k)
    {
        switch (form_) {
        case Form::P3: return set_.row(1 + c, j)[k];
        case Form::P3CrCb: return set_.row(2 - c, j)[k];
        case Form::P2: return set_.row(1, j)[2 * k + c];
        case Form::C2YCbCr: return set_.row(0, j)[4 * k + (c == 0 ? 1 : 3)];
        case Form::C2CbYCr: return set_.row(0, j)[4 * k + (c == 0 ? 0 : 2)];
        case Form::C2YCrCb: return set_.row(0, j)[4 * k + (c == 0 ? 3 : 1)];
        }
        return set_.row(0, 0)[0];
    }

    // Call arguments.
    Kel8u* const* planes() { return set_.out(); }
    const Kel8u* const* constPlanes() { return set_.in(); }
    const int* steps() const { return set_.steps.data(); }
    Kel8u* ptr() { return set_.pointers[0]; }
    int step() const { return set_.steps[0]; }
    Kel8u* cbcr() { return set_.pointers[1]; }
    int cbcrStep() const { return set_.steps[1]; }
    std::array<Kel8u*, 4>& planeArray() { return set_.pointers; }

private:
    void add(std::size_t rowBytes, int rows, Placement placement) { set_.add(rowBytes, rows, placement, 7); }
    Form form_;
    GuardedSet set_;
};

struct Sizing {
    int widthMask, heightMask, minWidth, minHeight;  // minHeight 0: height untested
};
constexpr Sizing kEvenBoth{~1, ~1, 2, 2}, kQuadEven{~3, ~1, 4, 2}, kEvenWidth{~1, ~0, 2, 0},
    kQuadWidth{~3, ~0, 4, 0}, kEvenWidthTested{~1, ~0, 2, 1};

using Call = std::function<KelResult(YccImage& src, YccImage& dst, KelImageSize)>;

struct Member {
    const char* name;
    Form src, dst;
    Scheme srcScheme, dstScheme;
    Rule rule;
    Sizing sizing;
    Call call;
};

#define KT_P3P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.constPlanes(), s.steps(), d.planes(), d.steps(), z); }
#define KT_P3P2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.constPlanes(), s.steps(), d.ptr(), d.step(), d.cbcr(), d.cbcrStep(), z); }
#define KT_P2P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), s.cbcr(), s.cbcrStep(), d.planes(), d.steps(), z); }
#define KT_C2P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.planes(), d.steps(), z); }
#define KT_P3C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.constPlanes(), s.steps(), d.ptr(), d.step(), z); }
#define KT_P2C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), s.cbcr(), s.cbcrStep(), d.ptr(), d.step(), z); }
#define KT_C2P2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.ptr(), d.step(), d.cbcr(), d.cbcrStep(), z); }
#define KT_C2C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.ptr(), d.step(), z); }

using F = Form;
using S = Scheme;
using R = Rule;

const Member kMembers[] = {
    {"YCbCr420ToYCbCr422_8u_P3R", F::P3, F::P3, S::S420, S::S422, R::RowsDoubled, kEvenBoth, KT_P3P3(YCbCr420ToYCbCr422_8u_P3R)},
    {"YCrCb420ToYCbCr422_8u_P3R", F::P3CrCb, F::P3, S::S420, S::S422, R::RowsDoubled, kEvenBoth, KT_P3P3(YCrCb420ToYCbCr422_8u_P3R)},
    {"YCbCr420ToYCbCr422_8u_P2P3R", F::P2, F::P3, S::S420, S::S422, R::RowsDoubled, kEvenBoth, KT_P2P3(YCbCr420ToYCbCr422_8u_P2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3R", F::P3, F::P3, S::S422, S::S420, R::OddRowsDropped, kEvenBoth, KT_P3P3(YCbCr422ToYCbCr420_8u_P3R)},
    {"YCbCr422ToYCbCr420_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S420, R::OddRowsDropped, kEvenBoth, KT_C2P3(YCbCr422ToYCbCr420_8u_C2P3R)},
    {"CbYCr422ToYCbCr420_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S420, R::OddRowsDropped, kEvenBoth, KT_C2P3(CbYCr422ToYCbCr420_8u_C2P3R)},
    {"YCrCb422ToYCbCr420_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S420, R::OddRowsDropped, kEvenBoth, KT_C2P3(YCrCb422ToYCbCr420_8u_C2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3P2R", F::P3, F::P2, S::S422, S::S420, R::OddRowsDropped, kEvenBoth, KT_P3P2(YCbCr422ToYCbCr420_8u_P3P2R)},
    {"YCbCr422_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S422, R::Same, kEvenWidthTested, KT_C2P3(YCbCr422_8u_C2P3R)},
    {"YCrCb422ToYCbCr422_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S422, R::Same, kEvenWidth, KT_C2P3(YCrCb422ToYCbCr422_8u_C2P3R)},
    {"CbYCr422ToYCbCr422_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S422, R::Same, kEvenWidth, KT_C2P3(CbYCr422ToYCbCr422_8u_C2P3R)},
    {"YCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, S::S422, S::S422, R::Same, kEvenWidthTested, KT_P3C2(YCbCr422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, S::S422, S::S422, R::Same, kEvenWidth, KT_P3C2(YCbCr422ToYCrCb422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_C2R", F::C2YCbCr, F::C2YCrCb, S::S422, S::S422, R::Same, kEvenWidth, KT_C2C2(YCbCr422ToYCrCb422_8u_C2R)},
    {"YCbCr420_8u_P3P2R", F::P3, F::P2, S::S420, S::S420, R::Same, kEvenBoth, KT_P3P2(YCbCr420_8u_P3P2R)},
    {"YCbCr420_8u_P2P3R", F::P2, F::P3, S::S420, S::S420, R::Same, kEvenBoth, KT_P2P3(YCbCr420_8u_P2P3R)},
    {"YCbCr411_8u_P3P2R", F::P3, F::P2, S::S411, S::S411, R::Same, kQuadWidth, KT_P3P2(YCbCr411_8u_P3P2R)},
    {"YCbCr411_8u_P2P3R", F::P2, F::P3, S::S411, S::S411, R::Same, kQuadWidth, KT_P2P3(YCbCr411_8u_P2P3R)},
    {"YCbCr422ToYCbCr411_8u_P3R", F::P3, F::P3, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_P3P3(YCbCr422ToYCbCr411_8u_P3R)},
    {"YCbCr422ToYCbCr411_8u_P3P2R", F::P3, F::P2, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_P3P2(YCbCr422ToYCbCr411_8u_P3P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P2R", F::C2YCbCr, F::P2, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_C2P2(YCbCr422ToYCbCr411_8u_C2P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_C2P3(YCbCr422ToYCbCr411_8u_C2P3R)},
    {"CbYCr422ToYCbCr411_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_C2P3(CbYCr422ToYCbCr411_8u_C2P3R)},
    {"YCrCb422ToYCbCr411_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S411, R::OddColumnsDropped, kQuadWidth, KT_C2P3(YCrCb422ToYCbCr411_8u_C2P3R)},
    {"YCbCr411ToYCbCr422_8u_P3R", F::P3, F::P3, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P3P3(YCbCr411ToYCbCr422_8u_P3R)},
    {"YCbCr411ToYCrCb422_8u_P3R", F::P3, F::P3CrCb, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P3P3(YCbCr411ToYCrCb422_8u_P3R)},
    {"YCbCr411ToYCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P3C2(YCbCr411ToYCbCr422_8u_P3C2R)},
    {"YCbCr411ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P3C2(YCbCr411ToYCrCb422_8u_P3C2R)},
    {"YCbCr411ToYCbCr422_8u_P2C2R", F::P2, F::C2YCbCr, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P2C2(YCbCr411ToYCbCr422_8u_P2C2R)},
    {"YCbCr411ToYCbCr422_8u_P2P3R", F::P2, F::P3, S::S411, S::S422, R::ColumnsDoubled, kQuadWidth, KT_P2P3(YCbCr411ToYCbCr422_8u_P2P3R)},
    {"YCbCr420ToYCbCr411_8u_P3P2R", F::P3, F::P2, S::S420, S::S411, R::ColumnsStacked, kQuadEven, KT_P3P2(YCbCr420ToYCbCr411_8u_P3P2R)},
    {"YCrCb420ToYCbCr411_8u_P3P2R", F::P3CrCb, F::P2, S::S420, S::S411, R::ColumnsStacked, kQuadEven, KT_P3P2(YCrCb420ToYCbCr411_8u_P3P2R)},
    {"YCbCr420ToYCbCr411_8u_P2P3R", F::P2, F::P3, S::S420, S::S411, R::ColumnsStacked, kQuadEven, KT_P2P3(YCbCr420ToYCbCr411_8u_P2P3R)},
    {"YCbCr411ToYCbCr420_8u_P3R", F::P3, F::P3, S::S411, S::S420, R::RowsUnstacked, kQuadEven, KT_P3P3(YCbCr411ToYCbCr420_8u_P3R)},
    {"YCbCr411ToYCbCr420_8u_P3P2R", F::P3, F::P2, S::S411, S::S420, R::RowsUnstacked, kQuadEven, KT_P3P2(YCbCr411ToYCbCr420_8u_P3P2R)},
    {"YCbCr411ToYCbCr420_8u_P2P3R", F::P2, F::P3, S::S411, S::S420, R::RowsUnstacked, kQuadEven, KT_P2P3(YCbCr411ToYCbCr420_8u_P2P3R)},
    {"YCbCr411ToYCrCb420_8u_P2P3R", F::P2, F::P3CrCb, S::S411, S::S420, R::RowsUnstacked, kQuadEven, KT_P2P3(YCbCr411ToYCrCb420_8u_P2P3R)},
};

int dstChromaColumns(Scheme s, int w) { return s == Scheme::S411 ? w / 4 : w / 2; }
int dstChromaRows(Scheme s, int h) { return s == Scheme::S420 ? h / 2 : h; }

// Writes into `expected` what the member writes, straight from the rules.
void applyRules(const Member& m, YccImage& src, YccImage& expected, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) expected.luma(x, y) = src.luma(x, y);
    for (int j = 0; j < dstChromaRows(m.dstScheme, height); ++j)
        for (int k = 0; k < dstChromaColumns(m.dstScheme, width); ++k)
            for (int c = 0; c < 2; ++c) {
                int row = j, col = k;
                switch (m.rule) {
                case Rule::RowsDoubled: row = j / 2; break;
                case Rule::OddRowsDropped: row = 2 * j; break;
                case Rule::OddColumnsDropped: col = 2 * k; break;
                case Rule::ColumnsDoubled: col = k / 2; break;
                case Rule::ColumnsStacked: row = j / 2; col = 2 * k + j % 2; break;
                case Rule::RowsUnstacked: row = 2 * j + k % 2; col = k / 2; break;
                default: break;
                }
                expected.chroma(c, j, k) = src.chroma(c, row, col);
            }
}

class Repack : public ::testing::TestWithParam<Member> {
protected:
    void expectRules(int width, int height, Placement placement = Placement::Guarded)
    {
        const Member& m = GetParam();
        YccImage src(m.src, m.srcScheme, width, height, placement), dst(m.dst, m.dstScheme, width, height, placement),
            expected(m.dst, m.dstScheme, width, height);
        src.fill(static_cast<std::uint32_t>(width * 17 + height));
        dst.fill(99);
        expected.fill(99);
        const auto srcBefore = src.rows();
        ASSERT_EQ(kelOk, m.call(src, dst, {width, height})) << width << "x" << height;
        applyRules(m, src, expected, width & m.sizing.widthMask, height & m.sizing.heightMask);
        EXPECT_EQ(expected.rows(), dst.rows()) << width << "x" << height;
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
    }
};

TEST_P(Repack, FollowsItsRuleAndRoundsTheSizeDownSilently)
{
    for (int width : {4, 5, 6, 7, 8, 13})
        for (int height : {2, 3, 4, 9}) expectRules(width, height);
}

TEST_P(Repack, ReadsAndWritesNothingPastTheRegion)
{
    expectRules(8, 4, Placement::Fenced);
    expectRules(13, 9, Placement::Fenced);
}

TEST_P(Repack, NullPointersFirstThenTheSizeOfItsGroup)
{
    const Member& m = GetParam();
    YccImage src(m.src, m.srcScheme, 8, 4), dst(m.dst, m.dstScheme, 8, 4);
    dst.fill(3);
    const auto before = dst.rows();
    // Any null plane, with a size that would fail too.
    for (int p = 0; p < (pixelOrder(m.src) ? 1 : m.src == Form::P2 ? 2 : 3); ++p) {
        Kel8u* saved = src.planeArray()[p];
        src.planeArray()[p] = nullptr;
        EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {0, 0})) << "source plane " << p;
        src.planeArray()[p] = saved;
    }
    for (int p = 0; p < (pixelOrder(m.dst) ? 1 : m.dst == Form::P2 ? 2 : 3); ++p) {
        Kel8u* saved = dst.planeArray()[p];
        dst.planeArray()[p] = nullptr;
        EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {0, 0})) << "destination plane " << p;
        dst.planeArray()[p] = saved;
    }
    EXPECT_EQ(kelErrSize, m.call(src, dst, {m.sizing.minWidth - 1, 4}));
    if (m.sizing.minHeight > 0) {
        EXPECT_EQ(kelErrSize, m.call(src, dst, {8, m.sizing.minHeight - 1}));
    } else {
        EXPECT_EQ(kelOk, m.call(src, dst, {8, 0}));  // the height is not tested: nothing to do
        EXPECT_EQ(kelOk, m.call(src, dst, {8, -5}));
    }
    EXPECT_EQ(before, dst.rows());
    // The smallest accepted size works.
    EXPECT_EQ(kelOk, m.call(src, dst, {m.sizing.minWidth, m.sizing.minHeight > 0 ? m.sizing.minHeight : 1}));
    EXPECT_TRUE(dst.intact());
}

INSTANTIATE_TEST_SUITE_P(Repacking, Repack, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- concrete cases ------------------------------------------------------------------------

TEST(RepackCases, RowsDoubledAt13x9LeavesTheLastColumnAndRow)
{
    YccImage src(Form::P3, Scheme::S420, 13, 9), dst(Form::P3, Scheme::S422, 13, 9);
    src.fill(1);
    dst.fill(2);
    const Kel8u lastColumn = dst.luma(12, 0), lastRow = dst.luma(0, 8), lastChroma = dst.chroma(0, 8, 0);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr422_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {13, 9}));
    EXPECT_EQ(lastColumn, dst.luma(12, 0));
    EXPECT_EQ(lastRow, dst.luma(0, 8));
    EXPECT_EQ(lastChroma, dst.chroma(0, 8, 0));
    EXPECT_EQ(src.luma(11, 7), dst.luma(11, 7));
    EXPECT_EQ(src.chroma(1, 3, 5), dst.chroma(1, 7, 5));  // row 7 repeats source row 3
}

TEST(RepackCases, SwappingChromaInPixelOrderIsItsOwnInverse)
{
    GuardedImage image(4 * 5, 3), swapped(4 * 5, 3), back(4 * 5, 3);
    image.fillRandom(8);
    ASSERT_EQ(kelOk, keliYCbCr422ToYCrCb422_8u_C2R(image.data(), image.step(), swapped.data(), swapped.step(), {10, 3}));
    EXPECT_EQ(image.row(1)[3], swapped.row(1)[1]);
    EXPECT_EQ(image.row(1)[1], swapped.row(1)[3]);
    ASSERT_EQ(kelOk, keliYCbCr422ToYCrCb422_8u_C2R(swapped.data(), swapped.step(), back.data(), back.step(), {10, 3}));
    EXPECT_EQ(image.rows(), back.rows());
}

TEST(RepackCases, StackingThenUnstackingRestoresChroma)
{
    const int width = 12, height = 6;
    YccImage p2(Form::P2, Scheme::S420, width, height), p3(Form::P3, Scheme::S411, width, height),
        back(Form::P2, Scheme::S420, width, height);
    p2.fill(4);
    back.fill(5);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr411_8u_P2P3R(p2.ptr(), p2.step(), p2.cbcr(), p2.cbcrStep(), p3.planes(),
                                                     p3.steps(), {width, height}));
    ASSERT_EQ(kelOk, keliYCbCr411ToYCbCr420_8u_P3P2R(p3.constPlanes(), p3.steps(), back.ptr(), back.step(),
                                                     back.cbcr(), back.cbcrStep(), {width, height}));
    EXPECT_EQ(p2.rows(), back.rows());
}

// ---- resampling ------------------------------------------------------------------------------

using Resample = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u* const[3], const int[3], KelImageSize);

struct ResampleCase {
    Scheme from, to;
    Resample call;
};

TEST(Resampling, ExactSizesAreRequired)
{
    const ResampleCase cases[] = {{Scheme::S420, Scheme::S411, keliYCbCr420To411_8u_P3R},
                                  {Scheme::S411, Scheme::S420, keliYCbCr411To420_8u_P3R},
                                  {Scheme::S420, Scheme::S1620, keliYCbCr420To1620_8u_P3R},
                                  {Scheme::S1620, Scheme::S420, keliYCbCr1620To420_8u_P3R}};
    for (const auto& c : cases) {
        YccImage src(Form::P3, c.from, 16, 16), dst(Form::P3, c.to, 16, 16);
        dst.fill(1);
        const auto before = dst.rows();
        const bool evenHeightSuffices = c.call == keliYCbCr420To411_8u_P3R;
        EXPECT_EQ(kelErrSize, c.call(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {6, 8}));
        EXPECT_EQ(kelErrSize, c.call(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 7}));
        EXPECT_EQ(kelErrSize, c.call(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {0, 8}));
        EXPECT_EQ(evenHeightSuffices ? kelOk : kelErrSize,
                  c.call(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 2}));
        if (!evenHeightSuffices) EXPECT_EQ(before, dst.rows());
        EXPECT_EQ(kelErrNullPointer, c.call(src.constPlanes(), src.steps(), nullptr, dst.steps(), {0, 0}));
        src.planeArray()[2] = nullptr;
        EXPECT_EQ(kelErrNullPointer, c.call(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {6, 7}));
    }
    // The rounding member at the same width works on width 4.
    YccImage p2(Form::P2, Scheme::S420, 6, 2), p3(Form::P3, Scheme::S411, 6, 2);
    EXPECT_EQ(kelOk, keliYCbCr420ToYCbCr411_8u_P2P3R(p2.ptr(), p2.step(), p2.cbcr(), p2.cbcrStep(), p3.planes(),
                                                     p3.steps(), {6, 2}));
}

TEST(Resampling, FourTwoZeroToFourOneOneAveragesOddRowsAndRepeatsTheLast)
{
    YccImage src(Form::P3, Scheme::S420, 8, 4), dst(Form::P3, Scheme::S411, 8, 4);
    src.fill(2);
    ASSERT_EQ(kelOk, keliYCbCr420To411_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 4}));
    for (int c = 0; c < 2; ++c)
        for (int k = 0; k < 2; ++k) {
            EXPECT_EQ(src.chroma(c, 0, 2 * k), dst.chroma(c, 0, k));
            EXPECT_EQ((src.chroma(c, 0, 2 * k) + src.chroma(c, 1, 2 * k)) >> 1, dst.chroma(c, 1, k));
            EXPECT_EQ(src.chroma(c, 1, 2 * k), dst.chroma(c, 2, k));
            EXPECT_EQ(src.chroma(c, 1, 2 * k), dst.chroma(c, 3, k));
        }
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_EQ(src.luma(x, y), dst.luma(x, y));
}

TEST(Resampling, FourOneOneToFourTwoZeroReadsEvenRowsAndAveragesColumns)
{
    YccImage src(Form::P3, Scheme::S411, 8, 4), dst(Form::P3, Scheme::S420, 8, 4);
    src.fill(3);
    ASSERT_EQ(kelOk, keliYCbCr411To420_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 4}));
    for (int c = 0; c < 2; ++c)
        for (int j = 0; j < 2; ++j) {
            EXPECT_EQ(src.chroma(c, 2 * j, 0), dst.chroma(c, j, 0));
            EXPECT_EQ((src.chroma(c, 2 * j, 0) + src.chroma(c, 2 * j, 1)) >> 1, dst.chroma(c, j, 1));
            EXPECT_EQ(src.chroma(c, 2 * j, 1), dst.chroma(c, j, 2));
            EXPECT_EQ(src.chroma(c, 2 * j, 1), dst.chroma(c, j, 3));
        }
}

TEST(Resampling, SixteenTwoZeroCellsRoundCbAndTruncateCr)
{
    YccImage src(Form::P3, Scheme::S1620, 8, 8), dst(Form::P3, Scheme::S420, 8, 8);
    // a = 1, b = 2 in the first row; c = 4, d = 7 below.
    for (int c = 0; c < 2; ++c) {
        src.chroma(c, 0, 0) = 1;
        src.chroma(c, 0, 1) = 2;
        src.chroma(c, 1, 0) = 4;
        src.chroma(c, 1, 1) = 7;
    }
    ASSERT_EQ(kelOk, keliYCbCr1620To420_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 8}));
    // Inner cell: Cb rounds half up, Cr truncates.
    EXPECT_EQ(1, dst.chroma(0, 0, 0));
    EXPECT_EQ(2, dst.chroma(0, 0, 1));  // (1 + 2 + 1) >> 1
    EXPECT_EQ(1, dst.chroma(1, 0, 1));  // (1 + 2) >> 1
    EXPECT_EQ(3, dst.chroma(0, 1, 0));  // (1 + 4 + 1) >> 1
    EXPECT_EQ(2, dst.chroma(1, 1, 0));
    EXPECT_EQ(4, dst.chroma(0, 1, 1));  // (1 + 2 + 4 + 7 + 2) >> 2
    EXPECT_EQ(3, dst.chroma(1, 1, 1));  // 14 >> 2
    // Last column, not last row: (a + c) >> 1 below, a to the right, in both.
    for (int c = 0; c < 2; ++c) {
        EXPECT_EQ(2, dst.chroma(c, 0, 2));
        EXPECT_EQ(2, dst.chroma(c, 0, 3));
        EXPECT_EQ((2 + 7) >> 1, dst.chroma(c, 1, 2));
        EXPECT_EQ((2 + 7) >> 1, dst.chroma(c, 1, 3));
        // Last row, not last column: (a + b) >> 1 to the right, a below.
        EXPECT_EQ((4 + 7) >> 1, dst.chroma(c, 2, 1));
        EXPECT_EQ(4, dst.chroma(c, 3, 0));
        EXPECT_EQ(4, dst.chroma(c, 3, 1));
        // Last row and column: a everywhere.
        EXPECT_EQ(7, dst.chroma(c, 2, 3));
        EXPECT_EQ(7, dst.chroma(c, 3, 3));
    }
}

TEST(Resampling, SmallestSixteenTwoZeroImageHasOneSampleAPlane)
{
    YccImage src(Form::P3, Scheme::S1620, 4, 4), dst(Form::P3, Scheme::S420, 4, 4);
    src.fill(6);
    ASSERT_EQ(kelOk, keliYCbCr1620To420_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {4, 4}));
    for (int c = 0; c < 2; ++c)
        for (int j = 0; j < 2; ++j)
            for (int k = 0; k < 2; ++k) EXPECT_EQ(src.chroma(c, 0, 0), dst.chroma(c, j, k));
    EXPECT_TRUE(dst.intact());
}

TEST(Resampling, FourTwoZeroToSixteenTwoZeroTakesEveryOtherSample)
{
    YccImage src(Form::P3, Scheme::S420, 8, 8), dst(Form::P3, Scheme::S1620, 8, 8);
    src.fill(7);
    ASSERT_EQ(kelOk, keliYCbCr420To1620_8u_P3R(src.constPlanes(), src.steps(), dst.planes(), dst.steps(), {8, 8}));
    for (int c = 0; c < 2; ++c)
        for (int j = 0; j < 2; ++j)
            for (int k = 0; k < 2; ++k) EXPECT_EQ(src.chroma(c, 2 * j, 2 * k), dst.chroma(c, j, k));
}

TEST(RepackCases, StrideArrayNullOnlyTestedByOneMember)
{
    YccImage src(Form::C2YCbCr, Scheme::S422, 4, 2), dst(Form::P3, Scheme::S422, 4, 2);
    EXPECT_EQ(kelErrNullPointer, keliYCbCr422_8u_C2P3R(src.ptr(), src.step(), dst.planes(), nullptr, {4, 2}));
    EXPECT_EQ(kelErrSize, keliYCbCr422_8u_C2P3R(src.ptr(), src.step(), dst.planes(), dst.steps(), {4, 0}));
    EXPECT_EQ(kelOk, keliYCbCr422ToYCbCr411_8u_C2P3R(src.ptr(), src.step(), dst.planes(), dst.steps(), {4, 0}));
}

} // namespace
