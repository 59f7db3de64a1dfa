#include "modem/serial_port.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "state/settings.h"
#include "support/system_log.h"

namespace {

constexpr int kShownAttempts = 5;  // shown in the log; the main loop does the counting
constexpr unsigned kSpeedByte = 0xff;

// A path of 80 characters fills the buffer without a terminating zero.
std::string PortPath() {
    return std::string(g_c_PortPath, strnlen(g_c_PortPath, sizeof(g_c_PortPath)));
}

// Speed code 0 for every card but the MC75i is deliberate: the other modems are USB devices, and
// their drivers have always been handed this code.
unsigned SpeedCode() {
    if (g_i_CardType != kCardMc75i) return 0;
    LogDebug("Baud rate set to 115200");
    return B115200;
}

void MakeRaw(termio& line) {
    unsigned input = line.c_iflag;
    input &= ~static_cast<unsigned>(BRKINT | IGNPAR | PARMRK | INPCK | ISTRIP | INLCR | IGNCR |
                                    ICRNL | IXON | IXOFF | IXANY | IUCLC);
    line.c_iflag = static_cast<unsigned short>(input | IGNBRK);
    line.c_oflag = static_cast<unsigned short>(line.c_oflag & ~static_cast<unsigned>(OPOST));
    line.c_lflag = static_cast<unsigned short>(
        line.c_lflag & ~static_cast<unsigned>(ICANON | ECHO | ECHOE | ISIG));
    line.c_cc[VMIN] = 0;
    line.c_cc[VTIME] = 0;

    // The low byte holds speed, size, stop bits and CREAD; the high byte is kept as it was read.
    unsigned control = (line.c_cflag & ~kSpeedByte) | SpeedCode();
    control |= CLOCAL | CREAD | CS8;
    control &= ~static_cast<unsigned>(PARENB | CSTOPB);
    line.c_cflag = static_cast<unsigned short>(control);
}

}  // namespace

int OpenPort() {
    const std::string path = PortPath();
    g_i_PortFd = open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (g_i_PortFd < 0) {
        ++g_i_PortOpenFailures;
        Log("Unable to open port %s, attempt %d/%d", path.c_str(), g_i_PortOpenFailures,
            kShownAttempts);
        ClosePort();
        return 0;
    }
    termio line = {};
    ioctl(g_i_PortFd, TCGETA, &line);
    MakeRaw(line);
    ioctl(g_i_PortFd, TCSETA, &line);
    g_i_PortOpenFailures = 0;
    return 1;
}

void ClosePort() {
    close(g_i_PortFd);
}
