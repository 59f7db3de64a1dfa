// A log file of the daemon's own: optional time stamps, repeat folding, one rotated generation
// (the path with ".1" appended), and a mirror into the system log on request.
#pragma once

#include <cstdint>
#include <string>

// Signed decimal text, no padding.
std::string IntToString(std::int32_t value);

class cKVTLogger {
  public:
    // A limit below 50 kilobytes becomes 50. With time_stamps other than 0 every line begins with
    // the local time; a null time format, for strftime, is "%m/%d %H:%M:%S". Opens the file;
    // returns true whether or not that worked, as LogIt tries again.
    bool Init(const std::string& path, std::int32_t max_kilobytes, std::int32_t time_stamps,
              const char* time_format);

    // Governs the diagnostics about the log file itself, which go to the system log: level 2 tells
    // failures and rotations, level 3 every size check.
    void SetDebugLevel(std::int32_t level);
    void SetSyslogMirror(std::uint8_t flag);  // not 0: every line goes to the system log, too
    void SetFoldRepeats(std::uint8_t flag);   // not 0: a line that repeats is counted, not written
    // The next line is written without its time stamp.
    void SkipNextTimestamp() { skip_next_stamp_ = true; }

    bool OpenLogFile();
    void CloseLogFile();
    // Renames the file to its ".1" generation and opens a new one; false when that cannot be
    // opened. A failed rename leaves logging in the old file.
    bool Rotate();
    // Rotates once the file has reached the limit.
    void CheckRotate();

    // Appends one line. Newlines in the message become "^M", in place. True when the line was
    // written or swallowed as a repeat; a non-zero force writes a repeat, too.
    bool LogIt(std::string& message, std::int32_t force);

  private:
    std::string Prefix();
    bool Fold(const std::string& message, const std::string& prefix, bool force);
    bool PathExists() const;

    std::int32_t max_kilobytes_ = 50;
    std::string path_;
    std::int32_t fd_ = -1;  // below 0: not open
    std::int32_t time_stamps_ = 0;
    std::int32_t debug_level_ = 0;
    std::string last_line_;  // what a repeat is compared with
    std::uint8_t fold_repeats_ = 0;
    std::uint8_t syslog_mirror_ = 0;
    std::string time_format_;
    std::uint32_t repeat_count_ = 0;  // swallowed since last_line_ was written
    bool skip_next_stamp_ = false;
};
