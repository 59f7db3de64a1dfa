// Send files: sent, retried, given up.
#include <sys/stat.h>

#include "sms_world.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = std::vector<std::string>;

namespace {

constexpr char kCommand[] = "AT+CMGS=\"+15551234567\"";
constexpr char kNetworkFault[] = "CMS error #38: Network out of order";

}  // namespace

TEST(SendFile, IsSentAndDeleted) {
    SmsWorld world;
    world.Drop("pump", "TO=+1 555 123 4567\nMSG=The pump has stopped.\n");
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("pump", 60s));
    ASSERT_EQ(world.Sent(), Lines{"The pump has stopped.\n\n"});
    EXPECT_EQ(world.modem.Sim().SentMessages()[0].to, "+15551234567");
    world.RunFor(1s);
    world.trace.ExpectLogInOrder({"Reading SMS File /tmp/sms/send/pump",
                                  "Send Success: TO=+15551234567, MSG=The pump has stopped.\n\n"});
    EXPECT_THAT(world.trace.CommandsMatching("AT+CMGD"), ElementsAre(kDeleteRead, "AT+CMGD=0,2"));
}

TEST(SendFile, MovesToSendFailAtTheThirdFailure) {
    SmsWorld world;
    world.LetTheModemRefuse();
    world.Drop("msg");
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("msg", 5min));
    const std::string stamp = world.Stamp();
    EXPECT_EQ(world.files.List("/tmp/sms/send_fail"), Lines{"msg." + stamp});
    EXPECT_EQ(world.files.Read(kFail + ("msg." + stamp)), "TO=+15551234567\nMSG=Hello\n");
    world.RunFor(1s);
    world.trace.ExpectLogInOrder(
        {"Send #1 Failed: TO=+15551234567, MSG=Hello\n\n (truncated)",
         "Send #2 Failed: TO=+15551234567, MSG=Hello\n\n (truncated)", kNetworkFault,
         "Send #3 Failed : TO=+15551234567, MSG=Hello\n\n (truncated)",
         "Max send attempt, moving file to /tmp/sms/send_fail//msg." + stamp});
    EXPECT_THAT(world.trace.Shell(),
                Contains("mv -f /tmp/sms/send/msg /tmp/sms/send_fail/msg." + stamp));
    const auto times = world.trace.CommandTimes(kCommand);
    ASSERT_THAT(times, SizeIs(3));
    EXPECT_GE(times[1] - times[0], 30s);
    EXPECT_GE(times[2] - times[1], 30s);
    EXPECT_THAT(world.Sent(), IsEmpty());
}

// Guards oddity no-number-is-tried.
TEST(SendFile, WithoutANumberEndsInSendFail) {
    SmsWorld world;
    world.Drop("msg", "MSG=Hello\n");
    world.Start();
    EXPECT_TRUE(world.RunUntilGone("msg", 5min));
    EXPECT_EQ(
        world.trace.CountLog("SMS send file /tmp/sms/send/msg is invalid, does not contain a 'TO' "
                             "field."),
        3u);
    EXPECT_EQ(world.trace.CommandsMatching("AT+CMGS="), Lines(3, "AT+CMGS=\"\""));
    EXPECT_THAT(world.files.List("/tmp/sms/send_fail"), SizeIs(1));
}

TEST(SendFile, WaitsForTextModeAndIsThrownAwayAfterADay) {
    SmsWorld world("-E362");
    world.Drop("msg");
    world.Start();
    world.RunFor(5min);
    EXPECT_FALSE(world.IsGone("msg"));
    world.files.SetAge("/tmp/sms/send/msg", 86400s - 20min);
    world.trace.Clear();
    world.RunFor(19min);
    EXPECT_FALSE(world.IsGone("msg"));
    world.RunFor(20min);
    EXPECT_TRUE(world.IsGone("msg"));
    EXPECT_EQ(
        world.trace.CountLog("Deleting SMS file '/tmp/sms/send/msg', older than 1440 minutes."),
        1u);
    EXPECT_THAT(world.trace.CommandsMatching("AT+CMGS"), IsEmpty());
}

// No error was seen, so the file counts as sent: what the other side must know, see docs/sms.md.
TEST(SendFile, IsTakenForSentWhenTheModemIsUnpluggedInTheMiddleOfTheBody) {
    SmsWorld world;
    world.Drop("msg");
    world.Start();
    EXPECT_TRUE(world.RunUntil(
        [&] {
            const auto& events = world.trace.Events();
            return !events.empty() && events.back().kind == rig::Kind::kWrite &&
                   events.back().text == "Hello\n\n\x1a";
        },
        60s));
    world.port.Unplug();
    EXPECT_EQ(world.RunToExit(10min), 255);
    EXPECT_EQ(world.trace.CountLogContaining("Send Success"), 1u);
    EXPECT_EQ(world.trace.CountLog("Port error counter above 25, resetting modem"), 1u);
    EXPECT_TRUE(world.IsGone("msg"));
}
