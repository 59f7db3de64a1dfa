// The daemon's own log file: stamps, folding, rotation.
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "fakes/terminal.h"
#include "support/logger_fixture.h"

namespace {

using Logger = LoggerTest;

TEST(IntToStringTest, GivesPlainDecimalText) {
    EXPECT_EQ(IntToString(0), "0");
    EXPECT_EQ(IntToString(7), "7");
    EXPECT_EQ(IntToString(-42), "-42");
    EXPECT_EQ(IntToString(INT32_MAX), "2147483647");
    EXPECT_EQ(IntToString(INT32_MIN), "-2147483648");
}

TEST_F(Logger, StampsALineWithTheLocalTime) {
    Open(1);
    EXPECT_TRUE(Line("hello"));
    EXPECT_EQ(Written(), "03/03 04:05:06: hello\n");
}

TEST_F(Logger, WritesNoStampWithoutTheFlag) {
    Open(0);
    Line("hello");
    EXPECT_EQ(Written(), "hello\n");
}

TEST_F(Logger, TakesATimeFormatOfItsOwn) {
    Init(path_, 50, 1, "%H.%M");
    Line("hello");
    EXPECT_EQ(Written(), "04.05: hello\n");
}

TEST_F(Logger, AStampOfMoreThan22CharactersIsEmpty) {
    Init(path_, 50, 1, "%Y-%m-%d %H:%M:%S abc");  // 23 characters
    Line("hello");
    EXPECT_EQ(Written(), ": hello\n");
    Init(path_, 50, 1, "%Y-%m-%d %H:%M:%S ab");  // 22 characters
    Line("hello");
    EXPECT_EQ(Written(), ": hello\n2026-03-03 04:05:06 ab: hello\n");
}

TEST_F(Logger, SkipsOneStampOnly) {
    Open(1);
    logger_.SkipNextTimestamp();
    Line("# header");
    Line("line");
    EXPECT_EQ(Written(), "# header\n03/03 04:05:06: line\n");
}

TEST_F(Logger, TheSkipIsSpentOnALineThatHasNoStampAnyway) {
    Open(0);
    logger_.SkipNextTimestamp();
    Line("a");
    logger_.SkipNextTimestamp();
    Open(1);  // Init forgets it
    Line("b");
    EXPECT_EQ(Written(), "a\n03/03 04:05:06: b\n");
}

// Deliberate: each newline takes the character behind it along.
// Guards oddity newline-eats-neighbour.
TEST_F(Logger, ANewlineBecomesCaretMAndEatsItsNeighbour) {
    struct Row {
        const char* message;
        const char* expected;
    };
    const Row rows[] = {
        {"a\nb", "a^M"}, {"end\n", "end^M"},    {"a\nbc", "a^Mc"},  {"\n", "^M"},
        {"\n\n", "^M"},  {"a\n\n\nb", "a^M^M"}, {"a\r\n", "a\r^M"}, {"", ""},
    };
    for (const Row& row : rows) {
        std::string message = row.message;
        Open();
        logger_.LogIt(message, 0);
        EXPECT_EQ(message, row.expected);
    }
    EXPECT_EQ(Written(), "a^M\nend^M\na^Mc\n^M\n^M\na^M^M\na\r^M\n\n");
}

TEST_F(Logger, FoldsARunOfEqualLines) {
    Open(1);
    logger_.SetFoldRepeats(1);
    EXPECT_TRUE(Line("A"));
    EXPECT_TRUE(Line("A"));
    EXPECT_TRUE(Line("A"));
    EXPECT_EQ(Written(), "03/03 04:05:06: A\n");
    world.now_us += 1000000;
    EXPECT_TRUE(Line("B"));
    EXPECT_EQ(Written(),
              "03/03 04:05:06: A\n"
              "03/03 04:05:07: last line repeated 2 time(s)\n"
              "03/03 04:05:07: B\n");
}

TEST_F(Logger, AForcedRepeatWritesTheNoteAndTheLine) {
    Open();
    logger_.SetFoldRepeats(1);
    Line("A");
    EXPECT_TRUE(Line("A", 1));
    EXPECT_EQ(Written(), "A\nlast line repeated 1 time(s)\nA\n");
    Line("A");
    Line("A", -1);
    EXPECT_EQ(Written(), "A\nlast line repeated 1 time(s)\nA\nlast line repeated 2 time(s)\nA\n");
}

TEST_F(Logger, WithoutFoldingEveryLineIsWritten) {
    Open();
    Line("A");
    Line("A");
    EXPECT_EQ(Written(), "A\nA\n");
}

TEST_F(Logger, FoldingGoesOnUntilAPendingCountIsWritten) {
    Open();
    logger_.SetFoldRepeats(1);
    Line("A");
    Line("A");
    logger_.SetFoldRepeats(0);
    Line("A");
    Line("B");
    Line("B");
    EXPECT_EQ(Written(), "A\nlast line repeated 2 time(s)\nB\nB\n");
}

TEST_F(Logger, FoldingComparesWithTheLastLineSinceItWasSwitchedOn) {
    Open();
    Line("A");
    logger_.SetFoldRepeats(1);
    Line("A");
    Line("A");
    EXPECT_EQ(Written(), "A\nA\n");
}

TEST_F(Logger, TheFirstEmptyLineCountsAsARepeatOfNothing) {
    Open();
    logger_.SetFoldRepeats(1);
    EXPECT_TRUE(Line(""));
    EXPECT_EQ(Written(), "");
    Line("x");
    EXPECT_EQ(Written(), "last line repeated 1 time(s)\nx\n");
}

TEST_F(Logger, AppendsToTheFileOfAnEarlierRun) {
    WriteTemp("csq", "old\n");
    Open();
    Line("new");
    EXPECT_EQ(Written(), "old\nnew\n");
}

TEST_F(Logger, ATerminalInTheFilesPlaceIsNotTaken) {
    EXPECT_FALSE(fake::GetsTheTerminal(
        [this](const std::string& path) { logger_.Init(path, 50, 0, nullptr); }));
}

TEST_F(Logger, CreatesTheFileReadableByAll) {
    const mode_t before = umask(0);
    Open();
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(Logger, RotatesAtExactlyTheLimit) {
    Open();
    Resize(51200 - 5 - 1);
    Line("1234");
    EXPECT_FALSE(Exists(".1"));
    EXPECT_EQ(std::filesystem::file_size(path_), 51199u);
    Line("");
    EXPECT_TRUE(Exists(".1"));
    EXPECT_EQ(std::filesystem::file_size(path_ + ".1"), 51200u);
    EXPECT_EQ(Written(), "");
    Line("after");
    EXPECT_EQ(Written(), "after\n");
}

TEST_F(Logger, ALimitBelowFiftyKilobytesBecomesFifty) {
    for (const std::int32_t limit : {10, 0, -1}) {
        SCOPED_TRACE(limit);
        Init(path_, limit, 0, nullptr);
        Resize(51200 - 2);
        Line("");
        EXPECT_EQ(std::filesystem::file_size(path_), 51199u);
        Line("");
        EXPECT_EQ(Written(), "");
    }
}

TEST_F(Logger, AHigherLimitCounts) {
    Init(path_, 51, 0, nullptr);
    Resize(51200);
    Line("x");
    EXPECT_FALSE(Exists(".1"));
    Resize(52224 - 2);
    Line("x");
    EXPECT_TRUE(Exists(".1"));
}

TEST_F(Logger, KeepsOneOlderGeneration) {
    WriteTemp("csq.1", "oldest");
    WriteTemp("csq", "older");
    Open();
    EXPECT_TRUE(logger_.Rotate());
    EXPECT_EQ(ReadAll(path_ + ".1"), "older");
    EXPECT_FALSE(Exists(".2"));
    EXPECT_FALSE(Exists(".1.1"));
}

TEST_F(Logger, AFileBeyondTwoGigabytesIsRotated) {
    Open();
    Resize(std::uintmax_t{3} << 30);
    Line("x");
    EXPECT_TRUE(Exists(".1"));
    EXPECT_EQ(Written(), "");
}

TEST_F(Logger, ReopensAFileThatWasRemoved) {
    Open();
    Line("lost");
    std::filesystem::remove(path_);
    EXPECT_TRUE(Line("found"));
    EXPECT_EQ(Written(), "found\n");
}

TEST_F(Logger, ReopensAfterAClose) {
    Open();
    logger_.CloseLogFile();
    EXPECT_TRUE(Line("a"));
    EXPECT_EQ(Written(), "a\n");
}

TEST_F(Logger, InitReportsSuccessEvenWhenTheFileCannotBeOpened) {
    EXPECT_TRUE(Init(Folder() + "/none/csq", 50, 1, nullptr));
    EXPECT_FALSE(logger_.OpenLogFile());
    EXPECT_FALSE(Line("a"));
    EXPECT_TRUE(world.log.empty());
    std::filesystem::create_directory(Folder() + "/none");
    EXPECT_TRUE(Line("b"));
    EXPECT_EQ(ReadAll(Folder() + "/none/csq"), "03/03 04:05:06: b\n");
}

TEST_F(Logger, MirrorsTheCleanedMessageWithoutItsStamp) {
    Open(1);
    logger_.SetSyslogMirror(1);
    Line("100% a\nb");
    EXPECT_EQ(world.log, (std::vector<std::string>{"100% a^M"}));
    logger_.SetSyslogMirror(0);
    Line("quiet");
    EXPECT_EQ(world.log.size(), 1u);
}

TEST_F(Logger, ASwallowedRepeatIsNotMirrored) {
    Open();
    logger_.SetSyslogMirror(1);
    logger_.SetFoldRepeats(1);
    Line("A");
    Line("A");
    EXPECT_EQ(world.CountLogged("A"), 1);
}

}  // namespace
