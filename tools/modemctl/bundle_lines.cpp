#include "modemctl/bundle_lines.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "modemctl/log_lines.h"
#include "modemctl/sms_spool.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;
namespace config_key = published::config_key;

// Of values that are not personal in themselves: a model's part number may be long.
constexpr std::size_t kLongNumber = 9;

struct PersonalKey {
    const char* key;
    Personal kind;
};

constexpr PersonalKey kPersonalKeys[] = {
    {key::kEsn, Personal::kSerial},
    {key::kImei, Personal::kSerial},
    {key::kSimId, Personal::kSimCard},
    {key::kMdn, Personal::kNumber},
    {key::kLocationAreaCode, Personal::kCell},
    {key::kLteTrackingAreaCode, Personal::kCell},
    {config_key::kApn, Personal::kApn},
};

constexpr const char* kPlainKeys[] = {
    key::kManufacturer,
    key::kModel,
    key::kFirmwareVersion,
    key::kHardwareVersion,
    key::kSkuPriid,
    key::kCarrier,
    key::kCarrierPlmn,
    key::kBand,
    key::kCurrentRssi,
    key::kHighSpeedRssi,
    key::kLowSpeedRssi,
    key::kCurrentCsq,
    key::kHighSpeedCsq,
    key::kLowSpeedCsq,
    key::kCurrentEcio,
    key::kLteRsrp,
    key::kLteRsrq,
    key::kQmiResult,
    key::kQmiResultNumber,
    key::kQmiState,
    key::kQmiEndReason,
    key::kQmiCallTime,
    key::kServiceType,
    key::kSystemMode,
    key::kServiceDomain,
    key::kCreg,
    key::kCregAbr,
    key::kTemperature,
    key::kPoweronTime,
    key::kLteBand,
    key::kLteRxChannel,
    key::kLteTxChannel,
    key::kLteBandwidth,
    key::kWcdmaBand,
    key::kWcdmaChannel,
    key::kGmmPsState,
    key::kMmCsState,
    key::kWcdmaL1State,
    key::kRxLevel,
    key::kRxLevelC0,
    key::kRxLevelC1,
    key::kRoaming,
    key::kSimStatus,
    key::kMode,
    key::kPsState,
    key::kGsmChannel,
    key::kRrcState,
    key::kGprsState,
    key::kCurrentChannel,
    config_key::kEnableInterface,
    config_key::kDefaultRoute,
    config_key::kDebugMode,
    config_key::kSyncTime,
    config_key::kPppErrorCount,
};

// What each %s of a log line holds: N number, T text, A APN, F file name, - nothing personal.
struct PersonalLine {
    const char* start;
    const char* parts;
};

constexpr PersonalLine kPersonalLines[] = {
    {"Got SMS from ", "N-T"},
    {"Reading SMS File ", "F"},
    {"Cannot open SMS file ", "F"},
    {"SMS send file ", "F-"},
    {"Deleting SMS file ", "F-"},
    {"Max send attempt, ", "-F"},
    {"Got ERROR (not CMS error)", "N"},
    {"Send Success: ", "NT"},
    {"Send #", "-NT"},
    {"Setting Context 3 APN ", "A"},
    {"Error:  The APN ", "A"},
};

bool StartsWith(const std::string& text, const char* start) {
    return text.compare(0, std::strlen(start), start) == 0;
}

std::string PlacePath(const std::string& path, Anonymizer& anonymizer) {
    const std::size_t slash = path.rfind('/') + 1;
    return path.substr(0, slash) + PlaceSpoolName(path.substr(slash), anonymizer);
}

std::string PlacePart(char what, const std::string& part, Anonymizer& anonymizer) {
    switch (what) {
        case 'N':
            return anonymizer.Replace(Personal::kNumber, part);
        case 'T':
            return anonymizer.Replace(Personal::kText, part);
        case 'A':
            return anonymizer.Replace(Personal::kApn, part);
        case 'F':
            return PlacePath(part, anonymizer);
        default:
            return anonymizer.Scrub(part);
    }
}

// The format with the parts in the places of its conversions.
std::string Refilled(const char* format, const std::vector<std::string>& parts) {
    std::string text;
    std::size_t next = 0;
    for (const char* at = format; *at != '\0'; ++at) {
        if (*at != '%') {
            text += *at;
            continue;
        }
        while (std::isalpha(static_cast<unsigned char>(*++at)) == 0 && *at != '%') continue;
        if (*at == '%') {
            text += '%';
        } else if (next < parts.size()) {
            text += parts[next++];
        }
    }
    return text;
}

// Which of the characters are digits: "1773479700.000412.811.1".
std::string ShapeOf(std::string name) {
    for (char& c : name) {
        if (c >= '0' && c <= '9') c = '0';
    }
    return name;
}

bool IsKeyOf(const std::string& name, const char* row) {
    return name == row;
}

}  // namespace

bool PlaceKeyLine(const std::string& line, Anonymizer& anonymizer, std::string& placed) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) {
        placed = line;  // the two lines at the head of the statistics, or nothing
        return line.empty() || StartsWith(line, "#File generated ") ||
               line == "#Device Properties :";
    }
    std::string name = line.substr(0, equals);
    std::string value = line.substr(equals + 1);
    Trim(name);
    const auto is_this = [&](const auto& row) { return IsKeyOf(name, row.key); };
    const auto* const personal =
        std::find_if(std::begin(kPersonalKeys), std::end(kPersonalKeys), is_this);
    if (personal != std::end(kPersonalKeys)) {
        Trim(value);
        value = anonymizer.Replace(personal->kind, value);
    } else if (name == key::kServingCell) {  // "hex (decimal)"
        std::string cells;
        for (std::size_t at = 0; at < value.size();) {
            const std::size_t end = std::min(value.find_first_of(" ()", at), value.size());
            cells += anonymizer.Replace(Personal::kCell, value.substr(at, end - at));
            if (end < value.size()) cells += value[end];
            at = end + 1;
        }
        value = cells;
    } else if (StartsWith(name, key::kSimContextApn)) {  // "3:internet"
        const std::size_t colon = value.find(':') + 1;
        value = value.substr(0, colon) + anonymizer.Replace(Personal::kApn, value.substr(colon));
    } else if (std::any_of(std::begin(kPlainKeys), std::end(kPlainKeys),
                           [&](const char* row) { return name == row; })) {
        value = anonymizer.Scrub(value, kLongNumber);
    } else {
        return false;
    }
    placed = name + "=" + value;
    return true;
}

bool PlaceLogLine(const std::string& text, Anonymizer& anonymizer, std::string& placed) {
    const LogMatch match = MatchLogLine(text);
    if (match.line == nullptr || match.line->topic == LogTopic::kDebug) return false;
    const std::string format = match.line->format;
    const auto* const row =
        std::find_if(std::begin(kPersonalLines), std::end(kPersonalLines),
                     [&](const PersonalLine& r) { return StartsWith(format, r.start); });
    const std::string kinds = row != std::end(kPersonalLines) ? row->parts : "";
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < match.parts.size(); ++i) {
        parts.push_back(PlacePart(i < kinds.size() ? kinds[i] : '-', match.parts[i], anonymizer));
    }
    placed = Refilled(match.line->format, parts);
    return true;
}

std::string PlaceSpoolName(const std::string& name, Anonymizer& anonymizer) {
    const std::string before = NameBeforeFailure(name);
    const std::string shape = ShapeOf(before);
    const bool received = StartsWith(shape, "sms_msg00000000-000000.");
    const bool sent = StartsWith(shape, "0000000000.000000.");
    if (before.find_first_not_of("0123456789.-sm_g") == std::string::npos && (received || sent)) {
        return name;
    }
    return anonymizer.Replace(Personal::kText, before) + name.substr(before.size());
}

}  // namespace modemctl
