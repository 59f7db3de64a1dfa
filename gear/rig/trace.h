// What happened in a scenario, in order, with the simulated time of each event.
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

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
    void Add(Event event);
    void Clear();
    // From now on each event is also written there, whole, whatever is cleared later.
    void CopyTo(std::unique_ptr<std::ostream> copy) { copy_ = std::move(copy); }

    const std::vector<Event>& Events() const { return events_; }
    const std::vector<Command>& Commands() const { return commands_; }

    std::vector<Event> Of(Kind kind) const;
    std::vector<Event> Where(const std::function<bool(const Event&)>& wanted) const;
    std::vector<std::string> Texts(Kind kind) const;
    // Times of the events of this kind with exactly this text.
    std::vector<Micros> Times(Kind kind, const std::string& text) const;
    std::vector<FileVersion> Versions(const std::string& path) const;

    // The last `count` events, one line each, for a person.
    void PrintTail(std::ostream& out, std::size_t count) const;

  private:
    void JoinCommand(const Event& write);

    std::vector<Event> events_;
    std::vector<Command> commands_;
    std::string unfinished_;
    std::unique_ptr<std::ostream> copy_;
};

}  // namespace rig
