#include "rig/clock.h"

#include <ctime>
#include <stdexcept>

namespace rig {

namespace {

constexpr char kUsualStart[] = "2026-03-14 09:15:00";
constexpr std::int64_t kSecond = 1000000;

}  // namespace

Clock::Clock(Shared& memory, Trace& trace) : memory_(memory), trace_(trace) {
    Set(kUsualStart);
}

std::int64_t Clock::WallSeconds() const {
    return (memory_.now + memory_.wall_offset) / kSecond;
}

void Clock::Set(const std::string& utc) {
    std::tm time = {};
    if (strptime(utc.c_str(), "%Y-%m-%d %H:%M:%S", &time) == nullptr) {
        throw std::invalid_argument("not a time: " + utc);
    }
    memory_.wall_offset = timegm(&time) * kSecond;
}

void Clock::Jump(Duration distance) {
    memory_.wall_offset += distance.count();
    trace_.Add({memory_.now, Kind::kClock, static_cast<int>(distance.count() / kSecond), ""});
}

void Clock::At(Duration since_start, Action action) {
    plans_.push({since_start.count(), plan_count_++, std::move(action)});
}

void Clock::Every(Duration period, Action action) {
    After(period, [this, period, action = std::move(action)] {
        action();
        Every(period, action);
    });
}

void Clock::RunDue() {
    while (NextEvent() <= memory_.now) {
        const Action action = plans_.top().action;
        plans_.pop();
        action();
    }
}

}  // namespace rig
