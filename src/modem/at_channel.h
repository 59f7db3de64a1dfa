// The AT dialogue on the serial port: bytes in, bytes out, and what kind of answer a block holds.
//
// There is no framing and no matching of answers to commands: time is the only synchronisation.
// What the modem sent before a transaction becomes the beginning of the transaction's text, so
// callers search the text for what they expect.
#pragma once

#include <string>

// A read asks for at most this many bytes; the buffers have one more, so that a zero follows.
constexpr int kReadSize = 0x20000;

// The one read buffer. Whoever reads has used up what is in it before anybody reads again. Only the
// pages that an answer fills become memory.
extern char g_c_ReadBuffer[kReadSize + 1];

// The canned commands of the command writer; any other value sends "AT".
enum AtCommandType : int {
    kSendAt = 1,
    kSendSignalQuery = 2,         // AT+CSQ or AT+CSQ?, by g_b_CsqQueryForm
    kSendIndicatorQuery = 3,      // AT+CIND?
    kSendDataCallConnect = 4,     // AT$NWQMICONNECT=,,
    kSendDataCallDisconnect = 5,  // AT$NWQMIDISCONNECT
};

enum ResponseKind : int {
    kNothingUsable = 0,
    kSignalLine = 2,     // a "+CSQ:" line
    kIndicatorLine = 3,  // a "+CIND:" line and no "+CSQ:"
};

// Reads what is waiting, at most `size` bytes, into a buffer with room for one more; a zero byte
// follows what was read. Returns the number of bytes, 0 when nothing waits or the driver does not
// say, negative when the read fails.
int ReadPort(char* buffer, int size);

// Writes a canned command, an AtCommandType, and waits a second; reads nothing. A write that fails
// is counted in g_i_PortErrorCounter, and then nothing is waited for.
void SendCommandType(int type);

// Writes the command, waits, and returns all that came: what was waiting before, then the answer,
// unstripped, with the modem's echo where it echoes; empty when it was silent. An answer later than
// `wait_seconds` and some 100 ms is left for the next reader. Of a write that fails, as above, the
// result is what was waiting before. At most some 640 KiB and half a minute.
std::string SendAtCommand(const std::string& command, unsigned wait_seconds);

// What was waiting on the port; at a non-zero debug level logged line by line.
std::string ReadUnsolicited();

// Reads once what is waiting, and throws it away.
void DiscardWaiting();

// Replaces what is no printable text by blanks, in place; CR and LF stay.
void MassageBlock(char* block, int length);

// Tells what the block holds, as a ResponseKind. For a signal or indicator line, `line` is that
// line, cut at its end: a writable text of at least 64 bytes of room, valid until the next call. An
// ERROR answer switches the form of the signal query.
int IdentifyMessage(const char* block, int length, char** line);
