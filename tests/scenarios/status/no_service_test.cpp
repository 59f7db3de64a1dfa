// The E362 loses its service: after 30 seconds the data call is given up.
#include <gmock/gmock.h>

#include "published.h"

using namespace std::chrono_literals;
using rig::Duration;
using rig::World;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kMessage[] = "No service after 30 seconds, sending modem a disconnect.";
constexpr char kDisconnect[] = "AT$NWQMIDISCONNECT";
constexpr char kStartDhcp[] = "udhcpc -T 3 -S -b -i wwan0 &> /dev/null";
constexpr auto kLongestPass = 12s;

class NoService : public testing::Test {
  protected:
    NoService() {
        // Nothing but the service may disconnect: the call is up, and bytes leave.
        Teach(world, {{"AT$NWQMISTATUS", {"$NWQMISTATUS: Success: 0", "QMI State: CONNECTED"}},
                      {"AT$NWSYSMODE", {"LTE"}}});
        world.router.SetAddress("10.64.0.2");
        world.router.SetTxBytes(
            [](Duration now) { return static_cast<std::uint64_t>(now.count()); });
        world.Start();
        world.RunFor(60s);
        world.trace.Clear();
    }

    void Service(const std::string& service) { Teach(world, {{"AT$NWSYSMODE", {service}}}); }
    // When the one line with this text was logged.
    Duration LogTime(const std::string& line) const {
        const auto times = world.trace.LogTimes(line);
        EXPECT_EQ(1U, times.size()) << line;
        return times.empty() ? Duration::zero() : times.front();
    }

    World world{"-E362"};
};

}  // namespace

TEST_F(NoService, ForThirtySecondsEndsTheDataCallOnce) {
    Service("No Service");
    world.RunFor(10min);
    world.trace.ExpectLogInOrder({"Service Type changed from 'LTE' to 'No Service'",
                                  "Warning: Modem reports bad service : 'No Service'", kMessage});
    const Duration lost = LogTime("Service Type changed from 'LTE' to 'No Service'");
    const Duration given_up = LogTime(kMessage);
    EXPECT_GE(given_up - lost, 30s);
    EXPECT_LE(given_up - lost, 30s + kLongestPass);
    const auto disconnects = world.trace.CommandTimes(kDisconnect);
    ASSERT_EQ(1U, disconnects.size());
    EXPECT_GE(disconnects.front(), given_up);
    EXPECT_THAT(world.trace.Shell(), testing::Not(testing::Contains(kStartDhcp)));
}

TEST_F(NoService, ForLessThanThirtySecondsKeepsTheDataCall) {
    Service("No Service");
    world.RunFor(20s);
    Service("LTE");
    world.RunFor(10min);
    EXPECT_EQ(0U, world.trace.CountLog(kMessage));
    EXPECT_THAT(world.trace.CommandTimes(kDisconnect), IsEmpty());
    // Good service starts the DHCP client, or wakes the one that runs.
    EXPECT_EQ(1U, world.trace.ShellTimes(kStartDhcp).size());
    world.trace.ExpectLogInOrder({"Service Type changed from 'LTE' to 'No Service'",
                                  "Service Type changed from 'No Service' to 'LTE'",
                                  "Starting/Signaling udhcpc"});
}

// A change from one bad service to another does not grant another 30 seconds.
TEST_F(NoService, IsCountedFromTheFirstBadService) {
    Service("No Service");
    world.RunFor(20s);
    Service("No Network");
    world.RunFor(60s);
    const Duration lost = LogTime("Service Type changed from 'LTE' to 'No Service'");
    EXPECT_LE(LogTime(kMessage) - lost, 30s + kLongestPass);
}

// A modem that falls silent is neither good nor bad: the clock runs on, but nobody looks at it
// until the modem speaks again.
TEST_F(NoService, IsNotedWhenTheModemSpeaksAgain) {
    Service("No Service");
    world.RunFor(10s);
    world.modem.Answer("AT$NWSYSMODE", "");
    world.RunFor(5min);
    EXPECT_EQ(0U, world.trace.CountLog(kMessage));
    Service("No Service");
    world.RunFor(kLongestPass);
    EXPECT_EQ(1U, world.trace.CountLog(kMessage));
}

TEST_F(NoService, StopsTheLinkChecksUntilItIsBack) {
    Service("No Service");
    world.RunFor(60s);
    world.trace.Clear();
    world.RunFor(5min);
    EXPECT_THAT(world.trace.CommandTimes("AT$NWQMISTATUS"), IsEmpty());
    Service("LTE");
    world.RunFor(60s);
    EXPECT_FALSE(world.trace.CommandTimes("AT$NWQMISTATUS").empty());
}

// Twice lost, twice given up: the timer starts afresh.
TEST_F(NoService, CanHappenAgain) {
    for (int i = 0; i < 2; ++i) {
        Service("No Service");
        world.RunFor(2min);
        Service("LTE");
        world.RunFor(2min);
    }
    EXPECT_EQ(2U, world.trace.CountLog(kMessage));
    EXPECT_EQ(2U, world.trace.CommandTimes(kDisconnect).size());
}

// The OK behind the answer is no service of its own, else the service would change on each pass.
TEST_F(NoService, DoesNotFlipWithTheOkBehindTheAnswer) {
    world.RunFor(10min);
    EXPECT_EQ(0U, world.trace.CountLogContaining("Service Type changed"));
}
