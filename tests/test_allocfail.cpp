// Failing allocations, member by member: every public function that takes
// memory from the allocator hooks (the 16-bit gamma members on their table
// path, the bit-depth reduction's noise and error-diffusion forms, the random
// generator's records and the aligned blocks themselves) is first run once to
// count its requests, then once for each request with that request refused:
// kelErrNoMemory, no pixel written, no request after the refusal, and every
// block handed out given back.  With a team of one and of four.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/hooks.h"
#include "support/layouts.h"
#include "support/reducemembers.h"

using namespace kt;

namespace {

constexpr int kTeams[] = {1, 4};

// Every block the hooks handed out was freed exactly once, and nothing else.
::testing::AssertionResult allGivenBack(const HookLog& log)
{
    if (log.freed.size() != log.handedOut.size())
        return ::testing::AssertionFailure() << log.handedOut.size() << " blocks handed out, " << log.freed.size()
                                             << " freed";
    for (void* p : log.handedOut)
        if (std::count(log.freed.begin(), log.freed.end(), p) != 1)
            return ::testing::AssertionFailure() << "block " << p << " not freed exactly once";
    return ::testing::AssertionSuccess();
}

// ---- members on images ----------------------------------------------------------------------

// A call on a source and a destination image (in-place members work on the
// destination alone), the images it takes, and the requests a successful
// call makes.
struct ImageCase {
    std::string name;
    int requests;
    std::function<Image()> source, destination;
    std::function<KelResult(Image& src, Image& dst)> call;
};

void PrintTo(const ImageCase& c, std::ostream* os) { *os << c.name; }

// ---- 16-bit gamma: 200 x 110 pixels are 66000 treated samples, past the
// direct path (65536), so each call builds a table of its own.

constexpr KelImageSize kGammaSize{200, 110};

template <KelResult (*F)(const Kel16u*, int, Kel16u*, int, KelImageSize)>
ImageCase gammaPixels(const char* name, int pitch)
{
    const auto image = [pitch] { return pixels(kGammaSize.width, kGammaSize.height, pitch, false, 2); };
    return {name, 1, image, image, [](Image& s, Image& d) {
                return F(reinterpret_cast<const Kel16u*>(s.ptr()), s.step(), reinterpret_cast<Kel16u*>(d.ptr()),
                         d.step(), kGammaSize);
            }};
}

template <KelResult (*F)(Kel16u*, int, KelImageSize)>
ImageCase gammaPixelsInPlace(const char* name, int pitch)
{
    return {name, 1, [] { return pixels(1, 1, 1); },
            [pitch] { return pixels(kGammaSize.width, kGammaSize.height, pitch, false, 2); },
            [](Image&, Image& d) { return F(reinterpret_cast<Kel16u*>(d.ptr()), d.step(), kGammaSize); }};
}

template <KelResult (*F)(const Kel16u* const*, int, Kel16u* const*, int, KelImageSize)>
ImageCase gammaPlanes(const char* name)
{
    const auto image = [] { return planes(kGammaSize.width, kGammaSize.height, 3, 2); };
    return {name, 1, image, image, [](Image& s, Image& d) {
                return F(reinterpret_cast<const Kel16u* const*>(s.pointers.data()), s.step(),
                         reinterpret_cast<Kel16u* const*>(d.pointers.data()), d.step(), kGammaSize);
            }};
}

template <KelResult (*F)(Kel16u* const*, int, KelImageSize)>
ImageCase gammaPlanesInPlace(const char* name)
{
    return {name, 1, [] { return pixels(1, 1, 1); },
            [] { return planes(kGammaSize.width, kGammaSize.height, 3, 2); },
            [](Image&, Image& d) {
                return F(reinterpret_cast<Kel16u* const*>(d.pointers.data()), d.step(), kGammaSize);
            }};
}

#define GAMMA_DIRECTION(DIR)                                                       \
    gammaPixels<keliGamma##DIR##_16u_C3R>("keliGamma" #DIR "_16u_C3R", 3),          \
    gammaPixelsInPlace<keliGamma##DIR##_16u_C3IR>("keliGamma" #DIR "_16u_C3IR", 3), \
    gammaPixels<keliGamma##DIR##_16u_AC4R>("keliGamma" #DIR "_16u_AC4R", 4),        \
    gammaPixelsInPlace<keliGamma##DIR##_16u_AC4IR>("keliGamma" #DIR "_16u_AC4IR", 4), \
    gammaPlanes<keliGamma##DIR##_16u_P3R>("keliGamma" #DIR "_16u_P3R"),              \
    gammaPlanesInPlace<keliGamma##DIR##_16u_IP3R>("keliGamma" #DIR "_16u_IP3R")

// ---- bit-depth reduction: the forms that take memory.  The noise forms take
// a value table, an index table and the two generators' records behind them;
// error diffusion takes one block of error rows for all its sections.

struct ReduceForm {
    const char* name;
    int kind, noise, requests;
};
constexpr ReduceForm kReduceForms[] = {
    {"OrderedNoise", kelDitherOrdered, 25, 4},
    {"FloydSteinberg", kelDitherFloydSteinberg, 0, 1},
    {"FloydSteinbergNoise", kelDitherFloydSteinberg, 35, 5},
    {"JarvisJudiceNinke", kelDitherJarvisJudiceNinke, 0, 1},
    {"JarvisJudiceNinkeNoise", kelDitherJarvisJudiceNinke, 60, 5},
    {"Stucki", kelDitherStucki, 0, 1},
    {"StuckiNoise", kelDitherStucki, 100, 5},
};

constexpr KelImageSize kReduceSize{13, 5};

ImageCase reduceCase(const reducebits::Member& m, const ReduceForm& f)
{
    return {std::string(m.name) + "_" + f.name, f.requests,
            [m] { return pixels(kReduceSize.width, kReduceSize.height, m.pitch, false, std::size_t(m.srcBytes)); },
            [m] { return pixels(kReduceSize.width, kReduceSize.height, m.pitch, false, std::size_t(m.dstBytes)); },
            [m, f](Image& s, Image& d) {
                return m.call(s.ptr(), s.step(), d.ptr(), d.step(), kReduceSize, f.noise, f.kind, 4);
            }};
}

std::vector<ImageCase> imageCases()
{
    std::vector<ImageCase> cases{GAMMA_DIRECTION(Fwd), GAMMA_DIRECTION(Inv)};
    for (const reducebits::Member& m : reducebits::kMembers)
        for (const ReduceForm& f : kReduceForms) cases.push_back(reduceCase(m, f));
    return cases;
}

#undef GAMMA_DIRECTION

class AllocationFailure : public ::testing::TestWithParam<ImageCase> {};

// 0x3E in every byte: a float of about 0.19, and 16-bit samples of 15934,
// which every member here changes.
TEST_P(AllocationFailure, EveryRequestRefusedInTurnFailsCleanly)
{
    const ImageCase& c = GetParam();
    for (int team : kTeams) {
        ThreadCount threads(team);
        const std::string where = c.name + ", team of " + std::to_string(team);
        Image src = c.source(), dst = c.destination();
        src.fillWith(0x3E);

        // Nothing refused: the requests are counted, and the call writes.
        dst.fillWith(0x3E);
        std::vector<std::uint8_t> before = dst.rows();
        HookLog counted;
        KelResult status;
        {
            const HookScope scope(counted);
            status = c.call(src, dst);
        }
        ASSERT_EQ(kelOk, status) << where;
        EXPECT_EQ(std::size_t(c.requests), counted.requests()) << where;
        EXPECT_TRUE(allGivenBack(counted)) << where;
        EXPECT_NE(before, dst.rows()) << where;
        EXPECT_TRUE(src.intact() && dst.intact()) << where;

        const int requests = static_cast<int>(counted.requests());
        for (int k = 1; k <= requests; ++k) {
            const std::string what = where + ", request " + std::to_string(k) + " refused";
            dst.fillWith(0x3E);
            before = dst.rows();
            HookLog log;
            log.failAt = k;
            {
                const HookScope scope(log);
                status = c.call(src, dst);
            }
            EXPECT_EQ(kelErrNoMemory, status) << what;
            EXPECT_EQ(std::size_t(k), log.requests()) << what << ": no request after the refusal";
            EXPECT_TRUE(allGivenBack(log)) << what;
            EXPECT_TRUE(before == dst.rows()) << what << ": a pixel was written";
            EXPECT_TRUE(src.intact() && dst.intact()) << what;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Members, AllocationFailure, ::testing::ValuesIn(imageCases()),
                         [](const ::testing::TestParamInfo<ImageCase>& info) { return info.param.name; });

// ---- the generator's records ----------------------------------------------------------------

// A refused record leaves *ppState as it was and takes nothing: one record
// type, created and freed once to count its requests, then refused.
template <typename State, typename Init, typename Free>
void expectInitAllocRefusal(Init init, Free release, const char* name)
{
    alignas(64) unsigned char marker[64];
    HookLog counted;
    State* state = nullptr;
    {
        const HookScope scope(counted);
        ASSERT_EQ(kelOk, init(&state)) << name;
        EXPECT_EQ(kelOk, release(state)) << name;
    }
    EXPECT_EQ(1u, counted.requests()) << name;
    EXPECT_TRUE(allGivenBack(counted)) << name;

    HookLog log;
    log.failAt = 1;
    auto* sentinel = reinterpret_cast<State*>(marker);
    state = sentinel;
    {
        const HookScope scope(log);
        EXPECT_EQ(kelErrNoMemory, init(&state)) << name;
    }
    EXPECT_EQ(sentinel, state) << name;
    EXPECT_EQ(1u, log.requests()) << name;
    EXPECT_TRUE(log.handedOut.empty() && log.freed.empty()) << name;
}

TEST(AllocationFailureRecords, InitAllocLeavesTheStateAsItWas)
{
    for (int team : kTeams) {
        ThreadCount threads(team);
        expectInitAllocRefusal<KelRandUniformState_16s>(
            [](KelRandUniformState_16s** p) { return kelsRandUniformInitAlloc_16s(p, -100, 100, 7); },
            [](KelRandUniformState_16s* p) { return kelsRandUniformFree_16s(p); }, "16s");
        expectInitAllocRefusal<KelRandUniformState_32f>(
            [](KelRandUniformState_32f** p) { return kelsRandUniformInitAlloc_32f(p, -1.0f, 1.0f, 7); },
            [](KelRandUniformState_32f* p) { return kelsRandUniformFree_32f(p); }, "32f");
    }
}

// ---- the aligned blocks ---------------------------------------------------------------------

// One request a block; refused, it gives NULL and takes nothing.
TEST(AllocationFailureBlocks, RefusedRequestGivesNull)
{
    struct Block {
        const char* name;
        void* (*get)(int);
    };
    const Block blocks[] = {
        {"kelsMalloc_16s", [](int n) -> void* { return kelsMalloc_16s(n); }},
        {"kelsMalloc_16u", [](int n) -> void* { return kelsMalloc_16u(n); }},
        {"kelsMalloc_32f", [](int n) -> void* { return kelsMalloc_32f(n); }},
    };
    for (const Block& b : blocks)
        for (int len : {1, 77, 65536}) {
            HookLog counted;
            {
                const HookScope scope(counted);
                void* p = b.get(len);
                EXPECT_NE(nullptr, p) << b.name;
                kelsFree(p);
            }
            EXPECT_EQ(1u, counted.requests()) << b.name;
            EXPECT_TRUE(allGivenBack(counted)) << b.name;

            HookLog log;
            log.failAt = 1;
            {
                const HookScope scope(log);
                EXPECT_EQ(nullptr, b.get(len)) << b.name << " " << len;
            }
            EXPECT_EQ(1u, log.requests()) << b.name;
            EXPECT_TRUE(log.handedOut.empty() && log.freed.empty()) << b.name;
        }
}

} // namespace
