#include "modemctl/snapshot.h"

#include <gtest/gtest.h>

#include "modemctl/chain.h"
#include "modemctl/signal.h"
#include "tools/scratch.h"

namespace modemctl {
namespace {

constexpr char kHead[] = "#File generated 2026-03-14 09:15:02 \n";
constexpr std::time_t kNow = 1773479712;  // ten seconds later

class SnapshotTest : public ::testing::Test {
  protected:
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
    }
    void WriteStatistics(const std::string& lines) const {
        scratch_.Write("/var/log/wireless.cardstats",
                       kHead + lines + "CELLMODEM_CURRENT_ECIO=-8\n");
    }
    Snapshot Take() const { return TakeSnapshot(Tree(scratch_.root()), kNow); }

    Scratch scratch_;
};

TEST_F(SnapshotTest, KeepsTheFourWaysOfNotKnowingApart) {
    WriteStatistics("CELLMODEM_MODEL=E362\nCELLMODEM_BAND=Unknown\nCELLMODEM_MDN=\n");
    const Snapshot snapshot = Take();
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_MODEL").told, Told::kValue);
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_BAND").told, Told::kUnknown);
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_MDN").told, Told::kEmpty);
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_CARRIER").told, Told::kAbsent);
    EXPECT_EQ(snapshot.StatisticsFreshness(10), Freshness::kFresh);
    EXPECT_EQ(snapshot.StatisticsFreshness(9), Freshness::kTooOld);
}

TEST_F(SnapshotTest, TakesTheAgeFromTheFirstLine) {
    WriteStatistics("");
    EXPECT_EQ(Take().Age(), 10);
}

TEST_F(SnapshotTest, SplitsLinesAtTheLineFeedAndTheFirstEqualsSignOnly) {
    WriteStatistics("CELLMODEM_CARRIER=a=b\rCELLMODEM_MODEL=forged\n");
    const Snapshot snapshot = Take();
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_CARRIER").text, "a=b\rCELLMODEM_MODEL=forged");
    EXPECT_EQ(snapshot.statistics.Get("CELLMODEM_MODEL").told, Told::kAbsent);
}

TEST_F(SnapshotTest, KnowsAFileThatEndsTooEarly) {
    const std::string lte =
        std::string(kHead) + "CELLMODEM_CURRENT_ECIO=-8\nCELLMODEM_QMI_RESULT=GOOD\n";
    EXPECT_FALSE(IsWholeStatistics(lte));
    EXPECT_TRUE(IsWholeStatistics(lte + "CELLMODEM_TEMPERATURE=37\n"));
    EXPECT_FALSE(IsWholeStatistics(lte + "CELLMODEM_TEMPERATURE=3"));
    const std::string sierra =
        std::string(kHead) + "CELLMODEM_SKU_PRIID=1\nCELLMODEM_CURRENT_ECIO=-8\n";
    EXPECT_FALSE(IsWholeStatistics(sierra));
    EXPECT_TRUE(IsWholeStatistics(sierra + "CELLMODEM_CURRENT_CHAN=4\n"));
    EXPECT_FALSE(IsWholeStatistics("CELLMODEM_CURRENT_ECIO=-8\n"));
}

TEST_F(SnapshotTest, TellsWhetherTheDaemonRuns) {
    EXPECT_EQ(Take().daemon, DaemonState::kUnknown);
    scratch_.Write("/proc/uptime", "100.00 100.00\n");
    EXPECT_EQ(Take().daemon, DaemonState::kNeverStarted);
    scratch_.Write("/var/run/modemd.pid", "42");
    EXPECT_EQ(Take().daemon, DaemonState::kDead);
    // Another program has got the number meanwhile, and names ours in its arguments only.
    scratch_.Write("/proc/42/cmdline", std::string("vi\0/etc/modemd", 14));
    EXPECT_EQ(Take().daemon, DaemonState::kDead);
    scratch_.Write("/proc/42/cmdline", std::string("/usr/sbin/modemd\0-E362", 22));
    EXPECT_EQ(Take().daemon, DaemonState::kRunning);
    EXPECT_EQ(Take().pid, 42);
}

// The daemon doubles the last character of a file without a line feed.
TEST_F(SnapshotTest, ReadsTheConfigurationAsTheDaemonDoes) {
    scratch_.Write("/etc/kvt/wireless/cellmodem_ppp.conf",
                   "# CM_APN=old\nCM_ENABLE_INTERFACE = NO\nCM_APN=internet");
    scratch_.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "DEBUG_MODE=1\n");
    const Snapshot snapshot = Take();
    EXPECT_EQ(snapshot.ppp.apn, "internett");
    EXPECT_FALSE(snapshot.ppp.interface_enabled);
    EXPECT_FALSE(snapshot.provisioning.sync_time);
    EXPECT_EQ(snapshot.provisioning.debug_mode, "1");
}

TEST_F(SnapshotTest, CountsTheSpool) {
    scratch_.Write("/tmp/sms/send/a", "x", 100);
    scratch_.Write("/tmp/sms/send/b", "x", 50);
    const Snapshot snapshot = Take();
    EXPECT_TRUE(snapshot.sending.exists);
    EXPECT_EQ(snapshot.sending.files, 2);
    EXPECT_NEAR(static_cast<double>(std::time(nullptr) - snapshot.sending.oldest), 100, 5);
    EXPECT_FALSE(snapshot.failed.exists);
}

// --- The chain ---------------------------------------------------------------------------------

constexpr long long kMaxAge = 60;

TEST_F(SnapshotTest, OfAnOlderDaemonIsJudgedByWhatThatPublishes) {
    WriteStatistics("CELLMODEM_MODEL=E362\n");
    const Chain chain = JudgeChain(Take(), kMaxAge);
    EXPECT_EQ(chain.verdict, kGood);
    EXPECT_EQ(chain[ChainPart::kRegistration].hold, Hold::kNotWatched);
    EXPECT_EQ(chain[ChainPart::kCall].hold, Hold::kNotWatched);
}

TEST_F(SnapshotTest, IsGoodOnlyWhenTheRegistrationIsKnown) {
    WriteStatistics("CELLMODEM_CREG=\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).verdict, kNotGood);
    WriteStatistics("CELLMODEM_CREG=Registered, Roaming\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).verdict, kGood);
    WriteStatistics("CELLMODEM_CREG=Registration Denied\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).First(Hold::kBroken),
              static_cast<std::size_t>(ChainPart::kRegistration));
}

// The daemon cleans white space out of the state, so that only its beginning tells the two apart.
TEST_F(SnapshotTest, DoesNotTakeADisconnectedCallForAConnectedOne) {
    const std::string rest =
        "CELLMODEM_QMI_RESULT=GOOD\nCELLMODEM_CREG=Registered, Home Network\n"
        "CELLMODEM_TEMPERATURE=37\nCELLMODEM_SIM_ID=89\n";
    WriteStatistics(rest + "CELLMODEM_QMI_STATE=CONNECTED\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge)[ChainPart::kCall].hold, Hold::kHolds);
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).verdict, kGood);
    WriteStatistics(rest + "CELLMODEM_QMI_STATE=DISCONNECTED\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge)[ChainPart::kCall].hold, Hold::kBroken);
    WriteStatistics(rest + "CELLMODEM_QMI_STATE=unknown\n");
    EXPECT_EQ(JudgeChain(Take(), kMaxAge)[ChainPart::kCall].hold, Hold::kUnknown);
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).verdict, kNotGood);
}

TEST_F(SnapshotTest, TellsAnEmptyFileFromNone) {
    EXPECT_EQ(JudgeChain(Take(), kMaxAge).verdict, kNoData);
    scratch_.Write("/var/log/wireless.cardstats", "");
    EXPECT_NE(JudgeChain(Take(), kMaxAge)[ChainPart::kPort].what.find("empty"), std::string::npos);
}

// --- Signal --------------------------------------------------------------------------------------

class SignalTest : public SnapshotTest {
  protected:
    Signal Read(const std::string& lines) const {
        WriteStatistics(lines);
        return ReadSignal(Take().statistics);
    }
};

TEST_F(SignalTest, HasAWordForItsStrength) {
    EXPECT_EQ(Read("CELLMODEM_CURRENT_RSSI=-71\nCELLMODEM_CURRENT_CSQ=31\n").strength,
              Strength::kGood);
    EXPECT_EQ(Read("CELLMODEM_CURRENT_RSSI=-90\nCELLMODEM_CURRENT_CSQ=12\n").strength,
              Strength::kFair);
    EXPECT_EQ(Read("CELLMODEM_CURRENT_RSSI=-101\nCELLMODEM_CURRENT_CSQ=6\n").strength,
              Strength::kWeak);
}

// The reference signal is what an LTE modem hears with: a strong carrier of others does not help.
TEST_F(SignalTest, IsGradedByTheReferenceSignalWhereThereIsOne) {
    EXPECT_EQ(Read("CELLMODEM_CURRENT_RSSI=-60\nCELLMODEM_LTE_RSRP=-118\n").strength,
              Strength::kWeak);
}

TEST_F(SignalTest, IsNotReadFromWhatOnlyLooksLikeAReading) {
    EXPECT_FALSE(Read("CELLMODEM_CURRENT_RSSI=-99\nCELLMODEM_CURRENT_CSQ=99\n").rssi);
    EXPECT_FALSE(Read("CELLMODEM_CURRENT_RSSI=-125\nCELLMODEM_CURRENT_CSQ=99\n").rssi);
    EXPECT_FALSE(Read("CELLMODEM_CURRENT_RSSI=0\nCELLMODEM_CURRENT_CSQ=31\n").rssi);
    EXPECT_EQ(Read("CELLMODEM_CURRENT_RSSI=0\nCELLMODEM_CURRENT_CSQ=31\n").strength,
              Strength::kUnknown);
    EXPECT_FALSE(Read("CELLMODEM_LTE_RSRP=nan\n").rsrp);
    EXPECT_FALSE(Read("CELLMODEM_LTE_RSRP=-95x\n").rsrp);
}

// An RX level that the modem left empty is published as 0 dBm; the slow value is then the truth.
TEST_F(SignalTest, FallsBackToTheSlowValue) {
    const Signal signal = Read(
        "CELLMODEM_CURRENT_RSSI=0\nCELLMODEM_CURRENT_CSQ=31\n"
        "CELLMODEM_LOWSPEED_RSSI=-92\nCELLMODEM_LOWSPEED_CSQ=17\n");
    EXPECT_EQ(signal.rssi, -92);
    EXPECT_EQ(signal.csq, 17);
}

}  // namespace
}  // namespace modemctl
