#include "modemctl/bundle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "modemctl/bundle_lines.h"
#include "modemctl/exit_code.h"
#include "scratch.h"

namespace modemctl {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr Anonymizer::Key kKey = {3, 4};
constexpr std::time_t kNow = 1773479702;  // 2026-03-14 09:15:02 UTC

// What must not leave the router.
constexpr const char* kSecrets[] = {
    "490154203237518", "8949020000001234563", "2015550188",  "02A1C3D", "44178493",
    "m2m.example",     "15551234567",         "10.11.12.13", "stadium", "for_alice"};

constexpr char kStatistics[] =
    "#File generated 2026-03-14 09:15:00 \n#Device Properties :\n"
    "CELLMODEM_ESN=490154203237518\nCELLMODEM_IMEI=490154203237518\n"
    "CELLMODEM_SIM_ID=8949020000001234563\nCELLMODEM_MDN=2015550188\n"
    "CELLMODEM_MANU=490154203237518\nCELLMODEM_MODEL=Model 881\n"
    "CELLMODEM_CARRIER=Carrier\nCELLMODEM_CURRENT_ECIO=-5\n"
    "CELLMODEM_SIM_CONT_APN0=3:m2m.example\nCELLMODEM_SKU_PRIID=9900001 001.002\n"
    "CELLMODEM_SERVING_CELL=02A1C3D (44178493)\nCELLMODEM_NEW_KEY=15551234567\n"
    "CELLMODEM_CURRENT_CHAN=437\n";

constexpr char kLog[] =
    "2026-03-14T09:14:00+00:00 router modemd: v1.45 starting\n"
    "2026-03-14T09:14:01+00:00 router modemd: Setting Context 3 APN to 'm2m.example'\n"
    "2026-03-14T09:14:02+00:00 router modemd: Got SMS from 15551234567 at t, Message: stadium\n"
    "2026-03-14T09:14:03+00:00 router modemd: Reading SMS File /tmp/sms/send/for_alice\n"
    "2026-03-14T09:14:04+00:00 router modemd: DEBUG: stadium 15551234567\n"
    "2026-03-14T09:14:05+00:00 router modemd: a line of nobody about the stadium\n"
    "2026-03-14T09:14:06+00:00 router other: 15551234567\n";

class BundleTest : public ::testing::Test {
  protected:
    BundleTest() {
        scratch_.Write("/var/log/wireless.cardstats", kStatistics);
        scratch_.Write("/var/log/wireless.serialno", "490154203237518\n");
        scratch_.Write("/var/log/messages", kLog);
        scratch_.Write("/etc/kvt/wireless/cellmodem_ppp.conf",
                       "CM_APN=m2m.example\nCM_PASSWORD=stadium\n");
        scratch_.Write("/tmp/sms/recv/sms_msg20260314-091400.1",
                       "FROM=15551234567\nTIME=26/03/14-09:15:02-20\nMSG=see you at the stadium\n");
        scratch_.Write("/tmp/sms/send/for_alice", "TO=+15551234567\nMSG=stadium\n");
        scratch_.Write("/modemctl.facts", "now=2026-03-14T09:15:02Z\naddress=10.11.12.13\n");
        scratch_.Write("/proc/uptime", "4711.12 11.12\n");
    }

    Bundle Make() {
        const Patient patient = MeetPatient(Tree(scratch_.root()), kNow);
        Anonymizer anonymizer(kKey);
        return MakeBundle(patient, Examine(patient), anonymizer);
    }

    static std::string TextOf(const Bundle& bundle, const std::string& path) {
        for (const BundleFile& file : bundle.files) {
            if (file.path == path) return file.text;
        }
        return "no " + path;
    }

    Scratch scratch_;
};

TEST_F(BundleTest, HoldsNothingPersonal) {
    for (const BundleFile& file : Make().files) {
        for (const char* const secret : kSecrets) {
            EXPECT_THAT(file.path + "\n" + file.text, Not(HasSubstr(secret)));
        }
    }
}

TEST_F(BundleTest, LeavesOutWhatCannotBePlaced) {
    const Bundle bundle = Make();
    EXPECT_EQ(bundle.left_out, 4U);  // a statistics key, a configuration key, two log lines
    EXPECT_THAT(TextOf(bundle, "/var/log/wireless.cardstats"), Not(HasSubstr("NEW_KEY")));
    EXPECT_THAT(TextOf(bundle, "/var/log/messages"), Not(HasSubstr("nobody")));
}

TEST_F(BundleTest, KeepsWhatTheMakerNeeds) {
    const Bundle bundle = Make();
    const std::string statistics = TextOf(bundle, "/var/log/wireless.cardstats");
    EXPECT_THAT(statistics, HasSubstr("CELLMODEM_MODEL=Model 881\n"));
    EXPECT_THAT(statistics, HasSubstr("CELLMODEM_SKU_PRIID=9900001 001.002\n"));
    EXPECT_THAT(statistics, HasSubstr("CELLMODEM_CURRENT_CHAN=437\n"));
    EXPECT_THAT(TextOf(bundle, "/var/log/messages"), HasSubstr("router modemd: v1.45 starting\n"));
    EXPECT_THAT(TextOf(bundle, "/doctor.json"), HasSubstr("\"schema\":\"modemctl.doctor/1\""));
    EXPECT_EQ(TextOf(bundle, "/proc/uptime"), "4711.12 11.12\n");
}

TEST_F(BundleTest, FollowsTheSameThroughAllFiles) {
    const Bundle bundle = Make();
    const std::string config = TextOf(bundle, "/etc/kvt/wireless/cellmodem_ppp.conf");
    const std::string apn = config.substr(7, config.find('\n') - 7);
    EXPECT_EQ(apn.size(), std::string("m2m.example").size());
    EXPECT_THAT(TextOf(bundle, "/var/log/wireless.cardstats"), HasSubstr("=3:" + apn + "\n"));
    EXPECT_THAT(TextOf(bundle, "/var/log/messages"), HasSubstr("APN to '" + apn + "'"));
    const std::string serial = TextOf(bundle, "/var/log/wireless.serialno");
    EXPECT_THAT(TextOf(bundle, "/var/log/wireless.cardstats"),
                HasSubstr("CELLMODEM_IMEI=" + serial));
}

TEST_F(BundleTest, UnpacksToATreeThatReadsLikeTheRouter) {
    Scratch unpacked;
    const std::string tar = TarOf(Make().files);
    scratch_.Write("/report.tar", tar);
    ASSERT_EQ(tar.size() % 512, 0U);
    const std::string command =
        "tar -C " + unpacked.root() + " -xf " + scratch_.root() + "/report.tar";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Tree tree(unpacked.root());
    EXPECT_EQ(tree.Now(), kNow);
    const Snapshot snapshot = TakeSnapshot(tree, kNow);
    EXPECT_EQ(snapshot.card, Card::kSierra881);
    EXPECT_EQ(snapshot.Age(), 2);
    EXPECT_EQ(snapshot.received.files, 1);
    EXPECT_EQ(snapshot.address.substr(0, 3), "10.");
}

TEST(PlaceLogLine, LeavesNoWordOfAMessage) {
    Anonymizer a(kKey);
    std::string placed;
    ASSERT_TRUE(
        PlaceLogLine("Send #2 Failed: TO=+4917155501, MSG=secret word (truncated)", a, placed));
    EXPECT_THAT(placed, ::testing::MatchesRegex("Send #2 Failed: TO=\\+[0-9]{10}, MSG=[a-z]{6} "
                                                "[a-z]{4} \\(truncated\\)"));
    EXPECT_THAT(placed, Not(HasSubstr("secret")));
    EXPECT_FALSE(PlaceLogLine("DEBUG: secret", a, placed));
}

TEST(PlaceSpoolName, KeepsTimesAndReplacesWords) {
    Anonymizer a(kKey);
    EXPECT_EQ(PlaceSpoolName("sms_msg20260314-091502.12", a), "sms_msg20260314-091502.12");
    EXPECT_EQ(PlaceSpoolName("1773479700.000412.811.1", a), "1773479700.000412.811.1");
    EXPECT_NE(PlaceSpoolName("15551234567", a), "15551234567");
    EXPECT_THAT(PlaceSpoolName("alice.20260314-091502", a),
                ::testing::MatchesRegex("[a-z]{5}\\.20260314-091502"));
}

}  // namespace
}  // namespace modemctl
