// A scenario's world: the daemon as it is shipped, a modem, a router's files, and time that only
// moves when the daemon sleeps.
//
//     TEST(SignalPoll, FlipsToTheOtherFormAfterAnError) {
//         World world("-E362");
//         world.modem().Answer("AT+CSQ", "\r\nERROR\r\n");
//         world.Start();
//         world.RunFor(65s);
//         EXPECT_THAT(world.Commands(), Contains("AT+CSQ?"));
//     }
//
// At first: up for an hour, the host key present, 2026-03-14 09:15:00 UTC, no configuration files,
// the modem that the card option names on /dev/ttyUSB0, no address on wwan0, process id 4242.
//
// Between two Run calls the daemon stands still in a call, nearly always a sleep: whatever the
// story does then happens at that very instant. Times are counted from the program's start.
#pragma once

#include <chrono>
#include <csignal>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <queue>
#include <string>
#include <vector>

#include "rig/daemon_process.h"
#include "rig/files.h"
#include "rig/peer.h"
#include "rig/print_times.h"
#include "rig/trace.h"
#include "sim/control/played_modem.h"

namespace rig {

using namespace std::chrono_literals;
using Duration = std::chrono::microseconds;
using Action = std::function<void()>;

// The daemon's arguments word by word, nothing added.
struct Exactly {
    std::vector<std::string> arguments;
};

class World {
  public:
    // Arguments divided by blanks; the device is added when none of them is one. Throws when one is
    // an option that the daemon does not know.
    explicit World(const std::string& arguments = "");
    explicit World(const Exactly& exactly);
    // Ends the daemon, and fails the test when it crashed, printed anything that the test did not
    // ask for, leaked, or sent a command that the modem does not know.
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // --- Before the start ---------------------------------------------------------------------
    void SetProgram(const std::string& path) { program_ = path; }  // another one than the daemon
    void SetDevice(const std::string& path);                       // where the modem is
    void SetProgramName(const std::string& argv0) { argv0_ = argv0; }        // "modemd" else
    void SetEnvironment(const std::string& name, const std::string& value);  // TZ is UTC else
    void SetProcessId(int id) { memory_.process_id = id; }
    void SetWallClock(const std::string& utc);  // "2026-03-14 09:15:00"
    // Real time between two calls of the daemon after which it counts as hanging.
    void SetPatience(std::chrono::seconds fair) { process_.SetPatience(fair); }
    void OnTerminal() { on_terminal_ = true; }  // a person started it

    // --- The story ----------------------------------------------------------------------------
    void Start();  // the program is loaded, nothing of it has run
    // All that happens before now + duration.
    void RunFor(Duration duration);
    // Runs until the condition holds, which is looked at after every event, and stops right there.
    // Fails the test and returns false when it does not hold within `limit` or the daemon ends.
    bool RunUntil(const std::function<bool()>& condition, Duration limit);
    // Until this very line is logged, once more than now.
    bool RunUntilLog(const std::string& line, Duration limit);
    bool RunUntilCommand(const std::string& command, Duration limit);
    // Until the daemon ends. Returns its exit status; -1, and the test fails, if it does not or if
    // a signal ended it.
    int RunToExit(Duration limit);
    void Stop();  // makes the daemon call exit(0) where it stands

    void At(Duration since_start, Action action);
    void After(Duration from_now, Action action) { At(Now() + from_now, std::move(action)); }
    void Every(Duration period, Action action);  // first after one period
    void Signal(int number);                     // at once: a sleep is cut short
    // Before the daemon's n-th call of the C library that the rig takes, counted from 1.
    void SignalAtCall(std::uint64_t call, int number);
    std::uint64_t Calls() const { return memory_.calls; }
    // Of them, those that enter the kernel; reading the clock does not.
    std::uint64_t KernelCalls() const { return memory_.calls - memory_.clock_reads; }
    // Blocks taken from the heap so far, and those not given back. 0 under a sanitizer.
    std::uint64_t Allocations() const { return memory_.allocations; }
    std::uint64_t BlocksHeld() const { return memory_.allocations - memory_.releases; }
    void JumpClock(Duration distance);  // the wall clock; the daemon's sleeps do not notice
    Duration Now() const { return Duration(memory_.now); }
    std::int64_t WallSeconds() const;  // since 1970
    bool Running() const { return started_ && process_.Running(); }

    // --- The modem and the port ---------------------------------------------------------------
    sim::PlayedModem& modem() { return *modem_; }
    void UseProfile(const std::string& name);  // another model than the card option names
    void AllowUnknownCommands() { unknown_allowed_ = true; }
    // A function answers in the modem's place: command line to raw bytes, none for silence.
    void ScriptModem(ScriptPeer::Script script, Duration delay = 5ms);
    void ModemSays(const std::string& bytes);  // raw, now
    // A line of the modem's control language ("signal 12", "sms +15551234 \"text\""); an "error"
    // fails the test. Returns the answer.
    std::string Control(const std::string& line);

    void RemoveDevice(int error = ENOENT);  // opening it fails
    void AddDevice();
    void Unplug();  // the open port is dead, and the device is gone
    // These calls on the port fail from now on, `times` times, or for good below 0.
    void FailWrites(int error, int times = -1) { memory_.write_fault = {error, times}; }
    void FailWaiting(int error, int times = -1) { memory_.waiting_fault = {error, times}; }
    void FailReads(int error, int times = -1) { memory_.read_fault = {error, times}; }
    void RepairPort();
    // The port's settings, as they are before the daemon opens it and as it leaves them.
    termio& PortSettings() { return memory_.settings; }

    // --- The router ---------------------------------------------------------------------------
    void SetUptime(Duration uptime_now);
    void RemoveUptime() { uptime_.reset(); }
    void AddProcess(int id, const std::string& command_line);  // words end in NUL
    void SetAddress(const std::string& dotted);                // of wwan0
    void ClearAddress() { memory_.address = 0; }
    void FailSockets(int error, int times = -1) { memory_.socket_fault = {error, times}; }
    void SetTxBytes(std::uint64_t count);
    void SetTxBytes(std::function<std::uint64_t(Duration now)> count);
    void RemoveTxBytes() { tx_bytes_ = nullptr; }

    // A handler takes command lines that begin with `start`, in place of what they do else; the
    // newest that fits is asked. It returns the exit status.
    using ShellHandler = std::function<int(const std::string& line)>;
    void OnShell(const std::string& start, ShellHandler handler);
    void SetShellStatus(const std::string& start, int status);
    // What the line does else. See shell_effects.h.
    int DefaultShell(const std::string& line);
    // The command under way takes this long. For shell handlers.
    void TakeTime(Duration duration) { shell_takes_ = duration; }

    // --- Files --------------------------------------------------------------------------------
    void WriteFile(const std::string& path, const std::string& text) { files_.Write(path, text); }
    static std::string File(const std::string& path) { return Files::Read(path); }
    static bool Exists(const std::string& path) { return Files::Exists(path); }
    static void RemoveFile(const std::string& path) { Files::Remove(path); }
    void Touch(const std::string& path);
    void SetAge(const std::string& path, Duration age);  // both its times, against the wall clock
    static std::vector<std::string> List(const std::string& folder);  // sorted names
    void Watch(const std::string& path);  // keep every content, see Versions; before the start
    void FailPath(const std::string& path, int error);  // opening it fails; 0: no longer
    // A file system of its own on a folder: nearly no room, or no writing. Until the world's end.
    void MountSmall(const std::string& folder, std::size_t bytes);
    void MountReadOnly(const std::string& folder);

    // --- What happened ------------------------------------------------------------------------
    const Trace& GetTrace() const { return trace_; }
    std::vector<std::string> Log() const { return trace_.Texts(Kind::kLog); }
    std::vector<std::string> Commands() const;
    std::vector<std::string> CommandsMatching(const std::string& start) const;
    std::vector<std::string> Writes() const { return trace_.Texts(Kind::kWrite); }  // to the port
    std::vector<std::string> Shell() const { return trace_.Texts(Kind::kShell); }
    std::vector<FileVersion> Versions(const std::string& path) const;
    std::vector<Duration> LogTimes(const std::string& line) const;
    std::vector<Duration> CommandTimes(const std::string& command) const;
    std::vector<Duration> ShellTimes(const std::string& line) const;
    std::size_t CountLog(const std::string& line) const;
    std::size_t CountLogContaining(const std::string& part) const;
    void ClearTrace() { trace_.Clear(); }
    // What the trace keeps; everything but sleeps else. Long runs keep less.
    void Keep(std::initializer_list<Kind> kinds);
    void KeepSleeps() { memory_.kept_kinds |= KindBit(Kind::kSleep); }
    void Note(const std::string& remark);  // into the trace

    int ExitStatus() const;    // -1 while it runs, or when a signal ended it
    int EndingSignal() const;  // 0 for none
    void ExpectEndBySignal() { end_by_signal_allowed_ = true; }
    std::string Output();       // standard output
    std::string ErrorOutput();  // standard error; asking for it allows it

    // These very lines, in this order, with any others between.
    void ExpectLogInOrder(const std::vector<std::string>& lines) const;
    void ExpectNoLog(const std::string& part) const;  // no line has it in it

  private:
    struct Event {
        Micros at;
        std::uint64_t order;
        Action action;
        bool operator>(const Event& other) const {
            return at != other.at ? at > other.at : order > other.order;
        }
    };
    struct Handler {
        std::string start;
        ShellHandler handler;
    };

    void SetUp(std::vector<std::string> arguments);
    std::vector<std::string> Environment() const;
    void Add(Kind kind, int number, std::string text);
    bool Keeps(Kind kind) const { return (memory_.kept_kinds & KindBit(kind)) != 0; }

    // The machine, see world_run.cpp.
    void Run(Micros stop, const std::function<bool()>& condition);
    void Step(Micros stop);
    void Sleep(Micros stop);
    void Resume(Micros stop);
    void TakeJournal();
    void RunDue();
    Micros NextEvent() const;
    void Deliver(const std::string& bytes);
    void OpenDevice();
    void ServeShell();
    void ServeKernelFile();
    std::optional<std::string> KernelFile(const std::string& path) const;
    void TakeTrouble(const DaemonTrouble& trouble);

    void CheckEnd();
    void PrintStory();

    DaemonProcess process_;
    Shared& memory_;
    Files files_;
    Trace trace_;
    std::unique_ptr<sim::PlayedModem> modem_;
    std::unique_ptr<Peer> peer_;

    std::string program_;
    std::string argv0_ = "modemd";
    std::vector<std::string> arguments_;
    std::map<std::string, std::string> environment_;
    bool on_terminal_ = false;
    bool started_ = false;
    bool crashed_ = false;

    std::priority_queue<Event, std::vector<Event>, std::greater<>> events_;
    std::uint64_t event_count_ = 0;

    bool port_open_ = false;
    int device_error_ = 0;
    bool unknown_allowed_ = false;
    std::optional<Micros> uptime_;                  // when the daemon was started
    std::map<std::string, std::string> processes_;  // path below /proc, content
    std::function<std::uint64_t(Duration)> tx_bytes_;
    std::vector<Handler> shell_handlers_;
    Duration shell_takes_ = Duration::zero();
    bool in_shell_ = false;  // a command takes time: signals wait for its end
    std::vector<std::string> mounts_;

    bool end_by_signal_allowed_ = false;
    bool error_output_allowed_ = false;
};

// The seed of this run: environment RIG_SEED, 1 else.
std::uint64_t Seed();

}  // namespace rig
