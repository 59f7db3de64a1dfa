// The table of log lines: one row for each format in the daemon's source. A test reads the source
// and fails when a line is missing here.
#include "modemctl/log_lines.h"

namespace modemctl {

namespace {

using L = LogLevel;
using T = LogTopic;

constexpr bool kVariesFreely = true;

// clang-format off
const std::vector<LogLine> kDaemonLines = {
    {"v%s starting", L::kNews, T::kDaemon, "daemon {1} starts",
        "The daemon was started.",
        "It looks for another copy of itself, opens the port and asks the modem who it is."},
    {"Writing pid %s to pidfile '%s'", L::kDetail, T::kDaemon, "process id {1}",
        "No other copy is running; the process id went to the pid file.", ""},
    {"Another %s process is already running, exiting", L::kBad, T::kDaemon,
        "a second copy was started and ended at once",
        "The pid file names a running process of this name. The new copy ends with status 255, the "
        "old one goes on.",
        "If no daemon should be running, look at the process that the pid file names. If this "
        "repeats, two start scripts start the daemon: keep one."},
    {"file %s is present", L::kDetail, T::kDaemon, "{1} is there",
        "The ssh host key exists: this is not a first boot.", ""},
    {"file %s is not present", L::kDetail, T::kDaemon, "{1} is not there",
        "No ssh host key yet: this looks like a first boot, which takes longer.", ""},
    {"uptime cutoff set to %d seconds", L::kDetail, T::kDaemon,
        "error counts act once the router is up for {1} s",
        "Before that uptime the error counts never reset the modem.", ""},
    {"card type set to %s", L::kNews, T::kDaemon, "started for a {1}",
        "The option word named the modem.", ""},
    {"card type set to Centerion MC75i", L::kNews, T::kDaemon, "started for a Cinterion MC75i",
        "The option word named the modem.", ""},
    {"using querry type cind1", L::kDetail, T::kDaemon, "the signal is asked for with AT+CIND?",
        "The option -cind1 was given.", ""},
    {"No /dev/device path given, exiting", L::kBad, T::kDaemon, "started without a device, ended",
        "The command line names no serial device; the daemon ends with status 1.",
        "Correct the start script: modemd -CARD /dev/ttyUSB0."},
    {"received SIGINT/SIGTERM", L::kNews, T::kDaemon, "asked to end",
        "Somebody sent SIGINT or SIGTERM.", "The status files are removed, the link taken down."},
    {"recieved SIGHUP, resetting device", L::kWarning, T::kDaemon,
        "asked to reset the modem and end", "Somebody sent SIGHUP.",
        "The modem is reset, then the daemon ends; the start scripts start it again."},
    {"doing cleanup and exiting", L::kDetail, T::kDaemon, "removes its files",
        "The daemon ends in good order.", ""},
    {"exit", L::kNews, T::kDaemon, "ended", "The daemon has ended in good order, with status 0.",
        "Nothing is done until it is started again."},
    {"Unable to open /proc/uptime", L::kWarning, T::kDaemon, "/proc/uptime cannot be read",
        "The uptime counts as long enough: the error counts act at once.", "Mount /proc."},

    {"Unable to open port %s, attempt %d/%d", L::kBad, T::kPort,
        "port {1} cannot be opened, attempt {2} of {3}",
        "The serial device is not there or cannot be used.",
        "Tried again 10 s apart; the fifth failure resets the modem and ends the daemon. Is the "
        "modem plugged in, its driver loaded, the device name right?"},
    {"Failed to open port %d times, exiting", L::kBad, T::kPort, "gave up on the port, ended",
        "The port could not be opened in {1} attempts. The modem is reset, the daemon ends with "
        "status 255.",
        "The start scripts start it again. Is the modem plugged in, the device name right?"},
    {"Port error counter above %d, resetting modem", L::kBad, T::kPort,
        "the port takes no commands, ended",
        "More than {1} writes in a row failed: the device has gone away under the daemon. The "
        "modem is reset, the daemon ends with status 255.",
        "The start scripts start it again. Expected behind a modem reset or an unplugged modem."},

    {"Resetting device", L::kWarning, T::kModem, "the modem is reset",
        "The reset tool was started. The line before says why; if none does, the error counts "
        "asked for it.",
        "The modem goes away for some seconds; failed writes may end the daemon, and the start "
        "scripts start it again."},
    {"Setting Specific model number to MC7700", L::kDetail, T::kModem, "the modem is a MC7700",
        "Its status page has other labels, which are looked for from now on.", ""},
    {"Carrier name set to \"%s\"", L::kNews, T::kModem, "carrier: {1}",
        "The name belongs to the network number the modem reports.", ""},
    {"got %d value for registration_status", L::kWarning, T::kModem,
        "the modem reports an unheard-of registration, {1}",
        "The number is none of 0 to 5; the registration is published as Unknown.",
        "Asked again in 5 s."},

    {"Service Type changed from '%s' to '%s'", L::kNews, T::kService, "service: {1} -> {2}",
        "The modem reports another kind of service.",
        "On the E362, good service starts the DHCP client at once, and service that stays bad for "
        "30 s makes the daemon hang up."},
    {"Warning: Modem reports bad service : '%s'", L::kBad, T::kService, "no network: {1}",
        "The modem finds no network. Checks of the data call rest.",
        "Looked at on every pass. Check antenna, coverage and SIM."},
    {"No service after %d seconds, sending modem a disconnect.", L::kWarning, T::kService,
        "no network for {1} s, told the modem to hang up",
        "The E362 is told to disconnect, so that it registers again.",
        "Check antenna, coverage and SIM."},

    {"LTE Connected returned %d, restarting connection", L::kWarning, T::kCall,
        "call is down or has no address: restarted",
        "The check found no connected call, or no address. The three lines behind it tell how the "
        "last call ended.",
        "Call down, call up, new lease: 15 s. Looked at again 30 s later. Once in a while this is "
        "nothing."},
    {"Last connect time was reported as '%s'", L::kDetail, T::kCall, "the call had lasted {1}",
        "Duration of the call that ended, as the modem counts it.", "", kVariesFreely},
    {"Last connect end reason was 'Phone has no service (3)'", L::kBad, T::kCall,
        "it ended because the radio lost the network", "The modem lost the network.",
        "Check antenna and signal."},
    {"Last connect end reason was 'Authentication failed (10)'", L::kBad, T::kCall,
        "it ended because the network refuses SIM or APN",
        "The network did not accept the SIM for this APN.",
        "Check the SIM's contract and CM_APN."},
    {"Last connect end reason was 'Client ended the call (2)'", L::kDetail, T::kCall,
        "it was hung up on this side", "The daemon, or another program, hung up.",
        "Expected behind a change of the APN or a restart."},
    {"Last connect end reason was '%s'", L::kDetail, T::kCall, "end reason: {1}",
        "What the modem said of how the call before ended.", ""},
    {"Last qmi result was 'Data call failed. (14)'", L::kBad, T::kCall,
        "the modem could not set the call up", "The modem tried and failed.",
        "Check CM_APN, then coverage."},
    {"Last qmi result was 'Control point has already started the network interface. (26)'",
        L::kBad, T::kCall, "another program holds the call",
        "Somebody else on this router has started a call.", "Find it: only one may dial."},
    {"Last qmi result was '%s'", L::kDetail, T::kCall, "result: {1}",
        "What the modem said of the call before.", ""},
    {"Failed to connect to LTE network %d times, resetting modem", L::kBad, T::kCall,
        "eleven checks failed: the modem is reset",
        "More than {1} checks in a row found no connected call.",
        "5 s later the count starts from 0. If it comes back every few minutes: coverage, SIM, or "
        "a broken modem."},
    {"LTE is connected, but Enable Wan interface in config is disabled.  Bringing down LTE "
        "connection.", L::kWarning, T::kCall, "the call was brought down: switched off",
        "CM_ENABLE_INTERFACE=no, and somebody had started a call.",
        "Wanted? If not, set it to yes in cellmodem_ppp.conf."},
    {"Setting Context 3 APN to '%s'", L::kNews, T::kCall, "APN {1} set, call dropped",
        "cellmodem_ppp.conf was new or changed: its APN went to the modem.",
        "The next check restarts the call with it, within 30 s. What the modem answers is not "
        "looked at."},

    {"Interface %s is connected, but does not have a valid IP.", L::kBad, T::kLink,
        "call is up, but {1} has no address",
        "The modem is connected and the DHCP client got no lease.",
        "The call is restarted. Is udhcpc there? A SIM without data service looks like this, too."},
    {"Stopping udhcpc on %s", L::kDetail, T::kLink, "DHCP client stopped",
        "Part of a restart, or of the daemon's end.", ""},
    {"Starting/Signaling udhcpc", L::kDetail, T::kLink, "DHCP client started",
        "Part of a restart, or service has come back.", ""},
    {"Resetting udhcpc fail counter file", L::kDetail, T::kLink, "lease failures count from 0",
        "Part of a restart, or of the daemon's end.", ""},
    {"Warning: TX count on %s not incrementing.", L::kBad, T::kLink, "nothing leaves on {1}",
        "Call and address are there, but a ping left no trace in the transmit counter.",
        "The next ping comes in 30 s. Once: nothing. Repeated: firewall or routes on {1}; the "
        "eighth resets the modem."},
    {"Warning: Modem type set to E362/E371, but int %s does not appear to exist.", L::kBad,
        T::kLink, "there is no interface {1}", "ifconfig failed at the start.",
        "Is the driver loaded? Is the option word the modem's own?"},

    {"Syncing system time to %s (%s)", L::kNews, T::kClock, "clock set to {1} ({2})",
        "The network's time set the system and hardware clocks.", "Again in 4 hours.",
        kVariesFreely},
    {"Using UTC switch when setting date", L::kDetail, T::kClock, "the network tells UTC",
        "This modem's clock is UTC.", ""},
    {"Got BAD tower time: %s", L::kWarning, T::kClock, "the network told an impossible date",
        "Month or day of the modem's clock cannot be.", "Asked again in 5 minutes.",
        kVariesFreely},
    {"Time from tower does not look valid: %s", L::kWarning, T::kClock,
        "the network's time is not to be used: {1}",
        "No date, or one before 2012. Normal before the modem is registered.",
        "If it stays, the network sends no time: set SYNC_TIME=no.", kVariesFreely},
    {"Will check tower time again in %d minutes", L::kDetail, T::kClock,
        "the clock is tried again in {1} min", "The date was impossible.", ""},
    {"Modem does not appear to support tower time command, cannot time sync", L::kWarning,
        T::kClock, "the modem has no clock to ask", "The 881 knew neither clock command.",
        "Set SYNC_TIME=no."},
    {"Cannot sync to tower time, unsupported modem", L::kWarning, T::kClock,
        "this modem is never asked for the time", "SYNC_TIME is on, but not for this card.",
        "Set SYNC_TIME=no in cellmodem_provision_data.conf."},

    {"Note: Config file APN is empty", L::kDetail, T::kConfig, "no APN configured",
        "CM_APN is there without a value.", "The modem keeps its own APN."},
    {"Error:  The APN '%s' contains invalid characters", L::kBad, T::kConfig,
        "APN {1} refused: invalid characters",
        "An APN has letters, digits, '.', '-', '_' and '!'.", "Correct CM_APN."},
    {"Error:  The APN '%s' is too long", L::kBad, T::kConfig, "APN {1} refused: too long",
        "At most 20 characters.", "Correct CM_APN."},
    {"Config option %s is 'NO', WAN interface is disabled", L::kWarning, T::kConfig,
        "data call switched off", "CM_ENABLE_INTERFACE=no keeps the call down.",
        "Set it to yes to have a link."},
    {"Config option %s is '%s', WAN interface default route setting is off", L::kNews, T::kConfig,
        "default route left alone", "CM_DEFAULTROUTE=no; the line names another key.",
        "The DHCP client is started with -G."},
    {"Config option %s is '%s'", L::kDetail, T::kConfig, "configuration: {2}",
        "Said of CM_ENABLE_INTERFACE and, by the same name, of CM_DEFAULTROUTE.", ""},
    {"%s set to %d", L::kDetail, T::kConfig, "{1} is {2}",
        "The debug level of cellmodem_provision_data.conf.", ""},
    {"%s config option is YES.  Time sync will attempt every %d hours", L::kDetail, T::kConfig,
        "the network sets the clock", "SYNC_TIME=yes.", "Asked with the next answer of the modem."},

    {"Modem supports CMGF SMS", L::kNews, T::kSms, "messages are served",
        "The modem takes text mode.", "The spool is looked at every 15 s."},
    {"Modem does not support CMGF SMS", L::kDetail, T::kSms, "messages are not served",
        "Text mode was refused, or this card is not asked. Nothing is received; send files wait "
        "until they are a day old.", ""},
    {"Got SMS from %s at %s, Message: %s", L::kNews, T::kSms, "message from {1}: {3}",
        "Received, and written to /tmp/sms/recv.", ""},
    {"Reading SMS File %s", L::kDetail, T::kSms, "takes {1}", "A send file is read.", ""},
    {"Cannot open SMS file %s", L::kWarning, T::kSms, "{1} cannot be opened",
        "It is gone, or not to be read.", "It is deleted as invalid."},
    {"SMS send file %s is invalid, does not contain a '%s' field.", L::kWarning, T::kSms,
        "{1} has no {2}", "A send file needs TO= and MSG=.",
        "Write it elsewhere and rename it into the spool."},
    {"SMS send file %s is invalid, deleting", L::kBad, T::kSms, "{1} refused and deleted",
        "It could not be opened, or has no MSG=.",
        "A directory there cannot be deleted: remove it by hand."},
    {"SMS Message too long (%d chars), truncating to %d chars", L::kWarning, T::kSms,
        "message of {1} characters cut to {2}", "150 bytes are sent.", "Send it in pieces."},
    {"Got ERROR (not CMS error) trying to send SMS to '%s'", L::kBad, T::kSms,
        "the modem refused the number {1}", "Its answer to the number was an error.",
        "Tried again in 30 s; the third failure moves the file to send_fail."},
    {"CMS error #%d: %s", L::kBad, T::kSms, "the message failed: {2} ({1})",
        "The network or the modem refused the message.",
        "Tried again in 30 s; the third failure moves the file to send_fail."},
    {"Send Success: TO=%s, MSG=%s", L::kNews, T::kSms, "sent to {1}: {2}",
        "The modem showed no error within about a second. That is no proof of delivery.", ""},
    {"Send #%d Failed: TO=%s, MSG=%s (truncated)", L::kWarning, T::kSms,
        "attempt {1} to {2} failed", "The line before says why.", "Tried again in 30 s."},
    {"Send #%d Failed : TO=%s, MSG=%s (truncated)", L::kBad, T::kSms,
        "attempt {1} to {2} failed, the last", "The line before says why.",
        "The file goes to send_fail."},
    {"Max send attempt, moving file to %s/%s", L::kBad, T::kSms, "given up: {2} in send_fail",
        "The third failure in a row; the count is the daemon's, not the file's.",
        "Rename it back into send/ to try again: modemctl sms requeue."},
    {"Deleting SMS file '%s', older than %d minutes.", L::kWarning, T::kSms,
        "{1} was a day old and is deleted", "Files of the spool live for a day.",
        "Pick received messages up sooner. A clock set forward makes all files old at once."},
    {"SMS directory %s is a link that somebody else made, not using it", L::kBad, T::kSms,
        "{1} is somebody's link, not used", "A link in /tmp that belongs to another user.",
        "Remove it; to keep the spool elsewhere, let root make the link."},
};

// Lines of a raised debug level.
const std::vector<LogLine> kDebugLines = {
    {"DEBUG: %s", L::kDetail, T::kDebug, "{1}", "Written at a raised debug level.",
        "Set DEBUG_MODE=0 when you are done."},
    {"Last %s TX count %d > %d (good)", L::kDetail, T::kLink, "bytes leave on {1}",
        "The link check found more bytes sent than at the last good one.", "", kVariesFreely},
    {"read No Data", L::kDetail, T::kDebug, "the modem said nothing", "Written at debug level 4.",
        ""},
    {"Clear Response: %s", L::kDetail, T::kDebug, "answer: {1}", "Written at debug level 4.", ""},
    {"Raw Response: %s", L::kDetail, T::kDebug, "answer in hex: {1}", "Written at debug level 4.",
        ""},
    {"Massaged packet : %s", L::kDetail, T::kDebug, "cleaned answer in hex: {1}",
        "Written at a raised debug level.", ""},
    {"Unsolicited message: %s", L::kDetail, T::kDebug, "the modem said unasked: {1}",
        "Written at a raised debug level.", ""},
    {"Sending command: %s", L::kDetail, T::kDebug, "asks {1}", "Written at a raised debug level.",
        ""},
    {"cKVTLogger%s", L::kDetail, T::kDebug, "its own log file: {1}",
        "The writer of /var/log/csq tells of itself at a raised level.", ""},
    {"running cKVTLogger::Rotate()", L::kDetail, T::kDebug, "its own log file is full",
        "/var/log/csq becomes csq.1.", ""},
};
// clang-format on

}  // namespace

const std::vector<LogLine>& AllLogLines() {
    static const std::vector<LogLine> all = [] {
        std::vector<LogLine> both = kDaemonLines;
        both.insert(both.end(), kDebugLines.begin(), kDebugLines.end());
        return both;
    }();
    return all;
}

}  // namespace modemctl
