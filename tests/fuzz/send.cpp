// Any file to send and any answers, pass after pass until the file is gone. The bytes: debug level,
// which error the first prompt meets; then, parted by the byte 0x1e, the file's name, its content,
// and the answers to the command and to the body.
#include <algorithm>
#include <filesystem>
#include <string>

#include "fuzz_main.h"
#include "scenarios/worlds/daemon_words.h"
#include "sms/send.h"
#include "sms/spool.h"
#include "state/settings.h"

namespace {

constexpr std::size_t kLongestMessage = 150;
constexpr std::size_t kLongestName = 255;
constexpr int kMostTries = 3;
constexpr std::int64_t kRetryPause = 31000000;  // microseconds

// What may be the name of a file.
std::string FileName(std::string name) {
    std::replace(name.begin(), name.end(), '/', '_');
    std::replace(name.begin(), name.end(), '\0', '_');
    name = name.substr(0, kLongestName);
    return name.empty() || name == "." || name == ".." ? "message" : name;
}

// The number and the text as they may go to the modem.
worlds::Given GivenBy(const std::string& name) {
    std::string number;
    std::string text;
    ReadSmsSendFile(kSmsSendDirectory + name, number, text);
    worlds::Given given;
    given.card = kCardSierra881;
    given.names = {name};
    given.numbers = {number};
    given.messages = {text.substr(0, kLongestMessage)};
    return given;
}

void MustHaveSpokenWell(const fake::World& world, const worlds::Given& given) {
    for (const std::string& write : world.heard) {
        // Several writes in one go reach the modem as one.
        const auto end = write.find_last_not_of("\r\n");
        const std::string said = end == std::string::npos ? "\r" : write.substr(0, end + 1);
        Must(said.size() > kLongestMessage || worlds::IsKnownWrite(given, said), said.c_str());
    }
    for (const std::string& line : world.shell) {
        const bool makes = line.compare(0, 6, "mkdir ") == 0;
        Must(makes || worlds::IsKnownShellLine(given, line), line.c_str());
    }
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    const FuzzedInput input(data, size, 2);
    FreshDaemon daemon(input.Choice(0));
    fake::World& world = daemon.World();
    g_i_CardType = kCardSierra881;
    g_b_SmsCmgfSupported = true;
    const std::string name = FileName(input.Part(0));
    const std::string path = kSmsSendDirectory + name;
    FreshDaemon::Write(path, input.Part(1));
    const worlds::Given given = GivenBy(name);
    world.answers["AT+CMGS=\"" + *given.numbers.begin() + "\""] = input.Part(2);
    world.answers[*given.messages.begin() + '\x1a'] = input.Part(3);

    int tries = 0;
    while (std::filesystem::exists(path)) {
        Must(++tries <= kMostTries, "a file is given up at the third try");
        CheckSendSmS();
        world.now_us += kRetryPause;
    }
    MustHaveSpokenWell(world, given);
}
