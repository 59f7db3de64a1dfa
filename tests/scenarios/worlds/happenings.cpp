// What may happen to a router and its modem, each now and then.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>

#include "scenarios/worlds/modem_moods.h"
#include "scenarios/worlds/random_world.h"
#include "scenarios/worlds/status_files.h"

namespace worlds {

namespace {

constexpr char kPppFile[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
constexpr char kProvisioningFile[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
constexpr char kErrorCountFile[] = "/var/log/kvtinit.status";
constexpr std::size_t kLargestRead = 131072;  // bytes that the daemon reads at once

// --- The radio network ---------------------------------------------------------------------------

void DriveThroughTown(RandomWorld& world) {
    world.Tell(world.GetDice().Chance(70) ? "drive on" : "drive off");
}

void ChangeReception(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const int level = dice.Chance(20) ? 99 : dice.Between(0, 31);
    world.Tell("signal " + std::to_string(level));
    char cell[40];
    std::snprintf(cell, sizeof(cell), "cell %X %X", dice.Between(0, 0xFFFF),
                  dice.Between(0, 0xFFFFFFF));
    world.Tell(cell);
}

void ChangeService(RandomWorld& world) {
    const char* const kServices[] = {"lte", "hspa", "wcdma", "edge", "gsm", "none", "No Way 2.0"};
    world.Tell(std::string("service ") + world.GetDice().OneOf(kServices));
}

void ChangeRegistration(RandomWorld& world) {
    const char* const kStates[] = {"home", "roaming", "denied", "searching", "unknown", "no"};
    world.Tell(std::string("register ") + world.GetDice().OneOf(kStates));
}

void PullTheSim(RandomWorld& world) {
    world.Tell(world.GetDice().Chance(50) ? "sim absent" : "sim locked");
    world.clock.After(world.GetDice().Between(1s, 5min), [&world] { world.Tell("sim ready"); });
}

void DropTheCall(RandomWorld& world) {
    Dice& dice = world.GetDice();
    world.router.ClearAddress();
    world.Tell("drop-call " + std::to_string(dice.Between(0, 12)));
    const int kResults[] = {1, 2, 3, 10, 14, 26, 28, 29, 77};
    if (dice.Chance(50)) {
        world.Tell("connect-fails " + std::to_string(dice.OneOf(kResults)) + " " +
                   std::to_string(dice.Between(0, 12)) + " " + std::to_string(dice.Between(1, 14)));
    }
    world.Tell(dice.Chance(20) ? "unknown on" : "unknown off");
    world.Tell(dice.Chance(20) ? "no-address on" : "no-address off");
}

void StopTheTraffic(RandomWorld& world) {
    const auto stopped = static_cast<std::uint64_t>(world.clock.Now() / 1s) * 1000;
    if (world.GetDice().Chance(30)) {
        world.router.RemoveTxBytes();
    } else {
        world.router.SetTxBytes(stopped);
    }
    world.clock.After(world.GetDice().Between(1min, 30min), [&world] {
        world.router.SetTxBytes(
            [](Duration now) { return static_cast<std::uint64_t>(now / 1s) * 1000; });
    });
}

// --- What the modem says -------------------------------------------------------------------------

void FallSilent(RandomWorld& world) {
    world.Tell("silence " + std::to_string(world.GetDice().Between(1, 200)) + "s");
}

void TalkNoise(RandomWorld& world) {
    world.Tell("garbage " + std::to_string(world.GetDice().Between(1, 4000)));
}

// More than one read, at times more than one answer may be.
void Flood(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const std::size_t size = kLargestRead - 1 + dice.Below(dice.Chance(30) ? 6 * kLargestRead : 3);
    const char* const kPieces[] = {"A", "\n", "+CSQ: 7,99\r\n", "\r\n+CMGL: ", "ERROR", ",", "="};
    std::string flood = dice.Chance(20) ? dice.Noise(size) : "";
    const std::string piece = dice.OneOf(kPieces);
    while (flood.size() < size) flood += piece;
    world.modem.Say(flood);
}

void SpeakUnasked(RandomWorld& world) {
    const char* const kLines[] = {"RING",
                                  "+CMTI: \"SM\",3",
                                  "+CREG: 2,5,\"00AB\",\"0000CDEF\"",
                                  "+CSQ: 3,99",
                                  "+CSQ:",
                                  "+CIND: 1",
                                  "OK",
                                  "ERROR",
                                  "+CMGL: 1,\"REC UNREAD\",\"+1\",,\"26/03/14,09:15:02+00\"",
                                  "$NWQMISTATUS: QMI Error:3",
                                  "^SYSSTART"};
    const std::string line = world.GetDice().OneOf(kLines);
    world.modem.Say("\r\n" + line + "\r\n");
}

std::string WithOtherNumbers(Dice& dice, const std::string& answer) {
    const char* const kNumbers[] = {"-1", "0", "2147483648", "99999999999999999999", "", "1e9"};
    std::string changed;
    for (std::size_t i = 0; i < answer.size(); ++i) {
        const bool digit = std::isdigit(static_cast<unsigned char>(answer[i])) != 0;
        if (digit && dice.Chance(20)) {
            changed += dice.OneOf(kNumbers);
        } else {
            changed += answer[i];
        }
    }
    return changed;
}

std::string Without(char unwanted, std::string answer) {
    answer.erase(std::remove(answer.begin(), answer.end(), unwanted), answer.end());
    return answer;
}

std::string Spoilt(Dice& dice, const std::string& answer) {
    const std::size_t place = dice.Below(answer.size() + 1);
    switch (dice.Below(9)) {
        case 0:
            return answer.substr(0, place);
        case 1:
            return answer.substr(place);
        case 2:
            return dice.Chance(50) ? "\r\nERROR\r\n" : "\r\n+CME ERROR: 10\r\n";
        case 3:
            return WithOtherNumbers(dice, answer);
        case 4:
            return Without(dice.Chance(50) ? '\n' : '\r', answer);
        case 5:
            return answer + answer;
        case 6:
            return answer.substr(0, place) + dice.Noise(dice.Below(300)) + answer.substr(place);
        case 7:
            return answer.substr(0, place) + std::string(20000, 'x') + answer.substr(place);
        default:
            return answer.substr(0, place) + std::string("\0\0", 2) + answer.substr(place);
    }
}

void AnswerOnceStrangely(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const std::string command = dice.OneOf(CommandsOf(world.GetPlan().card));
    world.modem.AnswerOnce(command, Spoilt(dice, world.HonestAnswer(command)));
}

void AnswerStrangelyForAWhile(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const std::string command = dice.OneOf(CommandsOf(world.GetPlan().card));
    world.modem.Answer(command, Spoilt(dice, world.HonestAnswer(command)));
    world.clock.After(dice.Between(10s, 10min), [&world, command] { world.modem.Forget(command); });
}

// --- The router ----------------------------------------------------------------------------------

std::string ConfigurationFile(Dice& dice, const std::vector<std::string>& lines) {
    if (dice.Chance(5)) return dice.Noise(dice.Below(70000));
    std::string text;
    for (const std::string& line : lines) {
        if (dice.Chance(20)) text += dice.Chance(50) ? "# a remark\n" : "\n";
        if (dice.Chance(80)) text += line + (dice.Chance(10) ? "\r\n" : "\n");
    }
    if (dice.Chance(10) && !text.empty()) text.pop_back();
    return text;
}

void ChangeThePppFile(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const char* const kApns[] = {"internet",
                                 "ISP.Example",
                                 "a-b_c!",
                                 "exactly-twenty-chars",
                                 "a-name-of-21-letters-",
                                 "bad\"apn",
                                 "x;reboot",
                                 "$(reboot)",
                                 "gr\xc3\xbc\xc3\x9f"
                                 "e",
                                 ""};
    const char* const kAnswers[] = {"yes", "no", "NO", " no ", "perhaps", ""};
    if (dice.Chance(10)) return world.files.Remove(kPppFile);
    world.files.Write(
        kPppFile,
        ConfigurationFile(dice, {std::string("CM_APN=") + dice.OneOf(kApns),
                                 std::string("CM_ENABLE_INTERFACE=") + dice.OneOf(kAnswers),
                                 std::string("CM_DEFAULTROUTE=") + dice.OneOf(kAnswers)}));
}

void ChangeTheProvisioningFile(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const char* const kLevels[] = {"-1", "0", "1", "2", "3", "4", "x", "", "99999999999"};
    const char* const kAnswers[] = {"yes", "no", "YES", "perhaps", ""};
    if (dice.Chance(10)) return world.files.Remove(kProvisioningFile);
    world.files.Write(kProvisioningFile,
                      ConfigurationFile(dice, {std::string("DEBUG_MODE=") + dice.OneOf(kLevels),
                                               std::string("SYNC_TIME=") + dice.OneOf(kAnswers)}));
}

void CountPppErrors(RandomWorld& world) {
    const char* const kCounts[] = {"0", "1", "7", "8", "16", "-8", "junk", "99999999999"};
    world.files.Write(kErrorCountFile, std::string("PPP_WIRELESS_ERROR_COUNTER=") +
                                           world.GetDice().OneOf(kCounts) + "\n");
}

// Not out of the years in which a clock of 32 bits can be right.
void JumpTheClock(RandomWorld& world) {
    constexpr std::int64_t kFirst = 978307200;  // 2001
    constexpr std::int64_t kLast = 2114380800;  // 2037
    const Duration kDistances[] = {1s, 61s, 10min, 1h, 25h, 400 * 24h};
    Dice& dice = world.GetDice();
    const Duration distance = dice.OneOf(kDistances) * (dice.Chance(50) ? 1 : -1);
    const std::int64_t then = world.clock.WallSeconds() + distance / 1s;
    if (then > kFirst && then < kLast) world.clock.Jump(distance);
}

void DeleteSomething(RandomWorld& world) {
    std::vector<std::string> paths = StatusFiles();
    for (const char* path :
         {"/var/log/csq", "/tmp/sms/send", "/tmp/sms/recv", "/tmp/sms", "/tmp/kvtswi.resetting"}) {
        paths.emplace_back(path);
    }
    world.files.Remove(world.GetDice().OneOf(paths));
}

void ProtectAStatusFile(RandomWorld& world) {
    const int kErrors[] = {EROFS, ENOSPC, EACCES, EMFILE};
    const std::string path = world.GetDice().OneOf(StatusFiles());
    world.files.Fail(path, world.GetDice().OneOf(kErrors));
    world.clock.After(world.GetDice().Between(1s, 10min),
                      [&world, path] { world.files.Fail(path, 0); });
}

// --- The port. 26 failed writes in a row, also of two failures that meet, would be the end. ------

void DisturbThePort(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const int kErrors[] = {EIO, EAGAIN, ENODEV, EBADF};
    const int error = dice.OneOf(kErrors);
    const int times = dice.Between(1, 12);
    switch (dice.Below(3)) {
        case 0:
            return world.port.FailWrites(error, times);
        case 1:
            return world.port.FailWaiting(error, times);
        default:
            return world.port.FailReads(error, times);
    }
}

void RepairThePort(RandomWorld& world) {
    world.port.Repair();
}

void RunOutOfSockets(RandomWorld& world) {
    world.router.FailSockets(EMFILE, world.GetDice().Between(1, 5));
}

// --- Messages ------------------------------------------------------------------------------------

std::string SpoolName(Dice& dice) {
    const char* const kNames[] = {"message",     "a.b-c_d",  "two words", "it's",        "'''",
                                  "$(reboot)",   "`reboot`", "a;reboot",  "-rf",         "*",
                                  "back\\slash", "\n",       "\xff\xfe",  "%s%n",        "~",
                                  "a>b",         "a&b",      "{a,b}",     "\x1b[31mred", "#"};
    if (dice.Chance(10)) return std::string(255, dice.Chance(50) ? 'n' : '\'');
    if (dice.Chance(60)) return dice.OneOf(kNames) + std::to_string(dice.Below(100));
    std::string name = dice.Noise(1 + dice.Below(200));
    std::replace(name.begin(), name.end(), '/', '\'');
    return name == "." || name == ".." ? "..." : name;
}

std::string SmsText(Dice& dice) {
    const char* const kTexts[] = {"Hello",
                                  "",
                                  "a=b=c",
                                  "two\nlines\n",
                                  "AT+CFUN=0\r",
                                  "\x1a"
                                  "ATZ",
                                  "\x1b",
                                  "%s%n",
                                  "$(reboot)",
                                  "OK\n\nOK\n"};
    if (dice.Chance(70)) return dice.OneOf(kTexts);
    return dice.Chance(50) ? dice.Noise(dice.Below(400)) : std::string(dice.Below(100000), 'm');
}

void DropASendFile(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const char* const kNumbers[] = {"+15551234567", "555 12 34", "", "1\";ATZ;\"", "\xff"};
    const std::string name = SpoolName(dice);
    const std::string number = dice.OneOf(kNumbers);
    world.DropSendFile(name, number, SmsText(dice));
}

void DropSomethingElse(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const std::string name = SpoolName(dice);
    const std::string path = "/tmp/sms/send/" + name;
    world.DropSomething(name);
    world.files.Write(path, "no message\n");
    const char* const kTargets[] = {"/dev/zero", "/nowhere", "/etc/passwd", "/etc"};
    const std::string target = dice.OneOf(kTargets);
    if (dice.Chance(30)) return;
    world.files.Remove(path);
    if (dice.Chance(30)) {
        static_cast<void>(mkfifo(path.c_str(), 0666));
    } else {
        static_cast<void>(symlink(target.c_str(), path.c_str()));
    }
}

void ReceiveAMessage(RandomWorld& world) {
    Dice& dice = world.GetDice();
    const char* const kSenders[] = {"+15551234567", "Bank", "1,2", "../../etc/x"};
    std::string line = std::string("sms ") + dice.OneOf(kSenders) + " \"";
    for (const char c : SmsText(dice).substr(0, 160)) {
        char code[8];
        std::snprintf(code, sizeof(code), "\\x%02X", static_cast<unsigned char>(c));
        line += code;
    }
    world.Tell(line + "\"");
}

void RefuseMessages(RandomWorld& world) {
    Dice& dice = world.GetDice();
    world.Tell("sms-fails " + std::to_string(dice.Between(0, 600)) + " " +
               std::to_string(dice.Between(1, 5)) + (dice.Chance(50) ? " prompt" : " body"));
}

}  // namespace

const std::vector<Happening>& Happenings() {
    static const std::vector<Happening> kHappenings = {
        {"it drives through town", 10min, DriveThroughTown},
        {"the reception changes", 2min, ChangeReception},
        {"the service changes", 4min, ChangeService},
        {"the registration changes", 4min, ChangeRegistration},
        {"the SIM is pulled", 30min, PullTheSim},
        {"the data call drops", 4min, DropTheCall},
        {"no bytes leave", 30min, StopTheTraffic},
        {"the modem falls silent", 10min, FallSilent},
        {"the modem talks noise", 5min, TalkNoise},
        {"the modem floods", 20min, Flood},
        {"the modem speaks unasked", 1min, SpeakUnasked},
        {"an answer is strange", 30s, AnswerOnceStrangely},
        {"answers stay strange", 5min, AnswerStrangelyForAWhile},
        {"an answer is late", 1min, AnswerLate},
        {"the modem loses power", 30min, CutThePower},
        {"the modem's pace changes", 10min, ChangePace},
        {"lists come in pieces", 10min, CutListsIntoPieces},
        {"the modem becomes talkative", 10min, BecomeTalkative},
        {"the line is of another kind", 15min, ChangeTheLine},
        {"the modem restarts", 20min, Restart},
        {"an answer takes another form", 2min, ChangeAForm},
        {"the PPP file changes", 5min, ChangeThePppFile},
        {"the provisioning file changes", 10min, ChangeTheProvisioningFile},
        {"PPP errors are counted", 5min, CountPppErrors},
        {"the clock jumps", 15min, JumpTheClock},
        {"files are deleted", 5min, DeleteSomething},
        {"a status file cannot be written", 10min, ProtectAStatusFile},
        {"the port fails", 5min, DisturbThePort},
        {"the port is repaired", 5min, RepairThePort},
        {"sockets run out", 10min, RunOutOfSockets},
        {"a message waits in the spool", 90s, DropASendFile},
        {"something else lies in the spool", 10min, DropSomethingElse},
        {"a message arrives", 2min, ReceiveAMessage},
        {"the network refuses messages", 10min, RefuseMessages},
    };
    return kHappenings;
}

}  // namespace worlds
