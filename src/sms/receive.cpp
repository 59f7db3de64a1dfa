// A listing becomes messages, the messages become files, and the modem forgets them.

#include "sms/receive.h"

#include <deque>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "sms/spool.h"
#include "state/settings.h"
#include "support/logger.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"
#include "support/text_file_writer.h"

namespace {

constexpr char kHeaderLabel[] = "+CMGL: ";
constexpr unsigned kHeaderFields = 6;  // index, state, sender, name, date, time
constexpr unsigned kTrailerLines = 3;  // the empty line, "OK", and nothing behind its line end
constexpr unsigned kTextModeWait = 2;  // seconds
constexpr unsigned kListWait = 2;      // seconds
constexpr unsigned kDeleteWait = 1;    // seconds

cStringTokenizer TrimmedLines(const std::string& response) {
    cStringTokenizer lines = LinesOf(response);
    lines.TrimTokens();
    return lines;
}

bool AcceptsTextMode() {
    for (const std::string& line : TrimmedLines(SendAtCommand("AT+CMGF=1", kTextModeWait))) {
        if (line == "OK") return true;
        if (line == "ERROR") return false;
    }
    return false;
}

// Collects the messages of one listing. Between two headers, a message is pending while its
// header was understood; the body lines of any other are passed over.
class ListingReader {
  public:
    void TakeHeader(std::string line) {
        if (pending_) Enqueue();
        pending_ = false;
        RemoveChar(line, '"');
        cStringTokenizer fields(line, ',');
        LogAbove(0, "Found a valid message header, token count is %d",
                 static_cast<int>(fields.GetTokenCount()));
        if (fields.GetTokenCount() != kHeaderFields) return;
        pending_ = true;
        current_ = SmsMessage();
        current_.from = fields[2];
        RemoveChar(current_.from, '+');
        current_.time = fields[4] + "-" + fields[5];
    }

    void TakeBodyLine(const std::string& line) { current_.text += line + "\n"; }

    void Enqueue() const {
        LogAbove(0, "DEBUG: %s(): Enqueue message", "CheckReceiveSmS");
        g_Cp_SmsQueue->push_back(current_);
    }

    bool IsPending() const { return pending_; }

  private:
    bool pending_ = false;
    SmsMessage current_;
};

// The last message is queued only when the walk reaches the trailer: a listing that is cut short
// before it loses the message being collected.
void QueueListing(const cStringTokenizer& lines) {
    ListingReader reader;
    for (unsigned i = 0; i < lines.GetTokenCount(); ++i) {
        if (lines[i].compare(0, sizeof(kHeaderLabel) - 1, kHeaderLabel) == 0) {
            reader.TakeHeader(lines[i]);
        } else if (reader.IsPending()) {
            if (i + kTrailerLines == lines.GetTokenCount()) return reader.Enqueue();
            reader.TakeBodyLine(lines[i]);
        }
    }
}

void WriteOut(const SmsMessage& message, int number) {
    const std::string path = kSmsReceiveDirectory +
                             (published::kSmsReceivedPrefix + LocalTime("%Y%m%d-%H%M%S")) + "." +
                             IntToString(number);
    LogAbove(0, "DEBUG: %s: Writing out incoming SMS message to file %s",
             "WriteOutQueuedSmsMessages", path.c_str());
    Log("Got SMS from %s at %s, Message: %s", message.from.c_str(), message.time.c_str(),
        message.text.c_str());
    if (!IsSafeSpoolPath(kSmsReceiveDirectory)) return;
    cTextFileWriter file(path);
    file.AddLine(published::sms_label::kFrom + message.from);
    file.AddLine(published::sms_label::kTime + message.time);
    file.AddLine(published::sms_label::kMessage + message.text);
    file.WriteFile();
}

}  // namespace

void CheckCmgfSupport() {
    g_b_SmsCmgfSupported = cards::Has(cards::kMessaging, g_i_CardType) && AcceptsTextMode();
    if (g_b_SmsCmgfSupported) {
        Log("Modem supports CMGF SMS");
    } else {
        Log("Modem does not support CMGF SMS");
    }
}

void CheckReceiveSmS() {
    DeleteOldRecvSmSFiles();
    if (g_b_SmsCmgfSupported) {
        QueueListing(TrimmedLines(SendAtCommand("AT+CMGL=\"REC UNREAD\"", kListWait)));
    }
    WriteOutQueuedSmsMessages();
    if (g_Cp_SmsQueue->empty()) DeleteReadSmsMessages();
}

void WriteOutQueuedSmsMessages() {
    LogAbove(0, "DEBUG: %s(): Queue Size = %d", __func__, static_cast<int>(g_Cp_SmsQueue->size()));
    for (int number = 1; !g_Cp_SmsQueue->empty(); ++number) {
        WriteOut(g_Cp_SmsQueue->front(), number);
        g_Cp_SmsQueue->pop_front();
    }
}

void DeleteReadSmsMessages() {
    SendAtCommand("AT+CMGD=0,1", kDeleteWait);
}
