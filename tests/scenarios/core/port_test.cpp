// A port that is missing, comes late, or dies.
#include <gmock/gmock.h>

#include <termios.h>

#include <cerrno>
#include <string>
#include <vector>

#include "rig/card_options.h"
#include "rig/world.h"

namespace {

using namespace std::chrono_literals;
using rig::Files;
using rig::Kind;
using rig::World;
using Lines = std::vector<std::string>;
using Times = std::vector<rig::Micros>;

constexpr char kReset[] = "ResetPCMCIA now &> /dev/null &";

// Empty when there is none.
std::string LastOf(const Lines& lines) {
    return lines.empty() ? "" : lines.back();
}

Times OpenTimes(const World& world) {
    Times times;
    for (const rig::Event& event : world.trace.Of(Kind::kOpen)) times.push_back(event.at);
    return times;
}

class UnopenedPort : public ::testing::TestWithParam<std::string> {};

TEST_P(UnopenedPort, IsTriedFiveTimesThenTheModemIsReset) {
    World world(GetParam());
    world.port.RemoveDevice();
    world.Start();
    EXPECT_EQ(world.RunToExit(60s), 255);
    EXPECT_EQ(OpenTimes(world), (Times{0, 10000000, 20000000, 30000000, 40000000}));
    for (int attempt = 1; attempt <= 5; ++attempt) {
        EXPECT_EQ(world.trace.CountLog("Unable to open port /dev/ttyUSB0, attempt " +
                                       std::to_string(attempt) + "/5"),
                  1u);
    }
    const Lines log = world.trace.Log();
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log[log.size() - 2], "Failed to open port 5 times, exiting");
    EXPECT_EQ(LastOf(log), "Resetting device");
    EXPECT_EQ(LastOf(world.trace.Shell()), kReset);
    EXPECT_EQ(world.clock.Now(), 40s);
}

INSTANTIATE_TEST_SUITE_P(Cards, UnopenedPort, ::testing::ValuesIn(rig::EveryCardOption()));

TEST(Port, ThatAppearsLateIsTakenAtTheNextTry) {
    World world;
    world.port.RemoveDevice();
    world.clock.At(25s, [&] { world.port.AddDevice(); });
    world.Start();
    world.RunFor(80s);
    EXPECT_EQ(OpenTimes(world), (Times{0, 10000000, 20000000, 30000000}));
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_EQ(world.trace.CountLog("Failed to open port 5 times, exiting"), 0u);
    EXPECT_EQ(Files::Read("/var/log/lightbar"), "+CSQ: 17,99\n");
}

TEST(Port, ASignalDuringThePauseBetweenTwoTriesEndsTheWaiting) {
    World world("-E362");
    world.port.RemoveDevice();
    world.Start();
    world.RunFor(14s);
    world.daemon.Signal(SIGTERM);
    EXPECT_EQ(world.RunToExit(30s), 0);
    // The pause is cut short, the try is made, and the next pass sees the flag.
    EXPECT_EQ(OpenTimes(world), (Times{0, 10000000, 14000000}));
    EXPECT_EQ(LastOf(world.trace.Log()), "exit");
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 0u);
}

TEST(Port, APathOfMoreThanEightyCharactersIsCut) {
    const std::string path = "/dev/" + std::string(75, 'p');
    World world(rig::Exactly{{path + "-and-more"}});
    world.port.RemoveDevice();
    world.Start();
    world.RunFor(5s);
    EXPECT_EQ(world.trace.Texts(Kind::kOpen), Lines{path});
    EXPECT_EQ(world.trace.CountLog("Unable to open port " + path + ", attempt 1/5"), 1u);
}

TEST(Port, IsMadeRawAndGetsASpeedOnTheMc75iOnly) {
    for (const std::string& card : rig::EveryCardOption()) {
        SCOPED_TRACE(card);
        World world(card);
        termio& line = world.port.Settings();
        line.c_iflag = 0xffff & ~IGNBRK;
        line.c_oflag = 0xffff;
        line.c_lflag = 0xffff;
        line.c_cflag = 0xefff;  // all but the bit for high speeds
        world.Start();
        world.RunFor(1s);
        const termio now = world.port.Settings();
        EXPECT_EQ(now.c_iflag, 0xffff & ~(BRKINT | IGNPAR | PARMRK | INPCK | ISTRIP | INLCR |
                                          IGNCR | ICRNL | IXON | IXOFF | IXANY | IUCLC));
        EXPECT_EQ(now.c_oflag, 0xffff & ~OPOST);
        EXPECT_EQ(now.c_lflag, 0xffff & ~(ICANON | ECHO | ECHOE | ISIG));
        const int speed = card == "-mc75i" ? B115200 : B0;
        EXPECT_EQ(now.c_cflag, (0xef00 & ~PARENB) | CLOCAL | CREAD | CS8 | speed);
    }
}

TEST(Port, ALineWithoutASingleFlagGetsAllThatItNeeds) {
    World world("-881");
    world.port.Settings() = {};
    world.port.Settings().c_cc[VMIN] = world.port.Settings().c_cc[VTIME] = 9;
    world.Start();
    world.RunFor(1s);
    const termio now = world.port.Settings();
    EXPECT_EQ(now.c_iflag, IGNBRK);
    EXPECT_EQ(now.c_oflag, 0);
    EXPECT_EQ(now.c_lflag, 0);
    EXPECT_EQ(now.c_cflag, CLOCAL | CREAD | CS8);
    EXPECT_EQ(now.c_cc[VMIN], 0);
    EXPECT_EQ(now.c_cc[VTIME], 0);
}

TEST(Port, TwentySixFailedWritesInARowResetTheModemAndEndTheProcess) {
    World world;
    world.files.Write("/var/log/wireless.kept", "x");
    world.clock.At(30s, [&] { world.port.FailWrites(EIO, 26); });
    world.Start();
    EXPECT_EQ(world.RunToExit(600s), 255);
    EXPECT_EQ(world.trace.Of(Kind::kWriteFailed).size(), 26u);
    const Lines log = world.trace.Log();
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log[log.size() - 2], "Port error counter above 25, resetting modem");
    EXPECT_EQ(LastOf(log), "Resetting device");
    EXPECT_EQ(LastOf(world.trace.Shell()), kReset);
    // No clean-up on this way out.
    EXPECT_TRUE(Files::Exists("/var/log/wireless.cardstats"));
    EXPECT_TRUE(Files::Exists("/var/log/wireless.kept"));
    EXPECT_EQ(world.trace.CountLog("doing cleanup and exiting"), 0u);
}

TEST(Port, ThePassThatGivesUpReadsNoConfiguration) {
    World world;
    world.clock.At(30s, [&] { world.port.FailWrites(EIO); });
    world.clock.Every(1s, [&] {  // so that each pass finds it changed
        world.files.Write("/etc/kvt/wireless/cellmodem_ppp.conf", "CM_ENABLE_INTERFACE=yes\n");
    });
    world.Start();
    EXPECT_EQ(world.RunToExit(600s), 255);
    const auto read = world.trace.LogTimes("Config option CM_ENABLE_INTERFACE is 'yes'");
    const auto ends = world.trace.LogTimes("Port error counter above 25, resetting modem");
    ASSERT_GT(read.size(), 10u);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_LT(read.back(), ends.back());
}

TEST(Port, TwentyFiveFailedWritesAreForgiven) {
    World world;
    world.clock.At(30s, [&] { world.port.FailWrites(EIO, 25); });
    world.clock.At(300s, [&] { world.port.FailWrites(EIO, 25); });
    world.Start();
    world.RunFor(600s);
    EXPECT_EQ(world.trace.Of(Kind::kWriteFailed).size(), 50u);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_EQ(world.trace.CountLog("Port error counter above 25, resetting modem"), 0u);
}

TEST(Port, ADriverThatNeverSaysWhatWaitsIsASilentModem) {
    World world("-d -d");
    world.port.FailWaiting(EIO);
    world.Start();
    world.RunFor(30s);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_GT(world.trace.CountLog("No Response from device"), 5u);
    EXPECT_GT(world.trace.CountLog("read 0 bytes from port"), 2u);
    EXPECT_FALSE(Files::Exists("/var/log/lightbar"));
}

TEST(Port, AReadThatFailsIsAReadThatFoundNothing) {
    World world("-d");
    world.clock.At(20s, [&] { world.port.FailReads(EIO); });
    world.Start();
    world.RunFor(60s);
    EXPECT_TRUE(world.daemon.Running());
    EXPECT_GT(world.trace.CountLog("read 0 bytes from port"), 5u);
    EXPECT_EQ(world.trace.CountLog("unknown message command response"), 0u);
}

}  // namespace
