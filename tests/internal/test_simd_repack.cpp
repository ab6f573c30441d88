// The repacking members on every SIMD target this processor runs, through
// the public functions (each chooses its row kernels once a call), against
// the repacking rules sample by sample: widths 0..70 and wide rows, heights
// 1..9, odd strides, rows that start off alignment, every byte outside the
// written samples left as it was.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/targets.h"

namespace {

// ---- layouts --------------------------------------------------------------------------------------------

enum class Form { P3, P3CrCb, P2, C2YCbCr, C2CbYCr, C2YCrCb };
// Chroma of a scheme: a sample every `columns` pixels of a row, a row every `rows` rows.
struct Scheme {
    int columns, rows;
};
constexpr Scheme k422{2, 1}, k420{2, 2}, k411{4, 1}, k1620{4, 4};

bool pixelOrder(Form f)
{
    return f == Form::C2YCbCr || f == Form::C2CbYCr || f == Form::C2YCrCb;
}

// One side of a call: its planes (one for pixel pairs, two for Y and CbCr,
// three otherwise), each with guard bytes before and after, an odd stride and
// a start `lead` bytes into its buffer.
struct Side {
    Form form;
    Scheme scheme;
    struct Plane {
        int step = 0, lead = 0;
        std::vector<std::uint8_t> bytes;
        Kel8u* at(std::size_t offset) { return bytes.data() + lead + offset; }
    };
    std::vector<Plane> planes;
    Kel8u* pointers[3] = {};
    int steps[3] = {};

    Side(Form f, Scheme s, int width, int height, int lead, std::mt19937& gen) : form(f), scheme(s)
    {
        const int chromaWidth = (width + s.columns - 1) / s.columns, chromaRows = (height + s.rows - 1) / s.rows;
        const auto add = [&](int rowBytes, int rows) {
            Plane p;
            p.step = rowBytes + 1 + 2 * (lead & 1);  // odd strides, longer than the row
            p.lead = lead;
            p.bytes.resize(static_cast<std::size_t>(lead) + static_cast<std::size_t>(p.step) * rows + 37);
            for (auto& b : p.bytes) b = static_cast<std::uint8_t>(gen());
            planes.push_back(std::move(p));
        };
        if (pixelOrder(f)) {
            add(2 * width, height);
        } else {
            add(width, height);
            if (f == Form::P2) {
                add(2 * chromaWidth, chromaRows);
            } else {
                add(chromaWidth, chromaRows);
                add(chromaWidth, chromaRows);
            }
        }
        for (std::size_t i = 0; i < planes.size(); ++i) {
            pointers[i] = planes[i].at(0);
            steps[i] = planes[i].step;
        }
    }

    // Where luma (x, y) and chroma component c (0 Cb, 1 Cr) sample (i, j) live.
    std::uint8_t& luma(int x, int y)
    {
        if (pixelOrder(form)) return *planes[0].at(std::size_t(y) * planes[0].step + 2 * x + (form == Form::C2CbYCr));
        return *planes[0].at(std::size_t(y) * planes[0].step + x);
    }
    std::uint8_t& chroma(int c, int i, int j)
    {
        switch (form) {
        case Form::P3: return *planes[1 + c].at(std::size_t(j) * planes[1 + c].step + i);
        case Form::P3CrCb: return *planes[2 - c].at(std::size_t(j) * planes[2 - c].step + i);
        case Form::P2: return *planes[1].at(std::size_t(j) * planes[1].step + 2 * i + c);
        case Form::C2YCbCr: return *planes[0].at(std::size_t(j) * planes[0].step + 4 * i + (c ? 3 : 1));
        case Form::C2CbYCr: return *planes[0].at(std::size_t(j) * planes[0].step + 4 * i + (c ? 2 : 0));
        case Form::C2YCrCb: return *planes[0].at(std::size_t(j) * planes[0].step + 4 * i + (c ? 1 : 3));
        }
        return *planes[0].at(0);
    }
};

// ---- members ----------------------------------------------------------------------------------------------

enum class Rule {
    Same,
    RowsDoubled,
    OddRowsDropped,
    OddColumnsDropped,
    ColumnsDoubled,
    ColumnsStacked,
    RowsUnstacked,
    Averaged420To411,
    Averaged411To420,
    Dropped420To1620,
    Cells1620To420,
};

struct Member {
    const char* name;
    Form srcForm, dstForm;
    Scheme srcScheme, dstScheme;
    Rule rule;
    int widthMask, heightMask, minWidth, minHeight;  // minHeight 0: the height is not tested
    bool exact;                                      // the resampling four: sizes must be whole cells
    std::function<KelResult(Side&, Side&, KelImageSize)> call;
};

// The calls by argument shape.
using P3P3 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u* const[3], const int[3], KelImageSize);
using P3P2 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u*, int, Kel8u*, int, KelImageSize);
using P2P3 = KelResult (*)(const Kel8u*, int, const Kel8u*, int, Kel8u* const[3], const int[3], KelImageSize);
using C2P3 = KelResult (*)(const Kel8u*, int, Kel8u* const[3], const int[3], KelImageSize);
using P3C2 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u*, int, KelImageSize);
using P2C2 = KelResult (*)(const Kel8u*, int, const Kel8u*, int, Kel8u*, int, KelImageSize);
using C2P2 = KelResult (*)(const Kel8u*, int, Kel8u*, int, Kel8u*, int, KelImageSize);
using C2C2 = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);

std::function<KelResult(Side&, Side&, KelImageSize)> shape(P3P3 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        const Kel8u* src[3] = {s.pointers[0], s.pointers[1], s.pointers[2]};
        return f(src, s.steps, d.pointers, d.steps, r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(P3P2 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        const Kel8u* src[3] = {s.pointers[0], s.pointers[1], s.pointers[2]};
        return f(src, s.steps, d.pointers[0], d.steps[0], d.pointers[1], d.steps[1], r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(P2P3 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        return f(s.pointers[0], s.steps[0], s.pointers[1], s.steps[1], d.pointers, d.steps, r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(C2P3 f)
{
    return [f](Side& s, Side& d, KelImageSize r) { return f(s.pointers[0], s.steps[0], d.pointers, d.steps, r); };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(P3C2 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        const Kel8u* src[3] = {s.pointers[0], s.pointers[1], s.pointers[2]};
        return f(src, s.steps, d.pointers[0], d.steps[0], r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(P2C2 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        return f(s.pointers[0], s.steps[0], s.pointers[1], s.steps[1], d.pointers[0], d.steps[0], r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(C2P2 f)
{
    return [f](Side& s, Side& d, KelImageSize r) {
        return f(s.pointers[0], s.steps[0], d.pointers[0], d.steps[0], d.pointers[1], d.steps[1], r);
    };
}
std::function<KelResult(Side&, Side&, KelImageSize)> shape(C2C2 f)
{
    return [f](Side& s, Side& d, KelImageSize r) { return f(s.pointers[0], s.steps[0], d.pointers[0], d.steps[0], r); };
}

using F = Form;
using R = Rule;
const Member kMembers[] = {
    {"YCbCr420ToYCbCr422_8u_P3R", F::P3, F::P3, k420, k422, R::RowsDoubled, ~1, ~1, 2, 2, false, shape(keliYCbCr420ToYCbCr422_8u_P3R)},
    {"YCrCb420ToYCbCr422_8u_P3R", F::P3CrCb, F::P3, k420, k422, R::RowsDoubled, ~1, ~1, 2, 2, false, shape(keliYCrCb420ToYCbCr422_8u_P3R)},
    {"YCbCr420ToYCbCr422_8u_P2P3R", F::P2, F::P3, k420, k422, R::RowsDoubled, ~1, ~1, 2, 2, false, shape(keliYCbCr420ToYCbCr422_8u_P2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3R", F::P3, F::P3, k422, k420, R::OddRowsDropped, ~1, ~1, 2, 2, false, shape(keliYCbCr422ToYCbCr420_8u_P3R)},
    {"YCbCr422ToYCbCr420_8u_C2P3R", F::C2YCbCr, F::P3, k422, k420, R::OddRowsDropped, ~1, ~1, 2, 2, false, shape(keliYCbCr422ToYCbCr420_8u_C2P3R)},
    {"CbYCr422ToYCbCr420_8u_C2P3R", F::C2CbYCr, F::P3, k422, k420, R::OddRowsDropped, ~1, ~1, 2, 2, false, shape(keliCbYCr422ToYCbCr420_8u_C2P3R)},
    {"YCrCb422ToYCbCr420_8u_C2P3R", F::C2YCrCb, F::P3, k422, k420, R::OddRowsDropped, ~1, ~1, 2, 2, false, shape(keliYCrCb422ToYCbCr420_8u_C2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3P2R", F::P3, F::P2, k422, k420, R::OddRowsDropped, ~1, ~1, 2, 2, false, shape(keliYCbCr422ToYCbCr420_8u_P3P2R)},
    {"YCbCr422_8u_C2P3R", F::C2YCbCr, F::P3, k422, k422, R::Same, ~1, ~0, 2, 1, false, shape(keliYCbCr422_8u_C2P3R)},
    {"YCrCb422ToYCbCr422_8u_C2P3R", F::C2YCrCb, F::P3, k422, k422, R::Same, ~1, ~0, 2, 0, false, shape(keliYCrCb422ToYCbCr422_8u_C2P3R)},
    {"CbYCr422ToYCbCr422_8u_C2P3R", F::C2CbYCr, F::P3, k422, k422, R::Same, ~1, ~0, 2, 0, false, shape(keliCbYCr422ToYCbCr422_8u_C2P3R)},
    {"YCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, k422, k422, R::Same, ~1, ~0, 2, 1, false, shape(keliYCbCr422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, k422, k422, R::Same, ~1, ~0, 2, 0, false, shape(keliYCbCr422ToYCrCb422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_C2R", F::C2YCbCr, F::C2YCrCb, k422, k422, R::Same, ~1, ~0, 2, 0, false, shape(keliYCbCr422ToYCrCb422_8u_C2R)},
    {"YCbCr420_8u_P3P2R", F::P3, F::P2, k420, k420, R::Same, ~1, ~1, 2, 2, false, shape(keliYCbCr420_8u_P3P2R)},
    {"YCbCr420_8u_P2P3R", F::P2, F::P3, k420, k420, R::Same, ~1, ~1, 2, 2, false, shape(keliYCbCr420_8u_P2P3R)},
    {"YCbCr411_8u_P3P2R", F::P3, F::P2, k411, k411, R::Same, ~3, ~0, 4, 0, false, shape(keliYCbCr411_8u_P3P2R)},
    {"YCbCr411_8u_P2P3R", F::P2, F::P3, k411, k411, R::Same, ~3, ~0, 4, 0, false, shape(keliYCbCr411_8u_P2P3R)},
    {"YCbCr422ToYCbCr411_8u_P3R", F::P3, F::P3, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliYCbCr422ToYCbCr411_8u_P3R)},
    {"YCbCr422ToYCbCr411_8u_P3P2R", F::P3, F::P2, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliYCbCr422ToYCbCr411_8u_P3P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P2R", F::C2YCbCr, F::P2, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliYCbCr422ToYCbCr411_8u_C2P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P3R", F::C2YCbCr, F::P3, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliYCbCr422ToYCbCr411_8u_C2P3R)},
    {"CbYCr422ToYCbCr411_8u_C2P3R", F::C2CbYCr, F::P3, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliCbYCr422ToYCbCr411_8u_C2P3R)},
    {"YCrCb422ToYCbCr411_8u_C2P3R", F::C2YCrCb, F::P3, k422, k411, R::OddColumnsDropped, ~3, ~0, 4, 0, false, shape(keliYCrCb422ToYCbCr411_8u_C2P3R)},
    {"YCbCr411ToYCbCr422_8u_P3R", F::P3, F::P3, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCbCr422_8u_P3R)},
    {"YCbCr411ToYCrCb422_8u_P3R", F::P3, F::P3CrCb, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCrCb422_8u_P3R)},
    {"YCbCr411ToYCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCbCr422_8u_P3C2R)},
    {"YCbCr411ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCrCb422_8u_P3C2R)},
    {"YCbCr411ToYCbCr422_8u_P2C2R", F::P2, F::C2YCbCr, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCbCr422_8u_P2C2R)},
    {"YCbCr411ToYCbCr422_8u_P2P3R", F::P2, F::P3, k411, k422, R::ColumnsDoubled, ~3, ~0, 4, 0, false, shape(keliYCbCr411ToYCbCr422_8u_P2P3R)},
    {"YCbCr420ToYCbCr411_8u_P3P2R", F::P3, F::P2, k420, k411, R::ColumnsStacked, ~3, ~1, 4, 2, false, shape(keliYCbCr420ToYCbCr411_8u_P3P2R)},
    {"YCrCb420ToYCbCr411_8u_P3P2R", F::P3CrCb, F::P2, k420, k411, R::ColumnsStacked, ~3, ~1, 4, 2, false, shape(keliYCrCb420ToYCbCr411_8u_P3P2R)},
    {"YCbCr420ToYCbCr411_8u_P2P3R", F::P2, F::P3, k420, k411, R::ColumnsStacked, ~3, ~1, 4, 2, false, shape(keliYCbCr420ToYCbCr411_8u_P2P3R)},
    {"YCbCr411ToYCbCr420_8u_P3R", F::P3, F::P3, k411, k420, R::RowsUnstacked, ~3, ~1, 4, 2, false, shape(keliYCbCr411ToYCbCr420_8u_P3R)},
    {"YCbCr411ToYCbCr420_8u_P3P2R", F::P3, F::P2, k411, k420, R::RowsUnstacked, ~3, ~1, 4, 2, false, shape(keliYCbCr411ToYCbCr420_8u_P3P2R)},
    {"YCbCr411ToYCbCr420_8u_P2P3R", F::P2, F::P3, k411, k420, R::RowsUnstacked, ~3, ~1, 4, 2, false, shape(keliYCbCr411ToYCbCr420_8u_P2P3R)},
    {"YCbCr411ToYCrCb420_8u_P2P3R", F::P2, F::P3CrCb, k411, k420, R::RowsUnstacked, ~3, ~1, 4, 2, false, shape(keliYCbCr411ToYCrCb420_8u_P2P3R)},
    {"YCbCr420To411_8u_P3R", F::P3, F::P3, k420, k411, R::Averaged420To411, ~3, ~1, 4, 2, true, shape(keliYCbCr420To411_8u_P3R)},
    {"YCbCr411To420_8u_P3R", F::P3, F::P3, k411, k420, R::Averaged411To420, ~3, ~3, 4, 4, true, shape(keliYCbCr411To420_8u_P3R)},
    {"YCbCr420To1620_8u_P3R", F::P3, F::P3, k420, k1620, R::Dropped420To1620, ~3, ~3, 4, 4, true, shape(keliYCbCr420To1620_8u_P3R)},
    {"YCbCr1620To420_8u_P3R", F::P3, F::P3, k1620, k420, R::Cells1620To420, ~3, ~3, 4, 4, true, shape(keliYCbCr1620To420_8u_P3R)},
};

// ---- the rules, sample by sample ------------------------------------------------------------------------

// The destination a member leaves, from its source and the destination as it was.
void expected(const Member& m, Side& s, Side& d, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) d.luma(x, y) = s.luma(x, y);
    const int rows = height / m.dstScheme.rows, samples = width / m.dstScheme.columns;
    for (int c = 0; c < 2; ++c)
        for (int j = 0; j < rows; ++j)
            for (int k = 0; k < samples; ++k) {
                const auto S = [&](int i, int row) { return int(s.chroma(c, i, row)); };
                int v = 0;
                switch (m.rule) {
                case R::Same: v = S(k, j); break;
                case R::RowsDoubled: v = S(k, j / 2); break;
                case R::OddRowsDropped: v = S(k, 2 * j); break;
                case R::OddColumnsDropped: v = S(2 * k, j); break;
                case R::ColumnsDoubled: v = S(k / 2, j); break;
                case R::ColumnsStacked: v = S(2 * k + (j & 1), j / 2); break;
                case R::RowsUnstacked: v = S(k / 2, 2 * j + (k & 1)); break;
                case R::Averaged420To411: {
                    const int n = height / 2, row = j / 2;
                    const int below = row + 1 < n ? row + 1 : row;
                    v = (j & 1) ? (S(2 * k, row) + S(2 * k, below)) >> 1 : S(2 * k, row);
                    break;
                }
                case R::Averaged411To420: {
                    const int m4 = width / 4, i = k / 2;
                    const int right = i + 1 < m4 ? i + 1 : i;
                    v = (k & 1) ? (S(i, 2 * j) + S(right, 2 * j)) >> 1 : S(i, 2 * j);
                    break;
                }
                case R::Dropped420To1620: v = S(2 * k, 2 * j); break;
                case R::Cells1620To420: {
                    const int n = height / 4, m4 = width / 4, row = j / 2, i = k / 2;
                    const bool lastRow = row + 1 == n, lastColumn = i + 1 == m4;
                    const int a = S(i, row);
                    const int h = c == 0 ? 1 : 0, q = c == 0 ? 2 : 0;
                    const bool right = k & 1, down = j & 1;
                    if (!right && !down) v = a;
                    else if (!lastRow && !lastColumn) {
                        const int b = S(i + 1, row), cc = S(i, row + 1), e = S(i + 1, row + 1);
                        v = right && down ? (a + b + cc + e + q) >> 2 : right ? (a + b + h) >> 1 : (a + cc + h) >> 1;
                    } else if (!lastRow) {
                        v = down ? (a + S(i, row + 1)) >> 1 : a;
                    } else if (!lastColumn) {
                        v = down ? a : (a + S(i + 1, row)) >> 1;
                    } else {
                        v = a;
                    }
                    break;
                }
                }
                d.chroma(c, k, j) = static_cast<std::uint8_t>(v);
            }
}

void checkMember(const Member& m, const std::string& target)
{
    std::mt19937 gen(7);
    for (int width : kt::simdTestWidths({255, 256, 257, 511, 512, 513}))
        for (int height = 1; height <= (width > 200 ? 5 : 9); ++height) {
            const int lead = (width + height) % 7;  // rows start off any alignment
            Side src(m.srcForm, m.srcScheme, width, height, lead, gen);
            Side dst(m.dstForm, m.dstScheme, width, height, 3 - lead % 3, gen);
            Side want = dst;
            const bool sizeOk = width >= m.minWidth && height >= m.minHeight &&
                                (!m.exact || ((width & ~m.widthMask) == 0 && (height & ~m.heightMask) == 0));
            const KelResult result = m.call(src, dst, KelImageSize{width, height});
            ASSERT_EQ(result, sizeOk ? kelOk : kelErrSize) << m.name << " " << target << " " << width << "x" << height;
            if (sizeOk) expected(m, src, want, width & m.widthMask, height & m.heightMask);
            for (std::size_t p = 0; p < dst.planes.size(); ++p)
                ASSERT_EQ(dst.planes[p].bytes, want.planes[p].bytes)
                    << m.name << " on " << target << ", " << width << " x " << height << ", plane " << p;
        }
}

TEST(SimdRepack, EveryMemberOnEveryTargetFollowsItsRule)
{
    for (const Member& m : kMembers) kt::forEachSimdTarget([&](const std::string& target) { checkMember(m, target); });
}

} // namespace
