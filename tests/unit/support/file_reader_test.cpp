// Whatever stands at a path, reading it neither blocks nor eats the memory.
#include "support/file_reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "fakes/fixture.h"

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
