#include "modemctl/sms_wait.h"

#include <vector>

#include "modemctl/log_lines.h"
#include "modemctl/sms_spool.h"

namespace modemctl {

namespace {

// A log daemon writes a line within moments; a journal of a busy router takes a little longer.
constexpr std::time_t kLogPatience = 5;  // seconds

std::time_t SecondsOfUptime() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec;
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool IsInFailed(const std::string& name, std::string& failed_name) {
    std::vector<SpoolEntry> entries;
    ListSpool(Tree(), SpoolPlace::kFailed, entries);
    for (const SpoolEntry& entry : entries) {
        if (!IsFailureOf(entry.name, name)) continue;
        failed_name = entry.name;
        return true;
    }
    return false;
}

}  // namespace

const char* FateWord(Fate fate) {
    switch (fate) {
        case Fate::kWaiting:
            return "waiting";
        case Fate::kSent:
            return "sent";
        case Fate::kRefused:
            return "refused";
        case Fate::kFailed:
            return "failed";
        case Fate::kAgedOut:
            return "aged out";
        case Fate::kUnknown:
            return "unknown";
    }
    return "";
}

SendStory::SendStory(const std::string& name)
    : name_(name), path_(PlaceDirectory(SpoolPlace::kWaiting) + name) {}

void SendStory::End(Fate fate, const std::string& text) {
    fate_ = fate;
    sign_ = text;
}

void SendStory::Take(const LogRecord& record) {
    const std::string& text = record.text;
    if (fate_ != Fate::kWaiting) return;
    const std::string reading = "Reading SMS File ";
    if (StartsWith(text, reading)) {
        is_read_ = text == reading + path_;
        number_refused_ = false;
    } else if (StartsWith(text, "Deleting SMS file '" + path_ + "', older than ")) {
        End(Fate::kAgedOut, text);
    } else if (is_read_) {
        TakeOurs(text);
    }
}

void SendStory::TakeOurs(const std::string& text) {
    if (StartsWith(text, "Send Success: TO=")) {
        End(Fate::kSent, text);
    } else if (text == "SMS send file " + path_ + " is invalid, deleting") {
        End(Fate::kRefused, text);
    } else if (StartsWith(text, "Got ERROR (not CMS error) trying to send SMS to '")) {
        number_refused_ = true;
        reason_ = text;
    } else if (StartsWith(text, "CMS error #")) {
        reason_ = text;
    } else if (StartsWith(text, "Send #")) {
        ++attempts_;
    } else if (StartsWith(text, "Max send attempt, moving file to ")) {
        End(number_refused_ ? Fate::kRefused : Fate::kFailed, reason_.empty() ? text : reason_);
    }
}

Fate SendWatch::Look() {
    const bool waits = LookAt(Tree(), SpoolPlace::kWaiting, name_).kind != EntryKind::kGone;
    log_.Poll(std::time(nullptr), [&](const LogRecord& record) {
        story_.Take(record);
        return true;
    });
    if (story_.fate() != Fate::kWaiting) {
        sign_ = "the log: " + story_.sign();
        return story_.fate();
    }
    if (waits) {
        gone_since_ = 0;
        return Fate::kWaiting;
    }
    const std::time_t now = SecondsOfUptime();
    if (gone_since_ == 0) gone_since_ = now;
    if (now - gone_since_ < kLogPatience) return Fate::kWaiting;
    std::string failed_name;
    if (IsInFailed(name_, failed_name)) {
        sign_ = "the file is " + std::string(PlaceDirectory(SpoolPlace::kFailed)) + failed_name;
        return Fate::kFailed;
    }
    sign_ = "the file is gone, and no line of the log says why";
    return Fate::kUnknown;
}

}  // namespace modemctl
