// The ways out, for every card and at every point of a pass.
#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "rig/card_options.h"
#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::Kind;
using rig::World;
using Lines = std::vector<std::string>;

constexpr char kEmptyLightbar[] = "/bin/echo -n  > /var/log/lightbar";
constexpr char kRemoveStatus[] = "/bin/rm -f /var/log/wireless.*";
constexpr char kReset[] = "ResetPCMCIA now &> /dev/null &";

// Empty when there is none.
std::string LastOf(const Lines& lines) {
    return lines.empty() ? "" : lines.back();
}

Lines Last(const Lines& all, std::size_t count) {
    return Lines(all.end() - static_cast<long>(std::min(count, all.size())), all.end());
}

void ExpectStatusFilesGone() {
    EXPECT_FALSE(Files::Exists("/var/log/wireless.cardstats"));
    EXPECT_FALSE(Files::Exists("/var/log/wireless.serialno"));
    EXPECT_FALSE(Files::Exists("/var/log/wireless.other"));
    EXPECT_FALSE(Files::Exists("/var/run/BackendResetControl"));
    EXPECT_TRUE(Files::Exists("/var/log/lightbar"));
    EXPECT_EQ(Files::Read("/var/log/lightbar"), "");
    EXPECT_EQ(Files::Read("/var/run/modemd.pid"), "4242");
}

// The number of the first call of a pass, and of the last call of the one behind it.
std::pair<std::uint64_t, std::uint64_t> CallsOfTwoPasses(const char* card) {
    World world(card);
    world.Start();
    EXPECT_TRUE(world.RunUntilCommand("AT+CSQ", 60s));
    const std::uint64_t first = world.daemon.Calls();
    EXPECT_TRUE(world.RunUntilCommand("AT+CSQ", 60s));
    EXPECT_TRUE(world.RunUntilCommand("AT+CSQ", 60s));
    return {first, world.daemon.Calls()};
}

class Shutdown : public testing::TestWithParam<std::string> {
  protected:
    bool IsLte() const {
        const cards::Model* model = rig::SelectedBy(GetParam());
        return model != nullptr && (model->abilities & cards::kLteCall) != 0;
    }
    // The shell commands of the clean-up.
    Lines CleanUpShell() const {
        Lines lines = {kEmptyLightbar, kRemoveStatus};
        if (IsLte()) {
            lines.insert(lines.end(),
                         {"kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
                          "ifconfig wwan0 0.0.0.0 up &> /dev/null",
                          "kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
                          "ifconfig wwan0 0.0.0.0 up &> /dev/null",
                          "ifconfig wwan0 0.0.0.0 down &> /dev/null"});
        }
        return lines;
    }
    Lines CleanUpLog() const {
        Lines lines = {"doing cleanup and exiting"};
        if (IsLte()) {
            lines.insert(lines.end(), {"Stopping udhcpc on wwan0", "Stopping udhcpc on wwan0",
                                       "Resetting udhcpc fail counter file"});
        }
        lines.push_back("exit");
        return lines;
    }
    static void Prepare(World& world) {
        world.files.Write("/var/log/wireless.other", "x");
        world.files.Write("/var/run/BackendResetControl", "x");
        world.Start();
        world.RunFor(40s);
    }
};

TEST_P(Shutdown, OnTerminateOrInterruptCleansUpAndEndsWithZero) {
    for (const int number : {SIGTERM, SIGINT}) {
        SCOPED_TRACE(number);
        World world(GetParam());
        Prepare(world);
        world.trace.Clear();
        world.daemon.Signal(number);
        EXPECT_EQ(world.RunToExit(60s), 0);
        Lines log = CleanUpLog();
        log.insert(log.begin(), "received SIGINT/SIGTERM");
        EXPECT_EQ(Last(world.trace.Log(), log.size()), log);
        EXPECT_EQ(Last(world.trace.Shell(), CleanUpShell().size()), CleanUpShell());
        ExpectStatusFilesGone();
        EXPECT_EQ(world.trace.CountLog("Resetting device"), 0u);
        if (IsLte()) {
            EXPECT_EQ(LastOf(world.trace.Commands()), "AT$NWQMIDISCONNECT");
            EXPECT_EQ(Files::Read("/tmp/udhcpc.wwan0.lfc"), "LEASE_FAIL_COUNTER=0\n");
        }
    }
}

TEST_P(Shutdown, OnHangUpResetsTheModemFirst) {
    World world(GetParam());
    Prepare(world);
    world.trace.Clear();
    world.daemon.Signal(SIGHUP);
    EXPECT_EQ(world.RunToExit(60s), 0);
    Lines log = CleanUpLog();
    log.insert(log.begin(), {"recieved SIGHUP, resetting device", "Resetting device"});
    EXPECT_EQ(Last(world.trace.Log(), log.size()), log);
    Lines shell = CleanUpShell();
    shell.insert(shell.begin(), kReset);
    EXPECT_EQ(Last(world.trace.Shell(), shell.size()), shell);
    ExpectStatusFilesGone();
}

INSTANTIATE_TEST_SUITE_P(Cards, Shutdown, testing::ValuesIn(rig::EveryCardOption()),
                         [](const testing::TestParamInfo<std::string>& test) {
                             const std::string& option = test.param;
                             return option.empty() ? "generic" : "card_" + option.substr(1);
                         });

TEST(Signals, ActAtTheStartOfTheNextPassWithTheSleepsCutShort) {
    World world;
    world.Start();
    ASSERT_TRUE(world.RunUntilCommand("AT+CSQ", 30s));
    world.trace.Clear();
    world.daemon.Signal(SIGTERM);  // during the pause behind CR: a usleep, then sleeps go on
    EXPECT_EQ(world.RunToExit(30s), 0);
    // The pass ends as it would have; only then is the flag looked at.
    EXPECT_EQ(world.trace.Commands(), Lines{"AT+CGDCONT?"});
}

TEST(Signals, ASecondOneWhileTheCleanUpRunsHasNoEffect) {
    World world("-E362");
    world.Start();
    world.RunFor(60s);
    world.daemon.Signal(SIGTERM);
    ASSERT_TRUE(world.RunUntilLog("doing cleanup and exiting", 60s));
    world.daemon.Signal(SIGHUP);
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(30s), 0);
    EXPECT_EQ(world.trace.CountLog("doing cleanup and exiting"), 1u);
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 0u);
}

TEST(Signals, BeforeTheHandlersStandEndTheProcessAtOnce) {
    World world;
    world.daemon.ExpectEndBySignal();
    world.Start();
    world.RunFor(1s);
    world.daemon.Signal(SIGTERM);
    world.RunFor(1s);
    EXPECT_FALSE(world.daemon.Running());
    EXPECT_EQ(world.daemon.EndingSignal(), SIGTERM);
    EXPECT_EQ(world.trace.CountLog("doing cleanup and exiting"), 0u);
}

struct Interruption {
    const char* card;
    int signal;
    Lines last_log;
    Lines last_shell;
};

// Before each call of the C library in two passes, one run for each: whatever the daemon is
// doing, it goes on to the end of its pass and then leaves in good order.
TEST(Signals, AtEveryPointOfThePassEndTheDaemonInGoodOrder) {
    for (const Interruption& row :
         {Interruption{"-E362", SIGTERM, {"exit"}, {"ifconfig wwan0 0.0.0.0 down &> /dev/null"}},
          Interruption{"-881",
                       SIGHUP,
                       {"recieved SIGHUP, resetting device", "Resetting device",
                        "doing cleanup and exiting", "exit"},
                       {kReset, kEmptyLightbar, kRemoveStatus}}}) {
        const auto [first, last] = CallsOfTwoPasses(row.card);
        ASSERT_LT(first, last);
        const std::uint64_t step = std::max<std::uint64_t>(1, (last - first) / 100);
        for (std::uint64_t call = first; call <= last; call += step) {
            SCOPED_TRACE(row.card + std::string(" before call ") + std::to_string(call));
            World world(row.card);
            world.daemon.SignalAtCall(call, row.signal);
            world.Start();
            ASSERT_EQ(world.RunToExit(180s), 0);
            EXPECT_EQ(Last(world.trace.Log(), row.last_log.size()), row.last_log);
            EXPECT_EQ(Last(world.trace.Shell(), row.last_shell.size()), row.last_shell);
            EXPECT_EQ(world.trace.ShellTimes(kReset).size(), row.signal == SIGHUP ? 1u : 0u);
            EXPECT_EQ(world.trace.CountLog("doing cleanup and exiting"), 1u);
            ExpectStatusFilesGone();
            if (HasFailure()) return;
        }
    }
}

}  // namespace
