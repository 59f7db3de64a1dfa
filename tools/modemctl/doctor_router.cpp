// Checks of the router around the daemon: shell, helpers, port, supervisor, log, space, clock.
#include <dirent.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "modemctl/child.h"
#include "modemctl/doctor_checks.h"
#include "modemctl/time_text.h"
#include "state/cards.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

constexpr char kUsualPath[] = "/usr/sbin:/usr/bin:/sbin:/bin";
constexpr char kShellMend[] =
    "ln -sf /bin/bash /bin/sh, or busybox; under systemd: "
    "BindReadOnlyPaths=/bin/bash:/bin/sh in modemd.service";
constexpr int kLogPatience = 500;              // milliseconds
constexpr long long kLeastBytes = 256 * 1024;  // the daemon's files and a log line or two
constexpr long long kLeastInodes = 16;
constexpr std::size_t kLongestDevice = 80;
constexpr std::time_t kLastSaneTime = 3471292800;    // 2080-01-01
constexpr std::time_t kOldestSaneTime = 1735689600;  // 2025-01-01; the program is newer
constexpr long long kMostFuture = 60;                // seconds

struct Helper {
    const char* name;  // with a path when the daemon calls it so
    bool only_lte;
    const char* package;
};

constexpr Helper kHelpers[] = {
    {"udhcpc", true, "busybox with udhcpc"},
    {"ifconfig", true, "busybox or net-tools"},
    {"ping", true, "busybox or iputils-ping"},
    {"/bin/date", false, "busybox or coreutils"},
    {"/bin/hwclock", false, "busybox; or ln -s $(command -v hwclock) /bin/hwclock"},
    {"/bin/echo", false, "busybox or coreutils"},
    {"/bin/rm", false, "busybox or coreutils"},
    {"mkdir", false, "busybox or coreutils"},
    {"mv", false, "busybox or coreutils"},
    {"touch", true, "busybox or coreutils"},
    {"cat", true, "busybox or coreutils"},
    {"ResetPCMCIA", false, "the reset tool of this router's maker, or a script of that name"},
};

// Programs that open modems by themselves.
constexpr const char* kGrabbers[] = {"ModemManager", "brltty", "gpsd", "pppd", "mgetty"};

bool IsProgram(const Tree& tree, const std::string& path) {
    struct stat status = {};
    return stat(tree.Locate(path).c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           (status.st_mode & 0111) != 0;
}

bool IsInPath(const Tree& tree, const std::string& name, const std::string& path) {
    if (name[0] == '/') return IsProgram(tree, name);
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find(':', start), path.size());
        if (end > start && IsProgram(tree, path.substr(start, end - start) + "/" + name)) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

std::string BaseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

// By its name alone, as in a copied tree nothing can be run.
Finding JudgeShellByName(const Tree& tree) {
    char target[PATH_MAX] = "";
    const std::string place = tree.Locate("/bin/") + "/sh";
    const ssize_t length = readlink(place.c_str(), target, sizeof(target) - 1);
    if (length <= 0) return NotChecked("/bin/sh is no link: its kind shows only where it runs");
    const std::string name = BaseName(target);
    if (name == "bash" || name == "busybox") return Fine("/bin/sh is " + name);
    if (name == "dash")
        return Bad("/bin/sh is dash, which reads &> as \"in the background\"", kShellMend);
    return NotChecked("/bin/sh is " + name);
}

std::string OutputOf(const std::vector<std::string>& words) {
    std::string text;
    Child child(words);
    if (child.output() == nullptr) return text;
    for (int c = std::getc(child.output()); c != EOF && text.size() < 1000;
         c = std::getc(child.output())) {
        text += static_cast<char>(c);
    }
    return text;
}

struct Process {
    int pid = 0;
    std::string program;
};

std::vector<Process> Processes(const Tree& tree) {
    std::vector<Process> processes;
    DIR* const stream = opendir(tree.Locate("/proc").c_str());
    if (stream == nullptr) return processes;
    while (const dirent* const found = readdir(stream)) {
        const std::string name = found->d_name;
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        const std::vector<std::string> words = WordsOf(tree, ToInt(name));
        if (!words.empty()) processes.push_back({ToInt(name), BaseName(words[0])});
    }
    closedir(stream);
    return processes;
}

// A program with both ends of a pseudo terminal is the modem behind it, not another user.
bool IsMaster(const struct stat& status) {
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(5, 2);
}

bool UsesPort(const Process& process, const struct stat& device) {
    const std::string place = Format("/proc/%d/fd", process.pid);
    DIR* const stream = opendir(place.c_str());
    if (stream == nullptr) return false;
    bool uses = false;
    bool is_modem = false;
    while (const dirent* const found = readdir(stream)) {
        struct stat status = {};
        if (stat((place + "/" + found->d_name).c_str(), &status) != 0) continue;
        uses = uses || (S_ISCHR(status.st_mode) && status.st_rdev == device.st_rdev);
        is_modem = is_modem || IsMaster(status);
    }
    closedir(stream);
    return uses && !is_modem;
}

// The value behind the last "KEY=" of a unit's text, empty for none.
std::string UnitValue(const std::string& unit, const std::string& key) {
    const std::size_t found = unit.rfind("\n" + key + "=");
    if (found == std::string::npos) return "";
    const std::size_t start = found + key.size() + 2;
    return unit.substr(start, unit.find('\n', start) - start);
}

Finding JudgeUnit(const std::string& path, const std::string& unit) {
    // SIGHUP resets the modem and ends with 0, which is no failure.
    if (UnitValue(unit, "Restart") != "always") {
        return Bad(path + " does not start the daemon again after every end",
                   "Restart=always, RestartSec=20 and RestartPreventExitStatus=1 in " + path);
    }
    long long stop = 0;
    const std::string timeout = UnitValue(unit, "TimeoutStopSec");
    if (!timeout.empty() && (!ParseSpan(timeout, stop) || stop < 60)) {
        return Bad(path + " leaves the daemon no time to end: TimeoutStopSec=" + timeout,
                   "TimeoutStopSec=75 in " + path);
    }
    if (UnitValue(unit, "KillMode") != "process") {
        return Bad(path + " kills the DHCP client, or a reset of the modem, with the daemon",
                   "KillMode=process in " + path);
    }
    return Fine(path + " starts it again");
}

Finding JudgeSpace(const std::string& directory, const struct statvfs& room) {
    const auto free = static_cast<long long>(room.f_bavail) * static_cast<long long>(room.f_frsize);
    if (room.f_blocks > 0 && free < kLeastBytes) {
        return Bad(directory + Format(" has %lld KiB left: files stay empty, messages are lost",
                                      free / 1024),
                   "make room: du -a " + directory + " | sort -n | tail");
    }
    if (room.f_files > 0 && static_cast<long long>(room.f_favail) < kLeastInodes) {
        return Bad(directory + " has no inodes left: files and messages are lost",
                   "delete files: find " + directory + " | wc -l");
    }
    if ((room.f_flag & ST_RDONLY) != 0) {
        return Bad(directory + " is read-only: nothing is published, sent files are sent again",
                   "mount -o remount,rw " + directory);
    }
    return Fine("");
}

}  // namespace

Finding CheckShell(const Patient& patient) {
    if (!patient.IsLive()) return JudgeShellByName(patient.tree);
    // The daemon's own, which a supervisor may have put in the place of the router's.
    std::string shell = "/bin/sh";
    const std::string own = Format("/proc/%d/root/bin/sh", patient.snapshot.pid);
    if (patient.Runs() && access(own.c_str(), X_OK) == 0) shell = own;
    const std::string probe = OutputOf({shell, "-c", "echo together; echo apart &> /dev/null"});
    if (probe.find("together") == std::string::npos) {
        return Bad("/bin/sh cannot be run", "install busybox or bash as /bin/sh");
    }
    if (probe.find("apart") == std::string::npos) {
        return Fine("/bin/sh reads &> as \"both outputs to a file\"");
    }
    return Bad(
        "/bin/sh reads &> as \"in the background\": the daemon does not wait for its "
        "commands",
        kShellMend);
}

Finding CheckHelpers(const Patient& patient) {
    if (!patient.tree.Exists("/bin") && !patient.tree.Exists("/sbin")) {
        return NotChecked("no programs in this tree");
    }
    const std::string path = patient.order.path.empty() ? kUsualPath : patient.order.path;
    const cards::Model* const ordered = cards::ModelOfOption(patient.order.card);
    const bool lte = (ordered != nullptr && cards::Has(cards::kLte, ordered->type)) ||
                     patient.snapshot.card == Card::kLte;
    std::string missing, mend;
    for (const Helper& helper : kHelpers) {
        if ((helper.only_lte && !lte) || IsInPath(patient.tree, helper.name, path)) continue;
        missing += (missing.empty() ? "" : ", ") + std::string(helper.name);
        if (mend.empty()) mend = std::string("install ") + helper.package;
    }
    if (missing.empty()) return Fine("all are in " + path);
    return Bad("missing: " + missing + " (searched in " + path + ")", mend);
}

Finding CheckPort(const Patient& patient) {
    const std::string& device = patient.order.device;
    if (device.empty()) {
        return Note("nothing tells which device the daemon has",
                    "start it: modemd -CARD /dev/ttyUSB0; or set DEVICE in /etc/default/modemd");
    }
    if (!patient.IsLive()) return NotChecked(device + " is not in a copied tree");
    if (device.size() > kLongestDevice) {
        return Bad("the path of the device is cut at 80 characters: " + device,
                   "ln -s '" + device + "' /dev/modem, and start the daemon with /dev/modem");
    }
    struct stat status = {};
    if (stat(device.c_str(), &status) != 0) {
        return Bad(device + " is not there",
                   "plug the modem in, load its driver, or correct the device: ls /dev/ttyUSB*");
    }
    if (!S_ISCHR(status.st_mode)) {
        return Bad(device + " is no serial device: something was written to the name",
                   "rm " + device + ", then plug the modem in again");
    }
    return Fine(device + ", as " + patient.order.source + " says");
}

Finding CheckPortUsers(const Patient& patient) {
    struct stat device = {};
    if (!patient.IsLive()) return NotChecked("processes are not in a copied tree");
    if (patient.order.device.empty() || stat(patient.order.device.c_str(), &device) != 0) {
        return NotChecked("no device to look for");
    }
    for (const Process& process : Processes(patient.tree)) {
        const bool ours = patient.Runs() && process.pid == patient.snapshot.pid;
        if (ours || !UsesPort(process, device)) continue;
        return Bad(Format("process %d (%s) has the port open, too: it eats answers", process.pid,
                          process.program.c_str()),
                   Format("kill %d, and see to it that it does not start again", process.pid));
    }
    return Fine("nobody else has the port open");
}

Finding CheckPortGrabbers(const Patient& patient) {
    const std::string tty = BaseName(patient.order.device);
    const std::string inittab = patient.tree.Read("/etc/inittab", AnyText).text;
    for (std::size_t start = 0; !tty.empty() && start < inittab.size();) {
        const std::size_t end = std::min(inittab.find('\n', start), inittab.size());
        const std::string line = inittab.substr(start, end - start);
        if (line[0] != '#' && Contains(line, tty) && Contains(line, "getty")) {
            return Bad("/etc/inittab starts a login on " + tty,
                       "delete that line in /etc/inittab, then kill -HUP 1");
        }
        start = end + 1;
    }
    const std::vector<Process> processes = Processes(patient.tree);
    if (processes.empty()) return NotChecked("processes are not in this tree");
    for (const Process& process : processes) {
        for (const char* const name : kGrabbers) {
            if (process.program != name) continue;
            return Note(std::string(name) + " is running: it may open the modem's port",
                        "stop and disable it, or have it leave " +
                            (tty.empty() ? "the port" : patient.order.device) + " alone");
        }
    }
    return Fine("nothing that opens modems by itself is running");
}

Finding CheckSupervisor(const Patient& patient) {
    for (const char* const path :
         {"/etc/systemd/system/modemd.service", "/lib/systemd/system/modemd.service",
          "/usr/lib/systemd/system/modemd.service"}) {
        const TextFile unit = patient.tree.Read(path, AnyText);
        if (unit.text.empty()) continue;
        const TextFile more =
            patient.tree.Read("/etc/systemd/system/modemd.service.d/override.conf", AnyText);
        return JudgeUnit(path, "\n" + unit.text + "\n" + more.text);
    }
    const std::string inittab = patient.tree.Read("/etc/inittab", AnyText).text;
    const std::size_t line = inittab.find("modemd");
    if (line != std::string::npos) {
        const std::size_t start = inittab.rfind('\n', line) + 1;
        if (inittab[start] != '#' && Contains(inittab.substr(start, line - start), ":respawn:")) {
            return Fine("/etc/inittab starts it again");
        }
    }
    for (const char* const path : {"/etc/init.d/modemd", "/etc/modemd.init"}) {
        const std::string script = patient.tree.Read(path, AnyText).text;
        if (script.empty()) continue;
        for (const char* const word : {"modemd-keeper", "respawn", "while"}) {
            if (Contains(script, word)) return Fine(std::string(path) + " starts it again");
        }
        return Bad(std::string(path) + " starts it once: a lost port ends it for good",
                   "use packaging/sysv/modemd, which starts it again");
    }
    return Note("nothing found that starts the daemon again when its port is lost",
                "install one of packaging/: see docs/supervision.md");
}

// A datagram socket takes what its reader has room for; asking whether it would costs the log
// daemon nothing.
Finding CheckLogDaemon(const Patient& patient) {
    constexpr char kMend[] = "start it again: /etc/init.d/syslog restart, or syslogd";
    if (!patient.IsLive()) return NotChecked("the log daemon is not in a copied tree");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/dev/log");
    int fd = -1;
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
        fd = socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        if (fd < 0) return NotChecked("no socket to be had");
        if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) break;
        const int error = errno;
        close(fd);
        fd = -1;
        if (error != EPROTOTYPE) break;
    }
    if (fd < 0) return Bad("nobody takes the log at /dev/log: the daemon's lines are lost", kMend);
    pollfd wait = {fd, POLLOUT, 0};
    const bool takes = poll(&wait, 1, kLogPatience) == 1 && (wait.revents & POLLOUT) != 0;
    close(fd);
    if (takes) return Fine("the log daemon takes lines");
    return Bad("the log daemon is stuck, and holds the daemon up with every line", kMend);
}

Finding CheckSpace(const Patient& patient) {
    if (!patient.IsLive()) return NotChecked("room is not in a copied tree");
    std::string looked;
    for (const char* const directory :
         {"/var/log", "/var/run", "/tmp", "/tmp/sms", "/tmp/sms/send", "/tmp/sms/recv"}) {
        struct statvfs room = {};
        if (statvfs(directory, &room) != 0) continue;
        const Finding finding = JudgeSpace(directory, room);
        if (finding.health != Health::kFine) return finding;
        looked += (looked.empty() ? "" : ", ") + std::string(directory);
    }
    return Fine("room in " + looked);
}

Finding CheckClock(const Patient& patient) {
    const Snapshot& snapshot = patient.snapshot;
    if (snapshot.now < kOldestSaneTime) {
        return Bad("it is " + ShownTime(snapshot.now) +
                       ": set right later, all that waits in the spool is a day old at once",
                   "date -s \"2026-03-14 09:15:00\"; SYNC_TIME=yes keeps it right");
    }
    if (snapshot.now >= kLastSaneTime) {
        return Bad("it is " + ShownTime(snapshot.now) + ": a modem without network time set it",
                   "SYNC_TIME=no in cellmodem_provision_data.conf, and date -s \"2026-03-14 "
                   "09:15:00\"");
    }
    if (snapshot.statistics.presence == Presence::kWhole && snapshot.Age() < -kMostFuture) {
        return Note("the statistics are of the future: the clock was set back",
                    "wait: they are written again within 5 s while the modem answers");
    }
    return Fine(IsoTime(snapshot.now));
}

}  // namespace modemctl
