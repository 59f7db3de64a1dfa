#include "rig/world.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "rig/card_options.h"
#include "rig/private_root.h"
#include "rig/program.h"
#include "rig/shell_effects.h"

namespace rig {

namespace {

constexpr char kUsualDevice[] = "/dev/ttyUSB0";
constexpr std::int64_t kUsualStart = 1773479700;  // 2026-03-14 09:15:00 UTC
constexpr int kUsualProcess = 4242;
constexpr Duration kUsualUptime = 3600s;
constexpr std::uint32_t kUsualKinds = ~KindBit(Kind::kSleep);
constexpr std::size_t kShownEvents = 60;

std::vector<std::string> WordsOf(const std::string& arguments) {
    std::istringstream stream(arguments);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

bool IsOption(const std::string& word) {
    return !word.empty() && word[0] == '-';
}

// The first argument that is no option; the daemon takes 80 characters of it.
std::string DeviceOf(const std::vector<std::string>& arguments) {
    const auto device = std::find_if_not(arguments.begin(), arguments.end(), IsOption);
    return device == arguments.end() ? kUsualDevice : device->substr(0, 80);
}

bool MayNameACard(const std::string& word) {
    return IsOption(word) && word[1] != 'd' && word.find("cind1") == std::string::npos;
}

// The daemon passes over an option that it does not know, and a story would be told of another
// modem than it seems.
void RejectUnknownOptions(const std::vector<std::string>& arguments) {
    for (const std::string& word : arguments) {
        if (!MayNameACard(word) || SelectedBy(word) != nullptr) continue;
        throw std::invalid_argument("the daemon knows no option " + word +
                                    "; a story that means it gives its arguments Exactly");
    }
}

// The model of the last card option, as the daemon chooses.
std::string ProfileOf(const std::vector<std::string>& arguments) {
    const cards::Model* chosen = cards::ModelOfType(kCardGeneric);
    for (const std::string& word : arguments) {
        const cards::Model* model = MayNameACard(word) ? SelectedBy(word) : nullptr;
        if (model != nullptr) chosen = model;
    }
    return chosen->name;
}

template <std::size_t kSize>
void CopyText(char (&to)[kSize], const std::string& text) {
    if (text.size() >= kSize) throw std::invalid_argument("too long: " + text);
    std::memcpy(to, text.c_str(), text.size() + 1);
}

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

// A file of its own for each world of a test, in the folder that RIG_TRACES names.
std::unique_ptr<std::ostream> TraceFile(const char* folder) {
    static std::map<std::string, int> worlds;
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name =
        test == nullptr ? "none" : std::string(test->test_suite_name()) + "." + test->name();
    std::replace(name.begin(), name.end(), '/', '_');
    const std::string number = std::to_string(++worlds[name]);
    return std::make_unique<std::ofstream>(folder + ("/" + name) + "." + number + ".trace");
}

}  // namespace

std::uint64_t Seed() {
    const char* seed = std::getenv("RIG_SEED");
    return seed == nullptr ? 1 : std::strtoull(seed, nullptr, 10);
}

World::World(const std::string& arguments) : memory_(process_.Memory()), files_(memory_) {
    std::vector<std::string> words = WordsOf(arguments);
    RejectUnknownOptions(words);
    if (std::all_of(words.begin(), words.end(), IsOption)) words.push_back(kUsualDevice);
    SetUp(std::move(words));
}

World::World(const Exactly& exactly) : memory_(process_.Memory()), files_(memory_) {
    SetUp(exactly.arguments);
}

void World::SetUp(std::vector<std::string> arguments) {
    program_ = DaemonProgram();
    arguments_ = std::move(arguments);
    memory_.wall_offset = kUsualStart * 1000000;
    memory_.process_id = kUsualProcess;
    memory_.kept_kinds = kUsualKinds;
    memory_.settings = FreshSettings();
    SetDevice(DeviceOf(arguments_));
    if (const char* folder = std::getenv(kTracesVariable)) {
        trace_.CopyTo(TraceFile(folder));
        KeepSleeps();
    }
    SetUptime(kUsualUptime);
    UseProfile(ProfileOf(arguments_));
    EmptyPrivateFolders();
    WriteFile("/etc/ssh/ssh_host_dsa_key", "");
}

World::~World() {
    Stop();
    CheckEnd();
    for (const std::string& folder : mounts_) umount2(folder.c_str(), MNT_DETACH);
    if (::testing::Test::HasFailure()) PrintStory();
}

void World::SetEnvironment(const std::string& name, const std::string& value) {
    environment_[name] = value;
}

void World::SetDevice(const std::string& path) {
    CopyText(memory_.device, path);
}

void World::SetWallClock(const std::string& utc) {
    std::tm time = {};
    if (strptime(utc.c_str(), "%Y-%m-%d %H:%M:%S", &time) == nullptr) {
        throw std::invalid_argument("not a time: " + utc);
    }
    memory_.wall_offset = timegm(&time) * 1000000;
}

void World::UseProfile(const std::string& name) {
    modem_ = std::make_unique<sim::PlayedModem>(sim::LoadProfile(name), Seed());
    peer_ = std::make_unique<ModemPeer>(*modem_);
}

void World::ScriptModem(ScriptPeer::Script script, Duration delay) {
    peer_ = std::make_unique<ScriptPeer>(std::move(script), delay.count());
}

std::vector<std::string> World::Environment() const {
    std::map<std::string, std::string> all = {
        {"TZ", "UTC"},
        {"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"},
        {"LD_PRELOAD", PreloadList(program_)},
        {"ASAN_OPTIONS", "exitcode=99:detect_leaks=1:detect_stack_use_after_return=1"},
        {"UBSAN_OPTIONS", "print_stacktrace=1"}};
    for (const auto& [name, value] : environment_) all[name] = value;
    std::vector<std::string> lines;
    for (const auto& [name, value] : all) lines.push_back(name + "=" + value);
    return lines;
}

void World::Start() {
    if (started_) throw std::logic_error("started twice");
    if (!InPrivateRoot()) throw std::logic_error("no private root");
    modem_->SetClock(WallSeconds(), 0);
    DaemonProcess::Launching launching;
    launching.program = program_;
    launching.arguments = {argv0_};
    launching.arguments.insert(launching.arguments.end(), arguments_.begin(), arguments_.end());
    launching.environment = Environment();
    launching.on_terminal = on_terminal_;
    started_ = true;
    try {
        process_.Launch(launching);
    } catch (const DaemonTrouble& trouble) {
        TakeTrouble(trouble);
    }
}

void World::At(Duration since_start, Action action) {
    events_.push({since_start.count(), event_count_++, std::move(action)});
}

void World::Every(Duration period, Action action) {
    After(period, [this, period, action = std::move(action)] {
        action();
        Every(period, action);
    });
}

void World::Signal(int number) {
    if (memory_.signal_count == kMostSignals) throw std::logic_error("too many signals");
    memory_.signals[memory_.signal_count++] = number;
}

void World::SignalAtCall(std::uint64_t call, int number) {
    memory_.signal_at_call = call;
    memory_.signal_at_call_number = number;
}

void World::JumpClock(Duration distance) {
    memory_.wall_offset += distance.count();
    Add(Kind::kClock, static_cast<int>(distance.count() / 1000000), "");
}

std::int64_t World::WallSeconds() const {
    return (memory_.now + memory_.wall_offset) / 1000000;
}

void World::ModemSays(const std::string& bytes) {
    Deliver(bytes);
}

std::string World::Control(const std::string& line) {
    std::string answer = modem_->Control(line, memory_.now);
    EXPECT_EQ(answer.rfind("error", 0), std::string::npos) << line << ": " << answer;
    return answer;
}

void World::RemoveDevice(int error) {
    device_error_ = error;
}

void World::AddDevice() {
    device_error_ = 0;
}

void World::Unplug() {
    RemoveDevice();
    memory_.unplugged = 1;
}

void World::RepairPort() {
    memory_.write_fault = memory_.waiting_fault = memory_.read_fault = {};
}

void World::SetUptime(Duration uptime_now) {
    uptime_ = uptime_now.count() - memory_.now;
}

void World::AddProcess(int id, const std::string& command_line) {
    const std::string folder = "/proc/" + std::to_string(id);
    processes_[folder] = "";
    processes_[folder + "/cmdline"] = command_line;
}

void World::SetAddress(const std::string& dotted) {
    in_addr address = {};
    if (inet_pton(AF_INET, dotted.c_str(), &address) != 1) {
        throw std::invalid_argument("not an address: " + dotted);
    }
    memory_.address = address.s_addr;
}

void World::SetTxBytes(std::uint64_t count) {
    tx_bytes_ = [count](Duration) { return count; };
}

void World::SetTxBytes(std::function<std::uint64_t(Duration now)> count) {
    tx_bytes_ = std::move(count);
}

void World::OnShell(const std::string& start, ShellHandler handler) {
    shell_handlers_.push_back({start, std::move(handler)});
}

void World::SetShellStatus(const std::string& start, int status) {
    OnShell(start, [status](const std::string&) { return status; });
}

int World::DefaultShell(const std::string& line) {
    return RunShellLine(line, files_);
}

void World::Touch(const std::string& path) {
    if (!files_.Touch(path)) throw std::runtime_error("cannot touch " + path);
}

void World::SetAge(const std::string& path, Duration age) {
    files_.SetTimes(path, memory_.now + memory_.wall_offset - age.count());
}

std::vector<std::string> World::List(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void World::Watch(const std::string& path) {
    if (memory_.watched_count == kMostPaths) throw std::logic_error("too many files watched");
    CopyText(memory_.watched[memory_.watched_count++], path);
}

void World::FailPath(const std::string& path, int error) {
    PathFault* const end = memory_.path_faults + memory_.path_fault_count;
    PathFault* fault = std::find_if(memory_.path_faults, end,
                                    [&](const PathFault& one) { return path == one.path; });
    if (fault == end) {
        if (memory_.path_fault_count == kMostPaths) throw std::logic_error("too many path faults");
        CopyText(fault->path, path);
        ++memory_.path_fault_count;
    }
    fault->error = error;
}

void World::MountSmall(const std::string& folder, std::size_t bytes) {
    std::filesystem::create_directories(folder);
    const std::string options = "mode=777,size=" + std::to_string(bytes);
    if (mount("small", folder.c_str(), "tmpfs", 0, options.c_str()) != 0) {
        throw std::runtime_error("cannot mount on " + folder);
    }
    mounts_.insert(mounts_.begin(), folder);
}

void World::MountReadOnly(const std::string& folder) {
    MountSmall(folder, 1 << 20);
    if (mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0) {
        throw std::runtime_error("cannot make read-only: " + folder);
    }
}

void World::CheckEnd() {
    if (!started_) return;
    if (EndingSignal() != 0 && !end_by_signal_allowed_ && !crashed_) {
        ADD_FAILURE() << "the daemon was ended by signal " << EndingSignal();
    }
    const std::string errors = process_.ErrorOutput();
    const bool report = errors.find("Sanitizer") != std::string::npos ||
                        errors.find("runtime error:") != std::string::npos;
    if (!crashed_ && !errors.empty() && (report || !error_output_allowed_)) {
        ADD_FAILURE() << "standard error of the daemon:\n" << errors;
    }
    if (unknown_allowed_) return;
    for (const std::string& command : modem_->Unexpected()) {
        ADD_FAILURE() << "the modem does not know the command '" << command << "'";
    }
}

void World::PrintStory() {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::cout << "What happened last:\n";
    trace_.PrintTail(std::cout, kShownEvents);
    if (test == nullptr) return;
    std::cout << "Replay: RIG_SEED=" << Seed() << " " << TestProgram()
              << " --gtest_filter=" << test->test_suite_name() << "." << test->name() << "\n";
}

}  // namespace rig
