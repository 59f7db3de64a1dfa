// The port, its faults, and what the modem says.

#include <cerrno>

#include "selftest/sample_world.h"

using namespace rig;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::StartsWith;

namespace {

using Lines = std::vector<std::string>;

constexpr char kAnswer[] = "\r\n+CSQ: 17,99\r\n";  // 15 bytes

// The lines that the talker logs in its first second.
Lines FirstSecond(World& world) {
    world.Start();
    world.RunFor(1s);
    return world.trace.Log();
}

}  // namespace

TEST(Port, AnswersBecomeReadableAtTheirTime) {
    SampleWorld world("talker");
    world.modem.Script([](const std::string&) { return kAnswer; });
    EXPECT_THAT(FirstSecond(world), ElementsAre("open 0", "wrote 6", "wrote 1", "waiting 0",
                                                "waiting 0", "waiting 15", "read 15", "waiting 0"));
    EXPECT_THAT(world.trace.Commands(), ElementsAre("AT+CSQ"));
    EXPECT_THAT(world.trace.Writes(), ElementsAre("AT+CSQ", "\r"));
    EXPECT_THAT(world.trace.Texts(Kind::kAnswer), ElementsAre(kAnswer));
}

TEST(Port, AReadTakesNoMoreThanItsSize) {
    SampleWorld world("talker");
    world.modem.Script([](const std::string&) { return std::string(20, 'x'); });
    const Lines log = FirstSecond(world);
    EXPECT_THAT(log, Contains("waiting 20"));
    EXPECT_THAT(log, Contains("read 15"));
    EXPECT_EQ(log.back(), "waiting 5");
}

TEST(Port, AReceiverWithoutRoomLosesWhatComes) {
    SampleWorld world("talker");
    world.port.SetRoom(10);
    world.modem.Script([](const std::string&) { return kAnswer; });
    EXPECT_THAT(FirstSecond(world), ElementsAre("open 0", "wrote 6", "wrote 1", "waiting 0",
                                                "waiting 0", "waiting 10", "read 10", "waiting 0"));
}

TEST(Port, TheSimulatedModemAnswersAndEchoes) {
    SampleWorld world("talker");
    const Lines log = FirstSecond(world);
    EXPECT_THAT(log, Contains("waiting 7")) << "the echo comes at once";
    EXPECT_THAT(world.modem.Sim().Heard(), ::testing::SizeIs(1));
}

TEST(Port, ACommandThatTheModemDoesNotKnowFailsTheTest) {
    EXPECT_NONFATAL_FAILURE(
        {
            SampleWorld world("talker");
            world.modem.Sim().Receive("AT+NOSUCHCOMMAND\r", 0);
            world.Start();
            world.RunFor(100ms);
        },
        "NOSUCHCOMMAND");
    SampleWorld world("talker");
    world.modem.AllowUnknownCommands();
    world.modem.Sim().Receive("AT+NOSUCHCOMMAND\r", 0);
    EXPECT_EQ(FirstSecond(world).front(), "open 0");
}

TEST(Port, FloodsArriveWhole) {
    SampleWorld world("drain");
    std::string flood;
    for (int i = 0; i < 1000000; ++i) flood += static_cast<char>(i % 251);
    for (int round = 0; round < 40; ++round) {
        world.clock.At(1500ms + 1s * round, [&] { world.modem.Say(flood); });
    }
    world.Start();
    world.RunFor(45s);
    EXPECT_EQ(world.trace.CountLog("waiting 1000000"), 40U);
    EXPECT_EQ(world.trace.CountLog("drained 1000000"), 40U);
}

TEST(Port, BytesForAClosedPortAreLost) {
    SampleWorld world("opener");
    world.modem.Script([](const std::string&) { return "late"; }, 1s);
    world.Start();
    world.RunFor(25s);
    EXPECT_EQ(world.trace.CountLog("waiting 0"), 3U);
}

TEST(Port, SettingsAreKeptAndSeen) {
    SampleWorld world("settings");
    world.Start();
    EXPECT_EQ(world.RunToExit(1s), 0);
    EXPECT_THAT(world.trace.Log(), ElementsAre("echo 1", "write -1 9"));
    EXPECT_EQ(world.port.Settings().c_lflag & 010, 0);
    EXPECT_EQ(world.trace.Of(Kind::kSettings).size(), 1U);
    EXPECT_EQ(world.trace.Of(Kind::kClose).size(), 1U);
}

TEST(PortFaults, WritesFailAsOftenAsSaid) {
    SampleWorld world("talker");
    world.port.FailWrites(EIO, 3);
    const Lines log = FirstSecond(world);
    EXPECT_EQ(world.trace.CountLog("wrote -1 5"), 2U);
    world.RunFor(1s);
    EXPECT_EQ(world.trace.CountLog("wrote -1 5"), 3U);
    EXPECT_EQ(world.trace.CountLog("wrote 1"), 1U);
    EXPECT_EQ(world.trace.Of(Kind::kWriteFailed).size(), 3U);
}

TEST(PortFaults, FionreadFails) {
    SampleWorld world("talker");
    world.port.FailWaiting(ENODEV, 2);
    FirstSecond(world);
    EXPECT_EQ(world.trace.CountLog("waiting fails 19"), 2U);
}

TEST(PortFaults, AReadFailsAfterFionreadSaidThatBytesWait) {
    SampleWorld world("talker");
    world.modem.Script([](const std::string&) { return kAnswer; });
    world.port.FailReads(EIO);
    EXPECT_THAT(FirstSecond(world), Contains("read -1 5"));
    EXPECT_EQ(world.trace.CountLog("waiting 15"), 2U) << "the bytes are still there";
    world.port.Repair();
    world.RunFor(1s);
    EXPECT_EQ(world.trace.CountLog("read 15"), 1U);
}

TEST(PortFaults, TheDeviceIsMissingAndAppears) {
    SampleWorld world("opener");
    world.port.RemoveDevice();
    world.clock.At(15s, [&] { world.port.AddDevice(); });
    world.Start();
    world.RunFor(25s);
    const Lines log = world.trace.Log();
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(log[0], "open -1 2");
    EXPECT_EQ(log[1], "open -1 2");
    EXPECT_EQ(log[2], "open 0");
}

TEST(PortFaults, APluggedOutPortIsDeadUntilItIsOpenedAgain) {
    SampleWorld world("talker");
    world.Start();
    world.RunFor(1500ms);
    world.port.Unplug();
    world.trace.Clear();
    world.RunFor(5s);
    EXPECT_GT(world.trace.CountLog("wrote -1 5"), 5U);
    EXPECT_GT(world.trace.CountLog("waiting fails 5"), 5U);
    EXPECT_GT(world.trace.CountLog("read 0"), 2U);
    world.port.AddDevice();
    world.trace.Clear();
    world.RunFor(5s);
    EXPECT_EQ(world.trace.CountLog("wrote 6"), 0U);
}
