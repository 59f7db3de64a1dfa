// Clock and files.
#include <fstream>

#include "hazards.h"

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
        world.modem().Answer(row.command, "\r\n" + std::string(row.answer) + "\r\n\r\nOK\r\n");
        world.Start();
        world.RunFor(1min);
        const auto is_set = [&](const std::string& line) { return line.find(row.set) == 0; };
        const Lines shell = world.Shell();
        EXPECT_EQ(std::count_if(shell.begin(), shell.end(), is_set), 1);
        EXPECT_EQ(world.CommandTimes(row.command).size(), 1U);
        world.RunFor(4h - 2min);
        EXPECT_EQ(world.CommandTimes(row.command).size(), 1U);
        world.RunFor(4min);
        EXPECT_EQ(world.CommandTimes(row.command).size(), 2U);
    }
}

TEST(ClockHazard, AClockSetFarForwardDeletesTheMessagesThatWait) {
    World world("-881");
    world.modem().Answer("AT+CCLK?", "\r\n+CCLK: \"80/01/06,00:01:12+00\"\r\n\r\nOK\r\n");
    world.OnShell("/bin/date", [&world](const std::string&) {
        world.JumpClock(54 * 365 * 24h);
        return 0;
    });
    world.WriteFile("/tmp/sms/recv/unread", "FROM=1\nTIME=\nMSG=Hello\n");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(world.CountLog("Deleting SMS file '/tmp/sms/recv/unread', older than 1440 minutes."),
              1U);
    EXPECT_FALSE(World::Exists("/tmp/sms/recv/unread"));
}

// As in an image whose files are all stamped with the beginning of 1970.
TEST(FileHazard, AConfigurationFileOfTimeNoughtIsNeverRead) {
    World world("-E362");
    world.WriteFile(kPpp, "CM_ENABLE_INTERFACE=no\n");
    world.WriteFile(kProvisioning, "DEBUG_MODE=1\n");
    for (const char* path : {kPpp, kProvisioning}) {
        world.SetAge(path, std::chrono::seconds(world.WallSeconds()));
    }
    world.Start();
    world.RunFor(10min);
    world.ExpectNoLog("Config option");
    world.ExpectNoLog("DEBUG_MODE set to");
    world.Touch(kPpp);
    world.Touch(kProvisioning);
    world.RunFor(1min);
    world.ExpectLogInOrder({"Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled",
                            "DEBUG_MODE set to 1"});
}

TEST(FileHazard, AFullFileSystemLeavesEmptyStatusFilesUntilThereIsRoom) {
    World world("-E362");
    world.MountSmall("/var/log", 1 << 16);
    std::ofstream("/var/log/filler") << std::string(1 << 16, 'x');
    world.Start();
    world.RunFor(1min);
    for (const char* name : {"wireless.cardstats", "wireless.serialno", "lightbar"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(World::Exists(std::string("/var/log/") + name));
        EXPECT_EQ(World::File(std::string("/var/log/") + name), "");
    }
    world.ExpectNoLog("space");
    World::RemoveFile("/var/log/filler");
    world.RunFor(1min);
    EXPECT_EQ(Published("CELLMODEM_MODEL"), "E362");
}

// Of a last line without a line end the last character is read twice: "noo" is not "no".
TEST(FileHazard, ALastLineWithoutALineEndDoesNotDisableTheInterface) {
    World world("-E362");
    world.WriteFile(kPpp, "CM_ENABLE_INTERFACE=no");
    world.Start();
    world.RunFor(1min);
    EXPECT_EQ(world.CountLog("Config option CM_ENABLE_INTERFACE is 'noo'"), 1U);
    EXPECT_GE(world.CommandsMatching("AT$NWQMICONNECT").size(), 1U);
}

}  // namespace
