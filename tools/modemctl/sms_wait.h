// What became of a send file, and which sign says so: a line of the log, or a directory.
#pragma once

#include <ctime>
#include <string>

#include "modemctl/log_source.h"
#include "modemctl/log_tail.h"
#include "modemctl/tree.h"

namespace modemctl {

enum class Fate {
    kWaiting,  // still in the spool
    kSent,     // the modem showed no error
    kRefused,  // the daemon or the modem did not take it: as it stands it never goes out
    kFailed,   // given up after three attempts
    kAgedOut,  // a day old
    kUnknown,  // gone, and nothing says why
};
const char* FateWord(Fate fate);

// Follows one send file through the daemon's lines. The daemon serves one file at a time, so what
// follows a "Reading" line is about that file until the next one.
class SendStory {
  public:
    explicit SendStory(const std::string& name);

    void Take(const LogRecord& record);

    Fate fate() const { return fate_; }
    const std::string& sign() const { return sign_; }      // the line that says so
    const std::string& reason() const { return reason_; }  // why the newest attempt failed
    int attempts() const { return attempts_; }

  private:
    void TakeOurs(const std::string& text);
    void End(Fate fate, const std::string& text);

    const std::string name_;
    const std::string path_;
    bool is_read_ = false;
    bool number_refused_ = false;
    int attempts_ = 0;
    Fate fate_ = Fate::kWaiting;
    std::string sign_, reason_;
};

// The story, the log and the directories together.
class SendWatch {
  public:
    // Begin before the file is dropped: no line of it is missed then.
    SendWatch(const std::string& name, LogTail& log) : name_(name), story_(name), log_(log) {}

    // A look. The fate is kWaiting until something is certain; a file that is gone is unknown only
    // after the log has had its time to say why.
    Fate Look();
    const std::string& sign() const { return sign_; }
    const SendStory& story() const { return story_; }

  private:
    const std::string name_;
    SendStory story_;
    LogTail& log_;
    std::time_t gone_since_ = 0;
    std::string sign_;
};

}  // namespace modemctl
