#include "connection/lte_supervision.h"

#include "connection_test.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

namespace {

constexpr char kDialing[] = "/var/log/wirelessdial_dialing";
constexpr char kNotDialing[] = "/var/log/wirelessdial_notdialing";
constexpr char kTxCounter[] = "/sys/class/net/wwan0/statistics/tx_bytes";
constexpr char kGaveUp[] = "Failed to connect to LTE network 10 times, resetting modem";

const Lines kRestart = {
    "modem: AT$NWQMISTATUS",
    "sleep 5000 ms",
    "run: touch /var/log/wirelessdial_dialing",
    "remove: /var/log/wirelessdial_notdialing",
    "log: LTE Connected returned 0, restarting connection",
    "log: Last connect time was reported as '00:04:11'",
    "log: Last connect end reason was 'Phone has no service (3)'",
    "log: Last qmi result was 'Data call failed. (14)'",
    "log: Stopping udhcpc on wwan0",
    "run: kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
    "run: ifconfig wwan0 0.0.0.0 up &> /dev/null",
    "sleep 500 ms",
    "log: Resetting udhcpc fail counter file",
    "write: /tmp/udhcpc.wwan0.lfc",
    "modem: AT$NWQMIDISCONNECT",
    "sleep 1000 ms",
    "sleep 5000 ms",
    "modem: AT$NWQMICONNECT=,,",
    "sleep 1000 ms",
    "sleep 2000 ms",
    "log: Starting/Signaling udhcpc",
    "run: udhcpc -T 3 -S -b -i wwan0 &> /dev/null",
    "sleep 500 ms",
    "modem: AT$NWQMISTATUS",
    "sleep 5000 ms",
};

class LteSupervision : public ConnectionTest {
  protected:
    LteSupervision() {
        g_i_CardType = kCardNovatelE362;
        stats.service_type = "LTE";
    }

    void SayState(const std::string& state) {
        world.answers[kQuestion] = "\r\nQMI State: " + state + "\r\n\r\nOK\r\n";
    }
    // The next check, 30 s after the last one.
    void CheckAgain() {
        world.now_us += 30 * kSecond;
        StartStory();
        checkLteStatus();
    }
    bool HasRun(const std::string& line) const {
        for (const std::string& run : world.shell) {
            if (run == line) return true;
        }
        return false;
    }

    GlobalStats& stats = g_S_Globalstats;
};

TEST_F(LteSupervision, DoesNothingForOtherCards) {
    for (const bool enabled : {true, false}) {
        g_S_PppConfig.interface_enabled = enabled;
        for (const int card : {0, 2, 3, 4, 6}) {
            SCOPED_TRACE(card);
            g_i_CardType = card;
            checkLteStatus();
        }
    }
    EXPECT_EQ(Story(), Lines{});
    EXPECT_FALSE(g_Cp_LteCheckTimer->IsRunning());
}

TEST_F(LteSupervision, RestartsACallThatIsDown) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        g_i_LteConnectAttempts = stats.lte_connect_failures = 0;
        stats.qmi_call_time = "00:04:11";
        stats.qmi_end_reason_raw = "3";
        stats.qmi_result_raw = "14";
        g_Cp_LteCheckTimer->Stop();
        StartStory();
        checkLteStatus();
        EXPECT_EQ(Story(), kRestart);
        EXPECT_EQ(g_i_LteConnectAttempts, 1);
        EXPECT_EQ(stats.lte_connect_failures, 2);  // before and after the restart
        EXPECT_TRUE(g_Cp_LteCheckTimer->IsCounting());
    }
}

TEST_F(LteSupervision, RestartsACallWithoutAnAddress) {
    SayState("CONNECTED");
    checkLteStatus();
    EXPECT_EQ(world.log[0], "Interface wwan0 is connected, but does not have a valid IP.");
    EXPECT_TRUE(world.Logged("LTE Connected returned 0, restarting connection"));
    EXPECT_EQ(stats.lte_connect_failures, 0);
    EXPECT_EQ(g_i_LteConnectAttempts, 1);
}

TEST_F(LteSupervision, CountsTheRestartsUntilTheCallIsFoundConnected) {
    for (int attempt = 1; attempt <= 4; ++attempt) {
        CheckAgain();
        EXPECT_EQ(g_i_LteConnectAttempts, attempt);
    }
    SayState("CONNECTED");
    SetAddress("10.64.0.2");
    CheckAgain();
    EXPECT_EQ(g_i_LteConnectAttempts, 0);
}

TEST_F(LteSupervision, DoesNotUseTheResultOfTheCheckAfterARestart) {
    world.on_sleep = [this](std::int64_t) {
        if (world.LoggedContaining("Starting/Signaling")) {
            SayState("CONNECTED");
            SetAddress("10.64.0.2");
        }
    };
    checkLteStatus();
    EXPECT_EQ(g_i_LteConnectAttempts, 1);
    EXPECT_EQ(stats.lte_connect_failures, 0);
    EXPECT_FALSE(HasRun(kPingLine));
}

// Guards oddity dialing-marker-stays.
TEST_F(LteSupervision, LeavesTheDialingMarkerWhenTheCallComesUp) {
    Put(kDialing, "");
    SayState("CONNECTED");
    SetAddress("10.64.0.2");
    checkLteStatus();
    EXPECT_TRUE(Exists(kDialing));
    EXPECT_EQ(Story(), (Lines{"modem: AT$NWQMISTATUS", "sleep 5000 ms"}));
}

TEST_F(LteSupervision, RemovesTheNotDialingMarkerWhenItRestarts) {
    Put(kNotDialing, "");
    checkLteStatus();
    EXPECT_FALSE(Exists(kNotDialing));
}

TEST_F(LteSupervision, ChecksOnceInThirtySeconds) {
    SayState("CONNECTED");
    SetAddress("10.64.0.2");
    checkLteStatus();
    const std::int64_t checked = world.now_us;
    StartStory();
    world.now_us = checked + 30 * kSecond - 1000;
    checkLteStatus();
    EXPECT_EQ(Story(), Lines{});
    world.now_us = checked + 30 * kSecond;
    checkLteStatus();
    EXPECT_EQ(world.Commands(), Lines{kQuestion});
}

TEST_F(LteSupervision, WaitsWithoutServiceAndLeavesTheTimerAlone) {
    stats.service_type = "No Service";
    checkLteStatus();
    EXPECT_EQ(Story(), Lines{"log: Warning: Modem reports bad service : 'No Service'"});
    EXPECT_FALSE(g_Cp_LteCheckTimer->IsRunning());
    EXPECT_EQ(LevelsThatLog("DEBUG: checkLteStatus(): No valid service, aborting checking LTE "
                            "connected state",
                            checkLteStatus),
              kAbove0);
}

TEST_F(LteSupervision, TakesAnUnknownServiceForService) {
    stats.service_type = "Unknown";
    checkLteStatus();
    EXPECT_EQ(g_i_LteConnectAttempts, 1);
}

class DisabledInterface : public LteSupervision {
  protected:
    DisabledInterface() { g_S_PppConfig.interface_enabled = false; }
};

TEST_F(DisabledInterface, BringsAConnectedCallDown) {
    SayState("CONNECTED");
    SetAddress("10.64.0.2");
    checkLteStatus();
    EXPECT_EQ(Story(),
              (Lines{"modem: AT$NWQMISTATUS", "sleep 5000 ms",
                     "log: LTE is connected, but Enable Wan interface in config is disabled.  "
                     "Bringing down LTE connection.",
                     "log: Stopping udhcpc on wwan0",
                     "run: kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null",
                     "run: ifconfig wwan0 0.0.0.0 up &> /dev/null", "sleep 500 ms",
                     "modem: AT$NWQMIDISCONNECT", "sleep 1000 ms",
                     "run: touch /var/log/wirelessdial_notdialing",
                     "remove: /var/log/wirelessdial_dialing"}));
}

TEST_F(DisabledInterface, OnlySetsTheMarkersWhenTheCallIsDown) {
    Put(kDialing, "");
    SayState("DISCONNECTED");
    checkLteStatus();
    EXPECT_EQ(Story(), (Lines{"modem: AT$NWQMISTATUS", "sleep 5000 ms",
                              "run: touch /var/log/wirelessdial_notdialing",
                              "remove: /var/log/wirelessdial_dialing"}));
    EXPECT_FALSE(Exists(kDialing));
    EXPECT_EQ(g_i_LteConnectAttempts, 0);
}

// Guards oddity disabled-looks-always.
TEST_F(DisabledInterface, IsLookedAtOnEveryPassWhateverTheTimer) {
    SayState("DISCONNECTED");
    g_Cp_LteCheckTimer->Start();
    for (int pass = 1; pass <= 3; ++pass) {
        StartStory();
        checkLteStatus();
        EXPECT_EQ(world.Commands(), Lines{kQuestion});
        EXPECT_EQ(world.shell, Lines{"touch /var/log/wirelessdial_notdialing"});
    }
}

TEST_F(DisabledInterface, IsLookedAtWithoutService) {
    stats.service_type = "No Service";
    SayState("DISCONNECTED");
    checkLteStatus();
    EXPECT_EQ(world.Commands(), Lines{kQuestion});
}

TEST_F(DisabledInterface, NeverResetsTheModemHoweverManyChecksFail) {
    SayState("DISCONNECTED");
    for (int pass = 0; pass < 30; ++pass) checkLteStatus();
    EXPECT_EQ(stats.lte_connect_failures, 30);
    EXPECT_FALSE(world.LoggedContaining("resetting modem"));
}

TEST_F(DisabledInterface, SaysSoAboveLevelZero) {
    EXPECT_EQ(LevelsThatLog("DEBUG: checkLteStatus(): Not Starting LTE connection: Wan connecting "
                            "is disabled in config",
                            checkLteStatus),
              kAbove0);
}

TEST_F(LteSupervision, ClearsTheFailuresWhenTheCheckBehindTheRestartFindsTheCall) {
    stats.lte_connect_failures = 9;
    world.on_sleep = [this](std::int64_t) {
        if (world.LoggedContaining("Starting/Signaling")) SayState("CONNECTED");
    };
    checkLteStatus();  // 10, then cleared by the check behind the restart
    EXPECT_FALSE(world.Logged(kGaveUp));
    EXPECT_EQ(stats.lte_connect_failures, 0);
}

TEST_F(LteSupervision, ResetsNothingAtTen) {
    stats.lte_connect_failures = 8;
    checkLteStatus();
    EXPECT_EQ(stats.lte_connect_failures, 10);
    EXPECT_FALSE(world.Logged(kGaveUp));
}

// Guards oddity log-says-ten.
TEST_F(LteSupervision, ResetsTheModemAtElevenAndSaysTen) {
    stats.lte_connect_failures = 9;
    checkLteStatus();
    Lines story = Story();
    ASSERT_GT(story.size(), 4U);
    story.erase(story.begin(), story.end() - 4);
    EXPECT_EQ(story, (Lines{std::string("log: ") + kGaveUp, "log: Resetting device",
                            "run: ResetPCMCIA now &> /dev/null &", "sleep 5000 ms"}));
    EXPECT_EQ(stats.lte_connect_failures, 0);
    EXPECT_TRUE(g_Cp_LteCheckTimer->IsCounting());
}

TEST_F(LteSupervision, ResetsAnUnknownStateWithAnAddressToo) {
    SayState("unknown");
    SetAddress("10.64.0.2");
    for (int check = 1; check <= 10; ++check) CheckAgain();
    EXPECT_EQ(stats.lte_connect_failures, 10);
    EXPECT_EQ(g_i_LteConnectAttempts, 0);
    CheckAgain();
    EXPECT_TRUE(world.Logged(kGaveUp));
    EXPECT_EQ(stats.lte_connect_failures, 0);
    EXPECT_FALSE(world.LoggedContaining("restarting connection"));
}

TEST_F(LteSupervision, StartsTheClientWithoutTheDefaultRouteWhenToldSo) {
    g_S_PppConfig.default_route = false;
    checkLteStatus();
    EXPECT_TRUE(HasRun("udhcpc -T 3 -S -b -i wwan0 -G  &> /dev/null"));
}

class LinkWatch : public LteSupervision {
  protected:
    LinkWatch() {
        SayState("CONNECTED");
        SetAddress("10.64.0.2");
        g_Cp_PingTimer->Start();
    }
    void CheckAfter(std::int64_t seconds) {
        world.now_us += (seconds - 30) * kSecond;
        CheckAgain();
    }
};

TEST_F(LinkWatch, LeavesThePingTimerAloneBeforeItsTime) {
    g_i_TxCheckFailures = 3;
    CheckAfter(590);
    EXPECT_FALSE(HasRun(kPingLine));
    EXPECT_GE(g_Cp_PingTimer->GetElapsed(), 590U);
    EXPECT_EQ(g_i_TxCheckFailures, 3);
}

TEST_F(LinkWatch, PingsEveryTenMinutesWhileBytesLeave) {
    Put(kTxCounter, "1000\n");
    g_i_TxCheckFailures = 3;
    CheckAfter(600);
    EXPECT_TRUE(HasRun(kPingLine));
    EXPECT_EQ(g_i_TxCheckFailures, 0);
    CheckAfter(590);
    EXPECT_FALSE(HasRun(kPingLine));
    CheckAfter(30);
    EXPECT_TRUE(HasRun(kPingLine));
}

TEST_F(LinkWatch, PingsEveryThirtySecondsWhileNoneLeave) {
    Put(kTxCounter, "0\n");
    CheckAfter(600);
    EXPECT_EQ(g_i_TxCheckFailures, 1);
    CheckAfter(30);
    EXPECT_TRUE(HasRun(kPingLine));
    EXPECT_EQ(g_i_TxCheckFailures, 2);
    Put(kTxCounter, "1\n");
    CheckAfter(30);
    EXPECT_TRUE(HasRun(kPingLine));
    EXPECT_EQ(g_i_TxCheckFailures, 0);
    CheckAfter(590);
    EXPECT_FALSE(HasRun(kPingLine));
}

TEST_F(LinkWatch, CountsAMissingCounterAsFailed) {
    CheckAfter(600);
    EXPECT_EQ(g_i_TxCheckFailures, 1);
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(LinkWatch, RestsWhileTheCallIsDown) {
    SayState("DISCONNECTED");
    CheckAfter(600);
    EXPECT_FALSE(HasRun(kPingLine));
    EXPECT_EQ(g_i_TxCheckFailures, 0);
    EXPECT_TRUE(g_Cp_PingTimer->HasExpired());
}

}  // namespace
