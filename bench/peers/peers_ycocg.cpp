// YCoCg of 8-bit BGR against the memcpy of the same bytes (what a call reads
// plus what it writes, halved): no peer has this transform.
#include <cstring>

#include "peers.h"

namespace {

using namespace peers;

constexpr int kPixels = kWidth * kHeight;

void addYCoCgJobs(std::vector<Job>& jobs)
{
    static const std::vector<Kel8u> bgr = randomBytes(3 * kPixels, 51);
    static std::vector<Kel8u> out(3 * kPixels);
    static std::vector<Kel16s> planes(3 * kPixels);
    static Kel16s* const dst[3] = {planes.data(), planes.data() + kPixels, planes.data() + 2 * kPixels};
    static const Kel16s* const src[3] = {dst[0], dst[1], dst[2]};
    static std::vector<Kel8u> from = randomBytes(9 * kPixels / 2, 52), to(9 * kPixels / 2);
    static const KelImageSize size{kWidth, kHeight};
    const auto copy = [] { std::memcpy(to.data(), from.data(), 9 * static_cast<std::size_t>(kPixels) / 2); };
    jobs.push_back({"keliBGRToYCoCg_8u16s_C3P3R", "memcpy 9.33 MB",
                    [] { keliBGRToYCoCg_8u16s_C3P3R(bgr.data(), 3 * kWidth, dst, 2 * kWidth, size); }, copy});
    jobs.push_back({"keliYCoCgToBGR_16s8u_P3C3R", "memcpy 9.33 MB",
                    [] { keliYCoCgToBGR_16s8u_P3C3R(src, 2 * kWidth, out.data(), 3 * kWidth, size); }, copy});
    jobs.push_back({"keliBGRToYCoCg_Rev_8u16s_C3P3R", "memcpy 9.33 MB",
                    [] { keliBGRToYCoCg_Rev_8u16s_C3P3R(bgr.data(), 3 * kWidth, dst, 2 * kWidth, size); }, copy});
    jobs.push_back({"keliYCoCgToBGR_Rev_16s8u_P3C3R", "memcpy 9.33 MB",
                    [] { keliYCoCgToBGR_Rev_16s8u_P3C3R(src, 2 * kWidth, out.data(), 3 * kWidth, size); }, copy});
}

const AddJobs kAdded(addYCoCgJobs);

} // namespace
