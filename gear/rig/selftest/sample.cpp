// A small program under the rig, which does what its first argument says. What it prints goes to
// the system log, so that the rig's tests read it there.

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <net/if.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <syslog.h>
#include <termio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace {

volatile sig_atomic_t g_signal = 0;
const char* g_argument = "";  // the second one

void OnSignal(int number) {
    g_signal = number;
}

void Say(const std::string& text) {
    syslog(LOG_NOTICE, "%s", text.c_str());
}

std::string Text(std::int64_t number) {
    return std::to_string(number);
}

int OpenPort() {
    return open("/dev/ttyUSB0", O_RDWR | O_NOCTTY | O_NONBLOCK);
}

void SayResult(const char* what, std::int64_t result) {
    Say(std::string(what) + " " + Text(result) + (result < 0 ? " " + Text(errno) : ""));
}

void SayWaiting(int port) {
    int waiting = -1;
    if (ioctl(port, FIONREAD, &waiting) < 0) {
        Say("waiting fails " + Text(errno));
    } else {
        Say("waiting " + Text(waiting));
    }
}

void Put(int port, const std::string& text) {
    SayResult("wrote", write(port, text.data(), text.size()));
}

// For ever: says what time it is, on both clocks, every ten seconds.
void Clocks() {
    for (;;) {
        timeval wall = {};
        gettimeofday(&wall, nullptr);
        const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(
                               std::chrono::steady_clock::now().time_since_epoch())
                               .count();
        const std::time_t now = std::time(nullptr);
        char text[64];
        std::strftime(text, sizeof(text), "%F %T", std::localtime(&now));
        Say(Text(since) + " " + Text(wall.tv_sec) + "." + Text(wall.tv_usec) + " " + text);
        sleep(9);
        usleep(500000);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    }
}

// Sleeps, and says how it was interrupted.
void Sleeper() {
    signal(SIGTERM, OnSignal);
    signal(SIGHUP, OnSignal);
    for (;;) {
        const unsigned left = sleep(10);
        const int signal_seen = g_signal;
        if (signal_seen != 0) Say("signal " + Text(signal_seen) + " left " + Text(left));
        g_signal = 0;
        if (usleep(500000) != 0) Say("usleep interrupted " + Text(errno));
        if (signal_seen == SIGTERM) std::exit(7);
    }
}

// Asks the modem once a second and says what comes.
void Talker() {
    const int port = OpenPort();
    SayResult("open", port < 0 ? -1 : 0);
    for (;;) {
        Put(port, "AT+CSQ");
        Put(port, "\r");
        SayWaiting(port);
        usleep(4999);
        SayWaiting(port);
        usleep(1);
        SayWaiting(port);
        char text[16] = {};
        const ssize_t count = read(port, text, sizeof(text) - 1);
        SayResult("read", count);
        SayWaiting(port);
        sleep(1);
    }
}

// Reads all there is each second and says how much.
void Drain() {
    const int port = OpenPort();
    static char buffer[100000];
    for (;;) {
        sleep(1);
        SayWaiting(port);
        std::int64_t all = 0;
        ssize_t count = 0;
        while ((count = read(port, buffer, sizeof(buffer))) > 0) all += count;
        SayResult("drained", count < 0 ? count : all);
    }
}

void Settings() {
    const int port = OpenPort();
    termio line = {};
    ioctl(port, TCGETA, &line);
    Say("echo " + Text((line.c_lflag & ECHO) != 0));
    line.c_lflag = static_cast<unsigned short>(line.c_lflag & ~ECHO);
    ioctl(port, TCSETA, &line);
    close(port);
    SayResult("write", write(port, "x", 1));
}

// Opens the port each ten seconds, and writes to it.
void Opener() {
    for (;;) {
        const int port = OpenPort();
        SayResult("open", port < 0 ? -1 : 0);
        if (port >= 0) {
            Put(port, "AT\r");
            SayWaiting(port);
            close(port);
        }
        sleep(10);
    }
}

void SayTimes(const char* path) {
    struct stat file = {};
    if (stat(path, &file) != 0) {
        Say("no file");
    } else {
        Say(Text(file.st_mtime) + " " + Text(file.st_ctime));
    }
}

// Looks at a file's times each minute.
void Looker() {
    for (;;) {
        SayTimes(g_argument);
        sleep(60);
    }
}

// Writes files in three ways, a minute apart, and looks at them after ten minutes.
void Writer() {
    const int fd = open("/var/log/a", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    sleep(60);
    Put(fd, "first");
    close(fd);
    sleep(60);
    std::ofstream("/var/log/b.new") << "second";
    sleep(60);
    std::rename("/var/log/b.new", "/var/log/b");
    sleep(60);
    FILE* stream = std::fopen("/var/log/c", "w");
    std::fputs("third", stream);
    sleep(60);
    std::fclose(stream);
    sleep(60);
    SayResult("system", std::system("touch /var/log/d"));
    sleep(300);
    for (const char* path : {"/var/log/a", "/var/log/b", "/var/log/c", "/var/log/d"}) {
        SayTimes(path);
    }
    unlink("/var/log/a");
}

void Replacer() {
    for (int i = 0; i < 100; ++i) {
        std::ofstream("/var/log/new") << i;
        std::rename("/var/log/new", "/var/log/kept");
        std::ofstream("/var/log/deleted") << i;
        unlink("/var/log/deleted");
        struct stat file = {};
        const int fd = open("/proc/uptime", O_RDONLY);
        fstat(fd, &file);
        close(fd);
    }
}

void Kernel() {
    for (const char* path : {"/proc/uptime", "/proc/99", "/proc/99/cmdline", "/proc/100",
                             "/sys/class/net/wwan0/statistics/tx_bytes"}) {
        SayResult(path, access(path, F_OK));
    }
    std::string line;
    std::getline(std::ifstream("/proc/uptime"), line);
    Say(line);
    sleep(10);
    double up = 0;
    double idle = 0;
    if (FILE* file = std::fopen("/proc/uptime", "r")) {
        SayResult("numbers", std::fscanf(file, "%lf %lf\n", &up, &idle));
        std::fclose(file);
    }
    Say(std::to_string(up));
    std::getline(std::ifstream("/proc/99/cmdline"), line);
    Say(line.c_str());
    std::getline(std::ifstream("/sys/class/net/wwan0/statistics/tx_bytes"), line);
    Say(line);
    Say("pid " + Text(getpid()));
}

void Address() {
    for (;;) {
        const int fd = socket(AF_INET, SOCK_STREAM, 0);
        ifreq request = {};
        std::strcpy(request.ifr_name, "wwan0");
        if (fd < 0 || ioctl(fd, SIOCGIFADDR, &request) != 0) {
            Say("none " + Text(errno));
        } else {
            sockaddr_in address = {};
            std::memcpy(&address, &request.ifr_addr, sizeof(address));
            Say(inet_ntoa(address.sin_addr));
        }
        if (fd >= 0) close(fd);
        sleep(10);
    }
}

void Shell() {
    for (;;) {
        SayResult("system", std::system(g_argument));
        sleep(10);
    }
}

void PathFaults() {
    SayResult("open", open("/var/log/x", O_WRONLY | O_CREAT, 0644));
    Say(std::fopen("/var/log/x", "w") == nullptr ? "fopen fails" : "fopen works");
    Say(opendir("/var/log") == nullptr ? "opendir fails" : "opendir works");
    const int small = open("/tmp/small/x", O_WRONLY | O_CREAT, 0644);
    const std::string much(100000, 'x');
    const ssize_t first = write(small, much.data(), much.size());
    const ssize_t second = write(small, much.data(), much.size());
    Say(first < 100000 && second < 0 && errno == ENOSPC ? "full" : "room");
    SayResult("read-only", open("/tmp/fixed/x", O_WRONLY | O_CREAT, 0644));
}

void Crash() {
    sleep(5);
    raise(SIGSEGV);
}

void Hang() {
    for (volatile bool for_ever = true; for_ever;) {
    }
}

void Leak() {
    sleep(1);
    char* volatile lost = new char[100];
    SayResult("lost", lost == nullptr ? 0 : 100);
    lost = nullptr;
}

void Complain() {
    std::fputs("something is wrong\n", stderr);
    std::exit(isatty(2) != 0 ? 3 : 4);
}

}  // namespace

int main(int argc, char** argv) {
    const std::map<std::string, std::function<void()>> roles = {
        {"clocks", Clocks},     {"sleeper", Sleeper},   {"talker", Talker},   {"drain", Drain},
        {"settings", Settings}, {"opener", Opener},     {"looker", Looker},   {"writer", Writer},
        {"kernel", Kernel},     {"replacer", Replacer}, {"address", Address}, {"shell", Shell},
        {"faults", PathFaults}, {"crash", Crash},       {"hang", Hang},       {"leak", Leak},
        {"complain", Complain}, {"nothing", [] {}},
    };
    if (argc < 2) return 2;
    if (argc > 2) g_argument = argv[2];
    const auto role = roles.find(argv[1]);
    if (role == roles.end()) return 2;
    role->second();
    return 0;
}
