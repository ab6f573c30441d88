// Ours against the library a caller would otherwise pick, on the same job:
// 1920 x 1080, one thread, random pixels.  Ours and the peer alternate in
// rounds of about 40 ms of thread CPU time (wall time for the jobs that
// compare thread counts); a row prints the median speed of
// each and the median of the per-round ratios ours/peer (above 1: ours is
// faster).  Built without a peer, it prints our speeds alone.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "peers.h"

namespace peers {

std::vector<void (*)(std::vector<Job>&)>& jobLists()
{
    static std::vector<void (*)(std::vector<Job>&)> lists;
    return lists;
}

} // namespace peers

namespace {

using namespace peers;
constexpr int kRounds = 9;              // per side; the medians need 7 or more
constexpr double kRoundSeconds = 0.04;  // thread CPU time of one round

double seconds(clockid_t clock)
{
    timespec t{};
    clock_gettime(clock, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

// Seconds per call over `calls` calls: thread CPU time, or wall time for a job
// of more than one thread.
double timeCalls(const std::function<void()>& job, int calls, bool wallClock)
{
    const clockid_t clock = wallClock ? CLOCK_MONOTONIC : CLOCK_THREAD_CPUTIME_ID;
    const double start = seconds(clock);
    for (int i = 0; i < calls; ++i) job();
    return (seconds(clock) - start) / calls;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    return n % 2 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
}

void report(const Job& job)
{
    const double pixels = static_cast<double>(kWidth) * kHeight;
    job.runOurs();
    const int oursCalls = std::max(1, static_cast<int>(kRoundSeconds / timeCalls(job.runOurs, 3, job.wallClock)));
    int peerCalls = 0;
    if (job.runPeer) {
        job.runPeer();
        peerCalls = std::max(1, static_cast<int>(kRoundSeconds / timeCalls(job.runPeer, 3, job.wallClock)));
    }
    std::vector<double> oursRate, peerRate, ratio;
    for (int round = 0; round < kRounds; ++round) {
        oursRate.push_back(pixels * 1e-6 / timeCalls(job.runOurs, oursCalls, job.wallClock));
        if (!job.runPeer) continue;
        peerRate.push_back(pixels * 1e-6 / timeCalls(job.runPeer, peerCalls, job.wallClock));
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

// kelcc_peers [TEXT]: the jobs whose name holds TEXT, or all.
int main(int argc, char** argv)
{
    const std::string only = argc > 1 ? argv[1] : "";
    std::printf("%d x %d, one thread, random pixels, median of %d alternating rounds\n", kWidth, kHeight, kRounds);
    std::vector<Job> jobs;
    for (auto* list : jobLists()) list(jobs);
    for (const Job& job : jobs)
        if (job.ours.find(only) != std::string::npos) report(job);
    return 0;
}
