// The two configuration files, changed again and again under a daemon that follows them. The bytes:
// card; then the contents, parted by the byte 0x1e, each behind the letter of its file: "p" for
// PPP, "v" for provisioning, anything else to remove both.
#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "connection/apn_provisioning.h"
#include "core/config_files.h"
#include "fuzz_main.h"
#include "scenarios/worlds/daemon_words.h"
#include "state/published.h"
#include "state/settings.h"

namespace {

// Files are read again when their time changes.
void Change(const char* path, const std::string& content) {
    static std::time_t now = 1000;
    FreshDaemon::Write(path, content);
    const timespec times[] = {{++now, 0}, {now, 0}};
    utimensat(AT_FDCWD, path, times, 0);
}

void Apply(const std::string& change) {
    const std::string content = change.substr(1);
    if (change[0] == 'p') {
        Change(published::kPppConfigFile, content);
    } else if (change[0] == 'v') {
        Change(published::kProvisioningFile, content);
    } else {
        std::filesystem::remove(published::kPppConfigFile);
        std::filesystem::remove(published::kProvisioningFile);
    }
}

// As the main loop does, in its order.
void Follow() {
    if (ReadPppConfigFile() == 1) SetApnContext3();
    ReadProvisioningFile();
    Must(ReadPppConfigFile() == 0 && ReadProvisioningFile() == 0, "a change is read once");
}

void MustObey(fake::World& world, const worlds::Given& given) {
    Must(world.shell.empty(), "no configuration runs a command");
    for (const std::string& command : world.Commands()) {
        std::string canned = command;
        canned.resize(80);
        Must(worlds::IsKnownWrite(given, command) || worlds::IsKnownWrite(given, canned),
             command.c_str());
    }
    world.heard.clear();
    world.log.clear();
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    const FuzzedInput input(data, size, 1);
    FreshDaemon daemon(1);
    worlds::Given given;
    given.card = cards::kModels[input.Choice(0) % std::size(cards::kModels)].type;
    g_i_CardType = given.card;
    for (std::size_t i = 0; i < input.Parts(); ++i) {
        if (!input.Part(i).empty()) Apply(input.Part(i));
        Follow();
        given.apns = {g_S_PppConfig.apn};
        MustObey(daemon.World(), given);
    }
}
