// The library's one saturation table, shared by the luma-chroma, packed-pixel
// and colour-model kernels.
#include "cbcrpx.h"

#include <array>

namespace {
constexpr std::array<std::uint8_t, 1000> makeChop()
{
    std::array<std::uint8_t, 1000> table{};
    for (int i = 0; i < 1000; ++i) {
        const int v = i - 370;  // the zero of the value scale stands at index 370
        table[i] = static_cast<std::uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
    }
    return table;
}
constexpr std::array<std::uint8_t, 1000> chopValues = makeChop();
static_assert(chopValues[369] == 0 && chopValues[370] == 0 && chopValues[625] == 255 && chopValues[498] == 128);
} // namespace

alignas(64) constinit const std::array<std::uint8_t, 1000> chop = chopValues;
