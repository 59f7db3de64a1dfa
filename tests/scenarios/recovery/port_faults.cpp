// What can become of the modem and its port.
#include <gtest/gtest.h>

#include "faults.h"

namespace recovery {

namespace {

constexpr Duration kAway = 2min;

void Mute(Story& story) {
    story.Settle();
    story.Strike();
    story.modem.Control("silence 10m");
    story.Live(9min);
    EXPECT_LT(story.LastWritten(kStatistics), story.Struck() + 10s);
    story.AskWhy();
    EXPECT_EQ(story.CountSince(kResetting), 0U);
    story.Live(story.Struck() + 10min - story.clock.Now());
    story.Mend();
    story.LiveUntilItWorks();
}

void TellTheEndOfTheDaemon(Story& story) {
    story.TellLine("noticed", kPortLost);
    ASSERT_FALSE(story.Starts().empty());
    story.TellTime("again", story.Starts().front() - story.Struck());
}

void UnpluggedForAMoment(Story& story) {
    story.Settle();
    story.Strike();
    story.TakeOut();
    story.Live(20s);
    story.AskWhy();
    story.Live(kAway - 20s);
    story.Mend();
    story.PutBack();
    story.LiveUntilItWorks();
    TellTheEndOfTheDaemon(story);
    story.TellCount("starts", story.Starts().size());
}

void UnpluggedForLong(Story& story) {
    story.Settle();
    story.Strike();
    story.TakeOut();
    story.Live(1h);
    story.AskWhy();
    TellTheEndOfTheDaemon(story);
    const auto& starts = story.Starts();
    ASSERT_GE(starts.size(), 3U);
    story.TellTime("period", starts[2] - starts[1]);
    story.Mend();
    story.PutBack();
    story.LiveUntilItWorks();
}

void BackUnderAnotherName(Story& story) {
    story.Settle();
    story.Strike();
    story.TakeOut();
    story.Live(kAway);
    story.PutBack("/dev/ttyUSB1");
    story.Live(1h);
    EXPECT_FALSE(story.Works());
    TellTheEndOfTheDaemon(story);
    story.TellLine("tried", "Unable to open port /dev/ttyUSB0, attempt 1/5");
    story.AskWhy();
    story.Mend();
    story.PutBack();
    story.LiveUntilItWorks();
}

void Garbage(Story& story) {
    story.Settle();
    story.Strike();
    for (int second = 0; second < 300; ++second) {
        story.modem.Control("garbage 400");
        story.Live(1s);
    }
    story.AskWhy();
    EXPECT_TRUE(story.daemon.Running());
    EXPECT_EQ(story.Resets(), 0U);
    story.TellCount("restarts", story.CountSince(kRestarting));
    story.Mend();
    story.Live(1s);
    story.LiveUntil([&] { return story.Published("CELLMODEM_SERVICE_TYPE") == "LTE"; }, 5min);
    story.LiveUntilItWorks();
}

void Flood(Story& story) {
    const std::string flood(200000, 'A');
    story.Settle();
    story.Strike();
    for (int second = 0; second < 120; ++second) {
        story.modem.Say(flood);
        story.Live(1s);
    }
    story.AskWhy();
    EXPECT_TRUE(story.daemon.Running());
    EXPECT_EQ(story.Resets(), 0U);
    story.Mend();
    story.LiveUntilItWorks();
}

// Its port stays, as behind a serial adapter.
void RebootsByItself(Story& story) {
    story.Settle();
    story.Strike();
    story.modem.Control("unplug");
    story.Live(15s);
    story.modem.Control("plug");
    story.Live(1s);
    story.LiveUntilItWorks();
    story.TellLine("noticed", kRestarting);
}

void RebootsAndTakesThePortAway(Story& story) {
    story.Settle();
    story.Strike();
    story.TakeOut();
    story.Live(15s);
    story.PutBack();
    story.LiveUntilItWorks();
    TellTheEndOfTheDaemon(story);
    EXPECT_GE(story.Resets(), 1U);
}

void RebootsAndForgetsTextMode(Story& story) {
    story.Settle();
    story.Strike();
    story.modem.Control("unplug");
    story.Live(15s);
    story.modem.Control("plug");
    story.LiveUntilItWorks();
    story.modem.Control("sms +15551234567 \"Anybody there?\"");
    story.Live(1h);
    EXPECT_TRUE(rig::Files::List("/tmp/sms/recv").empty());
    EXPECT_EQ(story.trace.CommandsMatching("AT+CMGF").size(), 1U);
}

}  // namespace

std::vector<Fault> PortFaults() {
    static constexpr char kChapter[] = "Modem and port";
    return {
        {kChapter, "mute-port", "-E362", "the modem says nothing",
         "not by the daemon; no status file is written any more",
         "it goes on asking; no link is judged, nothing is reset", "{back} after its first word",
         "what is dropped into the spool counts as sent", Mute},
        {kChapter, "unplugged", "-E362", "unplugged for 2 minutes, back under the same name",
         "26 failed writes, {noticed}",
         "reset tool, end with status 255; the keeper starts it again ({again} after the "
         "fault); it tries the port 5 times, 10 s apart",
         "{back} after the plug", "the call and its address", UnpluggedForAMoment},
        {kChapter, "unplugged-long", "-E362", "unplugged for an hour",
         "26 failed writes, {noticed}",
         "as above; then reset tool, end and new start every {period}, for ever",
         "{back} after the plug", "the call and its address", UnpluggedForLong},
        {kChapter, "other-name", "-E362", "back under another name",
         "26 failed writes, {noticed}; then the port does not open, from {tried} on",
         "as above, for ever: nobody looks for another name",
         "{back} after the name is right again: a rule for udev or mdev gives it a fixed one",
         "the link, until somebody mends the name", BackUnderAnotherName},
        {kChapter, "garbage", "-E362", "400 bytes of noise every second, for 5 minutes",
         "not by the daemon, which takes noise for values: a service of a new name, a call that is "
         "down",
         "a call that seems down is restarted ({restarts} times); what is read wrongly is asked "
         "again "
         "in the next pass",
         "{back} after the last noise", "single values for a pass, and the link for each restart",
         Garbage},
        {kChapter, "flood", "-E362", "200,000 bytes every second, for 2 minutes",
         "not by the daemon, which reads 640 KiB of one answer at most",
         "as with noise; each answer that has no end makes its pass longer",
         "{back} after the flood", "single values for a pass", Flood},
        {kChapter, "reboots", "-E362", "reboots by itself in 15 s, the port stays",
         "the next look at the call, {noticed}", "the call is restarted",
         "{back} after it went off", "the call and its address", RebootsByItself},
        {kChapter, "reboots-port", "-E362", "reboots by itself in 15 s, the port goes and returns",
         "26 failed writes, {noticed}",
         "reset tool, end with status 255; the keeper starts it again ({again} after the "
         "fault)",
         "{back} after it went off", "the call and its address; the reset comes on top",
         RebootsAndTakesThePortAway},
        {kChapter, "reboots-text-mode", "-881", "reboots by itself in 15 s, messages in PDU mode",
         "not at all", "nothing: text mode is asked for at the daemon's start only",
         "status {back} after it went off; messages with the next start of the daemon",
         "received messages stay in the modem, send files go to `send_fail/`",
         RebootsAndForgetsTextMode},
    };
}

}  // namespace recovery
