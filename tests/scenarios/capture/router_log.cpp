#include "router_log.h"

#include <ctime>

namespace {

constexpr std::int64_t kSecond = 1000000;

std::string Printed(const char* format, std::int64_t seconds) {
    const auto when = static_cast<std::time_t>(seconds);
    std::tm utc = {};
    gmtime_r(&when, &utc);
    char text[64] = "";
    std::strftime(text, sizeof(text), format, &utc);
    return text;
}

std::string Padded(const char* format, long long number) {
    char text[32] = "";
    std::snprintf(text, sizeof(text), format, number);
    return text;
}

// rsyslog writes "#015#012", busybox "^M" and a blank; others write the bytes.
std::string Shown(const std::string& text, LogForm form) {
    std::string shown;
    for (const char c : text) {
        const bool control = static_cast<unsigned char>(c) < ' ';
        if (!control || form == LogForm::kClassic) {
            shown += c;
        } else if (form == LogForm::kRsyslog) {
            shown += Padded("#%03llo", c);
        } else {
            shown += c == '\n' ? " " : std::string("^") + static_cast<char>(c + '@');
        }
    }
    return shown;
}

std::string Head(std::int64_t at, LogForm form, const std::string& tag) {
    switch (form) {
        case LogForm::kRsyslog:
            return Printed("%Y-%m-%dT%H:%M:%S.", at / kSecond) + Padded("%06lld", at % kSecond) +
                   "+00:00 router " + tag + ": ";
        case LogForm::kClassic:
            return Printed("%b %e %H:%M:%S", at / kSecond) + " router " + tag + ": ";
        case LogForm::kLogread:
            return Printed("%a %b %e %H:%M:%S %Y", at / kSecond) + " user.notice " + tag + ": ";
    }
    return "";
}

}  // namespace

std::string RouterLog(const rig::World& world, LogForm form) {
    const std::int64_t start =
        world.clock.WallSeconds() * kSecond - world.clock.Now().count() / kSecond * kSecond;
    const std::string tag = form == LogForm::kLogread ? "modemd" : "modemd[4242]";
    std::string log;
    int count = 0;
    for (const rig::Event& event : world.trace.Of(rig::Kind::kLog)) {
        const std::int64_t at = start + event.at;
        log += Head(at, form, tag) + Shown(event.text, form) + "\n";
        if (++count % 7 == 0) log += Head(at, form, "dnsmasq[77]") + "query[A] ntp.example.org\n";
    }
    return log;
}
