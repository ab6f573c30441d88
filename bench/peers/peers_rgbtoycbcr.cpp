// RGB to 4:2:0 planes and to pixel-order 4:2:2 against libyuv and OpenCV.
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

// One random three-channel frame, a four-channel copy of it for the jobs
// whose peer reads four bytes a pixel, and room for every destination.
struct FrameRGB {
    std::vector<Kel8u> rgb = randomBytes(3 * kWidth * kHeight, 4), argb = randomBytes(4 * kWidth * kHeight, 5),
                       luma = std::vector<Kel8u>(kWidth * kHeight), cb = std::vector<Kel8u>(kWidth / 2 * (kHeight / 2)),
                       cr = std::vector<Kel8u>(kWidth / 2 * (kHeight / 2)),
                       packed = std::vector<Kel8u>(2 * kWidth * kHeight), i420 = std::vector<Kel8u>(kWidth * kHeight * 3 / 2);
    Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
};

void addRGBToYCbCrJobs(std::vector<Job>& jobs)
{
    static FrameRGB ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    // libyuv's RAW is R, G, B in memory, as our RGB.
    Job i420{"keliRGBToYCbCr420_8u_C3P3R", "libyuv RAWToI420",
             [] { keliRGBToYCbCr420_8u_C3P3R(ours.rgb.data(), 3 * kWidth, ours.planes, ours.steps, size); }, {}};
    Job i420cv{"keliRGBToYCbCr420_8u_C3P3R", "OpenCV RGB2YUV_I420",
               [] { keliRGBToYCbCr420_8u_C3P3R(ours.rgb.data(), 3 * kWidth, ours.planes, ours.steps, size); }, {}};
    // BGR, 3 bytes a pixel: libyuv's RGB24 is B, G, R in memory.
    Job bgr420{"keliBGRToYCbCr420_8u_C3P3R", "libyuv RGB24ToI420",
               [] { keliBGRToYCbCr420_8u_C3P3R(ours.rgb.data(), 3 * kWidth, ours.planes, ours.steps, size); }, {}};
    // Four bytes a pixel, B, G, R and an unread fourth: libyuv's ARGB in memory.
    Job bgra420{"keliBGRToYCbCr420_8u_AC4P3R", "libyuv ARGBToI420",
                [] { keliBGRToYCbCr420_8u_AC4P3R(ours.argb.data(), 4 * kWidth, ours.planes, ours.steps, size); }, {}};
    // libyuv has no three-byte source to YUY2 in one call: its one-pass job
    // reads ARGB, four bytes a pixel (Y0 U Y1 V out, as our Y0 Cb Y1 Cr).
    Job yuy2{"keliRGBToYCbCr422_8u_C3C2R", "libyuv ARGBToYUY2",
             [] { keliRGBToYCbCr422_8u_C3C2R(ours.rgb.data(), 3 * kWidth, ours.packed.data(), 2 * kWidth, size); }, {}};
    Job yvyu{"keliRGBToYCrCb422_8u_C3C2R", "libyuv ARGBToYUY2",
             [] { keliRGBToYCrCb422_8u_C3C2R(ours.rgb.data(), 3 * kWidth, ours.packed.data(), 2 * kWidth, size); }, {}};
#if KELCC_HAVE_LIBYUV
    i420.runPeer = [] {
        libyuv::RAWToI420(peer.rgb.data(), 3 * kWidth, peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2,
                          peer.cr.data(), kWidth / 2, kWidth, kHeight);
    };
    bgr420.runPeer = [] {
        libyuv::RGB24ToI420(peer.rgb.data(), 3 * kWidth, peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2,
                            peer.cr.data(), kWidth / 2, kWidth, kHeight);
    };
    bgra420.runPeer = [] {
        libyuv::ARGBToI420(peer.argb.data(), 4 * kWidth, peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2,
                           peer.cr.data(), kWidth / 2, kWidth, kHeight);
    };
    yuy2.runPeer = [] {
        libyuv::ARGBToYUY2(peer.argb.data(), 4 * kWidth, peer.packed.data(), 2 * kWidth, kWidth, kHeight);
    };
    yvyu.runPeer = yuy2.runPeer;
#endif
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    i420cv.runPeer = [] {
        const cv::Mat src(kHeight, kWidth, CV_8UC3, peer.rgb.data());
        cv::Mat dst(kHeight * 3 / 2, kWidth, CV_8UC1, peer.i420.data());
        cv::cvtColor(src, dst, cv::COLOR_RGB2YUV_I420);
    };
#endif
    jobs.push_back(i420);
    jobs.push_back(i420cv);
    jobs.push_back(bgr420);
    jobs.push_back(bgra420);
    jobs.push_back(yuy2);
    jobs.push_back(yvyu);
}

const AddJobs kAdded(addRGBToYCbCrJobs);

} // namespace
