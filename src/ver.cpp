// The library's version record: one constant object, handed out by address,
// the same address in every call.
#include "callframe.h"

namespace {
const KelVersionRecord s_LibVer = {
    5, 2, 108, 321,
    {'p', 'x', '\0', '\0'},
    "libkelccpx.so.5.2",
    "5.2",
    "Jul 11 2007",
};
} // namespace

extern "C" KEL_API const KelVersionRecord* kelccGetLibVersion(void)
{
    return &s_LibVer;
}
