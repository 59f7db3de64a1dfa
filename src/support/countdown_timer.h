// A passive period timer on the wall clock: it never fires, it answers when asked.
//
// Stopped -> Start() -> counting -> (period passed) -> expired, until Start() or Stop(). The wall
// clock is meant: set back, every running timer reports expired at its next test; set forward by
// more than a period, timers expire early.
#pragma once

#include <cstdint>

class cCountdownTimer {
  public:
    cCountdownTimer();                            // one second
    explicit cCountdownTimer(int count);          // count seconds
    explicit cCountdownTimer(bool milliseconds);  // one millisecond, or one second
    // Counts in milliseconds when the flag is 1, else in seconds.
    cCountdownTimer(int milliseconds_flag, std::uint32_t count);

    // Takes effect at the next test; neither restarts nor stops the timer.
    void SetPeriod(std::uint32_t count);
    void Start();
    void Stop();

    bool IsRunning() const { return running_; }
    bool HasExpired();           // running, and at least the period has passed
    bool IsCounting();           // running, and the period has not passed yet
    std::uint32_t GetElapsed();  // in the timer's unit; 0 when stopped

    // " 01:02:05 ", or " 1 Days, 01:01:01 " from a day on ("Days" even for one). The text belongs
    // to the timer and lasts until the next call.
    const char* FormatElapsed();

  private:
    // Since 1970. 32 bits wrap in 2038, and a difference of two of them does not mind.
    struct WallTime {
        std::int32_t seconds = 0;
        std::int32_t milliseconds = 0;
    };
    static WallTime ReadClock();
    std::uint32_t ElapsedMilliseconds();

    std::uint32_t period_ = 0;  // milliseconds
    char text_[80] = {};
    WallTime start_;  // of the last Start()
    WallTime now_;    // of the last test
    bool running_ = false;
    std::uint32_t unit_ = 1000;  // milliseconds in one count: 1000 or 1
};
