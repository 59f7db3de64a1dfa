// What is added to the system log from now on, without waiting for it.
#pragma once

#include <ctime>
#include <memory>
#include <string>

#include "modemctl/child.h"
#include "modemctl/log_source.h"
#include "modemctl/tree.h"

namespace modemctl {

class LogTail {
  public:
    // The router's own log, or the file.
    LogTail(const Tree& tree, const std::string& file);
    ~LogTail();
    LogTail(const LogTail&) = delete;
    LogTail& operator=(const LogTail&) = delete;

    // The daemon's lines that have come since the last time.
    void Poll(std::time_t now, const RecordTaker& take);

  private:
    void OpenFile(bool at_end);
    bool WasReplaced() const;
    void ReadOn(std::time_t now, const RecordTaker& take);

    std::string path_;  // empty while a child is read
    int fd_ = -1;
    std::unique_ptr<Child> child_;
    std::string line_;
};

}  // namespace modemctl
