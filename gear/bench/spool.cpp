// What a file in the SMS spool costs: listing it, and looking at its age.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fakes/fixture.h"
#include "sms/spool.h"

namespace {

using Clock = std::chrono::steady_clock;

double Nanoseconds(Clock::duration taken, int files) {
    return std::chrono::duration<double, std::nano>(taken).count() / files;
}

class Spool : public fake::DaemonTest {};

TEST_F(Spool, CostsPerFile) {
    for (const int files : {10, 1000, 100000}) {
        const std::string folder = Folder() + "/" + std::to_string(files) + "/";
        std::filesystem::create_directory(folder);
        for (int i = 0; i < files; ++i) std::ofstream(folder + "message." + std::to_string(i));
        // Young files: nothing is deleted.
        world.now_us = std::chrono::duration_cast<std::chrono::microseconds>(
                           std::chrono::system_clock::now().time_since_epoch())
                           .count();

        int names = 0;
        const auto begin = Clock::now();
        ASSERT_EQ(ReadSmsDirectory(folder, [&](const std::string&) { return ++names > 0; }), 0);
        const auto listed = Clock::now();
        DeleteOldSmSFiles(folder);
        const auto aged = Clock::now();
        ASSERT_EQ(names, files);
        std::printf("%7d files: listing %8.0f ns a file, listing and ageing %8.0f ns a file\n",
                    files, Nanoseconds(listed - begin, files), Nanoseconds(aged - listed, files));
    }
}

}  // namespace
