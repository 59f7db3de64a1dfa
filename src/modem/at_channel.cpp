// Transactions on the port, paced by sleeps, and the classification of what the main loop reads.

#include "modem/at_channel.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "state/settings.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

constexpr useconds_t kTerminatorPause = 20000;  // microseconds before and between CR and LF
constexpr useconds_t kAnswerPause = 50000;      // microseconds between two reads of an answer
constexpr unsigned kCannedCommandPause = 1;     // seconds
constexpr std::size_t kRoomBehindLine = 64;

// What a driver has taken only a piece of is finished within a second, or counts as failed.
constexpr useconds_t kWritePause = 20000;  // microseconds
constexpr int kMostWrites = 50;

// A modem that talks without end must not hold the one thread for ever, nor fill the memory.
// The longest honest answer, the operator list, is a fourth of this.
constexpr std::size_t kLongestAnswer = 4 * static_cast<std::size_t>(kReadSize);
constexpr int kMostReads = 600;  // half a minute without a gap

std::string HexDump(const char* data, int length) {
    std::string text;
    for (int i = 0; i < length; ++i) {
        text += Format("%2.2x ", static_cast<unsigned>(static_cast<unsigned char>(data[i])));
    }
    return text;
}

void DumpRead(const char* buffer, int length) {
    if (!IsAbove(3)) return;
    if (length <= 0) {
        Log("read No Data");
        return;
    }
    Log("Clear Response: %s", buffer);
    Log("Raw Response: %s", HexDump(buffer, length).c_str());
}

const char* CannedCommand(int type) {
    switch (type) {
        case kSendSignalQuery:
            return g_b_CsqQueryForm ? "AT+CSQ?" : "AT+CSQ";
        case kSendIndicatorQuery:
            return "AT+CIND?";
        case kSendDataCallConnect:
            return "AT$NWQMICONNECT=,,";
        case kSendDataCallDisconnect:
            return "AT$NWQMIDISCONNECT";
        default:
            return "AT";
    }
}

// Writes the rest of what the driver has begun to take. A message body that lost its Ctrl-Z would
// leave the modem at its prompt, where it eats the next commands.
bool FinishWrite(const char* data, std::size_t size) {
    for (int tries = 0; size > 0; ++tries) {
        if (tries == kMostWrites) return false;
        usleep(kWritePause);
        const ssize_t count = write(g_i_PortFd, data, size);
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        if (count <= 0) continue;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

// A port that takes nothing at all fails at once: it is asked again with the next command.
bool WritePort(const char* data, std::size_t size) {
    const ssize_t count = write(g_i_PortFd, data, size);
    if (count < 0) return false;
    const auto done = static_cast<std::size_t>(count);
    return FinishWrite(data + done, size - done);
}

// The result is of no use: the command before it has already shown whether the port takes writes.
void WriteByte(const char& byte) {
    static_cast<void>(WritePort(&byte, 1));
}

char* CutAtLineEnd(char* line) {
    line[std::strcspn(line, "\r\n")] = '\0';
    LogDebug("IdentifyMessage: %s", line);
    return line;
}

}  // namespace

char g_c_ReadBuffer[kReadSize + 1];

int ReadPort(char* buffer, int size) {
    buffer[0] = '\0';
    int waiting = 0;
    if (ioctl(g_i_PortFd, FIONREAD, &waiting) < 0) {
        LogAbove(1, "No Response from device");
        return 0;
    }
    if (waiting == 0) return 0;
    const auto count = static_cast<int>(read(g_i_PortFd, buffer, static_cast<std::size_t>(size)));
    if (count > 0) buffer[count] = '\0';
    DumpRead(buffer, count);
    return count;
}

void SendCommandType(int type) {
    char command[80] = {};
    std::snprintf(command, sizeof(command), "%s", CannedCommand(type));
    LogDebug("Sending command: %s", command);

    // All 80 bytes, zeros included: deliberate, the modems in the field are used to them.
    // Oddity commands-end-in-zeros: a modem must skip the zero bytes in signal and call commands.
    if (!WritePort(command, sizeof(command))) {
        LogDebug("Unable to write command type %d", type);
        ++g_i_PortErrorCounter;
        return;
    }
    usleep(kTerminatorPause);
    WriteByte(g_c_CR);
    usleep(kTerminatorPause);
    WriteByte(g_c_LF);
    sleep(kCannedCommandPause);
    g_i_PortErrorCounter = 0;
}

std::string ReadUnsolicited() {
    if (ReadPort(g_c_ReadBuffer, kReadSize) <= 0) return "";
    std::string text = g_c_ReadBuffer;
    if (IsDebug()) {
        for (const std::string& piece : cStringTokenizer(text, '\n')) {
            if (piece.size() > 3) Log("Unsolicited message: %s", piece.c_str());
        }
    }
    return text;
}

void DiscardWaiting() {
    ReadPort(g_c_ReadBuffer, kReadSize);
}

std::string SendAtCommand(const std::string& command, unsigned wait_seconds) {
    std::string result = ReadUnsolicited();
    LogDebug("Sending command: %s", command.c_str());
    if (!WritePort(command.data(), command.size())) {
        LogDebug("Unable to write to file handle");
        ++g_i_PortErrorCounter;
        return result;
    }
    usleep(kTerminatorPause);
    WriteByte(g_c_CR);
    WriteByte(g_c_LF);
    g_i_PortErrorCounter = 0;
    usleep(kAnswerPause);
    if (wait_seconds > 0) sleep(wait_seconds);

    std::size_t received = 0;  // more than is kept when the modem sends zero bytes
    for (int reads = 0; reads < kMostReads && received <= kLongestAnswer; ++reads) {
        const int count = ReadPort(g_c_ReadBuffer, kReadSize);
        if (count <= 0) break;
        result += g_c_ReadBuffer;
        LogDebug("read %d bytes from port", count);
        received += static_cast<std::size_t>(count);
        usleep(kAnswerPause);
    }
    LogAbove(1, "DEBUG: returning string class : %s", result.c_str());
    return result;
}

void MassageBlock(char* block, int length) {
    for (int i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(block[i]);
        if (byte <= 9 || byte > 126) block[i] = ' ';
    }
    if (IsAbove(1)) Log("Massaged packet : %s", HexDump(block, length).c_str());
}

int IdentifyMessage(const char* block, int length, char** line) {
    // Kept for the caller until the next call. The room behind the block is for the CIND converter,
    // which rewrites the line in place and may need more characters than were left of it.
    static std::string kept;
    kept.assign(block, static_cast<std::size_t>(std::clamp(length, 0, kReadSize)));
    kept.append(kRoomBehindLine, '\0');
    char* const copy = kept.data();

    if (char* signal = std::strstr(copy, "+CSQ:")) {
        *line = CutAtLineEnd(signal);
        return kSignalLine;
    }
    if (char* indicators = std::strstr(copy, "+CIND:")) {
        *line = CutAtLineEnd(indicators);
        return kIndicatorLine;
    }
    if (std::strstr(copy, "ERROR") != nullptr) {
        g_b_CsqQueryForm = !g_b_CsqQueryForm;
        LogDebug("AT command gave an error, switching CSQ modes to %s",
                 g_b_CsqQueryForm ? "AT+CSQ?" : "AT+CSQ");
        return kNothingUsable;
    }
    LogDebug("unknown message command response");
    return kNothingUsable;
}
