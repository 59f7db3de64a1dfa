// What a parent leaves behind, and what the daemon makes of it.
#include "core/process.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>

#include "fakes/fixture.h"

namespace {

// In a child, so that nothing of it stays: what the parent left, then the daemon's first step, then
// the question.
bool HoldsAfterPreparing(const std::function<void()>& parent, const std::function<bool()>& holds) {
    const pid_t child = fork();
    if (child == 0) {
        parent();
        PrepareProcess();
        _exit(holds() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void CloseStandardDescriptors() {
    for (int fd = 0; fd <= 2; ++fd) close(fd);
}

bool IsDevNull(int fd) {
    struct stat file = {};
    struct stat null = {};
    return fstat(fd, &file) == 0 && stat("/dev/null", &null) == 0 && file.st_rdev == null.st_rdev &&
           S_ISCHR(file.st_mode);
}

TEST(Process, MissingStandardDescriptorsAreOpenedOnDevNull) {
    EXPECT_TRUE(HoldsAfterPreparing(CloseStandardDescriptors, [] {
        // Children inherit these three, and no other.
        for (int fd = 0; fd <= 2; ++fd) {
            if (!IsDevNull(fd) || (fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0) return false;
        }
        const int next = open("/", O_RDONLY | O_DIRECTORY);
        return next > 2;
    }));
}

TEST(Process, OneMissingDescriptorIsFilledAndTheOthersStay) {
    struct stat before = {};
    ASSERT_EQ(fstat(0, &before), 0);
    EXPECT_TRUE(HoldsAfterPreparing([] { close(2); },
                                    [&] {
                                        struct stat after = {};
                                        return IsDevNull(2) && fstat(0, &after) == 0 &&
                                               after.st_ino == before.st_ino &&
                                               after.st_rdev == before.st_rdev;
                                    }));
}

// Whatever an earlier call has left in errno, what is there is not opened again.
TEST(Process, NoneIsOpenedBeyondTheMissingOne) {
    const auto open_ones = [] {
        int count = 0;
        for (int fd = 0; fd < 64; ++fd) count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
        return count;
    };
    const int before = open_ones();
    for (const int missing : {0, 1, 2}) {
        SCOPED_TRACE(missing);
        EXPECT_TRUE(HoldsAfterPreparing(
            [&] {
                close(missing);
                errno = EBADF;
            },
            [&] { return IsDevNull(missing) && open_ones() == before; }));
    }
}

TEST(Process, IgnoredSignalsGetTheirDefault) {
    for (const int number : {SIGCHLD, SIGHUP, SIGPIPE, SIGTERM, SIGUSR2}) {
        SCOPED_TRACE(number);
        EXPECT_TRUE(HoldsAfterPreparing([&] { std::signal(number, SIG_IGN); },
                                        [&] { return std::signal(number, SIG_IGN) == SIG_DFL; }));
    }
}

// With SIGCHLD ignored the result is -1, and the log says that wwan0 does not exist.
TEST(Process, AShellResultIsKnownAlthoughTheParentIgnoredItsChildren) {
    EXPECT_TRUE(HoldsAfterPreparing([] { std::signal(SIGCHLD, SIG_IGN); },
                                    [] {
                                        const pid_t child = fork();
                                        if (child == 0) _exit(7);
                                        int status = 0;
                                        return waitpid(child, &status, 0) == child &&
                                               WEXITSTATUS(status) == 7;
                                    }));
}

TEST(Process, BlockedSignalsAreUnblocked) {
    EXPECT_TRUE(HoldsAfterPreparing(
        [] {
            sigset_t all;
            sigfillset(&all);
            sigprocmask(SIG_SETMASK, &all, nullptr);
        },
        [] {
            sigset_t blocked;
            sigprocmask(SIG_SETMASK, nullptr, &blocked);
            for (int number = 1; number < NSIG; ++number) {
                if (sigismember(&blocked, number) == 1) return false;
            }
            return true;
        }));
}

TEST(Process, TheUmaskIsOnlyEverTightened) {
    struct Row {
        mode_t inherited, expected;
    };
    for (const Row& row : {Row{0, 022}, Row{002, 022}, Row{022, 022}, Row{077, 077}, Row{027, 027},
                           Row{0111, 0133}}) {
        SCOPED_TRACE(row.inherited);
        EXPECT_TRUE(HoldsAfterPreparing([&] { umask(row.inherited); },
                                        [&] { return umask(0) == row.expected; }));
    }
}

}  // namespace
