// The host's end of the simulated modem: a pseudo terminal that behaves like a modem's serial port,
// with an optional symbolic link of a fixed name.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sim {

class PtyPort {
  public:
    // `link`: path of the symbolic link to keep; empty for none.
    explicit PtyPort(std::string link) : link_(std::move(link)) {}
    ~PtyPort() { Close(); }
    PtyPort(const PtyPort&) = delete;
    PtyPort& operator=(const PtyPort&) = delete;

    // Throws std::runtime_error when there is no terminal to be had, or when the link's path is
    // taken by something that is not a symbolic link.
    void Open();

    // The host sees a dead port, the link is gone.
    void Close();

    bool IsOpen() const { return master_ >= 0; }
    int Descriptor() const { return master_; }
    const std::string& Path() const { return path_; }

    std::string Read();                  // what the host wrote; empty when nothing waits
    void Write(std::string_view bytes);  // queued, and sent as far as the host has room
    void Flush();
    void DropBacklog() { backlog_.clear(); }  // what the host's buffer has no room for is lost
    // From the next Open on the link ends in this number instead of its own; nothing: its own.
    void UseNumber(std::optional<int> number) { number_ = number; }
    bool HasBacklog() const { return !backlog_.empty(); }

  private:
    std::string Link() const;
    void MakeLink() const;
    void RemoveLink() const;

    std::string link_;
    std::optional<int> number_;
    std::string path_;
    int master_ = -1;
    int slave_ = -1;  // held open, so that the port outlives the host's closing and opening
    std::string backlog_;
};

}  // namespace sim
