// Command lines reach the shell as they are; foreign words reach it as one word.
#include "support/shell.h"

#include "fakes/fixture.h"

namespace {

class Shell : public fake::DaemonTest {};

TEST_F(Shell, RunsTheLineAsItStandsAndReturnsItsStatus) {
    const std::string line = "ifconfig wwan0 0.0.0.0 up &> /dev/null";
    EXPECT_EQ(RunShell(line), 0);
    world.shell_status[line] = 256;
    EXPECT_EQ(RunShell(line), 256);
    EXPECT_EQ(world.shell, (std::vector<std::string>{line, line}));
}

TEST(ShellWord, OrdinaryWordsComeBackAsTheyAre) {
    for (const char* word : {"msg_1.txt", "/tmp/sms/send/A-z0.9", "-rf"}) {
        EXPECT_EQ(ShellWord(word), word);
    }
}

TEST(ShellWord, AnyOtherWordIsQuoted) {
    EXPECT_EQ(ShellWord(""), "''");
    EXPECT_EQ(ShellWord("a b"), "'a b'");
    EXPECT_EQ(ShellWord("$(reboot)"), "'$(reboot)'");
    EXPECT_EQ(ShellWord("`x`\n"), "'`x`\n'");
    EXPECT_EQ(ShellWord("it's"), "'it'\\''s'");
    EXPECT_EQ(ShellWord("'"), "''\\'''");
    EXPECT_EQ(ShellWord("\xff"), "'\xff'");
}

}  // namespace
