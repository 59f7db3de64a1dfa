// A logger on a file in the test's own folder, at a known time.
#pragma once

#include <filesystem>
#include <string>

#include "fakes/fixture.h"
#include "support/logger.h"

class LoggerTest : public fake::DaemonTest {
  protected:
    LoggerTest() { world.now_us = 1772510706LL * 1000000; }  // 2026-03-03 04:05:06 UTC
    ~LoggerTest() override { logger_.CloseLogFile(); }

    bool Line(const std::string& text, int force = 0) {
        std::string message = text;
        return logger_.LogIt(message, force);
    }
    // Init() itself takes over no file: the daemon calls it once.
    bool Init(const std::string& path, std::int32_t kilobytes, std::int32_t time_stamps,
              const char* time_format) {
        logger_.CloseLogFile();
        return logger_.Init(path, kilobytes, time_stamps, time_format);
    }
    void Open(std::int32_t time_stamps = 0) { Init(path_, 50, time_stamps, nullptr); }
    std::string Written() { return ReadAll(path_); }
    void Resize(std::uintmax_t size) { std::filesystem::resize_file(path_, size); }
    bool Exists(const std::string& suffix = "") { return std::filesystem::exists(path_ + suffix); }

    const std::string path_ = Folder() + "/csq";
    cKVTLogger logger_;
};
