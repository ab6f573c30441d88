// CIE XYZ and LUV against OpenCV's cvtColor on random pixels: XYZ at 8u and
// 32f, LUV from and to linear RGB (OpenCV's LRGB2Luv and Luv2LRGB: no gamma,
// as ours) at 8u and 32f.  OpenCV's 8-bit LUV coding differs from ours (the
// same job, other byte ranges).  Ours runs on one thread.
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "kelcore.h"
#include "peers.h"

#if KELCC_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;
const KelImageSize kSize{kWidth, kHeight};

struct Buffers {
    std::vector<Kel8u> bytes = randomBytes(3 * kPixels, 71);
    std::vector<Kel32f> floats = unitFloats(3 * kPixels, 72);
    std::vector<Kel32f> luv32;  // our float LUV of `floats`, for the inverse
    std::vector<Kel8u> outBytes = std::vector<Kel8u>(3 * kPixels);
    std::vector<Kel32f> outFloats = std::vector<Kel32f>(3 * kPixels);
    Buffers() : luv32(3 * kPixels)
    {
        keliRGBToLUV_32f_C3R(floats.data(), 12 * kWidth, luv32.data(), 12 * kWidth, kSize);
    }
};

Buffers& buffers()
{
    static Buffers built;
    return built;
}

#if KELCC_HAVE_OPENCV
void cvt(const void* src, int srcType, void* dst, int dstType, int code)
{
    const cv::Mat in(kHeight, kWidth, srcType, const_cast<void*>(src));
    cv::Mat out(kHeight, kWidth, dstType, dst);
    cv::cvtColor(in, out, code);
    if (out.data != dst) std::abort();
}
#endif

template <typename T>
using Member = KelResult (*)(const T*, int, T*, int, KelImageSize);

void add8u(std::vector<Job>& jobs, const char* name, Member<Kel8u> ours, const char* peer, [[maybe_unused]] int code)
{
    Job job{name, peer, onThreads(1, [ours] {
                Buffers& b = buffers();
                ours(b.bytes.data(), 3 * kWidth, b.outBytes.data(), 3 * kWidth, kSize);
            }), {}};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    job.runPeer = [code] {
        static std::vector<Kel8u> out(3 * kPixels);
        cvt(buffers().bytes.data(), CV_8UC3, out.data(), CV_8UC3, code);
    };
#endif
    jobs.push_back(job);
}

void add32f(std::vector<Job>& jobs, const char* name, Member<Kel32f> ours, bool fromLUV, const char* peer,
            [[maybe_unused]] int code)
{
    Job job{name, peer, onThreads(1, [ours, fromLUV] {
                Buffers& b = buffers();
                ours((fromLUV ? b.luv32 : b.floats).data(), 12 * kWidth, b.outFloats.data(), 12 * kWidth, kSize);
            }), {}};
#if KELCC_HAVE_OPENCV
    job.runPeer = [code, fromLUV] {
        static std::vector<Kel32f> out(3 * kPixels);
        Buffers& b = buffers();
        cvt((fromLUV ? b.luv32 : b.floats).data(), CV_32FC3, out.data(), CV_32FC3, code);
    };
#endif
    jobs.push_back(job);
}

void addCieJobs(std::vector<Job>& jobs)
{
#if KELCC_HAVE_OPENCV
    const int toXYZ = cv::COLOR_RGB2XYZ, fromXYZ = cv::COLOR_XYZ2RGB, toLuv = cv::COLOR_LRGB2Luv,
              fromLuv = cv::COLOR_Luv2LRGB;
#else
    const int toXYZ = 0, fromXYZ = 0, toLuv = 0, fromLuv = 0;
#endif
    add8u(jobs, "keliRGBToXYZ_8u_C3R", keliRGBToXYZ_8u_C3R, "OpenCV RGB2XYZ", toXYZ);
    add8u(jobs, "keliXYZToRGB_8u_C3R", keliXYZToRGB_8u_C3R, "OpenCV XYZ2RGB", fromXYZ);
    add8u(jobs, "keliRGBToLUV_8u_C3R", keliRGBToLUV_8u_C3R, "OpenCV LRGB2Luv", toLuv);
    add8u(jobs, "keliLUVToRGB_8u_C3R", keliLUVToRGB_8u_C3R, "OpenCV Luv2LRGB", fromLuv);
    add32f(jobs, "keliRGBToXYZ_32f_C3R", keliRGBToXYZ_32f_C3R, false, "OpenCV RGB2XYZ 32f", toXYZ);
    add32f(jobs, "keliXYZToRGB_32f_C3R", keliXYZToRGB_32f_C3R, false, "OpenCV XYZ2RGB 32f", fromXYZ);
    add32f(jobs, "keliRGBToLUV_32f_C3R", keliRGBToLUV_32f_C3R, false, "OpenCV LRGB2Luv 32f", toLuv);
    add32f(jobs, "keliLUVToRGB_32f_C3R", keliLUVToRGB_32f_C3R, true, "OpenCV Luv2LRGB 32f", fromLuv);
}

const AddJobs kAdded(addCieJobs);

} // namespace
