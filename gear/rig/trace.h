// What happened in a scenario, in order, with the simulated time of each event.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "rig/duration.h"
#include "rig/protocol.h"

namespace rig {

struct Event {
    Micros at;
    Kind kind;
    int number;
    std::string text;
};

bool operator==(const Event& a, const Event& b);
std::ostream& operator<<(std::ostream& out, const Event& event);

// A command line as the modem reads it: writes joined up to a carriage return, without the NUL
// bytes and line feeds between; a message body ends in Ctrl-Z.
struct Command {
    Micros at;  // when its carriage return was written
    std::string text;
};

// One content of a watched file.
struct FileVersion {
    Micros at;
    std::string text;
};

class Trace {
  public:
    // All kinds are kept but sleeps, whose number would hide the rest.
    explicit Trace(Shared& memory);

    // --- What is kept -------------------------------------------------------------------------
    void Keep(std::initializer_list<Kind> kinds);  // these alone, for long runs
    void KeepSleeps() { memory_.kept_kinds |= KindBit(Kind::kSleep); }
    void Watch(const std::string& path);  // every content, see Versions; before the start
    void Note(const std::string& remark);
    void Add(Event event);  // when its kind is kept
    void Clear();

    // --- The texts, oldest first --------------------------------------------------------------
    std::vector<std::string> Log() const { return Texts(Kind::kLog); }
    std::vector<std::string> Commands() const { return CommandsMatching(""); }
    std::vector<std::string> CommandsMatching(const std::string& start) const;
    std::vector<std::string> Writes() const { return Texts(Kind::kWrite); }  // to the port
    std::vector<std::string> Shell() const { return Texts(Kind::kShell); }
    std::vector<FileVersion> Versions(const std::string& path) const;

    // --- When and how often -------------------------------------------------------------------
    std::vector<Duration> LogTimes(const std::string& line) const;
    std::vector<Duration> CommandTimes(const std::string& command) const;
    std::vector<Duration> ShellTimes(const std::string& line) const;
    std::size_t CountLog(const std::string& line) const;
    std::size_t CountLogContaining(const std::string& part) const;

    // --- The events themselves ----------------------------------------------------------------
    const std::vector<Event>& Events() const { return events_; }
    const std::vector<Command>& TimedCommands() const { return commands_; }
    std::vector<Event> Of(Kind kind) const;
    std::vector<std::string> Texts(Kind kind) const;
    // Times of the events of this kind with exactly this text.
    std::vector<Duration> Times(Kind kind, const std::string& text) const;

    // --- Expectations -------------------------------------------------------------------------
    // These very lines, in this order, with any others between.
    void ExpectLogInOrder(const std::vector<std::string>& lines) const;
    void ExpectNoLog(const std::string& part) const;  // no line has it in it

    // The last `count` events, one line each, for a person.
    void PrintTail(std::ostream& out, std::size_t count) const;

  private:
    void JoinCommand(const Event& write);

    Shared& memory_;
    std::vector<Event> events_;
    std::vector<Command> commands_;
    std::string unfinished_;
    std::unique_ptr<std::ostream> copy_;  // gets every event whole, whatever is cleared later
};

}  // namespace rig
