// The fuzz targets' shared harness: a reader that turns the fuzzer's bytes into
// sizes, strides, enumerations, floats and pixel data (edge values included),
// images of guard-paged buffers laid out from those arguments, and the check
// after every call: the status is one of the library's, and no byte changed
// outside what the call may write.
//
// How a target is built (fuzz_ycbcr.cpp is the model):
//   - A table of members, kfz::Member{name, run}, one per exported function;
//     the first input byte picks the member.  Members of one call shape share
//     a wrapper macro that names the function in full.
//   - A run function reads the arguments it needs from the Input and calls
//     kfz::convert(in, name, srcSide, dstSide, flags, call) for an image
//     operation, or does its own checking with Buffer for anything else.
//   - convert() draws the size (0, 1, negative, huge, mostly small), the
//     strides of every buffer (tight, padded, negative, zero, too small so
//     that rows overlap, extreme), which pointer to make null (rarely), and
//     the team size; lays the images out from the Sides; fills them from the
//     back of the input; calls; and aborts with a report when the status is
//     unknown, when a failed call changed anything, or when a byte outside
//     the destination's rows (guards, row padding, the source) changed.
//   - convertAt() does the same at a size the run function draws itself (a
//     member with a path for large images), with a hook that shapes the
//     samples before the call (shapeFloats: floats in a range, edge values
//     among them); keepsAlpha() wraps a call so that the alpha samples of a
//     four-sample destination are checked as well.
//
// Memory: no buffer spans more than kMaxSpan bytes.  A size that fails the
// argument tests (width or height below 1) gets empty buffers that sit right
// at an inaccessible page, so a call that went ahead anyway faults; a size
// that passes them is shrunk until its images fit (large widths stay large,
// parities are kept).
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"

namespace kfz {

// ---- input ------------------------------------------------------------------

// Arguments come from the front of the input, pixel data from the back, so a
// mutation of one seldom shifts the other.  An exhausted front reads as 0,
// which every reader below maps to a plain, common value; an exhausted back
// continues with a generator seeded from the input.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), front_(0), back_(size)
    {
        for (std::size_t i = 0; i < size; ++i) seed_ = (seed_ ^ data[i]) * 0x100000001B3ull;
    }

    std::uint8_t u8() { return front_ < back_ ? data_[front_++] : 0; }
    std::uint16_t u16() { return static_cast<std::uint16_t>(u8() | u8() << 8); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(u16()) | static_cast<std::uint32_t>(u16()) << 16; }
    // 0 .. n - 1.
    int below(int n) { return n > 1 ? static_cast<int>(u16() % static_cast<unsigned>(n)) : 0; }
    // True once in n draws (never on an exhausted input).
    bool oneIn(int n) { return u8() % n == static_cast<unsigned>(n - 1); }

    // A width or height: mostly small, with 0, 1, negative, large and huge values.
    int dimension()
    {
        switch (u8() % 32) {
        case 1: return 0;
        case 2: return -1;
        case 3: return -2 - static_cast<int>(u16());
        case 4: return INT_MIN;
        case 5: return INT_MAX;
        case 6: return 1 << (16 + u8() % 15);  // huge: shrunk, or refused by a size test
        case 7: return 65536 + u16();
        case 8: return 1;
        case 9:
        case 10: return 2 + u8();              // up to 257
        default: return 1 + u8() % 24;         // the common case; an exhausted input gives 1
        }
    }

    // Any 32-bit value, with the edges more likely.
    int anyInt()
    {
        switch (u8() % 8) {
        case 1: return INT_MIN;
        case 2: return INT_MAX;
        case 3: return -1;
        case 4: return static_cast<int>(u8()) - 128;
        case 5: return static_cast<int>(u32());
        default: return u8();
        }
    }

    // A float: zeros, ones, NaN, infinities, the extremes, denormals, raw bit
    // patterns and plain small values.
    float f32()
    {
        switch (u8() % 20) {
        case 1: return -0.0f;
        case 2: return 1.0f;
        case 3: return -1.0f;
        case 4: return std::numeric_limits<float>::quiet_NaN();
        case 5: return std::numeric_limits<float>::infinity();
        case 6: return -std::numeric_limits<float>::infinity();
        case 7: return FLT_MAX;
        case 8: return -FLT_MAX;
        case 9: return FLT_MIN;
        case 10: return std::numeric_limits<float>::denorm_min();
        case 11: return 0.5f;
        case 12: return 255.0f;
        case 13: return 65535.0f;
        case 14:
        case 15: {
            const std::uint32_t bits = u32();
            float f;
            std::memcpy(&f, &bits, sizeof f);
            return f;
        }
        case 16:
        case 17: return static_cast<float>(static_cast<std::int16_t>(u16())) / 256.0f;
        case 0: return 0.0f;
        default: return static_cast<float>(u8()) / 255.0f;
        }
    }

    // Pixel data, from the back of the input.
    void pixels(std::uint8_t* dst, std::size_t n)
    {
        const std::size_t taken = std::min(n, back_ - front_);
        back_ -= taken;
        std::memcpy(dst, data_ + back_, taken);
        for (std::size_t i = taken; i < n; i += 8) {
            seed_ ^= seed_ << 13;
            seed_ ^= seed_ >> 7;
            seed_ ^= seed_ << 17;
            std::memcpy(dst + i, &seed_, std::min<std::size_t>(8, n - i));
        }
    }

private:
    const std::uint8_t* data_;
    std::size_t front_, back_;
    std::uint64_t seed_ = 0xCBF29CE484222325ull;
};

// ---- reporting --------------------------------------------------------------

// What the current call was, for the report of a failed check.
struct CallRecord {
    const char* name = "";
    KelImageSize size{};
    KelResult status = 0;
    char strides[256] = "";
    char detail[256] = "";
};
inline CallRecord& record()
{
    static CallRecord r;
    return r;
}

[[noreturn]] inline void fail(const char* what)
{
    const CallRecord& r = record();
    std::fprintf(stderr, "\n==== kfz: %s\n     %s, size %d x %d, status %d\n     %s\n     %s\n", what, r.name,
                 r.size.width, r.size.height, r.status, r.strides, r.detail);
    std::abort();
}

inline bool knownStatus(KelResult s)
{
    switch (s) {
    case kelOk: case kelWarnNegativeMax: case kelWarnOddSize: case kelErrBadArg: case kelErrSize:
    case kelErrNullPointer: case kelErrNoMemory: case kelErrStep: case kelErrContext: case kelErrGammaRange:
    case kelErrDitherLevels: case kelErrNoiseRange:
        return true;
    default:
        return false;
    }
}

// ---- guarded buffers --------------------------------------------------------

// Largest span of one buffer: images are shrunk to keep within it.
constexpr std::int64_t kMaxSpan = 1 << 19;

inline std::size_t pageSize()
{
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

inline std::int64_t floorDiv(std::int64_t a, std::int64_t b)
{
    const std::int64_t q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

// Rows first .. end - 1 of rowBytes bytes each, row y at origin + y * step for
// any step (negative, zero, smaller than a row: rows then overlap), in a
// mapping of their own between two inaccessible pages.  The rows' span abuts
// the page after it, or, with fenceLow, the page before it; the other side
// has at least 64 guard bytes.  An empty buffer (no rows or no bytes) has its
// origin right at the inaccessible page.
class Buffer {
public:
    Buffer(std::int64_t rowBytes, int first, int end, std::int64_t step, bool fenceLow)
        : rowBytes_(rowBytes), first_(first), end_(end), step_(step)
    {
        std::int64_t lo = 0, hi = 0;
        if (rowBytes > 0 && end > first) {
            const std::int64_t a = first * step, b = static_cast<std::int64_t>(end - 1) * step;
            lo = std::min(a, b);
            hi = std::max(a, b) + rowBytes;
        }
        const std::size_t page = pageSize();
        const std::size_t span = static_cast<std::size_t>(hi - lo);
        body_ = (span + 64 + page - 1) / page * page;
        map_ = static_cast<std::uint8_t*>(mmap(nullptr, body_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (map_ == MAP_FAILED || mprotect(map_ + page, body_, PROT_READ | PROT_WRITE) != 0) {
            std::perror("kfz: mmap");
            std::abort();
        }
        base_ = map_ + page;
        // Row 0 lies -lo bytes into the span.
        const std::size_t spanStart = fenceLow && span > 0 ? 0 : body_ - span;
        origin_ = base_ + spanStart - lo;
        static const std::vector<std::uint8_t> pattern = [] {
            std::vector<std::uint8_t> p(pageSize());
            for (std::size_t i = 0; i < p.size(); ++i) p[i] = static_cast<std::uint8_t>(0xA5u ^ (i * 29u) ^ (i >> 8));
            return p;
        }();
        for (std::size_t i = 0; i < body_; i += page) std::memcpy(base_ + i, pattern.data(), page);
    }
    ~Buffer() { munmap(map_, body_ + 2 * pageSize()); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    std::uint8_t* origin() { return origin_; }
    std::int64_t step() const { return step_; }

    void fill(Input& in)
    {
        if (rowBytes_ <= 0) return;
        for (int y = first_; y < end_; ++y) in.pixels(origin_ + y * step_, static_cast<std::size_t>(rowBytes_));
    }
    void snapshot() { before_.assign(base_, base_ + body_); }
    bool changed() const { return std::memcmp(before_.data(), base_, body_) != 0; }

    // The offset from row 0 of the first byte that changed outside rows
    // yFirst .. yEnd - 1, bytes 0 .. bytes - 1 of each; INT64_MIN if none.
    std::int64_t changedOutside(std::int64_t bytes, int yFirst, int yEnd) const
    {
        constexpr std::size_t kChunk = 256;
        for (std::size_t c = 0; c < body_; c += kChunk) {
            if (std::memcmp(base_ + c, before_.data() + c, kChunk) == 0) continue;  // body_ is whole pages
            for (std::size_t i = c; i < c + kChunk; ++i) {
                if (base_[i] == before_[i]) continue;
                const std::int64_t o = base_ + i - origin_;
                if (!inRows(o, bytes, yFirst, yEnd)) return o;
            }
        }
        return INT64_MIN;
    }

private:
    // Whether some row y in [yFirst, yEnd) holds offset o in its first `bytes`.
    bool inRows(std::int64_t o, std::int64_t bytes, int yFirst, int yEnd) const
    {
        if (bytes <= 0 || yEnd <= yFirst) return false;
        std::int64_t lo, hi;  // the rows whose span [y * step, y * step + bytes) holds o
        if (step_ == 0) {
            return o >= 0 && o < bytes;
        } else if (step_ > 0) {
            lo = floorDiv(o - bytes, step_) + 1;
            hi = floorDiv(o, step_);
        } else {
            const std::int64_t t = -step_;
            lo = floorDiv(-o + t - 1, t);
            hi = floorDiv(bytes - 1 - o, t);
        }
        return std::max<std::int64_t>(lo, yFirst) <= std::min<std::int64_t>(hi, yEnd - 1);
    }

    std::int64_t rowBytes_;
    int first_, end_;
    std::int64_t step_;
    std::uint8_t* map_ = nullptr;
    std::uint8_t* base_ = nullptr;
    std::uint8_t* origin_ = nullptr;
    std::size_t body_ = 0;
    std::vector<std::uint8_t> before_;
};

// ---- image layouts ----------------------------------------------------------

enum class Shape : std::uint8_t {
    Pixels,      // one buffer of `samples` samples a pixel (C1, C3, AC4, C4)
    Planes,      // `samples` full-size planes sharing one stride (P3, AP4)
    Ycc,         // Y plane and two chroma planes, a stride each (array of three)
    SemiPlanar,  // Y plane and a plane of chroma pairs, two pointer-stride arguments
    Pairs,       // 4:2:2 pixel order, two bytes a pixel
};

struct Side {
    Shape shape = Shape::Pixels;
    std::uint8_t samples = 1;      // Pixels: samples a pixel; Planes: planes
    std::uint8_t sampleBytes = 1;  // 1, 2 or 4
    std::uint8_t xCell = 1, yCell = 1;  // pixels a chroma sample covers
    bool wholeCells = false;       // chroma planes hold whole cells only, else the cells rounded up
};

constexpr Side pixels(int samples, int sampleBytes = 1)
{
    return {Shape::Pixels, static_cast<std::uint8_t>(samples), static_cast<std::uint8_t>(sampleBytes), 1, 1, false};
}
constexpr Side planes(int count, int sampleBytes = 1)
{
    return {Shape::Planes, static_cast<std::uint8_t>(count), static_cast<std::uint8_t>(sampleBytes), 1, 1, false};
}
// Cells rounded up unless `whole`: chroma planes of width / xCell columns and
// height / yCell rows, which is all a member that drops partial cells reads.
constexpr Side ycc(int xCell, int yCell, bool whole)
{
    return {Shape::Ycc, 3, 1, static_cast<std::uint8_t>(xCell), static_cast<std::uint8_t>(yCell), whole};
}
constexpr Side semiPlanar(int xCell, int yCell, bool whole)
{
    return {Shape::SemiPlanar, 2, 1, static_cast<std::uint8_t>(xCell), static_cast<std::uint8_t>(yCell), whole};
}
constexpr Side pairs() { return {Shape::Pairs, 2, 1, 1, 1, false}; }
constexpr Side kNoImage{Shape::Pixels, 0, 1, 1, 1, false};

inline int bufferCount(const Side& s)
{
    switch (s.shape) {
    case Shape::Pixels: return s.samples > 0 ? 1 : 0;
    case Shape::Planes: return s.samples;
    case Shape::Ycc: return 3;
    case Shape::SemiPlanar: return 2;
    case Shape::Pairs: return 1;
    }
    return 0;
}
// Whether every buffer of the side takes the one stride.
inline bool sharedStride(const Side& s) { return s.shape == Shape::Planes; }

// One buffer of an image: what it holds and what a call may write of it.
struct PlaneGeometry {
    std::int64_t rowBytes = 0;
    int first = 0, end = 0;           // rows held: first .. end - 1 (first < 0: rows above the region)
    std::int64_t writeBytes = -1;     // bytes of a row a call may write (-1: rowBytes)
    int writeFirst = 0, writeEnd = -1;  // rows a call may write (-1: end)
};
using Layout = std::vector<PlaneGeometry>;

inline std::int64_t cells(std::int64_t n, int cell, bool whole) { return whole ? n / cell : (n + cell - 1) / cell; }

inline Layout layoutOf(const Side& s, std::int64_t w, std::int64_t h)
{
    Layout l(static_cast<std::size_t>(bufferCount(s)));
    const auto set = [](PlaneGeometry& g, std::int64_t bytes, std::int64_t rows) {
        g.rowBytes = bytes;
        g.end = static_cast<int>(rows);
    };
    switch (s.shape) {
    case Shape::Pixels:
        if (!l.empty()) set(l[0], w * s.samples * s.sampleBytes, h);
        break;
    case Shape::Planes:
        for (auto& g : l) set(g, w * s.sampleBytes, h);
        break;
    case Shape::Ycc:
        set(l[0], w, h);
        set(l[1], cells(w, s.xCell, s.wholeCells), cells(h, s.yCell, s.wholeCells));
        set(l[2], cells(w, s.xCell, s.wholeCells), cells(h, s.yCell, s.wholeCells));
        break;
    case Shape::SemiPlanar:
        set(l[0], w, h);
        set(l[1], 2 * cells(w, s.xCell, s.wholeCells), cells(h, s.yCell, s.wholeCells));
        break;
    case Shape::Pairs:
        set(l[0], 2 * w, h);
        break;
    }
    return l;
}

// Bytes a pixel takes over all buffers of a side, rounded up: for the memory cap.
inline std::int64_t bytesPerPixel(const Side& s)
{
    switch (s.shape) {
    case Shape::Pixels: return s.samples * s.sampleBytes;
    case Shape::Planes: return s.samples * s.sampleBytes;
    default: return 3;
    }
}

// ---- strides ----------------------------------------------------------------

// A row stride for a buffer whose rows hold `natural` bytes: tight or padded
// most of the time, else negative, zero, too small (rows overlap), one sample,
// or an extreme value where the rows cannot reach it (a single row, or a call
// refused anyway).  Always a multiple of the sample size, as the families on
// wider samples require.  Within kMaxSpan over `rows` rows.
inline int drawStride(Input& in, std::int64_t natural, int rows, int sampleBytes, bool anyValue)
{
    const std::int64_t pad = sampleBytes * (1 + in.u8() % 24);
    std::int64_t s;
    switch (in.u8() % 20) {
    case 1: s = -natural; break;
    case 2: s = -(natural + pad); break;
    case 3: s = 0; break;
    case 4: s = natural > sampleBytes ? natural - sampleBytes * (1 + in.below(static_cast<int>(natural / sampleBytes - 1))) : 0; break;
    case 5: s = sampleBytes; break;
    case 6: s = -sampleBytes; break;
    case 7: s = in.anyInt(); break;
    case 8:
    case 9:
    case 10: s = natural + pad; break;
    default: s = natural; break;
    }
    s = s / sampleBytes * sampleBytes;
    s = std::clamp<std::int64_t>(s, INT_MIN, INT_MAX) / sampleBytes * sampleBytes;
    if (!anyValue && rows > 1 && (std::abs(s) * (rows - 1) + natural > kMaxSpan)) s = natural;
    return static_cast<int>(s);
}

// ---- images -----------------------------------------------------------------

enum : unsigned {
    kInPlace = 1,      // the source is also the destination
    kTight = 2,        // no strides: rows lie back to back (the forms without R)
};

// The buffers of one side of a call, with the pointers and strides it takes.
class Image {
public:
    Image() = default;
    Image(const Side& side, const Layout& layout, Input& in, bool refused, unsigned flags) : side_(side), layout_(layout)
    {
        const int n = static_cast<int>(layout.size());
        int shared = 0;
        for (int i = 0; i < n; ++i) {
            const PlaneGeometry& g = layout[i];
            int step;
            if (flags & kTight) {
                step = static_cast<int>(g.rowBytes);
            } else if (i > 0 && sharedStride(side)) {
                step = shared;
            } else {
                std::int64_t natural = g.rowBytes;
                if (sharedStride(side))
                    for (const auto& o : layout) natural = std::max(natural, o.rowBytes);
                step = drawStride(in, std::max<std::int64_t>(natural, side.sampleBytes), g.end - g.first, side.sampleBytes,
                                  refused);
                shared = step;
            }
            steps[i] = step;
            buffers_.push_back(std::make_unique<Buffer>(g.rowBytes, g.first, g.end, step, in.oneIn(4)));
            pointers[i] = buffers_.back()->origin();
        }
    }

    // What the calls take.  `absent` makes the pixel pointer (or the plane
    // array's address) null; pointers[i] may be set to null for a plane.
    std::array<std::uint8_t*, 4> pointers{};
    std::array<int, 4> steps{};
    bool absent = false;

    template <typename T = Kel8u> T* ptr(int i = 0) const
    {
        return (absent && i == 0) ? nullptr : reinterpret_cast<T*>(pointers[i]);
    }
    template <typename T = Kel8u> T* const* planes() const
    {
        return absent ? nullptr : reinterpret_cast<T* const*>(pointers.data());
    }
    int step(int i = 0) const { return steps[i]; }
    const int* stepArray() const { return steps.data(); }

    std::size_t count() const { return buffers_.size(); }
    Buffer& buffer(std::size_t i) { return *buffers_[i]; }
    const PlaneGeometry& geometry(std::size_t i) const { return layout_[i]; }
    const Side& side() const { return side_; }

    void fill(Input& in)
    {
        for (auto& b : buffers_) b->fill(in);
    }
    void snapshot()
    {
        for (auto& b : buffers_) b->snapshot();
    }
    bool changed() const
    {
        for (const auto& b : buffers_)
            if (b->changed()) return true;
        return false;
    }

private:
    Side side_{};
    Layout layout_;
    std::vector<std::unique_ptr<Buffer>> buffers_;
};

// Shrinks a size that passes the size tests until images of `bytesPerPixel`
// (all buffers of both sides) fit the cap: widths above 4096 become 4096 plus
// their value mod 8, heights are cut to what the width leaves, parity kept.
inline void shrink(int& w, int& h, std::int64_t bytesPerPixel)
{
    if (w > 4096 + 7) w = 4096 + (w & 7);
    const std::int64_t rowCost = std::max<std::int64_t>(1, static_cast<std::int64_t>(w) * bytesPerPixel);
    const std::int64_t maxRows = std::max<std::int64_t>(1, kMaxSpan / 4 / rowCost);
    if (h > maxRows) h = static_cast<int>(std::max<std::int64_t>(1, maxRows - ((maxRows ^ h) & 1)));
}

// Which pointer a call gets as null, rarely: -1 none; else (side, index) with
// index 0 the pointer argument (or plane array) and i > 0 buffer i - 1 of it.
struct NullChoice {
    int side = -1, index = 0;
};
inline NullChoice drawNull(Input& in, const Image& src, const Image& dst, bool hasSrc, bool hasDst)
{
    NullChoice c;
    if (!in.oneIn(24)) return c;
    const int side = in.u8() & 1;
    const Image& im = side == 0 ? src : dst;
    if ((side == 0 && !hasSrc) || (side == 1 && !hasDst) || im.count() == 0) return c;
    c.side = side;
    c.index = in.below(static_cast<int>(im.count()) + 1);
    return c;
}
inline void applyNull(const NullChoice& c, Image& src, Image& dst)
{
    if (c.side < 0) return;
    Image& im = c.side == 0 ? src : dst;
    if (c.index == 0) {
        im.absent = true;
    } else if (im.side().shape == Shape::SemiPlanar) {
        im.pointers[c.index - 1] = nullptr;  // Y or chroma pointer argument
        if (c.index == 1) im.absent = true;
    } else {
        im.pointers[c.index - 1] = nullptr;
    }
}

// Reads the team size for the call: 1 or 2 threads.
inline void drawThreads(Input& in) { threads_omp_of_n_kel = 1 + (in.u8() & 1); }

// The checks after a call.  A refused size, a null pointer, an error status or
// kelWarnNegativeMax: nothing may have changed, anywhere.  Otherwise each
// destination buffer may change only in its rows' write region, and the
// source (unless in place) not at all.
inline void check(KelResult status, Image& src, Image& dst, bool nothingAllowed, bool nullGiven, unsigned flags)
{
    record().status = status;
    if (!knownStatus(status)) fail("status outside the library's codes");
    if (nullGiven && status >= 0) fail("a null pointer was accepted");
    if (status < 0 || status == kelWarnNegativeMax) nothingAllowed = true;
    Image& out = (flags & kInPlace) ? src : dst;
    for (std::size_t i = 0; i < out.count(); ++i) {
        const PlaneGeometry& g = out.geometry(i);
        if (nothingAllowed) {
            if (out.buffer(i).changed()) {
                std::snprintf(record().detail, sizeof record().detail, "destination buffer %zu changed", i);
                fail("a call that did nothing changed its destination");
            }
            continue;
        }
        const std::int64_t bytes = g.writeBytes < 0 ? g.rowBytes : g.writeBytes;
        const int end = g.writeEnd < 0 ? g.end : g.writeEnd;
        const std::int64_t at = out.buffer(i).changedOutside(bytes, g.writeFirst, end);
        if (at != INT64_MIN) {
            std::snprintf(record().detail, sizeof record().detail,
                          "destination buffer %zu: byte %lld from row 0 (row bytes %lld, rows %d..%d, step %lld)", i,
                          static_cast<long long>(at), static_cast<long long>(bytes), g.writeFirst, end - 1,
                          static_cast<long long>(out.buffer(i).step()));
            fail("write outside the destination's rows");
        }
    }
    if (!(flags & kInPlace))
        for (std::size_t i = 0; i < src.count(); ++i)
            if (src.buffer(i).changed()) {
                std::snprintf(record().detail, sizeof record().detail, "source buffer %zu changed", i);
                fail("the source changed");
            }
}

inline void describe(const Image& src, const Image& dst)
{
    char* p = record().strides;
    const std::size_t n = sizeof record().strides;
    int used = std::snprintf(p, n, "src steps");
    for (std::size_t i = 0; i < src.count() && used < static_cast<int>(n); ++i)
        used += std::snprintf(p + used, n - used, " %d", src.steps[i]);
    if (used < static_cast<int>(n)) used += std::snprintf(p + used, n - used, ", dst steps");
    for (std::size_t i = 0; i < dst.count() && used < static_cast<int>(n); ++i)
        used += std::snprintf(p + used, n - used, " %d", dst.steps[i]);
}

// Reads size, strides, null pointer and team size from the input, lays out
// and fills the images, calls `call(src, dst, size)` and checks.  `adjust`
// may change the layouts (rows above the region, a write region other than
// the rows) before the buffers are made.
// convert() at a size the caller has drawn: shrunk to the cap already, or
// chosen larger on purpose (a member with a path for large images) with no
// buffer past kMaxSpan.  `prepare(src, dst)` runs on the filled images before
// the snapshot, to give the samples a shape of their own (floats in a range).
// The team size is the caller's to set.
template <typename Call, typename Adjust, typename Prepare>
void convertAt(Input& in, const char* name, int w, int h, const Side& srcSide, const Side& dstSide, unsigned flags,
               Call&& call, Adjust&& adjust, Prepare&& prepare)
{
    const bool refused = w < 1 || h < 1;
    Layout ls = refused ? Layout(bufferCount(srcSide)) : layoutOf(srcSide, w, h);
    Layout ld = refused ? Layout(bufferCount(dstSide)) : layoutOf(dstSide, w, h);
    if (!refused) adjust(ls, ld, w, h);
    record() = CallRecord{};
    record().name = name;
    record().size = {w, h};
    const bool hasDst = !(flags & kInPlace) && bufferCount(dstSide) > 0;
    Image src(srcSide, ls, in, refused, flags);
    Image dst = hasDst ? Image(dstSide, ld, in, refused, flags) : Image();
    const NullChoice null = drawNull(in, src, dst, bufferCount(srcSide) > 0, hasDst);
    applyNull(null, src, dst);
    describe(src, dst);
    src.fill(in);
    dst.fill(in);
    prepare(src, dst);
    src.snapshot();
    dst.snapshot();
    const KelResult status = call(src, hasDst ? dst : src, KelImageSize{w, h});
    check(status, src, hasDst ? dst : src, refused, null.side >= 0, hasDst ? flags : flags | kInPlace);
}

template <typename Call, typename Adjust>
void convert(Input& in, const char* name, const Side& srcSide, const Side& dstSide, unsigned flags, Call&& call,
             Adjust&& adjust)
{
    int w = in.dimension(), h = in.dimension();
    drawThreads(in);
    if (w >= 1 && h >= 1) shrink(w, h, bytesPerPixel(srcSide) + bytesPerPixel(dstSide));
    convertAt(in, name, w, h, srcSide, dstSide, flags, std::forward<Call>(call), std::forward<Adjust>(adjust),
              [](Image&, Image&) {});
}

template <typename Call>
void convert(Input& in, const char* name, const Side& srcSide, const Side& dstSide, unsigned flags, Call&& call)
{
    convert(in, name, srcSide, dstSide, flags, std::forward<Call>(call), [](Layout&, Layout&, int, int) {});
}

// ---- sample shapes and alpha -------------------------------------------------

// Gives the 32-bit float samples of an image (every buffer, rows first .. end
// - 1) a shape, by `mode`: 0 leaves the raw bit patterns (NaN, infinities,
// denormals and huge values among them); 1 makes each sample lo + u * (hi -
// lo), u in 0 .. 1 from its own bits; 2 does the same but for one sample in
// sixteen, which becomes an edge value (NaN, an infinity, -0, lo, hi, just
// outside the range, -FLT_MAX, a denormal).
inline void shapeFloats(Image& im, int mode, float lo, float hi)
{
    if (mode == 0) return;
    const double span = static_cast<double>(hi) - lo;
    for (std::size_t i = 0; i < im.count(); ++i) {
        const PlaneGeometry& g = im.geometry(i);
        Buffer& b = im.buffer(i);
        for (int y = g.first; y < g.end; ++y) {
            std::uint8_t* row = b.origin() + y * b.step();
            for (std::int64_t x = 0; x + 4 <= g.rowBytes; x += 4) {
                std::uint32_t bits;
                std::memcpy(&bits, row + x, 4);
                float f = static_cast<float>(lo + span * ((bits >> 8) / 16777215.0));
                if (mode == 2 && (bits & 15) == 0) {
                    switch ((bits >> 4) & 7) {
                    case 0: f = std::numeric_limits<float>::quiet_NaN(); break;
                    case 1: f = std::numeric_limits<float>::infinity(); break;
                    case 2: f = -std::numeric_limits<float>::infinity(); break;
                    case 3: f = -0.0f; break;
                    case 4: f = (bits & 0x100) ? lo : hi; break;
                    case 5: f = (bits & 0x100) ? std::nextafter(lo, -FLT_MAX) : std::nextafter(hi, FLT_MAX); break;
                    case 6: f = -FLT_MAX; break;
                    default: f = std::numeric_limits<float>::denorm_min(); break;
                    }
                }
                std::memcpy(row + x, &f, 4);
            }
        }
    }
}

// The fourth sample of every pixel of an image of four samples a pixel, for
// the members that leave alpha alone: taken before the call and compared
// after a call that succeeded.  Watched only where an alpha sample can't also
// be a colour sample of another row: rows a whole number of pixels apart, or
// rows that don't overlap.
class AlphaWatch {
public:
    AlphaWatch(const Image& im, int sampleBytes, KelImageSize z) : sampleBytes_(sampleBytes)
    {
        if (im.count() == 0 || im.pointers[0] == nullptr || z.width < 1 || z.height < 1) return;
        const std::int64_t pixel = 4 * sampleBytes, step = im.steps[0];
        if (std::abs(step) < pixel * z.width && step % pixel != 0) return;
        for (int y = 0; y < z.height; ++y)
            for (int x = 0; x < z.width; ++x) {
                std::uint8_t* p = im.pointers[0] + y * step + x * pixel + 3 * sampleBytes;
                std::uint32_t v = 0;
                std::memcpy(&v, p, static_cast<std::size_t>(sampleBytes));
                watched_.push_back({p, v});
            }
    }

    void verify(KelResult status) const
    {
        if (status < 0) return;
        for (const auto& [p, v] : watched_) {
            std::uint32_t now = 0;
            std::memcpy(&now, p, static_cast<std::size_t>(sampleBytes_));
            if (now != v) {
                record().status = status;
                std::snprintf(record().detail, sizeof record().detail, "alpha sample at %p changed", static_cast<void*>(p));
                fail("a member that leaves alpha alone wrote it");
            }
        }
    }

private:
    int sampleBytes_;
    std::vector<std::pair<std::uint8_t*, std::uint32_t>> watched_;
};

// Wraps a call (src, dst, size) so that the alpha samples of its destination
// (the image itself, in place) are watched.
template <typename Call> auto keepsAlpha(int sampleBytes, Call call)
{
    return [sampleBytes, call](Image& s, Image& d, KelImageSize z) mutable {
        const AlphaWatch watch(d, sampleBytes, z);
        const KelResult status = call(s, d, z);
        watch.verify(status);
        return status;
    };
}

// ---- targets ----------------------------------------------------------------

struct Member {
    const char* name;
    void (*run)(Input& in);
};

// Whether `name` is in the comma-separated list KFZ_SKIP: members with a known
// finding can be left out while it is open, so that a run finds the next one.
inline bool skipped(const char* name)
{
    static const char* list = std::getenv("KFZ_SKIP");
    if (!list) return false;
    const std::size_t n = std::strlen(name);
    for (const char* p = list; (p = std::strstr(p, name)) != nullptr; p += n)
        if ((p == list || p[-1] == ',') && (p[n] == ',' || p[n] == '\0')) return true;
    return false;
}

// The body of LLVMFuzzerTestOneInput: the first byte picks the member.
// KFZ_VERBOSE=1 names each member as it runs.
template <std::size_t N> int fuzzOne(const Member (&members)[N], const std::uint8_t* data, std::size_t size)
{
    Input in(data, size);
    const Member& m = members[in.u8() % N];
    if (std::getenv("KFZ_VERBOSE")) std::fprintf(stderr, "kfz: %s\n", m.name);
    if (skipped(m.name)) return 0;
    m.run(in);
    return 0;
}

} // namespace kfz

// ---- call shapes ------------------------------------------------------------
// Adapters from (src, dst, size) to a member's argument list, by the shape of
// its image arguments: C a pixel pointer and its stride; P a plane array and
// one stride; Pa a plane array and an array of strides; P2 two pointer-stride
// pairs (Y, chroma pairs); N the forms without strides.  S and D are the
// sample types; trailing arguments (alpha, a matrix, levels, ...) follow the
// size, evaluated at the call (they may read the input).
#define KFZ_C_C(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(), s.step(), d.ptr<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P_P(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.step(), d.planes<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P_C(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.step(), d.ptr<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_C_P(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(), s.step(), d.planes<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_C_Pa(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(), s.step(), d.planes<D>(), d.stepArray(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P_Pa(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.step(), d.planes<D>(), d.stepArray(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_Pa_C(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.stepArray(), d.ptr<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_Pa_P(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.stepArray(), d.planes<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_Pa_Pa(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.stepArray(), d.planes<D>(), d.stepArray(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_Pa_P2(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), s.stepArray(), d.ptr<D>(0), d.step(0), d.ptr<D>(1), d.step(1), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P2_Pa(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(0), s.step(0), s.ptr<const S>(1), s.step(1), d.planes<D>(), d.stepArray(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P2_C(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(0), s.step(0), s.ptr<const S>(1), s.step(1), d.ptr<D>(), d.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_C_P2(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(), s.step(), d.ptr<D>(0), d.step(0), d.ptr<D>(1), d.step(1), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_C_PN(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.ptr<const S>(), d.planes<D>(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P_PN(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), d.planes<D>(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_P_CN(F, S, D, ...) [&](kfz::Image& s, kfz::Image& d, KelImageSize z) { return F(s.planes<const S>(), d.ptr<D>(), z __VA_OPT__(,) __VA_ARGS__); }
// In place: the one image is read and written.
#define KFZ_I_C(F, T, ...) [&](kfz::Image& s, kfz::Image&, KelImageSize z) { return F(s.ptr<T>(), s.step(), z __VA_OPT__(,) __VA_ARGS__); }
#define KFZ_I_P(F, T, ...) [&](kfz::Image& s, kfz::Image&, KelImageSize z) { return F(s.planes<T>(), s.step(), z __VA_OPT__(,) __VA_ARGS__); }

// A table entry for an image member: its name, its two sides (kfz::pixels,
// kfz::planes, kfz::ycc, ...), flags (kfz::kInPlace, kfz::kTight), and the
// call shape with the sample types and any trailing arguments.
#define KFZ_IMAGE(F, SRC, DST, FLAGS, SHAPE, ...) \
    kfz::Member{#F, [](kfz::Input& in) { (void)in; kfz::convert(in, #F, SRC, DST, FLAGS, SHAPE(F, __VA_ARGS__)); }}
