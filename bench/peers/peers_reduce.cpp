// Bit-depth reduction with the ordered dither.  No peer does this job, so the
// rows compare it with the memcpy of the same bytes (what it reads plus what it
// writes, halved), and its two-thread run with its one-thread run (wall
// time): 16 levels for 8-bit destinations, 1024 for 16-bit ones, noise 20%.
#include <cstring>

#include "kelcore.h"
#include "peers.h"

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;
constexpr int kLevels = 16;

template <typename T>
std::vector<T> unitFloats(std::size_t n)
{
    const std::vector<Kel8u> bytes = randomBytes(n, 12);
    std::vector<T> out(n);
    for (std::size_t i = 0; i < n; ++i) out[i] = static_cast<T>(bytes[i]) / 255.0f;
    return out;
}

void addReduceJobs(std::vector<Job>& jobs)
{
    static const std::vector<Kel8u> src8 = randomBytes(3 * kPixels, 21);
    static std::vector<Kel8u> dst8(3 * kPixels);
    static const std::vector<Kel8u> words = randomBytes(6 * kPixels, 22);
    static std::vector<Kel16u> dst16(3 * kPixels);
    static const std::vector<Kel32f> floats = unitFloats<Kel32f>(3 * kPixels);
    static std::vector<Kel8u> from = randomBytes(8 * kPixels, 23), to(8 * kPixels);
    static const KelImageSize size{kWidth, kHeight};

    const auto ordered8u = [](int noise) {
        return [noise] {
            keliReduceBits_8u_C3R(src8.data(), 3 * kWidth, dst8.data(), 3 * kWidth, size, noise, kelDitherOrdered, kLevels);
        };
    };
    const auto copy = [](std::size_t halfBytesPerPixel) {
        return [halfBytesPerPixel] { std::memcpy(to.data(), from.data(), halfBytesPerPixel * kPixels / 2); };
    };
    const auto ordered16u = [] {
        keliReduceBits_16u_C3R(reinterpret_cast<const Kel16u*>(words.data()), 6 * kWidth, dst16.data(), 6 * kWidth,
                               size, 0, kelDitherOrdered, 1024);
    };
    const auto ordered32f8u = [] {
        keliReduceBits_32f8u_C3R(floats.data(), 12 * kWidth, dst8.data(), 3 * kWidth, size, 0, kelDitherOrdered,
                                 kLevels);
    };
    const auto noise16u = [] {
        keliReduceBits_16u_C3R(reinterpret_cast<const Kel16u*>(words.data()), 6 * kWidth, dst16.data(), 6 * kWidth,
                               size, 20, kelDitherOrdered, 1024);
    };
    jobs.push_back({"keliReduceBits_8u_C3R(ordered)", "memcpy 6.22 MB", onThreads(1, ordered8u(0)), copy(6)});
    Job threads{"keliReduceBits_8u_C3R(ordered,2thr)", "the same, 1 thread", onThreads(2, ordered8u(0)),
                onThreads(1, ordered8u(0))};
    threads.wallClock = true;
    jobs.push_back(threads);
    jobs.push_back({"keliReduceBits_8u_C3R(noise)", "memcpy 6.22 MB", onThreads(1, ordered8u(20)), copy(6)});
    jobs.push_back({"keliReduceBits_16u_C3R(ordered)", "memcpy 12.4 MB", onThreads(1, ordered16u), copy(12)});
    jobs.push_back({"keliReduceBits_16u_C3R(noise)", "memcpy 12.4 MB", onThreads(1, noise16u), copy(12)});
    jobs.push_back({"keliReduceBits_32f8u_C3R(ordered)", "memcpy 15.6 MB", onThreads(1, ordered32f8u), copy(15)});
}

const AddJobs kAdded(addReduceJobs);

} // namespace
