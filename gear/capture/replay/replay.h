// One life of the daemon as a story tells it, in simulated time.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "capture/replay/story_peer.h"
#include "capture/story.h"
#include "rig/world.h"

namespace capture {

// A carrier that gives wwan0 an address for as long as udhcpc runs, and bytes that leave it.
void PlayRouter(rig::World& world);

class Replay {
  public:
    // The configuration files say what the story shows: the APN that the modem was given, whether
    // its time was asked for. Files of the router can be changed before Run.
    explicit Replay(const Story& life);

    rig::World& world() { return world_; }

    // Until the story is told. False, and the test fails, when the daemon ends before or does not
    // come to its end.
    bool Run();

    const std::vector<std::string>& Strays() const { return peer_->Strays(); }

  private:
    rig::World world_;
    StoryPeer* peer_;  // the world's
};

}  // namespace capture
