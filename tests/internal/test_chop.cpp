// The saturation table and the clamp the kernels use in its place.
#include <gtest/gtest.h>

#include "cbcrpx.h"

TEST(Chop, HoldsZerosThenTheIdentityThen255)
{
    for (int i = 0; i < 370; ++i) ASSERT_EQ(0, chop[i]) << i;
    for (int k = 0; k < 256; ++k) ASSERT_EQ(k, chop[370 + k]) << k;
    for (int i = 626; i < 1000; ++i) ASSERT_EQ(255, chop[i]) << i;
}

TEST(Chop, ClampAgreesWithBothEntryPoints)
{
    for (int v = -370; v <= 629; ++v) ASSERT_EQ(chop[370 + v], kel::saturateByte(v)) << v;
    for (int v = -498; v <= 501; ++v) ASSERT_EQ(chop[498 + v], kel::saturateChroma(v)) << v;
}
