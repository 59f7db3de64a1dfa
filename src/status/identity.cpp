#include "status/identity.h"

#include <string>

#include "core/settings.h"
#include "modem/at_channel.h"
#include "status/carrier_lookup.h"
#include "status/identity_rules.h"
#include "status/statistics_record.h"
#include "support/string_tokenizer.h"
#include "support/system_log.h"
#include "support/text.h"

namespace {

using S = GlobalStats;

constexpr unsigned Card(CardType type) {
    return 1U << type;
}

constexpr unsigned kE362 = Card(kCardNovatelE362);
constexpr unsigned kNovatel = kE362 | Card(kCardNovatelE371);
constexpr unsigned k881 = Card(kCardSierra881);
constexpr unsigned kSierra = k881 | Card(kCardSierraUsb305);
constexpr unsigned kMc75i = Card(kCardMc75i);
constexpr unsigned kAllCards = ~0U;

constexpr bool kOnce = true;  // asked for only until the modem has given a value once
constexpr bool kAlways = false;

// A new modem or field is one row.
struct IdentityQuery {
    StatsText field;
    unsigned cards;
    bool once;
    const char* reset;  // the field's text before the command is sent; null keeps the old one
    const char* command;
    unsigned wait;  // seconds
    AnswerRule rule;
};

// The Sierra firmware row says "!GETBAND:" in its debug line like the band row: deliberate, field
// logs are searched for it.
constexpr IdentityQuery kIdentityPass[] = {
    {&S::carrier, kE362, kAlways, nullptr, "AT$NWNN", 0, {TakeUnechoedLine, "AT$NWNN", 3, Trim}},
    {&S::mdn, kE362, kAlways, "Unknown", "AT$NWMDN", 0, {TakeNumberLine, "an MDN", 8}},
    {&S::mdn,
     k881 | Card(kCardSierraUsb305) | kMc75i | Card(kCardNovatelE371),
     kAlways,
     "Unknown",
     "at+cnum",
     0,
     {TakeSubscriberNumber, "+CNUM:"}},
    {&S::serial_number, kAllCards, kOnce, nullptr, "at+gsn", 0, {TakeNumberLine, "an IMEI", 10}},
    {&S::sku_priid, kSierra, kOnce, nullptr, "AT!PRIID?", 0, {TakePriId}},
    {&S::sim_context_apns, kAllCards, kAlways, "", "AT+CGDCONT?", 0, {TakeContexts, "+CGDCONT:"}},
    {&S::manufacturer,
     kSierra | kNovatel,
     kOnce,
     nullptr,
     "at+gmi",
     0,
     {TakeUnechoedLine, "at+gmi", 5, StripLineEnds}},
    {&S::model,
     kSierra | kNovatel,
     kOnce,
     nullptr,
     "at+gmm",
     0,
     {TakeModel, "at+gmm", 3, StripLineEnds}},
    {&S::firmware_version,
     kNovatel,
     kOnce,
     nullptr,
     "ATI3",
     0,
     {TakeBehindLabel, "Revision:", 0, TrimLeft, "Revision:"}},
    {&S::firmware_version,
     kSierra,
     kOnce,
     nullptr,
     "at!gver?",
     0,
     {TakeBehindLabel, "!GVER:", 0, CleanWhiteSpace, "!GETBAND:"}},
    {&S::hardware_version, k881, kOnce, nullptr, "at^hver", 0, {TakeQuotedVersion, "^HVER:"}},
};

constexpr IdentityQuery kPdpContexts = kIdentityPass[5];
static_assert(kPdpContexts.rule.take == TakeContexts, "the PDP context row has moved");

constexpr IdentityQuery kBand = {&S::band,
                                 k881,
                                 kAlways,
                                 "Unknown",
                                 "at!getband?",
                                 0,
                                 {TakeBehindLabel, "!GETBAND:", 0, CleanWhiteSpace, "!GETBAND:"}};

constexpr IdentityQuery kIccids[] = {
    {&S::sim_id,
     k881,
     kAlways,
     "Unknown",
     "AT!ICCID?",
     1,
     {TakeBehindLabel, "!ICCID:", 0, CleanWhiteSpace, "!ICCID:"}},
    {&S::sim_id,
     kMc75i,
     kAlways,
     "Unknown",
     "AT^SCID",
     1,
     {TakeBehindLabel, "^SCID:", 0, CleanWhiteSpace, "^SCID:"}},
    {&S::sim_id,
     kNovatel,
     kAlways,
     "Unknown",
     "AT+ICCID?",
     1,
     {TakeBehindLabel, "$NWICCID:", 0, CleanWhiteSpace, "$NWICCID:"}},
};

void Ask(const IdentityQuery& query) {
    std::string& field = g_S_Globalstats.*query.field;
    if (query.once && !IsStillUnknown(field)) return;
    if ((query.cards & (1U << g_i_CardType)) == 0) return;
    if (query.reset != nullptr) field = query.reset;
    const cStringTokenizer lines(SendAtCommand(query.command, query.wait), '\n');
    LogAbove(1, "DEBUG: token count is : %d", static_cast<int>(lines.GetTokenCount()));
    query.rule.take(query.rule, lines, field);
}

}  // namespace

void UpdateCardIdentity() {
    for (const IdentityQuery& query : kIdentityPass)
        Ask(query);
    GetGsmCarrierFromOperatorNameList();
}

void QueryPdpContexts() {
    Ask(kPdpContexts);
}

void QueryBand() {
    Ask(kBand);
}

void QueryIccid() {
    if (IsLteCard() && !g_S_Globalstats.sim_ready) return;
    for (const IdentityQuery& query : kIccids)
        Ask(query);
}
