// The full-resolution YCbCr and YUV jobs against OpenCV's cvtColor.
//
// OpenCV's YCrCb keeps the channels Y, Cr, Cb and full range (no 16..235
// studio range), its YUV other coefficients; both are the closest job it has:
// one 8-bit three-channel image to another, the same bytes moved.
#include "peers.h"

#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace peers;

// One random three-channel image and a destination.
struct FramePixels {
    std::vector<Kel8u> src = randomBytes(3 * kWidth * kHeight, 4), dst = std::vector<Kel8u>(3 * kWidth * kHeight);
};

void addFullResolutionJobs(std::vector<Job>& jobs)
{
    static FramePixels ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    const auto call = [](KelResult (*member)(const Kel8u*, int, Kel8u*, int, KelImageSize)) {
        return [member] { member(ours.src.data(), 3 * kWidth, ours.dst.data(), 3 * kWidth, size); };
    };
    Job toRGB{"keliYCbCrToRGB_8u_C3R", "OpenCV YCrCb2RGB", call(keliYCbCrToRGB_8u_C3R), {}};
    Job toYCbCr{"keliRGBToYCbCr_8u_C3R", "OpenCV RGB2YCrCb", call(keliRGBToYCbCr_8u_C3R), {}};
    Job yuvToRGB{"keliYUVToRGB_8u_C3R", "OpenCV YUV2RGB", call(keliYUVToRGB_8u_C3R), {}};
    Job toYUV{"keliRGBToYUV_8u_C3R", "OpenCV RGB2YUV", call(keliRGBToYUV_8u_C3R), {}};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    const auto convert = [](int code) {
        return [code] {
            const cv::Mat src(kHeight, kWidth, CV_8UC3, peer.src.data());
            cv::Mat dst(kHeight, kWidth, CV_8UC3, peer.dst.data());
            cv::cvtColor(src, dst, code);
        };
    };
    toRGB.runPeer = convert(cv::COLOR_YCrCb2RGB);
    toYCbCr.runPeer = convert(cv::COLOR_RGB2YCrCb);
    yuvToRGB.runPeer = convert(cv::COLOR_YUV2RGB);
    toYUV.runPeer = convert(cv::COLOR_RGB2YUV);
#endif
    jobs.push_back(toRGB);
    jobs.push_back(toYCbCr);
    jobs.push_back(yuvToRGB);
    jobs.push_back(toYUV);
}

const AddJobs kAdded(addFullResolutionJobs);

} // namespace
