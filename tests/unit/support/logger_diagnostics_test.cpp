// What the logger says of its own file in the system log, by its own debug level.
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "support/logger_fixture.h"

namespace {

using LoggerDiagnostics = LoggerTest;

TEST_F(LoggerDiagnostics, TellsItsSettingsOnlyAtANonZeroLevel) {
    Open();
    logger_.SetDebugLevel(0);
    logger_.SetSyslogMirror(1);
    logger_.SetFoldRepeats(1);
    EXPECT_TRUE(world.log.empty());
    logger_.SetDebugLevel(-1);
    logger_.SetSyslogMirror(1);
    logger_.SetSyslogMirror(0);
    logger_.SetFoldRepeats(1);
    logger_.SetFoldRepeats(0);
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "cKVTLogger debug level -1",
                             "cKVTLogger also send messages for " + path_ + " to the syslog is On",
                             "cKVTLogger also send messages for " + path_ + " to the syslog is Off",
                             "cKVTLogger Supress messages for " + path_ + " is On",
                             "cKVTLogger Supress messages for " + path_ + " is Off",
                         }));
}

TEST_F(LoggerDiagnostics, LevelOneTellsNothingOfTheFile) {
    Open();
    logger_.SetDebugLevel(1);
    world.log.clear();
    logger_.OpenLogFile();
    logger_.Rotate();
    Line("a");
    EXPECT_TRUE(world.log.empty());
}

TEST_F(LoggerDiagnostics, LevelTwoTellsOpensAndRotations) {
    Open();
    logger_.SetDebugLevel(2);
    world.log.clear();
    logger_.Rotate();
    Line("a");
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "running cKVTLogger::Rotate()",
                             "cKVTLogger::OpenLogFile(): opened " + path_ + " for writing",
                         }));
}

TEST_F(LoggerDiagnostics, LevelTwoTellsAnOpenThatFails) {
    Init(Folder() + "/none/csq", 50, 0, nullptr);
    logger_.SetDebugLevel(2);
    world.log.clear();
    EXPECT_FALSE(logger_.OpenLogFile());
    EXPECT_EQ(world.log.back(), "cKVTLogger::OpenLogFile(): error open " + Folder() +
                                    "/none/csq for writing, errno " + std::to_string(ENOENT));
}

TEST_F(LoggerDiagnostics, LevelThreeTellsEverySizeCheck) {
    Open();
    logger_.SetDebugLevel(3);
    world.log.clear();
    Line("abc");
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "cKVTLogger::CheckRotate(): file size of " + path_ +
                                 " is 4 bytes, max file size is 51200",
                         }));
    Resize(51200);
    world.log.clear();
    logger_.CheckRotate();
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "cKVTLogger::CheckRotate(): file size of " + path_ +
                                 " is 51200 bytes, max file size is 51200",
                             "cKVTLogger::CheckRotate(): file " + path_ +
                                 " is bigger than 51200 bytes, running Rotate()",
                             "running cKVTLogger::Rotate()",
                             "cKVTLogger::OpenLogFile(): opened " + path_ + " for writing",
                         }));
}

TEST_F(LoggerDiagnostics, ARotationOfAFileThatIsGoneMakesANewOne) {
    Open();
    logger_.SetDebugLevel(2);
    std::filesystem::remove(path_);
    world.log.clear();
    logger_.CheckRotate();
    EXPECT_EQ(world.log.back(),
              "cKVTLogger::CheckRotate(): error cannot access " + path_ + ", nothing to rotate");
    EXPECT_TRUE(logger_.Rotate());
    EXPECT_TRUE(
        world.Logged("cKVTLogger::Rotate(): error cannot access " + path_ + ", nothing to rotate"));
    EXPECT_TRUE(Exists());
}

TEST_F(LoggerDiagnostics, AFailedRenameKeepsLoggingIntoTheOldFile) {
    std::filesystem::create_directory(path_ + ".1");
    Open();
    Resize(51200);
    logger_.SetDebugLevel(2);
    world.log.clear();
    EXPECT_TRUE(Line("a"));
    EXPECT_TRUE(
        world.Logged("cKVTLogger::Rotate(): ERROR: rename() gave errno " + std::to_string(EISDIR)));
    EXPECT_TRUE(Line("b"));
    EXPECT_EQ(std::filesystem::file_size(path_), 51204u);
    EXPECT_EQ(world.CountLogged("running cKVTLogger::Rotate()"), 2);
}

TEST_F(LoggerDiagnostics, BelowLevelTwoItKeepsItsTroublesToItself) {
    for (const int level : {-1, 0, 1}) {
        SCOPED_TRACE(level);
        Open();
        logger_.SetDebugLevel(level);
        world.log.clear();
        std::filesystem::remove(path_);
        logger_.CheckRotate();
        EXPECT_TRUE(logger_.Rotate());  // of a file that is gone
        std::filesystem::create_directory(path_ + ".1");
        EXPECT_TRUE(logger_.Rotate());  // the rename fails
        std::filesystem::remove(path_ + ".1");
        EXPECT_TRUE(world.log.empty());
    }
}

// /dev/full opens like any file and refuses every write.
TEST_F(LoggerDiagnostics, AFailedWriteIsReported) {
    Init("/dev/full", 50, 0, nullptr);
    EXPECT_FALSE(Line("a"));
    EXPECT_TRUE(world.log.empty());
    logger_.SetDebugLevel(2);
    EXPECT_FALSE(Line("b"));
    EXPECT_EQ(world.log.back(),
              "cKVTLogger::LogIt(): error cannot access /dev/full for writing, errno " +
                  std::to_string(ENOSPC));
}

}  // namespace
