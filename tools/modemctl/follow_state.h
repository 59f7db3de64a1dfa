// What `sms follow --exec` has done with each received message, kept across restarts.
//
// A message is told by its name, the instant it was written, and its size. A run of the program is
// noted before it begins and when it has ended; each note is one line, appended and synced. So a
// message whose run has ended well is never run again, and one whose run was cut off (the power
// went) is known as such: nobody can tell how far it came, so it is set aside, not run twice.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "modemctl/sms_spool.h"

namespace modemctl {

enum class Handling {
    kNew,
    kBegun,   // a run has begun, and nobody has noted its end
    kFailed,  // its last run failed
    kDone,
    kAside,
};

struct HandlingRecord {
    Handling handling = Handling::kNew;
    int tries = 0;  // runs that were begun
};

// "1773479700.000000000 312 sms_msg20260314-091502.1", escaped: one line, whatever the name.
std::string MessageKey(const SpoolEntry& entry);

class FollowState {
  public:
    // In this directory, which is made when it is missing. A complaint, empty when all is well:
    // another program that follows has it, or it cannot be written.
    std::string Open(const std::string& directory);
    // The complaint was that another one has it: it may be free later.
    bool IsBusy() const { return is_busy_; }
    ~FollowState();
    FollowState() = default;
    FollowState(const FollowState&) = delete;
    FollowState& operator=(const FollowState&) = delete;

    HandlingRecord Get(const std::string& key) const;
    // Noted for good when it returns true.
    bool Note(const std::string& key, Handling handling);
    // Reads again what another process (the one that looks after a run) has noted.
    void Reload();
    // Forgets what is no longer in the spool, so that the file stays small.
    void KeepOnly(const std::vector<std::string>& keys);

    const std::string& Directory() const { return directory_; }
    // Where messages are kept that could not be handled.
    std::string AsideDirectory() const { return directory_ + "/aside"; }
    bool PutAside(const SpoolEntry& entry, const SpoolMessage& message) const;

  private:
    void TakeLine(const std::string& line);
    std::string Path() const { return directory_ + "/follow.state"; }

    std::string directory_;
    int lock_ = -1;
    bool is_busy_ = false;
    std::size_t lines_ = 0;
    std::map<std::string, HandlingRecord> records_;
};

// --state, else below $XDG_STATE_HOME, else /var/lib/modemctl.
std::string StateDirectory(const std::string& wanted);

}  // namespace modemctl
