#include "modemctl/doctor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "modemctl/exit_code.h"
#include "modemctl/time_text.h"
#include "scratch.h"

namespace modemctl {
namespace {

using ::testing::HasSubstr;

// The files of a test are ten seconds old.
const std::time_t kNow = std::time(nullptr);

// A copied tree of a router that is well, but for what a test changes.
class DoctorTest : public ::testing::Test {
  protected:
    DoctorTest() {
        Statistics("E362", {});
        scratch_.Write("/proc/uptime", "4711.12 11.12\n");
        scratch_.Write("/proc/42/cmdline", std::string("modemd\0-E362\0/dev/ttyUSB0\0", 26));
        scratch_.Write("/var/run/modemd.pid", "42");
        scratch_.Write(kPpp, "CM_APN=internet\n");
        for (const char* const name : {"send", "recv", "send_fail"}) {
            std::filesystem::create_directories(scratch_.root() + "/tmp/sms/" + name);
        }
    }

    void Statistics(const std::string& model, const std::vector<std::string>& more) const {
        std::string text =
            "#File generated " + ShownTime(kNow - 2) +
            " \n#Device Properties :\nCELLMODEM_MODEL=" + model +
            "\nCELLMODEM_CURRENT_RSSI=-71\nCELLMODEM_CURRENT_CSQ=21\nCELLMODEM_CURRENT_ECIO=-5\n"
            "CELLMODEM_QMI_RESULT=x\nCELLMODEM_QMI_STATE=x\nCELLMODEM_TEMPERATURE=30\n";
        for (const std::string& line : more) text += line + "\n";
        scratch_.Write("/var/log/wireless.cardstats", text);
    }

    Finding Check(const std::string& id) const {
        const Patient patient = MeetPatient(Tree(scratch_.root()), kNow);
        for (const CheckedFinding& row : Examine(patient)) {
            if (row.id == id) return row.finding;
        }
        ADD_FAILURE() << "no check " << id;
        return {};
    }
    Health HealthOf(const std::string& id) const { return Check(id).health; }

    static constexpr const char* kPpp = "/etc/kvt/wireless/cellmodem_ppp.conf";
    Scratch scratch_;
};

TEST_F(DoctorTest, EachCheckHasItsOwnNameAndEachTroubleItsMend) {
    std::set<std::string> ids;
    const Patient patient = MeetPatient(Tree(scratch_.root()), kNow);
    for (const CheckedFinding& row : Examine(patient)) {
        EXPECT_TRUE(ids.insert(row.id).second) << row.id;
        const bool trouble =
            row.finding.health == Health::kBad || row.finding.health == Health::kNote;
        EXPECT_EQ(trouble, !row.finding.mend.empty()) << row.id;
        EXPECT_EQ(row.finding.mend.find('\n'), std::string::npos) << row.id;
        EXPECT_FALSE(row.finding.what.empty()) << row.id;
        EXPECT_NE(row.finding.health, Health::kBad) << row.id << ": " << row.finding.what;
    }
}

TEST_F(DoctorTest, OfACopiedTreeSaysWhatIsNotChecked) {
    for (const char* const id : {"port", "port-users", "log-daemon", "space"}) {
        EXPECT_EQ(HealthOf(id), Health::kNotChecked) << id;
    }
    EXPECT_EQ(HealthOf("shell"), Health::kNotChecked);
}

TEST_F(DoctorTest, KnowsADashByTheNameOfTheShell) {
    std::filesystem::create_directories(scratch_.root() + "/bin");
    std::filesystem::create_symlink("dash", scratch_.root() + "/bin/sh");
    EXPECT_EQ(HealthOf("shell"), Health::kBad);
    std::filesystem::remove(scratch_.root() + "/bin/sh");
    std::filesystem::create_symlink("busybox", scratch_.root() + "/bin/sh");
    EXPECT_EQ(HealthOf("shell"), Health::kFine);
}

TEST_F(DoctorTest, NamesTheHelpersThatAreMissing) {
    scratch_.Write("/bin/date", "");
    chmod((scratch_.root() + "/bin/date").c_str(), 0755);
    const Finding finding = Check("helpers");
    EXPECT_EQ(finding.health, Health::kBad);
    EXPECT_THAT(finding.what, HasSubstr("udhcpc"));
    EXPECT_THAT(finding.what, HasSubstr("ResetPCMCIA"));
    EXPECT_THAT(finding.what, ::testing::Not(HasSubstr("/bin/date")));
}

TEST_F(DoctorTest, ComparesTheOptionWithTheModel) {
    EXPECT_EQ(HealthOf("card"), Health::kFine);
    Statistics("E371", {});
    const Finding finding = Check("card");
    EXPECT_EQ(finding.health, Health::kBad);
    EXPECT_THAT(finding.mend, HasSubstr("CARD=E371"));
}

TEST_F(DoctorTest, KnowsAStalePidFile) {
    EXPECT_EQ(HealthOf("pid-file"), Health::kFine);
    scratch_.Write("/var/run/modemd.pid", "43");
    EXPECT_EQ(HealthOf("pid-file"), Health::kBad);
}

TEST_F(DoctorTest, JudgesTheSupervisor) {
    EXPECT_EQ(HealthOf("supervisor"), Health::kNote);
    const char* const unit = "/etc/systemd/system/modemd.service";
    scratch_.Write(unit, "[Service]\nRestart=always\nTimeoutStopSec=75\nKillMode=process\n");
    EXPECT_EQ(HealthOf("supervisor"), Health::kFine);
    scratch_.Write(unit, "[Service]\nRestart=always\nTimeoutStopSec=10\nKillMode=process\n");
    EXPECT_THAT(Check("supervisor").mend, HasSubstr("TimeoutStopSec=75"));
    scratch_.Write(unit, "[Service]\nRestart=always\nKillMode=mixed\n");
    EXPECT_THAT(Check("supervisor").mend, HasSubstr("KillMode=process"));
    scratch_.Write(unit, "[Service]\nRestart=on-failure\nKillMode=process\n");
    EXPECT_THAT(Check("supervisor").mend, HasSubstr("Restart=always"));
}

TEST_F(DoctorTest, KnowsTheStartScriptThatStartsItAgain) {
    scratch_.Write("/etc/init.d/modemd", "start-stop-daemon -S -b -x /usr/sbin/modemd\n");
    EXPECT_EQ(HealthOf("supervisor"), Health::kBad);
    scratch_.Write("/etc/init.d/modemd", "KEEPER=$LIBEXEC/modemd-keeper\n");
    EXPECT_EQ(HealthOf("supervisor"), Health::kFine);
}

TEST_F(DoctorTest, JudgesTheConfiguration) {
    scratch_.Write(kPpp, "CM_APN=internet\n");
    EXPECT_EQ(HealthOf("ppp-file"), Health::kFine);
    scratch_.Write(kPpp, "CM_APN=internet\nCM_APM=x\n");
    EXPECT_THAT(Check("ppp-file").what, HasSubstr("CM_APM"));
    scratch_.Write(kPpp, "CM_APN=internet");
    EXPECT_THAT(Check("ppp-file").mend, HasSubstr("echo >>"));
    scratch_.Write(kPpp, "CM_APN=internet\n");
    const utimbuf epoch = {0, 0};
    utime((scratch_.root() + kPpp).c_str(), &epoch);
    EXPECT_THAT(Check("ppp-file").mend, HasSubstr("touch"));
    scratch_.Write("/etc/kvt/wireless/cellmodem_provision_data.conf", "DEBUG_MODE=4\n");
    EXPECT_THAT(Check("provisioning-file").mend, HasSubstr("DEBUG_MODE=0"));
}

TEST_F(DoctorTest, JudgesTheApn) {
    scratch_.Write(kPpp, "CM_APN=inter net/\n");
    EXPECT_EQ(HealthOf("apn"), Health::kBad);
    scratch_.Write(kPpp, "CM_APN=internet.of.very.many.things\n");
    EXPECT_EQ(HealthOf("apn"), Health::kBad);
    scratch_.Write(kPpp, "CM_APN=internet\n");
    EXPECT_EQ(HealthOf("apn"), Health::kFine);
    Statistics("E362", {"CELLMODEM_SIM_CONT_APN0=1:a", "CELLMODEM_SIM_CONT_APN1=3:other"});
    EXPECT_THAT(Check("apn").what, HasSubstr("refused"));
    Statistics("E362", {"CELLMODEM_SIM_CONT_APN1=3:internet"});
    EXPECT_THAT(Check("apn").what, HasSubstr("has taken"));
}

TEST_F(DoctorTest, JudgesTheSpool) {
    EXPECT_EQ(HealthOf("spool"), Health::kFine);
    chmod((scratch_.root() + "/tmp/sms/send").c_str(), 0777);
    EXPECT_THAT(Check("spool").mend, HasSubstr("chmod 0700 /tmp/sms/send"));
    std::filesystem::remove_all(scratch_.root() + "/tmp/sms/recv");
    chmod((scratch_.root() + "/tmp/sms/send").c_str(), 0700);
    EXPECT_EQ(HealthOf("spool"), Health::kNote);
}

TEST_F(DoctorTest, FindsWhatHoldsTheSpoolUp) {
    EXPECT_EQ(HealthOf("spool-entries"), Health::kFine);
    std::filesystem::create_symlink("/etc/passwd", scratch_.root() + "/tmp/sms/send/a");
    EXPECT_EQ(HealthOf("spool-entries"), Health::kNote);
    std::filesystem::create_directories(scratch_.root() + "/tmp/sms/send/z");
    EXPECT_EQ(Check("spool-entries").mend, "rmdir '/tmp/sms/send/z'");
}

TEST_F(DoctorTest, KnowsTheHazards) {
    for (const char* const id :
         {"sent-bytes", "empty-level", "unknown-signal", "answers-in-step"}) {
        EXPECT_NE(HealthOf(id), Health::kBad) << id;
        EXPECT_NE(HealthOf(id), Health::kNote) << id;
    }
    scratch_.Write("/sys/class/net/wwan0/statistics/tx_bytes", "2147483648\n");
    EXPECT_EQ(HealthOf("sent-bytes"), Health::kBad);
    Statistics("E362", {"CELLMODEM_CURRENT_RSSI=0", "CELLMODEM_CURRENT_CSQ=31"});
    EXPECT_EQ(HealthOf("empty-level"), Health::kNote);
    Statistics("E362", {"CELLMODEM_CURRENT_RSSI=-99", "CELLMODEM_CURRENT_CSQ=99"});
    EXPECT_EQ(HealthOf("unknown-signal"), Health::kNote);
    Statistics("E362", {"CELLMODEM_MANU=+CREG: 1"});
    EXPECT_EQ(HealthOf("answers-in-step"), Health::kBad);
    scratch_.Write("/var/log/messages", IsoTime(kNow - 60) +
                                            " router modemd: Syncing system time to 0:0:7 "
                                            "1/6/1980 (UTC)\n");
    EXPECT_EQ(HealthOf("network-time"), Health::kBad);
}

TEST_F(DoctorTest, KnowsAModemThatWentSilentWithMessagesWaiting) {
    EXPECT_EQ(HealthOf("silent-port"), Health::kFine);
    scratch_.Write("/var/log/wireless.cardstats",
                   "#File generated " + ShownTime(kNow - 4000) +
                       " \nCELLMODEM_CURRENT_ECIO=1\n"
                       "CELLMODEM_SKU_PRIID=x\nCELLMODEM_CURRENT_CHAN=1\n");
    EXPECT_EQ(HealthOf("silent-port"), Health::kNote);
    scratch_.Write("/tmp/sms/send/1", "TO=1\nMSG=x\n");
    EXPECT_EQ(HealthOf("silent-port"), Health::kBad);
}

TEST(DoctorExit, IsBadForOneBadAndNoDataForNothing) {
    EXPECT_EQ(DoctorExitCode({{"a", Fine("x")}, {"b", Bad("x", "y")}}), kNotGood);
    EXPECT_EQ(DoctorExitCode({{"a", Fine("x")}, {"b", Note("x", "y")}}), kGood);
    EXPECT_EQ(DoctorExitCode({{"a", NotChecked("x")}}), kNoData);
}

TEST(Order, IsReadFromAnyKindOfStart) {
    StartOrder order;
    EXPECT_TRUE(ReadOrder({"modemd", "-E371", "/dev/ttyUSB2"}, order));
    EXPECT_EQ(order.card + order.device, "E371/dev/ttyUSB2");
    StartOrder unit;
    EXPECT_TRUE(ReadOrder({"Environment=CARD=-E362", "DEVICE=/dev/ttyUSB0"}, unit));
    EXPECT_EQ(unit.card + unit.device, "E362/dev/ttyUSB0");
    StartOrder nothing;
    EXPECT_FALSE(ReadOrder({"modemd", "-881"}, nothing));
}

}  // namespace
}  // namespace modemctl
