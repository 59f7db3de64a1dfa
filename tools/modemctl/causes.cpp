// The causes of a link that is not there: one row each, in the order of the chain.
#include <algorithm>

#include "modemctl/diagnosis.h"
#include "modemctl/time_text.h"
#include "state/published.h"
#include "support/text.h"

namespace modemctl {

namespace {

namespace key = published::key;

constexpr char kExit[] = "exit";
constexpr char kNoDevice[] = "No /dev/device path given, exiting";
constexpr char kGaveUpPort[] = "Failed to open port %d times, exiting";
constexpr char kLostPort[] = "Port error counter above %d, resetting modem";
constexpr char kNoPort[] = "Unable to open port %s, attempt %d/%d";
constexpr char kBadService[] = "Warning: Modem reports bad service : '%s'";
constexpr char kHungUp[] = "No service after %d seconds, sending modem a disconnect.";
constexpr char kServiceChanged[] = "Service Type changed from '%s' to '%s'";
constexpr char kRestart[] = "LTE Connected returned %d, restarting connection";
constexpr char kRefusedEnd[] = "Last connect end reason was 'Authentication failed (10)'";
constexpr char kNoServiceEnd[] = "Last connect end reason was 'Phone has no service (3)'";
constexpr char kClientEnd[] = "Last connect end reason was 'Client ended the call (2)'";
constexpr char kOtherEnd[] = "Last connect end reason was '%s'";
constexpr char kCallFailed[] = "Last qmi result was 'Data call failed. (14)'";
constexpr char kOtherProgram[] =
    "Last qmi result was 'Control point has already started the network interface. (26)'";
constexpr char kOtherResult[] = "Last qmi result was '%s'";
constexpr char kTooManyFailures[] = "Failed to connect to LTE network %d times, resetting modem";
constexpr char kResetting[] = "Resetting device";
constexpr char kDisabled[] = "Config option %s is 'NO', WAN interface is disabled";
constexpr char kBroughtDown[] =
    "LTE is connected, but Enable Wan interface in config is disabled.  Bringing down LTE "
    "connection.";
constexpr char kNewApn[] = "Setting Context 3 APN to '%s'";
constexpr char kBadApn[] = "Error:  The APN '%s' contains invalid characters";
constexpr char kLongApn[] = "Error:  The APN '%s' is too long";
constexpr char kNoLease[] = "Interface %s is connected, but does not have a valid IP.";
constexpr char kNoInterface[] =
    "Warning: Modem type set to E362/E371, but int %s does not appear to exist.";
constexpr char kNothingLeaves[] = "Warning: TX count on %s not incrementing.";
constexpr char kStarting[] = "v%s starting";

constexpr long long kRestartPeriod = 45;  // seconds: a restart, and the pause behind it
constexpr long long kLongestGap = 100;    // between two restarts of one trouble
constexpr int kRestartsToReset = 6;       // each looks twice; eleven failed looks reset the modem
constexpr int kChecksToReset = 8;         // of the error counts
constexpr long long kLinkCheckPeriod = 30;
constexpr long long kPortRetryPeriod = 10;
constexpr int kPortAttempts = 5;

std::string At(const Case& c, std::time_t when) {
    if (when <= c.now) return "any moment";
    return "at about " + ShownTime(when).substr(11);
}

bool HasEnded(const Case& c) {
    return c.snapshot.daemon == DaemonState::kDead ||
           (c.snapshot.daemon == DaemonState::kUnknown &&
            c.chain[ChainPart::kPort].what == "the daemon has ended");
}

bool IsTooOld(const Case& c) {
    return c.snapshot.StatisticsFreshness(c.max_age) == Freshness::kTooOld;
}

// --- What comes next -----------------------------------------------------------------------------

std::string Nothing(const Case&) {
    return "Nothing: no daemon is there to do it.";
}

std::string StartScripts(const Case&) {
    return "The start scripts start the daemon again, as a rule within half a minute; if they do "
           "not, nothing happens.";
}

std::string NextPortAttempt(const Case& c) {
    const LogFact* const fact = c.log.Find(kNoPort);
    if (fact == nullptr || fact->parts.size() < 2) return "The port is tried again in 10 s.";
    const int left = kPortAttempts - ToInt(fact->parts[1]);
    return Format(
        "The port is tried again %s; after %d more failures the modem is reset and the "
        "daemon ends.",
        At(c, fact->Newest().when + kPortRetryPeriod).c_str(), std::max(left, 1));
}

std::string AsksOn(const Case&) {
    return "The daemon goes on asking every few seconds, and takes up its work with the first "
           "answer. It never resets a modem that is silent.";
}

std::string AsksRegistration(const Case&) {
    return "The modem searches by itself; the daemon asks it every 5 s.";
}

std::string WaitsForService(const Case& c) {
    if (c.Get(key::kModel).text == "E362") {
        return "Checks of the call rest. When service is back, the DHCP client is started at once "
               "and the call checked within 30 s.";
    }
    return "Checks of the call rest while the modem reports no service; with service, the next "
           "comes within 30 s.";
}

std::string KeepsDown(const Case&) {
    return "The daemon looks on every pass and brings down any call.";
}

// Every restart looks twice at the call. More than ten failed looks in a row reset the modem.
std::string NextRestart(const Case& c) {
    const LogFact* const fact = c.log.Find(kRestart);
    if (fact == nullptr) return "The call is looked at every 30 s, and restarted.";
    const std::time_t next = fact->Newest().when + kRestartPeriod;
    const LogFact* const reset = c.log.Find(kTooManyFailures);
    int restarts = fact->Streak(kLongestGap);
    if (reset != nullptr) {
        const auto since = std::count_if(
            fact->records.begin(), fact->records.end(),
            [&](const LogRecord& record) { return record.when > reset->Newest().when; });
        restarts = std::min(restarts, static_cast<int>(since));
    }
    const int left = std::max(1, kRestartsToReset - restarts);
    return Format(
        "The call is restarted %s and then every %lld s. If all fail, the modem is reset "
        "%s.",
        At(c, next).c_str(), kRestartPeriod,
        At(c, next + (left - 1) * kRestartPeriod + 15).c_str());
}

std::string NextLease(const Case& c) {
    const LogFact* const fact = c.log.Find(kRestart);
    if (fact == nullptr) return "The call is looked at every 30 s, and restarted for a new lease.";
    const int restarts = fact->Streak(kLongestGap);
    return Format(
        "The call is restarted %s for a new lease; the eighth restart in a row (so far "
        "%d) resets the modem.",
        At(c, fact->Newest().when + kRestartPeriod).c_str(), restarts);
}

std::string NextPing(const Case& c) {
    const LogFact* const fact = c.log.Find(kNothingLeaves);
    if (fact == nullptr) return "The link is pinged every 10 minutes.";
    return Format(
        "The link is pinged again %s; the %dth failure in a row (so far %d) resets the "
        "modem.",
        At(c, fact->Newest().when + kLinkCheckPeriod).c_str(), kChecksToReset,
        fact->Streak(kLongestGap));
}

std::string SoonKnown(const Case&) {
    return "The daemon asks for it in the next passes, within half a minute.";
}

// --- The table -----------------------------------------------------------------------------------

bool HasEndReason(const Case& c, const char* reason) {
    return Contains(c.Get(key::kQmiEndReason).text, reason);
}

bool HasResult(const Case& c, const char* result) {
    return Contains(c.Get(key::kQmiResultNumber).text, result);
}

// clang-format off
const std::vector<Cause> kCauses = {
    {"daemon_never_started", ChainPart::kPort,
        [](const Case& c) { return c.snapshot.daemon == DaemonState::kNeverStarted; },
        "No daemon has been started on this router: there is no pid file.",
        {}, Nothing,
        "Start it: /etc/init.d/modemd start. Is its start script enabled?"},
    {"daemon_without_device", ChainPart::kPort,
        [](const Case& c) { return HasEnded(c) && c.log.EndsWith(kNoDevice); },
        "The daemon was started without a device and ended at once.",
        {kNoDevice}, Nothing,
        "Name the modem's command port in the start script, such as modemd -E362 /dev/ttyUSB0."},
    {"port_given_up", ChainPart::kPort,
        [](const Case& c) { return HasEnded(c) && c.log.Has(kGaveUpPort); },
        "The serial port could not be opened in five attempts. The modem was reset, and the daemon "
        "has ended.",
        {kNoPort, kGaveUpPort, kResetting}, StartScripts,
        "Is the modem plugged in and powered? Is its driver loaded, and is the device name still "
        "the same (ls /dev/ttyUSB*)?"},
    {"port_lost", ChainPart::kPort,
        [](const Case& c) { return HasEnded(c) && c.log.Has(kLostPort); },
        "The port went away under the daemon: more than 25 writes in a row failed. The modem was "
        "reset, and the daemon has ended.",
        {kLostPort, kResetting}, StartScripts,
        "Expected for a minute behind a modem reset. Else: was the modem unplugged? Cable, power, "
        "USB errors in the kernel's log?"},
    {"daemon_asked_to_end", ChainPart::kPort,
        [](const Case& c) { return HasEnded(c) && c.log.EndsWith(kExit); },
        "Somebody asked the daemon to end, and it has ended in good order.",
        {"received SIGINT/SIGTERM", "recieved SIGHUP, resetting device", kExit}, StartScripts,
        "Start it: /etc/init.d/modemd start."},
    {"daemon_gone", ChainPart::kPort, HasEnded,
        "The daemon's process is gone, and it did not say why: it was killed, or it crashed.",
        {kStarting}, StartScripts,
        "Look into the kernel's log for \"out of memory\" and \"segfault\" (dmesg), then start it: "
        "/etc/init.d/modemd start."},
    {"port_missing", ChainPart::kPort,
        [](const Case& c) { return c.chain[ChainPart::kPort].what == "the port does not open"; },
        "The serial port cannot be opened: the device is not there, or not to be used.",
        {kNoPort}, NextPortAttempt,
        "Is the modem plugged in and powered? Is its driver loaded, and is the device name still "
        "the same (ls /dev/ttyUSB*)?"},
    {"modem_silent", ChainPart::kPort, IsTooOld,
        "The daemon runs and the port is open, but the modem does not answer. Nothing is published "
        "and no link is judged meanwhile.",
        {kResetting}, AsksOn,
        "Is it the command port (a modem has several)? Does another program hold it (modemctl "
        "doctor)? To reset the modem: kill -HUP `cat /var/run/modemd.pid`, or unplug it."},
    {"nothing_published", ChainPart::kPort,
        [](const Case& c) {
            return c.snapshot.StatisticsFreshness(c.max_age) == Freshness::kAbsent;
        },
        "The daemon has published nothing yet. It asks the modem for half a minute before it does.",
        {kStarting, kNoPort}, SoonKnown,
        "Wait a minute. Then: is the file system of /var/log full?"},

    {"sim_missing", ChainPart::kSim,
        [](const Case& c) { return c.snapshot.card == Card::kSierra881; },
        "The modem reports no SIM, or one that wants its PIN.",
        {"CMS error #%d: %s"}, AsksRegistration,
        "Is the SIM in its slot, the right way round? Switch its PIN off: the daemon enters none."},
    {"sim_not_ready", ChainPart::kSim, [](const Case&) { return true; },
        "The modem has not reported its SIM as ready, and is not registered: no SIM, a SIM that "
        "wants its PIN, or a broken one.",
        {kServiceChanged, kBadService}, AsksRegistration,
        "Is the SIM in its slot, the right way round? Switch its PIN off: the daemon enters none. "
        "Try another SIM."},

    {"registration_denied", ChainPart::kRegistration,
        [](const Case& c) {
            return Contains(c.chain[ChainPart::kRegistration].what, "Denied");
        },
        "The network refuses the registration of this SIM or modem.",
        {kServiceChanged, kBadService, kRefusedEnd}, AsksRegistration,
        "Ask the carrier: is the SIM activated, the contract valid, the modem's IMEI allowed, "
        "roaming included?"},
    {"registration_off", ChainPart::kRegistration,
        [](const Case& c) {
            return Contains(c.chain[ChainPart::kRegistration].what, "Not Registered");
        },
        "The modem is not registered and does not search: its radio is off, or it has given up.",
        {kServiceChanged, kBadService}, AsksRegistration,
        "Check the SIM and the antenna, then reset the modem: kill -HUP `cat "
        "/var/run/modemd.pid`."},
    {"registration_searching", ChainPart::kRegistration,
        [](const Case& c) { return c.IsBroken(ChainPart::kRegistration); },
        "The modem searches and finds no network that takes it.",
        {kServiceChanged, kBadService, kHungUp}, AsksRegistration,
        "Check the antenna and its plug, then the signal (modemctl status). Is there coverage of "
        "this SIM's carrier here?"},
    {"registration_unknown", ChainPart::kRegistration, [](const Case&) { return true; },
        "The modem has not told yet whether it is registered.",
        {kStarting}, SoonKnown, "Wait half a minute and look again."},

    {"no_service", ChainPart::kService,
        [](const Case& c) { return c.IsBroken(ChainPart::kService); },
        "The modem is registered but reports no service for data.",
        {kServiceChanged, kBadService, kHungUp}, WaitsForService,
        "Check antenna, coverage and SIM. Does the carrier offer LTE here?"},

    {"switched_off", ChainPart::kCall,
        [](const Case& c) { return !c.snapshot.ppp.interface_enabled; },
        "The data call is switched off in the configuration: CM_ENABLE_INTERFACE=no.",
        {kDisabled, kBroughtDown}, KeepsDown,
        "Set CM_ENABLE_INTERFACE=yes in /etc/kvt/wireless/cellmodem_ppp.conf; it is read within "
        "seconds."},
    {"apn_invalid", ChainPart::kCall,
        [](const Case& c) { return c.log.Has(kBadApn) || c.log.Has(kLongApn); },
        "The configured APN is not one that a modem could take, and was not handed on.",
        {kBadApn, kLongApn, kRestart}, NextRestart,
        "Correct CM_APN in /etc/kvt/wireless/cellmodem_ppp.conf: letters, digits, '.', '-', '_' "
        "and '!', at most 20 characters. End the file's last line with a line feed."},
    {"sim_or_apn_refused", ChainPart::kCall,
        [](const Case& c) {
            return HasEndReason(c, "Authentication failed") || c.IsRecent(kRefusedEnd);
        },
        "The network refuses the SIM or the APN: authentication failed.",
        {kNewApn, kRefusedEnd, kRestart, kTooManyFailures}, NextRestart,
        "Check the SIM's contract with the carrier, and CM_APN in "
        "/etc/kvt/wireless/cellmodem_ppp.conf."},
    {"another_program_dials", ChainPart::kCall,
        [](const Case& c) {
            return HasResult(c, "Control point has already started") || c.IsRecent(kOtherProgram);
        },
        "Another program on this router holds the modem's data call.",
        {kOtherProgram, kRestart}, NextRestart,
        "Find it and stop it: only one may dial. Candidates: another modem manager, a dialler of "
        "the old configuration."},
    {"network_lost", ChainPart::kCall,
        [](const Case& c) {
            return HasEndReason(c, "Phone has no service") || c.IsRecent(kNoServiceEnd);
        },
        "The last call ended because the radio lost the network.",
        {kNoServiceEnd, kServiceChanged, kRestart, kTooManyFailures}, NextRestart,
        "Check the antenna and the signal (modemctl status)."},
    {"call_setup_failed", ChainPart::kCall,
        [](const Case& c) {
            return HasResult(c, "Data call failed") || c.IsRecent(kCallFailed);
        },
        "The modem tries to set the call up and fails.",
        {kNewApn, kCallFailed, kRestart, kTooManyFailures}, NextRestart,
        "Check CM_APN in /etc/kvt/wireless/cellmodem_ppp.conf, then the coverage."},
    {"modem_reset", ChainPart::kCall,
        [](const Case& c) { return c.IsRecent(kTooManyFailures); },
        "Eleven checks in a row found no call, and the modem has just been reset.",
        {kTooManyFailures, kResetting, kRestart}, NextRestart,
        "Wait two minutes. If this comes back: coverage, SIM, or a broken modem."},
    {"call_unanswered", ChainPart::kCall,
        [](const Case& c) { return !c.Get(key::kQmiState).IsTold() && c.log.Has(kRestart); },
        "The modem does not answer when it is asked for its call.",
        {kRestart, kOtherEnd, kOtherResult, kTooManyFailures}, NextRestart,
        "Wait for the reset. If it does not help, unplug the modem; is it the right command port?"},
    {"hung_up", ChainPart::kCall,
        [](const Case& c) { return HasEndReason(c, "Client ended") || c.IsRecent(kClientEnd); },
        "The call was hung up on this side: by the daemon for a change of the APN or a restart, or "
        "by another program.",
        {kNewApn, kClientEnd, kRestart}, NextRestart,
        "Wait for the restart. If it keeps happening, find the program that hangs up."},
    {"call_down", ChainPart::kCall, [](const Case& c) { return c.IsBroken(ChainPart::kCall); },
        "The data call is down.",
        {kOtherEnd, kOtherResult, kRestart, kTooManyFailures}, NextRestart,
        "Wait for the restart; then look at how the call ended (modemctl log)."},
    {"call_unknown", ChainPart::kCall, [](const Case&) { return true; },
        "The modem has not told yet whether its call is up.",
        {kRestart}, SoonKnown, "Wait half a minute and look again."},

    {"interface_missing", ChainPart::kAddress,
        [](const Case& c) {
            return c.log.Has(kNoInterface) ||
                   (!c.snapshot.interface_exists && c.IsBroken(ChainPart::kAddress));
        },
        "The call is up, but there is no network interface wwan0.",
        {kNoInterface, kNoLease}, NextLease,
        "Is the modem's network driver loaded? Is the option word the modem's own (-E362, -E371)?"},
    {"no_lease", ChainPart::kAddress, [](const Case& c) { return c.IsBroken(ChainPart::kAddress); },
        "The call is up, but wwan0 has got no address.",
        {kNoLease, kRestart}, NextLease,
        "Is udhcpc there, and its script /etc/udhcpc/default.script? A SIM without data service "
        "looks like this, too."},
    {"address_unknown", ChainPart::kAddress, [](const Case&) { return true; },
        "Whether wwan0 has an address does not stand in these files.",
        {kNoLease}, NextLease, "Look on the router itself: ip addr show wwan0."},

    {"nothing_leaves", ChainPart::kTraffic,
        [](const Case& c) { return c.IsBroken(ChainPart::kTraffic); },
        "Call and address are there, but nothing leaves: a ping left no trace in the transmit "
        "counter.",
        {kNothingLeaves}, NextPing,
        "Check the firewall and the routes of wwan0 (ip route). Once is nothing."},
};
// clang-format on

}  // namespace

const std::vector<Cause>& AllCauses() {
    return kCauses;
}

}  // namespace modemctl
