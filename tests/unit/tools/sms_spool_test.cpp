#include "modemctl/sms_spool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "scratch.h"

namespace modemctl {
namespace {

using ::testing::ElementsAre;

class SpoolTest : public ::testing::Test {
  protected:
    SpoolEntry Entry(SpoolPlace place, const std::string& name) const {
        return LookAt(tree(), place, name);
    }
    Tree tree() const { return Tree(scratch_.root()); }

    Scratch scratch_;
};

TEST(Received, IsReadByPosition) {
    const SpoolMessage message =
        ParseReceived("FROM=15551234567\nTIME=26/03/14-09:15:02-20\nMSG=Yes\n\nFROM=1\n\n");
    ASSERT_EQ(message.readable, Readable::kGood);
    EXPECT_EQ(message.number, "15551234567");
    EXPECT_EQ(message.time, "26/03/14-09:15:02-20");
    EXPECT_EQ(message.text, "Yes\n\nFROM=1");
}

TEST(Received, ABodyForgesNoSender) {
    EXPECT_EQ(ParseReceived("FROM=1\nTIME=t\nMSG=FROM=2\nTIME=u\nMSG=x\n").number, "1");
    EXPECT_EQ(ParseReceived("TIME=t\nFROM=2\nMSG=x\n").readable, Readable::kNoMessage);
    EXPECT_EQ(ParseReceived("x\nFROM=2\nTIME=t\nMSG=x\n").readable, Readable::kNoMessage);
}

TEST(Received, WithoutALineEndIsStillWritten) {
    EXPECT_EQ(ParseReceived("").readable, Readable::kUnfinished);
    EXPECT_EQ(ParseReceived("FROM=1\nTIME=t\nMSG=x").readable, Readable::kUnfinished);
}

TEST(SendFile, IsReadAsTheDaemonReadsIt) {
    const SpoolMessage message = ParseSendFile("#c\nTO= +1 55 \nTO=2\nMSG=a\nMSG=b\n");
    EXPECT_EQ(message.number, "+155");
    EXPECT_EQ(message.text, "a\nMSG=b\n");
    EXPECT_EQ(ParseSendFile("TO=1\n").readable, Readable::kNoMessage);
    EXPECT_EQ(ParseSendFile(SendFileText("+15", "a\nTO=2")).number, "+15");
    EXPECT_EQ(ParseSendFile(SendFileText("+15", "a\nTO=2")).text, "a\nTO=2");
}

TEST_F(SpoolTest, ListsByNameWithNumbersAsNumbers) {
    for (const char* const name : {"sms_msg20260314-091502.10", "sms_msg20260314-091502.2",
                                   "sms_msg20260314-091502.1", "sms_msg20260313-235959.3"}) {
        scratch_.Write(std::string("/tmp/sms/recv/") + name, "x");
    }
    std::vector<SpoolEntry> entries;
    ASSERT_TRUE(ListSpool(tree(), SpoolPlace::kReceived, entries));
    std::vector<std::string> names;
    for (const SpoolEntry& entry : entries) names.push_back(entry.name.substr(7));
    EXPECT_THAT(names, ElementsAre("20260313-235959.3", "20260314-091502.1", "20260314-091502.2",
                                   "20260314-091502.10"));
    EXPECT_FALSE(ListSpool(tree(), SpoolPlace::kFailed, entries));
}

TEST_F(SpoolTest, ReadsNeitherLinksNorDirectoriesNorFifos) {
    scratch_.Write("/etc/secret", "FROM=1\nTIME=t\nMSG=secret\n");
    const std::string folder = scratch_.root() + "/tmp/sms/recv/";
    std::filesystem::create_directories(folder + "folder");
    std::filesystem::create_symlink(scratch_.root() + "/etc/secret", folder + "link");
    ASSERT_EQ(mkfifo((folder + "fifo").c_str(), 0600), 0);
    EXPECT_EQ(Entry(SpoolPlace::kReceived, "link").kind, EntryKind::kLink);
    EXPECT_EQ(Entry(SpoolPlace::kReceived, "folder").kind, EntryKind::kDirectory);
    EXPECT_EQ(Entry(SpoolPlace::kReceived, "fifo").kind, EntryKind::kOther);
    EXPECT_EQ(Entry(SpoolPlace::kReceived, "none").kind, EntryKind::kGone);
    for (const char* const name : {"link", "folder", "fifo", "none"}) {
        EXPECT_EQ(ReadMessage(tree(), Entry(SpoolPlace::kReceived, name)).readable,
                  Readable::kNoMessage)
            << name;
    }
}

TEST_F(SpoolTest, ReadsOnlyTheBeginningOfAHugeFile) {
    scratch_.Write("/tmp/sms/send/huge", "TO=1\nMSG=" + std::string(300000, 'x'));
    const SpoolMessage message = ReadMessage(tree(), Entry(SpoolPlace::kWaiting, "huge"));
    EXPECT_EQ(message.readable, Readable::kGood);
    EXPECT_LE(message.text.size(), 70000U);
}

TEST(FailedName, LosesItsStamp) {
    EXPECT_EQ(NameBeforeFailure("note.20260314-091502"), "note");
    EXPECT_EQ(NameBeforeFailure("note"), "note");
    EXPECT_EQ(NameBeforeFailure("note.20260314x091502"), "note.20260314x091502");
    EXPECT_TRUE(IsFailureOf("a.b.20260314-091502", "a.b"));
    EXPECT_FALSE(IsFailureOf("a.b", "a.b"));
    EXPECT_FALSE(IsFailureOf("a.b.20260314-091502", "a"));
}

TEST_F(SpoolTest, FindsANameAsItIsShown) {
    scratch_.Write("/tmp/sms/recv/odd\x1b[2J", "x");
    scratch_.Write("/tmp/sms/recv/both", "x");
    scratch_.Write("/tmp/sms/send_fail/both", "x");
    SpoolEntry entry;
    std::string complaint;
    EXPECT_TRUE(FindEntry(tree(), "odd\\x1b[2J", entry, complaint));
    EXPECT_EQ(entry.name, "odd\x1b[2J");
    EXPECT_FALSE(FindEntry(tree(), "both", entry, complaint));
    EXPECT_THAT(complaint, ::testing::HasSubstr("more than one"));
    ASSERT_TRUE(FindEntry(tree(), "failed/both", entry, complaint));
    EXPECT_EQ(entry.Path(), "/tmp/sms/send_fail/both");
    ASSERT_TRUE(FindEntry(tree(), "/tmp/sms/recv/both", entry, complaint));
    EXPECT_EQ(entry.place, SpoolPlace::kReceived);
}

TEST_F(SpoolTest, FindsNothingOutsideOfTheSpool) {
    scratch_.Write("/tmp/sms/other", "x");
    scratch_.Write("/tmp/sms/recv/here", "x");
    SpoolEntry entry;
    std::string complaint;
    for (const char* const typed : {"../other", "received/../other", ".", "..", "", "/etc/passwd",
                                    "/tmp/sms/recv/../other"}) {
        EXPECT_FALSE(FindEntry(tree(), typed, entry, complaint)) << typed;
    }
}

}  // namespace
}  // namespace modemctl
