// Bayer demosaic against OpenCV's bilinear cvtColor(COLOR_BayerBG2BGR): one
// 8-bit sample a pixel in, three out (OpenCV writes B, G, R, we R, G, B; the
// same bytes either way).  Ours adds a gradient test for green.
#include "peers.h"

#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;

void addBayerJobs(std::vector<Job>& jobs)
{
    static const std::vector<Kel8u> raw = randomBytes(kPixels, 31);
    static std::vector<Kel8u> ours(3 * kPixels), peer(3 * kPixels);
    Job bayer{"keliCFAToRGB_8u_C1C3R", "OpenCV BayerBG2BGR", [] {
                  keliCFAToRGB_8u_C1C3R(raw.data(), KelImageRect{0, 0, kWidth, kHeight}, KelImageSize{kWidth, kHeight},
                                        kWidth, ours.data(), 3 * kWidth, kelBayerGridBGGR);
              },
              {}};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    bayer.runPeer = [] {
        const cv::Mat src(kHeight, kWidth, CV_8UC1, const_cast<Kel8u*>(raw.data()));
        cv::Mat dst(kHeight, kWidth, CV_8UC3, peer.data());
        cv::cvtColor(src, dst, cv::COLOR_BayerBG2BGR);
    };
#endif
    jobs.push_back(bayer);
}

const AddJobs kAdded(addBayerJobs);

} // namespace
