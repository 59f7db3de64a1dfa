// What the daemon reads of the system: the pid file, a command line and the uptime below /proc, and
// the count of PPP errors. The bytes: card, debug level; then the four texts, parted by 0x1e.
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

#include "core/error_checks.h"
#include "core/single_instance.h"
#include "fuzz_main.h"
#include "scenarios/worlds/daemon_words.h"
#include "state/published.h"
#include "state/settings.h"
#include "support/text.h"

namespace {

constexpr char kName[] = "modemd";
constexpr char kCommandLine[] = "/tmp/cmdline";
constexpr char kUptime[] = "/tmp/uptime";
constexpr std::size_t kLongestCommandLine = 255;

// In the private root this program's own command line and the uptime are files of the target.
void CoverProc() {
    static bool covered = false;
    if (covered) return;
    covered = true;
    FreshDaemon::Write(kCommandLine, "");
    FreshDaemon::Write(kUptime, "");
    const std::string own = Format("/proc/%d/cmdline", static_cast<int>(getpid()));
    Must(mount(kCommandLine, own.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
             mount(kUptime, published::kUptimeFile, nullptr, MS_BIND, nullptr) == 0,
         "the files below /proc can be covered");
}

void JudgeCommandLine(const std::string& text) {
    FreshDaemon::Write(kCommandLine, text);
    const std::string started_as = text.substr(0, text.find('\0')).substr(0, kLongestCommandLine);
    Must(IsRunningCopy(getpid(), kName) == Contains(started_as, kName), "who is a copy");
}

// No process has this name: whatever the file says, the daemon starts, and the file is its own. The
// lock is held by a descriptor that stays open on purpose; here it is given back.
void TakeOver(const std::string& pid_file) {
    const int lock = dup(STDERR_FILENO);
    close(lock);
    EnforceSingleInstance(pid_file, "no such program");
    close(lock);
    Must(ReadStoredPid(pid_file) == getpid(), "the pid file is the daemon's own");
}

void MustHaveSpokenWell(const fake::World& world, CardType card) {
    worlds::Given given;
    given.card = card;
    for (const std::string& line : world.shell) {
        Must(worlds::IsKnownShellLine(given, line), line.c_str());
    }
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    CoverProc();
    const FuzzedInput input(data, size, 2);
    FreshDaemon daemon(input.Choice(1));
    g_i_CardType = cards::kModels[input.Choice(0) % std::size(cards::kModels)].type;
    g_i_UptimeCutoff = 600;
    const std::string pid_file = daemon.WriteTemp("modemd.pid", input.Part(0));
    IsRunningCopy(ReadStoredPid(pid_file), kName);
    JudgeCommandLine(input.Part(1));
    TakeOver(pid_file);

    FreshDaemon::Write(kUptime, input.Part(2));
    FreshDaemon::Write(published::kInitStatusFile, input.Part(3));
    int last_seen = 0;
    CheckErrorCounts(last_seen);
    CheckErrorCounts(last_seen);
    Must(daemon.World().shell.size() <= 1, "an unchanged count resets the modem once at most");
    MustHaveSpokenWell(daemon.World(), static_cast<CardType>(g_i_CardType));
    std::filesystem::remove(published::kResettingMarker);
}
