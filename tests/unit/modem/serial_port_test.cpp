// Opening the modem's device, against a pseudo terminal.
#include "modem/serial_port.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "fakes/fixture.h"
#include "fakes/terminal.h"
#include "modem/at_channel.h"
#include "state/settings.h"

namespace {

class SerialPort : public fake::DaemonTest {
  protected:
    SerialPort() {
        BreakPort();
        std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath));
        master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        grantpt(master_);
        unlockpt(master_);
        path_ = ptsname(master_);
        // A reader of our own: the settings last while somebody holds the terminal open.
        slave_ = open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    }
    ~SerialPort() override {
        close(slave_);
        close(master_);
        std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath));
    }
    static void UsePath(const std::string& path) {
        std::memset(g_c_PortPath, 0, sizeof(g_c_PortPath));
        path.copy(g_c_PortPath, sizeof(g_c_PortPath));
    }
    termios Settings() const {
        termios line = {};
        tcgetattr(slave_, &line);
        return line;
    }
    void SetAllFlags() const {
        termios line = Settings();
        line.c_iflag = BRKINT | IGNPAR | PARMRK | INPCK | ISTRIP | INLCR | IGNCR | ICRNL | IXON |
                       IXOFF | IXANY | IUCLC | IMAXBEL;
        line.c_oflag = OPOST | ONLCR;
        line.c_lflag = ICANON | ECHO | ECHOE | ISIG | IEXTEN | ECHOK;
        line.c_cflag = B9600 | CS7 | PARENB | CSTOPB | HUPCL;
        line.c_cc[VMIN] = 3;
        line.c_cc[VTIME] = 4;
        tcsetattr(slave_, TCSANOW, &line);
    }

    int master_ = -1;
    int slave_ = -1;
    std::string path_;
};

TEST_F(SerialPort, OpensTheDeviceNonBlockingAndNotAsTerminalOfTheProcess) {
    UsePath(path_);
    EXPECT_EQ(OpenPort(), 1);
    ASSERT_GE(g_i_PortFd, 0);
    const int flags = fcntl(g_i_PortFd, F_GETFL);
    EXPECT_EQ(flags & O_ACCMODE, O_RDWR);
    EXPECT_TRUE((flags & O_NONBLOCK) != 0);
    EXPECT_TRUE(world.log.empty());
}

TEST_F(SerialPort, IsNotTheTerminalOfTheProcess) {
    EXPECT_FALSE(fake::GetsTheTerminal([](const std::string& path) {
        UsePath(path);
        EXPECT_EQ(OpenPort(), 1);
    }));
}

TEST_F(SerialPort, AReadOfAQuietPortReturnsAtOnce) {
    UsePath(path_);
    OpenPort();
    char buffer[8];
    EXPECT_LE(read(g_i_PortFd, buffer, sizeof(buffer)), 0);
    EXPECT_EQ(ReadPort(buffer, sizeof(buffer)), 0);
}

TEST_F(SerialPort, MakesTheLineRaw) {
    SetAllFlags();
    UsePath(path_);
    OpenPort();
    const termios line = Settings();
    EXPECT_EQ(line.c_iflag, static_cast<tcflag_t>(IGNBRK | IMAXBEL));
    EXPECT_EQ(line.c_oflag, static_cast<tcflag_t>(ONLCR));
    EXPECT_EQ(line.c_lflag, static_cast<tcflag_t>(IEXTEN | ECHOK));
    EXPECT_EQ(line.c_cc[VMIN], 0);
    EXPECT_EQ(line.c_cc[VTIME], 0);
}

TEST_F(SerialPort, SetsEightDataBitsNoParityOneStopBit) {
    SetAllFlags();
    UsePath(path_);
    OpenPort();
    const tcflag_t control = Settings().c_cflag;
    EXPECT_EQ(control & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_EQ(control & (PARENB | CSTOPB), 0u);
    EXPECT_EQ(control & (CLOCAL | CREAD), static_cast<tcflag_t>(CLOCAL | CREAD));
    EXPECT_EQ(control & HUPCL, static_cast<tcflag_t>(HUPCL));
}

TEST_F(SerialPort, ALineThatHasNoneOfItGetsAllThatItNeeds) {
    termios line = Settings();
    line.c_iflag = line.c_oflag = line.c_lflag = 0;
    line.c_cflag = B9600 | CS5 | CSTOPB;
    line.c_cc[VMIN] = line.c_cc[VTIME] = 9;
    tcsetattr(slave_, TCSANOW, &line);
    UsePath(path_);
    OpenPort();
    line = Settings();
    EXPECT_EQ(line.c_iflag, static_cast<tcflag_t>(IGNBRK));
    EXPECT_EQ(line.c_oflag, 0U);
    EXPECT_EQ(line.c_lflag, 0U);
    EXPECT_EQ(line.c_cflag & ~static_cast<tcflag_t>(CBAUD),
              static_cast<tcflag_t>(CS8 | CREAD | CLOCAL));
    EXPECT_EQ(line.c_cc[VMIN], 0);
    EXPECT_EQ(line.c_cc[VTIME], 0);
}

// Guards oddity no-line-speed.
TEST_F(SerialPort, OnlyTheMc75iGetsASpeed) {
    struct Row {
        int card;
        tcflag_t speed;
    };
    // Speed code 0 for the others is deliberate.
    const Row rows[] = {
        {0, B0}, {2, B0}, {3, B0}, {4, B0}, {6, B115200}, {7, B0}, {8, B0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.card);
        SetAllFlags();
        g_i_CardType = row.card;
        UsePath(path_);
        OpenPort();
        EXPECT_EQ(Settings().c_cflag & CBAUD, row.speed);
        ClosePort();
    }
}

TEST_F(SerialPort, TheSpeedIsLoggedAtANonZeroLevelForTheMc75iOnly) {
    UsePath(path_);
    for (const int level : {-1, 0, 1}) {
        SCOPED_TRACE(level);
        g_i_DebugLevel = level;
        world.log.clear();
        g_i_CardType = kCardNovatelE362;
        OpenPort();
        ClosePort();
        EXPECT_TRUE(world.log.empty());
        g_i_CardType = kCardMc75i;
        OpenPort();
        ClosePort();
        EXPECT_EQ(world.Logged("Baud rate set to 115200"), level != 0);
    }
}

TEST_F(SerialPort, FailedOpensAreLoggedAndCounted) {
    UsePath(Folder() + "/ttyNone");
    EXPECT_EQ(OpenPort(), 0);
    EXPECT_EQ(OpenPort(), 0);
    EXPECT_EQ(g_i_PortOpenFailures, 2);
    EXPECT_LT(g_i_PortFd, 0);
    EXPECT_EQ(world.log, (std::vector<std::string>{
                             "Unable to open port " + Folder() + "/ttyNone, attempt 1/5",
                             "Unable to open port " + Folder() + "/ttyNone, attempt 2/5",
                         }));
}

TEST_F(SerialPort, ASuccessfulOpenClearsTheFailureCount) {
    g_i_PortOpenFailures = 3;
    UsePath(path_);
    EXPECT_EQ(OpenPort(), 1);
    EXPECT_EQ(g_i_PortOpenFailures, 0);
}

TEST_F(SerialPort, AFileThatIsNoTerminalIsUsedAsItIs) {
    UsePath(WriteTemp("plain", ""));
    EXPECT_EQ(OpenPort(), 1);
    EXPECT_EQ(g_i_PortOpenFailures, 0);
    ClosePort();
    g_i_PortFd = -1;
}

TEST_F(SerialPort, APathOfEightyCharactersIsReadToItsEndAndNotBeyond) {
    std::string path = Folder() + "/";
    path.resize(80, 'p');
    UsePath(path);
    EXPECT_EQ(OpenPort(), 0);
    EXPECT_EQ(world.log.back(), "Unable to open port " + path + ", attempt 1/5");
}

TEST_F(SerialPort, CloseEndsTheDescriptorAndForgivesAnInvalidOne) {
    UsePath(path_);
    OpenPort();
    const int fd = g_i_PortFd;
    ClosePort();
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);
    ClosePort();
    g_i_PortFd = -1;
    ClosePort();
    EXPECT_TRUE(world.log.empty());
}

TEST_F(SerialPort, WhatTheModemSendsArrivesUnchanged) {
    UsePath(path_);
    OpenPort();
    const std::string bytes("\r\n+CSQ: 1\x03\x11\x13\0\xff\r\n", 16);
    ASSERT_EQ(write(master_, bytes.data(), bytes.size()), 16);
    pollfd arrival = {g_i_PortFd, POLLIN, 0};  // The kernel passes terminal input on later.
    ASSERT_EQ(poll(&arrival, 1, 10000), 1);
    std::string buffer(64, 'x');
    EXPECT_EQ(ReadPort(buffer.data(), 64), 16);
    EXPECT_EQ(buffer.substr(0, 16), bytes);
}

}  // namespace
