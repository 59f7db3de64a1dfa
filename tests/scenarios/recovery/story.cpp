#include "story.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "../tools/copied_router.h"

namespace recovery {

using rig::Kind;

namespace {

constexpr Duration kSettlingTime = 5min;
constexpr Duration kModemBoots = 15s;  // from the reset tool's start to the port's return
constexpr Duration kFresh = 20s;       // the longest pass is a restart of the call
constexpr std::uint64_t kPingBytes = 98;
constexpr std::uint64_t kOthersBytes = 1000;  // each second

// Between an end and the next start.
Duration PauseOfTheKeeper() {
    std::ifstream script(RIG_SOURCE "/packaging/libexec/modemd-keeper");
    for (std::string line; std::getline(script, line);) {
        if (line.rfind("PAUSE=", 0) == 0) return std::chrono::seconds(std::stoi(line.substr(6)));
    }
    throw std::runtime_error("the keeper names no PAUSE");
}

// A service is one that the modem has, or none; all else is what noise was taken for.
std::string ShownService(const std::string& service) {
    for (const char* known : {"LTE", "No Service", "Unknown"}) {
        if (service == known) return service;
    }
    return service.rfind('+', 0) == 0 ? service : "NOISE";
}

std::string WithoutNoise(const std::string& line) {
    const std::string start = "Service Type changed from '";
    const std::string middle = "' to '";
    const auto between = line.rfind(middle);
    if (line.rfind(start, 0) != 0 || between == std::string::npos) return line;
    const std::string before = line.substr(start.size(), between - start.size());
    const std::string after = line.substr(between + middle.size());
    return start + ShownService(before) + middle +
           ShownService(after.substr(0, after.rfind('\''))) + "'";
}

// What differs from life to life and tells nothing.
std::string WithoutNumbers(const std::string& line) {
    static const std::pair<std::regex, const char*> kNumbers[] = {
        {std::regex("[0-9]{2}:[0-9]{2}:[0-9]{2}"), "HH:MM:SS"},
        {std::regex("attempt [0-9]/"), "attempt N/"},
        {std::regex("sms_msg[-.0-9]+"), "sms_msgTIME"},
        {std::regex("[0-9]{2}/[0-9]{2}/[0-9]{4}"), "MM/DD/YYYY"}};
    std::string text = WithoutNoise(line);
    for (const auto& [number, sign] : kNumbers) text = std::regex_replace(text, number, sign);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text.erase(text.find_last_not_of(' ') + 1);
}

// What every start says, and nobody needs to read again.
bool IsAboutAnyStart(const std::string& line) {
    for (const char* start :
         {"Writing pid ", "card type set to ", "file /etc/ssh/", "uptime cutoff set",
          "Modem does not support CMGF", "Modem supports CMGF"}) {
        if (line.rfind(start, 0) == 0) return true;
    }
    return false;
}

std::vector<Lived::Line> Folded(const std::vector<rig::Event>& log) {
    std::vector<Lived::Line> lines;
    std::map<std::string, Duration> last;
    for (const rig::Event& event : log) {
        const std::string text = WithoutNumbers(event.text);
        const Duration at(event.at);
        const auto known = std::find_if(lines.begin(), lines.end(),
                                        [&](const auto& line) { return line.text == text; });
        if (known == lines.end()) {
            lines.push_back({text, at, 1, Duration::max(), Duration::zero()});
        } else {
            const Duration gap = at - last[text];
            ++known->count;
            known->shortest_gap = std::min(known->shortest_gap, gap);
            known->longest_gap = std::max(known->longest_gap, gap);
        }
        last[text] = at;
    }
    return lines;
}

}  // namespace

Story::Story(const std::string& arguments, Duration phase)
    : World(arguments), phase_(phase), pause_(PauseOfTheKeeper()) {
    makes_calls_ = modem.Sim().Name() == "E362" || modem.Sim().Name() == "E371";
    modem.AllowUnknownCommands();  // a daemon that is killed leaves half a command to the next one
    files.Write(kProvisioning, "SYNC_TIME=no\n");
    ServeLink();
    ServeReset();
}

// A carrier that answers at once, and programs of the router that keep the link busy.
void Story::ServeLink() {
    modem.OnCall([this](bool up) {
        call_is_up_ = up;
        Follow();
    });
    router.OnShell("udhcpc", [this](const std::string&) {
        return Serve("udhcpc", [this] { client_runs_ = true; });
    });
    router.OnShell("kill `cat /var/run/udhcpc-wwan0.pid", [this](const std::string&) {
        client_runs_ = false;
        Follow();
        return 0;
    });
    router.OnShell("ifconfig", [this](const std::string&) { return Serve("ifconfig", [] {}); });
    router.OnShell("/bin/date", [this](const std::string& line) {
        return Serve("date", [this, &line] { router.DefaultShell(line); });
    });
    router.OnShell("ping", [this](const std::string&) {
        return Serve("ping", [this] {
            if (LinkIsUp() && bytes_leave_) bytes_ += kPingBytes;
        });
    });
    router.SetTxBytes([this](Duration) { return bytes_; });
    clock.Every(1s, [this] {
        if (others_talk_ && LinkIsUp() && bytes_leave_) bytes_ += kOthersBytes;
    });
}

void Story::Follow() {
    const bool had_address = std::exchange(has_address_, false);
    router.ClearAddress();
    if (!call_is_up_ || !client_runs_) return;
    has_address_ = gives_addresses_ || had_address;
    if (has_address_) router.SetAddress("10.64.0.2");
}

int Story::Serve(const std::string& command, const std::function<void()>& work) {
    if (Misses(command)) return 127;
    work();
    Follow();
    return 0;
}

// The modem is without power for a moment, and its port gone as long as it boots.
void Story::ServeReset() {
    router.OnShell("ResetPCMCIA", [this](const std::string&) {
        if (Misses("ResetPCMCIA")) return 127;
        const std::size_t number = ++resets_;
        if (taken_out_) return 0;
        modem.Control("unplug");
        port.Unplug();
        clock.After(kModemBoots, [this, number] {
            if (number != resets_ || taken_out_) return;
            modem.Control("plug");
            port.AddDevice();
        });
        return 0;
    });
}

void Story::Miss(const std::string& command) {
    missing_[command] = true;
}

void Story::TakeOut() {
    taken_out_ = true;
    modem.Control("unplug");
    port.Unplug();
}

void Story::PutBack(const std::string& device) {
    taken_out_ = false;
    modem.Control("plug");
    port.SetDevice(device);
    port.AddDevice();
}

void Story::Settle() {
    Start();
    LiveUntil([this] { return Works(); }, 3min);
    Live(kSettlingTime + phase_);
}

void Story::Strike() {
    struck_ = clock.Now();
}

void Story::Mend() {
    mended_ = clock.Now();
}

void Story::Live(Duration duration) {
    const Duration end = clock.Now() + duration;
    while (clock.Now() < end) {
        if (daemon.Running()) {
            RunFor(end - clock.Now());
        } else {
            StartAgain(pause_);
            life_begun_ = clock.Now();
            starts_.push_back(clock.Now());
        }
    }
}

void Story::LiveUntil(const std::function<bool()>& condition, Duration limit) {
    const Duration end = clock.Now() + limit;
    while (!condition() && clock.Now() < end) Live(1s);
    EXPECT_TRUE(condition()) << "not within " << limit / 1s << " s";
}

void Story::LiveUntilItWorks(Duration limit) {
    const Duration since = mended_.value_or(struck_);
    LiveUntil([&] { return Works() && LastWritten(kStatistics) >= since; }, limit);
    lived_.times["back"] = clock.Now() - since;
}

bool Story::Works() const {
    if (!daemon.Running() || LastWritten(kStatistics) < std::max(life_begun_, clock.Now() - kFresh))
        return false;
    return Published("CELLMODEM_MODEL") != "" && (!makes_calls_ || LinkIsUp());
}

Duration Story::LastWritten(const std::string& path) const {
    const std::vector<rig::Event>& events = trace.Events();
    const auto found = std::find_if(events.rbegin(), events.rend(), [&](const rig::Event& event) {
        return event.kind == Kind::kFile && event.text.compare(0, path.size(), path) == 0;
    });
    return found == events.rend() ? Duration(-1s) : Duration(found->at);
}

std::string Story::Published(const std::string& key) const {
    std::istringstream lines(rig::Files::Read(kStatistics));
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size() + 1, key + "=") == 0) return line.substr(key.size() + 1);
    }
    return "";
}

std::size_t Story::CountSince(const std::string& line) const {
    const auto times = trace.LogTimes(line);
    return static_cast<std::size_t>(std::count_if(
        times.begin(), times.end(), [this](Duration time) { return time >= struck_; }));
}

void Story::TellLine(const std::string& name, const std::string& line) {
    const auto times = trace.LogTimes(line);
    const auto first =
        std::find_if(times.begin(), times.end(), [this](Duration time) { return time >= struck_; });
    ASSERT_NE(first, times.end()) << "no line '" << line << "'";
    TellTime(name, *first - struck_);
}

void Story::TellTime(const std::string& name, Duration since_the_fault) {
    lived_.times[name] = since_the_fault;
}

void Story::TellCount(const std::string& name, std::size_t count) {
    lived_.counts[name] = count;
}

void Story::AskWhy() {
    CopiedRouter copy(*this);
    copy.SetAddress(has_address_ ? "10.64.0.2" : "none");
    copy.Write("/sys/class/net/wwan0/statistics/tx_bytes", std::to_string(bytes_) + "\n");
    lived_.cause = copy.Cause();
}

Lived Story::TakeLived() {
    std::vector<rig::Event> log;
    for (rig::Event event : trace.Of(Kind::kLog)) {
        event.at -= struck_.count();
        if (event.at >= 0 && !IsAboutAnyStart(event.text)) log.push_back(event);
    }
    lived_.log = Folded(log);
    return lived_;
}

}  // namespace recovery
