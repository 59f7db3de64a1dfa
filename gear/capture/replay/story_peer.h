// A modem that says what a story says: the exchanges in their order, each answer with its delays.
// A daemon that goes another way is followed for as long as that can be done.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "capture/story.h"
#include "rig/peer.h"

namespace capture {

class StoryPeer : public rig::Peer {
  public:
    explicit StoryPeer(Story life);

    void Receive(std::string_view bytes, rig::Micros now) override;
    rig::Micros NextEvent() const override;
    std::string Transmit(rig::Micros now) override;

    bool IsTold() const { return next_ == story_.exchanges.size() && sayings_.empty(); }
    // Commands that came where the story has none of them.
    const std::vector<std::string>& Strays() const { return strays_; }

    // The story goes on with a message that the daemon sends: it needs one.
    std::function<void(const std::string& number, const std::string& text)> on_message_wanted;

  private:
    void Answer(const std::string& command, rig::Micros now);
    const Exchange* Find(const std::string& command);
    Exchange Guess(const std::string& command) const;
    void Say(const Exchange& exchange, rig::Micros now);
    void AskForMessage() const;

    struct Due {
        rig::Micros at;
        std::string bytes;
    };
    Story story_;
    std::size_t next_ = 0;  // the exchange that is expected
    std::deque<Due> sayings_;
    std::string line_;
    bool after_return_ = false;
    bool body_follows_ = false;
    std::vector<std::string> strays_;
};

}  // namespace capture
