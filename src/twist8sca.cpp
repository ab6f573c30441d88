// Colour twist of 8s images with a float matrix: signed samples enter with
// their sign and results round half to even in the signed form.
#include "twist.h"

using namespace kel;
using namespace kel::twist;

extern "C" {
KEL_TWIST_MEMBERS(keliColorTwist32f_8s, Kel8s, nullptr, false)
}
