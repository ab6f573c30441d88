// Guarded, padded image buffers for the tests: every byte a call may not touch
// (guards before and after, padding between rows) holds a known pattern that
// is checked after the call, and a fenced buffer ends right at an inaccessible
// page so that a read or write past its last row faults.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"

namespace kt {

enum class Placement {
    Guarded,  // guard bytes before and after the image
    Fenced,   // guard bytes before; the last row's last byte abuts a PROT_NONE page
};

class GuardedImage {
public:
    // rowBytes: bytes a row holds; padding: extra bytes between rows;
    // misalign: offset of row 0 from a 64-byte boundary (for alignment paths).
    GuardedImage(std::size_t rowBytes, int height, Placement placement = Placement::Guarded,
                 std::size_t padding = 13, std::size_t misalign = 0);
    ~GuardedImage();
    GuardedImage(const GuardedImage&) = delete;
    GuardedImage& operator=(const GuardedImage&) = delete;

    std::uint8_t* data() { return first_; }
    std::uint8_t* row(int y) { return first_ + static_cast<std::ptrdiff_t>(step_) * y; }
    const std::uint8_t* row(int y) const { return first_ + static_cast<std::ptrdiff_t>(step_) * y; }
    int step() const { return static_cast<int>(step_); }

    // Fill the image rows (not guards or padding) with pseudo-random bytes.
    void fillRandom(std::uint32_t seed);
    void fill(std::uint8_t value);

    // Snapshot of the image rows, to tell later what a call changed.
    std::vector<std::uint8_t> rows() const;
    // True when guards and row padding still hold their pattern.
    bool fenceIntact() const;

private:
    std::uint8_t patternAt(std::size_t offset) const;

    std::uint8_t* map_ = nullptr;
    std::size_t mapBytes_ = 0;
    std::uint8_t* begin_ = nullptr;  // first guard byte
    std::uint8_t* first_ = nullptr;  // row 0
    std::uint8_t* end_ = nullptr;    // one past the last checked byte
    std::size_t rowBytes_, step_;
    int height_;
};

// Where sample (x, y) of one channel lies: in buffer `plane`, row y / yCell,
// sample (x / xCell) * pitch + offset of that row.
struct Channel {
    int plane = 0, offset = 0, pitch = 1, xCell = 1, yCell = 1;
};

// The one image of the tests: guarded buffers (planes, or a single buffer of
// pixels), a map from channels to samples, and what calls take.
class Image {
public:
    // misalign: offset of each buffer's row 0 from a 64-byte boundary.
    explicit Image(Placement placement = Placement::Guarded, std::size_t sampleBytes = 1, bool planar = false,
                   std::size_t misalign = 0)
        : placement_(placement), sampleBytes_(sampleBytes), planar_(planar), misalign_(misalign) {}

    // Adds a buffer of `samples` x `rows` (both raised to at least 1), with
    // five samples of padding between rows.
    Image& plane(int samples, int rows);
    Image& channel(Channel c) { channels_.push_back(c); return *this; }

    std::size_t count() const { return buffers_.size(); }
    std::uint8_t* row(std::size_t i, int y) { return buffers_[i]->row(y); }
    template <typename T = Kel8u> T& at(int x, int y, int c)
    {
        const Channel& ch = channels_[c];
        return reinterpret_cast<T*>(row(ch.plane, y / ch.yCell))[(x / ch.xCell) * ch.pitch + ch.offset];
    }

    void fill(std::uint32_t seed);                  // random bytes in every row
    void fillWith(std::uint8_t value);
    std::vector<std::uint8_t> rows() const;         // all buffers' rows, in order
    bool intact() const;                            // guards and padding unchanged

    // What calls take; tests may overwrite entries (a null plane, a stride),
    // or make the image absent: a null pixel pointer or plane-array address.
    std::array<std::uint8_t*, 4> pointers{};
    std::array<int, 4> steps{};
    bool absent = false;
    bool planar() const { return planar_; }
    Kel8u* ptr() { return absent ? nullptr : pointers[0]; }
    int step() const { return steps[0]; }
    const Kel8u* const* in() const { return absent ? nullptr : reinterpret_cast<const Kel8u* const*>(pointers.data()); }
    Kel8u* const* out() { return absent ? nullptr : pointers.data(); }
    // A pixel pointer, or the address of the plane array.
    void* arg() { return absent ? nullptr : planar_ ? static_cast<void*>(pointers.data()) : pointers[0]; }

private:
    Placement placement_;
    std::size_t sampleBytes_;
    bool planar_;
    std::size_t misalign_;
    std::vector<std::unique_ptr<GuardedImage>> buffers_;
    std::vector<Channel> channels_;
};

// Sets threads_omp_of_n_kel for one scope and puts the old value back.
class ThreadCount {
public:
    explicit ThreadCount(int n) : saved_(threads_omp_of_n_kel) { threads_omp_of_n_kel = n; }
    ~ThreadCount() { threads_omp_of_n_kel = saved_; }
private:
    int saved_;
};

} // namespace kt
