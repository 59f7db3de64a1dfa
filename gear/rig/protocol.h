// The memory that a scenario and the daemon's preload library share, and how they take turns.
//
// Exactly one side runs at a time. The preload hands the turn over with a request when it needs an
// answer, or when simulated time would pass the horizon; the scenario hands it back with a reply.
// Between two turns the preload lets sleeps pass on its own and only keeps a journal.
#pragma once

#include <termio.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "rig/file_times.h"

namespace rig {

using Micros = std::int64_t;  // microseconds since the daemon was started, unless said otherwise
constexpr Micros kNever = INT64_MAX;

constexpr char kSharedFdVariable[] = "RIG_SHARED_FD";

// What can happen in a scenario; the kinds of the trace.
enum class Kind : std::uint32_t {
    kLog,          // text: a system log line; number: its priority
    kWrite,        // text: the bytes of one write to the port
    kWriteFailed,  // the same for a write that failed; number: errno
    kAnswer,       // text: bytes that the modem sent
    kOpen,         // text: the port's path; number: 0, or errno of the failure
    kClose,        // the port was closed
    kSettings,     // text: the struct termio that TCSETA was given
    kShell,        // text: a command line; number: what system() returned
    kSleep,        // number: milliseconds asked for
    kFile,         // text: path of a file written by the daemon, for a watched one its text too
    kUnlink,       // text: path of a file removed by the daemon
    kSignal,       // number: the signal
    kClock,        // number: seconds by which the wall clock jumped
    kExit,         // number: exit status
    kNote          // text: a remark of the scenario
};
constexpr std::size_t kKindCount = 15;

constexpr std::uint32_t KindBit(Kind kind) {
    return 1U << static_cast<std::uint32_t>(kind);
}

enum class Turn : std::uint32_t { kScenario, kDaemon };

// What the preload asks of the scenario.
enum class Request : std::uint32_t {
    kHello,     // the library is loaded, the program has not begun
    kSleep,     // let time pass to sleep_until
    kSync,      // take the journal; bytes may be due
    kSystem,    // text: a command line; result: its status
    kOpenPort,  // text: the path; error: 0 or errno
    kVirtual,   // text: a path below /proc or /sys; error, and the file's text in the reply
    kExiting    // the program is about to end; there is no reply
};

struct JournalRecord {
    Micros at;
    Kind kind;
    std::int32_t number;
    std::uint32_t size;  // bytes that follow
    std::uint32_t reserved;
};

// A call that fails from now on. `times` counts down with each failure; below 0 it lasts.
struct Fault {
    std::int32_t error;  // errno, 0 for none
    std::int32_t times;
};

// What the program did last before it slept. Log lines and looks at the clock do not count.
enum class Deed : std::uint32_t {
    kPortWrite,  // wrote to the port, or tried to
    kPortRead,   // took bytes from the port
    kPortLook,   // asked for the bytes that wait there, and left them
    kSleep,      // slept, without anything between
    kShell,      // ran a command line
    kOther       // anything else: a file, a socket
};

// Sleeps of one length for one cause.
struct Pause {
    Deed after;
    std::int32_t reserved;
    Micros before;  // the length of the sleep that came right before; 0 where there was none
    Micros length;
    std::uint64_t count;
};

struct PathFault {
    char path[512];  // open, fopen and opendir of this very path fail
    std::int32_t error;
};

constexpr std::size_t kJournalSize = 8U << 20;
constexpr std::size_t kReceiveSize = 16U << 20;
constexpr std::size_t kTextSize = 1U << 20;
constexpr std::size_t kMostSignals = 16;
constexpr std::size_t kMostPaths = 32;
constexpr std::size_t kMostPauses = 256;

struct Shared {
    std::atomic<Turn> turn;
    std::int32_t processor;  // where the daemon was when it was loaded

    // Time.
    Micros now;
    Micros horizon;            // nothing happens on its own before this time
    std::int64_t wall_offset;  // wall clock since 1970 less `now`, microseconds

    // Calls of the daemon that the preload took; a signal may be due before one of them.
    std::uint64_t calls;
    std::uint64_t clock_reads;  // of these calls, those that need no kernel
    std::uint64_t allocations;  // blocks taken from the heap since the program was loaded
    std::uint64_t releases;     // and given back
    std::uint64_t signal_at_call;
    std::int32_t signal_at_call_number;
    std::int32_t process_id;

    // The request and its reply.
    Request request;
    std::int32_t result;
    std::int32_t error;
    std::int32_t exit_now;  // the daemon is to call exit(0) when it gets the turn back
    Micros sleep_until;
    std::uint32_t signal_count;  // signals to raise when it gets the turn back
    std::int32_t signals[kMostSignals];
    std::uint32_t text_size;
    char text[kTextSize];

    // The port. Bytes for the daemon stand in the ring from receive_head to receive_tail, both
    // counted from the start of the scenario.
    char device[512];
    std::int32_t unplugged;
    Fault write_fault;
    Fault waiting_fault;  // FIONREAD
    Fault read_fault;
    termio settings;
    std::uint64_t receive_head;
    std::uint64_t receive_tail;
    char receive[kReceiveSize];

    // The router.
    std::int32_t log_stuck;  // the log daemon reads nothing
    std::int32_t log_room;   // lines that its socket still takes
    std::int32_t log_waits;  // the daemon sleeps since there is none for its line
    std::uint32_t address;   // IPv4 address of wwan0, network byte order, 0 for none
    Fault socket_fault;
    std::uint32_t path_fault_count;
    PathFault path_faults[kMostPaths];

    // What was first opened in such a way that children get it; empty when nothing was.
    char inheritable[512];

    // Every kind of pause that was made.
    Deed deed;
    std::uint32_t pause_count;
    Micros last_pause;
    Pause pauses[kMostPauses];

    // The journal.
    std::int32_t eager;           // hand the turn over after each record
    std::uint32_t kept_kinds;     // bits of the kinds worth a record
    std::uint32_t watched_count;  // files whose text is kept at each change
    char watched[kMostPaths][512];
    std::uint32_t journal_size;
    char journal[kJournalSize];

    FileTimes file_times;
};

}  // namespace rig
