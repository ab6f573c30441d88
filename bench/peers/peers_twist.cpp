// Colour twist of 8-bit three-channel pixels against OpenCV's cv::transform
// with the same 3 x 4 matrix (OpenCV rounds its float sums to nearest, ours
// rounds half to even from the exact sum).
#include "peers.h"

#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#endif

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;

// A matrix of the kind colour work uses: a hue and saturation turn with an
// offset.
const Kel32f kTwist[12] = {0.90f, 0.25f, -0.12f, 6.5f, -0.08f, 1.05f, 0.10f, -3.0f, 0.15f, -0.20f, 0.95f, 12.25f};

void addTwistJobs(std::vector<Job>& jobs)
{
    static const std::vector<Kel8u> src = randomBytes(3 * kPixels, 41);
    static std::vector<Kel8u> ours(3 * kPixels), peer(3 * kPixels);
    Job twist{"keliColorTwist32f_8u_C3R", "OpenCV transform 3x4", [] {
                  keliColorTwist32f_8u_C3R(src.data(), 3 * kWidth, ours.data(), 3 * kWidth,
                                           KelImageSize{kWidth, kHeight}, kTwist);
              },
              {}};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    twist.runPeer = [] {
        static const cv::Mat matrix(3, 4, CV_32F, const_cast<Kel32f*>(kTwist));
        const cv::Mat in(kHeight, kWidth, CV_8UC3, const_cast<Kel8u*>(src.data()));
        cv::Mat out(kHeight, kWidth, CV_8UC3, peer.data());
        cv::transform(in, out, matrix);
    };
#endif
    jobs.push_back(twist);
}

const AddJobs kAdded(addTwistJobs);

} // namespace
