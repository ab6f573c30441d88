// Colour twist of 8u, 16u and 16s images with a float matrix: the public
// functions, each an instantiation of the walks in twist.h.  8-bit
// pixel-order rows take the vector kernel first.
#include <cmath>

#include "twist.h"
#include "twistsimd.h"

using namespace kel;
using namespace kel::twist;

extern "C" {
KEL_TWIST_MEMBERS(keliColorTwist32f_8u, Kel8u, chooseTwistRow8u(), false)
KEL_TWIST_MEMBERS(keliColorTwist32f_16u, Kel16u, nullptr, false)
KEL_TWIST_MEMBERS(keliColorTwist32f_16s, Kel16s, nullptr, false)
}

void kel::twist::twistRowExact8u(const Kel8u* src, Kel8u* dst, std::int64_t count, const Kel32f* t)
{
    twistRow<Kel8u, 3>(src, dst, count, t);
}

bool kel::twist::matrixFinite(const Kel32f* t)
{
    for (int i = 0; i < 12; ++i)
        if (!std::isfinite(t[i])) return false;
    return true;
}
