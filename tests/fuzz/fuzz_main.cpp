#include "fuzz_main.h"

#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "rig/private_root.h"
#include "state/settings.h"

extern "C" int LLVMFuzzerRunDriver(int* argc, char*** argv,
                                   int (*test)(const std::uint8_t* data, std::size_t size));

namespace {

int RunOne(const std::uint8_t* data, std::size_t size) {
    FuzzOne(data, size);
    return 0;
}

// The engine's memory watch is a thread that sleeps, and sleeps are the daemon's here; a limit for
// a single allocation takes its place.
int RunEngine(int argc, char** argv) {
    std::string no_watch = "-rss_limit_mb=0";
    std::string limit = "-malloc_limit_mb=512";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, {no_watch.data(), limit.data()});
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    char** words = arguments.data();
    for (const char* folder :
         {"/tmp/sms/send", "/tmp/sms/recv", "/tmp/sms/send_fail", "/etc/kvt/wireless"}) {
        std::filesystem::create_directories(folder);
    }
    return LLVMFuzzerRunDriver(&count, &words, RunOne);
}

}  // namespace

void Must(bool holds, const char* what) {
    if (holds) return;
    dprintf(STDERR_FILENO, "it does not hold: %s\n", what);  // a target may have closed the stream
    std::abort();
}

FuzzedInput::FuzzedInput(const std::uint8_t* data, std::size_t size, std::size_t choices)
    : choices_(data, data + std::min(size, choices)) {
    if (size <= choices) return;
    parts_.emplace_back();
    for (const std::uint8_t* byte = data + choices; byte != data + size; ++byte) {
        if (*byte == 0x1e) {
            parts_.emplace_back();
        } else {
            parts_.back() += static_cast<char>(*byte);
        }
    }
}

FreshDaemon::FreshDaemon(unsigned level_byte) {
    g_i_DebugLevel = static_cast<int>(level_byte % 6) - 1;
}

void FreshDaemon::Write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

int main(int argc, char** argv) {
    return rig::RunInPrivateRoot({FUZZ_SOURCE, FUZZ_BUILD}, [&] { return RunEngine(argc, argv); });
}
