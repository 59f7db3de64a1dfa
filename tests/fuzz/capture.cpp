// Any log as one of the field, and any text as a story. The bytes: which of the two; then the text.
#include <stdexcept>
#include <string>

#include "capture/convert.h"
#include "capture/replay/story_peer.h"
#include "fuzz_main.h"

namespace {

constexpr std::time_t kNow = 1773479712;

void MustBeStory(const std::string& text) {
    const capture::Story story = capture::ReadStory(text);
    Must(capture::WriteStory(story) == text, "a story is read as it was written");
    for (const capture::Story& life : story.Lives()) {
        capture::StoryPeer peer(life);
        for (const capture::Exchange& exchange : life.exchanges) {
            peer.Receive(exchange.command + "\r\n", 0);
        }
        peer.Transmit(rig::kNever - 1);
        Must(peer.NextEvent() == rig::kNever, "all is said in the end");
    }
}

void Convert(const std::string& log) {
    capture::Request request;
    request.name = "log";
    request.now = kNow;
    request.key = {1, 2};
    const std::string story = capture::Convert(log, request).text;
    request.as_profile = true;
    const capture::Result profile = capture::Convert(log, request);
    Must(story.empty() == profile.text.empty(), "one is refused, and so is the other");
    Must(!story.empty() || !profile.complaints.empty(), "a refusal has a reason");
    if (!story.empty()) MustBeStory(story);
}

void Read(const std::string& text) {
    capture::Story story;
    try {
        story = capture::ReadStory(text);
    } catch (const std::runtime_error&) {
        return;
    }
    MustBeStory(capture::WriteStory(story));
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    const FuzzedInput input(data, size, 1);
    const std::string text(data + (size > 0 ? 1 : 0), data + size);
    input.Choice(0) % 2 == 0 ? Convert(text) : Read(text);
}
