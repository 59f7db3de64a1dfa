#include "capture/replay/story_peer.h"

#include <algorithm>

namespace capture {

namespace {

// Two passes of the daemon, or a command more or less, are no other story.
constexpr std::size_t kLookahead = 60;  // exchanges

constexpr char kSend[] = "AT+CMGS=\"";
constexpr char kEndOfBody = '\x1a';
constexpr char kOk[] = "\r\nOK\r\n";
constexpr char kError[] = "\r\nERROR\r\n";

bool AsksForBody(const std::string& command) {
    return command.compare(0, sizeof(kSend) - 1, kSend) == 0;
}

}  // namespace

StoryPeer::StoryPeer(Story life) : story_(std::move(life)) {
    if (!story_.exchanges.empty() && story_.exchanges.front().IsStart()) {
        Say(story_.exchanges.front(), 0);
        next_ = 1;
    }
}

// A line feed behind a carriage return is the rest of a line's end. Any other is a part of a
// message.
void StoryPeer::Receive(std::string_view bytes, rig::Micros now) {
    for (const char c : bytes) {
        const bool rest_of_end = c == '\n' && after_return_;
        if (c == '\0' || rest_of_end) continue;
        after_return_ = c == '\r';
        const bool ends = c == (body_follows_ ? kEndOfBody : '\r');
        if (c != '\r' || body_follows_) line_ += c;
        if (!ends || line_.empty()) continue;
        const std::string command = std::move(line_);
        line_.clear();
        body_follows_ = !body_follows_ && AsksForBody(command);
        Answer(command, now);
    }
}

void StoryPeer::Answer(const std::string& command, rig::Micros now) {
    if (const Exchange* const told = Find(command)) {
        Say(*told, now);
        AskForMessage();
    } else {
        strays_.push_back(command);
        Say(Guess(command), now);
    }
}

// The expected one, or the next of this command that is not far.
const Exchange* StoryPeer::Find(const std::string& command) {
    const std::size_t end = std::min(next_ + kLookahead, story_.exchanges.size());
    for (std::size_t i = next_; i < end; ++i) {
        if (story_.exchanges[i].command != command) continue;
        next_ = i + 1;
        return &story_.exchanges[i];
    }
    return nullptr;
}

// As it was answered last, or will be first; one that is never heard is taken as a setting that
// the modem accepts or a question that it does not know.
Exchange StoryPeer::Guess(const std::string& command) const {
    const auto same = [&](const Exchange& exchange) { return exchange.command == command; };
    const auto here = story_.exchanges.begin() + static_cast<std::ptrdiff_t>(next_);
    const auto before =
        std::find_if(std::make_reverse_iterator(here), story_.exchanges.rend(), same);
    if (before != story_.exchanges.rend()) return *before;
    const auto after = std::find_if(here, story_.exchanges.end(), same);
    if (after != story_.exchanges.end()) return *after;
    const bool asks = command.find('?') != std::string::npos;
    return {command, {{sim::kUsualDelay, asks ? kError : kOk}}};
}

void StoryPeer::Say(const Exchange& exchange, rig::Micros now) {
    const std::string text = exchange.Text();
    if (text.find("ERROR") != std::string::npos) body_follows_ = false;  // no prompt, no body
    for (const Saying& saying : exchange.answer) {
        const rig::Micros at = now + saying.delay;
        const auto later = std::find_if(sayings_.begin(), sayings_.end(),
                                        [at](const Due& other) { return at < other.at; });
        sayings_.insert(later, {at, saying.bytes});
    }
}

void StoryPeer::AskForMessage() const {
    if (next_ + 1 >= story_.exchanges.size() || !on_message_wanted) return;
    const std::string& command = story_.exchanges[next_].command;
    const std::string& body = story_.exchanges[next_ + 1].command;
    if (!AsksForBody(command) || body.empty() || body.back() != kEndOfBody) return;
    const std::size_t start = sizeof(kSend) - 1;
    on_message_wanted(command.substr(start, command.size() - start - 1),
                      body.substr(0, body.size() - 1));
}

rig::Micros StoryPeer::NextEvent() const {
    return sayings_.empty() ? rig::kNever : sayings_.front().at;
}

std::string StoryPeer::Transmit(rig::Micros now) {
    std::string bytes;
    while (NextEvent() <= now) {
        bytes += sayings_.front().bytes;
        sayings_.pop_front();
    }
    return bytes;
}

}  // namespace capture
