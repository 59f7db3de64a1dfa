#include "scenarios/worlds/random_world.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <random>

#include "rig/card_options.h"
#include "rig/program.h"
#include "scenarios/worlds/status_files.h"

namespace worlds {

namespace {

using rig::Kind;

constexpr Duration kChapter = 5min;          // the trace is looked at and let go this often
constexpr Duration kLongestPass = 2min;      // with all that may delay it
constexpr Duration kLongestDying = 10min;    // of a daemon without a modem
constexpr std::size_t kLongestSent = 150;    // characters of a message
constexpr std::size_t kLongestFile = 65536;  // bytes that are read of a send file
constexpr std::size_t kLongestApn = 20;

// KiB of the daemon's own memory at the end of a chapter.
constexpr long kMostMemory = 4096;
constexpr long kMostMemoryInFloods = 65536;
constexpr long kSmallGrowth = 16;
constexpr Duration kSettlingTime = 1h;

constexpr const char* kApns[] = {"internet", "ISP.Example", "a-b_c!", "exactly-twenty-chars"};

constexpr const char* kEndings[] = {"SIGTERM", "SIGTERM within a pass", "SIGHUP and SIGTERM",
                                    "the modem is pulled out"};

// The last character of a file without a line end is read twice.
std::set<std::string> AllowedApns() {
    std::set<std::string> apns;
    for (const std::string apn : kApns) {
        apns.insert(apn);
        if (apn.size() < kLongestApn) apns.insert(apn + apn.back());
    }
    return apns;
}

std::string WithoutWhiteSpace(std::string text) {
    const auto is_space = [](char c) { return std::strchr(" \t\r\n", c) != nullptr; };
    text.erase(std::remove_if(text.begin(), text.end(), is_space), text.end());
    return text;
}

// For the tests of what makes failing worlds smaller: WORLD_REJECTS=TEXT, and no text of an event
// may begin so.
bool IsRejected(const rig::Event& event) {
    static const char* const rejected = std::getenv("WORLD_REJECTS");
    return rejected != nullptr && event.text.rfind(rejected, 0) == 0;
}

bool IsSanitized() {
    return rig::PreloadList(rig::DaemonProgram()).find("libasan") != std::string::npos;
}

}  // namespace

std::string Plan::Arguments() const {
    std::string arguments = rig::OptionOf(*cards::ModelOfType(card));
    for (int i = 0; i < debug_options; ++i) arguments += " -d";
    if (polls_indicators) arguments += " -cind1";
    return arguments;
}

bool Plan::HasFloods() const {
    return std::any_of(happenings.begin(), happenings.end(), [](const Drawn& drawn) {
        return drawn.happening->what == std::string("the modem floods");
    });
}

std::ostream& operator<<(std::ostream& out, const Plan& plan) {
    out << "the world of seed " << plan.seed << ": modemd " << plan.Arguments() << ", "
        << plan.length / 1min << " minutes, then " << kEndings[static_cast<int>(plan.ending)];
    if (plan.device_comes_late) out << "; the device comes late";
    if (plan.shell_has_troubles) out << "; shell commands fail now and then";
    for (const Plan::Drawn& drawn : plan.happenings) {
        out << "; every " << drawn.gap / 1s << " s " << drawn.happening->what;
    }
    return out;
}

Plan DrawPlan(std::uint64_t seed, unsigned number) {
    Plan plan;
    plan.seed = seed * 1000 + number;
    Dice dice(plan.seed);
    plan.card = cards::kModels[number % std::size(cards::kModels)].type;
    plan.polls_indicators = dice.Chance(25);
    plan.debug_options = dice.Between(0, 4);
    plan.device_comes_late = dice.Chance(20);
    plan.shell_has_troubles = dice.Chance(50);
    plan.length = dice.Between(2 * 60, 5 * 60) * 1min;
    plan.ending = static_cast<Ending>(dice.Below(std::size(kEndings)));
    for (const Happening& happening : Happenings()) {
        const Duration gap = dice.Between(happening.usual_gap / 3, happening.usual_gap * 2);
        if (dice.Chance(65)) plan.happenings.push_back({&happening, gap});
    }
    return plan;
}

RandomWorld::RandomWorld(const Plan& plan)
    : World(plan.Arguments()),
      plan_(plan),
      dice_(plan.seed + 1),
      twin_(sim::LoadProfile(modem.Sim().Name()), plan.seed) {
    given_.card = plan.card;
    given_.polls_indicators = plan.polls_indicators;
    given_.apns = AllowedApns();
    for (const std::string& path : StatusFiles()) trace.Watch(path);
    // What a send file says reaches the modem as it stands, and may be a command to it.
    modem.AllowUnknownCommands();
    modem.Sim().SetHeardLimit(1);
    SetTheScene();
    ServeShellLines();
}

void RandomWorld::SetTheScene() {
    if (dice_.Chance(30)) files.Remove("/etc/ssh/ssh_host_dsa_key");
    if (dice_.Chance(30)) files.Write("/var/run/modemd.pid", dice_.Chance(50) ? "4711" : "garbage");
    if (dice_.Chance(30)) router.SetUptime(dice_.Between(10s, 30min));
    if (dice_.Chance(10)) router.RemoveUptime();
    router.SetTxBytes([](Duration now) { return static_cast<std::uint64_t>(now / 1s) * 1000; });
    if (!plan_.device_comes_late) return;
    port.RemoveDevice(dice_.Chance(50) ? ENOENT : EIO);
    clock.At(dice_.Between(1s, 30s), [this] { port.AddDevice(); });
}

// While the call is up, a udhcpc that is started gets an address; the clock is really set.
void RandomWorld::ServeShellLines() {
    router.OnShell("udhcpc", [this](const std::string&) {
        if (modem.Sim().GetState().call.GetPhase() == sim::DataCall::Phase::kUp) {
            router.SetAddress("10.64.0.2");
        }
        return TakeShellTrouble();
    });
    router.OnShell("kill `cat", [this](const std::string&) {
        router.ClearAddress();
        return TakeShellTrouble();
    });
    for (const char* start : {"ifconfig", "ping", "ResetPCMCIA"}) {
        router.OnShell(start, [this](const std::string&) { return TakeShellTrouble(); });
    }
    router.OnShell("mv ", [this](const std::string& line) {
        const int trouble = TakeShellTrouble();
        return trouble != 0 ? trouble : Move(PlainShellWords(line));
    });
    router.OnShell("/bin/date", [this](const std::string& line) { return SetClock(line); });
}

int RandomWorld::TakeShellTrouble() {
    if (!plan_.shell_has_troubles || !dice_.Chance(20)) return 0;
    router.TakeTime(dice_.Between(0s, 5s));
    return dice_.Between(0, 1);
}

// As mv does it, but within the simulated time of the files.
int RandomWorld::Move(const std::vector<std::string>& words) {
    if (words.size() != 4 || !files.Exists(words[2])) return 1;
    files.Write(words[3], files.Read(words[2]));
    files.Remove(words[2]);
    return 0;
}

int RandomWorld::SetClock(const std::string& line) {
    const auto text = line.find("-s \"");
    std::tm time = {};
    if (text == std::string::npos ||
        strptime(line.c_str() + text + 4, "%H:%M:%S %m/%d/%Y", &time) == nullptr) {
        return 1;
    }
    if (time.tm_year > 137) return 1;  // as a clock of 32 bits does
    clock.Jump(std::chrono::seconds(timegm(&time) - clock.WallSeconds()));
    return 0;
}

void RandomWorld::Tell(const std::string& line) {
    modem.Tell(line);
}

std::string RandomWorld::HonestAnswer(const std::string& command) {
    constexpr Duration kPatience = 10s;
    twin_.Receive(command + "\r", clock.Now().count());
    std::string answer;
    while (twin_.NextEvent() <= (clock.Now() + kPatience).count()) {
        answer += twin_.Transmit(std::max(twin_.NextEvent(), clock.Now().count()));
    }
    return answer;
}

void RandomWorld::DropSendFile(const std::string& name, const std::string& number,
                               const std::string& text) {
    DropSomething(name);
    given_.numbers.insert(WithoutWhiteSpace(number));
    std::string file = "TO=" + number + "\nMSG=" + text;
    files.Write("/tmp/sms/send/" + name, file);
    if (file.size() < kLongestFile) file += file.back();
    given_.messages.insert(file.substr(file.find("MSG=") + 4, kLongestSent));
}

void RandomWorld::DropSomething(const std::string& name) {
    files.Remove("/tmp/sms/send/" + name);
    given_.names.insert(name);
}

namespace {

std::size_t NumberOf(const Happening* happening) {
    return static_cast<std::size_t>(happening - Happenings().data());
}

// Apart for each happening and each time, and far from the seeds of the neighbours.
Dice DiceFor(std::uint64_t seed, const Occurrence& occurrence) {
    std::seed_seq mixed{static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32),
                        static_cast<std::uint32_t>(occurrence.first),
                        static_cast<std::uint32_t>(occurrence.second)};
    std::uint32_t words[2];
    mixed.generate(std::begin(words), std::end(words));
    return Dice(static_cast<std::uint64_t>(words[0]) << 32 | words[1]);
}

}  // namespace

void RandomWorld::Schedule(const Plan::Drawn& drawn, int time) {
    Dice dice = DiceFor(plan_.seed, {NumberOf(drawn.happening), -time});
    clock.After(dice.Between(1s, drawn.gap * 2), [this, &drawn, time] {
        Happen(drawn, time);
        Schedule(drawn, time + 1);
    });
}

void RandomWorld::Happen(const Plan::Drawn& drawn, int time) {
    const Occurrence occurrence(NumberOf(drawn.happening), time);
    if (plan_.only && plan_.only->count(occurrence) == 0) return;
    happened_.emplace_back(clock.Now(), occurrence);
    trace.Note(drawn.happening->what);
    happening_dice_ = DiceFor(plan_.seed, occurrence);
    drawn.happening->happen(*this);
    happening_dice_.reset();
}

void RandomWorld::Live() {
    Start();
    for (const Plan::Drawn& drawn : plan_.happenings) Schedule(drawn, 1);
    while (clock.Now() < plan_.length && !testing::Test::HasFailure()) {
        RunFor(kChapter);
        ASSERT_TRUE(daemon.Running()) << "it has ended";
        EXPECT_GT(trace.Writes().size() + trace.Of(Kind::kWriteFailed).size(), 0U)
            << "it asks nothing";
        CheckWhatHappened();
        CheckMemory();
    }
    if (!testing::Test::HasFailure()) End();
}

void RandomWorld::End() {
    if (plan_.ending == Ending::kUnplugged) {
        port.Unplug();
        EXPECT_EQ(RunToExit(kLongestDying), 255);
        EXPECT_EQ(trace.CountLog("Port error counter above 25, resetting modem"), 1U);
        EXPECT_EQ(trace.Shell().back(), "ResetPCMCIA now &> /dev/null &");
        return CheckWhatHappened();
    }
    RunFor(dice_.Between(0s, 30s));
    files.Write("/var/run/BackendResetControl", "");
    if (plan_.ending == Ending::kHungUpAndTerminated) daemon.Signal(SIGHUP);
    if (plan_.ending == Ending::kTerminatedWithinAPass) {
        daemon.SignalAtCall(daemon.Calls() + 1 + dice_.Below(200), SIGTERM);
    } else {
        daemon.Signal(SIGTERM);
    }
    EXPECT_EQ(RunToExit(kLongestPass), 0) << "SIGTERM does not end it";
    ExpectOrderlyEnd();
    CheckWhatHappened();
}

void RandomWorld::ExpectOrderlyEnd() {
    trace.ExpectLogInOrder({"received SIGINT/SIGTERM", "doing cleanup and exiting", "exit"});
    for (const std::string& name : files.List("/var/log")) {
        EXPECT_NE(name.compare(0, 9, "wireless."), 0) << name << " is left";
    }
    EXPECT_FALSE(files.Exists("/var/run/BackendResetControl"));
    EXPECT_TRUE(files.Exists("/var/run/modemd.pid"));
    EXPECT_EQ(files.Read("/var/log/lightbar"), "");
    if (!cards::Has(cards::kLte, plan_.card)) return;
    EXPECT_EQ(trace.Shell().back(), "ifconfig wwan0 0.0.0.0 down &> /dev/null");
}

void RandomWorld::CheckWhatHappened() {
    for (const rig::Event& event : trace.Events()) {
        const std::string fault = IsRejected(event) ? "a judge that was asked for" : FaultOf(event);
        if (!fault.empty()) {
            ADD_FAILURE() << fault << ":\n" << event;
            return;  // the trace stays, to be shown
        }
    }
    if (testing::Test::HasFailure()) return;
    if (recorded_) {
        chronicle_.insert(chronicle_.end(), trace.Events().begin(), trace.Events().end());
    }
    trace.Clear();
}

std::string RandomWorld::FaultOf(const rig::Event& event) const {
    switch (event.kind) {
        case Kind::kLog:
            return event.number == LOG_NOTICE ? "" : "a log line of another priority";
        case Kind::kWrite:
        case Kind::kWriteFailed:
            return IsKnownWrite(given_, event.text) ? "" : "a write that this card does not get";
        case Kind::kShell:
            return IsKnownShellLine(given_, event.text) ? "" : "an unknown shell line";
        case Kind::kUnlink:
            return IsKnownPath(event.text) ? "" : "a file is removed that is not the daemon's";
        case Kind::kFile: {
            const auto size = static_cast<std::size_t>(event.number);
            const std::string path = event.text.substr(0, size);
            if (!IsKnownPath(path)) return "a file is written that is not the daemon's";
            const std::vector<std::string>& status = StatusFiles();
            if (std::find(status.begin(), status.end(), path) == status.end()) return "";
            return FaultOfStatusFile(plan_.card, path, event.text.substr(size));
        }
        default:
            return "";
    }
}

// A flood, cut into lines and characters, costs its size many times over, and the heap keeps what
// it needed once. Where nothing happens, nothing may be added after the first hour. The sanitizer
// keeps what is freed, and looks for leaks itself.
void RandomWorld::CheckMemory() {
    if (IsSanitized()) return;
    // Its own; what it shares with the rig is left out.
    const long memory = rig::DaemonMemory("RssAnon");
    ASSERT_GT(memory, 0);
    EXPECT_LT(memory, plan_.HasFloods() ? kMostMemoryInFloods : kMostMemory);
    if (clock.Now() <= kSettlingTime) {
        settled_memory_ = memory;
    } else if (plan_.happenings.empty()) {
        EXPECT_LE(memory, settled_memory_ + kSmallGrowth) << "memory grows";
    }
}

}  // namespace worlds
