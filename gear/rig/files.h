// Files of the private root, with simulated times.
#pragma once

#include <cstdint>
#include <string>

#include "rig/protocol.h"

namespace rig {

class Files {
  public:
    explicit Files(Shared& memory) : memory_(memory) {}

    // Written whole, its folder made when missing. A regular file only.
    void Write(const std::string& path, const std::string& text);
    // "" for a file that cannot be read.
    static std::string Read(const std::string& path);
    static bool Exists(const std::string& path);  // whatever it is, a dangling link too
    static void Remove(const std::string& path);  // with all that is in it
    // As touch(1) does. False when it cannot.
    bool Touch(const std::string& path);
    // Both times, microseconds of the wall clock.
    void SetTimes(const std::string& path, std::int64_t wall);

    // After somebody else's work: what was made or changed since then, in any private folder,
    // gets the simulated time. Call BeginForeignWork before.
    void BeginForeignWork();
    void EndForeignWork();

  private:
    std::int64_t WallClock() const { return memory_.now + memory_.wall_offset; }

    Shared& memory_;
    timespec foreign_since_ = {};
};

}  // namespace rig
