// A terminal that a program draws on: taken over, drawn, given back as it was.
#pragma once

#include <termios.h>

#include <string>
#include <vector>

#include "modemctl/terminal.h"

namespace modemctl {

class Screen {
  public:
    // Keys come one by one and unseen, from standard input if it is a terminal.
    explicit Screen(Terminal& terminal);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    // Writes the lines that have changed since the last time, so that a slow line has little to
    // carry. Lines beyond the last row are left out; painted text in them must be closed.
    void Draw(const std::vector<std::string>& lines);
    // The next Draw writes everything; asks for the size anew.
    void Refresh();

    void Take();  // once more, behind GiveBack
    void GiveBack();

  private:
    Terminal& terminal_;
    bool taken_ = false;
    bool has_keys_ = false;
    termios saved_ = {};
    std::vector<std::string> shown_;
};

// What interrupts a wait. Signals are only noticed there, never in the middle of something.
enum class Wake {
    kTime,    // nothing happened
    kKey,     // standard input has something
    kResize,  // SIGWINCH
    kPause,   // SIGTSTP: give the terminal back and stop
    kEnd,     // SIGINT, SIGTERM, SIGHUP
};

class Waiter {
  public:
    // From here on the signals wait for Wait. `keys`: standard input is looked at, too.
    explicit Waiter(bool keys);

    Wake Wait(int milliseconds);
    // The key at hand: a character, or one of the codes below; 0 at the end of the input, which is
    // then looked at no more.
    int ReadKey();
    // Stops the process as SIGTSTP does, until it is continued.
    static void StopProcess();

  private:
    bool keys_;
};

constexpr int kKeyRight = 256;
constexpr int kKeyLeft = 257;
constexpr int kKeyNothing = 258;  // a sequence that means nothing here

}  // namespace modemctl
