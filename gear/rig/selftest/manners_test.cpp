// What the rig notices at the end of every story.
#include "rig/manners.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "rig/private_root.h"

using namespace rig;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Faults = std::vector<std::string>;

namespace {

Faults NeedlessAmong(const std::vector<Pause>& pauses) {
    const auto memory = std::make_unique<Shared>();
    for (const Pause& pause : pauses) memory->pauses[memory->pause_count++] = pause;
    return NeedlessPauses(*memory);
}

void MakeFile(const std::string& path, mode_t mode) {
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, mode);
    fchmod(fd, mode);
    close(fd);
}

}  // namespace

TEST(Manners, APauseOfTheScheduleIsFineBehindWhatItFollows) {
    EXPECT_THAT(
        NeedlessAmong({{Deed::kPortWrite, 0, 0, 20000, 7}, {Deed::kSleep, 0, 1000000, 200000, 1}}),
        IsEmpty());
}

TEST(Manners, AnyOtherLengthIsNeedlessAndSoIsTheRightOneBehindAnotherDeed) {
    EXPECT_THAT(NeedlessAmong({{Deed::kShell, 0, 0, 100000, 3}}),
                ElementsAre("0.100000 s behind a command line, 3 times"));
    EXPECT_THAT(NeedlessAmong({{Deed::kOther, 0, 0, 20000, 1}}),
                ElementsAre("0.020000 s behind something else, 1 times"));
    EXPECT_THAT(NeedlessAmong({{Deed::kSleep, 0, 20000, 200000, 1}}),
                ElementsAre("0.200000 s behind a pause of 0.020000 s, 1 times"));
}

TEST(Manners, ADescriptorThatNobodyKeepsIsALeak) {
    EmptyPrivateFolders();
    const std::size_t before = LeakedDescriptors(getpid()).size();  // the test program's own
    const int fd = open("/var/log/other", O_RDONLY | O_CREAT | O_CLOEXEC, 0644);
    EXPECT_EQ(LeakedDescriptors(getpid()).size(), before + 1);
    close(fd);
    const int log = open("/var/log/csq", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    EXPECT_EQ(LeakedDescriptors(getpid()).size(), before);
    const int again = open("/var/log/csq", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(LeakedDescriptors(getpid()).size(), before + 1);
    close(log);
    close(again);
}

TEST(Manners, AFileThatNotAllMayReadOrThatOthersMayWriteHasAWrongMode) {
    EmptyPrivateFolders();
    MakeFile("/var/log/csq", 0644);
    EXPECT_THAT(WrongModes(), IsEmpty());
    MakeFile("/var/log/lightbar", 0600);
    MakeFile("/var/run/modemd.pid", 0666);
    EXPECT_THAT(WrongModes(), ElementsAre("/var/log/lightbar has the mode 0600",
                                          "/var/run/modemd.pid has the mode 0666"));
}
