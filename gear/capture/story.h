// What a modem was asked and what it said, as a text that a person can read, change and keep under
// version control:
//
//   story 881                        the card, with its options
//   began 2026-03-14 09:15:00        the router's clock at the first line
//   start                            the daemon starts
//   > AT+CSQ                         it sends a command
//   < 1175ms \r\n                    the modem says these bytes, so long after the command's end
//   | +CSQ: 17,99\r\n                and these behind them
//   lost                             here the log has a hole
//
// In texts stand \r, \n, \t, \\ and \xHH; a blank at the end of a line is \x20.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace capture {

constexpr std::int64_t kMillisecond = 1000;  // all times are in microseconds

struct Saying {
    std::int64_t delay = 0;  // from the carriage return of the command
    std::string bytes;
};

struct Exchange {
    std::string command;  // empty for a daemon's start
    std::vector<Saying> answer;
    bool after_loss = false;  // exchanges in front of it are missing

    bool IsStart() const { return command.empty(); }
    std::string Text() const;  // the whole answer
};

struct Story {
    std::string arguments;  // "881", "E362 -cind1"
    std::string began;
    std::vector<Exchange> exchanges;

    // One for each start of the daemon.
    std::vector<Story> Lives() const;
};

std::string Escaped(const std::string& bytes);
std::string Unescaped(const std::string& text);  // throws std::runtime_error

std::string WriteStory(const Story& story);
// Throws std::runtime_error with "line N: why".
Story ReadStory(const std::string& text);

}  // namespace capture
