#include "modemctl/log_source.h"

#include <gtest/gtest.h>

#include "modemctl/log_facts.h"
#include "modemctl/log_fold.h"
#include "tools/scratch.h"

namespace modemctl {
namespace {

constexpr std::time_t kNow = 1773479702;  // 2026-03-14 09:15:02 UTC

class LogSource : public ::testing::Test {
  protected:
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
    }
    static std::string Text(const std::string& line) {
        LogRecord record;
        return ParseLogLine(line, kNow, record) ? record.text : "(not ours)";
    }
    static std::time_t When(const std::string& line) {
        LogRecord record;
        return ParseLogLine(line, kNow, record) ? record.when : -1;
    }
};

TEST_F(LogSource, ReadsEachFormOfALogLine) {
    for (const char* line : {
             "Mar 14 09:15:02 router user.notice modemd: exit",
             "Mar 14 09:15:02 router modemd[42]: exit",
             "Mar 14 09:15:02 router modemd: exit",
             "Mar 14 09:15:02 user.notice modemd: exit",
             "2026-03-14T09:15:02+00:00 router modemd[42]: exit",
             "2026-03-14T09:15:02.123456+00:00 router modemd: exit",
             "2026-03-14T09:15:02+0000 router modemd[42]: exit",
             "Sat Mar 14 09:15:02 2026 user.notice modemd[42]: exit",
         }) {
        EXPECT_EQ(Text(line), "exit") << line;
        EXPECT_EQ(When(line), kNow) << line;
    }
}

TEST_F(LogSource, PassesOverWhatOthersSaid) {
    for (const char* line : {
             "Mar 14 09:15:02 router user.notice sshd: modemd: exit",
             "Mar 14 09:15:02 router sshd: modemd: exit",
             "Mar 14 09:15:02 sshd: modemd: exit",
             "Mar 14 09:15:02 router user.notice modemd-helper: exit",
             "Mar 14 09:15:02 router user.notice xmodemd: exit",
             "modemd: exit",
             "",
         }) {
        EXPECT_EQ(Text(line), "(not ours)") << line;
    }
}

TEST_F(LogSource, GivesALineWithoutAYearTheOneThatIsNotInTheFuture) {
    EXPECT_EQ(When("Dec 31 23:59:59 router modemd: exit"), 1767225599);  // 2025
    EXPECT_EQ(When("Mar 14 09:15:02 router modemd: exit"), kNow);
}

TEST_F(LogSource, ReadsOlderGenerationsFirst) {
    const Scratch scratch;
    scratch.Write("/var/log/messages.0", "Mar 14 08:00:00 router modemd: v1.45 starting\n");
    scratch.Write("/var/log/messages", "Mar 14 09:00:00 router modemd: exit");
    LogRequest request;
    request.now = kNow;
    std::string complaint;
    const auto records = RecentRecords(Tree(scratch.root()), request, 10, complaint);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text, "v1.45 starting");
    EXPECT_EQ(records[1].text, "exit");
    request.since = kNow - 1800;
    EXPECT_EQ(RecentRecords(Tree(scratch.root()), request, 10, complaint).size(), 1U);
}

TEST_F(LogSource, SaysWhenThereIsNoLog) {
    const Scratch scratch;
    std::string complaint;
    RecentRecords(Tree(scratch.root()), LogRequest(), 10, complaint);
    EXPECT_NE(complaint, "");
}

// The journal's export form holds any byte: behind a name without "=" stand a length and so many.
TEST_F(LogSource, ReadsTheJournalsExportForm) {
    const std::string binary = "two\nlines";
    std::string entry = "__CURSOR=x\n__REALTIME_TIMESTAMP=1773479702123456\nMESSAGE\n";
    entry += static_cast<char>(binary.size()) + std::string(7, '\0') + binary + "\n_PID=1\n\n";
    entry += "__REALTIME_TIMESTAMP=1773479703000000\nMESSAGE=exit\n\n";
    std::FILE* stream = fmemopen(entry.data(), entry.size(), "r");
    LogRecord record;
    ASSERT_TRUE(ReadExportEntry(stream, record));
    EXPECT_EQ(record.text, binary);
    EXPECT_EQ(record.when, kNow);
    ASSERT_TRUE(ReadExportEntry(stream, record));
    EXPECT_EQ(record.text, "exit");
    EXPECT_FALSE(ReadExportEntry(stream, record));
    std::fclose(stream);
}

// --- Folding -------------------------------------------------------------------------------------

std::vector<std::string> Folded(std::size_t longest, const std::string& keys) {
    std::vector<std::string> told;
    LogFolder folder(longest, {[&](const LogEvent& event) { told.push_back(event.key); },
                               [&](std::size_t lines, long long times, std::time_t until) {
                                   told.push_back(std::to_string(lines) + " lines " +
                                                  std::to_string(times) + " more until " +
                                                  std::to_string(until));
                               }});
    std::time_t when = 0;
    for (const char key : keys) folder.Take({++when, std::string(1, key), "", 0});
    folder.Finish();
    return told;
}

using Told = std::vector<std::string>;

TEST(LogFolding, TellsARepeatedLineOnce) {
    EXPECT_EQ(Folded(8, "aaab"), (Told{"a", "1 lines 2 more until 3", "b"}));
}

TEST(LogFolding, TellsARepeatedGroupOnce) {
    EXPECT_EQ(Folded(8, "abcabcabcd"), (Told{"a", "b", "c", "3 lines 2 more until 9", "d"}));
}

TEST(LogFolding, TellsAGroupThatWasBrokenOffInFull) {
    EXPECT_EQ(Folded(8, "abcab"), (Told{"a", "b", "c", "a", "b"}));
    EXPECT_EQ(Folded(8, "abcabcabx"),
              (Told{"a", "b", "c", "3 lines 1 more until 6", "a", "b", "x"}));
}

TEST(LogFolding, FoldsNoGroupThatIsTooLong) {
    EXPECT_EQ(Folded(1, "ababb"), (Told{"a", "b", "a", "b", "1 lines 1 more until 5"}));
}

// No line is lost and none is told twice, whatever comes.
TEST(LogFolding, KeepsTheCount) {
    unsigned seed = 1;
    for (int round = 0; round < 200; ++round) {
        std::string keys;
        for (int i = 0; i < 60; ++i) {
            seed = seed * 1103515245U + 12345U;
            keys += static_cast<char>('a' + (seed >> 16U) % 3);
        }
        std::size_t lines = 0;
        LogFolder folder(6, {[&](const LogEvent&) { ++lines; },
                             [&](std::size_t group, long long times, std::time_t) {
                                 lines += group * static_cast<std::size_t>(times);
                             }});
        for (const char key : keys) folder.Take({0, std::string(1, key), "", 0});
        folder.Finish();
        ASSERT_EQ(lines, keys.size()) << keys;
    }
}

// --- Facts ---------------------------------------------------------------------------------------

TEST(LogFactsOf, TheNewestRunOnly) {
    const LogFacts facts(
        {{1, "v1.45 starting"}, {2, "Resetting device"}, {3, "v1.45 starting"}, {4, "exit"}});
    EXPECT_FALSE(facts.Has("Resetting device"));
    EXPECT_TRUE(facts.EndsWith("exit"));
}

TEST(LogFactsOf, ARunThatASecondCopyLookedIn) {
    const LogFacts facts({{1, "v1.45 starting"},
                          {2, "Resetting device"},
                          {3, "v1.45 starting"},
                          {4, "Another modemd process is already running, exiting"}});
    EXPECT_TRUE(facts.Has("Resetting device"));
    EXPECT_EQ(facts.SecondCopies().size(), 1U);
}

TEST(LogFactsOf, AStreak) {
    const LogFacts facts({{100, "Resetting device"},
                          {1000, "Resetting device"},
                          {1050, "Resetting device"},
                          {1100, "Resetting device"}});
    EXPECT_EQ(facts.Find("Resetting device")->Streak(60), 3);
    EXPECT_TRUE(facts.IsRecent("Resetting device", 1150, 60));
    EXPECT_FALSE(facts.IsRecent("Resetting device", 1150, 40));
}

}  // namespace
}  // namespace modemctl
