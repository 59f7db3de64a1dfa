// docs/recovery.md, lived: every fault in several phases of the daemon's periods, and what the page
// tells of it compared with that. With RECOVERY_PIECES=FOLDER the pieces of the page are written
// there instead; scripts/recovery makes the page of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

#include "page.h"

using namespace recovery;
using ::testing::HasSubstr;

namespace {

constexpr Duration kPhases[] = {0s, 7s, 13s, 19s, 26s};

std::string Page() {
    std::ifstream page(RIG_SOURCE "/docs/recovery.md");
    return {std::istreambuf_iterator<char>(page), std::istreambuf_iterator<char>()};
}

std::vector<Lived> LiveAll(const Fault& fault) {
    std::vector<Lived> lives;
    for (const Duration phase : kPhases) {
        Story story(fault.card, phase);
        fault.live(story);
        lives.push_back(story.TakeLived());
        if (testing::Test::HasFailure()) break;
    }
    return lives;
}

class Recovery : public testing::TestWithParam<Fault> {};

TEST_P(Recovery, IsAsThePageTells) {
    const Fault& fault = GetParam();
    const std::vector<Lived> lives = LiveAll(fault);
    if (HasFailure()) return;
    const std::string row = RowOf(fault, lives);
    const std::string lines = LinesOf(fault, lives);
    if (const char* folder = std::getenv("RECOVERY_PIECES")) {
        std::ofstream(std::string(folder) + "/" + fault.id) << fault.chapter << "\n"
                                                            << row << lines;
        return;
    }
    const std::string page = Page();
    EXPECT_THAT(page, HasSubstr(row)) << "renew it: scripts/recovery --write";
    EXPECT_THAT(page, HasSubstr(lines)) << "renew it: scripts/recovery --write";
}

INSTANTIATE_TEST_SUITE_P(Faults, Recovery, testing::ValuesIn(Faults()), [](const auto& fault) {
    return std::regex_replace(std::string(fault.param.id), std::regex("-"), "_");
});

TEST(RecoveryPage, HasEachFaultOnceAndNoOther) {
    std::vector<std::string> known;
    for (const Fault& fault : Faults()) known.emplace_back(fault.id);
    std::vector<std::string> told;
    const std::string page = Page();
    const std::regex title("\n### ([^\n]+)\n");
    for (std::sregex_iterator found(page.begin(), page.end(), title), end; found != end; ++found) {
        told.push_back((*found)[1]);
    }
    EXPECT_EQ(told, known);
}

TEST(RecoveryPage, HasEachChapterOnceWithATableOfItsOwn) {
    const std::string page = Page();
    std::vector<std::string> known;
    for (const Fault& fault : Faults()) {
        if (!known.empty() && known.back() == fault.chapter) continue;
        known.emplace_back(fault.chapter);
        EXPECT_THAT(page, HasSubstr("\n## " + known.back() + "\n\n| fault |"));
    }
    EXPECT_EQ(known.size(), 4U);
}

// Two worlds that are alike call by call: the first tells which call ends a writing, the second one
// is killed right before it is written.
TEST(KillWithinAStatusFile, LeavesItEmptyUntilTheNextLifeWritesIt) {
    std::uint64_t closing = 0;
    {
        Story story("-E362", 0s);
        story.Start();
        story.RunFor(2min);
        const Duration before = story.LastWritten(kStatistics);
        ASSERT_TRUE(story.RunUntil([&] { return story.LastWritten(kStatistics) > before; }, 1min));
        closing = story.daemon.Calls();
    }
    Story story("-E362", 0s);
    story.daemon.ExpectEndBySignal();
    story.Start();
    story.RunFor(2min);
    story.daemon.SignalAtCall(closing - 1, SIGKILL);
    story.RunFor(1min);
    ASSERT_FALSE(story.daemon.Running());
    ASSERT_EQ(story.daemon.EndingSignal(), SIGKILL);
    EXPECT_TRUE(rig::Files::Exists(kStatistics));
    EXPECT_EQ(rig::Files::Read(kStatistics), "");
    story.LiveUntilItWorks();
    EXPECT_NE(rig::Files::Read(kStatistics), "");
}

}  // namespace
