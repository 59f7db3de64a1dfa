// What modemctl why says of each cause of a link that is not there. The daemon lives the story, its
// files and its log are copied, and modemctl looks at the copy.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../connection/carrier.h"
#include "copied_router.h"

using namespace std::chrono_literals;
using rig::World;
using ::testing::HasSubstr;

namespace {

constexpr char kAllHolds[] = "none";

std::string StatusAnswer(const std::string& result, const std::string& state,
                         const std::string& reason) {
    return "\r\n$NWQMISTATUS: " + result + "\r\nQMI State: " + state +
           "\r\nCall End Reason: " + reason + "\r\nCall Duration: 00:00:09\r\n\r\nOK\r\n";
}

// --- Nothing is wrong ----------------------------------------------------------------------------

TEST(Why, FindsNothingWrongWithALinkThatIsUp) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    world.RunFor(5min);
    CopiedRouter router(world);
    router.SetAddress("10.64.0.2");
    EXPECT_EQ(router.Cause(), kAllHolds);
    const ToolResult page = router.Run("why");
    EXPECT_EQ(page.status, 0);
    EXPECT_THAT(page.output, HasSubstr("The link is up."));
}

TEST(Why, FindsNothingWrongWithAModemWithoutACallOfItsOwn) {
    World world("-881");
    world.Start();
    world.RunFor(2min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), kAllHolds);
    EXPECT_THAT(router.Run("why").output, HasSubstr("Nothing is known to be wrong."));
}

TEST(Why, KnowsNothingYetRightAfterTheStart) {
    World world("-E362");
    world.Start();
    world.RunUntilLog("Modem does not support CMGF SMS", 1min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), "nothing_published");
    EXPECT_EQ(router.Run("why").status, 3);
}

// --- The daemon and its port ---------------------------------------------------------------------

TEST(WhyPort, NobodyHasStartedTheDaemon) {
    const CopiedRouter router;
    EXPECT_EQ(router.Cause(), "daemon_never_started");
    EXPECT_EQ(router.Run("why").status, 3);
}

TEST(WhyPort, TheDaemonWasAskedToEnd) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.daemon.Signal(SIGTERM);
    ASSERT_EQ(world.RunToExit(1min), 0);
    EXPECT_EQ(CopiedRouter(world).Cause(), "daemon_asked_to_end");
}

TEST(WhyPort, TheDaemonVanishedWithoutAWord) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    const CopiedRouter router(world);
    router.Remove("/proc/4242");
    EXPECT_EQ(router.Cause(), "daemon_gone");
}

TEST(WhyPort, TheDaemonWasStartedWithoutADevice) {
    World world(rig::Exactly{{"-E362"}});
    world.Start();
    ASSERT_EQ(world.RunToExit(1min), 1);
    world.daemon.ErrorOutput();
    EXPECT_EQ(CopiedRouter(world).Cause(), "daemon_without_device");
}

TEST(WhyPort, ASecondCopyIsToldBesideTheRunningOne) {
    World world("-E362");
    world.files.Write("/var/run/modemd.pid", "777");
    world.router.AddProcess(777, std::string("/usr/sbin/modemd\0-E362", 22));
    world.Start();
    ASSERT_EQ(world.RunToExit(1min), 255);
    const CopiedRouter router(world);
    router.AddProcess(777, "/usr/sbin/modemd");
    EXPECT_EQ(router.WhyText("second_copies"), "1}\n");
    EXPECT_THAT(router.Run("why").output, HasSubstr("was started again while it ran"));
}

TEST(WhyPort, TheDeviceIsNotThere) {
    World world("-E362");
    world.port.RemoveDevice();
    world.Start();
    ASSERT_TRUE(world.RunUntilLog("Unable to open port /dev/ttyUSB0, attempt 3/5", 2min));
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), "port_missing");
    EXPECT_THAT(router.WhyText("next"), HasSubstr("after 2 more failures the modem is reset"));
}

TEST(WhyPort, TheDeviceDidNotComeBack) {
    World world("-E362");
    world.port.RemoveDevice();
    world.Start();
    ASSERT_EQ(world.RunToExit(2min), 255);
    EXPECT_EQ(CopiedRouter(world).Cause(), "port_given_up");
}

TEST(WhyPort, TheModemWasUnplugged) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.port.Unplug();
    ASSERT_EQ(world.RunToExit(10min), 255);
    EXPECT_EQ(CopiedRouter(world).Cause(), "port_lost");
}

TEST(WhyPort, TheModemIsMute) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.modem.Control("silence 1h");
    world.RunFor(3min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), "modem_silent");
    EXPECT_EQ(router.Run("why").status, 4);
}

TEST(WhyPort, TheModemWasMuteFromTheStart) {
    World world("-881");
    world.modem.Script([](const std::string&) { return std::string(); });
    world.Start();
    world.RunFor(5min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "modem_silent");
}

// --- SIM, registration, service ------------------------------------------------------------------

TEST(WhySim, IsMissingInASierra) {
    World world("-881");
    world.modem.Control("sim absent");
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "sim_missing");
}

TEST(WhySim, IsMissingInAnLteCard) {
    World world("-E362");
    world.modem.Control("sim absent");
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "sim_not_ready");
}

TEST(WhyRegistration, IsDenied) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.modem.Control("register denied");
    world.RunFor(1min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), "registration_denied");
    EXPECT_EQ(router.Run("why").status, 1);
}

TEST(WhyRegistration, IsBeingSearched) {
    World world("-881");
    world.modem.Control("register searching");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "registration_searching");
}

TEST(WhyRegistration, IsNotEvenSearched) {
    World world("-881");
    world.modem.Control("register no");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "registration_off");
}

TEST(WhyService, IsNotThere) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.modem.Answer("AT$NWSYSMODE", "\r\nNo Service\r\n\r\nOK\r\n");
    world.RunFor(1min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), "no_service");
    EXPECT_THAT(router.WhyText("next"), HasSubstr("Checks of the call rest."));
}

// --- The call ------------------------------------------------------------------------------------

TEST(WhyCall, IsSwitchedOff) {
    World world("-E362");
    world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=no\n");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "switched_off");
}

struct EndedCall {
    const char* result;
    const char* reason;
    const char* cause;
};

class WhyCallEnded : public ::testing::TestWithParam<EndedCall> {};

TEST_P(WhyCallEnded, TellsHowTheModemPutsIt) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Answer(kStatusCommand,
                       StatusAnswer(GetParam().result, "DISCONNECTED", GetParam().reason));
    world.Start();
    world.RunFor(3min);
    const CopiedRouter router(world);
    EXPECT_EQ(router.Cause(), GetParam().cause);
    EXPECT_EQ(router.Run("why").status, 1);
}

INSTANTIATE_TEST_SUITE_P(Causes, WhyCallEnded,
                         ::testing::Values(EndedCall{"BAD: 0", "10", "sim_or_apn_refused"},
                                           EndedCall{"BAD: 26", "1", "another_program_dials"},
                                           EndedCall{"BAD: 0", "3", "network_lost"},
                                           EndedCall{"BAD: 14", "1", "call_setup_failed"},
                                           EndedCall{"BAD: 0", "2", "hung_up"},
                                           EndedCall{"BAD: 0", "6", "call_down"}));

TEST(WhyCall, HasAnApnThatIsNone) {
    World world("-E362");
    Carrier carrier(world);
    world.files.Write(kPppFile, "CM_APN=inter/net\n");
    world.modem.Control("connect-fails 14 1 forever");
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "apn_invalid");
}

TEST(WhyCall, IsNotAnsweredFor) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Answer(kStatusCommand, "");
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "call_unanswered");
}

TEST(WhyCall, GotTheModemReset) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Answer(kStatusCommand, StatusAnswer("BAD: 0", "DISCONNECTED", "6"));
    world.Start();
    ASSERT_TRUE(world.RunUntilLog(kGaveUp, 10min));
    world.RunFor(10s);
    EXPECT_EQ(CopiedRouter(world).Cause(), "modem_reset");
}

rig::Duration Apart(rig::Duration a, rig::Duration b) {
    return a > b ? a - b : b - a;
}

// Next and when: what it foretells is what the daemon then does.
TEST(WhyCall, ForetellsTheNextRestartAndTheReset) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Answer(kStatusCommand, StatusAnswer("BAD: 0", "DISCONNECTED", "6"));
    world.Start();
    ASSERT_TRUE(world.RunUntil([&] { return world.trace.CountLog(kRestarting) == 3; }, 10min));
    world.RunFor(20s);
    const CopiedRouter router(world);
    const std::string next = router.WhyText("next");
    const auto told = [&](std::size_t from) {
        const auto at = next.find("at about ", from);
        int hour = 0, minute = 0, second = 0;
        EXPECT_EQ(std::sscanf(next.c_str() + at, "at about %d:%d:%d", &hour, &minute, &second), 3);
        return std::pair(at, std::chrono::seconds((hour * 60 + minute) * 60 + second));
    };
    const auto [first, restart] = told(0);
    const auto [second, reset] = told(first + 1);
    const auto start = std::chrono::seconds(9 * 3600 + 15 * 60);  // of the story's day

    ASSERT_TRUE(world.RunUntilLog(kRestarting, 2min));
    EXPECT_LE(Apart(world.clock.Now() + start, restart), 10s) << next;
    ASSERT_TRUE(world.RunUntilLog(kGaveUp, 10min));
    EXPECT_LE(Apart(world.clock.Now() + start, reset), 30s) << next;
}

// --- Address and traffic -------------------------------------------------------------------------

TEST(WhyAddress, WasNotGiven) {
    World world("-E362");
    world.modem.Answer(kStatusCommand, StatusAnswer("GOOD: 0", "CONNECTED", "2"));
    world.Start();
    world.RunFor(2min);
    const CopiedRouter router(world);
    router.Write("/sys/class/net/wwan0/statistics/tx_bytes", "0\n");
    EXPECT_EQ(router.Cause(), "no_lease");
}

TEST(WhyAddress, WasNotGivenSaysTheLogAlone) {
    World world("-E362");
    world.modem.Answer(kStatusCommand, StatusAnswer("GOOD: 0", "CONNECTED", "2"));
    world.Start();
    world.RunFor(2min);
    CopiedRouter router(world);
    router.SetAddress("");
    router.Write("/sys/class/net/wwan0/statistics/tx_bytes", "0\n");
    EXPECT_EQ(router.Cause(), "no_lease");
}

TEST(WhyAddress, HasNoInterfaceToBeOn) {
    World world("-E362");
    world.modem.Answer(kStatusCommand, StatusAnswer("GOOD: 0", "CONNECTED", "2"));
    world.router.SetShellStatus("ifconfig wwan0", 1);
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(CopiedRouter(world).Cause(), "interface_missing");
}

TEST(WhyTraffic, DoesNotLeave) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes(1000);
    world.Start();
    ASSERT_TRUE(world.RunUntil(
        [&] { return world.trace.CountLog("Warning: TX count on wwan0 not incrementing.") == 3; },
        1h));
    world.RunFor(10s);
    CopiedRouter router(world);
    router.SetAddress("10.64.0.2");
    EXPECT_EQ(router.Cause(), "nothing_leaves");
    EXPECT_THAT(router.WhyText("next"), HasSubstr("(so far 3)"));
}

TEST(WhyTraffic, LeavesAgain) {
    World world("-E362");
    Carrier carrier(world);
    world.router.SetTxBytes(1000);
    world.Start();
    ASSERT_TRUE(world.RunUntil(
        [&] { return world.trace.CountLog("Warning: TX count on wwan0 not incrementing.") == 3; },
        1h));
    world.router.SetTxBytes(1001);
    world.RunFor(3min);
    CopiedRouter router(world);
    router.SetAddress("10.64.0.2");
    EXPECT_EQ(router.Cause(), kAllHolds);
}

}  // namespace
