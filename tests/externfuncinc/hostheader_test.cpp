// Compiled as a host compiles: with the public header alone, which must bring all that it needs.
#include <gtest/gtest.h>

#include <type_traits>

#include "externfuncinc/roundup.h"

namespace {

// A packed, derived record would lose its layout, or its plain bytes, to any member with a constructor of its own.
static_assert(std::is_trivially_copyable_v<roundup::_tagAppInfo>);
static_assert(alignof(roundup::_tagAppInfo) == 1);

TEST(HostHeader, ReservedWord_FollowsTheRecordWithoutAGap) {
    roundup::_tagAppInfo record;
    const auto* const start = reinterpret_cast<const unsigned char*>(&record);
    record.dwReserved = 0x04030201;
    EXPECT_EQ(start[3137], 1);
    EXPECT_EQ(start[3140], 4);
    EXPECT_EQ(record.bFramework, 0);
}

}  // namespace
