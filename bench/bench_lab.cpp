// BGR <-> Lab, on one thread and on the default team.
#include "bench_support.h"
#include "kelcore.h"

namespace {
using namespace kb;

// Runs a call with threads_omp_of_n_kel set to `threads` (0: leave as is).
template <typename Call>
Runner withThreads(int threads, Call call)
{
    return [threads, call](const Frame& s, Frame& d, KelImageSize z) {
        const int saved = threads_omp_of_n_kel;
        if (threads > 0) threads_omp_of_n_kel = threads;
        const KelResult status = call(s, d, z);
        threads_omp_of_n_kel = saved;
        return status;
    };
}

const auto toLab8 = [](const Frame& s, Frame& d, KelImageSize z) {
    return keliBGRToLab_8u_C3R(s.in(), s.step, d.out(), d.step, z);
};
const auto fromLab8 = [](const Frame& s, Frame& d, KelImageSize z) {
    return keliLabToBGR_8u_C3R(s.in(), s.step, d.out(), d.step, z);
};
const auto toLab16 = [](const Frame& s, Frame& d, KelImageSize z) {
    return keliBGRToLab_8u16u_C3R(s.in(), s.step, reinterpret_cast<Kel16u*>(d.out()), d.step, z);
};
const auto fromLab16 = [](const Frame& s, Frame& d, KelImageSize z) {
    return keliLabToBGR_16u8u_C3R(reinterpret_cast<const Kel16u*>(s.in()), s.step, d.out(), d.step, z);
};

const Registrar a1("BGRToLab_8u_C3R/threads:1", kC3, kC3, withThreads(1, toLab8));
const Registrar an("BGRToLab_8u_C3R/threads:default", kC3, kC3, withThreads(0, toLab8));
const Registrar b1("LabToBGR_8u_C3R/threads:1", kC3, kC3, withThreads(1, fromLab8));
const Registrar bn("LabToBGR_8u_C3R/threads:default", kC3, kC3, withThreads(0, fromLab8));
const Registrar c1("BGRToLab_8u16u_C3R/threads:1", kC3, kC3x16, withThreads(1, toLab16));
const Registrar cn("BGRToLab_8u16u_C3R/threads:default", kC3, kC3x16, withThreads(0, toLab16));
const Registrar d1("LabToBGR_16u8u_C3R/threads:1", kC3x16, kC3, withThreads(1, fromLab16));
const Registrar dn("LabToBGR_16u8u_C3R/threads:default", kC3x16, kC3, withThreads(0, fromLab16));

} // namespace
