// A router in simulated time for a program that shows it: the shipped daemon under the rig, a
// modem, the carrier. Reads orders from standard input, one a line, and answers each with one line
// of JSON; time passes only when it is told so.
//
//     simulated_router [--option -E362] [--pause SECONDS] FILE...
//
//     run MICROSECONDS          let time pass; tells what is to be seen then
//     tell WORD...              the modem's control language
//     spool NAME NUMBER TEXT    a message file for the daemon to send
//     end                       SIGTERM, until the daemon has ended; tells the same as run
//
// The daemon is started again --pause seconds after its end. FILEs are the ones told.

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "json.h"
#include "lives.h"
#include "rig/private_root.h"
#include "rig/program.h"

namespace {

using namespace std::chrono_literals;
using demo::JsonLine;
using demo::Lives;
using rig::Files;
using rig::World;

constexpr char kSendFolder[] = "/tmp/sms/send/";
constexpr char kReceiveFolder[] = "/tmp/sms/recv/";

struct Options {
    std::string card_option;
    rig::Duration pause = 20s;  // as packaging/libexec/modemd-keeper has it
    std::vector<std::string> files;
};

Options ReadOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--option" && i + 1 < argc) {
            options.card_option = argv[++i];
        } else if (word == "--pause" && i + 1 < argc) {
            options.pause = std::chrono::seconds(std::stoi(argv[++i]));
        } else {
            options.files.push_back(word);
        }
    }
    return options;
}

demo::Table ContentOf(const std::vector<std::string>& paths) {
    demo::Table table;
    for (const std::string& path : paths) {
        table.emplace_back(path, Files::Exists(path) ? std::optional<std::string>(Files::Read(path))
                                                     : std::nullopt);
    }
    return table;
}

demo::Table WritesOf(const Lives& lives, const std::vector<std::string>& paths) {
    demo::Table table;
    for (const std::string& path : paths) {
        table.emplace_back(path, std::to_string(lives.Writes(path)));
    }
    return table;
}

std::vector<std::string> ReceivedMessages() {
    std::vector<std::string> texts;
    for (const std::string& name : Files::List(kReceiveFolder)) {
        texts.push_back(Files::Read(kReceiveFolder + name));
    }
    return texts;
}

JsonLine Snapshot(Lives& lives, const std::vector<std::string>& files) {
    JsonLine line;
    line.Add("now", lives.Now().count());
    line.Add("running", lives.DaemonRuns());
    line.Add("exit_status", std::int64_t{lives.ExitStatus()});
    line.Add("plugged", lives.Plugged());
    line.Add("call_up", lives.CallIsUp());
    line.Add("address", lives.Address());
    line.Add("bytes", lives.Bytes());
    line.Add("log", lives.TakeLog());
    line.Add("heard", lives.TakeCommands());
    line.Add("received", ReceivedMessages());
    line.Add("waiting", Files::List(kSendFolder));
    line.Add("files", ContentOf(files));
    line.Add("written", WritesOf(lives, files));
    return line;
}

std::string Spool(Lives& lives, std::istream& words) {
    std::string name;
    std::string number;
    std::string text;
    words >> name >> number >> std::ws;
    std::getline(words, text);
    std::filesystem::create_directories(kSendFolder);
    lives.Write(kSendFolder + name, "TO=" + number + "\nMSG=" + text + "\n");
    return "ok";
}

// One order; the answer goes to `answers`, which is not standard output: the rig writes there.
void Serve(Lives& lives, const Options& options, const std::string& order, std::FILE* answers) {
    std::istringstream words(order);
    std::string verb;
    words >> verb >> std::ws;
    JsonLine answer;
    if (verb == "run") {
        std::int64_t micros = 0;
        words >> micros;
        lives.Run(rig::Duration(micros));
        answer = Snapshot(lives, options.files);
    } else if (verb == "end") {
        lives.End();
        answer = Snapshot(lives, options.files);
    } else if (verb == "tell") {
        std::string line;
        std::getline(words, line);
        answer.Add("answer", lives.Tell(line));
    } else if (verb == "spool") {
        answer.Add("answer", Spool(lives, words));
    } else {
        answer.Add("answer", "error: unknown order " + verb);
    }
    std::fprintf(answers, "%s\n", answer.Text().c_str());
    std::fflush(answers);
}

int ServeAll(const Options& options, std::FILE* answers) {
    Lives lives(options.card_option, options.pause);
    for (std::string order; std::getline(std::cin, order);) {
        Serve(lives, options, order, answers);
    }
    return ::testing::Test::HasFailure() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const Options options = ReadOptions(argc, argv);
    std::FILE* answers = fdopen(dup(STDOUT_FILENO), "w");
    dup2(STDERR_FILENO, STDOUT_FILENO);
    const auto folder = std::filesystem::absolute(rig::DaemonProgram()).parent_path();
    return rig::RunInPrivateRoot(
        {RIG_SOURCE, RIG_BUILD, folder.string(), std::filesystem::current_path().string()},
        [&] { return ServeAll(options, answers); });
}
