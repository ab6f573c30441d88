// Ours against the library a caller would otherwise pick, on the same job:
// the harness shared by the per-family job lists of kelcc_peers.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"

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

// `call` as a job body that runs with threads_omp_of_n_kel set to `threads`
// and puts it back: the families that share rows run on one thread where the
// thread CPU clock times them (it would see only the calling thread's part).
template <typename Call>
std::function<void()> onThreads(int threads, Call call)
{
    return [threads, call] {
        const int saved = threads_omp_of_n_kel;
        threads_omp_of_n_kel = threads;
        call();
        threads_omp_of_n_kel = saved;
    };
}

// n random floats in 0..1 (24-bit steps), the same for ours and the peer.
inline std::vector<Kel32f> unitFloats(std::size_t n, unsigned seed)
{
    std::vector<Kel32f> out(n);
    std::mt19937 gen(seed);
    for (auto& v : out) v = static_cast<Kel32f>(gen() >> 8) / 16777216.0f;
    return out;
}

// n random bytes, the same for ours and the peer.
inline std::vector<Kel8u> randomBytes(std::size_t n, unsigned seed = 42)
{
    std::vector<Kel8u> bytes(n);
    std::mt19937 gen(seed);
    for (auto& b : bytes) b = static_cast<Kel8u>(gen());
    return bytes;
}

// A natural-looking picture, width x height pixels of `channels` samples in
// 0..1: a sky fading to a haze over shaded, finely textured ground, faint noise
// on both, and on top of them shapes with hard edges: most shaded across (with
// the noise), some flat colour or flat grey (the same samples over a whole
// area).  A fourth channel is opaque (1).
inline std::vector<float> naturalPictureFloat(int width, int height, int channels, unsigned seed = 7)
{
    std::vector<float> picture(static_cast<std::size_t>(width) * height * channels, 1.0f);
    std::mt19937 gen(seed);
    const auto unit = [&gen] { return static_cast<float>(gen() >> 8) / 16777216.0f; };
    const auto noise = [&unit] { return (unit() - 0.5f) * (3.0f / 255.0f); };
    const auto put = [&](int x, int y, const float (&colour)[3]) {
        float* p = picture.data() + (static_cast<std::size_t>(y) * width + x) * channels;
        for (int c = 0; c < 3; ++c) p[c] = std::clamp(colour[c], 0.0f, 1.0f);
    };
    constexpr float kTurn = 6.2831853f;
    const int horizon = height * 2 / 5;
    const float phase = kTurn * unit();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const float u = static_cast<float>(x) / width, v = static_cast<float>(y) / height, n = noise();
            float colour[3];
            if (y < horizon) {
                const float t = static_cast<float>(y) / horizon;
                colour[0] = 0.30f + 0.50f * t + 0.05f * u + n;
                colour[1] = 0.50f + 0.35f * t + n;
                colour[2] = 0.90f + 0.05f * t - 0.05f * u + n;
            } else {
                // Broad light and shade, and a grain of a few pixels.
                const float grain = 0.06f * std::sin(0.9f * x + 3.0f * std::sin(0.05f * y)) * std::sin(0.7f * y);
                const float shade =
                    0.75f + 0.20f * std::sin(kTurn * 1.3f * u + phase) * std::cos(kTurn * 2.1f * v) + grain;
                colour[0] = shade * (0.40f + 0.15f * u) + n;
                colour[1] = shade * (0.50f - 0.10f * v) + n;
                colour[2] = shade * (0.22f + 0.10f * v) + n;
            }
            put(x, y, colour);
        }
    }
    // Rectangles and ellipses of 2% to 12% of the width.
    for (int shape = 0; shape < 36; ++shape) {
        const int w = static_cast<int>(width * (0.02f + 0.10f * unit()));
        const int h = static_cast<int>(w * (0.4f + 1.2f * unit()));
        const int left = static_cast<int>((width - w) * unit());
        const int top = static_cast<int>(std::max(0, height - h) * unit());
        const bool ellipse = gen() % 2;
        const unsigned kind = gen() % 8;  // 0, 1: flat colour; 2: flat grey; others shaded
        float base[3] = {unit(), unit(), unit()};
        if (kind == 2) base[1] = base[2] = base[0];
        const float tiltX = 0.8f * unit() - 0.4f, tiltY = 0.8f * unit() - 0.4f;
        for (int y = top; y < std::min(height, top + h); ++y) {
            for (int x = left; x < std::min(width, left + w); ++x) {
                const float dx = (x - left + 0.5f) / w - 0.5f, dy = (y - top + 0.5f) / h - 0.5f;
                if (ellipse && dx * dx + dy * dy > 0.25f) continue;
                const bool flat = kind < 3;
                const float shade = flat ? 1.0f : 1.0f + tiltX * dx + tiltY * dy, n = flat ? 0.0f : noise();
                const float colour[3] = {base[0] * shade + n, base[1] * shade + n, base[2] * shade + n};
                put(x, y, colour);
            }
        }
    }
    return picture;
}

// The same picture in bytes (0..255).
inline std::vector<Kel8u> naturalPicture(int width, int height, int channels, unsigned seed = 7)
{
    const std::vector<float> picture = naturalPictureFloat(width, height, channels, seed);
    std::vector<Kel8u> bytes(picture.size());
    for (std::size_t i = 0; i < picture.size(); ++i) bytes[i] = static_cast<Kel8u>(std::lround(picture[i] * 255.0f));
    return bytes;
}

} // namespace peers
