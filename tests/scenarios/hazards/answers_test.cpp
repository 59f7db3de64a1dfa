// What a modem says late, unasked or not at all, and what is published of it.
#include "hazards.h"

using rig::Files;
using rig::World;
using ::testing::Contains;

namespace {

// The directory number comes 20 ms behind its time, into the query for the serial number, which is
// content with any long line of digits and is not asked again once it has one.
TEST(AnswerHazard, AnAnswerLaterThanSeventyMillisecondsIsTakenForTheNextQuerys) {
    World world("-E362");
    world.modem.Answer("AT$NWMDN", "\r\n2015550136\r\n\r\nOK\r\n", 70ms);
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(Published("CELLMODEM_ESN"), "2015550136");
    EXPECT_EQ(Published("CELLMODEM_MDN"), "Unknown");
}

TEST(AnswerHazard, AnAnswerWithinSeventyMillisecondsIsItsOwn) {
    World world("-E362");
    world.modem.Answer("AT$NWMDN", "\r\n2015550136\r\n\r\nOK\r\n", 45ms);
    world.Start();
    world.RunFor(2min);
    EXPECT_EQ(Published("CELLMODEM_ESN"), "001017036200015");
    EXPECT_EQ(Published("CELLMODEM_MDN"), "2015550136");
}

// The daemon itself switches these lines on.
TEST(AnswerHazard, AnUnaskedRegistrationLineIsTakenForTheServiceType) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    EXPECT_THAT(world.trace.Commands(), Contains("AT+CREG=2"));
    ASSERT_EQ(Published("CELLMODEM_SERVICE_TYPE"), "LTE");
    world.trace.Clear();
    ASSERT_TRUE(world.RunUntilCommand("AT$NWSYSMODE", 1min));
    world.modem.Say("\r\n+CREG: 1,\"1A2B\",\"01C3D401\"\r\n");
    world.RunFor(30s);
    world.trace.ExpectLogInOrder(
        {"Service Type changed from 'LTE' to '+CREG: 1,\"1A2B\",\"01C3D401\"'",
         "Starting/Signaling udhcpc",
         "Service Type changed from '+CREG: 1,\"1A2B\",\"01C3D401\"' to 'LTE'",
         "Starting/Signaling udhcpc"});
}

// Neither the call nor the modem is looked after; only the age of the files tells.
TEST(AnswerHazard, AMuteModemIsNeverReset) {
    World world("-E362");
    world.Start();
    world.RunFor(1min);
    world.modem.Control("silence 30d");
    world.RunFor(10s);
    const std::string before = Files::Read(kStatistics);
    world.RunFor(24h);
    EXPECT_EQ(world.trace.CountLog(kReset), 0U);
    EXPECT_EQ(Files::Read(kStatistics), before);
    EXPECT_TRUE(world.daemon.Running());
}

struct SignalRow {
    const char* card;
    const char* service;
    const char* rssi;
    const char* csq;
};

// Without a level in the answer: no service on the 881 and the E362; on the E371 always, because
// it says "LTE PS" where "LTE" is looked for.
TEST(SignalHazard, AnEmptyLevelIsShownAsFullSignal) {
    for (const SignalRow& row :
         {SignalRow{"-881", "none", "0", "31"}, SignalRow{"-E362", "none", "0", "31"},
          SignalRow{"-E371", "lte", "0", "31"}}) {
        SCOPED_TRACE(row.card);
        World world(row.card);
        world.modem.Control(std::string("service ") + row.service);
        world.Start();
        world.RunFor(1min);
        EXPECT_EQ(Published("CELLMODEM_CURRENT_RSSI"), row.rssi);
        EXPECT_EQ(Published("CELLMODEM_CURRENT_CSQ"), row.csq);
    }
}

TEST(SignalHazard, AnUnknownSignalIsShownAsMinus99) {
    World world;
    world.modem.Answer("AT+CSQ", "\r\n+CSQ: 99,99\r\n\r\nOK\r\n");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(Published("CELLMODEM_CURRENT_RSSI"), "-99");
    EXPECT_EQ(Published("CELLMODEM_CURRENT_CSQ"), "99");
    EXPECT_EQ(Files::Read("/var/log/lightbar"), "+CSQ: 99,99\n");
}

}  // namespace
