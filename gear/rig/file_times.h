// Times of files in simulated time. The kernel stamps files with real time; this table, in memory
// that both sides share, holds for each file the simulated times that belong to it.
#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace rig {

// Open addressing, never rehashed. A scenario has few files at a time, but in simulated years many
// come and go, and the inode numbers of a tmpfs come only once.
class FileTimes {
  public:
    static constexpr std::uint32_t kSlots = 1U << 19;

    struct Times {
        std::uint64_t device;
        std::uint64_t inode;
        timespec real_modified;  // as the kernel shows them, to notice changes by others
        timespec real_changed;
        std::int64_t modified;  // simulated wall clock, microseconds since 1970
        std::int64_t changed;
    };

    // The file was just written: both times are `wall`.
    void Written(const struct stat& file, std::int64_t wall) {
        if (Times* times = Slot(file)) *times = Entry(file, wall, wall);
    }

    // Only the status changed, by a rename for one.
    void StatusChanged(const struct stat& file, std::int64_t wall) {
        if (Times* times = Slot(file)) {
            const bool known = times->inode != 0;
            *times = Entry(file, known ? times->modified : wall, wall);
        }
    }

    // Says exactly these times.
    void Set(const struct stat& file, std::int64_t modified, std::int64_t changed) {
        if (Times* times = Slot(file)) *times = Entry(file, modified, changed);
    }

    // Nobody has touched the file since it was last told here.
    bool IsAsSeen(const struct stat& file) {
        const Times* times = Slot(file);
        return times != nullptr && times->inode != 0 && Same(times->real_modified, file.st_mtim) &&
               Same(times->real_changed, file.st_ctim);
    }

    // The file has lost its last name. What had to give way to it moves up, so that it is found.
    void Forget(const struct stat& file) {
        Times* times = Slot(file);
        if (times == nullptr || times->inode == 0) return;
        std::uint64_t gap = static_cast<std::uint64_t>(times - slots_);
        for (std::uint64_t next = (gap + 1) % kSlots; slots_[next].inode != 0;
             next = (next + 1) % kSlots) {
            const std::uint64_t home = Hash(slots_[next].device, slots_[next].inode);
            if ((next - home) % kSlots < (next - gap) % kSlots) continue;
            slots_[gap] = slots_[next];
            gap = next;
        }
        slots_[gap] = {};
    }

    // Files that it knows; for tests.
    std::uint32_t Count() const {
        std::uint32_t count = 0;
        for (const Times& times : slots_) count += times.inode != 0 ? 1 : 0;
        return count;
    }

    // Replaces the kernel's times by the simulated ones. A file that somebody else made or changed
    // since it was last seen counts as changed at `wall`.
    void Translate(struct stat& file, std::int64_t wall) {
        Times* times = Slot(file);
        if (times == nullptr) return;
        if (times->inode == 0) {
            *times = Entry(file, wall, wall);
        } else {
            if (!Same(times->real_modified, file.st_mtim)) times->modified = wall;
            if (!Same(times->real_changed, file.st_ctim)) times->changed = wall;
            times->real_modified = file.st_mtim;
            times->real_changed = file.st_ctim;
        }
        Show(file, times->modified, times->changed);
    }

    static void Show(struct stat& file, std::int64_t modified, std::int64_t changed) {
        file.st_mtim = ToTimespec(modified);
        file.st_ctim = ToTimespec(changed);
        file.st_atim = file.st_mtim;
    }

  private:
    static Times Entry(const struct stat& file, std::int64_t modified, std::int64_t changed) {
        return {file.st_dev, file.st_ino, file.st_mtim, file.st_ctim, modified, changed};
    }

    static bool Same(const timespec& a, const timespec& b) {
        return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
    }

    static timespec ToTimespec(std::int64_t micros) {
        std::int64_t seconds = micros / 1000000;
        std::int64_t rest = micros % 1000000;
        if (rest < 0) {
            --seconds;
            rest += 1000000;
        }
        return {static_cast<time_t>(seconds), static_cast<long>(rest * 1000)};
    }

    static std::uint64_t Hash(std::uint64_t device, std::uint64_t inode) {
        return ((inode * 0x9E3779B97F4A7C15ULL) ^ (device * 0xC2B2AE3D27D4EB4FULL)) % kSlots;
    }

    // The file's slot, or an empty one; nullptr when the table is full.
    Times* Slot(const struct stat& file) {
        const std::uint64_t home = Hash(file.st_dev, file.st_ino);
        for (std::uint32_t i = 0; i < kSlots; ++i) {
            Times& times = slots_[(home + i) % kSlots];
            if (times.inode == 0) return &times;
            if (times.inode == file.st_ino && times.device == file.st_dev) return &times;
        }
        return nullptr;
    }

    Times slots_[kSlots];
};

}  // namespace rig
