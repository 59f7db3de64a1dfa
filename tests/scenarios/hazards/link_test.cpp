// Links that work and are judged dead.
#include "../connection/carrier.h"
#include "hazards.h"

using rig::World;

namespace {

constexpr char kStuck[] = "Warning: TX count on wwan0 not incrementing.";
constexpr std::uint64_t kMebibyte = 1ULL << 20;

// A mebibyte a second, and the first check some 400 MiB below 2 GiB. What follows is negative up to
// 4 GiB, then below the last good count until that is passed a second time.
TEST(LinkHazard, MoreThanTwoGibibytesResetTheModemAgainAndAgain) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes([](rig::Duration now) {
        return (1048 + static_cast<std::uint64_t>(now / 1s)) * kMebibyte;
    });
    const auto failures_until = [&world](rig::Duration end) {
        world.trace.Clear();
        world.RunFor(end - world.clock.Now());
        return world.trace.CountLog(kStuck);
    };
    world.Start();
    EXPECT_EQ(failures_until(1200s), 0U);
    EXPECT_GE(failures_until(3000s), 50U) << "2 to 4 GiB";
    EXPECT_GE(world.trace.CountLog(kReset), 5U);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 0U) << "the call was up all the time";
    EXPECT_GE(failures_until(4600s), 40U) << "above 4 GiB";
    EXPECT_LE(failures_until(4800s), 5U) << "above the last good count";
    EXPECT_EQ(failures_until(5000s), 0U);
    EXPECT_GE(failures_until(6000s), 10U) << "above 6 GiB";
}

// Eight failed checks of a dead link, then the call drops and does not come back: the count of the
// link stays at 8 while the restarts are counted.
TEST(LinkHazard, TwoErrorCountsAboveNoughtResetTheModemAtEveryPass) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes(1000);
    world.Start();
    ASSERT_TRUE(world.RunUntilLog(kReset, 1h));
    world.modem.Control("connect-fails 14 3 forever");
    world.modem.Control("call drop");
    ASSERT_TRUE(world.RunUntilLog(kRestarting, 2min));
    world.trace.Clear();
    world.RunFor(2min);
    EXPECT_GE(world.trace.CountLog(kReset), 8U);
    EXPECT_LE(world.trace.CountLog(kRestarting), 3U);
}

}  // namespace
