// The program modem-sim itself: its options, its life and its end.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "machine/fair_clock.h"
#include "machine/own_folder.h"
#include "sim/program/control_socket.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
    int status;
    std::string output;  // both streams
};

Outcome RunShell(const std::string& command) {
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string output;
    char buffer[512];
    while (std::fgets(buffer, sizeof(buffer), pipe) != nullptr) output += buffer;
    return {WEXITSTATUS(pclose(pipe)), output};
}

class Program : public testing::Test {
  protected:
    ~Program() override {
        if (pid_ > 0) End(SIGKILL);
        for (const char* name : {"link", "socket", "log", "calls"}) unlink(Path(name).c_str());
        rmdir(folder_.c_str());
    }

    std::string Path(const std::string& name) const { return folder_ + "/" + name; }

    // Starts the program and waits until it has named its terminal.
    void Start(const std::vector<std::string>& more) {
        std::vector<std::string> words = {MODEM_SIM, "--control", Path("socket"), "--link",
                                          Path("link")};
        words.insert(words.end(), more.begin(), more.end());
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(ends[1], STDOUT_FILENO);
            std::vector<char*> arguments;
            for (std::string& word : words) arguments.push_back(word.data());
            arguments.push_back(nullptr);
            execv(MODEM_SIM, arguments.data());
            _exit(127);
        }
        close(ends[1]);
        std::FILE* output = fdopen(ends[0], "r");
        char line[256] = "";
        ASSERT_NE(std::fgets(line, sizeof(line), output), nullptr);
        EXPECT_THAT(line, StartsWith("/dev/pts/"));
        std::fclose(output);
    }

    int End(int signal) {
        kill(pid_, signal);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return status;
    }

    std::string Tell(const std::string& line) { return sim::AskModem(Path("socket"), line); }
    Outcome Ctl(const std::string& words) {
        return RunShell(std::string(MODEM_SIM) + " ctl --control " + Path("socket") + " " + words);
    }

    // Sends a command through the link and reads until the answer's end.
    std::string Ask(const std::string& command) {
        const int port = open(Path("link").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (port < 0) return "no port";
        const std::string line = command + "\r\n";
        EXPECT_EQ(write(port, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        std::string answer;
        const auto complete = [&] {
            char buffer[256];
            const ssize_t count = read(port, buffer, sizeof(buffer));
            if (count > 0) answer.append(buffer, static_cast<std::size_t>(count));
            return answer.find("OK\r\n") != answer.npos;
        };
        EXPECT_TRUE(machine::WaitUntil(complete)) << answer;
        close(port);
        return answer;
    }

    bool Exists(const std::string& name) const {
        struct stat status {};
        return lstat(Path(name).c_str(), &status) == 0;
    }

    std::string Text(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(Path(name)).rdbuf();
        return text.str();
    }

    const std::string folder_ = machine::MakeOwnFolder();
    pid_t pid_ = -1;
};

TEST_F(Program, ServesItsPortAndItsSocket) {
    Start({"--profile", "E362", "--log", Path("log")});
    EXPECT_EQ(Ask("ATE0"), "ATE0\r\r\nOK\r\n");
    EXPECT_EQ(Ctl("signal 12").status, 0);
    EXPECT_EQ(Ask("AT+CSQ"), "\r\n+CSQ: 12,99\r\n\r\nOK\r\n");
    EXPECT_THAT(Ctl("status").output, HasSubstr("signal: 12,99 (-89 dBm)\n"));
    EXPECT_THAT(Text("log"), HasSubstr(" < AT+CSQ\n"));
    EXPECT_THAT(Text("log"), HasSubstr(" > \\r\\n+CSQ: 12,99\\r\\n\\r\\nOK\\r\\n\n"));
}

TEST_F(Program, WordsOfTheShellStayTogether) {
    Start({"--profile", "881"});
    EXPECT_EQ(Ctl("sms +15551234 'two words'").status, 0);
    Ask("AT+CMGF=1");
    EXPECT_THAT(Ask("AT+CMGL=\"ALL\""), HasSubstr("\r\ntwo words\r\n"));
}

TEST_F(Program, CtlFailsWithAReason) {
    const Outcome nobody = Ctl("status");
    EXPECT_EQ(nobody.status, 1);
    EXPECT_THAT(nobody.output, HasSubstr("no modem answers"));
    Start({});
    const Outcome nonsense = Ctl("dance");
    EXPECT_EQ(nonsense.status, 1);
    EXPECT_THAT(nonsense.output, HasSubstr("unknown word dance"));
}

TEST_F(Program, UnpluggedItsLinkIsGoneUntilItIsBack) {
    Start({});
    EXPECT_EQ(Tell("unplug"), "ok");
    EXPECT_TRUE(machine::WaitUntil([&] { return !Exists("link"); }));
    EXPECT_EQ(Tell("plug"), "ok");
    EXPECT_TRUE(machine::WaitUntil([&] { return Exists("link"); }));
    EXPECT_EQ(Ask("AT"), "AT\r\r\nOK\r\n");
}

TEST_F(Program, RunsItsHooksInOrder) {
    Start({"--profile", "E362", "--on-call-up", "echo up >>" + Path("calls"), "--on-call-down",
           "echo down >>" + Path("calls")});
    Tell("call up");
    Tell("drop-call");
    EXPECT_TRUE(machine::WaitUntil([&] { return Text("calls") == "up\ndown\n"; }));
}

TEST_F(Program, ASignalEndsItAndLeavesNothingBehind) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        Start({});
        EXPECT_EQ(End(signal), 0);
        EXPECT_FALSE(Exists("link"));
        EXPECT_FALSE(Exists("socket"));
    }
}

TEST_F(Program, StartsAgainOverWhatAKilledOneLeft) {
    Start({});
    End(SIGKILL);
    EXPECT_TRUE(Exists("socket"));
    Start({});
    EXPECT_EQ(Ask("AT"), "AT\r\r\nOK\r\n");
}

TEST_F(Program, WrongOptionsAndProfilesAreExplained) {
    const std::string program = MODEM_SIM;
    EXPECT_EQ(RunShell(program + " --nonsense").status, 2);
    EXPECT_EQ(RunShell(program + " extra").status, 2);
    const Outcome help = RunShell(program + " --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, StartsWith("usage: modem-sim"));
    EXPECT_THAT(help.output, HasSubstr("  mc75i    Cinterion MC75i\n"));
    const Outcome missing = RunShell(program + " --profile nosuch --control " + Path("socket"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.output,
                HasSubstr("nosuch.profile: cannot be read; the models are generic, 881, E362, "));
}

}  // namespace
