#include "rig/preload/agent.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "rig/turns.h"

namespace rig::agent {

Shared* shared = nullptr;

namespace {

bool g_bytes_pending = false;
bool g_answerable_pending = false;
bool g_leaving = false;

void Send(Request request) {
    shared->request = request;
    GiveTurn(*shared, Turn::kDaemon);
}

void Await() {
    while (!AwaitTurn(*shared, Turn::kDaemon, nullptr)) {
    }
}

// Signals that came with the turn. A handler may make calls that hand the turn over again.
void RaiseSignals() {
    while (shared->signal_count > 0) {
        const int number = shared->signals[0];
        --shared->signal_count;
        std::memmove(shared->signals, shared->signals + 1,
                     shared->signal_count * sizeof(shared->signals[0]));
        JournalText(Kind::kSignal, number, "");
        raise(number);
    }
}

void CountPause(Deed after, Micros before, Micros length) {
    for (std::uint32_t i = 0; i < shared->pause_count; ++i) {
        Pause& pause = shared->pauses[i];
        if (pause.after != after || pause.before != before || pause.length != length) continue;
        ++pause.count;
        return;
    }
    if (shared->pause_count == kMostPauses) return;
    shared->pauses[shared->pause_count++] = {after, 0, before, length, 1};
}

void NotePause(Micros length) {
    CountPause(shared->deed, shared->deed == Deed::kSleep ? shared->last_pause : 0, length);
    shared->deed = Deed::kSleep;
    shared->last_pause = length;
}

__attribute__((constructor)) void Connect() {
    const char* descriptor = std::getenv(kSharedFdVariable);
    if (descriptor == nullptr) return;
    const int fd = std::atoi(descriptor);
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (memory == MAP_FAILED) std::abort();
    syscall(SYS_close, fd);
    unsetenv(kSharedFdVariable);
    unsetenv("LD_PRELOAD");
    shared = static_cast<Shared*>(memory);
    shared->processor = sched_getcpu();
    Yield(Request::kHello);
}

// Behind all destructors of the program.
__attribute__((destructor)) void Disconnect() {
    if (shared == nullptr) return;
    Send(Request::kExiting);
    shared = nullptr;
}

}  // namespace

bool Enter() {
    if (!EnterBeside()) return false;
    shared->deed = Deed::kOther;
    return true;
}

// Behind the end only counters of a build for coverage are written.
void NoteInheritable(const char* what) {
    if (!g_leaving && shared->inheritable[0] == '\0') {
        strncpy(shared->inheritable, what, sizeof(shared->inheritable) - 1);
    }
}

void NoteDeed(Deed deed) {
    shared->deed = deed;
}

bool EnterBeside() {
    if (shared == nullptr) return false;
    ++shared->calls;
    if (shared->calls == shared->signal_at_call) {
        const int error = errno;
        JournalText(Kind::kSignal, shared->signal_at_call_number, "");
        raise(shared->signal_at_call_number);
        errno = error;
    }
    return true;
}

void Yield(Request request) {
    const int error = errno;
    g_bytes_pending = false;
    g_answerable_pending = false;
    Send(request);
    Await();
    RaiseSignals();
    if (shared->exit_now != 0 && !g_leaving) {
        g_leaving = true;
        RIG_REAL(exit)(0);
    }
    errno = error;
}

void Ask(Request request, const char* text) {
    const std::size_t size = strnlen(text, kTextSize - 1);
    std::memcpy(shared->text, text, size);
    shared->text[size] = '\0';
    shared->text_size = static_cast<std::uint32_t>(size);
    shared->error = 0;
    shared->result = 0;
    Yield(request);
}

bool IsKept(Kind kind) {
    return (shared->kept_kinds & KindBit(kind)) != 0;
}

void JournalTwo(Kind kind, std::int64_t number, const void* first, std::size_t first_size,
                const void* second, std::size_t second_size) {
    if (!IsKept(kind) && kind != Kind::kWrite) return;
    const std::size_t room = kJournalSize - sizeof(JournalRecord);
    if (first_size > room) first_size = room;
    if (second_size > room - first_size) second_size = room - first_size;
    const std::size_t size = first_size + second_size;
    if (shared->journal_size + sizeof(JournalRecord) + size > kJournalSize) Yield(Request::kSync);

    const JournalRecord record = {shared->now, kind, static_cast<std::int32_t>(number),
                                  static_cast<std::uint32_t>(size), 0};
    char* place = shared->journal + shared->journal_size;
    std::memcpy(place, &record, sizeof(record));
    if (first_size > 0) std::memcpy(place + sizeof(record), first, first_size);
    if (second_size > 0) std::memcpy(place + sizeof(record) + first_size, second, second_size);
    shared->journal_size += static_cast<std::uint32_t>(sizeof(record) + size);
    if (shared->eager != 0) Yield(Request::kSync);
}

void Journal(Kind kind, std::int64_t number, const void* data, std::size_t size) {
    JournalTwo(kind, number, data, size, nullptr, 0);
}

void JournalText(Kind kind, std::int64_t number, const char* text) {
    Journal(kind, number, text, std::strlen(text));
}

std::int64_t WallClock() {
    return shared->now + shared->wall_offset;
}

Micros Pass(Micros duration) {
    Journal(Kind::kSleep, duration / 1000);
    NotePause(duration);
    return Wait(duration);
}

Micros Wait(Micros duration) {
    const Micros until = shared->now + duration;
    if (!g_answerable_pending && until < shared->horizon) {
        shared->now = until;
        return 0;
    }
    shared->sleep_until = until;
    Yield(Request::kSleep);
    return until > shared->now ? until - shared->now : 0;
}

int TakeFault(Fault& fault) {
    if (fault.error == 0) return 0;
    const int error = fault.error;
    if (fault.times > 0 && --fault.times == 0) fault.error = 0;
    return error;
}

void NoteBytesToModem(bool answerable) {
    g_bytes_pending = true;
    if (answerable) g_answerable_pending = true;
}

void SyncWithModem() {
    if (g_bytes_pending) Yield(Request::kSync);
}

bool IsLeaving() {
    return g_leaving;
}

void NoteExit(int status) {
    if (g_leaving) return;
    JournalText(Kind::kExit, status, "");
    g_leaving = true;
}

}  // namespace rig::agent
