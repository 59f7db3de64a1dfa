// Messages that arrive: from the modem's store to files, with nothing lost that need not be.
#include "sms_world.h"

using ::testing::IsEmpty;
using ::testing::SizeIs;
using Lines = std::vector<std::string>;

TEST(ReceivedSms, BecomesAFileAndLeavesTheModem) {
    SmsWorld world;
    world.Arrive("+15551234567", "Hello");
    world.Start();
    EXPECT_TRUE(world.RunUntilLog("Modem supports CMGF SMS", 30s));
    EXPECT_TRUE(world.RunUntilCommand(kDeleteRead, 60s));
    const std::string stamp = world.Stamp();
    world.RunFor(5s);
    EXPECT_EQ(world.files.List("/tmp/sms/recv"), Lines{"sms_msg" + stamp + ".1"});
    ASSERT_THAT(SmsWorld::Received(), SizeIs(1));
    const std::string file = SmsWorld::Received()[0];
    EXPECT_EQ(file.substr(0, 22), "FROM=15551234567\nTIME=");
    EXPECT_EQ(file.substr(file.size() - 11), "\nMSG=Hello\n");
    EXPECT_EQ(world.modem.Sim().GetState().sms.Used(), 0);
}

// 09:15 UTC is 05:15 on a summer's morning in New York, and 15:00 in Kathmandu.
TEST(ReceivedSms, IsNamedByTheTimeOfTheRoutersZone) {
    struct Row {
        const char* zone;
        const char* hour;
    };
    for (const Row& row : {Row{"EST5EDT,M3.2.0,M11.1.0", "05:1"}, Row{"NPT-5:45", "15:0"}}) {
        SCOPED_TRACE(row.zone);
        SmsWorld world;
        world.daemon.SetEnvironment("TZ", row.zone);
        world.Arrive("+15551234567", "Hello");
        world.Start();
        world.RunFor(90s);
        const Lines received = world.files.List("/tmp/sms/recv");
        ASSERT_THAT(received, SizeIs(1));
        std::string hour = row.hour;
        EXPECT_THAT(rig::Files::Read("/var/log/wireless.cardstats"),
                    ::testing::StartsWith("#File generated 2026-03-14 " + hour));
        hour.erase(hour.find(':'), 1);
        EXPECT_THAT(received[0], ::testing::StartsWith("sms_msg20260314-" + hour));
    }
}

TEST(ReceivedSms, OneThatArrivesWhileTheListIsWrittenOutIsNotDeletedUnread) {
    SmsWorld world;
    world.Arrive("+15551234567", "early");
    world.Start();
    EXPECT_TRUE(world.RunUntilCommand(kListUnread, 60s));
    world.RunFor(1s);
    world.Arrive("+15551234567", "late");
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CountLogContaining("Message: early\n"), 1u);
    EXPECT_EQ(world.trace.CountLogContaining("Message: late\n"), 1u);
}

TEST(ReceivedSms, IsLeftAloneWhenTextModeIsRefused) {
    SmsWorld world;
    world.modem.Answer("AT+CMGF=1", "\r\nERROR\r\n");
    world.Start();
    world.RunFor(60s);
    EXPECT_EQ(world.trace.CountLog("Modem does not support CMGF SMS"), 1u);
    EXPECT_THAT(world.trace.CommandsMatching("AT+CMGF"), SizeIs(1));
    EXPECT_THAT(world.trace.CommandsMatching("AT+CMGL"), IsEmpty());
}
