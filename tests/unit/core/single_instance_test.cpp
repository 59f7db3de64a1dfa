// One copy at a time: what the pid file says, and who is believed to be running.
#include "core/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "fakes/fixture.h"
#include "fakes/terminal.h"

namespace {

// The path this test program was started by, as /proc shows it.
std::string OwnName() {
    return std::filesystem::path(testing::internal::GetArgvs()[0]).filename();
}

// The id of a process that has just ended.
int DeadPid() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

class SingleInstance : public fake::DaemonTest {
  protected:
    const std::string pid_file_ = Folder() + "/modemd.pid";
    const std::string own_pid_ = std::to_string(getpid());
    const std::string written_ = "Writing pid " + own_pid_ + " to pidfile '" + pid_file_ + "'";
};

TEST_F(SingleInstance, ReadsTheStoredNumber) {
    struct Row {
        const char* text;
        int expected;
    };
    const Row rows[] = {
        {"4242", 4242}, {" \n17\n", 17}, {"12abc", 12}, {"abc", 0}, {"", 0}, {"-5", -5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ReadStoredPid(WriteTemp("modemd.pid", row.text)), row.expected);
    }
    EXPECT_EQ(ReadStoredPid(Folder() + "/none"), 0);
}

TEST_F(SingleInstance, RubbishInThePidFileIsNoNumber) {
    std::string rubbish(100000, '\xff');
    rubbish[3] = '\0';
    EXPECT_EQ(ReadStoredPid(WriteTemp("modemd.pid", rubbish)), 0);
    EXPECT_EQ(ReadStoredPid(Folder()), 0);
}

TEST_F(SingleInstance, ACopyRunsWhenItsPathHoldsTheName) {
    EXPECT_TRUE(IsRunningCopy(getpid(), OwnName()));
    EXPECT_TRUE(IsRunningCopy(getpid(), OwnName().substr(1, 3)));
    EXPECT_FALSE(IsRunningCopy(getpid(), OwnName() + "x"));
}

TEST_F(SingleInstance, OnlyTheFirstElementOfTheCommandLineCounts) {
    int ready[2] = {-1, -1};
    int silent[2] = {-1, -1};
    ASSERT_EQ(pipe(ready), 0);
    ASSERT_EQ(pipe(silent), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ready[1], 1);
        dup2(silent[0], 0);
        execl("/bin/sh", "started-as", "-c", "echo; read word; :", "modemd", nullptr);
        _exit(1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_TRUE(IsRunningCopy(child, "started-as"));
    EXPECT_FALSE(IsRunningCopy(child, "modemd"));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    for (const int end : {ready[0], ready[1], silent[0], silent[1]}) close(end);
}

TEST_F(SingleInstance, NobodyRunsUnderTheIdOfAnEndedProcess) {
    EXPECT_FALSE(IsRunningCopy(DeadPid(), OwnName()));
    EXPECT_FALSE(IsRunningCopy(0, OwnName()));
    EXPECT_FALSE(IsRunningCopy(-1, OwnName()));
}

TEST_F(SingleInstance, WritesTheOwnIdWithoutALineEnd) {
    ExpectKeptDescriptors(1);  // the lock
    EnforceSingleInstance(pid_file_, OwnName());
    EXPECT_EQ(ReadAll(pid_file_), own_pid_);
    EXPECT_EQ(world.log, (std::vector<std::string>{written_}));
}

TEST_F(SingleInstance, OverwritesAStalePidFile) {
    ExpectKeptDescriptors(4);  // a lock each time
    for (const std::string& stale : {std::to_string(DeadPid()), std::string("1234567890 rubbish"),
                                     std::string("0"), std::string()}) {
        SCOPED_TRACE(stale);
        std::filesystem::remove(pid_file_);  // the lock on it lasts as long as the process
        WriteTemp("modemd.pid", stale);
        world.log.clear();
        EnforceSingleInstance(pid_file_, OwnName());
        EXPECT_EQ(ReadAll(pid_file_), own_pid_);
        EXPECT_EQ(world.log, (std::vector<std::string>{written_}));
    }
}

// A container gives out the same few ids at every start.
TEST_F(SingleInstance, TheOwnIdIsNoOtherCopy) {
    ExpectKeptDescriptors(1);  // the lock
    WriteTemp("modemd.pid", own_pid_);
    EnforceSingleInstance(pid_file_, OwnName());
    EXPECT_EQ(world.log, (std::vector<std::string>{written_}));
}

TEST_F(SingleInstance, OverwritesThePidFileOfAnotherProgram) {
    ExpectKeptDescriptors(1);  // the lock
    WriteTemp("modemd.pid", own_pid_);
    EnforceSingleInstance(pid_file_, "some-other-daemon");
    EXPECT_EQ(world.log, (std::vector<std::string>{written_}));
}

TEST_F(SingleInstance, ATerminalInThePidFilesPlaceIsNotTaken) {
    EXPECT_FALSE(fake::GetsTheTerminal(
        [](const std::string& path) { EnforceSingleInstance(path, "nobody-runs-so"); }));
}

TEST_F(SingleInstance, GoesOnSilentlyWithoutAPidFile) {
    EnforceSingleInstance(Folder() + "/none/modemd.pid", OwnName());
    EXPECT_TRUE(world.log.empty());
    ASSERT_EQ(mkfifo(pid_file_.c_str(), 0600), 0);
    EnforceSingleInstance(pid_file_, OwnName());
    EXPECT_TRUE(world.log.empty());
}

using SingleInstanceDeathTest = SingleInstance;

TEST_F(SingleInstanceDeathTest, ARunningCopyEndsThisOneWithMinusOne) {
    WriteTemp("modemd.pid", own_pid_);
    EXPECT_EXIT(
        {
            // The log lives in the child; say on standard error what it holds there.
            atexit([] {
                for (const std::string& line : fake::Current().log)
                    std::fprintf(stderr, "%s\n", line.c_str());
            });
            EnforceSingleInstance(pid_file_, OwnName());
        },
        testing::ExitedWithCode(255),
        "^Another " + OwnName() + " process is already running, exiting\n$");
    EXPECT_EQ(ReadAll(pid_file_), own_pid_);
}

// The other one was started in the same instant: it holds the lock and has not written its id yet.
TEST_F(SingleInstanceDeathTest, TheLockDecidesWhileTheFileIsStillEmpty) {
    const std::string path = WriteTemp("modemd.pid", "");
    const int other = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EXIT(EnforceSingleInstance(pid_file_, OwnName()), testing::ExitedWithCode(255), "");
    EXPECT_EQ(ReadAll(pid_file_), "") << "the other one's file was touched";
    close(other);
}

// Of many that start at once, exactly one goes on.
TEST_F(SingleInstance, OfManyStartedAtOnceOneSurvives) {
    constexpr int kCopies = 20;
    int gate[2] = {-1, -1};
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> copies;
    for (int i = 0; i < kCopies; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            char byte = 0;
            close(gate[1]);
            if (read(gate[0], &byte, 1) != 0) _exit(2);  // returns when the gate is closed
            EnforceSingleInstance(pid_file_, OwnName());
            kill(getpid(), SIGSTOP);  // the survivor keeps its lock until all have tried
            _exit(0);
        }
        copies.push_back(child);
    }
    close(gate[0]);
    close(gate[1]);
    int survivors = 0;
    int gave_way = 0;
    for (const pid_t copy : copies) {
        int status = 0;
        ASSERT_EQ(waitpid(copy, &status, WUNTRACED), copy);
        survivors += WIFSTOPPED(status) ? 1 : 0;
        gave_way += WIFEXITED(status) && WEXITSTATUS(status) == 255 ? 1 : 0;
    }
    for (const pid_t copy : copies) kill(copy, SIGKILL);
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    EXPECT_EQ(survivors, 1);
    EXPECT_EQ(gave_way, kCopies - 1);
}

}  // namespace
