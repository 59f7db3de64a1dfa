// One file a pass; what fails waits, and is given up at the third time.

#include "sms/send.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "modem/at_channel.h"
#include "modem/response_fields.h"
#include "sms/cms_errors.h"
#include "sms/spool.h"
#include "state/settings.h"
#include "state/timers.h"
#include "support/countdown_timer.h"
#include "support/shell.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr std::size_t kLongestMessage = 150;  // characters sent
constexpr std::size_t kShownMessage = 50;     // characters of a failed message in the log
constexpr int kMostAttempts = 2;              // failures in a row; one more gives the file up
constexpr std::size_t kLongestName = 255;     // bytes, of a file's name
constexpr char kCtrlZ = '\x1a';               // ends the message text
constexpr unsigned kBodyWait = 1;             // seconds

// A modem that stores what it sent would fill up.
void DeleteSentSmsMessages() {
    SendAtCommand("AT+CMGD=0,2", 0);
}

void MakeSendDirectories() {
    MakeSpoolDirectories({kSmsSendDirectory, kSmsFailDirectory});
}

// Name, dot and time stamp. A name that would grow too long for the file system loses its end, as
// the move would else fail and the message be lost.
std::string FailureName(const std::string& name) {
    const std::string stamp = "." + LocalTime("%Y%m%d-%H%M%S");
    return name.substr(0, kLongestName - stamp.size()) + stamp;
}

// A link to a directory in the place of the moved file would lead mv out of the spool.
void RemoveLink(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) unlink(path.c_str());
}

// Both directories are looked at again: the modem's answer has taken a second or more.
void MoveToFailed(const std::string& name, const std::string& failure_name) {
    if (!IsSafeSpoolPath(kSmsSendDirectory) || !IsSafeSpoolPath(kSmsFailDirectory)) return;
    const std::string path = kSmsSendDirectory + name;
    const std::string failed_path = kSmsFailDirectory + failure_name;
    RemoveLink(failed_path);
    RunShell("mv -f " + ShellWord(path) + " " + ShellWord(failed_path));
    DeleteSpoolFile(kSmsSendDirectory, name);
}

// The counter is the daemon's, not the file's: deliberate, a file that is listed first takes over
// the count of the one that failed before it.
// Oddity one-failure-count: a file may go to send_fail at its first failure.
void EndAttempts() {
    g_Cp_DelaySendSMSTimer->Stop();
    g_i_SmsSendAttempts = 0;
}

void GiveUp(const std::string& name, const std::string& to, const std::string& text) {
    const std::string failure_name = FailureName(name);
    Log("Send #%d Failed : TO=%s, MSG=%s (truncated)", g_i_SmsSendAttempts, to.c_str(),
        text.substr(0, kShownMessage).c_str());
    Log("Max send attempt, moving file to %s/%s", kSmsFailDirectory, failure_name.c_str());
    MakeSendDirectories();
    MoveToFailed(name, failure_name);
    EndAttempts();
}

void RetryLater(const std::string& to, const std::string& text) {
    g_Cp_DelaySendSMSTimer->Start();
    Log("Send #%d Failed: TO=%s, MSG=%s (truncated)", g_i_SmsSendAttempts, to.c_str(),
        text.substr(0, kShownMessage).c_str());
}

void SendFile(const std::string& name) {
    const std::string path = kSmsSendDirectory + name;
    std::string to;
    std::string text;
    Log("Reading SMS File %s", path.c_str());
    if (!ReadSmsSendFile(path, to, text)) {
        Log("SMS send file %s is invalid, deleting", path.c_str());
        DeleteSpoolFile(kSmsSendDirectory, name);
        g_i_SmsSendAttempts = 0;
        return;
    }
    if (SendSmSMessage(to, text)) {
        Log("Send Success: TO=%s, MSG=%s", to.c_str(), text.c_str());
        DeleteSpoolFile(kSmsSendDirectory, name);
        EndAttempts();
        return;
    }
    ++g_i_SmsSendAttempts;
    if (g_i_SmsSendAttempts > kMostAttempts) {
        GiveUp(name, to, text);
    } else {
        RetryLater(to, text);
    }
}

int CmsErrorCode(std::string value) {
    CleanWhiteSpace(value);
    return ToInt(value);
}

}  // namespace

void CheckSendSmS() {
    if (g_Cp_DelaySendSMSTimer->IsCounting()) {
        LogAbove(0, "DEBUG: %s: DelaySendSMS timer running", __func__);
        return;
    }
    MakeSendDirectories();
    std::string first;
    const int error = ReadSmsDirectory(kSmsSendDirectory, [&](const std::string& name) {
        first = name;
        return false;
    });
    if (error != 0) return;
    if (g_b_SmsCmgfSupported && !first.empty()) SendFile(first);
    DeleteOldSendSmSFiles();
}

bool SendSmSMessage(const std::string& to, const std::string& text) {
    if (text.size() > kLongestMessage) {
        Log("SMS Message too long (%d chars), truncating to %d chars",
            static_cast<int>(text.size()), static_cast<int>(kLongestMessage));
    }
    const std::string command = "AT+CMGS=\"" + to + "\"";
    LogAbove(0, "DEBUG: %s():  %s", __func__, command.c_str());
    LogAbove(0, "DEBUG: %s():  Length is %d", __func__, static_cast<int>(command.size()));
    std::string reply = SendAtCommand(command, 0);
    if (Contains(reply, "ERROR")) {
        Log("Got ERROR (not CMS error) trying to send SMS to '%s'", to.c_str());
        return false;
    }
    reply += SendAtCommand(text.substr(0, kLongestMessage) + kCtrlZ, kBodyWait);

    std::string value;
    if (GetCmsErrorCode(reply, value) == 1) {
        Log("%s", CmsErrorText(CmsErrorCode(value)).c_str());
        DeleteSentSmsMessages();
        return false;
    }
    std::string slot;
    if (GetCmsgSlotNum(reply, slot)) DeleteSentSmsMessages();
    return true;
}

bool GetCmsgSlotNum(const std::string& reply, std::string& slot) {
    constexpr char kNeedle[] = "+CMGS: ";
    const auto found = reply.find(kNeedle);
    if (found == std::string::npos) return false;
    LogAbove(0, "DEBUG: %s: found needle '%s'", __func__, kNeedle);
    const std::string rest = reply.substr(found + sizeof(kNeedle) - 1);
    const auto line_end = rest.find('\n');
    if (line_end == std::string::npos) return false;
    LogAbove(0, "DEBUG: %s: found needle '<cr>'", __func__);
    // One character less for the carriage return, also where there is none: deliberate, the last
    // digit of a reference is nobody's loss.
    // Oddity reference-cut: the logged reference of a message may lack its last digit.
    std::string value = rest.substr(0, line_end == 0 ? 0 : line_end - 1);
    CleanWhiteSpace(value);
    if (!IsInteger(value)) return false;
    LogAbove(0, "DEBUG: %s: found slot number '%s'", __func__, value.c_str());
    slot = value;
    return true;
}
