#include "captured_life.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>

#include "capture/convert.h"
#include "capture/replay/replay.h"

using namespace std::chrono_literals;
using rig::World;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr modemctl::Anonymizer::Key kKey = {11, 47};
constexpr char kPppFile[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
constexpr char kProvisioningFile[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
constexpr const char* kStatusFiles[] = {
    "/var/log/wireless.cardstats",
    "/var/log/wireless.serialno",
    "/var/log/wireless.mdn",
    "/var/log/lightbar",
    "/var/log/wirelessactivation_status",
    "/var/log/wirelessdial_dialing",
    "/var/log/wirelessdial_notdialing",
};

Published Collect(const World& world) {
    Published all;
    for (const char* const path : kStatusFiles) {
        std::vector<std::string>& texts = all[path];
        for (const rig::FileVersion& version : world.trace.Versions(path)) {
            if (texts.empty() || texts.back() != version.text) texts.push_back(version.text);
        }
    }
    return all;
}

std::vector<std::string> Received() {
    std::vector<std::string> texts;
    for (const std::string& name : rig::Files::List("/tmp/sms/recv")) {
        texts.push_back(rig::Files::Read("/tmp/sms/recv/" + name));
    }
    return texts;
}

void WatchAll(World& world) {
    for (const char* const path : kStatusFiles) world.trace.Watch(path);
}

// Words of one text and those that stand in their places in the other.
using Words = std::map<std::string, std::string>;

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// The daemon publishes "0x01C3D401" as "1C3D401".
std::size_t LeadOf(const std::string& word) {
    const std::size_t start = word.compare(0, 2, "0x") == 0 ? 2 : 0;
    return std::min(word.find_first_not_of('0', start), word.size());
}

void Learn(const std::string& one, const std::string& other, Words& words) {
    ASSERT_EQ(one.size(), other.size()) << one << "\n" << other;
    for (std::size_t at = 0; at < one.size();) {
        std::size_t end = at;
        while (end < one.size() && IsWordCharacter(one[end])) ++end;
        if (end == at) {
            ASSERT_EQ(one[at], other[at]) << one << "\n" << other;
            ++at;
            continue;
        }
        const std::string word = one.substr(at, end - at);
        if (word.size() == 1) {  // may be a digit of anything
            at = end;
            continue;
        }
        const std::size_t bare = LeadOf(word);
        words.emplace(word.substr(bare), other.substr(at + bare, end - at - bare));
        const auto known = words.emplace(word, other.substr(at, end - at)).first;
        ASSERT_EQ(known->second, other.substr(at, end - at)) << word << " in " << one;
        at = end;
    }
}

std::string Mapped(const std::string& text, const Words& words) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && IsWordCharacter(text[end])) ++end;
        const std::string word = text.substr(at, end - at);
        const auto known = words.find(word);
        result += known != words.end() ? known->second : word;
        if (end < text.size()) result += text[end++];
        at = end;
    }
    return result;
}

Words WordsOf(const std::string& log, const capture::Story& story) {
    const capture::Dialogue dialogue = capture::ReadDialogue(capture::ReadLogLines(log, kNow));
    Words words;
    EXPECT_EQ(dialogue.exchanges.size(), story.exchanges.size());
    for (std::size_t i = 0; i < std::min(dialogue.exchanges.size(), story.exchanges.size()); ++i) {
        Learn(dialogue.exchanges[i].command, story.exchanges[i].command, words);
        Learn(dialogue.exchanges[i].Text(), story.exchanges[i].Text(), words);
    }
    return words;
}

// The end of the log may hold an exchange that is not whole, and what came of it.
void ExpectSame(const std::vector<std::string>& lived, const std::vector<std::string>& replayed,
                const Words& words) {
    EXPECT_LE(lived.size(), replayed.size() + 1);
    for (std::size_t i = 0; i < std::min(lived.size(), replayed.size()); ++i) {
        ASSERT_EQ(Mapped(lived[i], words), replayed[i]) << "version " << i;
    }
}

}  // namespace

Life Live(const std::string& card, LogForm form, const std::function<void(World&)>& story) {
    World world(card);
    WatchAll(world);
    capture::PlayRouter(world);
    world.files.Write(kProvisioningFile, "DEBUG_MODE=4\nSYNC_TIME=no\n");
    world.files.Write(kPppFile, "CM_APN=m2m.example.org\n");
    world.modem.Tell("drive on");  // not every modem has one
    world.Start();
    story(world);
    return {Collect(world), Received(), RouterLog(world, form), {}};
}

std::string Converted(const std::string& log) {
    capture::Request request;
    request.name = "messages";
    request.now = kNow;
    request.key = kKey;
    const capture::Result result = capture::Convert(log, request);
    EXPECT_THAT(result.text, Not(IsEmpty())) << testing::PrintToString(result.complaints);
    return result.text;
}

Life LiveAgain(const capture::Story& story) {
    capture::Replay replay(story);
    WatchAll(replay.world());
    EXPECT_TRUE(replay.Run());
    return {Collect(replay.world()), Received(), "", replay.Strays()};
}

void ExpectRoundTrip(const Life& lived) {
    const capture::Story story = capture::ReadStory(Converted(lived.log));
    const Words words = WordsOf(lived.log, story);
    ASSERT_EQ(story.Lives().size(), 1U);
    Life replayed = LiveAgain(story.Lives().front());
    EXPECT_THAT(replayed.strays, IsEmpty());
    for (const auto& [path, texts] : lived.published) {
        SCOPED_TRACE(path);
        ExpectSame(texts, replayed.published[path], words);
    }
    SCOPED_TRACE("received messages");
    ExpectSame(lived.received, replayed.received, words);
}

void DriveWithMessages(World& world) {
    world.RunFor(100s);
    world.modem.Control("sms +15551234567 \"Meet them beside the harbor\"");
    world.files.Write("/tmp/sms/send/report", "TO=+15557654321\nMSG=Tank is low, door open\n");
    world.RunFor(11min);
}

void DriveWithACall(World& world) {
    world.RunFor(60s);
    world.RunFor(30s);
    world.modem.Control("drop-call");
    world.RunFor(10min);
}
