#include "rig/port.h"

#include <gtest/gtest.h>
#include <termios.h>

#include <algorithm>
#include <cstring>

#include "rig/copy_text.h"

namespace rig {

namespace {

// A serial port as the kernel makes it.
termio FreshSettings() {
    termio line = {};
    line.c_iflag = ICRNL | IXON;
    line.c_oflag = OPOST | ONLCR;
    line.c_cflag = B9600 | CS8 | CREAD | HUPCL;
    line.c_lflag = ISIG | ICANON | ECHO | ECHOE | ECHOK;
    line.c_cc[VMIN] = 1;
    return line;
}

}  // namespace

Port::Port(Shared& memory, Trace& trace, const std::string& device)
    : memory_(memory), trace_(trace) {
    memory_.settings = FreshSettings();
    SetDevice(device);
}

void Port::SetDevice(const std::string& path) {
    CopyText(memory_.device, path);
}

void Port::Unplug() {
    RemoveDevice();
    memory_.unplugged = 1;
}

void Port::Repair() {
    memory_.write_fault = memory_.waiting_fault = memory_.read_fault = {};
}

void Port::Deliver(const std::string& bytes) {
    if (bytes.empty() || !open_ || memory_.unplugged != 0) return;
    trace_.Add({memory_.now, Kind::kAnswer, 0, bytes});
    // What a full line drops is lost; what the rig has no room for is a fault of the story.
    const std::size_t most = room_.value_or(kReceiveSize);
    const std::size_t waiting = memory_.receive_tail - memory_.receive_head;
    const std::size_t room = most - std::min(waiting, most);
    if (!room_ && bytes.size() > room) ADD_FAILURE() << "the modem sent more than the rig can hold";
    const std::size_t size = std::min(bytes.size(), room);
    const std::size_t place = memory_.receive_tail % kReceiveSize;
    const std::size_t before_the_end = std::min(size, kReceiveSize - place);
    std::memcpy(memory_.receive + place, bytes.data(), before_the_end);
    std::memcpy(memory_.receive, bytes.data() + before_the_end, size - before_the_end);
    memory_.receive_tail += size;
}

void Port::Open(const std::string& path) {
    memory_.error = path == memory_.device ? open_error_ : ENOENT;
    trace_.Add({memory_.now, Kind::kOpen, memory_.error, path});
    if (memory_.error != 0) return;
    open_ = true;
    memory_.unplugged = 0;
    memory_.receive_head = memory_.receive_tail;
}

}  // namespace rig
