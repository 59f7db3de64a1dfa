// What the SIM, the network and the carrier may do.
#include <gtest/gtest.h>

#include <initializer_list>

#include "faults.h"

namespace recovery {

namespace {

constexpr Duration kLong = 20min;

using Words = std::initializer_list<const char*>;

// `away` and `back` are words of the simulated modem's control language.
void LiveWithoutService(Story& story, Words away, Words back) {
    story.Settle();
    story.Strike();
    for (const char* word : away) story.modem.Control(word);
    story.Live(kLong);
    story.TellCount("resets", story.Resets());
    story.TellLine("noticed", "Warning: Modem reports bad service : 'No Service'");
    story.TellLine("hung_up", "No service after 30 seconds, sending modem a disconnect.");
    story.AskWhy();
    story.Mend();
    for (const char* word : back) story.modem.Control(word);
    story.LiveUntilItWorks();
}

void SimOut(Story& story) {
    LiveWithoutService(story, {"sim absent"}, {"sim ready"});
}

void NoService(Story& story) {
    LiveWithoutService(story, {"register searching", "service none"},
                       {"register home", "service lte"});
}

void CallDropped(Story& story) {
    story.Settle();
    story.Strike();
    story.modem.Control("drop-call");
    story.Live(1s);
    story.LiveUntilItWorks();
    story.TellLine("noticed", kRestarting);
    EXPECT_EQ(story.Resets(), 0U);
}

void CallRefused(Story& story) {
    story.Settle();
    story.Strike();
    story.modem.Control("connect-fails 14 3 forever");
    story.modem.Control("drop-call");
    story.Live(3min);
    story.AskWhy();
    story.Live(kLong - 3min);
    story.TellLine("noticed", kRestarting);
    story.TellLine("reset", kResetting);
    story.TellCount("resets", story.CountSince(kResetting));
    story.Mend();
    story.modem.Control("connect-fails off");
    story.LiveUntilItWorks();
}

// Its transmit counter stands.
void NothingLeaves(Story& story) {
    story.Settle();
    story.Strike();
    story.LetBytesLeave(false);
    story.LiveUntil([&] { return story.CountSince(kNothingLeaves) == 3; }, 30min);
    story.AskWhy();
    story.LiveUntil([&] { return story.Resets() > 0; }, 30min);
    story.TellLine("noticed", kNothingLeaves);
    story.TellLine("reset", kResetting);
    story.Mend();
    story.LetBytesLeave(true);
    story.LiveUntilItWorks();
}

// Beyond the modem: all that is sent is lost, and the counter of what was sent goes on.
void NothingArrives(Story& story) {
    story.Settle();
    story.Strike();
    story.LetOthersTalk(false);
    story.Live(2h);
    EXPECT_EQ(story.Resets(), 0U);
    EXPECT_EQ(story.CountSince(kNothingLeaves), 0U);
    EXPECT_TRUE(story.LinkIsUp());
    story.AskWhy();
}

void NoAddress(Story& story) {
    story.Settle();
    story.Strike();
    story.GiveAddresses(false);
    story.modem.Control("drop-call");
    story.Live(3min);
    story.AskWhy();
    story.Live(kLong - 3min);
    story.TellLine("noticed", kRestarting);
    story.TellLine("seen", "Interface wwan0 is connected, but does not have a valid IP.");
    story.TellLine("reset", kResetting);
    story.TellCount("resets", story.CountSince(kResetting));
    story.Mend();
    story.GiveAddresses(true);
    story.LiveUntilItWorks();
}

void StoreFull(Story& story) {
    constexpr std::size_t kMessages = 50;  // the store has 20 places
    story.Settle();
    story.Strike();
    for (std::size_t i = 0; i < kMessages; ++i) {
        story.modem.Control("sms +15551234567 \"Hello.\"");
    }
    EXPECT_TRUE(story.modem.Sim().GetState().sms.Full());
    story.LiveUntil([] { return rig::Files::List("/tmp/sms/recv").size() == kMessages; }, 5min);
    story.TellNow("back");
    story.LiveUntil([&] { return story.modem.Sim().GetState().sms.Used() == 0; }, 1min);
}

}  // namespace

std::vector<Fault> NetworkFaults() {
    static constexpr char kChapter[] = "SIM, network, carrier";
    return {
        {kChapter, "sim-out", "-E362", "the SIM is pulled out for 20 minutes",
         "the next question for the service, {noticed}",
         "checks of the call rest; the modem is told to hang up ({hung_up}); resets: {resets}",
         "{back} after the SIM is ready", "the call and its address", SimOut},
        {kChapter, "no-service", "-E362", "no service for 20 minutes",
         "the next question for the service, {noticed}",
         "checks of the call rest; the modem is told to hang up ({hung_up}); resets: {resets}",
         "{back} after the service", "the call and its address", NoService},
        {kChapter, "call-dropped", "-E362", "the network drops the call",
         "the next look at the call, every 30 s: {noticed}", "the call is restarted, once",
         "{back} after the drop", "the call and its address", CallDropped},
        {kChapter, "call-refused", "-E362", "the network takes no call for 20 minutes",
         "the next look at the call, {noticed}",
         "the call is restarted; reset tool after eleven failed looks ({reset}); in all {resets} "
         "resets",
         "{back} after it takes calls", "the link; each reset costs the daemon's life, too",
         CallRefused},
        {kChapter, "nothing-leaves", "-E362", "link up, but its transmit counter stands",
         "the second ping from then on, as the first one still finds more than the last one did; "
         "they are 10 minutes apart: {noticed}",
         "pinged every 30 s; reset tool at the eighth failure ({reset})",
         "{back} after bytes leave again, the reset included",
         "what the router's programs send meanwhile", NothingLeaves},
        {kChapter, "nothing-arrives", "-E362", "link up, but what is sent gets lost behind it",
         "not at all: whether a ping is answered does not matter", "nothing", "with the network",
         "all traffic, until a program of the router looks", NothingArrives},
        {kChapter, "no-address", "-E362", "the call comes up without an address, for 20 minutes",
         "the next look at the call, {noticed}; the missing address {seen}",
         "the call is restarted for a new lease; reset tool at the eighth restart ({reset}); in "
         "all "
         "{resets} resets",
         "{back} after the carrier gives addresses", "the link", NoAddress},
        {kChapter, "store-full", "-881", "50 messages come at once, the store has 20 places",
         "not by the daemon; what finds no place waits in the network",
         "the list is read, and what was read is deleted, every 15 to 20 s",
         "all 50 are files {back} later", "nothing, while the network keeps them", StoreFull},
    };
}

}  // namespace recovery
