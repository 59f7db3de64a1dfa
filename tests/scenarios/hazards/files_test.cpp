// Clock and files.
#include <fstream>

#include "hazards.h"

using rig::Files;
using rig::World;

namespace {

struct ClockRow {
    const char* card;
    const char* command;
    const char* answer;
    const char* set;
};

// Until the network has told it the time, a modem counts from the GPS epoch.
TEST(ClockHazard, AModemWithoutNetworkTimeSetsTheClockTo2080ForFourHours) {
    for (const ClockRow& row : {ClockRow{"-881", "AT+CCLK?", "+CCLK: \"80/01/06,00:01:12+00\"",
                                         "/bin/date  -u   -s \"0:1:12 1/6/2080\""},
                                ClockRow{"-E371", "AT$CCLK?", "$CCLK: \"80/01/06,00:01:12+00\"",
                                         "/bin/date   -s \"0:1:12 1/6/2080\""}}) {
        SCOPED_TRACE(row.card);
        World world(row.card);
        world.modem.Answer(row.command, "\r\n" + std::string(row.answer) + "\r\n\r\nOK\r\n");
        world.Start();
        world.RunFor(1min);
        const auto is_set = [&](const std::string& line) { return line.find(row.set) == 0; };
        const Lines shell = world.trace.Shell();
        EXPECT_EQ(std::count_if(shell.begin(), shell.end(), is_set), 1);
        EXPECT_EQ(world.trace.CommandTimes(row.command).size(), 1U);
        world.RunFor(4h - 2min);
        EXPECT_EQ(world.trace.CommandTimes(row.command).size(), 1U);
        world.RunFor(4min);
        EXPECT_EQ(world.trace.CommandTimes(row.command).size(), 2U);
    }
}

TEST(ClockHazard, AClockSetFarForwardDeletesTheMessagesThatWait) {
    World world("-881");
    world.modem.Answer("AT+CCLK?", "\r\n+CCLK: \"80/01/06,00:01:12+00\"\r\n\r\nOK\r\n");
    world.router.OnShell("/bin/date", [&world](const std::string&) {
        world.clock.Jump(54 * 365 * 24h);
        return 0;
    });
    world.files.Write("/tmp/sms/recv/unread", "FROM=1\nTIME=\nMSG=Hello\n");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(
        world.trace.CountLog("Deleting SMS file '/tmp/sms/recv/unread', older than 1440 minutes."),
        1U);
    EXPECT_FALSE(Files::Exists("/tmp/sms/recv/unread"));
}

// As in an image whose files are all stamped with the beginning of 1970.
TEST(FileHazard, AConfigurationFileOfTimeNoughtIsNeverRead) {
    World world("-E362");
    world.files.Write(kPpp, "CM_ENABLE_INTERFACE=no\n");
    world.files.Write(kProvisioning, "DEBUG_MODE=1\n");
    for (const char* path : {kPpp, kProvisioning}) {
        world.files.SetAge(path, std::chrono::seconds(world.clock.WallSeconds()));
    }
    world.Start();
    world.RunFor(10min);
    world.trace.ExpectNoLog("Config option");
    world.trace.ExpectNoLog("DEBUG_MODE set to");
    world.files.Touch(kPpp);
    world.files.Touch(kProvisioning);
    world.RunFor(1min);
    world.trace.ExpectLogInOrder(
        {"Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled",
         "DEBUG_MODE set to 1"});
}

TEST(FileHazard, AFullFileSystemLeavesEmptyStatusFilesUntilThereIsRoom) {
    World world("-E362");
    world.files.MountSmall("/var/log", 1 << 16);
    std::ofstream("/var/log/filler") << std::string(1 << 16, 'x');
    world.Start();
    world.RunFor(1min);
    for (const char* name : {"wireless.cardstats", "wireless.serialno", "lightbar"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Files::Exists(std::string("/var/log/") + name));
        EXPECT_EQ(Files::Read(std::string("/var/log/") + name), "");
    }
    world.trace.ExpectNoLog("space");
    Files::Remove("/var/log/filler");
    world.RunFor(1min);
    EXPECT_EQ(Published("CELLMODEM_MODEL"), "E362");
}

// Of a last line without a line end the last character is read twice: "noo" is not "no".
TEST(FileHazard, ALastLineWithoutALineEndDoesNotDisableTheInterface) {
    World world("-E362");
    world.files.Write(kPpp, "CM_ENABLE_INTERFACE=no");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(world.trace.CountLog("Config option CM_ENABLE_INTERFACE is 'noo'"), 1U);
    EXPECT_GE(world.trace.CommandsMatching("AT$NWQMICONNECT").size(), 1U);
}

}  // namespace
