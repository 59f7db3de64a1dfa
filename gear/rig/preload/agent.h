// Inside the daemon's process: the shared memory, the turns and the journal. Nothing here
// allocates, since it runs before main and inside whatever call the program makes.
#pragma once

#include <dlfcn.h>

#include <cstddef>

#include "rig/protocol.h"

// The C library's own function behind a hook of the same name.
#define RIG_REAL(name)                                                                       \
    ([] {                                                                                    \
        static const auto real = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name)); \
        return real;                                                                         \
    }())

namespace rig::agent {

// nullptr when the program does not run under a scenario, before the library's constructor and
// after the program's end: hooks then do what the C library does.
extern Shared* shared;

// Every hook begins with this. False: pass the call on. Counts the call, and raises the signal
// that a scenario wants before it.
bool Enter();

// Hooks of what is no cause of a pause begin with this instead: log lines, looks at the clock.
bool EnterBeside();

// Something is opened that children of the program get.
void NoteInheritable(const char* what);

// A hook tells what it did, where that is more than "something".
void NoteDeed(Deed deed);

// Hands the turn to the scenario and waits for it to come back. Raises the signals that it brings;
// does not return when the scenario ends the program. errno is kept.
void Yield(Request request);

// The same with a text for the request, at most kTextSize bytes of it.
void Ask(Request request, const char* text);

// Keeps a record, if its kind is worth one. Writes to the port are always kept.
void Journal(Kind kind, std::int64_t number, const void* data = nullptr, std::size_t size = 0);
void JournalText(Kind kind, std::int64_t number, const char* text);

// Two pieces of data in one record.
void JournalTwo(Kind kind, std::int64_t number, const void* first, std::size_t first_size,
                const void* second, std::size_t second_size);

// Whether a record of this kind would be kept.
bool IsKept(Kind kind);

std::int64_t WallClock();  // microseconds since 1970

// Lets time pass. Returns what is left of it when a signal came.
Micros Pass(Micros duration);

// The same where it is not the program that pauses, but somebody who lets it wait.
Micros Wait(Micros duration);

// A fault that is due: errno to fail with, or 0. Counts it.
int TakeFault(Fault& fault);

// Bytes on their way to the modem that it has not seen; with `answerable` it might answer them.
void NoteBytesToModem(bool answerable);
// Lets the modem see them, so that what it answered at once can be read.
void SyncWithModem();

// The program ends: files written from here on are none of the daemon's.
bool IsLeaving();
void NoteExit(int status);

}  // namespace rig::agent
