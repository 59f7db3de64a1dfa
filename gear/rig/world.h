// A scenario's world: the daemon as it is shipped, a modem, a router's files, and time that only
// moves when the daemon sleeps.
//
//     TEST(SignalPoll, FlipsToTheOtherFormAfterAnError) {
//         World world("-E362");
//         world.modem.Answer("AT+CSQ", "\r\nERROR\r\n");
//         world.Start();
//         world.RunFor(65s);
//         EXPECT_THAT(world.trace.Commands(), Contains("AT+CSQ?"));
//     }
//
// At first: up for an hour, the host key present, 2026-03-14 09:15:00 UTC, no configuration files,
// the modem that the card option names on /dev/ttyUSB0, no address on wwan0, process id 4242.
//
// Between two Run calls the daemon stands still in a call, nearly always a sleep: whatever the
// story does then happens at that very instant. Times are counted from the program's start.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/clock.h"
#include "rig/daemon.h"
#include "rig/duration.h"
#include "rig/files.h"
#include "rig/modem.h"
#include "rig/port.h"
#include "rig/router.h"
#include "rig/trace.h"

namespace rig {

// The daemon's arguments word by word, nothing added.
struct Exactly {
    std::vector<std::string> arguments;
};

class World {
  public:
    // Arguments divided by blanks; the device is added when none of them is one. Throws when one is
    // an option that the daemon does not know.
    explicit World(const std::string& arguments = "");
    explicit World(const Exactly& exactly);
    // Ends the daemon, and fails the test when it crashed, printed anything that the test did not
    // ask for, leaked, or sent a command that the modem does not know.
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // Of whom a story can tell. The order is that of their needs.
    Daemon daemon;
    Trace trace;
    Clock clock;
    Files files;
    Router router;
    Port port;
    Modem modem;

    void Start();  // the program is loaded, nothing of it has run
    // All that happens before now + duration.
    void RunFor(Duration duration);
    // Runs until the condition holds, which is looked at after every event, and stops right there.
    // Fails the test and returns false when it does not hold within `limit` or the daemon ends.
    bool RunUntil(const std::function<bool()>& condition, Duration limit);
    // Until this very line is logged, once more than now.
    bool RunUntilLog(const std::string& line, Duration limit);
    bool RunUntilCommand(const std::string& command, Duration limit);
    // Until the daemon ends. Returns its exit status; -1, and the test fails, if it does not or if
    // a signal ended it.
    int RunToExit(Duration limit);
    void Stop();  // makes the daemon call exit(0) where it stands
    // When it has ended: the same program once more, so much later, in the world as it is then.
    // What the story has planned goes on meanwhile.
    void StartAgain(Duration later);

  private:
    explicit World(const std::vector<std::string>& arguments);

    void Run(Micros stop, const std::function<bool()>& condition);
    void Step(Micros stop);
    void Sleep(Micros stop);
    void Resume(Micros stop);
    void TakeJournal();
    void RunDue();
    Micros NextEvent() const;
    std::string RequestText() const { return {memory_.text, memory_.text_size}; }
    void ServeShell();
    void ServeKernelFile();
    void PrintStory();

    Shared& memory_;
    bool started_ = false;
    bool in_shell_ = false;  // a command takes time: signals wait for its end
};

}  // namespace rig
