// Messages that count as sent, or as something else than a message.
#include "hazards.h"

using rig::Files;
using rig::World;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr char kSendFile[] = "/tmp/sms/send/msg";
constexpr char kPrompted[] = "AT+CMGS=\"+15551234567\"";
constexpr char kListing[] = "AT+CMGL=\"REC UNREAD\"";
constexpr char kSuccess[] = "Send Success: TO=+15551234567, MSG=Hello\n\n";

class SendingHazard : public testing::Test {
  protected:
    void Drop(const std::string& message) {
        world_.files.Write(kSendFile, "TO=+15551234567\nMSG=" + message + "\n");
    }
    bool RunUntilGone() {
        return world_.RunUntil([] { return !Files::Exists(kSendFile); }, 2min);
    }

    World world_{"-881"};
};

TEST_F(SendingHazard, AMuteModemCountsAsSuccess) {
    world_.Start();
    ASSERT_TRUE(world_.RunUntilLog("Modem supports CMGF SMS", 30s));
    world_.modem.Control("silence 1h");
    Drop("Hello");
    EXPECT_TRUE(RunUntilGone());
    EXPECT_EQ(world_.trace.CountLog(kSuccess), 1U);
    EXPECT_THAT(world_.modem.Sim().SentMessages(), IsEmpty());
    EXPECT_THAT(Files::List("/tmp/sms/send_fail"), IsEmpty());
}

// From the listing on, which is the command before, so that the 26 failed writes that end the
// daemon have not been reached yet.
TEST_F(SendingHazard, APortThatTakesNothingCountsAsSuccess) {
    world_.Start();
    Drop("Hello");
    ASSERT_TRUE(world_.RunUntilCommand(kListing, 1min));
    world_.port.FailWrites(EAGAIN);
    EXPECT_TRUE(RunUntilGone());
    EXPECT_EQ(world_.trace.CountLog(kSuccess), 1U);
    EXPECT_THAT(world_.modem.Sim().SentMessages(), IsEmpty());
    EXPECT_THAT(Files::List("/tmp/sms/send_fail"), IsEmpty());
    EXPECT_EQ(world_.RunToExit(10min), 255);
}

// A modem that has lost its text mode gives no prompt and no error that begins in time.
TEST_F(SendingHazard, WithoutAPromptATextIsACommand) {
    world_.modem.Answer(kPrompted, "");
    Drop("AT+CFUN=4\r");
    world_.Start();
    EXPECT_TRUE(RunUntilGone());
    EXPECT_THAT(world_.trace.Commands(), Contains("AT+CFUN=4"));
    EXPECT_EQ(world_.trace.CountLogContaining("Send Success"), 1U);
}

TEST_F(SendingHazard, BehindACtrlZATextIsACommand) {
    Drop(
        "Hello\x1a"
        "AT+CFUN=4\r");
    world_.Start();
    EXPECT_TRUE(RunUntilGone());
    world_.RunFor(1s);
    ASSERT_THAT(world_.modem.Sim().SentMessages(), Not(IsEmpty()));
    EXPECT_EQ(world_.modem.Sim().SentMessages()[0].text, "Hello");
    bool heard = false;
    for (const sim::HeardCommand& command : world_.modem.Sim().Heard()) {
        heard = heard || command.text == "AT+CFUN=4";
    }
    EXPECT_TRUE(heard);
}

// The modem restarts by itself and is in PDU mode then; the port stays what it was.
TEST_F(SendingHazard, TextModeIsAskedForOnceInALife) {
    world_.Start();
    ASSERT_TRUE(world_.RunUntilLog("Modem supports CMGF SMS", 30s));
    world_.modem.Sim().Receive("AT+CMGF=0\r", world_.clock.Now().count());
    world_.modem.Control("sms +15557654321 \"Anybody there?\"");
    Drop("Hello");
    world_.RunFor(1h);
    EXPECT_EQ(world_.trace.CommandsMatching("AT+CMGF").size(), 1U);
    EXPECT_THAT(Files::List("/tmp/sms/recv"), IsEmpty());
    EXPECT_EQ(
        world_.trace.CountLog("Got ERROR (not CMS error) trying to send SMS to '+15551234567'"),
        3U);
    EXPECT_EQ(Files::List("/tmp/sms/send_fail").size(), 1U);
}

// The list is read and then everything that was read is deleted, whether it was understood or not.
TEST_F(SendingHazard, AListingSlowerThanTwoSecondsLosesItsMessages) {
    const std::string listing =
        "\r\n+CMGL: 1,\"REC "
        "UNREAD\",\"+15557654321\",,\"26/03/14,09:15:02-20\"\r\nHello\r\n\r\nOK\r\n";
    world_.modem.AnswerOnce(kListing, listing, 2200ms);
    world_.Start();
    ASSERT_TRUE(world_.RunUntilCommand("AT+CMGD=0,1", 1min));
    world_.RunFor(5min);
    EXPECT_THAT(Files::List("/tmp/sms/recv"), IsEmpty());
    EXPECT_EQ(world_.trace.CountLogContaining("Got SMS from"), 0U);
}

TEST_F(SendingHazard, AListingWithinTwoSecondsArrives) {
    const std::string listing =
        "\r\n+CMGL: 1,\"REC "
        "UNREAD\",\"+15557654321\",,\"26/03/14,09:15:02-20\"\r\nHello\r\n\r\nOK\r\n";
    world_.modem.AnswerOnce(kListing, listing, 1900ms);
    world_.Start();
    ASSERT_TRUE(world_.RunUntilCommand("AT+CMGD=0,1", 1min));
    EXPECT_EQ(Files::List("/tmp/sms/recv").size(), 1U);
}

}  // namespace
