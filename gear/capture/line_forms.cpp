#include "capture/line_forms.h"

#include <stdexcept>

namespace capture {

namespace {

// No long number, in pieces or not, and no address up to the next quote.
#define NO_NUMBER "(?![^\"]*(?:[0-9]{6}|[0-9]{3}-[0-9]{3}|[0-9][.][0-9]+[.][0-9]+[.][0-9]))"

// What stands in a row for a part of a line. Nobody's:
struct Name {
    const char* name;
    const char* pattern;
};
constexpr Name kNames[] = {
    {"n", "-?[0-9.]{1,6}"},
    {"ns", "-?[0-9.]{1,6}(?:, ?-?[0-9.]{1,6})*"},
    {"stamp", "(?![^\"]*[0-9]{5})[0-9/,:.+-]{0,25}"},
    {"word", "[A-Za-z0-9/+-]{1,20}"},
    {"words", NO_NUMBER "[A-Za-z0-9/+:,. -]{1,60}"},
    {"operator", NO_NUMBER "[ !#-~]{1,40}"},
    {"network", "[0-9]{3} ?[0-9]{2,3}"},
    {"model", "(?![^\"]*[0-9]{9})[ !#-~]{1,60}"},
    {"page", NO_NUMBER "(?!.*(?:LAC|TAC|[Cc]ell ID|Serving|IMEI|IMSI|ICCID|MDN|[Nn]umber))"
                       "[\t !#-?A-~]{1,100}"},
    {"column", "(?:(?!.*[0-9]{7}[^0-9]*:)[^:\"]{1,20}:[^:\"]{0,30}[\t ])?"},
};
// And somebody's:
struct Identity {
    const char* name;
    const char* pattern;
    Held held;
};
constexpr Identity kIdentities[] = {
    {"serial", "(?:0x)?([0-9A-Fa-f-]{8,20})", Held::kSerial},
    {"sim", "([0-9]{18,20})F?", Held::kSimCard},
    {"subscriber", "([0-9]{6,15})", Held::kSubscriber},
    {"number", "([^\"]*)", Held::kNumber},
    {"digits", "(\\+?[0-9]{7,15})", Held::kNumber},
    {"hex", "(?:0x)?([0-9A-Fa-f]{1,8})", Held::kHexCell},
    {"decimal", "([0-9]{1,10})", Held::kDecimalCell},
    {"apn", "([^\"]*)", Held::kApn},
    {"address", "([^\"]*)", Held::kAddress},
    {"text", "([^\"]*)", Held::kText},
};

// A regular expression in which <name> is one of these, ' is a double quote, a blank any white
// space, and a comma may have a blank behind it. A modem that speaks differently is a row more.
struct Row {
    const char* command;  // "" for any
    const char* line;
    int text_lines = 0;
};

constexpr Row kAnswers[] = {
    // Results and prompts.
    {"", R"(OK|ERROR|>|> |RING|BUSY|CONNECT|NO (?:CARRIER|DIALTONE|ANSWER))"},
    {"", R"(\+CM[ES] ERROR: <words>)"},

    // Signal and registration.
    {"", R"([+^](?:CSQ|RSSI|CIND|TEMP|SYSINFO): <ns>)"},
    {"", R"(\+C[GE]?REG: <n>(?:,<n>)?)"},
    {"", R"(\+C[GE]?REG: (?:<n>,)?<n>,'?<hex>'?,'?<hex>'?(?:,<n>)*)"},
    {"", R"(\*CNTI: <n>,<words>)"},
    {"", R"(\$NWRAT: <ns>)"},
    {"", R"((?:RSSI|ECIO|RSRP|RSRQ|SINR)=<n>)"},
    {"", R"(Tot Ec/Io: <n> dB)"},
    {"", R"(!GET(?:BAND|RAT): <words>)"},
    {"", R"(\+COPS: <n>(?:,<n>,'<operator>'(?:,<n>)?)?)"},
    {"", R"(\+COPN: '<network>','<operator>')"},
    {"", R"(PLMN: <network>)"},
    {"AT\\$NWNN", "<operator>"},
    {"AT\\$NWSYSMODE", "<words>"},

    // The status page and the cell information of the Sierra modems.
    {"", R"(<column>(?:LAC|TAC|Cell ID|Serving Cell): <hex> \(<decimal>\))"},
    {"AT!GSTATUS\\?", "(?:Current|Bootup) Time: [0-9]* (?:<page>)?"},  // seconds
    {"AT!GSTATUS\\?", "<page>"},
    {"AT!GSMINFO\\?", "No service"},

    // Who it is.
    {"AT\\+C?GSN", "'?<serial>'?"},
    {"", "(?:IMEI|ESN|MEID)(?: SV)?: <serial>"},
    {"", R"([!$^+](?:NW)?(?:ICCID|SCID|CCID): '?<sim>'?)"},
    {"AT\\+CIMI", "<subscriber>"},
    {"AT\\$NWMDN", "<digits>"},
    {"", R"(\+CNUM: (?:'<text>')?,'<number>',<ns>)"},
    {"AT\\+C?GM[IMR]|ATI[0-9]?", "<model>"},
    {"", "(?:Manufacturer|Model|Revision|Hardware|Firmware): <model>"},
    {"", R"((?:!GVER|\^HVER): '?<model>'?)"},
    {"", "PRI Part Number: [0-9]*"},
    {"", R"(\$QCSIMSTAT: <words>)"},
    {"", R"(\+CPIN: <words>)"},

    // Time.
    {"", R"([+$]CCLK: '<stamp>')"},
    {"AT\\$NWLTIME", "<stamp>"},
    {"AT!TIME\\?", R"(!TIME: |<stamp>|<stamp> \(<word>\))"},

    // Contexts and the data call.
    {"", R"(\+CGDCONT: <n>,'<word>','<apn>'(?:,'<address>'(?:,<n>)*)?)"},
    {"", R"(\$NWQMI(?:STATUS|CONNECT|DISCONNECT): <words>)"},
    {"", "(?:QMI State|Call End Reason|Call Duration): (?:<words>)?"},

    // Messages.
    {"", R"(\+CMGL: <n>,'<words>','<number>',(?:'<text>')?,'<stamp>'(?:,<n>)*)", kManyLines},
    {"", R"(\+CMT: '<number>',(?:'<text>')?,'<stamp>'(?:,<n>)*)", 1},
    {"", R"(\+CMTI: '<word>',<n>)"},
    {"", R"((?:> )?\+CMG[SW]: <n>)"},
    {"", R"(\+CMGF: <n>)"},
};

constexpr Row kCommands[] = {
    {"", R"(AT\+CMG[SW]='<number>')"},
    {"", R"(AT\+NWAPNE=<n>,'<apn>',True,<n>,V4,[0.,:]*,HRPD_EHRPD)"},
    {"", R"(AT\+CGDCONT=<n>,'<word>','<apn>')"},
    {"", R"(AT\+CMGL='<words>')"},
    {"", R"(AT\$NWQMICONNECT=,,)"},
    {"", R"(AT(?:[!$^*+&]?[A-Z]+[0-9]?(?:\?|=\?|=<ns>)?)?)"},
};

void AppendNamed(const std::string& name, std::string& pattern, std::vector<Held>& holds) {
    for (const Name& known : kNames) {
        if (name == known.name) pattern += known.pattern;
    }
    for (const Identity& known : kIdentities) {
        if (name != known.name) continue;
        pattern += known.pattern;
        holds.push_back(known.held);
    }
}

LineForm FormOf(const Row& row) {
    constexpr auto kOptions = std::regex::ECMAScript | std::regex::optimize;
    LineForm form;
    std::string pattern;
    for (const char* c = row.line; *c != '\0'; ++c) {
        if (*c == '<') {
            const char* const start = c + 1;
            while (*c != '>') ++c;
            AppendNamed(std::string(start, c), pattern, form.holds);
        } else if (*c == ' ') {
            pattern += "[ \t]*";
        } else if (*c == ',') {
            pattern += ", ?";
        } else {
            pattern += *c == '\'' ? '"' : *c;
        }
    }
    form.line = std::regex(pattern, kOptions);
    form.command =
        std::regex(*row.command != '\0' ? row.command : "[^]*", kOptions | std::regex::icase);
    form.text_lines = row.text_lines;
    return form;
}

template <std::size_t N>
std::vector<LineForm> FormsOf(const Row (&rows)[N]) {
    std::vector<LineForm> forms;
    for (const Row& row : rows) forms.push_back(FormOf(row));
    return forms;
}

}  // namespace

const std::vector<LineForm>& AnswerForms() {
    static const std::vector<LineForm> forms = FormsOf(kAnswers);
    return forms;
}

const std::vector<LineForm>& CommandForms() {
    static const std::vector<LineForm> forms = FormsOf(kCommands);
    return forms;
}

}  // namespace capture
