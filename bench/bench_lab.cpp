// BGR <-> Lab, on one thread and on the default team; on random pixels and,
// since the vector rows hand some pixels to the extended kernels, on a
// natural-looking picture (and its Lab codes) too.
#include <map>
#include <utility>
#include <vector>

#include "bench_support.h"
#include "kelcore.h"
#include "peers/peers.h"

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

// The picture of a size in BGR, its 8-bit Lab codes and its 16-bit ones, rows
// without gaps; made once a size.
struct Picture {
    std::vector<Kel8u> bgr, lab8;
    std::vector<Kel16u> lab16;
};
const Picture& pictureOf(KelImageSize z)
{
    static std::map<std::pair<int, int>, Picture> made;
    Picture& p = made[{z.width, z.height}];
    if (p.bgr.empty()) {
        p.bgr = peers::naturalPicture(z.width, z.height, 3);
        p.lab8.resize(p.bgr.size());
        p.lab16.resize(p.bgr.size());
        keliBGRToLab_8u_C3R(p.bgr.data(), 3 * z.width, p.lab8.data(), 3 * z.width, z);
        keliBGRToLab_8u16u_C3R(p.bgr.data(), 3 * z.width, p.lab16.data(), 6 * z.width, z);
    }
    return p;
}

const auto toLab8Picture = [](const Frame&, Frame& d, KelImageSize z) {
    return keliBGRToLab_8u_C3R(pictureOf(z).bgr.data(), 3 * z.width, d.out(), d.step, z);
};
const auto fromLab8Picture = [](const Frame&, Frame& d, KelImageSize z) {
    return keliLabToBGR_8u_C3R(pictureOf(z).lab8.data(), 3 * z.width, d.out(), d.step, z);
};
const auto toLab16Picture = [](const Frame&, Frame& d, KelImageSize z) {
    return keliBGRToLab_8u16u_C3R(pictureOf(z).bgr.data(), 3 * z.width, reinterpret_cast<Kel16u*>(d.out()), d.step,
                                  z);
};
const auto fromLab16Picture = [](const Frame&, Frame& d, KelImageSize z) {
    return keliLabToBGR_16u8u_C3R(pictureOf(z).lab16.data(), 6 * z.width, d.out(), d.step, z);
};

const Registrar a1("BGRToLab_8u_C3R/threads:1", kC3, kC3, withThreads(1, toLab8));
const Registrar an("BGRToLab_8u_C3R/threads:default", kC3, kC3, withThreads(0, toLab8));
const Registrar ap("BGRToLab_8u_C3R/picture/threads:1", kC3, kC3, withThreads(1, toLab8Picture));
const Registrar b1("LabToBGR_8u_C3R/threads:1", kC3, kC3, withThreads(1, fromLab8));
const Registrar bn("LabToBGR_8u_C3R/threads:default", kC3, kC3, withThreads(0, fromLab8));
const Registrar bp("LabToBGR_8u_C3R/picture/threads:1", kC3, kC3, withThreads(1, fromLab8Picture));
const Registrar c1("BGRToLab_8u16u_C3R/threads:1", kC3, kC3x16, withThreads(1, toLab16));
const Registrar cn("BGRToLab_8u16u_C3R/threads:default", kC3, kC3x16, withThreads(0, toLab16));
const Registrar cp("BGRToLab_8u16u_C3R/picture/threads:1", kC3, kC3x16, withThreads(1, toLab16Picture));
const Registrar d1("LabToBGR_16u8u_C3R/threads:1", kC3x16, kC3, withThreads(1, fromLab16));
const Registrar dn("LabToBGR_16u8u_C3R/threads:default", kC3x16, kC3, withThreads(0, fromLab16));
const Registrar dp("LabToBGR_16u8u_C3R/picture/threads:1", kC3x16, kC3, withThreads(1, fromLab16Picture));

} // namespace
