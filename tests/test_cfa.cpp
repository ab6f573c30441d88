// Bayer demosaic, 8u and 16u: one sample a pixel behind a 2 x 2 filter tile
// anchored at the frame's origin, to R, G, B pixels of a region of the frame.
// Every member against the interpolation written here as a function of the
// frame position (reflection at the two outermost rows and columns, the
// gradient test inside them), over every grid, frame sizes from 2 x 2 up,
// regions at every parity and against every edge, regions reaching past the
// frame, strides with padding, and sources fenced on either side.
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the interpolation, in this file's terms --------------------------------------------------

enum Colour { Red = 0, Green = 1, Blue = 2 };
const char* const kColourName[] = {"R", "G", "B"};
const KelBayerGrid kGrids[] = {kelBayerGridBGGR, kelBayerGridRGGB, kelBayerGridGBRG, kelBayerGridGRBG};
const char* gridName(KelBayerGrid g)
{
    static const char* const names[] = {"BGGR", "RGGB", "GBRG", "GRBG"};
    return g >= 0 && g < 4 ? names[g] : "?";
}

// The filter colour at a frame position: the grid's name spells its top-left
// tile row by row, (0,0) (1,0) (0,1) (1,1).
Colour colourAt(KelBayerGrid grid, int x, int y)
{
    const char letter = gridName(grid)[(y & 1) * 2 + (x & 1)];
    return letter == 'R' ? Red : letter == 'G' ? Green : Blue;
}

// A frame of samples, row by row.
struct Frame {
    int width = 0, height = 0;
    std::vector<int> samples;
    int at(int x, int y) const { return samples[std::size_t(y) * width + x]; }
    int& at(int x, int y) { return samples[std::size_t(y) * width + x]; }
};

Frame flatFrame(int w, int h, int value) { return {w, h, std::vector<int>(std::size_t(w) * h, value)}; }

enum class Fill {
    Random,    // every value of the type
    Levels,    // four values: equal changes both ways, so the gradient test ties often
    Extremes,  // 0 and the top: the largest changes and sums
    Top,       // the top and one below: sums of four full-scale samples, rounded
};
Frame filledFrame(int w, int h, int top, std::uint32_t seed, Fill fill = Fill::Random)
{
    Frame f = flatFrame(w, h, 0);
    std::mt19937 gen(seed);
    for (int& s : f.samples) {
        const int r = int(gen() % 0x10000u);
        switch (fill) {
        case Fill::Random: s = r % (top + 1); break;
        case Fill::Levels: s = (r % 4) * (top / 3); break;
        case Fill::Extremes: s = (r & 1) ? top : 0; break;
        case Fill::Top: s = top - (r & 1); break;
        }
    }
    return f;
}

// Column -1 reads column 1, column W reads column W - 2; rows alike.
int reflect(int c, int n) { return c < 0 ? -c : c >= n ? 2 * (n - 1) - c : c; }

// R, G, B at frame position (x, y). Green sites take the row colour from the
// left and right neighbours, the column colour from the ones above and below,
// each pair's mean rounded half up. Red and blue sites take the other of the
// two from the four diagonals, and green from the four neighbours, or, two
// pixels or more inside every edge, from the pair across the smaller change
// of the site's own colour two pixels away.
Trio demosaic(const Frame& f, KelBayerGrid grid, int x, int y)
{
    const auto n = [&](int dx, int dy) { return f.at(reflect(x + dx, f.width), reflect(y + dy, f.height)); };
    Trio out{};
    const Colour site = colourAt(grid, x, y);
    const int across = n(-1, 0) + n(1, 0), along = n(0, -1) + n(0, 1);
    if (site == Green) {
        out[Green] = n(0, 0);
        out[colourAt(grid, x + 1, y)] = (across + 1) >> 1;
        out[colourAt(grid, x, y + 1)] = (along + 1) >> 1;
        return out;
    }
    out[site] = n(0, 0);
    out[site == Red ? Blue : Red] = (n(-1, -1) + n(1, -1) + n(-1, 1) + n(1, 1) + 2) >> 2;
    const bool inner = x >= 2 && x <= f.width - 3 && y >= 2 && y <= f.height - 3;
    const int vertical = inner ? std::abs(n(0, -2) - n(0, 2)) : 0;
    const int horizontal = inner ? std::abs(n(-2, 0) - n(2, 0)) : 0;
    out[Green] = vertical < horizontal   ? (along + 1) >> 1
                 : horizontal < vertical ? (across + 1) >> 1
                                         : (across + along + 2) >> 2;
    return out;
}

// The row-0 and corner formulas as the edge rule spells them out, against
// the reflection above.
TEST(CfaModel, ReflectionGivesTheSpelledOutRowZeroAndCornerFormulas)
{
    for (KelBayerGrid grid : kGrids) {
        const Frame f = filledFrame(9, 8, 255, 5u + grid);
        const int w = f.width, h = f.height;
        for (int x = 1; x < w - 1; ++x) {
            const Trio p = demosaic(f, grid, x, 0);
            const Colour site = colourAt(grid, x, 0);
            if (site == Green) {
                EXPECT_EQ(f.at(x, 1), p[colourAt(grid, x, 1)]) << gridName(grid) << " x " << x;
                continue;
            }
            EXPECT_EQ((f.at(x - 1, 0) + f.at(x + 1, 0) + 2 * f.at(x, 1) + 2) >> 2, p[Green]) << gridName(grid) << " x " << x;
            EXPECT_EQ((f.at(x - 1, 1) + f.at(x + 1, 1) + 1) >> 1, p[site == Red ? Blue : Red]) << gridName(grid) << " x " << x;
        }
        for (auto [x, y] : {std::pair{0, 0}, {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}}) {
            const Colour site = colourAt(grid, x, y);
            if (site == Green) continue;
            const int sx = x == 0 ? 1 : -1, sy = y == 0 ? 1 : -1;
            const Trio p = demosaic(f, grid, x, y);
            EXPECT_EQ((f.at(x + sx, y) + f.at(x, y + sy) + 1) >> 1, p[Green]) << gridName(grid) << " corner " << x << "," << y;
            EXPECT_EQ(f.at(x + sx, y + sy), p[site == Red ? Blue : Red]) << gridName(grid) << " corner " << x << "," << y;
        }
    }
}

TEST(CfaModel, TheTilesAsTabled)
{
    EXPECT_EQ(Blue, colourAt(kelBayerGridBGGR, 0, 0));
    EXPECT_EQ(Red, colourAt(kelBayerGridBGGR, 1, 1));
    EXPECT_EQ(Red, colourAt(kelBayerGridRGGB, 2, 4));
    EXPECT_EQ(Blue, colourAt(kelBayerGridGBRG, 1, 0));
    EXPECT_EQ(Red, colourAt(kelBayerGridGBRG, 0, 1));
    EXPECT_EQ(Red, colourAt(kelBayerGridGRBG, 3, 2));
    EXPECT_EQ(Blue, colourAt(kelBayerGridGRBG, 0, 3));
    EXPECT_EQ(Green, colourAt(kelBayerGridGRBG, 5, 5));
}

// ---- buffers ------------------------------------------------------------------------------------

void putSample(std::uint8_t* p, int bytes, int value)
{
    if (bytes == 1) {
        *p = std::uint8_t(value);
    } else {
        const Kel16u v = Kel16u(value);
        std::memcpy(p, &v, 2);
    }
}
int getSample(const std::uint8_t* p, int bytes)
{
    if (bytes == 1) return *p;
    Kel16u v;
    std::memcpy(&v, p, 2);
    return v;
}

std::size_t pageBytes() { return std::size_t(sysconf(_SC_PAGESIZE)); }

// Where the frame lies: its last row's last byte against an inaccessible
// page, or its first row's first byte right after one.
enum class Fence { End, Front };

// The frame as a call reads it: `paddingSamples` between rows, and the stride
// passed `strideExtra` bytes more than the rows' distance (an odd 16u stride
// that must round down to it).
class Source {
public:
    Source(const Frame& f, int bytes, Fence fence = Fence::End, int paddingSamples = 7, int strideExtra = 0)
        : rowBytes_(std::size_t(f.width) * bytes), height_(f.height), extra_(strideExtra)
    {
        const std::size_t padding = std::size_t(paddingSamples) * bytes;
        if (fence == Fence::End) {
            image_ = std::make_unique<GuardedImage>(rowBytes_, f.height, Placement::Fenced, padding);
            first_ = image_->data();
            step_ = std::size_t(image_->step());
        } else {
            step_ = rowBytes_ + padding;
            const std::size_t page = pageBytes(), span = step_ * (f.height - 1) + rowBytes_;
            mapBytes_ = page + (span + page - 1) / page * page + page;
            void* m = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (m == MAP_FAILED) throw std::runtime_error("mmap failed");
            map_ = static_cast<std::uint8_t*>(m);
            if (mprotect(map_, page, PROT_NONE) != 0 || mprotect(map_ + mapBytes_ - page, page, PROT_NONE) != 0)
                throw std::runtime_error("mprotect failed");
            first_ = map_ + page;
            std::memset(first_, 0x5A, span);
        }
        for (int y = 0; y < f.height; ++y)
            for (int x = 0; x < f.width; ++x) putSample(first_ + step_ * y + std::size_t(x) * bytes, bytes, f.at(x, y));
        before_ = bytes_();
    }
    ~Source()
    {
        if (map_) munmap(map_, mapBytes_);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    const void* data() const { return first_; }
    int stride() const { return int(step_) + extra_; }
    // Rows, padding and guards as they were.
    bool unchanged() const { return bytes_() == before_ && (!image_ || image_->fenceIntact()); }

private:
    std::vector<std::uint8_t> bytes_() const
    {
        return std::vector<std::uint8_t>(first_, first_ + step_ * (height_ - 1) + rowBytes_);
    }
    std::unique_ptr<GuardedImage> image_;
    std::uint8_t* map_ = nullptr;
    std::size_t mapBytes_ = 0;
    std::uint8_t* first_ = nullptr;
    std::size_t rowBytes_, step_ = 0;
    int height_, extra_;
    std::vector<std::uint8_t> before_;
};

// Three samples a pixel, guards before and after, padding between rows, every
// byte a known pattern before the call.
class Destination {
public:
    Destination(int width, int height, int bytes, int paddingSamples = 5, int strideExtra = 0)
        : width_(std::max(width, 1)), height_(std::max(height, 1)), bytes_(bytes), extra_(strideExtra),
          image_(std::size_t(3) * width_ * bytes, height_, Placement::Guarded, std::size_t(paddingSamples) * bytes)
    {
        refill();
    }
    void refill() { image_.fillRandom(std::uint32_t(++fills_ * 7919u + width_)); }
    void* data() { return image_.data(); }
    int stride() const { return image_.step() + extra_; }
    int width() const { return width_; }
    int height() const { return height_; }
    std::vector<std::uint8_t> rows() const { return image_.rows(); }
    bool intact() const { return image_.fenceIntact(); }
    // Sample c of pixel (i, j) in a copy of rows().
    std::size_t index(int i, int j, int c) const { return ((std::size_t(j) * width_ + i) * 3 + c) * bytes_; }
    Trio pixel(int i, int j) const
    {
        Trio t{};
        for (int c = 0; c < 3; ++c) t[c] = getSample(image_.row(j) + (std::size_t(i) * 3 + c) * bytes_, bytes_);
        return t;
    }

private:
    int width_, height_, bytes_, extra_;
    GuardedImage image_;
    unsigned fills_ = 0;
};

// ---- the members --------------------------------------------------------------------------------

using ErasedCfa = KelResult (*)(const void* src, KelImageRect roi, KelImageSize frame, int srcStep, void* dst, int dstStep,
                                KelBayerGrid grid);
template <typename T, KelResult (*F)(const T*, KelImageRect, KelImageSize, int, T*, int, KelBayerGrid)>
KelResult erased(const void* src, KelImageRect roi, KelImageSize frame, int srcStep, void* dst, int dstStep, KelBayerGrid grid)
{
    return F(static_cast<const T*>(src), roi, frame, srcStep, static_cast<T*>(dst), dstStep, grid);
}

struct Member {
    const char* name;
    ErasedCfa call;
    int bytes;
    int top;
};
void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

const Member kMembers[] = {
    {"keliCFAToRGB_8u_C1C3R", erased<Kel8u, keliCFAToRGB_8u_C1C3R>, 1, 255},
    {"keliCFAToRGB_16u_C1C3R", erased<Kel16u, keliCFAToRGB_16u_C1C3R>, 2, 65535},
};

using Want = std::function<Trio(int x, int y)>;
Want modelOf(const Frame& f, KelBayerGrid grid)
{
    return [&f, grid](int x, int y) { return demosaic(f, grid, x, y); };
}

std::string describe(const Member& m, const Frame& f, KelBayerGrid grid, KelImageRect roi)
{
    std::ostringstream s;
    s << m.name << " frame " << f.width << "x" << f.height << " " << gridName(grid) << " region (" << roi.x << ","
      << roi.y << ") " << roi.width << "x" << roi.height;
    return s.str();
}

bool inRegionAndFrame(const Frame& f, KelImageRect roi, int i, int j)
{
    const long long x = (long long)roi.x + i, y = (long long)roi.y + j;
    return i < roi.width && j < roi.height && x >= 0 && x < f.width && y >= 0 && y < f.height;
}

// One call: kelOk; each destination pixel (i, j) of the region whose frame
// position (roi.x + i, roi.y + j) lies in the frame holds want() of that
// position; every other destination byte, guard and padding as before; the
// source unchanged. False, with the first differences told, when not.
bool expectRegion(const Member& m, const Frame& f, const Source& src, Destination& dst, KelBayerGrid grid, KelImageRect roi,
                  const Want& want)
{
    std::vector<std::uint8_t> expected = dst.rows();
    for (int j = 0; j < dst.height(); ++j)
        for (int i = 0; i < dst.width(); ++i) {
            if (!inRegionAndFrame(f, roi, i, j)) continue;
            const Trio p = want(roi.x + i, roi.y + j);
            for (int c = 0; c < 3; ++c) putSample(&expected[dst.index(i, j, c)], m.bytes, p[c]);
        }
    const KelResult status = m.call(src.data(), roi, {f.width, f.height}, src.stride(), dst.data(), dst.stride(), grid);
    const std::vector<std::uint8_t> got = dst.rows();
    bool good = true;
    if (status != kelOk) {
        ADD_FAILURE() << describe(m, f, grid, roi) << ": status " << status;
        good = false;
    }
    if (got != expected) {
        std::ostringstream s;
        int told = 0, differing = 0;
        for (int j = 0; j < dst.height(); ++j)
            for (int i = 0; i < dst.width(); ++i)
                for (int c = 0; c < 3; ++c) {
                    const std::size_t k = dst.index(i, j, c);
                    const int g = getSample(&got[k], m.bytes), e = getSample(&expected[k], m.bytes);
                    if (g == e) continue;
                    ++differing;
                    if (told++ < 6)
                        s << "\n  destination (" << i << "," << j << ") frame (" << roi.x + i << "," << roi.y + j << ") "
                          << kColourName[c] << (inRegionAndFrame(f, roi, i, j) ? "" : " [not to be written]") << ": got "
                          << g << ", want " << e;
                }
        ADD_FAILURE() << describe(m, f, grid, roi) << ": " << differing << " samples differ" << s.str();
        good = false;
    }
    if (!dst.intact()) {
        ADD_FAILURE() << describe(m, f, grid, roi) << ": a guard or padding byte of the destination changed";
        good = false;
    }
    if (!src.unchanged()) {
        ADD_FAILURE() << describe(m, f, grid, roi) << ": the source changed";
        good = false;
    }
    return good;
}

// The region in a destination of its own size.
bool expectRegion(const Member& m, const Frame& f, const Source& src, KelBayerGrid grid, KelImageRect roi, const Want& want)
{
    Destination dst(roi.width, roi.height, m.bytes);
    return expectRegion(m, f, src, dst, grid, roi, want);
}

bool expectWholeFrame(const Member& m, const Frame& f, KelBayerGrid grid, Fence fence = Fence::End)
{
    const Source src(f, m.bytes, fence);
    return expectRegion(m, f, src, grid, {0, 0, f.width, f.height}, modelOf(f, grid));
}

// What the whole-frame call gives, pixel by pixel.
struct Pixels {
    int width = 0;
    std::vector<Trio> values;
    Want want() const
    {
        return [this](int x, int y) { return values[std::size_t(y) * width + x]; };
    }
};
Pixels wholeFrameCall(const Member& m, const Frame& f, const Source& src, KelBayerGrid grid)
{
    Destination dst(f.width, f.height, m.bytes);
    EXPECT_EQ(kelOk, m.call(src.data(), {0, 0, f.width, f.height}, {f.width, f.height}, src.stride(), dst.data(),
                            dst.stride(), grid));
    Pixels p{f.width, {}};
    for (int y = 0; y < f.height; ++y)
        for (int x = 0; x < f.width; ++x) p.values.push_back(dst.pixel(x, y));
    return p;
}

class CfaToRgb : public ::testing::TestWithParam<Member> {};

// ---- argument tests -----------------------------------------------------------------------------

// A null pointer comes before a frame below 2 x 2, which comes before a grid
// outside 0..3; the region is no reason for an error; nothing is written.
TEST_P(CfaToRgb, NullPointerThenFrameSizeThenGrid)
{
    const Member& m = GetParam();
    const Frame f = filledFrame(4, 4, m.top, 3);
    const Source src(f, m.bytes);
    Destination dst(4, 4, m.bytes);
    const auto before = dst.rows();
    const auto call = [&](const void* s, void* d, KelImageSize frame, KelBayerGrid grid, KelImageRect roi) {
        return m.call(s, roi, frame, src.stride(), d, dst.stride(), grid);
    };
    const KelImageRect regions[] = {{0, 0, 4, 4}, {0, 0, 0, 0}, {-3, -3, -1, -1}, {9, 9, 2, 2}};
    for (const KelImageRect& roi : regions) {
        for (KelImageSize frame : {KelImageSize{4, 4}, {1, 1}, {0, 0}, {-1, 5}, {INT_MIN, INT_MIN}})
            for (KelBayerGrid grid : {0, 3, 4, -1}) {
                EXPECT_EQ(kelErrNullPointer, call(nullptr, dst.data(), frame, grid, roi)) << frame.width << "x" << frame.height;
                EXPECT_EQ(kelErrNullPointer, call(src.data(), nullptr, frame, grid, roi)) << frame.width << "x" << frame.height;
                EXPECT_EQ(kelErrNullPointer, call(nullptr, nullptr, frame, grid, roi)) << frame.width << "x" << frame.height;
            }
        for (KelImageSize frame : {KelImageSize{1, 4}, {4, 1}, {1, 1}, {0, 4}, {4, 0}, {-2, 4}, {4, -2}, {INT_MIN, 4}, {4, INT_MIN}})
            for (KelBayerGrid grid : {0, 1, 2, 3, 4, -1, INT_MAX}) {
                EXPECT_EQ(kelErrSize, call(src.data(), dst.data(), frame, grid, roi))
                    << frame.width << "x" << frame.height << " grid " << grid;
            }
        for (KelImageSize frame : {KelImageSize{4, 4}, {2, 2}, {2, 3}})
            for (KelBayerGrid grid : {4, 5, -1, INT_MIN, INT_MAX}) {
                EXPECT_EQ(kelErrBadArg, call(src.data(), dst.data(), frame, grid, roi))
                    << frame.width << "x" << frame.height << " grid " << grid;
            }
    }
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact());
    EXPECT_TRUE(src.unchanged());
    EXPECT_EQ(kelOk, call(src.data(), dst.data(), {2, 2}, kelBayerGridGRBG, {0, 0, 2, 2}));
}

// ---- whole frames -------------------------------------------------------------------------------

// Sources fenced after the last row, or before the first for the frames of
// four levels.
TEST_P(CfaToRgb, WholeFramesOfEverySizeAndGridMatchTheModel)
{
    const Member& m = GetParam();
    const std::pair<int, int> sizes[] = {{2, 2}, {2, 3}, {3, 2}, {3, 3}, {4, 4}, {2, 9}, {9, 2}, {5, 5}, {6, 7}, {7, 6},
                                         {5, 12}, {17, 9}, {9, 17}, {67, 33}, {1920, 8}, {8, 97}, {131, 6}};
    int failures = 0;
    for (auto [w, h] : sizes)
        for (Fill fill : {Fill::Random, Fill::Levels, Fill::Extremes, Fill::Top})
            for (KelBayerGrid grid : kGrids) {
                const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * 131 + h * 7 + grid), fill);
                SCOPED_TRACE(::testing::Message() << "fill " << int(fill));
                const Fence fence = fill == Fill::Levels ? Fence::Front : Fence::End;
                if (!expectWholeFrame(m, f, grid, fence) && ++failures >= 8) return;
            }
}

// Samples at the top of the type: sums of four need two bits more than a
// sample and round half up to the top again.
TEST_P(CfaToRgb, FullScaleSumsRoundWithoutOverflow)
{
    const Member& m = GetParam();
    for (KelBayerGrid grid : kGrids) {
        Frame f = flatFrame(7, 7, m.top);
        // the diagonals of (3,3) and its four neighbours: two at the top, two one below
        f.at(2, 2) = f.at(4, 4) = m.top - 1;
        f.at(3, 2) = f.at(3, 4) = m.top - 1;
        const Source src(f, m.bytes);
        Destination dst(1, 1, m.bytes);
        expectRegion(m, f, src, dst, grid, {3, 3, 1, 1}, modelOf(f, grid));
        const Trio p = dst.pixel(0, 0);
        if (colourAt(grid, 3, 3) != Green) {
            EXPECT_EQ(m.top, p[colourAt(grid, 3, 3) == Red ? Blue : Red]) << gridName(grid);  // 4 top - 2, + 2, >> 2
        }
        expectWholeFrame(m, f, grid);
    }
}

// The interior of a wide frame runs in vectors: a frame of 1920 x 1080.
TEST_P(CfaToRgb, AFullHdFrameMatchesTheModel)
{
    const Member& m = GetParam();
    // two grids a member, so that the two members between them start the
    // interior on each of the four sites
    for (KelBayerGrid grid : m.bytes == 1 ? std::array{kelBayerGridBGGR, kelBayerGridGBRG}
                                          : std::array{kelBayerGridRGGB, kelBayerGridGRBG}) {
        const Frame f = filledFrame(1920, 1080, m.top, 1080u + grid, Fill::Random);
        expectWholeFrame(m, f, grid);
    }
}

// ---- the text's edge cases ------------------------------------------------------------------------

// A 2 x 2 frame: every pixel a corner, its missing colours from the other three.
TEST_P(CfaToRgb, TwoByTwoFramesTakeEachMissingColourFromTheOtherThree)
{
    const Member& m = GetParam();
    for (KelBayerGrid grid : kGrids)
        for (std::uint32_t seed = 1; seed <= 12; ++seed) {
            const Frame f = filledFrame(2, 2, m.top, seed * 17 + grid, seed % 3 ? Fill::Random : Fill::Extremes);
            const Want corners = [&](int x, int y) {
                const int own = f.at(x, y), beside = f.at(1 - x, y), below = f.at(x, 1 - y), diagonal = f.at(1 - x, 1 - y);
                Trio out{};
                const Colour site = colourAt(grid, x, y);
                out[site] = own;
                if (site == Green) {
                    out[colourAt(grid, 1 - x, y)] = beside;
                    out[colourAt(grid, x, 1 - y)] = below;
                } else {
                    out[site == Red ? Blue : Red] = diagonal;
                    out[Green] = (beside + below + 1) >> 1;
                }
                return out;
            };
            const Source src(f, m.bytes);
            expectRegion(m, f, src, grid, {0, 0, 2, 2}, corners);
            for (int y = 0; y < 2; ++y)
                for (int x = 0; x < 2; ++x) expectRegion(m, f, src, grid, {x, y, 1, 1}, corners);
        }
}

TEST_P(CfaToRgb, AFlatFrameGivesItsValueEverywhere)
{
    const Member& m = GetParam();
    for (auto [w, h] : {std::pair{2, 2}, {3, 5}, {7, 6}, {40, 9}, {5, 33}})
        for (int value : {0, 1, m.top / 2, m.top - 1, m.top})
            for (KelBayerGrid grid : kGrids) {
                const Frame f = flatFrame(w, h, value);
                const Source src(f, m.bytes);
                expectRegion(m, f, src, grid, {0, 0, w, h}, [value](int, int) { return Trio{value, value, value}; });
            }
}

// The site (2,2), red under RGGB and blue under BGGR, in a 5 x 5 frame whose
// interior is that one pixel; its own colour 90, the diagonals 77; the
// neighbours above, below, left and right 10, 20, 30 and 41.
Frame aroundTwoTwo(int above2, int below2, int left2, int right2)
{
    Frame f = flatFrame(5, 5, 77);
    f.at(2, 2) = 90;
    f.at(2, 1) = 10, f.at(2, 3) = 20, f.at(1, 2) = 30, f.at(3, 2) = 41;
    f.at(2, 0) = above2, f.at(2, 4) = below2, f.at(0, 2) = left2, f.at(4, 2) = right2;
    return f;
}

// No change either way at an interior red site: green is the four-neighbour
// mean (10 + 20 + 30 + 41 + 2) >> 2 = 25, not 15 or 36.
TEST_P(CfaToRgb, NoChangeEitherWayTakesTheFourNeighbourMean)
{
    const Member& m = GetParam();
    const Frame f = aroundTwoTwo(60, 60, 50, 50);
    const Source src(f, m.bytes);
    for (auto [grid, want] : {std::pair{kelBayerGridRGGB, Trio{90, 25, 77}}, {kelBayerGridBGGR, Trio{77, 25, 90}}}) {
        expectRegion(m, f, src, grid, {2, 2, 1, 1}, [want = want](int, int) { return want; });
        const Pixels whole = wholeFrameCall(m, f, src, grid);
        EXPECT_EQ(want, whole.want()(2, 2)) << gridName(grid);
    }
}

// A region of one pixel at (2,2) takes the gradient test: green from the pair
// across the smaller change, (10 + 20 + 1) >> 1 = 15 or (30 + 41 + 1) >> 1 = 36.
TEST_P(CfaToRgb, OnePixelAtTwoTwoTakesTheGradientTest)
{
    const Member& m = GetParam();
    for (auto [f, green] : {std::pair{aroundTwoTwo(50, 50, 0, 200), 15}, {aroundTwoTwo(0, 200, 50, 50), 36},
                            {aroundTwoTwo(100, 98, 100, 103), 15}, {aroundTwoTwo(100, 103, 100, 98), 36}}) {
        const Source src(f, m.bytes);
        expectRegion(m, f, src, kelBayerGridRGGB, {2, 2, 1, 1}, [green = green](int, int) { return Trio{90, green, 77}; });
    }
}

// A region of one pixel at (1,1), an edge pixel: no gradient test, green is
// the four-neighbour mean 25 although the changes two away differ.
TEST_P(CfaToRgb, OnePixelAtOneOneTakesNoGradientTest)
{
    const Member& m = GetParam();
    Frame f = flatFrame(7, 7, 77);
    f.at(1, 1) = 90;
    f.at(1, 0) = 10, f.at(1, 2) = 20, f.at(0, 1) = 30, f.at(2, 1) = 41;
    f.at(1, 3) = 0, f.at(3, 1) = 200;  // two below and two right, differing by far from (1,1)
    const Source src(f, m.bytes);
    // (1,1) is blue under RGGB, red under BGGR
    expectRegion(m, f, src, kelBayerGridRGGB, {1, 1, 1, 1}, [](int, int) { return Trio{77, 25, 90}; });
    expectRegion(m, f, src, kelBayerGridBGGR, {1, 1, 1, 1}, [](int, int) { return Trio{90, 25, 77}; });
}

// The pattern follows the frame, not the region.
TEST_P(CfaToRgb, ARegionFromThreeThreeGivesTheWholeFramesPixels)
{
    const Member& m = GetParam();
    for (KelBayerGrid grid : kGrids) {
        const Frame f = filledFrame(11, 10, m.top, 33u + grid);
        const Source src(f, m.bytes);
        const Pixels whole = wholeFrameCall(m, f, src, grid);
        expectRegion(m, f, src, grid, {3, 3, 8, 7}, whole.want());
        expectRegion(m, f, src, grid, {3, 3, 4, 4}, whole.want());
        expectRegion(m, f, src, grid, {3, 3, 8, 7}, modelOf(f, grid));
    }
}

// ---- regions inside the frame -------------------------------------------------------------------

// Every region of small frames, each in a destination of the frame's size:
// its pixels as the whole-frame call's, the rest of the destination untouched.
TEST_P(CfaToRgb, EveryRegionOfSmallFramesGivesTheWholeFramesPixels)
{
    const Member& m = GetParam();
    int failures = 0;
    for (auto [w, h] : {std::pair{2, 2}, {3, 2}, {2, 3}, {3, 3}, {4, 5}, {5, 4}, {5, 5}, {6, 6}, {7, 5}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * 10 + h + 100 * grid), Fill::Levels);
            const Source src(f, m.bytes);
            const Pixels whole = wholeFrameCall(m, f, src, grid);
            ASSERT_TRUE(expectRegion(m, f, src, grid, {0, 0, w, h}, modelOf(f, grid)));
            Destination dst(w, h, m.bytes);
            for (int x0 = 0; x0 < w; ++x0)
                for (int y0 = 0; y0 < h; ++y0)
                    for (int rw = 1; x0 + rw <= w; ++rw)
                        for (int rh = 1; y0 + rh <= h; ++rh) {
                            dst.refill();
                            if (!expectRegion(m, f, src, dst, grid, {x0, y0, rw, rh}, whole.want()) && ++failures >= 8)
                                return;
                        }
        }
}

// Offsets of every parity from both ends, lengths from 1 to the far edge.
std::vector<int> starts(int n)
{
    std::vector<int> v;
    for (int s : {0, 1, 2, 3, 4, n - 5, n - 4, n - 3, n - 2, n - 1})
        if (s >= 0 && s < n && std::find(v.begin(), v.end(), s) == v.end()) v.push_back(s);
    return v;
}
std::vector<int> lengths(int rest)
{
    std::vector<int> v;
    for (int l : {1, 2, 3, 4, 5, rest - 2, rest - 1, rest})
        if (l >= 1 && l <= rest && std::find(v.begin(), v.end(), l) == v.end()) v.push_back(l);
    return v;
}

TEST_P(CfaToRgb, RegionsAtEveryParityGiveTheWholeFramesPixels)
{
    const Member& m = GetParam();
    int failures = 0;
    for (auto [w, h] : {std::pair{13, 12}, {14, 11}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * h + grid));
            const Source src(f, m.bytes);
            const Pixels whole = wholeFrameCall(m, f, src, grid);
            ASSERT_TRUE(expectRegion(m, f, src, grid, {0, 0, w, h}, modelOf(f, grid)));
            Destination dst(w, h, m.bytes);
            for (int x0 : starts(w))
                for (int rw : lengths(w - x0))
                    for (int y0 : starts(h))
                        for (int rh : lengths(h - y0)) {
                            dst.refill();
                            if (!expectRegion(m, f, src, dst, grid, {x0, y0, rw, rh}, whole.want()) && ++failures >= 8)
                                return;
                        }
        }
}

// Wide regions run the interior in vectors: from every parity of the first
// pixel, ending at the frame's edge or short of it by one to three columns
// (tails of every length), in frames fenced at either end.
TEST_P(CfaToRgb, WideRegionsAtEveryParityGiveTheWholeFramesPixels)
{
    const Member& m = GetParam();
    int failures = 0;
    for (auto [w, h, fence] : {std::tuple{150, 10, Fence::End}, {133, 9, Fence::Front}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * 5 + h + grid), Fill::Levels);
            const Source src(f, m.bytes, fence);
            const Pixels whole = wholeFrameCall(m, f, src, grid);
            ASSERT_TRUE(expectRegion(m, f, src, grid, {0, 0, w, h}, modelOf(f, grid)));
            Destination dst(w, h, m.bytes);
            for (int x0 = 0; x0 <= 5; ++x0)
                for (int y0 = 0; y0 <= 3; ++y0)
                    for (int rw : {w - x0, w - x0 - 1, w - x0 - 2, w - x0 - 3, w - x0 - 4, 97, 64, 33})
                        for (int rh : {h - y0, h - y0 - 2, 1}) {
                            dst.refill();
                            if (!expectRegion(m, f, src, dst, grid, {x0, y0, rw, rh}, whole.want()) && ++failures >= 8)
                                return;
                        }
        }
}

// Named regions, each in a destination of its own size with guards right
// after its last pixel: wholly inside the interior, wholly in the edge zone,
// against each edge, single rows and columns.
TEST_P(CfaToRgb, RegionsInsideOnEdgesAndAlongThemInTightDestinations)
{
    const Member& m = GetParam();
    for (auto [w, h] : {std::pair{12, 11}, {11, 12}, {37, 10}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w + 3 * h + grid), Fill::Levels);
            const Source src(f, m.bytes);
            const Pixels whole = wholeFrameCall(m, f, src, grid);
            const KelImageRect regions[] = {
                // the interior and parts of it
                {2, 2, w - 4, h - 4}, {3, 4, 5, 3}, {5, 5, 1, 1}, {2, 3, w - 5, 1}, {3, 2, 1, h - 4}, {w - 3, h - 3, 1, 1},
                // the edge zone only
                {0, 0, w, 2}, {0, h - 2, w, 2}, {0, 0, 2, h}, {w - 2, 0, 2, h}, {0, 0, 1, 1}, {w - 1, h - 1, 1, 1},
                {1, 3, 1, 4}, {w - 2, 2, 1, h - 4}, {w - 1, 0, 1, h}, {0, h - 1, w, 1}, {1, 1, w - 2, 1},
                // against one edge
                {0, 3, 4, 4}, {w - 4, 3, 4, 4}, {3, 0, 4, 4}, {3, h - 4, 4, 4}, {w - 5, h - 5, 5, 5}, {1, 1, 3, 3},
                // rows and columns
                {0, 5, w, 1}, {1, 6, w - 1, 1}, {5, 0, 1, h}, {6, 1, 1, h - 1}, {4, 4, 2, 1}, {4, 4, 1, 2},
            };
            for (const KelImageRect& roi : regions) expectRegion(m, f, src, grid, roi, whole.want());
        }
}

// ---- regions reaching past the frame ----------------------------------------------------------

// Only positions inside the frame are written, each at its own place in the
// destination; the source ends (or begins) against an inaccessible page, so a
// read past the frame faults.
TEST_P(CfaToRgb, RegionsPastTheFrameWriteOnlyItsInsidePart)
{
    const Member& m = GetParam();
    for (auto [w, h] : {std::pair{7, 6}, {2, 2}, {6, 5}, {40, 9}})
        for (Fence fence : {Fence::End, Fence::Front})
            for (KelBayerGrid grid : kGrids) {
                const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * 3 + h + grid));
                const Source src(f, m.bytes, fence);
                const KelImageRect regions[] = {
                    {0, 0, w + 3, h + 2}, {2 % w, 1, w, h}, {0, 0, w + 1, 1}, {1, h - 1, w + 5, 4},  // wider and taller
                    {-2, -3, w, h}, {-1, 0, 3, 3}, {0, -1, 3, 3}, {-3, -3, w + 6, h + 6},           // from left of or above it
                    {-1, h - 1, w + 2, 2}, {w - 1, -2, 4, h + 4},
                };
                for (const KelImageRect& roi : regions) expectRegion(m, f, src, grid, roi, modelOf(f, grid));
            }
}

// A region with no pixel in the frame: kelOk and nothing written.
TEST_P(CfaToRgb, RegionsWithNoPixelInTheFrameWriteNothing)
{
    const Member& m = GetParam();
    const Want never = [](int x, int y) -> Trio {
        ADD_FAILURE() << "no position is in the frame: " << x << "," << y;
        return {};
    };
    for (auto [w, h] : {std::pair{7, 6}, {2, 2}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w + h + grid));
            const Source src(f, m.bytes);
            const KelImageRect regions[] = {
                {w, 0, 3, 3}, {w + 5, 1, 2, 2}, {0, h, 3, 3}, {1, h + 1, 2, 2}, {w, h, 1, 1},   // beginning past it
                {-3, 0, 3, 3}, {0, -2, 2, 2}, {-w - 1, 0, w, 2}, {INT_MIN, 0, 5, 5}, {0, INT_MIN, 3, 3},  // ending before it
                {1, 1, 0, 3}, {1, 1, 3, 0}, {1, 1, -1, 3}, {1, 1, 3, -2}, {0, 0, 0, 0}, {0, 0, INT_MIN, INT_MIN},  // empty
                {-1, -1, 0, 0},
                {INT_MAX - 1, 0, 10, 3}, {0, INT_MAX, 3, INT_MAX},  // x + width, y + height past INT_MAX
            };
            for (const KelImageRect& roi : regions) {
                Destination dst(std::clamp(roi.width, 1, 8), std::clamp(roi.height, 1, 8), m.bytes);
                expectRegion(m, f, src, dst, grid, roi, never);
            }
        }
}

// A region of any width or height: the destination holds only the part
// inside the frame, with guards right after it.
TEST_P(CfaToRgb, HugeRegionsWriteOnlyTheFramesPart)
{
    const Member& m = GetParam();
    for (KelBayerGrid grid : kGrids) {
        const Frame f = filledFrame(9, 7, m.top, 90u + grid);
        const Source src(f, m.bytes);
        for (const KelImageRect& roi : {KelImageRect{0, 0, INT_MAX, INT_MAX}, {1, 2, INT_MAX - 1, INT_MAX - 2},
                                         {-5, -4, INT_MAX, INT_MAX}, {3, 3, INT_MAX / 2, 2},
                                         {2, 1, INT_MAX, INT_MAX}}) {  // the far corner past INT_MAX
            // destination columns up to the frame's last one, rows likewise
            const int dw = std::min<long long>(f.width - 1LL - roi.x + 1, roi.width);
            const int dh = std::min<long long>(f.height - 1LL - roi.y + 1, roi.height);
            Destination dst(dw, dh, m.bytes);
            expectRegion(m, f, src, dst, grid, roi, modelOf(f, grid));
        }
    }
}

// ---- strides ------------------------------------------------------------------------------------

TEST_P(CfaToRgb, RowsWithPaddingOnEitherSide)
{
    const Member& m = GetParam();
    for (int srcPadding : {0, 1, 3, 64, 333})
        for (int dstPadding : {0, 1, 9, 128})
            for (KelBayerGrid grid : kGrids) {
                const Frame f = filledFrame(19, 9, m.top, std::uint32_t(srcPadding * 5 + dstPadding + grid));
                const Source src(f, m.bytes, Fence::End, srcPadding);
                Destination whole(19, 9, m.bytes, dstPadding), part(7, 5, m.bytes, dstPadding);
                expectRegion(m, f, src, whole, grid, {0, 0, 19, 9}, modelOf(f, grid));
                expectRegion(m, f, src, part, grid, {3, 2, 7, 5}, modelOf(f, grid));
            }
}

// The 16u strides are in bytes: an odd one loses its low bit.
TEST(CfaToRgb16u, OddByteStridesRoundDownToWholeSamples)
{
    const Member& m = kMembers[1];
    for (auto [w, h] : {std::pair{9, 7}, {17, 9}, {2, 2}, {64, 6}})
        for (KelBayerGrid grid : kGrids) {
            const Frame f = filledFrame(w, h, m.top, std::uint32_t(w * h + grid));
            const Source src(f, 2, Fence::End, 3, 1);
            ASSERT_EQ(1, src.stride() % 2);
            Destination whole(w, h, 2, 4, 1);
            ASSERT_EQ(1, whole.stride() % 2);
            expectRegion(m, f, src, whole, grid, {0, 0, w, h}, modelOf(f, grid));
            Destination part(w - 1, h - 1, 2, 2, 1);
            expectRegion(m, f, src, part, grid, {1, 1, w - 1, h - 1}, modelOf(f, grid));
        }
}

const auto memberName = [](const auto& info) { return std::string(info.param.bytes == 1 ? "8u" : "16u"); };
INSTANTIATE_TEST_SUITE_P(Cfa, CfaToRgb, ::testing::ValuesIn(kMembers), memberName);

} // namespace
