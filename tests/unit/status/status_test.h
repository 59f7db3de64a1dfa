// The base of the status tests: a scripted modem, and a /var/log of the test's own.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "state/settings.h"
#include "state/statistics_record.h"

using Lines = std::vector<std::string>;
using Levels = std::vector<int>;
using Cards = std::vector<int>;

// The debug levels, of -1 to 4, at which a line is written.
inline const Levels kAtEveryLevel = {-1, 0, 1, 2, 3, 4};
inline const Levels kAtNonZero = {-1, 1, 2, 3, 4};
inline const Levels kAbove0 = {1, 2, 3, 4};
inline const Levels kAbove1 = {2, 3, 4};

inline const Cards kEveryCard = {kCardGeneric, kCardSierra881,   kCardType3,      kCardSierraUsb305,
                                 kCardMc75i,   kCardNovatelE362, kCardNovatelE371};

// A whole answer as a modem sends it: a blank line, the lines, a blank line, OK.
std::string Answered(const Lines& lines);

class StatusTest : public fake::DaemonTest {
  protected:
    StatusTest();
    ~StatusTest() override;

    // The text of /var/log/<name>, or "(missing)".
    std::string Published(const std::string& name) const;
    // What the daemon did to the files of /var/log, in order: "write <name>", "rename <name>".
    static const Lines& FileSteps();

    // The log lines that hold the text, in order.
    Lines LogLinesWith(const std::string& text) const;
    // The debug levels at which `action` writes exactly this line to the log.
    Levels LevelsThatLog(const std::string& line, const std::function<void()>& action);
    // Runs `action` at this debug level and returns its log.
    Lines LogAtLevel(int level, const std::function<void()>& action);
    // The cards that `query` asks anything.
    Cards CardsAsked(const std::function<void()>& query);
    // Lets the clock run.
    void Wait(int seconds) { world.now_us += std::int64_t{seconds} * 1000000; }

    GlobalStats& stats = g_S_Globalstats;
};
