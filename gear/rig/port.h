// The serial port between daemon and modem: the device's file, its settings, its faults.
#pragma once

#include <termio.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>

#include "rig/protocol.h"
#include "rig/trace.h"

namespace rig {

class Port {
  public:
    Port(Shared& memory, Trace& trace, const std::string& device);

    void SetDevice(const std::string& path);  // where the modem is; before the start
    void RemoveDevice(int error = ENOENT) { open_error_ = error; }  // opening it fails
    void AddDevice() { open_error_ = 0; }
    void Unplug();  // the open port is dead, and the device is gone

    // These calls on it fail from now on, `times` times, or for good below 0.
    void FailWrites(int error, int times = -1) { memory_.write_fault = {error, times}; }
    void FailWaiting(int error, int times = -1) { memory_.waiting_fault = {error, times}; }
    void FailReads(int error, int times = -1) { memory_.read_fault = {error, times}; }
    void Repair();

    // As they are before the daemon opens it, and as it leaves them.
    termio& Settings() { return memory_.settings; }

    // Bytes from the modem, now. While nobody has the port open they are lost, as they are behind a
    // real driver.
    void Deliver(const std::string& bytes);
    // What a receiver holds while nobody reads; all that comes then is lost. Without a room of its
    // own it holds all that the rig can, and more fails the test.
    void SetRoom(std::optional<std::size_t> bytes) { room_ = bytes; }

  private:
    friend class World;

    void Open(const std::string& path);  // the daemon's request; the reply is in the memory
    void Close() { open_ = false; }

    Shared& memory_;
    Trace& trace_;
    bool open_ = false;
    int open_error_ = 0;
    std::optional<std::size_t> room_;
};

}  // namespace rig
