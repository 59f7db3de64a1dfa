#include "sim/modem/overrides.h"

#include <algorithm>

namespace sim {

namespace {

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

void Overrides::Always(const std::string& command, std::string reply, Micros delay) {
    EntryOf(command).always = Dictated{std::move(reply), delay};
}

void Overrides::Once(const std::string& command, std::string reply, Micros delay) {
    EntryOf(command).once.push_back({std::move(reply), delay});
}

void Overrides::Forget(const std::string& command) {
    const std::string key = NormaliseCommand(command);
    entries_.erase(key);
    patterns_.erase(std::remove(patterns_.begin(), patterns_.end(), key), patterns_.end());
}

std::optional<Reply> Overrides::Take(const std::string& command) {
    Entry* found = Find(command);
    if (found == nullptr) return std::nullopt;
    Dictated answer;
    if (!found->once.empty()) {
        answer = std::move(found->once.front());
        found->once.pop_front();
    } else {
        answer = *found->always;
    }
    Reply reply;
    reply.raw = true;
    reply.delay = answer.delay;
    reply.prompt = EndsWith(answer.reply, "> ");
    reply.info = std::move(answer.reply);
    return reply;
}

Overrides::Entry& Overrides::EntryOf(const std::string& command) {
    const std::string key = NormaliseCommand(command);
    if (EndsWith(key, "*") && entries_.count(key) == 0) patterns_.push_back(key);
    return entries_[key];
}

Overrides::Entry* Overrides::Find(const std::string& command) {
    if (entries_.empty()) return nullptr;
    const auto exact = entries_.find(command);
    if (exact != entries_.end() && exact->second.HasReply()) return &exact->second;
    for (const std::string& pattern : patterns_) {
        if (!StartsWith(command, std::string_view(pattern).substr(0, pattern.size() - 1))) continue;
        if (entries_[pattern].HasReply()) return &entries_[pattern];
    }
    return nullptr;
}

}  // namespace sim
