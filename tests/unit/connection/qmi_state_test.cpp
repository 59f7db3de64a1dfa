// How the supervision reads the state of the data call: IsNovatelConnected.
#include "connection/lte_supervision.h"
#include "connection_test.h"
#include "state/settings.h"
#include "state/statistics_record.h"

namespace {

constexpr char kNoAddress[] = "Interface wwan0 is connected, but does not have a valid IP.";

class QmiState : public ConnectionTest {
  protected:
    QmiState() { g_i_CardType = kCardNovatelE362; }

    int Ask(const std::string& answer) {
        world.answers[kQuestion] = answer;
        return IsNovatelConnected();
    }
    int AskState(const std::string& state) {
        return Ask("\r\nQMI State:" + state + "\r\n\r\nOK\r\n");
    }

    GlobalStats& stats = g_S_Globalstats;
};

TEST_F(QmiState, IsNotAskedOfOtherCards) {
    stats.qmi_state = "before";
    for (const int card : {0, 2, 3, 4, 6}) {
        SCOPED_TRACE(card);
        g_i_CardType = card;
        EXPECT_EQ(IsNovatelConnected(), 0);
    }
    EXPECT_EQ(Story(), Lines{});
    EXPECT_EQ(stats.qmi_state, "before");
    EXPECT_EQ(stats.lte_connect_failures, 0);
}

TEST_F(QmiState, IsAskedWithFiveSecondsOfWaiting) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(AskState(" CONNECTED"), 1);
    EXPECT_EQ(Story(), (Lines{"modem: AT$NWQMISTATUS", "sleep 5000 ms"}));
}

TEST_F(QmiState, FillsTheRecord) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(Ask("AT$NWQMISTATUS\r\r\n$NWQMISTATUS: QMI_RESULT_SUCCESS : 0\r\n"
                  "QMI State: QMI_WDS CONNECTED\r\n"
                  "Call End Reason: 3 \r\nCall Duration:  \t00:04:11 \r\n\r\nOK\r\n"),
              1);
    EXPECT_EQ(stats.qmi_result, "QMI_RESULT_SUCCESS");
    EXPECT_EQ(stats.qmi_result_raw, "0");
    EXPECT_EQ(stats.qmi_state, " QMI_WDS CONNECTED");
    EXPECT_EQ(stats.qmi_end_reason_raw, "3");
    EXPECT_EQ(stats.qmi_call_time, "00:04:11 ");
    EXPECT_EQ(stats.lte_connect_failures, 0);
}

struct ResultCase {
    const char* value;
    const char* text;
    const char* number;
};

TEST_F(QmiState, SplitsTheResultAtExactlyOneColon) {
    for (const ResultCase& row : {
             ResultCase{" ERROR : 14", "ERROR", "14"},
             ResultCase{" a b\tc:1 4", "abc", "14"},
             ResultCase{" 14", "14", "14"},
             ResultCase{" a:b:14", "a:b:14", "a:b:14"},
             ResultCase{" :14", "", "14"},
             ResultCase{" a:", "a", ""},
             ResultCase{" :", "", ""},
             ResultCase{"", "", ""},
             ResultCase{"  ", "", ""},
         }) {
        SCOPED_TRACE(row.value);
        Ask(std::string("\r\n$NWQMISTATUS:") + row.value + "\r\n");
        EXPECT_EQ(stats.qmi_result, row.text);
        EXPECT_EQ(stats.qmi_result_raw, row.number);
    }
}

// Guards oddity qmi-texts-lag.
TEST_F(QmiState, TranslatesWhatTheCheckBeforeReported) {
    Ask("\r\n$NWQMISTATUS: FAIL:14\r\nCall End Reason: 5\r\nCall Duration: 00:01:00\r\n");
    EXPECT_EQ(stats.qmi_result_number, "Unknown");
    EXPECT_EQ(stats.qmi_end_reason, "Unknown");
    EXPECT_EQ(stats.previous_qmi_call_time, "Unknown");
    Ask("\r\n$NWQMISTATUS: FAIL:30\r\nCall End Reason: 11\r\nCall Duration: 00:02:00\r\n");
    EXPECT_EQ(stats.qmi_result_number, "Data call failed. (14)");
    EXPECT_EQ(stats.qmi_result_raw, "30");
    EXPECT_EQ(stats.qmi_end_reason, "Received release from BS \x96 no reason given (5)");
    EXPECT_EQ(stats.qmi_end_reason_raw, "11");
    EXPECT_EQ(stats.previous_qmi_call_time, "00:01:00");
    Ask("");
    EXPECT_EQ(stats.qmi_result_number, "30");
    EXPECT_EQ(stats.qmi_end_reason, "11");
    EXPECT_EQ(stats.previous_qmi_call_time, "00:02:00");
}

TEST_F(QmiState, WithoutAnAnswerIsUnknownInEveryField) {
    SetAddress("10.64.0.2");
    Ask("\r\n$NWQMISTATUS: OK:0\r\nQMI State: CONNECTED\r\nCall End Reason: 1\r\n"
        "Call Duration: 9\r\n");
    world.answers.clear();
    EXPECT_EQ(IsNovatelConnected(), 0);
    EXPECT_EQ(stats.qmi_result, "Unknown");
    EXPECT_EQ(stats.qmi_result_raw, "Unknown");
    EXPECT_EQ(stats.qmi_state, "Unknown");
    EXPECT_EQ(stats.qmi_end_reason_raw, "Unknown");
    EXPECT_EQ(stats.qmi_call_time, "Unknown");
    EXPECT_EQ(stats.lte_connect_failures, 1);
}

TEST_F(QmiState, DisconnectedIsNotConnected) {
    SetAddress("10.64.0.2");
    for (const char* state : {" DISCONNECTED", "CONNECTED", " connected", " NOT_CONNECTED", "",
                              " UNKNOWN", " Unknown", " DISCONNECTING"}) {
        SCOPED_TRACE(state);
        stats.lte_connect_failures = 4;
        EXPECT_EQ(AskState(state), 0);
        EXPECT_EQ(stats.lte_connect_failures, 5);
    }
    EXPECT_EQ(world.log, Lines{});
}

TEST_F(QmiState, ConnectedClearsTheFailures) {
    SetAddress("10.64.0.2");
    stats.lte_connect_failures = 10;
    EXPECT_EQ(AskState(" CONNECTED"), 1);
    EXPECT_EQ(stats.lte_connect_failures, 0);
}

TEST_F(QmiState, ConnectedWithoutAnAddressIsNoFailureAndYetNotConnected) {
    stats.lte_connect_failures = 10;
    EXPECT_EQ(AskState(" CONNECTED"), 0);
    EXPECT_EQ(stats.lte_connect_failures, 0);
    EXPECT_EQ(world.log, Lines{kNoAddress});
}

// Guards oddity unknown-counts-as-failed.
TEST_F(QmiState, UnknownIsJudgedByTheAddressAndCountsAsAFailure) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(AskState(" unknown"), 1);
    EXPECT_EQ(stats.lte_connect_failures, 1);
    EXPECT_EQ(world.log, Lines{});
    ClearAddress();
    EXPECT_EQ(AskState(" unknown"), 0);
    EXPECT_EQ(stats.lte_connect_failures, 2);
    EXPECT_EQ(world.log, Lines{kNoAddress});
}

TEST_F(QmiState, ConnectedWinsOverUnknown) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(AskState(" unknown, was CONNECTED"), 1);
    EXPECT_EQ(stats.lte_connect_failures, 0);
}

TEST_F(QmiState, OfTheLastStateLineCounts) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(Ask("\r\nQMI State: CONNECTED\r\nQMI State: DISCONNECTED\r\n"), 0);
    EXPECT_EQ(Ask("\r\nQMI State: DISCONNECTED\r\nQMI State: CONNECTED\r\n"), 1);
}

TEST_F(QmiState, ReadsAllKeysFromOneLine) {
    Ask("$NWQMISTATUS: A:1 QMI State: DISCONNECTED Call End Reason: 2 Call Duration: 7");
    EXPECT_EQ(stats.qmi_result, "A:1QMIState:DISCONNECTEDCallEndReason:2CallDuration:7");
    EXPECT_EQ(stats.qmi_state, " DISCONNECTED Call End Reason: 2 Call Duration: 7");
    EXPECT_EQ(stats.qmi_end_reason_raw, "2CallDuration:7");
    EXPECT_EQ(stats.qmi_call_time, "7");
}

TEST_F(QmiState, TakesACarriageReturnForALineEnd) {
    SetAddress("10.64.0.2");
    EXPECT_EQ(Ask("QMI State: CONNECTED\rCall Duration: 5\r"), 1);
    EXPECT_EQ(stats.qmi_state, " CONNECTED");
    EXPECT_EQ(stats.qmi_call_time, "5");
}

TEST_F(QmiState, LooksAtWhatWasWaitingOnThePortToo) {
    SetAddress("10.64.0.2");
    world.Waiting("\r\nQMI State: CONNECTED\r\n");
    EXPECT_EQ(IsNovatelConnected(), 1);
}

TEST_F(QmiState, ShowsItsJudgementAtTheRightLevels) {
    SetAddress("10.64.0.2");
    const auto connected = [this] { AskState(" CONNECTED"); };
    EXPECT_EQ(LevelsThatLog("DEBUG: IsNovatelConnected(): Device is CONNECTED", connected),
              kAbove1);
    EXPECT_EQ(
        LevelsThatLog("DEBUG: IsNovatelConnected(): Interface wwan0 has a valid IP.", connected),
        kAbove1);
    EXPECT_EQ(LevelsThatLog("DEBUG: IsNovatelConnected(): checking line : QMI State: CONNECTED",
                            connected),
              kAbove1);
    EXPECT_EQ(LevelsThatLog("DEBUG: IsNovatelConnected(): checking line : ", connected), kAbove1);
    EXPECT_EQ(LevelsThatLog("DEBUG: IsNovatelConnected(): Device is connection state is Unknown "
                            "(no answer)",
                            [this] { AskState(" unknown"); }),
              kAbove0);
    EXPECT_EQ(LevelsThatLog("DEBUG: IsNovatelConnected(): Device is NOT CONNECTED / Unknown",
                            [this] { AskState(" DISCONNECTED"); }),
              kAbove0);
    ClearAddress();
    EXPECT_EQ(LevelsThatLog(kNoAddress, connected), kAlways);
}

TEST_F(QmiState, OnADeadPortIsNotConnected) {
    SetAddress("10.64.0.2");
    BreakPort();
    EXPECT_EQ(IsNovatelConnected(), 0);
    EXPECT_EQ(stats.lte_connect_failures, 1);
}

}  // namespace
