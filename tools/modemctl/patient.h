// The router under examination: what several checks want to know of it, found out once.
#pragma once

#include <string>
#include <vector>

#include "modemctl/log_source.h"
#include "modemctl/snapshot.h"
#include "modemctl/tree.h"

namespace modemctl {

// How the daemon was started, or how it will be.
struct StartOrder {
    std::string source;  // where that was read, empty when nothing tells
    std::string card;    // its option's word: "881", "E362", ...; empty for none
    std::string device;
    std::string path;  // PATH of the running daemon; empty when that is not known
};

struct Patient {
    Tree tree;
    Snapshot snapshot;
    StartOrder order;
    std::vector<LogRecord> log;  // the newest, of a day
    bool has_log = false;

    // Checks that ask the kernel or run something make sense here only.
    bool IsLive() const { return tree.IsLive(); }
    bool Runs() const { return snapshot.daemon == DaemonState::kRunning; }
    // The newest line of the log that begins so; null for none.
    const LogRecord* NewestLine(const std::string& start) const;
};

Patient MeetPatient(const Tree& tree, std::time_t now);

// The words of a command line in /proc.
std::vector<std::string> WordsOf(const Tree& tree, int pid);
// Reads card and device from a command line, a start script or a unit; false when neither is there.
bool ReadOrder(const std::vector<std::string>& words, StartOrder& order);

}  // namespace modemctl
