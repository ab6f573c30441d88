// The sub-sampled YCbCr to RGB and BGR jobs beyond 4:2:0, against libyuv.
// This libyuv has no packed 4:2:2 to three-byte RGB: YUY2ToARGB and
// UYVYToARGB write four bytes a pixel (B, G, R, A in memory), the closest job
// for the three-channel members and the very job for the BGRA members.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// One packed 4:2:2 row pair of bytes a pixel, and a destination of four bytes a pixel.
struct Frame422 {
    std::vector<Kel8u> packed = randomBytes(2 * kWidth * kHeight, 4), out = std::vector<Kel8u>(4 * kWidth * kHeight);
};

void addYCbCr422Jobs(std::vector<Job>& jobs)
{
    static Frame422 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    Job yuy2Rgb{"keliYCbCr422ToRGB_8u_C2C3R", "libyuv YUY2ToARGB",
                [] { keliYCbCr422ToRGB_8u_C2C3R(ours.packed.data(), 2 * kWidth, ours.out.data(), 3 * kWidth, size); },
                {}};
    Job yvyuRgb{"keliYCrCb422ToRGB_8u_C2C3R", "libyuv YUY2ToARGB",
                [] { keliYCrCb422ToRGB_8u_C2C3R(ours.packed.data(), 2 * kWidth, ours.out.data(), 3 * kWidth, size); },
                {}};
    Job yuy2Bgr{"keliYCbCr422ToBGR_8u_C2C3R", "libyuv YUY2ToARGB",
                [] { keliYCbCr422ToBGR_8u_C2C3R(ours.packed.data(), 2 * kWidth, ours.out.data(), 3 * kWidth, size); },
                {}};
    Job yuy2Bgra{"keliYCbCr422ToBGR_8u_C2C4R", "libyuv YUY2ToARGB",
                 [] {
                     keliYCbCr422ToBGR_8u_C2C4R(ours.packed.data(), 2 * kWidth, ours.out.data(), 4 * kWidth, size, 255);
                 },
                 {}};
    Job uyvyRgb{"keliCbYCr422ToRGB_8u_C2C3R", "libyuv UYVYToARGB",
                [] { keliCbYCr422ToRGB_8u_C2C3R(ours.packed.data(), 2 * kWidth, ours.out.data(), 3 * kWidth, size); },
                {}};
    Job uyvyBgra{"keliCbYCr422ToBGR_8u_C2C4R", "libyuv UYVYToARGB",
                 [] {
                     keliCbYCr422ToBGR_8u_C2C4R(ours.packed.data(), 2 * kWidth, ours.out.data(), 4 * kWidth, size, 255);
                 },
                 {}};
#if KELCC_HAVE_LIBYUV
    const auto yuy2 = [] {
        libyuv::YUY2ToARGB(peer.packed.data(), 2 * kWidth, peer.out.data(), 4 * kWidth, kWidth, kHeight);
    };
    const auto uyvy = [] {
        libyuv::UYVYToARGB(peer.packed.data(), 2 * kWidth, peer.out.data(), 4 * kWidth, kWidth, kHeight);
    };
    yuy2Rgb.runPeer = yvyuRgb.runPeer = yuy2Bgr.runPeer = yuy2Bgra.runPeer = yuy2;
    uyvyRgb.runPeer = uyvyBgra.runPeer = uyvy;
#endif
    for (const Job& job : {yuy2Rgb, yvyuRgb, yuy2Bgr, yuy2Bgra, uyvyRgb, uyvyBgra}) jobs.push_back(job);
}

const AddJobs kAdded(addYCbCr422Jobs);

} // namespace
