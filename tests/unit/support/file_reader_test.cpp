// Whatever stands at a path, reading it neither blocks nor eats the memory.
#include "support/file_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <filesystem>
#include <functional>
#include <string>

#include "fakes/fixture.h"

namespace {

std::function<void()> g_behind_next_open;  // happens between two steps of the reader

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    // What every C library adds: without it a 32-bit kernel interface ends files at 2 GiB.
    const auto fd =
        static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode));
    if (const std::function<void()> action = std::move(g_behind_next_open)) {
        g_behind_next_open = nullptr;
        action();
    }
    return fd;
}

namespace {

class FileReader : public fake::DaemonTest {
  protected:
    std::string text_ = "left over";
};

TEST_F(FileReader, ReadsAFileAsItIs) {
    const std::string path = WriteTemp("f", std::string("a\0b\n", 4));
    EXPECT_TRUE(ReadTextFile(path, LastCharacter::kAsItIs, text_));
    EXPECT_EQ(text_, std::string("a\0b\n", 4));
}

TEST_F(FileReader, DoublesTheLastCharacterOnRequest) {
    EXPECT_TRUE(ReadTextFile(WriteTemp("f", "A=12"), LastCharacter::kDoubled, text_));
    EXPECT_EQ(text_, "A=122");
    EXPECT_TRUE(ReadTextFile(WriteTemp("g", "A\n"), LastCharacter::kDoubled, text_));
    EXPECT_EQ(text_, "A\n\n");
}

TEST_F(FileReader, AnEmptyFileHasNoLastCharacter) {
    EXPECT_TRUE(ReadTextFile(WriteTemp("f", ""), LastCharacter::kDoubled, text_));
    EXPECT_EQ(text_, "");
}

TEST_F(FileReader, AMissingFileIsReportedAndGivesNoText) {
    EXPECT_FALSE(ReadTextFile(Folder() + "/none", LastCharacter::kAsItIs, text_));
    EXPECT_EQ(text_, "");
}

TEST_F(FileReader, WhatIsNoRegularFileReadsAsEmpty) {
    const std::string fifo = Folder() + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {Folder(), fifo, std::string("/dev/zero")}) {
        SCOPED_TRACE(path);
        text_ = "left over";
        EXPECT_TRUE(ReadTextFile(path, LastCharacter::kDoubled, text_));
        EXPECT_EQ(text_, "");
    }
}

// Else a device could be put in the place of a file at the last moment.
TEST_F(FileReader, ReadsTheVeryFileThatItLookedAt) {
    const std::string path = WriteTemp("f", "first");
    const std::string other = WriteTemp("other", "second");
    g_behind_next_open = [&] { std::filesystem::rename(other, path); };
    EXPECT_TRUE(ReadTextFile(path, LastCharacter::kAsItIs, text_));
    EXPECT_EQ(text_, "first");
    EXPECT_EQ(ReadAll(path), "second");
}

TEST_F(FileReader, LeavesNoDescriptorOpen) {
    const auto count = [] {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return std::distance(begin(all), end(all));
    };
    const std::string path = WriteTemp("f", "text");
    const auto before = count();
    for (const std::string& what : {path, Folder(), Folder() + "/none", std::string("/dev/zero")}) {
        ReadTextFile(what, LastCharacter::kAsItIs, text_);
    }
    EXPECT_EQ(count(), before);
}

TEST_F(FileReader, AFileOfAGigabyteIsCutAtTheLimit) {
    const std::string path = WriteTemp("huge", "A=1\n");
    std::filesystem::resize_file(path, std::uintmax_t{1} << 30);
    EXPECT_TRUE(ReadTextFile(path, LastCharacter::kDoubled, text_));
    EXPECT_EQ(text_.size(), kLongestTextFile);
    EXPECT_EQ(text_.substr(0, 4), "A=1\n");
}

TEST_F(FileReader, FilesOfTheKernelAreReadThoughTheirSizeIsZero) {
    EXPECT_TRUE(ReadTextFile("/proc/self/cmdline", LastCharacter::kAsItIs, text_));
    EXPECT_FALSE(text_.empty());
}

}  // namespace
