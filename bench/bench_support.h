// Frames and the registration table shared by the per-family benchmark files.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "kelcc.h"

namespace kb {

struct Layout {
    int bytesPerPixel;  // per plane
    int planes;
    bool unitFloats = false;  // samples are floats in 0..1 rather than random bytes
};
inline constexpr Layout kC3{3, 1}, kAC4{4, 1}, kP3{1, 3}, kC3x16{6, 1}, kC3x32f{12, 1, true};

// A random image of one layout, with the pointers a call takes.
struct Frame {
    Frame(Layout layout, int width, int height);
    std::size_t bytes() const;
    const Kel8u* in() const { return planePointers[0]; }
    Kel8u* out() { return planePointers[0]; }
    const Kel8u* const* inPlanes() const { return planePointers.data(); }
    Kel8u* const* outPlanes() { return planePointers.data(); }

    // The frame's stride for each of three planes, as sub-sampled calls take it.
    const int* steps() const { return stepArray.data(); }

    Layout layout;
    int width, height, step;
    std::array<int, 3> stepArray{};
    std::vector<std::vector<Kel8u>> storage;
    std::array<Kel8u*, 4> planePointers{};
};

using Runner = std::function<KelResult(const Frame& src, Frame& dst, KelImageSize size)>;

struct Registration {
    std::string name;
    Layout src, dst;
    Runner run;
};

std::vector<Registration>& registry();

struct Registrar {
    Registrar(std::string name, Layout src, Layout dst, Runner run);
};

} // namespace kb
