// Uniform random numbers for 16s and 32f samples: a 32-bit congruential
// sequence plus a 32-bit subtract-with-borrow sequence, mapped onto [low, high].
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "alloc.h"
#include "callframe.h"

using namespace kel;

// The records, field for field in this order; both start with the 32-bit tag,
// so a record of either kind can be told by its first four bytes.  seed, low
// and high are kept as they were passed and never read again.
struct KelRandUniformState_16s {
    std::int32_t tag;
    std::uint32_t seed;
    Kel16s low;
    Kel16s high;
    double mean;
    double scale;
    std::uint32_t lcg;
    std::uint32_t s0, s1, s2;  // the last three subtract-with-borrow values, s0 the newest
    std::int32_t borrow;       // 0 or -1
};

struct KelRandUniformState_32f {
    std::int32_t tag;
    std::uint32_t seed;
    Kel32f low;
    Kel32f high;
    double mean;
    double scale;
    std::uint32_t lcg;
    std::uint32_t s0, s1, s2;
    std::int32_t borrow;
};

namespace {

constexpr std::int32_t kTag16s = 36;
constexpr std::int32_t kTag32f = 37;

// A record takes twice (16s) and four times (32f) the bytes its fields need
// on a 32-bit build: room enough for the padding of wider builds.
constexpr int kRecordElements16s = 48;
constexpr int kRecordElements32f = 52;
static_assert(sizeof(KelRandUniformState_16s) <= kRecordElements16s * sizeof(Kel16s));
static_assert(sizeof(KelRandUniformState_32f) <= kRecordElements32f * sizeof(Kel32f));
static_assert(offsetof(KelRandUniformState_16s, tag) == 0 && offsetof(KelRandUniformState_32f, tag) == 0);

template <typename Record>
bool carriesTag(const Record* record, std::int32_t tag);
template <typename Record, typename Limit>
void initRecord(Record* record, std::int32_t tag, Limit low, Limit high, std::uint32_t seed,
                long double sum, long double difference);
void ownRandUniform_16s(Kel16s* dst, int len, KelRandUniformState_16s* state);
void ownRandUniform_32f(Kel32f* dst, int len, KelRandUniformState_32f* state);

} // namespace

extern "C" {

KEL_API KelResult kelsRandUniformInitAlloc_16s(KelRandUniformState_16s** ppState, Kel16s low, Kel16s high,
                                               unsigned int seed)
{
    if (anyNull(ppState)) return kelErrNullPointer;
    void* block = kelsMalloc_16s(kRecordElements16s);
    if (block == nullptr) return kelErrNoMemory;
    auto* record = new (block) KelRandUniformState_16s;
    // The 32-bit sum and difference of two 16-bit values are exact.
    const std::int32_t sum = std::int32_t{low} + std::int32_t{high};
    const std::int32_t difference = std::int32_t{high} - std::int32_t{low};
    initRecord(record, kTag16s, low, high, seed, static_cast<long double>(sum), static_cast<long double>(difference));
    *ppState = record;
    return kelOk;
}

KEL_API KelResult kelsRandUniformInitAlloc_32f(KelRandUniformState_32f** ppState, Kel32f low, Kel32f high,
                                               unsigned int seed)
{
    if (anyNull(ppState)) return kelErrNullPointer;
    void* block = kelsMalloc_32f(kRecordElements32f);
    if (block == nullptr) return kelErrNoMemory;
    auto* record = new (block) KelRandUniformState_32f;
    // Sum and difference in the extended type, each rounded once there; any
    // float is allowed, and infinities or NaN simply carry into the samples.
    const long double sum = static_cast<long double>(low) + static_cast<long double>(high);
    const long double difference = static_cast<long double>(high) - static_cast<long double>(low);
    initRecord(record, kTag32f, low, high, seed, sum, difference);
    *ppState = record;
    return kelOk;
}

KEL_API KelResult kelsRandUniform_16s(Kel16s* pDst, int len, KelRandUniformState_16s* pState)
{
    if (anyNull(pDst, pState))          return kelErrNullPointer;
    if (len < 1)                        return kelErrSize;
    if (!carriesTag(pState, kTag16s))   return kelErrContext;
    ownRandUniform_16s(pDst, len, pState);
    return kelOk;
}

KEL_API KelResult kelsRandUniform_32f(Kel32f* pDst, int len, KelRandUniformState_32f* pState)
{
    if (anyNull(pDst, pState))          return kelErrNullPointer;
    if (len < 1)                        return kelErrSize;
    if (!carriesTag(pState, kTag32f))   return kelErrContext;
    ownRandUniform_32f(pDst, len, pState);
    return kelOk;
}

KEL_API KelResult kelsRandUniformFree_16s(KelRandUniformState_16s* pState)
{
    if (anyNull(pState))                return kelErrNullPointer;
    if (!carriesTag(pState, kTag16s))   return kelErrContext;
    kelsFree(pState);
    return kelOk;
}

KEL_API KelResult kelsRandUniformFree_32f(KelRandUniformState_32f* pState)
{
    if (anyNull(pState))                return kelErrNullPointer;
    if (!carriesTag(pState, kTag32f))   return kelErrContext;
    kelsFree(pState);
    return kelOk;
}

} // extern "C"

// ---- the record -------------------------------------------------------------

namespace {

// 2^-32 raised by seven units in the last place: the bits 0x3DF0000000000007,
// 2.3283064365387e-10 in decimal.
constexpr double kScaleStep = 0x1.0000000000007p-32;
static_assert(std::bit_cast<std::uint64_t>(kScaleStep) == 0x3DF0000000000007u);

// The congruential sequence starts from one constant for every seed; the
// subtract-with-borrow sequence from the seed and two congruential steps of it.
constexpr std::uint32_t kLcgStart = 0x436CBAE9;
constexpr std::uint32_t kLcgMultiplier = 69069;
constexpr std::uint32_t kLcgIncrement = 1013904243;
// A negative difference is lowered by this much as well as borrowing.
constexpr std::uint32_t kBorrowOffset = 18;

// The tag is read before anything else, as four bytes: a record may reach a
// function of the other kind through a cast, and the tag is the one field the
// two kinds share.
template <typename Record>
bool carriesTag(const Record* record, std::int32_t tag)
{
    std::int32_t found;
    std::memcpy(&found, static_cast<const void*>(record), sizeof found);
    return found == tag;
}

// mean and scale are worked out in the extended type and rounded to double
// when stored.
template <typename Record, typename Limit>
void initRecord(Record* record, std::int32_t tag, Limit low, Limit high, std::uint32_t seed,
                long double sum, long double difference)
{
    record->tag = tag;
    record->seed = seed;
    record->low = low;
    record->high = high;
    record->mean = static_cast<double>(sum * 0.5L);
    record->scale = static_cast<double>(difference * static_cast<long double>(kScaleStep));
    record->lcg = kLcgStart;
    record->s0 = seed;
    record->s1 = record->s0 * kLcgMultiplier + kLcgIncrement;
    record->s2 = record->s1 * kLcgMultiplier + kLcgIncrement;
    record->borrow = -1;
}

// ---- the generator ----------------------------------------------------------

// The sequences' state, held in locals for a run and written back once after
// it.  All arithmetic is on 32-bit unsigned values, so it wraps modulo 2^32;
// borrow is 0 or all ones.
struct Sequences {
    std::uint32_t lcg, s0, s1, s2, borrow;

    template <typename Record>
    explicit Sequences(const Record* record)
        : lcg(record->lcg), s0(record->s0), s1(record->s1), s2(record->s2),
          borrow(static_cast<std::uint32_t>(record->borrow))
    {
    }

    template <typename Record>
    void storeTo(Record* record) const
    {
        record->lcg = lcg;
        record->s0 = s0;
        record->s1 = s1;
        record->s2 = s2;
        record->borrow = static_cast<std::int32_t>(borrow);
    }

    // One step: the next signed sum of the two sequences.
    std::int32_t next()
    {
        lcg = lcg * kLcgMultiplier + kLcgIncrement;
        std::uint32_t t = s1 - s2 + borrow;
        if (static_cast<std::int32_t>(t) < 0) {
            borrow = ~0u;
            t -= kBorrowOffset;
        } else {
            borrow = 0;
        }
        s2 = s1;
        s1 = s0;
        s0 = t;
        return static_cast<std::int32_t>(t + lcg);
    }
};

// r * scale + mean in the extended type; r, scale and mean widen exactly.
inline long double mapped(std::int32_t r, double scale, double mean)
{
    return static_cast<long double>(r) * static_cast<long double>(scale) + static_cast<long double>(mean);
}

// The sample truncates towards zero to 32 bits and keeps the low 16.  The
// truncation is always in range: |r| <= 2^31 and |scale| <= 65535 * 2^-32 *
// (1 + 2^-49) keep |r * scale| a hair above 32767.5 at most, and |mean| <=
// 32768, so |v| < 65536.
void ownRandUniform_16s(Kel16s* dst, int len, KelRandUniformState_16s* state)
{
    Sequences sequences(state);
    const double scale = state->scale, mean = state->mean;
    for (int i = 0; i < len; ++i) {
        const auto whole = static_cast<std::int32_t>(mapped(sequences.next(), scale, mean));
        dst[i] = static_cast<Kel16s>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(whole)));
    }
    sequences.storeTo(state);
}

// The sample rounds to nearest float; on this IEEE target a value beyond the
// float range becomes an infinity, and a NaN stays a NaN.
void ownRandUniform_32f(Kel32f* dst, int len, KelRandUniformState_32f* state)
{
    Sequences sequences(state);
    const double scale = state->scale, mean = state->mean;
    for (int i = 0; i < len; ++i) dst[i] = static_cast<Kel32f>(mapped(sequences.next(), scale, mean));
    sequences.storeTo(state);
}

} // namespace
