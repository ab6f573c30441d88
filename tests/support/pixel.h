// One three-channel pixel through a pixel-order conversion: the concrete
// values of a family's tests read as in = out.
#pragma once

#include <gtest/gtest.h>

#include <array>

#include "kelcc.h"

namespace kt {

template <typename S, typename D>
std::array<D, 3> convertPixel(KelResult (*convert)(const S*, int, D*, int, KelImageSize), std::array<S, 3> in)
{
    std::array<D, 3> out{};
    EXPECT_EQ(kelOk, convert(in.data(), 3 * sizeof(S), out.data(), 3 * sizeof(D), {1, 1}));
    return out;
}

} // namespace kt
