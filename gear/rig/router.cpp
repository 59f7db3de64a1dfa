#include "rig/router.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "rig/shell_effects.h"

namespace rig {

namespace {

constexpr Duration kUsualUptime = 1h;

}  // namespace

Router::Router(Shared& memory, Files& files) : memory_(memory), files_(files) {
    SetUptime(kUsualUptime);
}

void Router::SetUptime(Duration uptime_now) {
    uptime_ = uptime_now.count() - memory_.now;
}

void Router::StickLog(int room) {
    memory_.log_stuck = 1;
    memory_.log_room = room;
}

void Router::FreeLog() {
    memory_.log_stuck = 0;
    if (memory_.log_waits != 0) memory_.sleep_until = memory_.now;
}

void Router::AddProcess(int id, const std::string& command_line) {
    const std::string folder = "/proc/" + std::to_string(id);
    processes_[folder] = "";
    processes_[folder + "/cmdline"] = command_line;
}

void Router::SetAddress(const std::string& dotted) {
    in_addr address = {};
    if (inet_pton(AF_INET, dotted.c_str(), &address) != 1) {
        throw std::invalid_argument("not an address: " + dotted);
    }
    memory_.address = address.s_addr;
}

void Router::SetTxBytes(std::uint64_t count) {
    tx_bytes_ = [count](Duration) { return count; };
}

void Router::SetTxBytes(std::function<std::uint64_t(Duration now)> count) {
    tx_bytes_ = std::move(count);
}

void Router::OnShell(const std::string& start, ShellHandler handler) {
    shell_handlers_.push_back({start, std::move(handler)});
}

void Router::SetShellStatus(const std::string& start, int status) {
    OnShell(start, [status](const std::string&) { return status; });
}

int Router::DefaultShell(const std::string& line) {
    return RunShellLine(line, files_);
}

Router::ShellEnd Router::RunShell(const std::string& line) {
    shell_takes_ = Duration::zero();
    const auto fits = [&](const Handler& one) { return line.rfind(one.start, 0) == 0; };
    const auto handler = std::find_if(shell_handlers_.rbegin(), shell_handlers_.rend(), fits);
    const int status =
        handler != shell_handlers_.rend() ? handler->handler(line) : DefaultShell(line);
    return {status, shell_takes_};
}

std::optional<std::string> Router::KernelFile(const std::string& path) const {
    if (path == "/proc/uptime") {
        if (!uptime_) return std::nullopt;
        const double seconds = static_cast<double>(*uptime_ + memory_.now) / 1e6;
        char text[64];
        std::snprintf(text, sizeof(text), "%.2f %.2f\n", seconds, seconds);
        return text;
    }
    if (path == "/sys/class/net/wwan0/statistics/tx_bytes") {
        if (!tx_bytes_) return std::nullopt;
        return std::to_string(tx_bytes_(Duration(memory_.now))) + "\n";
    }
    const auto found = processes_.find(path);
    if (found == processes_.end()) return std::nullopt;
    return found->second;
}

}  // namespace rig
