// The version record.
#include <gtest/gtest.h>

#include <cstring>

#include "kelcc.h"

TEST(Version, RecordHoldsTheReleaseFields)
{
    const KelVersionRecord* v = kelccGetLibVersion();
    ASSERT_NE(nullptr, v);
    EXPECT_EQ(5, v->major);
    EXPECT_EQ(2, v->minor);
    EXPECT_EQ(108, v->build);
    EXPECT_EQ(321, v->revision);
    EXPECT_EQ(0, std::memcmp(v->targetCpu, "px\0\0", 4));
    EXPECT_STREQ("libkelccpx.so.5.2", v->name);
    EXPECT_STREQ("5.2", v->version);
    EXPECT_STREQ("Jul 11 2007", v->buildDate);
}

TEST(Version, EveryCallReturnsTheSameRecord)
{
    EXPECT_EQ(kelccGetLibVersion(), kelccGetLibVersion());
}
