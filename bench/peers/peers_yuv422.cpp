// The full-range YUV 4:2:2 pixel-order jobs (Y0 U Y1 V pairs) against libyuv
// and OpenCV.  libyuv converts YUY2 only to and from four-byte ARGB (the
// closest job: a quarter more bytes on the RGB side); OpenCV's YUY2 to RGB
// writes three bytes a pixel like ours.  Neither uses our coefficients.
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
};

void addYUV422Jobs(std::vector<Job>& jobs)
{
    static FrameYUV422 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    const auto inverse = [] { keliYUV422ToRGB_8u_C2C3R(ours.pairs.data(), 2 * kWidth, ours.rgb.data(), 3 * kWidth, size); };
    const auto forward = [] { keliRGBToYUV422_8u_C3C2R(ours.rgb.data(), 3 * kWidth, ours.pairs.data(), 2 * kWidth, size); };
#if KELCC_HAVE_LIBYUV
    jobs.push_back({"keliYUV422ToRGB_8u_C2C3R", "libyuv YUY2ToARGB", inverse, [] {
                        libyuv::YUY2ToARGB(peer.pairs.data(), 2 * kWidth, peer.rgb.data(), 4 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliRGBToYUV422_8u_C3C2R", "libyuv ARGBToYUY2", forward, [] {
                        libyuv::ARGBToYUY2(peer.rgb.data(), 4 * kWidth, peer.pairs.data(), 2 * kWidth, kWidth, kHeight);
                    }});
#else
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
