// The identity queries: who is asked when, what is asked, and how the value is found.

#include "status/identity.h"

#include <string>

#include "modem/answer.h"
#include "modem/at_channel.h"
#include "state/settings.h"
#include "state/statistics_record.h"
#include "status/carrier_lookup.h"
#include "status/identity_rules.h"
#include "support/text.h"

namespace {

using S = GlobalStats;

constexpr cards::Set k881 = cards::Only(kCardSierra881);
constexpr cards::Set kUsb305 = cards::Only(kCardSierraUsb305);
constexpr cards::Set kMc75i = cards::Only(kCardMc75i);
constexpr cards::Set kE362 = cards::Only(kCardNovatelE362);
constexpr cards::Set kE371 = cards::Only(kCardNovatelE371);
constexpr cards::Set kSierra = k881 | kUsb305;
constexpr cards::Set kNovatel = kE362 | kE371;

enum class Asked { kOnce, kAlways };  // kOnce: only until the modem has given a value
constexpr Asked kOnce = Asked::kOnce;
constexpr Asked kAlways = Asked::kAlways;

struct IdentityQuery {
    StatsText field;
    cards::Set asked_of;
    Asked asked;
    const char* reset;  // the field's text before the command is sent; null keeps the old one
    const char* command;
    unsigned wait;  // seconds
    AnswerRule rule;
};

constexpr const char* kKeep = nullptr;
constexpr const char* kUnknown = "Unknown";

// clang-format off
constexpr IdentityQuery kPdpContexts =
    {&S::sim_context_apns, cards::kAll, kAlways, "", "AT+CGDCONT?", 0, {TakeContexts, "+CGDCONT:"}};

// A new modem or field is one row. The pass asks in this order.
//
// The Sierra firmware row names "!GETBAND:" in its debug line, like the band row: deliberate,
// field logs are searched for it.
// Oddity firmware-logged-as-band: at debug level 2 the firmware answer is logged as !GETBAND.
constexpr IdentityQuery kIdentityPass[] = {
    {&S::carrier, kE362, kAlways, kKeep, "AT$NWNN", 0,
        {TakeUnechoedLine, "AT$NWNN", 3, Trim}},
    {&S::mdn, kE362, kAlways, kUnknown, "AT$NWMDN", 0,
        {TakeNumberLine, "an MDN", 8}},
    {&S::mdn, kSierra | kMc75i | kE371, kAlways, kUnknown, "at+cnum", 0,
        {TakeSubscriberNumber, "+CNUM:"}},
    {&S::serial_number, cards::kAll, kOnce, kKeep, "at+gsn", 0,
        {TakeNumberLine, "an IMEI", 10}},
    {&S::sku_priid, kSierra, kOnce, kKeep, "AT!PRIID?", 0,
        {TakePriId}},
    kPdpContexts,
    {&S::manufacturer, kSierra | kNovatel, kOnce, kKeep, "at+gmi", 0,
        {TakeUnechoedLine, "at+gmi", 5, StripLineEnds}},
    {&S::model, kSierra | kNovatel, kOnce, kKeep, "at+gmm", 0,
        {TakeModel, "at+gmm", 3, StripLineEnds}},
    {&S::firmware_version, kNovatel, kOnce, kKeep, "ATI3", 0,
        {TakeBehindLabel, "Revision:", 0, TrimLeft, "Revision:"}},
    {&S::firmware_version, kSierra, kOnce, kKeep, "at!gver?", 0,
        {TakeBehindLabel, "!GVER:", 0, CleanWhiteSpace, "!GETBAND:"}},
    {&S::hardware_version, k881, kOnce, kKeep, "at^hver", 0,
        {TakeQuotedVersion, "^HVER:"}},
};

constexpr IdentityQuery kBand =
    {&S::band, k881, kAlways, kUnknown, "at!getband?", 0,
        {TakeBehindLabel, "!GETBAND:", 0, CleanWhiteSpace, "!GETBAND:"}};

constexpr IdentityQuery kIccids[] = {
    {&S::sim_id, k881, kAlways, kUnknown, "AT!ICCID?", 1,
        {TakeBehindLabel, "!ICCID:", 0, CleanWhiteSpace, "!ICCID:"}},
    {&S::sim_id, kMc75i, kAlways, kUnknown, "AT^SCID", 1,
        {TakeBehindLabel, "^SCID:", 0, CleanWhiteSpace, "^SCID:"}},
    {&S::sim_id, kNovatel, kAlways, kUnknown, "AT+ICCID?", 1,
        {TakeBehindLabel, "$NWICCID:", 0, CleanWhiteSpace, "$NWICCID:"}},
};
// clang-format on

void RunQuery(const IdentityQuery& query) {
    std::string& field = g_S_Globalstats.*query.field;
    if (query.asked == kOnce && !IsStillUnknown(field)) return;
    if (!cards::Has(query.asked_of, g_i_CardType)) return;
    if (query.reset != nullptr) field = query.reset;
    query.rule.take(query.rule, CountedLinesOf(SendAtCommand(query.command, query.wait)), field);
}

}  // namespace

void UpdateCardIdentity() {
    for (const IdentityQuery& query : kIdentityPass) RunQuery(query);
    GetGsmCarrierFromOperatorNameList();
}

void QueryPdpContexts() {
    RunQuery(kPdpContexts);
}

void QueryBand() {
    RunQuery(kBand);
}

void QueryIccid() {
    if (IsLteCard() && !g_S_Globalstats.sim_ready) return;
    for (const IdentityQuery& query : kIccids) RunQuery(query);
}
