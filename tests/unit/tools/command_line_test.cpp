#include "modemctl/command_line.h"

#include <gtest/gtest.h>

#include "modemctl/exit_code.h"

namespace modemctl {
namespace {

Session g_seen;

int RunSample(Session& session) {
    g_seen = session;
    return kNotGood;
}

const Subcommand kSample = {"sample",
                            "[WORD]",
                            "a sample",
                            "What it does.",
                            {{"--with", "THING", "with it"}, {"--quick", nullptr, "quickly"}},
                            {{"modemctl sample x", "an example"}},
                            1,
                            RunSample};

struct Called {
    int status;
    std::string output, complaint;
};

Called Call(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Called called;
    g_seen = Session();
    called.status = RunCommandLine(words, {&kSample});
    called.output = testing::internal::GetCapturedStdout();
    called.complaint = testing::internal::GetCapturedStderr();
    return called;
}

TEST(CommandLine, TakesOptionsAnywhere) {
    EXPECT_EQ(Call({"--json", "sample", "--with=a thing", "word", "--max-age", "2m"}).status,
              kNotGood);
    EXPECT_TRUE(g_seen.json);
    EXPECT_EQ(g_seen.Value("--with"), "a thing");
    EXPECT_EQ(g_seen.max_age, 120);
    EXPECT_EQ(g_seen.arguments, std::vector<std::string>{"word"});
    EXPECT_FALSE(g_seen.Has("--quick"));
}

TEST(CommandLine, LeavesWordsBehindTwoDashesAlone) {
    Call({"sample", "--", "--quick"});
    EXPECT_EQ(g_seen.arguments, std::vector<std::string>{"--quick"});
    Call({"sample", "-"});
    EXPECT_EQ(g_seen.arguments, std::vector<std::string>{"-"});
}

TEST(CommandLine, ComplainsWithStatus2AndPrintsNothing) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"nothing"},
        {"sample", "--unknown"},
        {"sample", "--with"},
        {"sample", "--quick=yes"},
        {"sample", "one", "two"},
        {"sample", "--max-age", "soon"},
        {"sample", "--now", "then"},
        {"sample", "--color", "blue"},
        {"sample", "--root", "/nowhere/at/all"},
    };
    for (const auto& words : wrong) {
        const Called called = Call(words);
        EXPECT_EQ(called.status, kUsage);
        EXPECT_EQ(called.output, "");
        EXPECT_NE(called.complaint, "");
    }
}

TEST(CommandLine, EscapesWhatItComplainsOf) {
    EXPECT_EQ(Call({"\x1b[2J"}).complaint.find('\x1b'), std::string::npos);
}

TEST(CommandLine, HelpsWithAnExample) {
    const Called help = Call({"sample", "--help"});
    EXPECT_EQ(help.status, kGood);
    EXPECT_NE(help.output.find("modemctl sample x"), std::string::npos);
    EXPECT_NE(help.output.find("--with THING"), std::string::npos);
    EXPECT_EQ(Call({"help"}).output, Call({"--help"}).output);
    EXPECT_NE(Call({"-h"}).output.find("sample"), std::string::npos);
}

}  // namespace
}  // namespace modemctl
