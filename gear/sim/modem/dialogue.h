// Byte syntax of the dialogue: bytes from the host become lines and message bodies, answers become
// bytes. Knows no command.
#pragma once

#include <string>
#include <string_view>

#include "sim/modem/state.h"
#include "sim/modem/text.h"

namespace sim {

struct Reply {
    std::string info;           // lines separated by CR LF, without line ends around them
    std::string result = "OK";  // empty: none
    Micros delay = 5 * kMillisecond;
    bool prompt = false;   // ask for a message body instead of giving a result
    bool is_list = false;  // may come in pieces
    bool tight = false;    // no empty line before the result
    bool raw = false;      // `info` goes out exactly as it is, and nothing else
};

Reply Ok();
Reply Info(std::string lines);
Reply Error();
Reply CmeError(int code);
Reply CmsError(int code);

// `reply` as the host reads it under these modes.
std::string Frame(const Reply& reply, const Modes& modes);
std::string FrameUnsolicited(std::string_view line);

class LineReader {
  public:
    enum class Event { kNothing, kLine, kBody, kCancelled };

    // Takes one byte from the host; what is to be echoed is appended to `echo`. After kLine and
    // kBody the text waits in Text() until the next byte is taken. NUL bytes are padding and are
    // dropped, so is a line feed behind a carriage return.
    Event Take(char byte, std::string* echo);

    void ExpectBody();
    bool InBody() const { return in_body_; }
    const std::string& Text() const { return text_; }
    void Reset();

  private:
    Event TakeForLine(char byte, std::string* echo);
    Event TakeForBody(char byte, std::string* echo);

    std::string text_;
    bool in_body_ = false;
    bool complete_ = false;  // text_ belongs to the past
    bool after_cr_ = false;
};

}  // namespace sim
