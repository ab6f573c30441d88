// Packed 565 widening and packing against OpenCV (the same job: three bytes a
// pixel) and libyuv (whose one-pass jobs read or write ARGB, four bytes a
// pixel: compared per pixel), with the memcpy ceiling of each; and packed
// BGR565 to 4:2:0 planes against libyuv RGB565ToI420.
#include <cstring>

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

constexpr int kPixels = kWidth * kHeight;

struct FramePacked565 {
    std::vector<Kel8u> bgr = randomBytes(3 * kPixels, 7), argb = randomBytes(4 * kPixels, 8),
                       words = randomBytes(2 * kPixels, 9), luma = std::vector<Kel8u>(kPixels),
                       cb = std::vector<Kel8u>(kPixels / 4), cr = std::vector<Kel8u>(kPixels / 4);
    Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
    const Kel16u* packed() const { return reinterpret_cast<const Kel16u*>(words.data()); }
    Kel16u* packed() { return reinterpret_cast<Kel16u*>(words.data()); }
};

std::function<void()> memcpyOf(std::size_t bytes)
{
    static std::vector<Kel8u> from = randomBytes(3 * kPixels, 10), to(3 * kPixels);
    return [bytes] { std::memcpy(to.data(), from.data(), bytes); };
}

void addPacked565Jobs(std::vector<Job>& jobs)
{
    static FramePacked565 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    const auto widen = [] { keliBGR565ToBGR_16u8u_C3R(ours.packed(), 2 * kWidth, ours.bgr.data(), 3 * kWidth, size); };
    const auto pack = [] { keliBGRToBGR565_8u16u_C3R(ours.bgr.data(), 3 * kWidth, ours.packed(), 2 * kWidth, size); };
    const auto to420 = [] { keliBGR565ToYCbCr420_16u8u_C3P3R(ours.packed(), 2 * kWidth, ours.planes, ours.steps, size); };
    const auto toYuv420 = [] { keliBGR565ToYUV420_16u8u_C3P3R(ours.packed(), 2 * kWidth, ours.planes, ours.steps, size); };
    Job widenCv{"keliBGR565ToBGR_16u8u_C3R", "OpenCV BGR5652BGR", widen, {}};
    Job packCv{"keliBGRToBGR565_8u16u_C3R", "OpenCV BGR2BGR565", pack, {}};
    Job widenYuv{"keliBGR565ToBGR_16u8u_C3R", "libyuv RGB565ToARGB", widen, {}};
    Job packYuv{"keliBGRToBGR565_8u16u_C3R", "libyuv ARGBToRGB565", pack, {}};
    Job widenCopy{"keliBGR565ToBGR_16u8u_C3R", "memcpy 5.18 MB", widen, memcpyOf(kPixels * 5 / 2)};
    Job packCopy{"keliBGRToBGR565_8u16u_C3R", "memcpy 5.18 MB", pack, memcpyOf(kPixels * 5 / 2)};
    Job i420{"keliBGR565ToYCbCr420_16u8u_C3P3R", "libyuv RGB565ToI420", to420, {}};
    Job yuv420{"keliBGR565ToYUV420_16u8u_C3P3R", "libyuv RGB565ToI420", toYuv420, {}};
#if KELCC_HAVE_LIBYUV
    widenYuv.runPeer = [] {
        libyuv::RGB565ToARGB(peer.words.data(), 2 * kWidth, peer.argb.data(), 4 * kWidth, kWidth, kHeight);
    };
    packYuv.runPeer = [] {
        libyuv::ARGBToRGB565(peer.argb.data(), 4 * kWidth, peer.words.data(), 2 * kWidth, kWidth, kHeight);
    };
    i420.runPeer = [] {
        libyuv::RGB565ToI420(peer.words.data(), 2 * kWidth, peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2,
                             peer.cr.data(), kWidth / 2, kWidth, kHeight);
    };
    yuv420.runPeer = i420.runPeer;
#endif
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    widenCv.runPeer = [] {
        const cv::Mat src(kHeight, kWidth, CV_8UC2, peer.words.data());
        cv::Mat dst(kHeight, kWidth, CV_8UC3, peer.bgr.data());
        cv::cvtColor(src, dst, cv::COLOR_BGR5652BGR);
    };
    packCv.runPeer = [] {
        const cv::Mat src(kHeight, kWidth, CV_8UC3, peer.bgr.data());
        cv::Mat dst(kHeight, kWidth, CV_8UC2, peer.words.data());
        cv::cvtColor(src, dst, cv::COLOR_BGR2BGR565);
    };
#endif
    for (const Job& job : {widenCv, widenYuv, widenCopy, packCv, packYuv, packCopy, i420, yuv420}) jobs.push_back(job);
}

const AddJobs kAdded(addPacked565Jobs);

} // namespace
