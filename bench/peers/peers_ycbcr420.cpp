// The 4:2:0 to RGB and BGR jobs against libyuv.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// The planes of one random 4:2:0 image and a three-channel destination.
struct Frame420 {
    std::vector<Kel8u> luma = randomBytes(kWidth * kHeight, 1), cb = randomBytes(kWidth / 2 * (kHeight / 2), 2),
                       cr = randomBytes(kWidth / 2 * (kHeight / 2), 3), rgb = std::vector<Kel8u>(3 * kWidth * kHeight);
    const Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
};

void addYCbCr420Jobs(std::vector<Job>& jobs)
{
    static Frame420 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    // libyuv's RAW is R, G, B in memory, as our RGB; its RGB24 is B, G, R, as our BGR.
    Job rgb{"keliYCbCr420ToRGB_8u_P3C3R", "libyuv I420ToRAW",
            [] { keliYCbCr420ToRGB_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size); }, {}};
    Job bgr{"keliYCbCr420ToBGR_8u_P3C3R", "libyuv I420ToRGB24",
            [] { keliYCbCr420ToBGR_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size); }, {}};
#if KELCC_HAVE_LIBYUV
    rgb.runPeer = [] {
        libyuv::I420ToRAW(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                          peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
    };
    bgr.runPeer = [] {
        libyuv::I420ToRGB24(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                            peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
    };
#endif
    jobs.push_back(rgb);
    jobs.push_back(bgr);
}

const AddJobs kAdded(addYCbCr420Jobs);

} // namespace
