// Limits on waits that hold on any machine, also on one that is busy with other things.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace machine {

// How many times longer than on a developer's idle machine a small piece of work takes just now: a
// process is started, counts for about 10 ms, and ends. At least 1.
inline double Slowness() {
    constexpr std::chrono::duration<double> kAtRest{0.012};
    constexpr int kCount = 5'000'000;
    const auto started = std::chrono::steady_clock::now();
    const pid_t worker = fork();
    if (worker == 0) {
        volatile int counted = 0;
        while (counted < kCount) counted = counted + 1;
        _exit(0);
    }
    if (worker > 0) waitpid(worker, nullptr, 0);
    return std::max(1.0, (std::chrono::steady_clock::now() - started) / kAtRest);
}

// Real time as an idle machine would have spent it: the slower the machine, the slower it runs. It
// looks at the machine once a second, when it is asked for the time.
class FairClock {
  public:
    // Since the clock was made.
    double Seconds() {
        const auto now = std::chrono::steady_clock::now();
        const std::chrono::duration<double> since = now - looked_;
        if (since.count() < 1) return seconds_ + since.count() / slowness_;
        slowness_ = Slowness();
        seconds_ += since.count() / slowness_;
        looked_ = now;
        return seconds_;
    }

  private:
    std::chrono::steady_clock::time_point looked_ = std::chrono::steady_clock::now();
    double slowness_ = 1;
    double seconds_ = 0;
};

// Looks at the condition until it holds; false when it does not within `seconds` of a FairClock.
template <typename Condition>
bool WaitUntil(const Condition& condition, double seconds = 20) {
    constexpr useconds_t kBetweenLooks = 5000;
    FairClock clock;
    while (!condition()) {
        if (clock.Seconds() > seconds) return false;
        usleep(kBetweenLooks);
    }
    return true;
}

}  // namespace machine
