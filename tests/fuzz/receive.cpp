// Any listing of received messages, as one whole receive pass. The bytes: card, debug level; then
// the answer to the listing and the answer to the deletion, parted by the byte 0x1e.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_main.h"
#include "sms/receive.h"
#include "state/settings.h"
#include "support/string_tokenizer.h"

namespace {

constexpr char kReceived[] = "/tmp/sms/recv";
constexpr char kList[] = "AT+CMGL=\"REC UNREAD\"";
constexpr char kDelete[] = "AT+CMGD=0,1";
constexpr char kHeader[] = "+CMGL: ";

int CountIn(const std::string& text, const std::string& part) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

void MustBeMessage(const std::string& text, const std::string& listing) {
    const auto time = text.find("\nTIME=");
    const auto message = text.find("\nMSG=");
    Must(text.compare(0, 5, "FROM=") == 0 && time != std::string::npos && message > time &&
             message != std::string::npos,
         "a received message has three fields, in their order");
    const std::string from = text.substr(0, time);
    Must(from.find_first_of("\"+,\n") == std::string::npos, "a sender is one plain field");
    Must(CountIn(text, kHeader) <= CountIn(listing, kHeader), "no header is made up");
    Must(text.size() <= listing.size() + sizeof("FROM=\nTIME=-\nMSG=\n\n"),
         "a message is a part of the listing");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    const FuzzedInput input(data, size, 2);
    FreshDaemon daemon(input.Choice(1));
    fake::World& world = daemon.World();
    g_i_CardType = input.Choice(0) % 2 == 0 ? kCardSierra881 : kCardNovatelE362;
    g_b_SmsCmgfSupported = true;
    const std::string listing = input.Part(0);
    world.answers[kList] = listing;
    world.answers[kDelete] = input.Part(1);

    CheckReceiveSmS();

    Must(world.Commands() == std::vector<std::string>{kList, kDelete}, "listed, then deleted");
    Must(g_Cp_SmsQueue->empty(), "no message is kept back");
    int files = 0;
    for (const auto& file : std::filesystem::directory_iterator(kReceived)) {
        ++files;
        MustBeMessage(FreshDaemon::ReadAll(file.path()), listing);
        std::filesystem::remove(file.path());
    }
    Must(files <= CountIn(listing, kHeader), "no more messages than headers");
    const auto told = std::count_if(world.log.begin(), world.log.end(), [](const auto& line) {
        return line.compare(0, 13, "Got SMS from ") == 0;
    });
    Must(told == files, "each message is told, and has a file of its own");
}
