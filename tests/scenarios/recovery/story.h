// A router that meets a fault: the daemon with its card, the keeper that starts it again, a
// carrier behind the modem, and a reset tool that takes the modem's power away. What is measured on
// the way is what docs/recovery.md tells.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/world.h"

namespace recovery {

using namespace std::chrono_literals;
using rig::Duration;

inline constexpr char kStatistics[] = "/var/log/wireless.cardstats";
inline constexpr char kProvisioning[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
inline constexpr char kResetting[] = "Resetting device";

// What one life through a fault has shown. Times are counted from the fault, but for "back", which
// is counted from the end of its cause, if the story tells when that was.
struct Lived {
    struct Line {
        std::string text;
        Duration first;
        std::size_t count;
        Duration shortest_gap;
        Duration longest_gap;
    };
    std::map<std::string, Duration> times;
    std::map<std::string, std::size_t> counts;
    std::vector<Line> log;  // in the order of their first times
    std::string cause;      // what modemctl why says of it
};

class Story : public rig::World {
  public:
    // The phase shifts the fault against the daemon's own periods.
    Story(const std::string& arguments, Duration phase);

    // Starts the daemon, and lives until everything works and five minutes longer.
    void Settle();
    void Strike();  // here begins the fault
    void Mend();    // and here its cause is gone

    // Lets time pass; a daemon that has ended is started again as its keeper does.
    void Live(Duration duration);
    // Looks every second; the test fails when it does not hold within the limit.
    void LiveUntil(const std::function<bool()>& condition, Duration limit);
    void LiveUntilItWorks(Duration limit = 30min);  // and tells it as "back"
    // Statistics are fresh and tell of this life; on an LTE card the link is up, too.
    bool Works() const;

    // --- The router and its carrier -----------------------------------------------------------
    void TakeOut();  // the modem, by hand
    void PutBack(const std::string& device = "/dev/ttyUSB0");
    void GiveAddresses(bool on) { gives_addresses_ = on; }
    void LetBytesLeave(bool on) { bytes_leave_ = on; }
    void LetOthersTalk(bool on) { others_talk_ = on; }  // programs of the router, over the link
    // A helper that the shell does not find: status 127, and nothing happens.
    void Miss(const std::string& command);
    void ListenTo(const std::string& command) { missing_.erase(command); }
    bool LinkIsUp() const { return call_is_up_ && has_address_; }
    std::size_t Resets() const { return resets_; }
    const std::vector<Duration>& Starts() const { return starts_; }  // by the keeper

    // --- What is measured ---------------------------------------------------------------------
    // A line is looked for from the fault on, and the test fails when there is none.
    void TellLine(const std::string& name, const std::string& line);
    void TellTime(const std::string& name, Duration since_the_fault);
    void TellCount(const std::string& name, std::size_t count);
    void TellNow(const std::string& name) { TellTime(name, clock.Now() - struck_); }
    void AskWhy();  // modemctl, now
    Duration Struck() const { return struck_; }
    std::size_t CountSince(const std::string& line) const;  // of log lines, from the fault on
    Duration LastWritten(const std::string& path) const;
    std::string Published(const std::string& key) const;
    Lived TakeLived();

  private:
    void ServeLink();
    void ServeReset();
    void Follow();
    bool Misses(const std::string& command) const { return missing_.count(command) != 0; }
    int Serve(const std::string& command, const std::function<void()>& work);

    Duration phase_;
    Duration pause_;  // of the keeper
    Duration struck_{};
    Duration life_begun_{};
    std::optional<Duration> mended_;
    std::vector<Duration> starts_;
    Lived lived_;

    bool makes_calls_ = false;  // an LTE card
    bool call_is_up_ = false;
    bool client_runs_ = false;
    bool has_address_ = false;
    bool gives_addresses_ = true;
    bool bytes_leave_ = true;
    bool others_talk_ = true;
    std::uint64_t bytes_ = 1000;
    std::map<std::string, bool> missing_;
    bool taken_out_ = false;
    std::size_t resets_ = 0;
};

}  // namespace recovery
