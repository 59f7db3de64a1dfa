// Files are written whole, and no link or FIFO in their place does harm.
#include "support/text_file_writer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "fakes/fixture.h"
#include "fakes/terminal.h"

namespace {

class TextFileWriter : public fake::DaemonTest {
  protected:
    const std::string path_ = Folder() + "/status";
};

TEST_F(TextFileWriter, EveryStoredLineEndsInOneNewline) {
    cTextFileWriter file(path_);
    file.AddLine("A=1");
    file.AddLine("B=2\n");
    file.AddLine("");
    file.AddLine("C\r\n");
    EXPECT_TRUE(file.WriteFile());
    EXPECT_EQ(ReadAll(path_), "A=1\nB=2\n\nC\r\n");
}

TEST_F(TextFileWriter, TheLinesStartEmpty) {
    const cTextFileWriter file(path_);
    EXPECT_TRUE(file.empty());
    EXPECT_TRUE(file.WriteFile());
    EXPECT_TRUE(std::filesystem::exists(path_));
    EXPECT_EQ(ReadAll(path_), "");
}

TEST_F(TextFileWriter, InsertsBeforeTheIndexedLine) {
    cTextFileWriter file(path_);
    file.AddLine("b");
    file.AddLine("d");
    file.InsertLine("a", 0);
    file.InsertLine("c\n", 2);
    file.InsertLine("e", 4);
    file.InsertLine("f", 99);
    file.WriteFile();
    EXPECT_EQ(ReadAll(path_), "a\nb\nc\nd\ne\nf\n");
}

TEST_F(TextFileWriter, ReplacesALongerFileWhole) {
    WriteTemp("status", "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n");
    cTextFileWriter file(path_);
    file.AddLine("x");
    file.AddLine("y");
    EXPECT_TRUE(file.WriteFile());
    EXPECT_EQ(ReadAll(path_), "x\ny\n");
    EXPECT_TRUE(file.WriteFile());
    EXPECT_EQ(ReadAll(path_), "x\ny\n");
}

TEST_F(TextFileWriter, LinesChangedInPlaceAreWrittenExactlyAsStored) {
    cTextFileWriter file(path_);
    file.AddLine("a");
    file[0] = "raw";
    file.WriteFile();
    EXPECT_EQ(ReadAll(path_), "raw");
}

TEST_F(TextFileWriter, AFileThatCannotBeOpenedIsReported) {
    cTextFileWriter file(Folder() + "/missing/status");
    file.AddLine("a");
    EXPECT_FALSE(file.WriteFile());
    EXPECT_FALSE(cTextFileWriter(Folder()).WriteFile());
}

TEST_F(TextFileWriter, ALinkBelowTmpIsReplacedAndNotFollowed) {
    const std::string victim = WriteTemp("victim", "precious");
    char folder[] = "/tmp/modemd-test-XXXXXX";
    const std::string path = std::string(mkdtemp(folder)) + "/status";
    ASSERT_EQ(symlink(victim.c_str(), path.c_str()), 0);
    cTextFileWriter file(path);
    file.AddLine("a");
    EXPECT_TRUE(file.WriteFile());
    EXPECT_EQ(ReadAll(victim), "precious");
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(ReadAll(path), "a\n");
    std::filesystem::remove_all(folder);
}

TEST_F(TextFileWriter, AFifoWithoutReaderCountsAsAFileThatCannotBeOpened) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    cTextFileWriter file(path_);
    file.AddLine("a");
    EXPECT_FALSE(file.WriteFile());
}

// /dev/full opens like any file and refuses every write.
TEST_F(TextFileWriter, AFullFileSystemIsNotReported) {
    cTextFileWriter file("/dev/full");
    file.AddLine("a");
    EXPECT_TRUE(file.WriteFile());
}

TEST_F(TextFileWriter, WhatTheSystemTakesInPiecesIsWrittenWhole) {
    world.longest_write = 3;
    cTextFileWriter file(path_);
    file.AddLine("one");
    file.AddLine("and two");
    EXPECT_TRUE(file.WriteFile());
    EXPECT_EQ(ReadAll(path_), "one\nand two\n");
}

// With the mask of the daemon, everybody may read and nobody else write.
TEST_F(TextFileWriter, IsMadeForAllToRead) {
    const mode_t mask = umask(022);
    const std::string below_tmp = "/tmp/" + std::filesystem::path(Folder()).filename().string();
    for (const std::string& path : {path_, below_tmp}) {
        cTextFileWriter file(path);
        file.AddLine("a");
        EXPECT_TRUE(file.WriteFile());
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0644U) << path;
    }
    unlink(below_tmp.c_str());
    umask(mask);
}

TEST_F(TextFileWriter, ATerminalInItsPlaceIsNotTaken) {
    EXPECT_FALSE(fake::GetsTheTerminal([](const std::string& path) {
        cTextFileWriter file(path);
        file.AddLine("a");
        EXPECT_TRUE(file.WriteFile());
    }));
}

// A display that holds the file open goes on seeing what is written.
TEST_F(TextFileWriter, KeepsTheSameFileForLife) {
    WriteTemp("status", "old, and longer");
    std::FILE* reader = std::fopen(path_.c_str(), "r");
    ASSERT_NE(reader, nullptr);
    cTextFileWriter file(path_);
    file.AddLine("new");
    file.WriteFile();
    char text[32] = {};
    EXPECT_EQ(std::fread(text, 1, sizeof(text), reader), 4u);
    EXPECT_STREQ(text, "new\n");
    std::fclose(reader);
}

}  // namespace
