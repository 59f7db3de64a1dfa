// Any answers to the queries of any card. The bytes: card, debug level, which query; then the
// answers, parted by the byte 0x1e and given to the card's commands in turn.
#include <syslog.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "connection/dhcp_client.h"
#include "connection/lte_supervision.h"
#include "connection/tower_time.h"
#include "fuzz_main.h"
#include "scenarios/worlds/daemon_words.h"
#include "scenarios/worlds/status_files.h"
#include "sms/receive.h"
#include "sms/send.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "status/card_statistics.h"
#include "status/health_report.h"
#include "status/identity.h"
#include "status/registration.h"
#include "status/service_type.h"
#include "status/signal_quality.h"
#include "status/system_info.h"
#include "support/countdown_timer.h"
#include "support/string_tokenizer.h"

namespace {

constexpr char kNumber[] = "+15551234567";
constexpr char kMessage[] = "Hello";
constexpr char kReceived[] = "/tmp/sms/recv";

void Send() {
    SendSmSMessage(kNumber, kMessage);
}

void AskQmiState() {
    IsNovatelConnected();
}

// As the main loop does: good service has the DHCP client started.
void AskServiceType() {
    if (QueryServiceType()) StartUdhcpc();
}

void AskAll();

constexpr void (*kQueries[])() = {
    AskAll,
    UpdateCardIdentity,
    GetSysinfo,
    QueryBand,
    AskServiceType,
    QuerySierraEcio,
    QueryNovatelSignal,
    QueryHealthReport,
    CheckRegistration,
    QueryPdpContexts,
    AskQmiState,
    checkLteStatus,
    SyncTowerTime,
    CheckCmgfSupport,
    CheckReceiveSmS,
    CheckSendSmS,
    Send,
};

void AskAll() {
    for (void (*query)() : kQueries) {
        if (query != AskAll) query();
    }
}

void Teach(fake::World& world, CardType card, const std::string& answers) {
    const cStringTokenizer pieces(answers, '\x1e');
    if (pieces.empty()) return;
    std::vector<std::string> commands = worlds::CommandsOf(card);
    commands.push_back(std::string("AT+CMGS=\"") + kNumber + "\"");
    commands.push_back(std::string(kMessage) + '\x1a');
    std::size_t next = 0;
    for (const std::string& command : commands) {
        world.answers[command] = pieces[next++ % pieces.size()];
    }
}

void MustHavePublishedWell(CardType card) {
    for (const std::string& path : worlds::StatusFiles()) {
        const std::string text = FreshDaemon::ReadAll(path);
        const std::string fault = worlds::FaultOfStatusFile(card, path, text);
        Must(fault.empty(), (path + ": " + fault).c_str());
        std::filesystem::remove(path);
    }
    for (const auto& file : std::filesystem::directory_iterator(kReceived)) {
        const cStringTokenizer lines(FreshDaemon::ReadAll(file.path()), '\n');
        Must(lines.size() > 3 && lines[0].compare(0, 5, "FROM=") == 0 &&
                 lines[1].compare(0, 5, "TIME=") == 0 && lines[2].compare(0, 4, "MSG=") == 0,
             "a received message has three fields");
        std::filesystem::remove(file.path());
    }
}

void MustHaveSpokenWell(const fake::World& world, CardType card) {
    worlds::Given given;
    given.card = card;
    given.numbers = {kNumber};
    given.messages = {kMessage};
    for (const std::string& line : world.shell) {
        Must(worlds::IsKnownShellLine(given, line), line.c_str());
    }
    const auto is_notice = [](int priority) { return priority == LOG_NOTICE; };
    Must(std::all_of(world.log_priorities.begin(), world.log_priorities.end(), is_notice),
         "every line is a notice");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kChoices = 3;
    if (size < kChoices) return;
    FreshDaemon daemon(data[1]);
    const CardType card = cards::kModels[data[0] % std::size(cards::kModels)].type;
    Teach(daemon.World(), card, std::string(data + kChoices, data + size));
    g_i_CardType = card;
    g_i_FirstHealthReport = data[1] < 128 ? 1 : 0;
    g_b_SmsCmgfSupported = cards::Has(cards::kMessaging, card);
    g_S_PppConfig.time_sync_enabled = true;
    g_S_PppConfig.interface_enabled = data[1] % 4 != 0;
    g_S_Globalstats.sim_ready = true;

    kQueries[data[2] % std::size(kQueries)]();
    QueryHealthReport();  // as on every pass: it empties what only counts within the pass
    DumpAllCardInfo();
    MustHavePublishedWell(card);
    MustHaveSpokenWell(daemon.World(), card);
}
