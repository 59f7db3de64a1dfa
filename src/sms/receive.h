// Received messages: from the modem's store through the queue into files.
#pragma once

#include <cstdint>
#include <string>

// One message of a text mode listing, AT+CMGL (3GPP 27.005).
struct SmsMessage {
    std::int32_t index = 0;  // not used
    std::string from;        // <oa>: the number or name without quotes and "+"
    std::string time;        // <scts> as the modem prints it: date, "-", time with its zone
    std::string text;        // each line, trimmed, with a newline; in the modem's character set
};

// At start-up: does the modem take text mode? Only the Sierra 881 is asked.
void CheckCmgfSupport();

// The receive pass: lists the unread messages, writes each as a file, and has the modem delete
// what it then holds as read.
void CheckReceiveSmS();

// Writes the queue to files, oldest first, and empties it. A file that cannot be written is not
// noticed: its text is in the system log.
void WriteOutQueuedSmsMessages();

// Unread and stored unsent messages stay.
void DeleteReadSmsMessages();
