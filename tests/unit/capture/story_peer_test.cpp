// The modem's side of a story, without a daemon.
#include "capture/replay/story_peer.h"

#include "field_log.h"

namespace capture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

StoryPeer PeerOf(const std::string& story) {
    return StoryPeer(ReadStory("story 881\n" + story));
}

std::string Ask(StoryPeer& peer, const std::string& bytes, rig::Micros at = 0) {
    peer.Receive(bytes, at);
    return peer.Transmit(at + 10 * sim::kSecond);
}

TEST(StoryPeer, SaysEachPieceInItsTime) {
    StoryPeer peer = PeerOf("> AT\n< 25ms a\n< 75ms b\n");
    peer.Receive(std::string("AT\0\0\r\n", 6), 1000);
    EXPECT_EQ(peer.NextEvent(), 26000);
    EXPECT_EQ(peer.Transmit(25999), "");
    EXPECT_EQ(peer.Transmit(26000), "a");
    EXPECT_FALSE(peer.IsTold());
    EXPECT_EQ(peer.Transmit(76000), "b");
    EXPECT_TRUE(peer.IsTold());
    EXPECT_EQ(peer.NextEvent(), rig::kNever);
}

TEST(StoryPeer, SpeaksUnaskedAtTheStart) {
    StoryPeer peer = PeerOf("start\n< 25ms RING\n> AT\n< 25ms OK\n");
    EXPECT_EQ(peer.Transmit(25000), "RING");
    EXPECT_EQ(Ask(peer, "AT\r"), "OK");
}

TEST(StoryPeer, FindsACommandALittleFurtherOn) {
    StoryPeer peer = PeerOf("> A\n< 5ms 1\n> B\n< 5ms 2\n> C\n< 5ms 3\n");
    EXPECT_EQ(Ask(peer, "B\r"), "2");
    EXPECT_EQ(Ask(peer, "C\r"), "3");
    EXPECT_THAT(peer.Strays(), IsEmpty());
    EXPECT_TRUE(peer.IsTold());
}

TEST(StoryPeer, AnswersAStrayAsBefore) {
    StoryPeer peer = PeerOf("> A\n< 5ms 1\n> B\n< 5ms 2\n");
    EXPECT_EQ(Ask(peer, "A\r"), "1");
    EXPECT_EQ(Ask(peer, "A\r"), "1");
    EXPECT_EQ(Ask(peer, "AT+X?\r"), "\r\nERROR\r\n");
    EXPECT_EQ(Ask(peer, "AT+X=1\r"), "\r\nOK\r\n");
    EXPECT_THAT(peer.Strays(), ElementsAre("A", "AT+X?", "AT+X=1"));
    EXPECT_EQ(Ask(peer, "B\r"), "2");
}

TEST(StoryPeer, TakesAMessageUpToItsEnd) {
    StoryPeer peer = PeerOf(
        "> AT\n< 5ms OK\n> AT+CMGS=\"155\"\n< 5ms > \n> two\\nlines\\x1a\n< 5ms OK\n> AT+A\n< 5ms "
        "A\n");
    std::string number;
    std::string text;
    peer.on_message_wanted = [&](const std::string& to, const std::string& what) {
        number = to;
        text = what;
    };
    Ask(peer, "AT\r\n");
    EXPECT_EQ(number, "155");
    EXPECT_EQ(text, "two\nlines");
    Ask(peer, "AT+CMGS=\"155\"\r\n");
    EXPECT_EQ(Ask(peer, "two\nlines\x1a\r\n"), "OK");
    EXPECT_EQ(Ask(peer, "AT+A\r\n"), "A");
    EXPECT_THAT(peer.Strays(), IsEmpty());
}

TEST(StoryPeer, ARefusedMessageHasNoText) {
    StoryPeer peer = PeerOf("> AT+CMGS=\"155\"\n< 5ms ERROR\n> AT+A\n< 5ms A\n");
    Ask(peer, "AT+CMGS=\"155\"\r\n");
    EXPECT_EQ(Ask(peer, "AT+A\r\n"), "A");
}

}  // namespace
}  // namespace capture
