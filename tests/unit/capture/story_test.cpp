#include "capture/story.h"

#include "field_log.h"

namespace capture {
namespace {

using testing::HasSubstr;

const std::string kText =
    "story 881 -cind1\n"
    "began 2026-03-14 09:15:00\n"
    "\n"
    "start\n"
    "> AT+CSQ\n"
    "< 25ms \\r\\n\n"
    "| +CSQ: 17,99\\r\\n\n"
    "< 75ms \\x00\\\\\\x20\n"
    "lost\n"
    "> Hello\\x1a\n";

TEST(Story, IsReadAsItWasWritten) {
    const Story story = ReadStory(kText);
    EXPECT_EQ(story.arguments, "881 -cind1");
    ASSERT_EQ(story.exchanges.size(), 3U);
    EXPECT_TRUE(story.exchanges[0].IsStart());
    EXPECT_EQ(story.exchanges[1].answer[0].bytes, "\r\n+CSQ: 17,99\r\n");
    EXPECT_EQ(story.exchanges[1].answer[1].delay, 75 * kMillisecond);
    EXPECT_EQ(story.exchanges[1].answer[1].bytes, std::string("\0\\ ", 3));
    EXPECT_TRUE(story.exchanges[2].after_loss);
    EXPECT_EQ(story.exchanges[2].command, "Hello\x1a");
    EXPECT_EQ(WriteStory(story), kText);
}

TEST(Story, AnyBytesComeBack) {
    std::string all;
    for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
    EXPECT_EQ(Unescaped(Escaped(all)), all);
    EXPECT_EQ(Escaped("a "), "a\\x20");
}

TEST(Story, HasALifeForEachStart) {
    const Story story = ReadStory("story 881\n> AT\n\nstart\n> AT+A\n> AT+B\nstart\n> AT+C\n");
    const std::vector<Story> lives = story.Lives();
    ASSERT_EQ(lives.size(), 3U);
    EXPECT_EQ(lives[0].exchanges.size(), 1U);
    EXPECT_EQ(lives[1].exchanges.size(), 2U);
    EXPECT_EQ(lives[2].exchanges[0].command, "AT+C");
}

TEST(Story, SaysWhatItDoesNotUnderstand) {
    struct Row {
        const char* text;
        const char* complaint;
    };
    const Row rows[] = {
        {"", "no story"},
        {"story 881\nfoo\n", "line 2: what is 'foo'?"},
        {"story 881\n< 25ms x\n", "line 2: an answer without a command"},
        {"story 881\n> AT\n| x\n", "line 3: nothing was said before"},
        {"story 881\n> AT\n< soon x\n", "line 3: no delay"},
        {"story 881\n> AT\n< -1ms x\n", "line 3: no delay"},
        {"story 881\n> AT\n< 25ms \\q\n", "line 3: a backslash"},
        {"story 881\n> AT\n< 25ms \\xg0\n", "line 3: \\x wants"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        try {
            ReadStory(row.text);
            FAIL() << "was understood";
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(row.complaint));
        }
    }
}

}  // namespace
}  // namespace capture
