#include "sim/modem/line.h"

#include <algorithm>

namespace sim {

void Line::SetRate(int bits_per_second) {
    constexpr Micros kBitsOfAByte = 10;  // with start and stop bit
    byte_time_ =
        bits_per_second > 0 ? (kBitsOfAByte * kSecond + bits_per_second - 1) / bits_per_second : 0;
}

void Line::Put(std::string_view bytes, Micros now) {
    if (waiting_.empty()) first_at_ = std::max(now + byte_time_, first_at_);
    waiting_.append(bytes);
}

Micros Line::Next() const {
    constexpr std::size_t kReceiver = 16;  // bytes; a shorter rest is told of, too
    if (waiting_.empty()) return kNever;
    const auto before_last = static_cast<Micros>(std::min(waiting_.size(), kReceiver)) - 1;
    return first_at_ + before_last * byte_time_;
}

std::string Line::Take(Micros now) {
    if (waiting_.empty() || first_at_ > now) return {};
    std::size_t count = waiting_.size();
    if (byte_time_ > 0) {
        count = std::min(count, static_cast<std::size_t>((now - first_at_) / byte_time_) + 1);
    }
    std::string arrived = waiting_.substr(0, count);
    waiting_.erase(0, count);
    first_at_ += static_cast<Micros>(count) * byte_time_;
    return arrived;
}

}  // namespace sim
