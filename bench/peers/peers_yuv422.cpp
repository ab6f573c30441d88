// The full-range YUV 4:2:2 jobs against libyuv and OpenCV.  Pixel order (Y0 U
// Y1 V pairs): libyuv converts YUY2 only to and from four-byte ARGB (the
// closest job: a quarter more bytes on the RGB side); OpenCV's YUY2 to RGB
// writes three bytes a pixel like ours.  Planar: libyuv's I422ToRAW is our
// job byte for byte in layout; it has no three-byte RGB to I422, so the
// forward's closest job reads four-byte ARGB.  Neither uses our coefficients.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif
#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace peers;

// One random pixel-pair image and one random RGB image (four bytes a pixel,
// enough for the peers' ARGB).
struct FrameYUV422 {
    std::vector<Kel8u> pairs = randomBytes(2 * kWidth * kHeight, 8), rgb = randomBytes(4 * kWidth * kHeight, 9);
    std::vector<Kel8u> luma = randomBytes(kWidth * kHeight, 10), u = randomBytes(kWidth / 2 * kHeight, 11),
                       v = randomBytes(kWidth / 2 * kHeight, 12);
    Kel8u* planes[3] = {luma.data(), u.data(), v.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
};

void addYUV422Jobs(std::vector<Job>& jobs)
{
    static FrameYUV422 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    const auto inverse = [] { keliYUV422ToRGB_8u_C2C3R(ours.pairs.data(), 2 * kWidth, ours.rgb.data(), 3 * kWidth, size); };
    const auto forward = [] { keliRGBToYUV422_8u_C3C2R(ours.rgb.data(), 3 * kWidth, ours.pairs.data(), 2 * kWidth, size); };
    const auto planarInverse = [] {
        keliYUV422ToRGB_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size);
    };
    const auto planarForward = [] {
        keliRGBToYUV422_8u_C3P3R(ours.rgb.data(), 3 * kWidth, ours.planes, ours.steps, size);
    };
#if KELCC_HAVE_LIBYUV
    jobs.push_back({"keliYUV422ToRGB_8u_P3C3R", "libyuv I422ToRAW", planarInverse, [] {
                        libyuv::I422ToRAW(peer.luma.data(), kWidth, peer.u.data(), kWidth / 2, peer.v.data(),
                                          kWidth / 2, peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliRGBToYUV422_8u_C3P3R", "libyuv ARGBToI422", planarForward, [] {
                        libyuv::ARGBToI422(peer.rgb.data(), 4 * kWidth, peer.luma.data(), kWidth, peer.u.data(),
                                           kWidth / 2, peer.v.data(), kWidth / 2, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYUV422ToRGB_8u_C2C3R", "libyuv YUY2ToARGB", inverse, [] {
                        libyuv::YUY2ToARGB(peer.pairs.data(), 2 * kWidth, peer.rgb.data(), 4 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliRGBToYUV422_8u_C3C2R", "libyuv ARGBToYUY2", forward, [] {
                        libyuv::ARGBToYUY2(peer.rgb.data(), 4 * kWidth, peer.pairs.data(), 2 * kWidth, kWidth, kHeight);
                    }});
#else
    jobs.push_back({"keliYUV422ToRGB_8u_P3C3R", "libyuv I422ToRAW", planarInverse, {}});
    jobs.push_back({"keliRGBToYUV422_8u_C3P3R", "libyuv ARGBToI422", planarForward, {}});
    jobs.push_back({"keliYUV422ToRGB_8u_C2C3R", "libyuv YUY2ToARGB", inverse, {}});
    jobs.push_back({"keliRGBToYUV422_8u_C3C2R", "libyuv ARGBToYUY2", forward, {}});
#endif
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    jobs.push_back({"keliYUV422ToRGB_8u_C2C3R", "OpenCV YUV2RGB_YUY2", inverse, [] {
                        const cv::Mat src(kHeight, kWidth, CV_8UC2, peer.pairs.data());
                        cv::Mat dst(kHeight, kWidth, CV_8UC3, peer.rgb.data());
                        cv::cvtColor(src, dst, cv::COLOR_YUV2RGB_YUY2);
                    }});
#endif
}

const AddJobs kAdded(addYUV422Jobs);

} // namespace
