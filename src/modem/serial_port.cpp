// The port's settings by the old short requests, which every driver answers.

#include "modem/serial_port.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "state/settings.h"
#include "support/system_log.h"

namespace {

constexpr int kShownAttempts = 5;  // shown in the log; the main loop does the counting
constexpr unsigned kSpeedByte = 0xff;

// The short form of the terminal settings that TCGETA fills and TCSETA takes. Declared here as the
// kernel lays it out, because not every C library that names the requests declares it.
#if defined(__powerpc__)
constexpr std::size_t kControlCharacters = 10;
#elif defined(__mips__)
constexpr std::size_t kControlCharacters = 23;  // as many as the long form has there
#else
constexpr std::size_t kControlCharacters = 8;
#endif
struct LineSettings {
    unsigned short input;
    unsigned short output;
    unsigned short control;
    unsigned short local;
    unsigned char discipline;
    unsigned char characters[kControlCharacters];
};
static_assert(offsetof(LineSettings, characters) == 9, "no padding in front of the characters");
static_assert(VMIN < kControlCharacters && VTIME < kControlCharacters,
              "both are in the short form");

// A path of 80 characters fills the buffer without a terminating zero.
std::string PortPath() {
    return std::string(g_c_PortPath, strnlen(g_c_PortPath, sizeof(g_c_PortPath)));
}

// Speed code 0 for every card but the MC75i is deliberate: the other modems are USB devices, and
// their drivers have always been handed this code.
// Oddity no-line-speed: only the MC75i gets a line speed; others must not need one.
unsigned SpeedCode() {
    if (g_i_CardType != kCardMc75i) return 0;
    LogDebug("Baud rate set to 115200");
    return B115200;
}

void MakeRaw(LineSettings& line) {
    unsigned input = line.input;
    input &= ~static_cast<unsigned>(BRKINT | IGNPAR | PARMRK | INPCK | ISTRIP | INLCR | IGNCR |
                                    ICRNL | IXON | IXOFF | IXANY | IUCLC);
    line.input = static_cast<unsigned short>(input | IGNBRK);
    line.output = static_cast<unsigned short>(line.output & ~static_cast<unsigned>(OPOST));
    line.local = static_cast<unsigned short>(line.local &
                                             ~static_cast<unsigned>(ICANON | ECHO | ECHOE | ISIG));
    line.characters[VMIN] = 0;
    line.characters[VTIME] = 0;

    // The low byte holds speed, size, stop bits and CREAD; the high byte is kept as it was read.
    unsigned control = (line.control & ~kSpeedByte) | SpeedCode();
    control |= CLOCAL | CREAD | CS8;
    control &= ~static_cast<unsigned>(PARENB | CSTOPB);
    line.control = static_cast<unsigned short>(control);
}

// A request is an int in one C library, an unsigned long in the next.
template <typename Request>
void AskLine(int (*control)(int, Request, ...), unsigned request, LineSettings& line) {
    control(g_i_PortFd, static_cast<Request>(request), &line);
}

}  // namespace

int OpenPort() {
    const std::string path = PortPath();
    g_i_PortFd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (g_i_PortFd < 0) {
        ++g_i_PortOpenFailures;
        Log("Unable to open port %s, attempt %d/%d", path.c_str(), g_i_PortOpenFailures,
            kShownAttempts);
        ClosePort();
        return 0;
    }
    LineSettings line = {};
    AskLine(ioctl, TCGETA, line);
    MakeRaw(line);
    AskLine(ioctl, TCSETA, line);
    g_i_PortOpenFailures = 0;
    return 1;
}

void ClosePort() {
    close(g_i_PortFd);
}
