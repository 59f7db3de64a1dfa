#include "fakes/fake_world.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "fakes/fixture.h"
#include "fakes/libc.h"
#include "machine/own_folder.h"
#include "sms/receive.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "state/timers.h"
#include "support/countdown_timer.h"

namespace {

fake::World* g_world = nullptr;
int g_modem_fd = -1;
std::string g_unfinished;  // bytes of a command without its carriage return

// Reads what the daemon has written and answers every finished command.
void ServeModem() {
    if (g_modem_fd < 0 || g_world == nullptr) return;
    char piece[4096];
    ssize_t count = 0;
    while ((count = recv(g_modem_fd, piece, sizeof(piece), MSG_DONTWAIT)) > 0) {
        const std::string bytes(piece, static_cast<std::size_t>(count));
        g_world->heard.push_back(bytes);
        for (const char c : bytes) {
            if (c == '\0' || c == '\n') continue;
            if (c != '\r') {
                g_unfinished += c;
                continue;
            }
            const auto answer = g_world->answers.find(g_unfinished);
            if (answer != g_world->answers.end()) {
                const ssize_t ignored =
                    write(g_modem_fd, answer->second.data(), answer->second.size());
                static_cast<void>(ignored);
            }
            g_unfinished.clear();
        }
    }
}

// The lengths that the schedule has; which of them a room may use where, its own tests tell.
void ExpectPauseOfTheSchedule(std::int64_t microseconds) {
    const bool seconds = microseconds % 1000000 == 0;
    const bool piece = microseconds == 20000 || microseconds == 50000 || microseconds == 200000 ||
                       microseconds == 500000;
    EXPECT_TRUE(seconds || piece) << "a needless pause of " << microseconds << " microseconds";
}

// More than any test has open at once.
constexpr int kMostDescriptors = 128;

int OpenDescriptors() {
    int count = 0;
    for (int fd = 0; fd < kMostDescriptors; ++fd) count += fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    return count;
}

void Advance(std::int64_t microseconds) {
    if (g_world == nullptr) return;
    ExpectPauseOfTheSchedule(microseconds);
    ServeModem();
    g_world->now_us += microseconds;
    g_world->slept_us += microseconds;
    if (g_world->on_sleep) g_world->on_sleep(g_world->now_us);
}

void TakeLogLine(int priority, const char* format, va_list arguments) {
    if (g_world == nullptr) return;
    va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string line(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(line.data(), line.size() + 1, format, arguments);
    g_world->log.push_back(line);
    g_world->log_priorities.push_back(priority);
}

}  // namespace

// The libc calls of the daemon, caught by standing in front of libc at link time.
extern "C" {

unsigned sleep(unsigned seconds) {
    Advance(std::int64_t{seconds} * 1000000);
    return 0;
}

int usleep(useconds_t microseconds) {
    Advance(microseconds);
    return 0;
}

void openlog(const char* name, int, int) {
    if (g_world != nullptr) g_world->log_name = name;
}

void vsyslog(int priority, const char* format, va_list arguments) {
    TakeLogLine(priority, format, arguments);
}

void __vsyslog_chk(int priority, int, const char* format, va_list arguments) {
    TakeLogLine(priority, format, arguments);
}

int system(const char* command) {
    if (g_world == nullptr) return -1;
    g_world->shell.emplace_back(command);
    const auto status = g_world->shell_status.find(command);
    return status != g_world->shell_status.end() ? status->second : 0;
}

ssize_t write(int fd, const void* data, size_t size) {
    const std::size_t most = g_world != nullptr ? g_world->longest_write : 0;
    return syscall(SYS_write, fd, data, most > 0 ? std::min(size, most) : size);
}

time_t time(time_t* result) LIBC_NOEXCEPT {
    const auto now =
        static_cast<time_t>(g_world != nullptr ? g_world->now_us / 1000000 : 1773479700);
    if (result != nullptr) *result = now;
    return now;
}

int gettimeofday(timeval* now, void*) LIBC_NOEXCEPT {
    const std::int64_t microseconds = g_world != nullptr ? g_world->now_us : 1773479700000000;
    now->tv_sec = microseconds / 1000000;
    now->tv_usec = microseconds % 1000000;
    return 0;
}

}  // extern "C"

namespace fake {

World& Current() {
    return *g_world;
}

bool World::Logged(const std::string& line) const {
    return CountLogged(line) > 0;
}

bool World::LoggedContaining(const std::string& part) const {
    return std::any_of(log.begin(), log.end(), [&](const std::string& line) {
        return line.find(part) != std::string::npos;
    });
}

int World::CountLogged(const std::string& line) const {
    return static_cast<int>(std::count(log.begin(), log.end(), line));
}

std::vector<std::string> World::Commands() const {
    ServeModem();
    std::vector<std::string> commands;
    std::string command;
    for (const std::string& bytes : heard) {
        for (const char c : bytes) {
            if (c == '\r') {
                commands.push_back(command);
                command.clear();
            } else if (c != '\0' && c != '\n') {
                command += c;
            }
        }
    }
    return commands;
}

void World::Waiting(const std::string& bytes) {
    const ssize_t ignored = write(g_modem_fd, bytes.data(), bytes.size());
    static_cast<void>(ignored);
}

DaemonTest::DaemonTest() : open_before_(OpenDescriptors()) {
    setenv("TZ", "UTC", 1);
    tzset();
    folder_ = machine::MakeOwnFolder();
    g_world = &world;
    g_unfinished.clear();

    int ends[2] = {-1, -1};
    socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends);
    const int room = 1 << 20;
    setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &room, sizeof(room));
    g_i_PortFd = ends[0];
    modem_end_ = g_modem_fd = ends[1];

    g_i_CardType = kCardGeneric;
    g_i_IsE362 = g_i_IsMc75i = g_i_UseCind1 = g_i_DebugLevel = g_i_UptimeCutoff = 0;
    g_i_PortOpenFailures = g_i_PortErrorCounter = 0;
    g_b_CsqQueryForm = false;
    g_i_CregPollPeriod = 5;
    g_i_FirstHealthReport = 1;
    g_i_LteConnectAttempts = g_i_TxCheckFailures = g_i_SmsSendAttempts = 0;
    g_b_SmsCmgfSupported = false;
    g_S_PppConfig = PppConfig();
    g_S_PppConfig.interface_enabled = g_S_PppConfig.default_route = true;
    g_S_Globalstats = GlobalStats();
    ResetGlobalStats();
    g_Cp_SmsQueue = new std::deque<SmsMessage>;
    g_Cp_TowerTimeTimer = new cCountdownTimer(0, 14400);
    g_Cp_LteCheckTimer = new cCountdownTimer(0, 30);
    g_Cp_PingTimer = new cCountdownTimer(0, 600);
    g_Cp_IdentityTimer = new cCountdownTimer(0, 30);
    g_Cp_NoServiceTimer = new cCountdownTimer(0, 30);
    g_Cp_SmsTimer = new cCountdownTimer(0, 15);
    g_Cp_DelaySendSMSTimer = new cCountdownTimer(0, 30);
    g_Cp_SmsCleanupTimer = new cCountdownTimer(0, 900);
    g_Cp_CregTimer = new cCountdownTimer(0, 5);
}

DaemonTest::~DaemonTest() {
    close(g_i_PortFd);
    close(modem_end_);
    g_modem_fd = -1;
    delete g_Cp_SmsQueue;
    for (cCountdownTimer* timer : {g_Cp_TowerTimeTimer, g_Cp_LteCheckTimer, g_Cp_PingTimer,
                                   g_Cp_IdentityTimer, g_Cp_NoServiceTimer, g_Cp_SmsTimer,
                                   g_Cp_DelaySendSMSTimer, g_Cp_SmsCleanupTimer, g_Cp_CregTimer}) {
        delete timer;
    }
    g_world = nullptr;
    std::filesystem::remove_all(folder_);
    EXPECT_EQ(OpenDescriptors() - open_before_, kept_descriptors_) << "left open";
}

std::string DaemonTest::WriteTemp(const std::string& name, const std::string& text) {
    const std::string path = folder_ + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

std::string DaemonTest::ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void DaemonTest::BreakPort() {
    close(g_i_PortFd);
    g_i_PortFd = -1;
}

}  // namespace fake
