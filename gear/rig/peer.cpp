#include "rig/peer.h"

namespace rig {

void ScriptPeer::Receive(std::string_view bytes, Micros now) {
    for (const char c : bytes) {
        if (c == '\0' || c == '\n') continue;
        if (c != '\r') {
            line_ += c;
            continue;
        }
        std::string answer = script_(line_);
        line_.clear();
        if (!answer.empty()) answers_.push_back({now + delay_, std::move(answer)});
    }
}

std::string ScriptPeer::Transmit(Micros now) {
    std::string bytes;
    while (NextEvent() <= now) {
        bytes += answers_.front().bytes;
        answers_.pop_front();
    }
    return bytes;
}

}  // namespace rig
