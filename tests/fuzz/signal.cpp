// Any block of bytes as the answer to the signal query, up to the files of the signal display.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_main.h"
#include "modem/at_channel.h"
#include "scenarios/worlds/status_files.h"
#include "state/settings.h"
#include "status/signal_quality.h"

namespace {

bool IsMassaged(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte > 9 && byte <= 126;
}

void MustBeWellFormed(const char* path) {
    const std::string fault =
        worlds::FaultOfStatusFile(kCardSierra881, path, FreshDaemon::ReadAll(path));
    Must(fault.empty(), fault.c_str());
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return;
    const FreshDaemon daemon(data[0]);
    std::vector<char> block(data + 1, data + size);
    block.push_back('\0');
    const int length = static_cast<int>(size) - 1;
    MassageBlock(block.data(), length);
    Must(std::all_of(block.begin(), block.end() - 1, IsMassaged), "nothing but printable text");

    char* line = nullptr;
    switch (IdentifyMessage(block.data(), length, &line)) {
        case kNothingUsable:
            Must(line == nullptr, "nothing usable, no line");
            return;
        case kIndicatorLine:
            Must(std::strncmp(line, "+CIND:", 6) == 0, "an indicator line");
            ConvertIndicatorLine(line);
            break;
        default:
            break;
    }
    Must(std::strncmp(line, "+CSQ:", 5) == 0, "a signal line");
    UpdateLightbar(line);
    MustBeWellFormed("/var/log/lightbar");
    MustBeWellFormed("/var/log/lightbar_ecio_in");
}
