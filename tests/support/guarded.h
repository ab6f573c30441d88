// Guarded, padded image buffers for the tests: every byte a call may not touch
// (guards before and after, padding between rows) holds a known pattern that
// is checked after the call, and a fenced buffer ends right at an inaccessible
// page so that a read or write past its last row faults.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"

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
    const std::uint8_t* data() const { return first_; }
    std::uint8_t* row(int y) { return first_ + static_cast<std::ptrdiff_t>(step_) * y; }
    const std::uint8_t* row(int y) const { return first_ + static_cast<std::ptrdiff_t>(step_) * y; }
    int step() const { return static_cast<int>(step_); }
    std::size_t rowBytes() const { return rowBytes_; }
    int height() const { return height_; }

    template <typename T> T& at(int x, int y) { return reinterpret_cast<T*>(row(y))[x]; }
    template <typename T> T at(int x, int y) const { return reinterpret_cast<const T*>(row(y))[x]; }

    // Fill the image rows (not guards or padding) with pseudo-random bytes.
    void fillRandom(std::uint32_t seed);
    void fill(std::uint8_t value);

    // Snapshot of the image rows, to tell later what a call changed.
    std::vector<std::uint8_t> rows() const;
    // True when guards and row padding still hold their pattern.
    bool fenceIntact() const;
    // Describes the first damaged guard or padding byte, or "" when intact.
    std::string fenceDamage() const;

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

// Three planes of one size, with the plane-pointer array a planar call takes.
class GuardedPlanes {
public:
    GuardedPlanes(std::size_t rowBytes, int height, Placement placement = Placement::Guarded,
                  std::size_t padding = 13, std::size_t misalign = 0);
    GuardedImage& operator[](int p) { return *planes_[p]; }
    const GuardedImage& operator[](int p) const { return *planes_[p]; }
    Kel8u* const* pointers() { return ptrs_; }
    const Kel8u* const* constPointers() const { return cptrs_; }
    int step() const { return planes_[0]->step(); }
    void fillRandom(std::uint32_t seed);
    bool fenceIntact() const;
    std::vector<std::uint8_t> rows() const;

private:
    std::vector<std::unique_ptr<GuardedImage>> planes_;
    Kel8u* ptrs_[3];
    const Kel8u* cptrs_[3];
};

// Any number of guarded buffers making up one image (planes, or a single
// pixel-order buffer), with the pointer and stride arrays a call takes.
class GuardedSet {
public:
    // Adds a buffer of `rowBytes` x `rows` (both at least 1).
    GuardedImage& add(std::size_t rowBytes, int rows, Placement placement = Placement::Guarded,
                      std::size_t padding = 5);
    std::size_t count() const { return buffers_.size(); }
    GuardedImage& operator[](std::size_t i) { return *buffers_[i]; }
    std::uint8_t* row(std::size_t i, int y) { return buffers_[i]->row(y); }
    void fill(std::uint32_t seed);
    std::vector<std::uint8_t> rows() const;  // all buffers' rows, in order
    bool intact() const;                     // every guard and padding byte unchanged

    // What calls take; tests may overwrite entries (a null plane, a stride).
    std::array<std::uint8_t*, 4> pointers{};
    std::array<int, 4> steps{};
    const Kel8u* const* in() const { return reinterpret_cast<const Kel8u* const*>(pointers.data()); }
    Kel8u* const* out() { return pointers.data(); }

private:
    std::vector<std::unique_ptr<GuardedImage>> buffers_;
};

// Sets threads_omp_of_n_kel for one scope and puts the old value back.
class ThreadCount {
public:
    explicit ThreadCount(int n);
    ~ThreadCount();
private:
    int saved_;
};

} // namespace kt
