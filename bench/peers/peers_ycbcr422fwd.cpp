// BGR and CbYCr to pixel-order 4:2:2, RGB planes to 4:2:2, BGR to 4:2:2 and
// 4:1:1 planes against libyuv.  libyuv reads four bytes a pixel (B, G, R, A in
// memory: its ARGB) for these jobs: the very job for our AC4 members, the
// closest one for our three-byte members.  It has no 4:1:1 job and no planar
// RGB source: those rows set ours against our own 4:2:0 member instead.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// One random frame at three and at four bytes a pixel, its three planes, and
// room for every destination.
struct FrameBGR {
    std::vector<Kel8u> bgr = randomBytes(3 * kWidth * kHeight, 6), bgra = randomBytes(4 * kWidth * kHeight, 7),
                       red = randomBytes(kWidth * kHeight, 8), green = randomBytes(kWidth * kHeight, 9),
                       blue = randomBytes(kWidth * kHeight, 10), packed = std::vector<Kel8u>(2 * kWidth * kHeight),
                       luma = std::vector<Kel8u>(kWidth * kHeight), cb = std::vector<Kel8u>(kWidth / 2 * kHeight),
                       cr = std::vector<Kel8u>(kWidth / 2 * kHeight);
    Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps422[3] = {kWidth, kWidth / 2, kWidth / 2};
    const int steps411[3] = {kWidth, kWidth / 4, kWidth / 4};
    const int steps420[3] = {kWidth, kWidth / 2, kWidth / 2};
    const Kel8u* sources[3] = {red.data(), green.data(), blue.data()};
};

void addYCbCr422ForwardJobs(std::vector<Job>& jobs)
{
    static FrameBGR ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    Job yuy2{"keliBGRToYCbCr422_8u_AC4C2R", "libyuv ARGBToYUY2",
             [] { keliBGRToYCbCr422_8u_AC4C2R(ours.bgra.data(), 4 * kWidth, ours.packed.data(), 2 * kWidth, size); },
             {}};
    Job yuy2c3{"keliBGRToYCbCr422_8u_C3C2R", "libyuv ARGBToYUY2",
               [] { keliBGRToYCbCr422_8u_C3C2R(ours.bgr.data(), 3 * kWidth, ours.packed.data(), 2 * kWidth, size); },
               {}};
    Job uyvy{"keliBGRToCbYCr422_8u_AC4C2R", "libyuv ARGBToUYVY",
             [] { keliBGRToCbYCr422_8u_AC4C2R(ours.bgra.data(), 4 * kWidth, ours.packed.data(), 2 * kWidth, size); },
             {}};
    Job uyvyFiltered{
        "keliRGBToCbYCr422_8u_C3C2R", "libyuv ARGBToUYVY",
        [] { keliRGBToCbYCr422_8u_C3C2R(ours.bgr.data(), 3 * kWidth, ours.packed.data(), 2 * kWidth, size); }, {}};
    Job uyvyGamma{
        "keliRGBToCbYCr422Gamma_8u_C3C2R", "libyuv ARGBToUYVY",
        [] { keliRGBToCbYCr422Gamma_8u_C3C2R(ours.bgr.data(), 3 * kWidth, ours.packed.data(), 2 * kWidth, size); }, {}};
    Job i422{"keliBGRToYCbCr422_8u_AC4P3R", "libyuv ARGBToI422",
             [] { keliBGRToYCbCr422_8u_AC4P3R(ours.bgra.data(), 4 * kWidth, ours.planes, ours.steps422, size); }, {}};
    Job i422c3{"keliBGRToYCbCr422_8u_C3P3R", "libyuv ARGBToI422",
               [] { keliBGRToYCbCr422_8u_C3P3R(ours.bgr.data(), 3 * kWidth, ours.planes, ours.steps422, size); }, {}};
    // Against our own members, in this library: no peer has these jobs.
    Job planar{"keliRGBToYCbCr422_8u_P3C2R", "our RGBToYCbCr422_C3C2R",
               [] { keliRGBToYCbCr422_8u_P3C2R(ours.sources, kWidth, ours.packed.data(), 2 * kWidth, size); },
               [] { keliRGBToYCbCr422_8u_C3C2R(peer.bgr.data(), 3 * kWidth, peer.packed.data(), 2 * kWidth, size); }};
    Job i411{"keliBGRToYCbCr411_8u_C3P3R", "our BGRToYCbCr420_C3P3R",
             [] { keliBGRToYCbCr411_8u_C3P3R(ours.bgr.data(), 3 * kWidth, ours.planes, ours.steps411, size); },
             [] { keliBGRToYCbCr420_8u_C3P3R(peer.bgr.data(), 3 * kWidth, peer.planes, peer.steps420, size); }};
    Job i411ac4{"keliBGRToYCbCr411_8u_AC4P3R", "our BGRToYCbCr420_AC4P3R",
                [] { keliBGRToYCbCr411_8u_AC4P3R(ours.bgra.data(), 4 * kWidth, ours.planes, ours.steps411, size); },
                [] { keliBGRToYCbCr420_8u_AC4P3R(peer.bgra.data(), 4 * kWidth, peer.planes, peer.steps420, size); }};
#if KELCC_HAVE_LIBYUV
    const auto toYuy2 = [] {
        libyuv::ARGBToYUY2(peer.bgra.data(), 4 * kWidth, peer.packed.data(), 2 * kWidth, kWidth, kHeight);
    };
    const auto toUyvy = [] {
        libyuv::ARGBToUYVY(peer.bgra.data(), 4 * kWidth, peer.packed.data(), 2 * kWidth, kWidth, kHeight);
    };
    const auto toI422 = [] {
        libyuv::ARGBToI422(peer.bgra.data(), 4 * kWidth, peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2,
                           peer.cr.data(), kWidth / 2, kWidth, kHeight);
    };
    yuy2.runPeer = yuy2c3.runPeer = toYuy2;
    uyvy.runPeer = uyvyFiltered.runPeer = uyvyGamma.runPeer = toUyvy;
    i422.runPeer = i422c3.runPeer = toI422;
#endif
    for (const Job& job : {yuy2, yuy2c3, uyvy, uyvyFiltered, uyvyGamma, i422, i422c3, planar, i411, i411ac4}) {
        jobs.push_back(job);
    }
}

const AddJobs kAdded(addYCbCr422ForwardJobs);

} // namespace
