// File systems, the log, the clock, and helpers that are missing.
#include <gtest/gtest.h>

#include <fstream>

#include "faults.h"

namespace recovery {

namespace {

constexpr std::size_t kRoom = 1 << 17;
constexpr char kFiller[] = "filler";

// Somebody takes all the room of a folder that lies on a file system of its own.
void Fill(const std::string& folder) {
    std::ofstream(folder + "/" + kFiller, std::ios::binary) << std::string(kRoom, 'x');
}

void Empty(const std::string& folder) {
    rig::Files::Remove(folder + "/" + kFiller);
}

// All of /tmp that an 881 uses; the tree under test may lie elsewhere in it.
constexpr char kUsedTemporary[] = "/tmp/sms";

void TemporaryFull(Story& story) {
    story.files.MountSmall(kUsedTemporary, kRoom);
    story.Settle();
    story.Strike();
    Fill(kUsedTemporary);
    story.modem.Control("sms +15551234567 \"Hello.\"");
    story.Live(2min);
    EXPECT_EQ(story.trace.CountLogContaining("Message: Hello."), 1U);
    EXPECT_EQ(story.modem.Sim().GetState().sms.Used(), 0)
        << "the modem keeps what is not in a file";
    story.Mend();
    Empty(kUsedTemporary);
    story.modem.Control("sms +15551234567 \"Again.\"");
    story.LiveUntil(
        [] {
            for (const std::string& name : rig::Files::List("/tmp/sms/recv")) {
                if (rig::Files::Read("/tmp/sms/recv/" + name).find("Again.") != std::string::npos)
                    return true;
            }
            return false;
        },
        2min);
    story.LiveUntilItWorks();
}

void LogFolderFullAtTheStart(Story& story) {
    story.files.MountSmall("/var/log", kRoom);
    Fill("/var/log");
    story.Start();
    story.Live(10min);
    EXPECT_TRUE(rig::Files::Exists(kStatistics));
    EXPECT_EQ(rig::Files::Read(kStatistics), "");
    EXPECT_TRUE(story.LinkIsUp());
    story.AskWhy();
    story.Mend();
    Empty("/var/log");
    story.LiveUntil([&] { return !story.Published("CELLMODEM_MODEL").empty(); }, 2min);
    story.LiveUntilItWorks();
}

// A file that is written anew takes the room that it has just given back.
void LogFolderFills(Story& story) {
    story.files.MountSmall("/var/log", kRoom);
    story.Settle();
    story.Strike();
    Fill("/var/log");
    for (int minute = 0; minute < 10; ++minute) {
        story.Live(1min);
        EXPECT_TRUE(story.Works());
        EXPECT_FALSE(story.Published("CELLMODEM_MODEL").empty());
    }
    story.AskWhy();
    Empty("/var/log");
}

// Ten lines is what a datagram socket takes if nobody has changed net.unix.max_dgram_qlen.
void LogStuck(Story& story) {
    constexpr int kLines = 10;
    story.Settle();
    story.Strike();
    story.router.StickLog(kLines);
    story.Live(1h);
    EXPECT_TRUE(story.daemon.Running());
    EXPECT_GE(story.LastWritten(kStatistics), story.clock.Now() - 30s)
        << "a quiet daemon needs no line";
    story.modem.Control("connect-fails 14 3 2");
    story.modem.Control("drop-call");
    story.LiveUntil([&] { return story.clock.Now() - story.LastWritten(kStatistics) > 2min; }, 1h);
    story.TellTime("stands", story.LastWritten(kStatistics) - story.Struck() - 1h);
    story.daemon.Signal(SIGTERM);
    story.Live(10min);
    EXPECT_TRUE(story.daemon.Running()) << "it heeds a signal";
    story.AskWhy();
    story.router.FreeLog();
    story.Mend();
    story.LiveUntilItWorks();
    EXPECT_EQ(story.CountSince("received SIGINT/SIGTERM"), 1U);
}

void ClockForward(Story& story) {
    story.files.Write("/tmp/sms/recv/unread", "FROM=1\nTIME=\nMSG=Hello\n");
    story.Settle();
    story.Strike();
    story.clock.Jump(25h);
    story.Live(1s);
    story.LiveUntilItWorks();
    story.Live(2min);
    story.TellLine("lost", "Deleting SMS file '/tmp/sms/recv/unread', older than 1440 minutes.");
    story.AskWhy();
    EXPECT_FALSE(rig::Files::Exists("/tmp/sms/recv/unread"));
    EXPECT_EQ(story.CountSince(kRestarting), 0U);
}

void ClockBack(Story& story) {
    story.files.Write("/tmp/sms/recv/unread", "FROM=1\nTIME=\nMSG=Hello\n");
    story.Settle();
    story.Strike();
    story.clock.Jump(-25h);
    story.Live(1s);
    story.LiveUntilItWorks();
    story.Live(2min);
    EXPECT_TRUE(rig::Files::Exists("/tmp/sms/recv/unread"));
    EXPECT_EQ(story.CountSince(kRestarting), 0U);
    story.AskWhy();
}

void NoUdhcpc(Story& story) {
    story.Miss("udhcpc");
    story.Start();
    story.Live(3min);
    story.AskWhy();
    story.Live(17min);
    EXPECT_FALSE(story.LinkIsUp());
    story.TellLine("seen", "Interface wwan0 is connected, but does not have a valid IP.");
    story.TellLine("reset", kResetting);
    story.TellCount("resets", story.CountSince(kResetting));
    story.Mend();
    story.ListenTo("udhcpc");
    story.LiveUntilItWorks();
}

void NoIfconfig(Story& story) {
    story.Miss("ifconfig");
    story.Start();
    story.LiveUntilItWorks();
    story.TellLine("noticed",
                   "Warning: Modem type set to E362/E371, but int wwan0 does not appear to exist.");
    story.AskWhy();
    EXPECT_TRUE(story.LinkIsUp()) << "udhcpc's script brings the interface up, too";
}

void NoPing(Story& story) {
    story.Miss("ping");
    story.LetOthersTalk(false);
    story.Settle();
    story.Strike();
    story.LiveUntil([&] { return story.CountSince(kNothingLeaves) == 3; }, 30min);
    story.AskWhy();
    story.Live(2h);
    EXPECT_GE(story.Resets(), 1U);
    story.TellLine("noticed", kNothingLeaves);
    story.TellLine("reset", kResetting);
    story.TellCount("resets", story.CountSince(kResetting));
    story.ListenTo("ping");
    const std::size_t warnings = story.CountSince(kNothingLeaves);
    story.Live(1h);
    EXPECT_LE(story.CountSince(kNothingLeaves), warnings + 1);
}

void NoDate(Story& story) {
    story.files.Write(kProvisioning, "SYNC_TIME=yes\n");
    story.Miss("date");
    story.Start();
    const auto before = story.clock.WallSeconds() - story.clock.Now() / 1s;
    story.LiveUntilItWorks();
    story.Live(5h);
    EXPECT_EQ(story.clock.WallSeconds() - story.clock.Now() / 1s, before);
    const auto syncs =
        static_cast<std::size_t>(story.trace.CountLogContaining("Syncing system time to "));
    story.TellCount("syncs", syncs);
    EXPECT_GE(syncs, 2U);
}

void NoResetTool(Story& story) {
    story.Miss("ResetPCMCIA");
    story.Settle();
    story.Strike();
    story.LetBytesLeave(false);
    story.Live(2h);
    EXPECT_EQ(story.Resets(), 0U);
    EXPECT_TRUE(story.Starts().empty()) << "nothing takes the port away";
    story.TellLine("first", kResetting);
    story.TellCount("asked", story.CountSince(kResetting));
    story.AskWhy();
    story.Mend();
    story.LetBytesLeave(true);
    story.LiveUntilItWorks();
}

}  // namespace

std::vector<Fault> RouterFaults() {
    static constexpr char kChapter[] = "The router around it";
    return {
        {kChapter, "tmp-full", "-881", "/tmp is full when a message comes", "not by the daemon",
         "the message is read, its text logged, and it is deleted in the modem",
         "the next message is a file again, {back} after there is room",
         "the message, but for its text in the system log", TemporaryFull},
        {kChapter, "var-log-full", "-E362", "/var/log is full when the daemon starts",
         "not by the daemon; status files have 0 bytes", "each writing is tried as ever",
         "{back} after there is room", "the status files; the link comes up all the same",
         LogFolderFullAtTheStart},
        {kChapter, "var-log-fills", "-E362", "/var/log fills while the daemon runs",
         "not by the daemon", "each file takes again the room that it gives back",
         "it was never away",
         "lines of `csq`; a status file of 0 bytes, if somebody else is quicker to take its room",
         LogFolderFills},
        {kChapter, "log-stuck", "-E362", "the log daemon reads nothing any more",
         "not by the daemon, which stands at its eleventh line: here {stands} after the call was "
         "dropped, an hour on",
         "nothing, and SIGTERM is not heeded; `modemd-watch` of packaging/, run once a minute, "
         "restarts the log daemon",
         "{back} after the log daemon reads again; here "
         "with the end that SIGTERM had asked for, and a new start",
         "all supervision meanwhile", LogStuck},
        {kChapter, "clock-forward", "-E362", "the clock is set forward by 25 hours",
         "every timer that is shorter expires at once",
         "the next checks come early; files of the spool become old ({lost})", "{back} later",
         "messages that nobody has taken away", ClockForward},
        {kChapter, "clock-back", "-E362", "the clock is set back by 25 hours",
         "every timer expires at once", "the next checks come early", "{back} later", "nothing",
         ClockBack},
        {kChapter, "no-udhcpc", "-E362", "udhcpc is missing",
         "the first look behind the call's start, {seen}",
         "the call is restarted for a new lease; reset tool at the eighth restart ({reset}); in 20 "
         "minutes {resets} resets",
         "{back} after it is there", "the link", NoUdhcpc},
        {kChapter, "no-ifconfig", "-E362", "ifconfig is missing", "at the start, {noticed}",
         "nothing; udhcpc's script has to bring wwan0 up", "{back} after the start", "nothing",
         NoIfconfig},
        {kChapter, "no-ping", "-E362", "ping is missing, and nobody else sends",
         "the counter stands, {noticed}",
         "the reset tool at the eighth failure ({reset}); in 2 hours {resets} resets",
         "with the next ping", "the link at each reset, though it works", NoPing},
        {kChapter, "no-date", "-E362", "/bin/date is missing", "not at all",
         "it is run at the start and every 4 hours, logged as if it had worked (in 5 hours "
         "{syncs} times)",
         "with the next run", "the clock; a missing `hwclock` costs it at the next power cut",
         NoDate},
        {kChapter, "no-reset-tool", "-E362", "the reset tool is missing, and nothing leaves",
         "not at all",
         "it is started again and again, first {first} after the fault, in 2 hours {asked} times",
         "{back} after the cause is gone", "what a reset would have mended", NoResetTool},
    };
}

}  // namespace recovery
