// The repacking jobs among 4:2:2, 4:2:0, 4:1:1 and 16:2:0 (planes, CbCr
// planes, pixel pairs), every member against the memory ceiling of its job,
// and against libyuv where it has the same job.
//
// The ceiling: a memcpy, through separate buffers, of (bytes read + bytes
// written) / 2, where bytes read are the whole rows of the effective image
// the call loads from (a row of which it keeps only every other sample still
// comes through the cache whole; rows it skips, the odd chroma rows of a
// dropping member, do not count) and bytes written are every destination
// byte.  Sizes are 1920 x 1080 with compact strides (a 4:1:1 chroma row is
// 480 bytes).  libyuv's I420ToI422 and I422ToI420 filter where ours repeat or
// drop rows: the same layouts, not quite the same job.
#include <cstring>

#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;
constexpr int kHalf = kWidth / 2, kQuarter = kWidth / 4;  // chroma samples in a 4:2:2 and a 4:1:1 row

// Source and destination storage, big enough for every layout of the family:
// planes Y, Cb, Cr, one plane of CbCr pairs, one image of pixel pairs.
struct Images {
    std::vector<Kel8u> y = randomBytes(kPixels, 21), cb = randomBytes(kPixels, 22), cr = randomBytes(kPixels, 23),
                       cbcr = randomBytes(kPixels, 24), pairs = randomBytes(2 * kPixels, 25);
    Kel8u* planes[3] = {y.data(), cb.data(), cr.data()};
    const Kel8u* constPlanes[3] = {y.data(), cb.data(), cr.data()};
};
Images& source()
{
    static Images images;
    return images;
}
Images& destination()
{
    static Images images;
    return images;
}

// Strides of three planes whose chroma rows hold `samples` samples.
struct Steps {
    int s[3];
};
constexpr Steps k422Steps{{kWidth, kHalf, kHalf}};  // 4:2:2 and 4:2:0
constexpr Steps k411Steps{{kWidth, kQuarter, kQuarter}};  // 4:1:1 and 16:2:0

// The memcpy of a job's ceiling, through its own pair of buffers.
std::function<void()> memcpyOf(std::size_t bytes)
{
    static std::vector<Kel8u> from = randomBytes(3 * kPixels, 26), to(3 * kPixels);
    return [bytes] { std::memcpy(to.data(), from.data(), bytes); };
}

// A member with the bytes it reads and writes, in eighths of the luma plane.
void addMember(std::vector<Job>& jobs, const char* name, int readEighths, int writtenEighths,
               std::function<void()> call)
{
    const std::size_t bytes = static_cast<std::size_t>(kPixels) / 8 * (readEighths + writtenEighths) / 2;
    char peer[64];
    std::snprintf(peer, sizeof peer, "memcpy %.2f MB", static_cast<double>(bytes) * 1e-6);
    jobs.push_back({name, peer, std::move(call), memcpyOf(bytes)});
}

// The calls by argument shape: planes (P3), Y and CbCr (P2), pixel pairs (C2).
using P3P3 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u* const[3], const int[3], KelImageSize);
using P3P2 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u*, int, Kel8u*, int, KelImageSize);
using P2P3 = KelResult (*)(const Kel8u*, int, const Kel8u*, int, Kel8u* const[3], const int[3], KelImageSize);
using C2P3 = KelResult (*)(const Kel8u*, int, Kel8u* const[3], const int[3], KelImageSize);
using P3C2 = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u*, int, KelImageSize);
using P2C2 = KelResult (*)(const Kel8u*, int, const Kel8u*, int, Kel8u*, int, KelImageSize);
using C2P2 = KelResult (*)(const Kel8u*, int, Kel8u*, int, Kel8u*, int, KelImageSize);
using C2C2 = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);

constexpr KelImageSize kSize{kWidth, kHeight};

std::function<void()> call(P3P3 f, Steps from, Steps to)
{
    return [=] { f(source().constPlanes, from.s, destination().planes, to.s, kSize); };
}
std::function<void()> call(P3P2 f, Steps from, int cbcrStep)
{
    return [=] {
        f(source().constPlanes, from.s, destination().y.data(), kWidth, destination().cbcr.data(), cbcrStep, kSize);
    };
}
std::function<void()> call(P2P3 f, int cbcrStep, Steps to)
{
    return [=] { f(source().y.data(), kWidth, source().cbcr.data(), cbcrStep, destination().planes, to.s, kSize); };
}
std::function<void()> call(C2P3 f, Steps to)
{
    return [=] { f(source().pairs.data(), 2 * kWidth, destination().planes, to.s, kSize); };
}
std::function<void()> call(P3C2 f, Steps from)
{
    return [=] { f(source().constPlanes, from.s, destination().pairs.data(), 2 * kWidth, kSize); };
}
std::function<void()> call(P2C2 f, int cbcrStep)
{
    return [=] { f(source().y.data(), kWidth, source().cbcr.data(), cbcrStep, destination().pairs.data(), 2 * kWidth, kSize); };
}
std::function<void()> call(C2P2 f, int cbcrStep)
{
    return [=] {
        f(source().pairs.data(), 2 * kWidth, destination().y.data(), kWidth, destination().cbcr.data(), cbcrStep, kSize);
    };
}
std::function<void()> call(C2C2 f)
{
    return [=] { f(source().pairs.data(), 2 * kWidth, destination().pairs.data(), 2 * kWidth, kSize); };
}

// Bytes in eighths of the luma plane: Y 8; chroma of both components 4:2:2 8,
// 4:2:0 and 4:1:1 4, 16:2:0 1; pixel pairs 16.
void addRepackJobs(std::vector<Job>& jobs)
{
    const int cbcr420 = kWidth, cbcr411 = kHalf;  // strides of the CbCr planes
    // Rows doubled; odd rows dropped (the even chroma rows alone are read).
    addMember(jobs, "keliYCbCr420ToYCbCr422_8u_P3R", 12, 16, call(keliYCbCr420ToYCbCr422_8u_P3R, k422Steps, k422Steps));
    addMember(jobs, "keliYCrCb420ToYCbCr422_8u_P3R", 12, 16, call(keliYCrCb420ToYCbCr422_8u_P3R, k422Steps, k422Steps));
    addMember(jobs, "keliYCbCr420ToYCbCr422_8u_P2P3R", 12, 16, call(keliYCbCr420ToYCbCr422_8u_P2P3R, cbcr420, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCbCr420_8u_P3R", 12, 12, call(keliYCbCr422ToYCbCr420_8u_P3R, k422Steps, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCbCr420_8u_C2P3R", 16, 12, call(keliYCbCr422ToYCbCr420_8u_C2P3R, k422Steps));
    addMember(jobs, "keliCbYCr422ToYCbCr420_8u_C2P3R", 16, 12, call(keliCbYCr422ToYCbCr420_8u_C2P3R, k422Steps));
    addMember(jobs, "keliYCrCb422ToYCbCr420_8u_C2P3R", 16, 12, call(keliYCrCb422ToYCbCr420_8u_C2P3R, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCbCr420_8u_P3P2R", 12, 12, call(keliYCbCr422ToYCbCr420_8u_P3P2R, k422Steps, cbcr420));
    // Same samples in another layout.
    addMember(jobs, "keliYCbCr422_8u_C2P3R", 16, 16, call(keliYCbCr422_8u_C2P3R, k422Steps));
    addMember(jobs, "keliYCrCb422ToYCbCr422_8u_C2P3R", 16, 16, call(keliYCrCb422ToYCbCr422_8u_C2P3R, k422Steps));
    addMember(jobs, "keliCbYCr422ToYCbCr422_8u_C2P3R", 16, 16, call(keliCbYCr422ToYCbCr422_8u_C2P3R, k422Steps));
    addMember(jobs, "keliYCbCr422_8u_P3C2R", 16, 16, call(keliYCbCr422_8u_P3C2R, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCrCb422_8u_P3C2R", 16, 16, call(keliYCbCr422ToYCrCb422_8u_P3C2R, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCrCb422_8u_C2R", 16, 16, call(keliYCbCr422ToYCrCb422_8u_C2R));
    addMember(jobs, "keliYCbCr420_8u_P3P2R", 12, 12, call(keliYCbCr420_8u_P3P2R, k422Steps, cbcr420));
    addMember(jobs, "keliYCbCr420_8u_P2P3R", 12, 12, call(keliYCbCr420_8u_P2P3R, cbcr420, k422Steps));
    addMember(jobs, "keliYCbCr411_8u_P3P2R", 12, 12, call(keliYCbCr411_8u_P3P2R, k411Steps, cbcr411));
    addMember(jobs, "keliYCbCr411_8u_P2P3R", 12, 12, call(keliYCbCr411_8u_P2P3R, cbcr411, k411Steps));
    // Odd columns dropped; columns doubled.
    addMember(jobs, "keliYCbCr422ToYCbCr411_8u_P3R", 16, 12, call(keliYCbCr422ToYCbCr411_8u_P3R, k422Steps, k411Steps));
    addMember(jobs, "keliYCbCr422ToYCbCr411_8u_P3P2R", 16, 12, call(keliYCbCr422ToYCbCr411_8u_P3P2R, k422Steps, cbcr411));
    addMember(jobs, "keliYCbCr422ToYCbCr411_8u_C2P2R", 16, 12, call(keliYCbCr422ToYCbCr411_8u_C2P2R, cbcr411));
    addMember(jobs, "keliYCbCr422ToYCbCr411_8u_C2P3R", 16, 12, call(keliYCbCr422ToYCbCr411_8u_C2P3R, k411Steps));
    addMember(jobs, "keliCbYCr422ToYCbCr411_8u_C2P3R", 16, 12, call(keliCbYCr422ToYCbCr411_8u_C2P3R, k411Steps));
    addMember(jobs, "keliYCrCb422ToYCbCr411_8u_C2P3R", 16, 12, call(keliYCrCb422ToYCbCr411_8u_C2P3R, k411Steps));
    addMember(jobs, "keliYCbCr411ToYCbCr422_8u_P3R", 12, 16, call(keliYCbCr411ToYCbCr422_8u_P3R, k411Steps, k422Steps));
    addMember(jobs, "keliYCbCr411ToYCrCb422_8u_P3R", 12, 16, call(keliYCbCr411ToYCrCb422_8u_P3R, k411Steps, k422Steps));
    addMember(jobs, "keliYCbCr411ToYCbCr422_8u_P3C2R", 12, 16, call(keliYCbCr411ToYCbCr422_8u_P3C2R, k411Steps));
    addMember(jobs, "keliYCbCr411ToYCrCb422_8u_P3C2R", 12, 16, call(keliYCbCr411ToYCrCb422_8u_P3C2R, k411Steps));
    addMember(jobs, "keliYCbCr411ToYCbCr422_8u_P2C2R", 12, 16, call(keliYCbCr411ToYCbCr422_8u_P2C2R, cbcr411));
    addMember(jobs, "keliYCbCr411ToYCbCr422_8u_P2P3R", 12, 16, call(keliYCbCr411ToYCbCr422_8u_P2P3R, cbcr411, k422Steps));
    // Columns stacked; rows unstacked.
    addMember(jobs, "keliYCbCr420ToYCbCr411_8u_P3P2R", 12, 12, call(keliYCbCr420ToYCbCr411_8u_P3P2R, k422Steps, cbcr411));
    addMember(jobs, "keliYCrCb420ToYCbCr411_8u_P3P2R", 12, 12, call(keliYCrCb420ToYCbCr411_8u_P3P2R, k422Steps, cbcr411));
    addMember(jobs, "keliYCbCr420ToYCbCr411_8u_P2P3R", 12, 12, call(keliYCbCr420ToYCbCr411_8u_P2P3R, cbcr420, k411Steps));
    addMember(jobs, "keliYCbCr411ToYCbCr420_8u_P3R", 12, 12, call(keliYCbCr411ToYCbCr420_8u_P3R, k411Steps, k422Steps));
    addMember(jobs, "keliYCbCr411ToYCbCr420_8u_P3P2R", 12, 12, call(keliYCbCr411ToYCbCr420_8u_P3P2R, k411Steps, cbcr420));
    addMember(jobs, "keliYCbCr411ToYCbCr420_8u_P2P3R", 12, 12, call(keliYCbCr411ToYCbCr420_8u_P2P3R, cbcr411, k422Steps));
    addMember(jobs, "keliYCbCr411ToYCrCb420_8u_P2P3R", 12, 12, call(keliYCbCr411ToYCrCb420_8u_P2P3R, cbcr411, k422Steps));
    // Resampling: 4:1:1 to 4:2:0 and 4:2:0 to 16:2:0 read the top chroma row of each pair.
    addMember(jobs, "keliYCbCr420To411_8u_P3R", 12, 12, call(keliYCbCr420To411_8u_P3R, k422Steps, k411Steps));
    addMember(jobs, "keliYCbCr411To420_8u_P3R", 10, 12, call(keliYCbCr411To420_8u_P3R, k411Steps, k422Steps));
    addMember(jobs, "keliYCbCr420To1620_8u_P3R", 10, 9, call(keliYCbCr420To1620_8u_P3R, k422Steps, k411Steps));
    addMember(jobs, "keliYCbCr1620To420_8u_P3R", 9, 12, call(keliYCbCr1620To420_8u_P3R, k411Steps, k422Steps));
    // NV12, YV12 (planes Y, Cr, Cb), YUY2 and UYVY.
    addMember(jobs, "keliYCbCr420ToYCbCr422_8u_P2C2R", 12, 16, call(keliYCbCr420ToYCbCr422_8u_P2C2R, cbcr420));
    addMember(jobs, "keliYCbCr420ToCbYCr422_8u_P2C2R", 12, 16, call(keliYCbCr420ToCbYCr422_8u_P2C2R, cbcr420));
    addMember(jobs, "keliYCbCr420ToYCrCb420_8u_P2P3R", 12, 12, call(keliYCbCr420ToYCrCb420_8u_P2P3R, cbcr420, k422Steps));
    addMember(jobs, "keliYCrCb420ToYCbCr420_8u_P3P2R", 12, 12, call(keliYCrCb420ToYCbCr420_8u_P3P2R, k422Steps, cbcr420));
    addMember(jobs, "keliYCrCb420ToYCbCr422_8u_P3C2R", 12, 16, call(keliYCrCb420ToYCbCr422_8u_P3C2R, k422Steps));
    addMember(jobs, "keliYCrCb420ToCbYCr422_8u_P3C2R", 12, 16, call(keliYCrCb420ToCbYCr422_8u_P3C2R, k422Steps));
    addMember(jobs, "keliYCbCr422ToCbYCr422_8u_C2R", 16, 16, call(keliYCbCr422ToCbYCr422_8u_C2R));
    addMember(jobs, "keliCbYCr422ToYCbCr422_8u_C2R", 16, 16, call(keliCbYCr422ToYCbCr422_8u_C2R));
    addMember(jobs, "keliYCbCr422ToYCrCb420_8u_C2P3R", 16, 12, call(keliYCbCr422ToYCrCb420_8u_C2P3R, k422Steps));
    addMember(jobs, "keliCbYCr422ToYCrCb420_8u_C2P3R", 16, 12, call(keliCbYCr422ToYCrCb420_8u_C2P3R, k422Steps));
    addMember(jobs, "keliYCbCr422ToYCbCr420_8u_C2P2R", 16, 12, call(keliYCbCr422ToYCbCr420_8u_C2P2R, cbcr420));
    addMember(jobs, "keliCbYCr422ToYCbCr420_8u_C2P2R", 16, 12, call(keliCbYCr422ToYCbCr420_8u_C2P2R, cbcr420));
    // Filtered: the four-tap chroma interpolators (which read their even rows
    // back from the destination: not counted) and whole-frame deinterlacing.
    addMember(jobs, "keliYCbCr420ToYCbCr422_Filter_8u_P3R", 12, 16,
              call(keliYCbCr420ToYCbCr422_Filter_8u_P3R, k422Steps, k422Steps));
    addMember(jobs, "keliYCbCr420ToYCbCr422_Filter_8u_P2P3R", 12, 16,
              call(keliYCbCr420ToYCbCr422_Filter_8u_P2P3R, cbcr420, k422Steps));
    constexpr int kWholeFrame = kelSliceTop | kelSliceMiddle | kelSliceBottom;
    addMember(jobs, "keliYCbCr420ToYCbCr422_Filter_8u_P2C2R", 12, 16, [=] {
        keliYCbCr420ToYCbCr422_Filter_8u_P2C2R(source().y.data(), kWidth, source().cbcr.data(), cbcr420,
                                               destination().pairs.data(), 2 * kWidth, kSize, kWholeFrame);
    });
    addMember(jobs, "keliYCbCr420ToYCrCb420_Filter_8u_P2P3R", 12, 12, [=] {
        keliYCbCr420ToYCrCb420_Filter_8u_P2P3R(source().y.data(), kWidth, source().cbcr.data(), cbcr420,
                                               destination().planes, k422Steps.s, kSize, kWholeFrame);
    });

#if KELCC_HAVE_LIBYUV
    // The same jobs in libyuv, on the peer's own pair of images.
    static Images s, d;
    jobs.push_back({"keliYCbCr420_8u_P2P3R", "libyuv NV12ToI420", call(keliYCbCr420_8u_P2P3R, cbcr420, k422Steps), [] {
                        libyuv::NV12ToI420(s.y.data(), kWidth, s.cbcr.data(), kWidth, d.y.data(), kWidth, d.cb.data(),
                                           kHalf, d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr420_8u_P3P2R", "libyuv I420ToNV12", call(keliYCbCr420_8u_P3P2R, k422Steps, cbcr420), [] {
                        libyuv::I420ToNV12(s.y.data(), kWidth, s.cb.data(), kHalf, s.cr.data(), kHalf, d.y.data(),
                                           kWidth, d.cbcr.data(), kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422_8u_C2P3R", "libyuv YUY2ToI422", call(keliYCbCr422_8u_C2P3R, k422Steps), [] {
                        libyuv::YUY2ToI422(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cb.data(), kHalf,
                                           d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422_8u_P3C2R", "libyuv I422ToYUY2", call(keliYCbCr422_8u_P3C2R, k422Steps), [] {
                        libyuv::I422ToYUY2(s.y.data(), kWidth, s.cb.data(), kHalf, s.cr.data(), kHalf, d.pairs.data(),
                                           2 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422ToYCbCr420_8u_C2P3R", "libyuv YUY2ToI420", call(keliYCbCr422ToYCbCr420_8u_C2P3R, k422Steps),
                    [] {
                        libyuv::YUY2ToI420(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cb.data(), kHalf,
                                           d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliCbYCr422ToYCbCr420_8u_C2P3R", "libyuv UYVYToI420", call(keliCbYCr422ToYCbCr420_8u_C2P3R, k422Steps),
                    [] {
                        libyuv::UYVYToI420(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cb.data(), kHalf,
                                           d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr420ToYCbCr422_8u_P3R", "libyuv I420ToI422", call(keliYCbCr420ToYCbCr422_8u_P3R, k422Steps, k422Steps),
                    [] {
                        libyuv::I420ToI422(s.y.data(), kWidth, s.cb.data(), kHalf, s.cr.data(), kHalf, d.y.data(),
                                           kWidth, d.cb.data(), kHalf, d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422ToYCbCr420_8u_P3R", "libyuv I422ToI420", call(keliYCbCr422ToYCbCr420_8u_P3R, k422Steps, k422Steps),
                    [] {
                        libyuv::I422ToI420(s.y.data(), kWidth, s.cb.data(), kHalf, s.cr.data(), kHalf, d.y.data(),
                                           kWidth, d.cb.data(), kHalf, d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    // YV12 planes are Y, Cr, Cb: libyuv's I420 calls get the planes in its order, U (Cb) first.
    jobs.push_back({"keliYCbCr420ToYCrCb420_8u_P2P3R", "libyuv NV12ToI420",
                    call(keliYCbCr420ToYCrCb420_8u_P2P3R, cbcr420, k422Steps), [] {
                        libyuv::NV12ToI420(s.y.data(), kWidth, s.cbcr.data(), kWidth, d.y.data(), kWidth, d.cb.data(),
                                           kHalf, d.cr.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCrCb420ToYCbCr420_8u_P3P2R", "libyuv I420ToNV12", call(keliYCrCb420ToYCbCr420_8u_P3P2R, k422Steps, cbcr420),
                    [] {
                        libyuv::I420ToNV12(s.y.data(), kWidth, s.cr.data(), kHalf, s.cb.data(), kHalf, d.y.data(),
                                           kWidth, d.cbcr.data(), kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCrCb420ToYCbCr422_8u_P3C2R", "libyuv I420ToYUY2", call(keliYCrCb420ToYCbCr422_8u_P3C2R, k422Steps), [] {
                        libyuv::I420ToYUY2(s.y.data(), kWidth, s.cr.data(), kHalf, s.cb.data(), kHalf, d.pairs.data(),
                                           2 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCrCb420ToCbYCr422_8u_P3C2R", "libyuv I420ToUYVY", call(keliYCrCb420ToCbYCr422_8u_P3C2R, k422Steps), [] {
                        libyuv::I420ToUYVY(s.y.data(), kWidth, s.cr.data(), kHalf, s.cb.data(), kHalf, d.pairs.data(),
                                           2 * kWidth, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422ToYCrCb420_8u_C2P3R", "libyuv YUY2ToI420", call(keliYCbCr422ToYCrCb420_8u_C2P3R, k422Steps), [] {
                        libyuv::YUY2ToI420(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cr.data(), kHalf,
                                           d.cb.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliCbYCr422ToYCrCb420_8u_C2P3R", "libyuv UYVYToI420", call(keliCbYCr422ToYCrCb420_8u_C2P3R, k422Steps), [] {
                        libyuv::UYVYToI420(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cr.data(), kHalf,
                                           d.cb.data(), kHalf, kWidth, kHeight);
                    }});
    jobs.push_back({"keliYCbCr422ToYCbCr420_8u_C2P2R", "libyuv YUY2ToNV12", call(keliYCbCr422ToYCbCr420_8u_C2P2R, cbcr420), [] {
                        libyuv::YUY2ToNV12(s.pairs.data(), 2 * kWidth, d.y.data(), kWidth, d.cbcr.data(), kWidth, kWidth,
                                           kHeight);
                    }});
#endif
}

const AddJobs kAdded(addRepackJobs);

} // namespace
