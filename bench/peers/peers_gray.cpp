// Gray and YCC.  8-bit gray of R, G, B pixels against OpenCV's RGB2GRAY and
// libyuv's RAWToJ400 (RAW is R, G, B in memory, like ours; J400 is the
// full-range luma of the same weights).  8-bit YCC has no peer: it is set
// against our own 8-bit RGB to YCbCr, the conversion it should match in speed.
// Gray is serial; YCC runs on one thread.
#include <functional>
#include <vector>

#include "kelcore.h"
#include "peers.h"

#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;
const KelImageSize kSize{kWidth, kHeight};

const std::vector<Kel8u>& source()
{
    static const std::vector<Kel8u> bytes = randomBytes(3 * kPixels, 91);
    return bytes;
}
std::vector<Kel8u> oursOut(3 * kPixels), peerOut(3 * kPixels);

void addGrayJobs(std::vector<Job>& jobs)
{
    const auto ourGray = [] {
        keliRGBToGray_8u_C3C1R(source().data(), 3 * kWidth, oursOut.data(), kWidth, kSize);
    };
    Job opencv{"keliRGBToGray_8u_C3C1R", "OpenCV RGB2GRAY", ourGray, {}};
    Job libyuv{"keliRGBToGray_8u_C3C1R", "libyuv RAWToJ400", ourGray, {}};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    opencv.runPeer = [] {
        const cv::Mat in(kHeight, kWidth, CV_8UC3, const_cast<Kel8u*>(source().data()));
        cv::Mat out(kHeight, kWidth, CV_8UC1, peerOut.data());
        cv::cvtColor(in, out, cv::COLOR_RGB2GRAY);
    };
#endif
#if KELCC_HAVE_LIBYUV
    libyuv.runPeer = [] {
        libyuv::RAWToJ400(source().data(), 3 * kWidth, peerOut.data(), kWidth, kWidth, kHeight);
    };
#endif
    jobs.push_back(opencv);
    jobs.push_back(libyuv);

    const auto pixels = [](auto call) {
        return onThreads(1, [call] { call(source().data(), 3 * kWidth, oursOut.data(), 3 * kWidth, kSize); });
    };
    jobs.push_back(Job{"keliRGBToYCC_8u_C3R", "our RGBToYCbCr_8u_C3R", pixels(keliRGBToYCC_8u_C3R),
                       pixels(keliRGBToYCbCr_8u_C3R)});
    jobs.push_back(Job{"keliYCCToRGB_8u_C3R", "our YCbCrToRGB_8u_C3R", pixels(keliYCCToRGB_8u_C3R),
                       pixels(keliYCbCrToRGB_8u_C3R)});
}

const AddJobs kAdded(addGrayJobs);

} // namespace
