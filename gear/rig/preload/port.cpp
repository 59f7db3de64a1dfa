// The modem's port as the program sees it.

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <termio.h>
#include <unistd.h>

#include "rig/preload/agent.h"
#include "rig/preload/descriptors.h"

namespace rig::agent {

namespace {

constexpr char kCtrlZ = 0x1A;
constexpr char kEscape = 0x1B;

// A modem acts on a finished line or message body, hardly ever on less. Time may pass before it
// is shown the rest, which keeps the number of turns down.
bool MayBeAnswered(const char* bytes, unsigned long size) {
    return memchr(bytes, '\r', size) != nullptr || memchr(bytes, kCtrlZ, size) != nullptr ||
           memchr(bytes, kEscape, size) != nullptr;
}

int Fail(int error) {
    errno = error;
    return -1;
}

unsigned long Waiting() {
    return static_cast<unsigned long>(shared->receive_tail - shared->receive_head);
}

int CountWaiting(int* count) {
    SyncWithModem();
    NoteDeed(Deed::kPortLook);
    if (shared->unplugged != 0) return Fail(EIO);
    if (const int error = TakeFault(shared->waiting_fault)) return Fail(error);
    *count = static_cast<int>(Waiting());
    return 0;
}

}  // namespace

int OpenPortFile(const char* path) {
    Ask(Request::kOpenPort, path);
    if (shared->error != 0) return Fail(shared->error);
    const long fd = syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR | O_CLOEXEC, 0);
    if (fd < 0) return -1;
    Remember(static_cast<int>(fd), path, true, false, false);
    return static_cast<int>(fd);
}

void ClosePortFile() {
    JournalText(Kind::kClose, 0, "");
    SyncWithModem();
    shared->receive_head = shared->receive_tail;
}

long WritePort(const void* data, unsigned long size) {
    NoteDeed(Deed::kPortWrite);
    int error = shared->unplugged != 0 ? EIO : TakeFault(shared->write_fault);
    if (error != 0) {
        Journal(Kind::kWriteFailed, error, data, size);
        return Fail(error);
    }
    Journal(Kind::kWrite, 0, data, size);
    NoteBytesToModem(MayBeAnswered(static_cast<const char*>(data), size));
    return static_cast<long>(size);
}

long ReadPortBytes(void* buffer, unsigned long size) {
    SyncWithModem();
    NoteDeed(Deed::kPortRead);
    if (shared->unplugged != 0) return 0;  // a terminal that was hung up is at its end
    if (const int error = TakeFault(shared->read_fault)) return Fail(error);
    const unsigned long count = size < Waiting() ? size : Waiting();
    const unsigned long start = shared->receive_head % kReceiveSize;
    const unsigned long first = count < kReceiveSize - start ? count : kReceiveSize - start;
    memcpy(buffer, shared->receive + start, first);
    memcpy(static_cast<char*>(buffer) + first, shared->receive, count - first);
    shared->receive_head += count;
    return static_cast<long>(count);
}

int ControlPort(unsigned long request, void* argument) {
    switch (request) {
        case FIONREAD:
            return CountWaiting(static_cast<int*>(argument));
        case TCGETA:
            if (shared->unplugged != 0) return Fail(EIO);
            memcpy(argument, &shared->settings, sizeof(shared->settings));
            return 0;
        case TCSETA:
        case TCSETAW:
        case TCSETAF:
            if (shared->unplugged != 0) return Fail(EIO);
            memcpy(&shared->settings, argument, sizeof(shared->settings));
            Journal(Kind::kSettings, 0, argument, sizeof(shared->settings));
            return 0;
        default:
            return Fail(ENOTTY);
    }
}

}  // namespace rig::agent
