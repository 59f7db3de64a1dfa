// The daemon's own process.
#include <gtest/gtest.h>

#include "faults.h"

namespace recovery {

namespace {

// Another process that bears the daemon's name.
void SecondCopy(Story& story) {
    story.router.AddProcess(777, std::string("/usr/sbin/modemd\0-E362", 22));
    story.files.Write("/var/run/modemd.pid", "777");
    story.Strike();
    story.Start();
    EXPECT_EQ(story.RunToExit(1min), 255);
    story.TellLine("noticed", "Another modemd process is already running, exiting");
    EXPECT_TRUE(story.trace.Commands().empty()) << "the port is not touched";
    EXPECT_EQ(story.Resets(), 0U);
    EXPECT_EQ(rig::Files::Read("/var/run/modemd.pid"), "777");
}

void Killed(Story& story) {
    story.Settle();
    story.Strike();
    story.daemon.Kill();
    story.AskWhy();
    EXPECT_TRUE(rig::Files::Exists("/var/run/modemd.pid"));
    story.Live(21s);
    EXPECT_TRUE(story.LinkIsUp()) << "neither call nor client is the daemon's child";
    ASSERT_EQ(story.Starts().size(), 1U);
    story.TellTime("again", story.Starts().front() - story.Struck());
    story.LiveUntilItWorks();
    story.Live(5min);
    EXPECT_EQ(story.CountSince(kRestarting), 0U);
}

// What lies in flash is cut; what lies in memory is gone, and the modem begins anew as well.
void PowerCut(Story& story) {
    story.Settle();
    story.Strike();
    const std::string whole = rig::Files::Read(kStatistics);
    story.daemon.Kill();
    story.files.Write(kStatistics, whole.substr(0, whole.size() / 2));
    rig::Files::Remove("/var/run/modemd.pid");
    story.router.ClearAddress();
    story.TakeOut();
    story.router.SetUptime(0s);
    story.PutBack();
    story.AskWhy();
    story.Live(1s);
    EXPECT_EQ(rig::Files::Read(kStatistics), whole.substr(0, whole.size() / 2));
    story.LiveUntil([&] { return rig::Files::Read(kStatistics).size() > whole.size() / 2; }, 3min);
    story.TellTime("whole", story.clock.Now() - story.Starts().front());
    story.LiveUntilItWorks();
}

}  // namespace

std::vector<Fault> DaemonFaults() {
    static constexpr char kChapter[] = "The daemon itself";
    return {
        {kChapter, "second-copy", "-E362", "a second copy is started", "at its start, {noticed}",
         "the second one ends with status 255; the port, the files and the first one are left "
         "alone. Under the keeper it is started again every 20 s",
         "the first one was never away", "nothing", SecondCopy},
        {kChapter, "killed", "-E362", "kill -9", "by the keeper, at once",
         "it starts the daemon again, {again} later; the pid file of the dead one is taken over",
         "{back} later: the link was never away", "nothing but the time", Killed},
        {kChapter, "power-cut", "-E362", "power cut in the middle of a status file",
         "by nobody: a reader may find half a file, or none",
         "the keeper starts the daemon, which writes every file anew, whole {whole} after "
         "its "
         "start",
         "{back} after the cut, with a router that boots in 20 s", "the call and its address",
         PowerCut},
    };
}

}  // namespace recovery
