// Files of the private root, with simulated times. What only looks at them needs no object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rig/duration.h"
#include "rig/protocol.h"

namespace rig {

class Files {
  public:
    explicit Files(Shared& memory) : memory_(memory) {}
    ~Files();  // undoes the mounts
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    // Written whole, its folder made when missing. A regular file only.
    void Write(const std::string& path, const std::string& text);
    // "" for a file that cannot be read.
    static std::string Read(const std::string& path);
    static bool Exists(const std::string& path);  // whatever it is, a dangling link too
    static std::vector<std::string> List(const std::string& folder);  // sorted names
    static void Remove(const std::string& path);                      // with all that is in it
    void Touch(const std::string& path);                              // as touch(1) does
    bool TryTouch(const std::string& path);                           // false when it cannot
    void SetAge(const std::string& path, Duration age);  // both its times, against the wall clock
    std::uint32_t Known() const { return memory_.file_times.Count(); }  // that have simulated times

    void Fail(const std::string& path, int error);  // opening it fails; 0: no longer
    // A file system of its own on a folder: nearly no room, or no writing. Until the world's end.
    void MountSmall(const std::string& folder, std::size_t bytes);
    void MountReadOnly(const std::string& folder);

    // After somebody else's work: what was made or changed since then, in any private folder,
    // gets the simulated time. Call BeginForeignWork before.
    void BeginForeignWork();
    void EndForeignWork();

  private:
    std::int64_t WallClock() const { return memory_.now + memory_.wall_offset; }

    Shared& memory_;
    timespec foreign_since_ = {};
    std::vector<std::string> mounts_;  // the newest first
};

}  // namespace rig
