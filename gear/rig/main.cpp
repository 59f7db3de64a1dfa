// The main function of every scenario program.

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "rig/private_root.h"
#include "rig/program.h"

namespace {

// A report that was asked for must land on the machine's disk.
std::string ReportFolder() {
    const std::string output = GTEST_FLAG_GET(output);
    const auto colon = output.find(':');
    if (colon == std::string::npos) return std::filesystem::current_path();
    return std::filesystem::absolute(output.substr(colon + 1)).parent_path();
}

// On a developer's machine a test that cannot be run there is skipped and named; a machine
// that decides about a change must run them all.
int WithoutPrivateRoot() {
    return std::getenv("CI") != nullptr ? EXIT_FAILURE : rig::kNoPrivateRoot;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    const std::string daemon = std::filesystem::absolute(rig::DaemonProgram());
    const std::string daemon_folder = std::filesystem::path(daemon).parent_path();
    std::vector<std::string> keep = {RIG_SOURCE, RIG_BUILD, daemon_folder, ReportFolder()};
    if (const char* traces = std::getenv(rig::kTracesVariable)) keep.emplace_back(traces);
    const int status = rig::RunInPrivateRoot(keep, [] { return RUN_ALL_TESTS(); });
    return status == rig::kNoPrivateRoot ? WithoutPrivateRoot() : status;
}
