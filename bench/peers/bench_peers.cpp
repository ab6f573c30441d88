// Ours against the library a caller would otherwise pick, on the same job:
// 1920 x 1080, one thread, random pixels.  Ours and the peer alternate in
// rounds of about 40 ms of thread CPU time; a row prints the median speed of
// each and the median of the per-round ratios ours/peer (above 1: ours is
// faster).  Built without a peer, it prints our speeds alone.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr int kRounds = 9;              // per side; the medians need 7 or more
constexpr double kRoundSeconds = 0.04;  // thread CPU time of one round

double threadSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Seconds of thread CPU time per call, over `calls` calls.
double timeCalls(const std::function<void()>& job, int calls)
{
    const double start = threadSeconds();
    for (int i = 0; i < calls; ++i) job();
    return (threadSeconds() - start) / calls;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    return n % 2 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
}

// The planes of one random 4:2:0 image and a three-channel destination.
struct Frame420 {
    Frame420() : luma(kWidth * kHeight), cb(kWidth / 2 * (kHeight / 2)), cr(cb.size()), rgb(3 * luma.size())
    {
        std::mt19937 gen(42);
        for (auto* plane : {&luma, &cb, &cr})
            for (auto& b : *plane) b = static_cast<Kel8u>(gen());
    }
    std::vector<Kel8u> luma, cb, cr, rgb;
    const Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
};

struct Job {
    std::string ours, peer;
    std::function<void()> runOurs, runPeer;  // runPeer empty: no peer in this build
};

void report(const Job& job)
{
    const double pixels = static_cast<double>(kWidth) * kHeight;
    job.runOurs();
    const int oursCalls = std::max(1, static_cast<int>(kRoundSeconds / timeCalls(job.runOurs, 3)));
    int peerCalls = 0;
    if (job.runPeer) {
        job.runPeer();
        peerCalls = std::max(1, static_cast<int>(kRoundSeconds / timeCalls(job.runPeer, 3)));
    }
    std::vector<double> oursRate, peerRate, ratio;
    for (int round = 0; round < kRounds; ++round) {
        oursRate.push_back(pixels * 1e-6 / timeCalls(job.runOurs, oursCalls));
        if (!job.runPeer) continue;
        peerRate.push_back(pixels * 1e-6 / timeCalls(job.runPeer, peerCalls));
        ratio.push_back(oursRate.back() / peerRate.back());
    }
    if (job.runPeer) {
        std::printf("%-32s %8.0f Mpix/s   %-22s %8.0f Mpix/s   ours/peer %.2fx\n", job.ours.c_str(), median(oursRate),
                    job.peer.c_str(), median(peerRate), median(ratio));
    } else {
        std::printf("%-32s %8.0f Mpix/s   (no peer in this build)\n", job.ours.c_str(), median(oursRate));
    }
}

} // namespace

int main()
{
    std::printf("%d x %d, one thread, random pixels, median of %d alternating rounds\n", kWidth, kHeight, kRounds);
    Frame420 ours, peer;
    const KelImageSize size{kWidth, kHeight};
    std::vector<Job> jobs;
    // libyuv's RAW is R, G, B in memory, as our RGB; its RGB24 is B, G, R, as our BGR.
    jobs.push_back({"keliYCbCr420ToRGB_8u_P3C3R", "libyuv I420ToRAW",
                    [&] { keliYCbCr420ToRGB_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size); },
                    {}});
    jobs.push_back({"keliYCbCr420ToBGR_8u_P3C3R", "libyuv I420ToRGB24",
                    [&] { keliYCbCr420ToBGR_8u_P3C3R(ours.planes, ours.steps, ours.rgb.data(), 3 * kWidth, size); },
                    {}});
#if KELCC_HAVE_LIBYUV
    jobs[0].runPeer = [&] {
        libyuv::I420ToRAW(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                          peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
    };
    jobs[1].runPeer = [&] {
        libyuv::I420ToRGB24(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                            peer.rgb.data(), 3 * kWidth, kWidth, kHeight);
    };
#endif
    for (const Job& job : jobs) report(job);
    return 0;
}
