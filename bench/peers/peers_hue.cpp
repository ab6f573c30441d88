// HSV, HLS and CIE Lab against OpenCV's cvtColor, each on random pixels and on
// the natural-looking picture (rows marked "(picture)").  8-bit hue is the full
// turn over 0..255 on both sides (OpenCV's _FULL codes); 32-bit float hue is
// 0..1 in ours and degrees in OpenCV, so each reads its own coding of the same
// colours.  OpenCV has no 16-bit HSV or HLS: those rows set our 16-bit members
// against our 8-bit ones on the same colours.  Ours runs on one thread.
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
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
constexpr int kRandom = 0, kPicture = 1;  // index of an input pair

std::vector<Kel16u> randomWords(std::size_t n, unsigned seed)
{
    std::vector<Kel16u> out(n);
    std::mt19937 gen(seed);
    for (auto& v : out) v = static_cast<Kel16u>(gen());
    return out;
}

// Every input as a pair, [kRandom] and [kPicture], built on first use.  The
// picture's HSV and HLS come from our own conversions of its RGB (or BGR), so
// the inverse conversions read colours of the picture.
struct Inputs {
    std::vector<Kel8u> rgb[2], rgba[2], hsv[2], hls[2];
    std::vector<Kel8u> hlsPlanes[2];  // three planes one after another
    std::vector<Kel8u> hlsPixels[2];  // the same samples in pixel order, for OpenCV
    std::vector<Kel16u> rgb16[2];
    std::vector<Kel32f> rgb32[2], hls32[2];
    std::vector<Kel32f> hlsDegrees32[2];  // hls32 with hue in degrees, for OpenCV

    Inputs()
    {
        rgb[kRandom] = randomBytes(3 * kPixels, 61);
        rgba[kRandom] = randomBytes(4 * kPixels, 62);
        hsv[kRandom] = randomBytes(3 * kPixels, 63);
        hls[kRandom] = randomBytes(3 * kPixels, 64);
        hlsPlanes[kRandom] = randomBytes(3 * kPixels, 65);
        rgb16[kRandom] = randomWords(3 * kPixels, 66);
        rgb32[kRandom] = unitFloats(3 * kPixels, 67);
        hls32[kRandom] = unitFloats(3 * kPixels, 68);

        const std::vector<float> picture = naturalPictureFloat(kWidth, kHeight, 3);
        rgb[kPicture] = naturalPicture(kWidth, kHeight, 3);
        rgba[kPicture] = naturalPicture(kWidth, kHeight, 4);
        rgb32[kPicture] = picture;
        rgb16[kPicture].resize(picture.size());
        for (std::size_t i = 0; i < picture.size(); ++i)
            rgb16[kPicture][i] = static_cast<Kel16u>(std::lround(picture[i] * 65535.0f));
        hsv[kPicture].resize(3 * kPixels);
        keliRGBToHSV_8u_C3R(rgb[kPicture].data(), 3 * kWidth, hsv[kPicture].data(), 3 * kWidth, kSize);
        hls[kPicture].resize(3 * kPixels);
        keliRGBToHLS_8u_C3R(rgb[kPicture].data(), 3 * kWidth, hls[kPicture].data(), 3 * kWidth, kSize);
        hlsPlanes[kPicture].resize(3 * kPixels);
        Kel8u* const planes[3] = {&hlsPlanes[kPicture][0], &hlsPlanes[kPicture][kPixels],
                                  &hlsPlanes[kPicture][2 * kPixels]};
        keliBGRToHLS_8u_C3P3R(rgb[kPicture].data(), 3 * kWidth, planes, kWidth, kSize);
        hls32[kPicture].resize(3 * kPixels);
        keliRGBToHLS_32f_C3R(rgb32[kPicture].data(), 12 * kWidth, hls32[kPicture].data(), 12 * kWidth, kSize);

        for (int k : {kRandom, kPicture}) {
            hlsPixels[k].resize(3 * kPixels);
            for (int i = 0; i < kPixels; ++i)
                for (int c = 0; c < 3; ++c) hlsPixels[k][3 * i + c] = hlsPlanes[k][c * kPixels + i];
            hlsDegrees32[k] = hls32[k];
            for (int i = 0; i < kPixels; ++i) hlsDegrees32[k][3 * i] *= 360.0f;
            for (int c = 0; c < 3; ++c) planePointers[k][c] = &hlsPlanes[k][c * kPixels];
        }
    }

    const Kel8u* const* planes(int k) const { return planePointers[k]; }
    const Kel8u* planePointers[2][3];
};

const Inputs& inputs()
{
    static const Inputs built;
    return built;
}

// Room for every destination, one set for ours and one for the peer.
struct Outputs {
    std::vector<Kel8u> bytes = std::vector<Kel8u>(4 * kPixels);
    std::vector<Kel16u> words = std::vector<Kel16u>(3 * kPixels);
    std::vector<Kel32f> floats = std::vector<Kel32f>(3 * kPixels);
    Kel8u* const planes[3] = {&bytes[0], &bytes[kPixels], &bytes[2 * kPixels]};
};
Outputs oursOut, peerOut;

using Run = std::function<void(const Inputs&, int)>;

struct Conversion {
    std::string ours, peer;
    Run runOurs, runPeer;
};

// These families share rows among threads_omp_of_n_kel threads, where the
// thread CPU clock would see only the calling thread's part: one thread here.
void onOneThread(const Run& run, int k)
{
    onThreads(1, [&] { run(inputs(), k); })();
}

// Two jobs of a conversion, on random pixels and on the picture.
void addBoth(std::vector<Job>& jobs, const Conversion& conversion)
{
    for (int k : {kRandom, kPicture}) {
        Job job{conversion.ours + (k == kPicture ? " (picture)" : ""),
                conversion.peer,
                [run = conversion.runOurs, k] { onOneThread(run, k); }, {}};
        if (conversion.runPeer) job.runPeer = [run = conversion.runPeer, k] { onOneThread(run, k); };
        jobs.push_back(job);
    }
}

#if KELCC_HAVE_OPENCV
// cvtColor from one whole image to another; OpenCV writes into our buffer
// (a reallocation would time an allocation as well, so it stops the run).
void cvt(const void* src, int srcType, void* dst, int dstType, int code)
{
    const cv::Mat in(kHeight, kWidth, srcType, const_cast<void*>(src));
    cv::Mat out(kHeight, kWidth, dstType, dst);
    cv::cvtColor(in, out, code);
    if (out.data != dst) std::abort();
}
#endif

void addHueJobs(std::vector<Job>& jobs)
{
    Conversion toHSV{"keliRGBToHSV_8u_C3R", "OpenCV RGB2HSV_FULL", [](const Inputs& in, int k) {
                         keliRGBToHSV_8u_C3R(in.rgb[k].data(), 3 * kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                     }, {}};
    Conversion fromHSV{"keliHSVToRGB_8u_C3R", "OpenCV HSV2RGB_FULL", [](const Inputs& in, int k) {
                           keliHSVToRGB_8u_C3R(in.hsv[k].data(), 3 * kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                       }, {}};
    Conversion toHLS{"keliRGBToHLS_8u_C3R", "OpenCV RGB2HLS_FULL", [](const Inputs& in, int k) {
                         keliRGBToHLS_8u_C3R(in.rgb[k].data(), 3 * kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                     }, {}};
    Conversion fromHLS{"keliHLSToRGB_8u_C3R", "OpenCV HLS2RGB_FULL", [](const Inputs& in, int k) {
                           keliHLSToRGB_8u_C3R(in.hls[k].data(), 3 * kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                       }, {}};
    // Ours writes four samples a pixel, leaving the fourth; OpenCV reads four
    // and writes three.
    Conversion toHLSFour{"keliBGRToHLS_8u_AC4R", "OpenCV BGR2HLS_FULL, 4 in, 3 out", [](const Inputs& in, int k) {
                             keliBGRToHLS_8u_AC4R(in.rgba[k].data(), 4 * kWidth, oursOut.bytes.data(), 4 * kWidth,
                                                  kSize);
                         }, {}};
    Conversion toHLSPlanes{"keliBGRToHLS_8u_C3P3R", "OpenCV BGR2HLS_FULL, interleaved out",
                           [](const Inputs& in, int k) {
                               keliBGRToHLS_8u_C3P3R(in.rgb[k].data(), 3 * kWidth, oursOut.planes, kWidth, kSize);
                           }, {}};
    Conversion fromHLSPlanes{"keliHLSToBGR_8u_P3C3R", "OpenCV HLS2BGR_FULL, interleaved in",
                             [](const Inputs& in, int k) {
                                 keliHLSToBGR_8u_P3C3R(in.planes(k), kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                             }, {}};
    Conversion toHLS32f{"keliRGBToHLS_32f_C3R", "OpenCV RGB2HLS 32f, H in degrees", [](const Inputs& in, int k) {
                            keliRGBToHLS_32f_C3R(in.rgb32[k].data(), 12 * kWidth, oursOut.floats.data(), 12 * kWidth,
                                                 kSize);
                        }, {}};
    Conversion fromHLS32f{"keliHLSToRGB_32f_C3R", "OpenCV HLS2RGB 32f, H in degrees", [](const Inputs& in, int k) {
                              keliHLSToRGB_32f_C3R(in.hls32[k].data(), 12 * kWidth, oursOut.floats.data(), 12 * kWidth,
                                                   kSize);
                          }, {}};
    Conversion toLab{"keliBGRToLab_8u_C3R", "OpenCV LBGR2Lab", [](const Inputs& in, int k) {
                         keliBGRToLab_8u_C3R(in.rgb[k].data(), 3 * kWidth, oursOut.bytes.data(), 3 * kWidth, kSize);
                     }, {}};
    // OpenCV has no 16-bit HSV or HLS: the 16-bit members against our 8-bit
    // ones, on the same picture (and on other random samples).
    Conversion toHLS16u{"keliRGBToHLS_16u_C3R", "our RGBToHLS_8u_C3R",
                        [](const Inputs& in, int k) {
                            keliRGBToHLS_16u_C3R(in.rgb16[k].data(), 6 * kWidth, oursOut.words.data(), 6 * kWidth,
                                                 kSize);
                        },
                        [](const Inputs& in, int k) {
                            keliRGBToHLS_8u_C3R(in.rgb[k].data(), 3 * kWidth, peerOut.bytes.data(), 3 * kWidth, kSize);
                        }};
    Conversion toHSV16u{"keliRGBToHSV_16u_C3R", "our RGBToHSV_8u_C3R",
                        [](const Inputs& in, int k) {
                            keliRGBToHSV_16u_C3R(in.rgb16[k].data(), 6 * kWidth, oursOut.words.data(), 6 * kWidth,
                                                 kSize);
                        },
                        [](const Inputs& in, int k) {
                            keliRGBToHSV_8u_C3R(in.rgb[k].data(), 3 * kWidth, peerOut.bytes.data(), 3 * kWidth, kSize);
                        }};
#if KELCC_HAVE_OPENCV
    cv::setNumThreads(1);
    toHSV.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgb[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_RGB2HSV_FULL);
    };
    fromHSV.runPeer = [](const Inputs& in, int k) {
        cvt(in.hsv[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_HSV2RGB_FULL);
    };
    toHLS.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgb[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_RGB2HLS_FULL);
    };
    fromHLS.runPeer = [](const Inputs& in, int k) {
        cvt(in.hls[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_HLS2RGB_FULL);
    };
    toHLSFour.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgba[k].data(), CV_8UC4, peerOut.bytes.data(), CV_8UC3, cv::COLOR_BGR2HLS_FULL);
    };
    toHLSPlanes.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgb[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_BGR2HLS_FULL);
    };
    fromHLSPlanes.runPeer = [](const Inputs& in, int k) {
        cvt(in.hlsPixels[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_HLS2BGR_FULL);
    };
    toHLS32f.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgb32[k].data(), CV_32FC3, peerOut.floats.data(), CV_32FC3, cv::COLOR_RGB2HLS);
    };
    fromHLS32f.runPeer = [](const Inputs& in, int k) {
        cvt(in.hlsDegrees32[k].data(), CV_32FC3, peerOut.floats.data(), CV_32FC3, cv::COLOR_HLS2RGB);
    };
    toLab.runPeer = [](const Inputs& in, int k) {
        cvt(in.rgb[k].data(), CV_8UC3, peerOut.bytes.data(), CV_8UC3, cv::COLOR_LBGR2Lab);
    };
#endif
    for (const Conversion* conversion : {&toHSV, &fromHSV, &toHLS, &fromHLS, &toHLSFour, &toHLSPlanes, &fromHLSPlanes,
                                         &toHLS32f, &fromHLS32f, &toHLS16u, &toHSV16u, &toLab})
        addBoth(jobs, *conversion);
}

const AddJobs kAdded(addHueJobs);

}  // namespace
