// 32-bit arithmetic on the wall clock, with all that a set clock does to it.

#include "support/countdown_timer.h"

#include <sys/time.h>

#include <cstdio>

cCountdownTimer::cCountdownTimer() : cCountdownTimer(0, 1) {}

cCountdownTimer::cCountdownTimer(int count)
    : cCountdownTimer(0, static_cast<std::uint32_t>(count)) {}

cCountdownTimer::cCountdownTimer(bool milliseconds) : cCountdownTimer(milliseconds ? 1 : 0, 1) {}

cCountdownTimer::cCountdownTimer(int milliseconds_flag, std::uint32_t count)
    : unit_(milliseconds_flag == 1 ? 1 : 1000) {
    SetPeriod(count);
}

void cCountdownTimer::SetPeriod(std::uint32_t count) {
    period_ = count * unit_;
}

void cCountdownTimer::Start() {
    running_ = true;
    start_ = ReadClock();
}

void cCountdownTimer::Stop() {
    running_ = false;
}

bool cCountdownTimer::HasExpired() {
    return running_ && ElapsedMilliseconds() >= period_;
}

bool cCountdownTimer::IsCounting() {
    return running_ && !HasExpired();
}

std::uint32_t cCountdownTimer::GetElapsed() {
    return running_ ? ElapsedMilliseconds() / unit_ : 0;
}

const char* cCountdownTimer::FormatElapsed() {
    const std::uint32_t elapsed = GetElapsed();
    const std::uint32_t s = unit_ == 1 ? elapsed / 1000 : elapsed;
    const std::uint32_t days = s / 86400;
    const std::uint32_t hours = s / 3600 - days * 24;
    const std::uint32_t minutes = (s / 60) % 60;
    if (days != 0) {
        std::snprintf(text_, sizeof(text_), " %u Days, %2.2u:%2.2u:%2.2u ", days, hours, minutes,
                      s % 60);
    } else {
        std::snprintf(text_, sizeof(text_), " %2.2u:%2.2u:%2.2u ", hours, minutes, s % 60);
    }
    return text_;
}

cCountdownTimer::WallTime cCountdownTimer::ReadClock() {
    timeval now = {};
    while (gettimeofday(&now, nullptr) < 0) {
    }
    return {static_cast<std::int32_t>(now.tv_sec), static_cast<std::int32_t>(now.tv_usec / 1000)};
}

// Unsigned 32-bit on purpose: a clock set back gives a huge number, so the timer reports expired
// instead of waiting for the old time to come round again.
// Oddity timers-follow-the-clock: a clock set back makes all timers expire at once.
std::uint32_t cCountdownTimer::ElapsedMilliseconds() {
    now_ = ReadClock();
    const auto seconds =
        static_cast<std::uint32_t>(now_.seconds) - static_cast<std::uint32_t>(start_.seconds);
    const auto milliseconds = static_cast<std::uint32_t>(now_.milliseconds) -
                              static_cast<std::uint32_t>(start_.milliseconds);
    return seconds * 1000U + milliseconds;
}
