#include "core/shutdown.h"

#include <csignal>

#include "connection/connection_test.h"
#include "state/settings.h"

namespace {

const Lines kCleanUp = {
    "log: doing cleanup and exiting",
    "remove: /var/log/wireless.cardstats",
    "remove: /var/run/BackendResetControl",
};

const Lines kPlainEnd = {
    "log: exit",
    "run: /bin/echo -n  > /var/log/lightbar",
    "run: /bin/rm -f /var/log/wireless.*",
    "exit 0",
};

const Lines kLteEnd = {
    "log: Stopping udhcpc on wwan0",
    "run: /bin/echo -n  > /var/log/lightbar",
    "run: /bin/rm -f /var/log/wireless.*",
    "run: kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
    "run: ifconfig wwan0 0.0.0.0 up &> /dev/null",
    "sleep 500 ms",
    "log: Stopping udhcpc on wwan0",
    "run: kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
    "run: ifconfig wwan0 0.0.0.0 up &> /dev/null",
    "sleep 500 ms",
    "modem: AT$NWQMIDISCONNECT",
    "sleep 1000 ms",
    "log: Resetting udhcpc fail counter file",
    "write: /tmp/udhcpc.wwan0.lfc",
    "log: exit",
    "run: ifconfig wwan0 0.0.0.0 down &> /dev/null",
    "exit 0",
};

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class Shutdown : public ConnectionTest {
  protected:
    Shutdown() { Clear(); }
    ~Shutdown() override {
        Clear();
        for (const int number : {SIGINT, SIGHUP, SIGTERM}) std::signal(number, SIG_DFL);
    }
    static void Clear() { g_b_GotSigInt = g_b_GotSigTerm = g_b_GotSigHup = 0; }
};

TEST_F(Shutdown, DoesNotHappenWithoutASignal) {
    CheckSignals();
    EXPECT_EQ(Story(), Lines{});
}

TEST_F(Shutdown, OnSigtermOrSigintCleansUpAndExitsWithStatusZero) {
    for (volatile std::sig_atomic_t* flag : {&g_b_GotSigTerm, &g_b_GotSigInt}) {
        Clear();
        *flag = 1;
        EXPECT_EQ(StoryToExit(CheckSignals),
                  Lines{"log: received SIGINT/SIGTERM"} + kCleanUp + kPlainEnd);
    }
}

// Guards oddity recieved.
TEST_F(Shutdown, OnSighupAlsoResetsTheModem) {
    g_b_GotSigHup = 1;
    EXPECT_EQ(
        StoryToExit(CheckSignals),
        (Lines{"log: recieved SIGHUP, resetting device", "log: Resetting device",
               "log: doing cleanup and exiting", "run: ResetPCMCIA now &> /dev/null &",
               "remove: /var/log/wireless.cardstats", "remove: /var/run/BackendResetControl"} +
         kPlainEnd));
}

TEST_F(Shutdown, OnBothSignalsDoesNotResetTheModem) {
    g_b_GotSigHup = 1;
    g_b_GotSigTerm = 1;
    EXPECT_EQ(StoryToExit(CheckSignals),
              Lines{"log: received SIGINT/SIGTERM"} + kCleanUp + kPlainEnd);
}

TEST_F(Shutdown, TakesTheLinkOfAnLteCardDown) {
    for (const int card : {7, 8}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        EXPECT_EQ(StoryToExit(CleanupAndExit), kCleanUp + kLteEnd);
    }
}

TEST_F(Shutdown, LeavesTheLinkOfOtherCardsAlone) {
    for (const int card : {0, 2, 3, 4, 6}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        EXPECT_EQ(StoryToExit(CleanupAndExit), kCleanUp + kPlainEnd);
    }
}

// Guards oddity pid-file-stays.
TEST_F(Shutdown, RemovesTheTwoFilesAndLeavesThePidFile) {
    Put("/var/log/wireless.cardstats", "CSQ=12\n");
    Put("/var/run/BackendResetControl", "1");
    Put("/var/run/modemd.pid", "4242");
    StoryToExit(CleanupAndExit);
    EXPECT_FALSE(Exists("/var/log/wireless.cardstats"));
    EXPECT_FALSE(Exists("/var/run/BackendResetControl"));
    EXPECT_EQ(Get("/var/run/modemd.pid"), "4242");
}

TEST_F(Shutdown, ExitsWithStatusZeroWhenEverythingFails) {
    g_i_CardType = kCardNovatelE362;
    BreakPort();
    for (const char* line : {"/bin/echo -n  > /var/log/lightbar", "/bin/rm -f /var/log/wireless.*",
                             "ifconfig wwan0 0.0.0.0 down &> /dev/null"}) {
        world.shell_status[line] = 256;
    }
    const Lines story = StoryToExit(CleanupAndExit);
    ASSERT_GE(story.size(), 3U);
    EXPECT_EQ(story.back(), "exit 0");
    EXPECT_EQ(story[story.size() - 2], "run: ifconfig wwan0 0.0.0.0 down &> /dev/null");
}

TEST_F(Shutdown, HandlersSetTheirOwnFlagAndNothingElse) {
    InstallSignalHandlers();
    std::raise(SIGINT);
    EXPECT_EQ(g_b_GotSigInt, 1);
    EXPECT_EQ(g_b_GotSigHup, 0);
    EXPECT_EQ(g_b_GotSigTerm, 0);
    Clear();
    std::raise(SIGHUP);
    EXPECT_EQ(g_b_GotSigHup, 1);
    EXPECT_EQ(g_b_GotSigInt, 0);
    EXPECT_EQ(g_b_GotSigTerm, 0);
    Clear();
    std::raise(SIGTERM);
    EXPECT_EQ(g_b_GotSigTerm, 1);
    EXPECT_EQ(g_b_GotSigInt, 0);
    EXPECT_EQ(g_b_GotSigHup, 0);
    EXPECT_EQ(Story(), Lines{});
}

TEST_F(Shutdown, HandlersStayInstalledForASecondSignal) {
    InstallSignalHandlers();
    std::raise(SIGTERM);
    std::raise(SIGTERM);
    std::raise(SIGHUP);
    std::raise(SIGHUP);
    EXPECT_EQ(g_b_GotSigTerm, 1);
    EXPECT_EQ(g_b_GotSigHup, 1);
}

}  // namespace
