// The full-range YUV 4:2:0 jobs against libyuv, which converts with its own
// (studio-range) coefficients: the same job shape, not the same bytes.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// One random 4:2:0 image and one random RGB image, each with room for the other.
struct FrameYUV420 {
    std::vector<Kel8u> luma = randomBytes(kWidth * kHeight, 4), u = randomBytes(kWidth / 2 * (kHeight / 2), 5),
                       v = randomBytes(kWidth / 2 * (kHeight / 2), 6), rgb = randomBytes(3 * kWidth * kHeight, 7);
    Kel8u* planes[3] = {luma.data(), u.data(), v.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
};

void addYUV420Jobs(std::vector<Job>& jobs)
{
    static FrameYUV420 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    // libyuv's RAW is R, G, B in memory, as our RGB.
    Job inverse{"keliYUV420ToRGB_8u_P3C3R", "libyuv I420ToRAW",
                [] { keliYUV420ToRGB_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size); }, {}};
    Job forward{"keliRGBToYUV420_8u_C3P3R", "libyuv RAWToI420",
                [] { keliRGBToYUV420_8u_C3P3R(ours.rgb.data(), 3 * kWidth, ours.planes, ours.steps, size); }, {}};
#if KELCC_HAVE_LIBYUV
    inverse.runPeer = [] {
        libyuv::I420ToRAW(peer.luma.data(), kWidth, peer.u.data(), kWidth / 2, peer.v.data(), kWidth / 2,
                          peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
    };
    forward.runPeer = [] {
        libyuv::RAWToI420(peer.rgb.data(), 3 * kWidth, peer.luma.data(), kWidth, peer.u.data(), kWidth / 2,
                          peer.v.data(), kWidth / 2, kWidth, kHeight);
    };
#endif
    jobs.push_back(inverse);
    jobs.push_back(forward);
}

const AddJobs kAdded(addYUV420Jobs);

} // namespace
