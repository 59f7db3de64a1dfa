#include "copied_router.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>

#include "state/published.h"

namespace fs = std::filesystem;

namespace {

std::string UtcText(std::time_t when) {
    char text[32] = "";
    std::tm utc = {};
    gmtime_r(&when, &utc);
    return std::string(text, std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S+00:00", &utc));
}

// A fresh folder in the private root's /tmp, which is not the spool's part of it.
std::string NewFolder() {
    std::string folder = "/tmp/copied-router-XXXXXX";
    return mkdtemp(folder.data());
}

}  // namespace

CopiedRouter::CopiedRouter() : root_(NewFolder()), now_(std::time(nullptr)) {
    Write("/proc/uptime", "3600.00 3600.00\n");
    WriteFacts();
}

CopiedRouter::CopiedRouter(const rig::World& world) : root_(NewFolder()) {
    now_ = static_cast<std::time_t>(world.clock.WallSeconds());
    CopyFiles();
    WriteLog(world);
    Write("/proc/uptime", "3600.00 3600.00\n");
    if (world.daemon.Running()) AddProcess(world.daemon.ProcessId(), "modemd");
    address_ = "none";
}

CopiedRouter::~CopiedRouter() {
    fs::remove_all(root_);
}

// With the story's time on them, as far as it matters: that of the copying.
void CopiedRouter::CopyFiles() const {
    for (const char* folder : {"/var/log", "/var/run", "/etc/kvt", "/tmp/sms"}) {
        if (!fs::exists(folder)) continue;
        fs::create_directories(fs::path(root_ + folder).parent_path());
        fs::copy(folder, root_ + folder, fs::copy_options::recursive);
    }
    timespec times[2] = {};
    times[0].tv_sec = times[1].tv_sec = now_;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
        utimensat(AT_FDCWD, entry.path().c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
}

void CopiedRouter::WriteLog(const rig::World& world) const {
    const std::time_t start =
        now_ - std::chrono::duration_cast<std::chrono::seconds>(world.clock.Now()).count();
    std::string log;
    for (const rig::Event& event : world.trace.Of(rig::Kind::kLog)) {
        log += UtcText(start + event.at / 1000000) + " router modemd: " + event.text + "\n";
    }
    Write("/var/log/messages", log);
}

void CopiedRouter::WriteFacts() const {
    std::string facts = "now=" + UtcText(now_) + "\n";
    if (!address_.empty()) facts += "address=" + address_ + "\n";
    Write("/modemctl.facts", facts);
}

void CopiedRouter::Write(const std::string& path, const std::string& text) const {
    fs::create_directories(fs::path(root_ + path).parent_path());
    std::ofstream(root_ + path, std::ios::binary) << text;
}

void CopiedRouter::Remove(const std::string& path) const {
    fs::remove_all(root_ + path);
}

void CopiedRouter::AddProcess(int id, const std::string& command) const {
    Write("/proc/" + std::to_string(id) + "/cmdline", command + '\0');
}

ToolResult CopiedRouter::Run(const std::string& arguments) const {
    WriteFacts();
    const std::string line =
        "TZ=UTC LC_ALL=C NO_COLOR=1 " MODEMCTL " " + arguments + " --root " + root_ + " 2>&1";
    ToolResult result;
    std::FILE* pipe = popen(line.c_str(), "r");
    std::array<char, 4096> piece = {};
    for (std::size_t count = 1; count > 0;) {
        count = std::fread(piece.data(), 1, piece.size(), pipe);
        result.output.append(piece.data(), count);
    }
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string CopiedRouter::Cause() const {
    const std::string output = Run("why --json").output;
    if (output.find("\"cause\":null") != std::string::npos) return "none";
    std::smatch found;
    const bool any = std::regex_search(output, found, std::regex("\"cause\":\\{\"id\":\"(\\w+)\""));
    return any ? found[1].str() : output;
}

std::string CopiedRouter::WhyText(const std::string& name) const {
    const std::string output = Run("why --json").output;
    std::smatch found;
    const std::regex member("\"" + name + "\":\"?((?:[^\"\\\\,]|\\\\.|,[^\"])*)");
    return std::regex_search(output, found, member) ? found[1].str() : "";
}
