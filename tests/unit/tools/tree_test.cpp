#include "modemctl/tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "modemctl/snapshot.h"
#include "support/text_file_writer.h"
#include "tools/scratch.h"

namespace modemctl {
namespace {

constexpr char kFile[] = "/var/log/wireless.cardstats";

TEST(Tree, TellsAbsentEmptyUnreadableAndWhole) {
    const Scratch scratch;
    const Tree tree(scratch.root());
    EXPECT_EQ(tree.Read("/nothing").presence, Presence::kAbsent);
    scratch.Write("/empty", "");
    EXPECT_EQ(tree.Read("/empty").presence, Presence::kEmpty);
    scratch.Write("/half", "KEY=val");
    EXPECT_EQ(tree.Read("/half").presence, Presence::kUnsettled);
    scratch.Write("/whole", "KEY=value\n");
    EXPECT_EQ(tree.Read("/whole").presence, Presence::kWhole);
    EXPECT_EQ(tree.Read("/whole").text, "KEY=value\n");
    EXPECT_EQ(tree.Read("/").presence, Presence::kUnreadable);
    EXPECT_EQ(tree.Read("/half", AnyText).presence, Presence::kWhole);
}

TEST(Tree, NeverWaitsForAFifo) {
    const Scratch scratch;
    ASSERT_EQ(mkfifo((scratch.root() + "/fifo").c_str(), 0600), 0);
    EXPECT_EQ(Tree(scratch.root()).Read("/fifo").presence, Presence::kUnreadable);
}

// A zero byte is what a reader may find in a file that is being made anew.
TEST(Tree, TakesZeroBytesForAFileThatIsNotWhole) {
    EXPECT_FALSE(HasWholeLines(std::string("KEY=\0value\n", 11)));
    EXPECT_FALSE(HasWholeLines(std::string(100, '\0')));
}

TEST(Tree, FollowsLinksWithinTheRootOnly) {
    const Scratch scratch;
    scratch.Write("/run/modemd.pid", "42");
    std::filesystem::create_directories(scratch.root() + "/var");
    ASSERT_EQ(symlink("/run", (scratch.root() + "/var/run").c_str()), 0);
    ASSERT_EQ(symlink("../../../../../etc/passwd", (scratch.root() + "/run/up").c_str()), 0);
    ASSERT_EQ(symlink("loop", (scratch.root() + "/loop").c_str()), 0);
    const Tree tree(scratch.root());
    EXPECT_EQ(tree.Locate("/var/run/modemd.pid"), scratch.root() + "/run/modemd.pid");
    EXPECT_EQ(tree.Locate("/run/up"), scratch.root() + "/etc/passwd");
    EXPECT_EQ(tree.Read("/run/up").presence, Presence::kAbsent);
    EXPECT_EQ(tree.Read("/loop").presence, Presence::kAbsent);
}

TEST(Tree, TakesTimeAndFactsFromACopiedTree) {
    const Scratch scratch;
    scratch.Write("/modemctl.facts", "now=2026-03-14T09:15:02+00:00\naddress=10.0.0.1\n");
    const Tree tree(scratch.root() + "/");
    EXPECT_EQ(tree.Now(), 1773479702);
    EXPECT_EQ(tree.Fact("address"), "10.0.0.1");
    EXPECT_EQ(tree.Fact("dress"), "");
    EXPECT_FALSE(tree.IsLive());
    EXPECT_TRUE(Tree("/").IsLive());
}

TEST(Tree, ListsSorted) {
    const Scratch scratch;
    scratch.Write("/spool/b", "1");
    scratch.Write("/spool/a", "2");
    std::vector<Entry> entries;
    ASSERT_TRUE(Tree(scratch.root()).List("/spool", entries));
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].name, "a");
    EXPECT_TRUE(entries[0].regular);
    EXPECT_FALSE(Tree(scratch.root()).List("/nothing", entries));
}

// The statistics of a card, with one letter in every value and a number of contexts, so that a
// mixture of two can be told.
std::string Statistics(char letter, int contexts) {
    std::string text = "#File generated 2026-03-14 09:15:02 \n#Device Properties :\n";
    for (const char* key : {"CELLMODEM_ESN", "CELLMODEM_MODEL", "CELLMODEM_CURRENT_ECIO",
                            "CELLMODEM_QMI_RESULT", "CELLMODEM_TEMPERATURE"}) {
        text += std::string(key) + "=" + std::string(40, letter) + "\n";
    }
    for (int i = 0; i < contexts; ++i) {
        text += "CELLMODEM_SIM_CONT_APN" + std::to_string(i) + "=" + std::string(60, letter) + "\n";
    }
    return text;
}

// The daemon's own writer, in a process of its own, as fast as it can.
class Writer {
  public:
    Writer(const std::string& path, const std::vector<std::string>& texts) {
        pid_ = fork();
        if (pid_ != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // Also a killed test takes it along.
        for (std::size_t i = 0;; i = (i + 1) % texts.size()) {
            cTextFileWriter file(path);
            file.AddLine(texts[i]);
            file.WriteFile();
        }
    }
    ~Writer() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }

  private:
    pid_t pid_;
};

// READS=1000000 proves it a million times; see docs/modemctl.md.
TEST(Tree, NeverReadsATornFileFromUnderAWriterInATightLoop) {
    const char* const wanted = std::getenv("READS");
    const int reads = wanted != nullptr ? std::atoi(wanted) : 3000;
    const Scratch scratch;
    // One page, several pages, and one that shares its first page with another.
    const std::vector<std::string> texts = {Statistics('a', 3), Statistics('b', 300),
                                            Statistics('c', 40), Statistics('a', 80)};
    scratch.Write(kFile, texts[0]);
    const Writer writer(scratch.root() + kFile, texts);
    const Tree tree(scratch.root());
    int whole = 0;
    for (int i = 0; i < reads; ++i) {
        const TextFile file = tree.Read(kFile, IsWholeStatistics);
        if (!file.IsWhole()) continue;
        ++whole;
        ASSERT_NE(std::find(texts.begin(), texts.end(), file.text), texts.end())
            << "torn at read " << i << ": " << file.text.size() << " bytes";
    }
    EXPECT_GT(whole, reads / 2);
    std::printf("figure: %d reads, %d whole, 0 torn\n", reads, whole);
}

}  // namespace
}  // namespace modemctl
