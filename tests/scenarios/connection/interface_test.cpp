// What the configuration file and the network's service do to the data call.
#include <gtest/gtest.h>

#include "carrier.h"

using namespace std::chrono_literals;
using rig::Files;
using rig::World;

namespace {

constexpr char kDisabledLine[] =
    "LTE is connected, but Enable Wan interface in config is disabled.  "
    "Bringing down LTE connection.";

TEST(DisabledInterface, BringsTheCallDownAndKeepsItDown) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    world.RunFor(5min);
    world.trace.Clear();
    world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=no\n");
    world.RunFor(10min);

    const std::string status = std::string("modem: ") + kStatusCommand;
    const std::string touch = std::string("run: touch ") + kNotDialing;
    EXPECT_EQ(From(ConnectionStory(world), "log: Config", 11),
              (Lines{
                  "log: Config option CM_ENABLE_INTERFACE is 'NO', WAN interface is disabled",
                  status,
                  std::string("log: ") + kDisabledLine,
                  "log: Stopping udhcpc on wwan0",
                  std::string("run: ") + kTerminateLine,
                  std::string("run: ") + kUpLine,
                  std::string("modem: ") + kDisconnectCommand,
                  touch,
                  status,
                  touch,
                  status,
              }));
    EXPECT_EQ(world.trace.CountLog(kDisabledLine), 1U);
    EXPECT_EQ(world.trace.CommandTimes(kConnectCommand).size(), 0U);
    EXPECT_FALSE(Files::Exists(kDialing));
    EXPECT_TRUE(Files::Exists(kNotDialing));
    // Never reset, however long it is down.
    EXPECT_EQ(world.trace.CountLog("Resetting device"), 0U);
}

TEST(DisabledInterface, EnabledAgainRestartsTheCall) {
    World world("-E362");
    Carrier carrier(world);
    world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=no\n");
    world.Start();
    world.RunFor(5min);
    EXPECT_TRUE(Files::Exists(kNotDialing));
    world.files.Write(kPppFile, "CM_ENABLE_INTERFACE=yes\n");
    ASSERT_TRUE(world.RunUntilLog(kRestarting, 1min));
    world.RunFor(1min);
    EXPECT_TRUE(Files::Exists(kDialing));
    EXPECT_FALSE(Files::Exists(kNotDialing));
    world.RunFor(10min);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);
}

TEST(Apn, ThatChangesDropsTheCallWhichComesBack) {
    World world("-E371");
    Carrier carrier(world);
    world.files.Write(kPppFile, "CM_APN=first.test\n");
    world.Start();
    world.RunFor(10min);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);

    world.trace.Clear();
    world.files.Write(kPppFile, "CM_APN=second.test\n");
    world.RunFor(10min);
    EXPECT_EQ(
        From(ConnectionStory(world), "log: Setting", 5),
        (Lines{"log: Setting Context 3 APN to 'second.test'",
               "modem: AT+NWAPNE=3,\"second.test\",True,1439,V4,0.0.0.0,0.0.0.0,0:0:0:0:0:0:0:0,"
               "0:0:0:0:0:0:0:0,HRPD_EHRPD",
               "modem: AT+CGDCONT=3,\"ipv4v6\",\"second.test\"",
               std::string("modem: ") + kDisconnectCommand,
               std::string("modem: ") + kStatusCommand}));
    EXPECT_EQ(world.modem.Sim().GetState().contexts.at(3).apn, "second.test");
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);
    EXPECT_EQ(world.trace.CommandTimes(kConnectCommand).size(), 1U);
}

TEST(Service, ThatIsGoneStopsTheChecksAndThenTheCall) {
    World world("-E362");
    Carrier carrier(world);
    world.Start();
    world.RunFor(5min);
    world.trace.Clear();
    world.modem.Answer("AT$NWSYSMODE", "\r\nNo Service\r\n\r\nOK\r\n");
    world.RunFor(10min);
    EXPECT_EQ(world.trace.CountLog("Service Type changed from 'LTE' to 'No Service'"), 1U);
    EXPECT_EQ(world.trace.CountLog("No service after 30 seconds, sending modem a disconnect."), 1U);
    EXPECT_EQ(world.trace.CommandTimes(kDisconnectCommand).size(), 1U);
    EXPECT_EQ(world.trace.CommandTimes(kStatusCommand).size(), 0U);
    EXPECT_EQ(world.trace.CountLog(kRestarting), 0U);
    EXPECT_GT(world.trace.CountLog("Warning: Modem reports bad service : 'No Service'"), 20U);

    world.trace.Clear();
    world.modem.Forget("AT$NWSYSMODE");
    world.RunFor(2min);
    EXPECT_EQ(
        From(ConnectionStory(world), "log: Service", 5),
        (Lines{"log: Service Type changed from 'No Service' to 'LTE'",
               "log: Starting/Signaling udhcpc", std::string("run: ") + kStartLine,
               std::string("modem: ") + kStatusCommand, std::string("run: touch ") + kDialing}));
    EXPECT_EQ(world.trace.CountLog(kRestarting), 1U);
}

TEST(SilentModem, IsNotSupervised) {
    World world("-E362");
    Carrier carrier(world);
    world.modem.Script([](const std::string&) { return std::string(); });
    world.Start();
    world.RunFor(1h);
    EXPECT_TRUE(world.trace.CommandsMatching("AT$NWQMI").empty());
    EXPECT_EQ(world.trace.ShellTimes(kPingLine).size(), 0U);
    EXPECT_GT(world.trace.CommandTimes("AT+CSQ").size(), 100U);
}

}  // namespace
