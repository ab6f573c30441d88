// Source and destination images of any 8-bit layout behind one interface, so
// that table-driven tests can run every member of a family the same way.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "guarded.h"

namespace kt {

enum class Layout { C3, AC4, P3 };

inline int channelsOf(Layout layout) { return layout == Layout::AC4 ? 4 : 3; }
inline bool planar(Layout layout) { return layout == Layout::P3; }

// One image of `layout`, `width` x `height` pixels, in guarded buffers.
class LayoutImage {
public:
    LayoutImage(Layout layout, int width, int height, Placement placement = Placement::Guarded,
                std::size_t misalign = 0)
        : layout_(layout), width_(width), height_(height)
    {
        const std::size_t w = static_cast<std::size_t>(width > 0 ? width : 1);
        const int h = height > 0 ? height : 1;
        if (planar(layout))
            planes_ = std::make_unique<GuardedPlanes>(w, h, placement, 13, misalign);
        else
            image_ = std::make_unique<GuardedImage>(w * channelsOf(layout), h, placement, 13, misalign);
    }

    Layout layout() const { return layout_; }
    int step() const { return planar(layout_) ? planes_->step() : image_->step(); }

    // What the call takes: a pixel pointer, or the address of a plane array.
    void* argument() { return planar(layout_) ? static_cast<void*>(planeArray_.data()) : image_->data(); }
    const void* constArgument()
    {
        return planar(layout_) ? static_cast<const void*>(planeArray_.data()) : image_->data();
    }
    void syncPlaneArray()
    {
        if (planar(layout_))
            for (int p = 0; p < 3; ++p) planeArray_[p] = (*planes_)[p].data();
    }
    std::array<Kel8u*, 3>& planeArray() { return planeArray_; }

    Kel8u& sample(int x, int y, int channel)
    {
        if (planar(layout_)) return (*planes_)[channel].row(y)[x];
        return image_->row(y)[x * channelsOf(layout_) + channel];
    }
    std::array<Kel8u, 3> pixel(int x, int y) { return {sample(x, y, 0), sample(x, y, 1), sample(x, y, 2)}; }
    void setPixel(int x, int y, std::array<Kel8u, 3> v)
    {
        for (int c = 0; c < 3; ++c) sample(x, y, c) = v[c];
    }
    // The fourth byte of an AC4 pixel.
    Kel8u& alpha(int x, int y) { return image_->row(y)[x * 4 + 3]; }

    void fillRandom(std::uint32_t seed)
    {
        if (planar(layout_)) planes_->fillRandom(seed); else image_->fillRandom(seed);
    }
    std::vector<std::uint8_t> rows() const { return planar(layout_) ? planes_->rows() : image_->rows(); }
    bool fenceIntact() const { return planar(layout_) ? planes_->fenceIntact() : image_->fenceIntact(); }

private:
    Layout layout_;
    int width_, height_;
    std::unique_ptr<GuardedImage> image_;
    std::unique_ptr<GuardedPlanes> planes_;
    std::array<Kel8u*, 3> planeArray_{};
};

inline std::unique_ptr<LayoutImage> makeImage(Layout layout, int width, int height,
                                              Placement placement = Placement::Guarded, std::size_t misalign = 0)
{
    auto image = std::make_unique<LayoutImage>(layout, width, height, placement, misalign);
    image->syncPlaneArray();
    return image;
}

// A call of a member taking (src, srcStep, dst, dstStep, roiSize), with the
// pointers type-erased: each is a pixel pointer or a plane array's address.
using ErasedCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size);

template <typename Src, typename Dst, KelResult (*F)(Src, int, Dst, int, KelImageSize)>
KelResult erase(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size)
{
    return F(static_cast<Src>(src), srcStep, static_cast<Dst>(dst), dstStep, size);
}

} // namespace kt
