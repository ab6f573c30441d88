// Ours against the library a caller would otherwise pick, on the same job:
// the harness shared by the per-family job lists of kelcc_peers.
#pragma once

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"

namespace peers {

inline constexpr int kWidth = 1920, kHeight = 1080;

struct Job {
    std::string ours, peer;
    std::function<void()> runOurs, runPeer;  // runPeer empty: no peer in this build
    bool wallClock = false;  // timed by the wall clock: a job of more than one thread
};

// Every family file adds its jobs through one of these at load time:
//   const peers::AddJobs kAdded(addYCbCr420Jobs);
std::vector<void (*)(std::vector<Job>&)>& jobLists();
struct AddJobs {
    explicit AddJobs(void (*list)(std::vector<Job>&)) { jobLists().push_back(list); }
};

// n random bytes, the same for ours and the peer.
inline std::vector<Kel8u> randomBytes(std::size_t n, unsigned seed = 42)
{
    std::vector<Kel8u> bytes(n);
    std::mt19937 gen(seed);
    for (auto& b : bytes) b = static_cast<Kel8u>(gen());
    return bytes;
}

} // namespace peers
