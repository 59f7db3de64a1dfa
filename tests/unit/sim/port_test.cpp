// The pseudo terminal, the control socket and the hooks, with their real descriptors.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termio.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "machine/fair_clock.h"
#include "machine/own_folder.h"
#include "sim/program/control_socket.h"
#include "sim/program/hooks.h"
#include "sim/program/pty_port.h"

namespace {

using testing::HasSubstr;

class Folder : public testing::Test {
  protected:
    ~Folder() override {
        for (const char* name : {"link", "socket", "file"}) unlink(Path(name).c_str());
        rmdir(folder_.c_str());
    }
    std::string Path(const std::string& name) const { return folder_ + "/" + name; }

    const std::string folder_ = machine::MakeOwnFolder();
};

bool Readable(int descriptor) {
    return machine::WaitUntil([descriptor] {
        pollfd polled{descriptor, POLLIN, 0};
        return poll(&polled, 1, 0) == 1 && (polled.revents & POLLIN) != 0;
    });
}

std::string ReadSome(int descriptor) {
    char buffer[256];
    const ssize_t count = Readable(descriptor) ? read(descriptor, buffer, sizeof(buffer)) : 0;
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : "";
}

int OpenAsHost(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
}

using Pty = Folder;

TEST_F(Pty, IsRawBeforeAnybodyHasOpenedIt) {
    sim::PtyPort port(Path("link"));
    port.Open();
    port.Write("\r\nOK\r\n");
    const int host = OpenAsHost(Path("link"));
    ASSERT_GE(host, 0);
    EXPECT_EQ(ReadSome(host), "\r\nOK\r\n");
    EXPECT_EQ(port.Read(), "") << "the terminal echoed the modem's own words";
    ASSERT_EQ(write(host, "AT\r\n\0\x1a", 6), 6);
    ASSERT_TRUE(Readable(port.Descriptor()));
    EXPECT_EQ(port.Read(), std::string("AT\r\n\0\x1a", 6));
    close(host);
}

TEST_F(Pty, WorksOnAtALineSpeedOfNought) {
    sim::PtyPort port(Path("link"));
    port.Open();
    const int host = OpenAsHost(Path("link"));
    termio settings{};
    ASSERT_EQ(ioctl(host, TCGETA, &settings), 0);
    settings.c_cflag = static_cast<unsigned short>(settings.c_cflag & 0xFF00);
    ASSERT_EQ(ioctl(host, TCSETA, &settings), 0);
    port.Write("here");
    EXPECT_EQ(ReadSome(host), "here");
    ASSERT_EQ(write(host, "there", 5), 5);
    ASSERT_TRUE(Readable(port.Descriptor()));
    EXPECT_EQ(port.Read(), "there");
    close(host);
}

TEST_F(Pty, SurvivesTheHostsClosingAndOpening) {
    sim::PtyPort port(Path("link"));
    port.Open();
    close(OpenAsHost(Path("link")));
    EXPECT_EQ(port.Read(), "");
    const int host = OpenAsHost(Path("link"));
    ASSERT_EQ(write(host, "AT", 2), 2);
    ASSERT_TRUE(Readable(port.Descriptor()));
    EXPECT_EQ(port.Read(), "AT");
    close(host);
}

TEST_F(Pty, KeepsWhatTheHostHasNoRoomForYet) {
    sim::PtyPort port("");
    port.Open();
    const int host = OpenAsHost(port.Path());
    const std::string much(200000, 'x');
    port.Write(much);
    EXPECT_TRUE(port.HasBacklog());
    std::string got;
    while (got.size() < much.size()) {
        const std::string piece = ReadSome(host);
        if (piece.empty()) break;
        got += piece;
        port.Flush();
    }
    EXPECT_EQ(got.size(), much.size());
    EXPECT_FALSE(port.HasBacklog());
    close(host);
}

TEST_F(Pty, UnpluggedTheHostSeesADeadPort) {
    sim::PtyPort port(Path("link"));
    port.Open();
    const int host = OpenAsHost(Path("link"));
    port.Close();
    EXPECT_LT(write(host, "AT", 2), 0);
    struct stat status {};
    EXPECT_NE(lstat(Path("link").c_str(), &status), 0);
    close(host);
    port.Open();
    const int again = OpenAsHost(Path("link"));
    EXPECT_GE(again, 0);
    close(again);
}

TEST_F(Pty, MayComeBackUnderAnotherNumber) {
    sim::PtyPort port(Path("link"));
    port.Open();
    port.Close();
    port.UseNumber(1);
    port.Open();
    struct stat status {};
    EXPECT_EQ(lstat(Path("link1").c_str(), &status), 0);
    EXPECT_NE(lstat(Path("link").c_str(), &status), 0);
    port.Close();
    EXPECT_NE(lstat(Path("link1").c_str(), &status), 0);
}

TEST_F(Pty, WhatTheBufferHasNoRoomForCanBeLost) {
    sim::PtyPort port(Path("link"));
    port.Open();
    port.Write(std::string(500000, 'x'));
    EXPECT_TRUE(port.HasBacklog());
    port.DropBacklog();
    EXPECT_FALSE(port.HasBacklog());
}

TEST_F(Pty, TakesOverAnOldLinkButNothingElse) {
    ASSERT_EQ(symlink("/nonexistent", Path("link").c_str()), 0);
    {
        sim::PtyPort port(Path("link"));
        port.Open();
        const int host = OpenAsHost(Path("link"));
        EXPECT_GE(host, 0);
        close(host);
    }
    std::ofstream(Path("file")) << "precious";
    sim::PtyPort port(Path("file"));
    EXPECT_THROW(port.Open(), std::runtime_error);
    std::string kept;
    std::ifstream(Path("file")) >> kept;
    EXPECT_EQ(kept, "precious");
}

// A socket served by a thread until the test has its answers.
class ControlPort : public Folder {
  protected:
    void Serve(sim::ControlSocket* socket) {
        server_ = std::thread([this, socket] {
            constexpr int kBetweenLooks = 10;  // milliseconds
            while (!served_) {
                std::vector<pollfd> polled;
                socket->AddTo(&polled);
                poll(polled.data(), polled.size(), kBetweenLooks);
                socket->Handle(polled);
            }
        });
    }
    void EndService() {
        served_ = true;
        server_.join();
    }
    static std::string Answer(const std::string& line) { return "ok: " + line; }

    std::thread server_;
    std::atomic<bool> served_{false};
};

TEST_F(ControlPort, AnswersOneLineAtATime) {
    sim::ControlSocket socket(Path("socket"), Answer);
    Serve(&socket);
    EXPECT_EQ(sim::AskModem(Path("socket"), "signal 12"), "ok: signal 12");
    EXPECT_EQ(sim::AskModem(Path("socket"), ""), "ok: ");
    EndService();
}

TEST_F(ControlPort, IsForItsOwnerOnly) {
    sim::ControlSocket socket(Path("socket"), Answer);
    struct stat status {};
    ASSERT_EQ(stat(Path("socket").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(ControlPort, LeavesAForeignFileAlone) {
    std::ofstream(Path("file")) << "precious";
    EXPECT_THROW(sim::ControlSocket(Path("file"), Answer), std::runtime_error);
    EXPECT_EQ(access(Path("file").c_str(), F_OK), 0);
}

TEST_F(ControlPort, DoesNotPushALivingModemAside) {
    sim::ControlSocket first(Path("socket"), Answer);
    EXPECT_THROW(sim::ControlSocket(Path("socket"), Answer), std::runtime_error);
    EXPECT_EQ(access(Path("socket").c_str(), F_OK), 0);
}

TEST_F(ControlPort, NobodyThereIsAnError) {
    EXPECT_THROW(sim::AskModem(Path("socket"), "status"), std::runtime_error);
    EXPECT_THROW(sim::AskModem(std::string(500, 'x'), "status"), std::runtime_error);
}

TEST(ControlLine, KeepsWordsTogether) {
    EXPECT_EQ(sim::ControlLine({"sms", "+1", "a \"b\"\nc"}), "\"sms\" \"+1\" \"a \\\"b\\\"\\nc\"");
}

using Hook = Folder;

TEST_F(Hook, RunsOneAfterTheOther) {
    sim::Hooks hooks;
    const std::string file = Path("file");
    hooks.Run("");
    hooks.Run("until test -e " + Path("link") + "; do sleep 0.01; done; printf one >> " + file);
    hooks.Run("printf two >> " + file);
    hooks.Reap();
    EXPECT_NE(access(file.c_str(), F_OK), 0) << "the second did not wait for the first";
    std::ofstream(Path("link")) << "go on";
    std::string text;
    const bool both = machine::WaitUntil([&] {
        hooks.Reap();
        text.clear();
        std::ifstream(file) >> text;
        return text == "onetwo";
    });
    EXPECT_TRUE(both) << text;
}

}  // namespace
