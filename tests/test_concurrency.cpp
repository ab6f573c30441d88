// Host threads: two to eight std::threads calling members of several families
// at once (the same member on different images, and different members), each
// thread on images of its own, with a team size above one so that the
// library's parallel regions open inside the calls.  Every call gives the
// bytes the same call gave when it ran alone, and stays inside its images.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// Large enough for the families with a threshold to share their rows
// (6912 pixels), small enough to keep the test quick.
constexpr int kW = 96, kH = 72;

// What one call left: its status, its destination's rows, and whether both
// images' guards and padding held.
struct Outcome {
    KelResult status = kelErrNullPointer;
    std::vector<std::uint8_t> bytes;
    bool intact = false;
    bool operator==(const Outcome&) const = default;
};

// Float samples in 0..1 (a few just outside) on channels 0..channels-1 of
// every pixel, in place of the random bytes.
void unitFloats(Image& image, int width, int height, int channels, std::uint32_t seed)
{
    std::mt19937 gen(seed);
    std::uniform_real_distribution<float> unit(-0.02f, 1.02f);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) image.at<Kel32f>(x, y, c) = unit(gen);
}

// The source filled from the seed, the destination preset from it too, then
// the call; a float source takes unit samples over `floatChannels` channels.
template <typename Call>
Outcome outcomeOf(Image src, Image dst, std::uint32_t seed, const Call& call, int floatChannels = 0,
                  KelImageSize size = {kW, kH})
{
    src.fill(seed);
    if (floatChannels > 0) unitFloats(src, size.width, size.height, floatChannels, seed);
    dst.fill(seed ^ 0x5A5Au);
    Outcome out;
    out.status = call(src, dst);
    out.bytes = dst.rows();
    out.intact = src.intact() && dst.intact();
    return out;
}

template <typename T> T* as(Image& image) { return reinterpret_cast<T*>(image.ptr()); }
template <typename T> T* const* planesOf(Image& image) { return reinterpret_cast<T* const*>(image.pointers.data()); }

const Kel32f kTwist[12] = {0.299f, 0.587f, 0.114f, 3.0f, -0.169f, -0.331f, 0.5f, 128.0f, 0.5f, -0.419f, -0.081f, 127.5f};

struct Job {
    const char* name;
    Outcome (*run)(std::uint32_t seed);
};

// clang-format off
const Job kJobs[] = {
    {"RGBToHSV_8u_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3), pixels(kW, kH, 3), seed, [](Image& s, Image& d) {
            return keliRGBToHSV_8u_C3R(s.ptr(), s.step(), d.ptr(), d.step(), {kW, kH});
        });
    }},
    {"HSVToRGB_16u_AC4R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4, false, 2), pixels(kW, kH, 4, false, 2), seed, [](Image& s, Image& d) {
            return keliHSVToRGB_16u_AC4R(as<Kel16u>(s), s.step(), as<Kel16u>(d), d.step(), {kW, kH});
        });
    }},
    {"RGBToHLS_32f_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 4), pixels(kW, kH, 3, false, 4), seed, [](Image& s, Image& d) {
            return keliRGBToHLS_32f_C3R(as<Kel32f>(s), s.step(), as<Kel32f>(d), d.step(), {kW, kH});
        }, 3);
    }},
    {"BGRToHLS_8u_P3R", [](std::uint32_t seed) {
        return outcomeOf(planes(kW, kH), planes(kW, kH), seed, [](Image& s, Image& d) {
            return keliBGRToHLS_8u_P3R(s.in(), s.step(), d.out(), d.step(), {kW, kH});
        });
    }},
    {"HLSToBGR_8u_AC4P4R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4), planes(kW, kH, 4), seed, [](Image& s, Image& d) {
            return keliHLSToBGR_8u_AC4P4R(s.ptr(), s.step(), d.out(), d.step(), {kW, kH});
        });
    }},
    {"RGBToXYZ_16u_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 2), pixels(kW, kH, 3, false, 2), seed, [](Image& s, Image& d) {
            return keliRGBToXYZ_16u_C3R(as<Kel16u>(s), s.step(), as<Kel16u>(d), d.step(), {kW, kH});
        });
    }},
    {"RGBToLUV_32f_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 4), pixels(kW, kH, 3, false, 4), seed, [](Image& s, Image& d) {
            return keliRGBToLUV_32f_C3R(as<Kel32f>(s), s.step(), as<Kel32f>(d), d.step(), {kW, kH});
        }, 3);
    }},
    {"LUVToRGB_8u_AC4R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4), pixels(kW, kH, 4), seed, [](Image& s, Image& d) {
            return keliLUVToRGB_8u_AC4R(s.ptr(), s.step(), d.ptr(), d.step(), {kW, kH});
        });
    }},
    {"RGBToYCC_16s_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 2), pixels(kW, kH, 3, false, 2), seed, [](Image& s, Image& d) {
            return keliRGBToYCC_16s_C3R(as<Kel16s>(s), s.step(), as<Kel16s>(d), d.step(), {kW, kH});
        });
    }},
    {"BGRToLab_8u_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3), pixels(kW, kH, 3), seed, [](Image& s, Image& d) {
            return keliBGRToLab_8u_C3R(s.ptr(), s.step(), d.ptr(), d.step(), {kW, kH});
        });
    }},
    {"LabToBGR_16u8u_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 2), pixels(kW, kH, 3), seed, [](Image& s, Image& d) {
            return keliLabToBGR_16u8u_C3R(as<Kel16u>(s), s.step(), d.ptr(), d.step(), {kW, kH});
        });
    }},
    {"RGBToYCbCr_8u_P3R", [](std::uint32_t seed) {
        return outcomeOf(planes(kW, kH), planes(kW, kH), seed, [](Image& s, Image& d) {
            return keliRGBToYCbCr_8u_P3R(s.in(), s.step(), d.out(), d.step(), {kW, kH});
        });
    }},
    {"YCbCrToRGB_8u_AC4R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4), pixels(kW, kH, 4), seed, [](Image& s, Image& d) {
            return keliYCbCrToRGB_8u_AC4R(s.ptr(), s.step(), d.ptr(), d.step(), {kW, kH});
        });
    }},
    {"ReduceBits_8u_C3R_FloydSteinbergNoise", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3), pixels(kW, kH, 3), seed, [](Image& s, Image& d) {
            return keliReduceBits_8u_C3R(s.ptr(), s.step(), d.ptr(), d.step(), {kW, kH}, 30, kelDitherFloydSteinberg, 4);
        });
    }},
    {"ReduceBits_16u_C4R_Stucki", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4, false, 2), pixels(kW, kH, 4, false, 2), seed, [](Image& s, Image& d) {
            return keliReduceBits_16u_C4R(as<Kel16u>(s), s.step(), as<Kel16u>(d), d.step(), {kW, kH}, 0, kelDitherStucki, 9);
        });
    }},
    {"ReduceBits_32f8u_AC4R_JarvisJudiceNinkeNoise", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4, false, 4), pixels(kW, kH, 4), seed, [](Image& s, Image& d) {
            return keliReduceBits_32f8u_AC4R(as<Kel32f>(s), s.step(), d.ptr(), d.step(), {kW, kH}, 15,
                                             kelDitherJarvisJudiceNinke, 16);
        }, 4);
    }},
    {"ReduceBits_16s8u_C4R_OrderedNoise", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4, false, 2), pixels(kW, kH, 4), seed, [](Image& s, Image& d) {
            return keliReduceBits_16s8u_C4R(as<Kel16s>(s), s.step(), d.ptr(), d.step(), {kW, kH}, 40, kelDitherOrdered, 5);
        });
    }},
    {"ReduceBits_32f16u_C1R_Ordered", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 1, false, 4), pixels(kW, kH, 1, false, 2), seed, [](Image& s, Image& d) {
            return keliReduceBits_32f16u_C1R(as<Kel32f>(s), s.step(), as<Kel16u>(d), d.step(), {kW, kH}, 0, kelDitherOrdered, 7);
        }, 1);
    }},
    // 160 x 140 x 3 samples: past the direct path, through the call's table.
    {"GammaFwd_16u_C3R_Table", [](std::uint32_t seed) {
        return outcomeOf(pixels(160, 140, 3, false, 2), pixels(160, 140, 3, false, 2), seed, [](Image& s, Image& d) {
            return keliGammaFwd_16u_C3R(as<Kel16u>(s), s.step(), as<Kel16u>(d), d.step(), {160, 140});
        });
    }},
    {"GammaInv_16u_P3R_Table", [](std::uint32_t seed) {
        return outcomeOf(planes(160, 140, 3, 2), planes(160, 140, 3, 2), seed, [](Image& s, Image& d) {
            return keliGammaInv_16u_P3R(reinterpret_cast<const Kel16u* const*>(s.pointers.data()), s.step(),
                                        planesOf<Kel16u>(d), d.step(), {160, 140});
        });
    }},
    {"CFAToRGB_8u_C1C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 1), pixels(kW - 4, kH - 3, 3), seed, [](Image& s, Image& d) {
            return keliCFAToRGB_8u_C1C3R(s.ptr(), {3, 2, kW - 4, kH - 3}, {kW, kH}, s.step(), d.ptr(), d.step(),
                                         kelBayerGridGRBG);
        });
    }},
    {"ColorTwist32f_16u_AC4R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 4, false, 2), pixels(kW, kH, 4, false, 2), seed, [](Image& s, Image& d) {
            return keliColorTwist32f_16u_AC4R(as<Kel16u>(s), s.step(), as<Kel16u>(d), d.step(), {kW, kH}, kTwist);
        });
    }},
    {"ColorTwist_32f_C3R", [](std::uint32_t seed) {
        return outcomeOf(pixels(kW, kH, 3, false, 4), pixels(kW, kH, 3, false, 4), seed, [](Image& s, Image& d) {
            return keliColorTwist_32f_C3R(as<Kel32f>(s), s.step(), as<Kel32f>(d), d.step(), {kW, kH}, kTwist);
        }, 3);
    }},
};
// clang-format on
constexpr int kJobCount = static_cast<int>(std::size(kJobs));

// Calls each host thread makes: it starts at its own job and walks on, so
// that at any moment some threads run the same member and others different
// ones.  The seed depends on the job alone, so each call has one serial
// outcome to match.
constexpr int kCallsPerThread = 6;
int jobOf(int thread, int call) { return (thread * 5 + call * 3) % kJobCount; }
std::uint32_t seedOf(int job) { return 1000u + 17u * static_cast<std::uint32_t>(job); }

class Concurrency : public ::testing::TestWithParam<int> {};

TEST_P(Concurrency, HostThreadsGiveTheSerialBytes)
{
    const int teamSize = GetParam();
    ThreadCount team(teamSize);  // set before any host thread starts, read by all

    std::vector<Outcome> serial;
    for (const Job& job : kJobs) {
        serial.push_back(job.run(seedOf(static_cast<int>(serial.size()))));
        ASSERT_EQ(kelOk, serial.back().status) << job.name;
        ASSERT_TRUE(serial.back().intact) << job.name;
    }

    for (int hosts = 2; hosts <= 8; ++hosts) {
        std::vector<std::vector<Outcome>> results(static_cast<std::size_t>(hosts));
        std::vector<std::thread> threads;
        for (int t = 0; t < hosts; ++t)
            threads.emplace_back([t, &results] {
                for (int c = 0; c < kCallsPerThread; ++c) {
                    const int job = jobOf(t, c);
                    results[static_cast<std::size_t>(t)].push_back(kJobs[job].run(seedOf(job)));
                }
            });
        for (std::thread& thread : threads) thread.join();

        for (int t = 0; t < hosts; ++t)
            for (int c = 0; c < kCallsPerThread; ++c) {
                const int job = jobOf(t, c);
                const Outcome& got = results[static_cast<std::size_t>(t)][static_cast<std::size_t>(c)];
                const std::string what = std::string(kJobs[job].name) + ", " + std::to_string(hosts) +
                                         " host threads, thread " + std::to_string(t);
                EXPECT_EQ(kelOk, got.status) << what;
                EXPECT_TRUE(got.intact) << what;
                EXPECT_TRUE(got.bytes == serial[static_cast<std::size_t>(job)].bytes) << what;
            }
    }
}

// A team of one (every call on its host thread), two (this machine's cores)
// and three (channels split unevenly in error diffusion).
INSTANTIATE_TEST_SUITE_P(TeamSize, Concurrency, ::testing::Values(1, 2, 3),
                         [](const ::testing::TestParamInfo<int>& info) {
                             return "Team" + std::to_string(info.param);
                         });

// One member on six host threads at once, each with images of its own
// holding the same source: every thread gets the bytes of the call made alone.
TEST(Concurrency, SameMemberOnEveryThreadAtOnce)
{
    ThreadCount team(2);
    for (int job = 0; job < kJobCount; ++job) {
        const Outcome alone = kJobs[job].run(seedOf(job));
        std::vector<Outcome> results(6);
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < results.size(); ++t)
            threads.emplace_back([t, job, &results] { results[t] = kJobs[job].run(seedOf(job)); });
        for (std::thread& thread : threads) thread.join();
        for (std::size_t t = 0; t < results.size(); ++t)
            EXPECT_TRUE(results[t] == alone) << kJobs[job].name << ", thread " << t;
    }
}

// A destination step of 0 (or less than a row) folds every row onto the
// same bytes.  Such calls run on the calling thread whatever the team, so the
// last row's result is what stays, as a team of one leaves it, with no two
// threads writing the same byte (the thread-checking build sees this test).
TEST(Concurrency, OverlappingDestinationRowsGiveTheResultOfATeamOfOne)
{
    constexpr int w = 80, h = 64;  // 5120 pixels: above the threshold of the families that have one
    struct Fold {
        const char* name;
        int dstStep;
        KelResult (*call)(Image& s, Kel8u* d, int dstStep);
    };
    const Fold folds[] = {
        {"BGRToLab_8u_C3R, step 0", 0, [](Image& s, Kel8u* d, int step) { return keliBGRToLab_8u_C3R(s.ptr(), s.step(), d, step, {w, h}); }},
        {"RGBToHSV_8u_C3R, step 0", 0, [](Image& s, Kel8u* d, int step) { return keliRGBToHSV_8u_C3R(s.ptr(), s.step(), d, step, {w, h}); }},
        {"RGBToXYZ_8u_C3R, step 3", 3, [](Image& s, Kel8u* d, int step) { return keliRGBToXYZ_8u_C3R(s.ptr(), s.step(), d, step, {w, h}); }},
        {"ReduceBits_8u_C3R fs, step 0", 0, [](Image& s, Kel8u* d, int step) {
             return keliReduceBits_8u_C3R(s.ptr(), s.step(), d, step, {w, h}, 0, kelDitherFloydSteinberg, 4);
         }},
        {"ReduceBits_8u_C3R ordered, step 0", 0, [](Image& s, Kel8u* d, int step) {
             return keliReduceBits_8u_C3R(s.ptr(), s.step(), d, step, {w, h}, 0, kelDitherOrdered, 4);
         }},
    };
    for (const Fold& f : folds) {
        std::vector<std::uint8_t> byTeam[2];
        int slot = 0;
        for (int team : {1, 4}) {
            ThreadCount threads(team);
            Image src = pixels(w, h, 3);
            src.fill(77);
            Image dst = pixels(w + h, 1, 3);  // one row, and room for rows a pixel apart
            dst.fillWith(0);
            ASSERT_EQ(kelOk, f.call(src, dst.ptr(), f.dstStep)) << f.name;
            EXPECT_TRUE(dst.intact()) << f.name;
            byTeam[slot++] = dst.rows();
        }
        EXPECT_EQ(byTeam[0], byTeam[1]) << f.name;
    }
}

} // namespace
