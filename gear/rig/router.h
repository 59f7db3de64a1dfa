// The router around the daemon, but for its files: uptime, processes, wwan0 and the shell.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/duration.h"
#include "rig/files.h"
#include "rig/protocol.h"

namespace rig {

class Router {
  public:
    Router(Shared& memory, Files& files);

    void SetUptime(Duration uptime_now);
    void RemoveUptime() { uptime_.reset(); }
    // The log daemon stops reading: its socket takes so many lines, and the next one waits there.
    void StickLog(int room);
    void FreeLog();  // it goes on, and what waits is taken
    void AddProcess(int id, const std::string& command_line);  // words end in NUL

    void SetAddress(const std::string& dotted);  // of wwan0
    void ClearAddress() { memory_.address = 0; }
    void FailSockets(int error, int times = -1) { memory_.socket_fault = {error, times}; }
    void SetTxBytes(std::uint64_t count);
    void SetTxBytes(std::function<std::uint64_t(Duration now)> count);
    void RemoveTxBytes() { tx_bytes_ = nullptr; }

    // A handler takes command lines that begin with `start`, in place of what they do else; the
    // newest that fits is asked. It returns the exit status.
    using ShellHandler = std::function<int(const std::string& line)>;
    void OnShell(const std::string& start, ShellHandler handler);
    void SetShellStatus(const std::string& start, int status);
    // What the line does else; see shell_effects.h.
    int DefaultShell(const std::string& line);
    // The command under way takes this long. For shell handlers.
    void TakeTime(Duration duration) { shell_takes_ = duration; }

  private:
    friend class World;

    struct Handler {
        std::string start;
        ShellHandler handler;
    };
    struct ShellEnd {
        int status;
        Duration taken;
    };

    ShellEnd RunShell(const std::string& line);
    // A file below /proc or /sys; none when there is no such file.
    std::optional<std::string> KernelFile(const std::string& path) const;

    Shared& memory_;
    Files& files_;
    std::optional<Micros> uptime_;                  // when the daemon was started
    std::map<std::string, std::string> processes_;  // path below /proc, content
    std::function<std::uint64_t(Duration)> tx_bytes_;
    std::vector<Handler> shell_handlers_;
    Duration shell_takes_ = Duration::zero();
};

}  // namespace rig
