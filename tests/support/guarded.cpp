#include "guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <random>
#include <stdexcept>

namespace kt {

namespace {
constexpr std::size_t kGuard = 64;

std::size_t pageSize()
{
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

std::size_t roundUp(std::size_t v, std::size_t to) { return (v + to - 1) / to * to; }
} // namespace

GuardedImage::GuardedImage(std::size_t rowBytes, int height, Placement placement, std::size_t padding,
                           std::size_t misalign)
    : rowBytes_(rowBytes), step_(rowBytes + padding), height_(height)
{
    const std::size_t rowsSpan = height > 0 ? step_ * (height - 1) + rowBytes : 0;
    const std::size_t tail = placement == Placement::Fenced ? 0 : kGuard;
    const std::size_t used = kGuard + 64 + rowsSpan + tail;
    const std::size_t page = pageSize();
    const std::size_t body = roundUp(used, page);
    mapBytes_ = body + page;  // one more page, made inaccessible, behind the body
    void* m = mmap(nullptr, mapBytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) throw std::runtime_error("mmap failed");
    map_ = static_cast<std::uint8_t*>(m);
    if (mprotect(map_ + body, page, PROT_NONE) != 0) throw std::runtime_error("mprotect failed");

    if (placement == Placement::Fenced) {
        end_ = map_ + body;
        first_ = end_ - rowsSpan;
        begin_ = first_ - kGuard;
    } else {
        // Row 0 sits `misalign` bytes past a 64-byte boundary.
        first_ = map_ + kGuard + (misalign % 64);
        begin_ = first_ - kGuard;
        end_ = first_ + rowsSpan + tail;
    }
    for (std::uint8_t* p = begin_; p < end_; ++p) *p = patternAt(static_cast<std::size_t>(p - begin_));
}

GuardedImage::~GuardedImage()
{
    if (map_) munmap(map_, mapBytes_);
}

std::uint8_t GuardedImage::patternAt(std::size_t offset) const
{
    return static_cast<std::uint8_t>(0xA5u ^ (offset * 29u) ^ (offset >> 8));
}

void GuardedImage::fillRandom(std::uint32_t seed)
{
    std::mt19937 gen(seed);
    for (int y = 0; y < height_; ++y)
        for (std::size_t x = 0; x < rowBytes_; ++x) row(y)[x] = static_cast<std::uint8_t>(gen());
}

void GuardedImage::fill(std::uint8_t value)
{
    for (int y = 0; y < height_; ++y) std::memset(row(y), value, rowBytes_);
}

std::vector<std::uint8_t> GuardedImage::rows() const
{
    std::vector<std::uint8_t> out;
    out.reserve(rowBytes_ * static_cast<std::size_t>(height_ > 0 ? height_ : 0));
    for (int y = 0; y < height_; ++y) out.insert(out.end(), row(y), row(y) + rowBytes_);
    return out;
}

bool GuardedImage::fenceIntact() const
{
    for (const std::uint8_t* p = begin_; p < end_; ++p) {
        const std::ptrdiff_t fromFirst = p - first_;
        if (fromFirst >= 0 && height_ > 0) {
            const std::size_t off = static_cast<std::size_t>(fromFirst);
            if (off / step_ < static_cast<std::size_t>(height_) && off % step_ < rowBytes_) continue;  // an image byte
        }
        if (*p != patternAt(static_cast<std::size_t>(p - begin_))) return false;
    }
    return true;
}

Image& Image::plane(int samples, int rows)
{
    if (buffers_.size() == pointers.size()) throw std::logic_error("too many buffers");
    const std::size_t rowBytes = static_cast<std::size_t>(samples > 0 ? samples : 1) * sampleBytes_;
    buffers_.push_back(
        std::make_unique<GuardedImage>(rowBytes, rows > 0 ? rows : 1, placement_, 5 * sampleBytes_, misalign_));
    pointers[buffers_.size() - 1] = buffers_.back()->data();
    steps[buffers_.size() - 1] = buffers_.back()->step();
    return *this;
}

void Image::fill(std::uint32_t seed)
{
    for (auto& b : buffers_) b->fillRandom(seed++);
}

void Image::fillWith(std::uint8_t value)
{
    for (auto& b : buffers_) b->fill(value);
}

std::vector<std::uint8_t> Image::rows() const
{
    std::vector<std::uint8_t> all;
    for (const auto& b : buffers_) {
        const auto r = b->rows();
        all.insert(all.end(), r.begin(), r.end());
    }
    return all;
}

bool Image::intact() const
{
    for (const auto& b : buffers_)
        if (!b->fenceIntact()) return false;
    return true;
}

} // namespace kt
