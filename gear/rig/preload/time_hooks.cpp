// Sleeps and clocks. Time stands still but for sleeps.

#include <errno.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "rig/preload/agent.h"

using namespace rig;

namespace {

constexpr Micros kSecond = 1000000;

timespec ToTimespec(Micros micros) {
    return {static_cast<time_t>(micros / kSecond), static_cast<long>(micros % kSecond * 1000)};
}

bool IsWallClock(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
}

bool IsProcessClock(clockid_t clock) {
    return clock < 0 || clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID;
}

// 0, or -1 with errno EINTR and what was left.
int Sleep(const timespec& duration, timespec* left) {
    const Micros rest = agent::Pass(duration.tv_sec * kSecond + (duration.tv_nsec + 999) / 1000);
    if (rest == 0) return 0;
    if (left != nullptr) *left = ToTimespec(rest);
    errno = EINTR;
    return -1;
}

}  // namespace

extern "C" {

unsigned sleep(unsigned seconds) {
    if (!agent::EnterBeside()) return RIG_REAL(sleep)(seconds);
    return static_cast<unsigned>(agent::Pass(seconds * kSecond) / kSecond);
}

int usleep(useconds_t micros) {
    if (!agent::EnterBeside()) return RIG_REAL(usleep)(micros);
    return Sleep(ToTimespec(micros), nullptr);
}

int nanosleep(const timespec* duration, timespec* left) {
    if (!agent::EnterBeside()) return RIG_REAL(nanosleep)(duration, left);
    return Sleep(*duration, left);
}

// Returns the error instead of setting errno.
int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    if (!agent::EnterBeside()) return RIG_REAL(clock_nanosleep)(clock, flags, time, left);
    timespec duration = *time;
    if ((flags & TIMER_ABSTIME) != 0) {
        const Micros now = IsWallClock(clock) ? agent::WallClock() : agent::shared->now;
        const Micros until = time->tv_sec * kSecond + time->tv_nsec / 1000;
        duration = ToTimespec(until > now ? until - now : 0);
    }
    const int error = errno;
    const int result = Sleep(duration, left) == 0 ? 0 : EINTR;
    errno = error;
    return result;
}

time_t time(time_t* result) noexcept {
    if (!agent::EnterBeside()) return RIG_REAL(time)(result);
    ++agent::shared->clock_reads;
    const auto now = static_cast<time_t>(agent::WallClock() / kSecond);
    if (result != nullptr) *result = now;
    return now;
}

int gettimeofday(timeval* now, void* zone) noexcept {
    if (!agent::EnterBeside()) return RIG_REAL(gettimeofday)(now, zone);
    ++agent::shared->clock_reads;
    const Micros wall = agent::WallClock();
    *now = {static_cast<time_t>(wall / kSecond), static_cast<suseconds_t>(wall % kSecond)};
    return 0;
}

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    if (IsProcessClock(clock) || !agent::EnterBeside()) return RIG_REAL(clock_gettime)(clock, now);
    ++agent::shared->clock_reads;
    *now = ToTimespec(IsWallClock(clock) ? agent::WallClock() : agent::shared->now);
    return 0;
}

pid_t getpid() noexcept {
    if (!agent::EnterBeside()) return RIG_REAL(getpid)();
    return agent::shared->process_id;
}

}  // extern "C"
