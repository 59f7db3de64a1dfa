// A life of the daemon that was captured, and its round trip: log, story, the same again.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "capture/story.h"
#include "rig/world.h"
#include "router_log.h"

constexpr std::time_t kNow = 1773480000;  // a few minutes after the worlds begin

// All that each status file has ever said.
using Published = std::map<std::string, std::vector<std::string>>;

// What a life has left.
struct Life {
    Published published;
    std::vector<std::string> received;  // messages
    std::string log;
    std::vector<std::string> strays;  // commands that the story does not have there
};

// A drive through town at debug level 4.
Life Live(const std::string& card, LogForm form, const std::function<void(rig::World&)>& story);
// The story lived again.
Life LiveAgain(const capture::Story& story);

// The log as a story, always with the same key. Fails the test when it is refused.
std::string Converted(const std::string& log);

// The daemon with the story in the modem's place comes to the same, other identities aside.
void ExpectRoundTrip(const Life& lived);

// What happens on the way.
void DriveWithMessages(rig::World& world);
void DriveWithACall(rig::World& world);
