// What stands around the daemon in the stories of the data connection: the carrier behind the
// modem, the router's udhcpc, and a look at what the daemon did with them.
#pragma once

#include <string>
#include <vector>

#include "rig/world.h"

using Lines = std::vector<std::string>;

constexpr char kPppFile[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
constexpr char kProvisioningFile[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
constexpr char kDialing[] = "/var/log/wirelessdial_dialing";
constexpr char kNotDialing[] = "/var/log/wirelessdial_notdialing";
constexpr char kResettingMarker[] = "/tmp/kvtswi.resetting";
constexpr char kLeaseCounter[] = "/tmp/udhcpc.wwan0.lfc";

constexpr char kStatusCommand[] = "AT$NWQMISTATUS";
constexpr char kConnectCommand[] = "AT$NWQMICONNECT=,,";
constexpr char kDisconnectCommand[] = "AT$NWQMIDISCONNECT";

constexpr char kStartLine[] = "udhcpc -T 3 -S -b -i wwan0 &> /dev/null";
constexpr char kTerminateLine[] = "kill `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kReleaseLine[] =
    "kill -USR2 `cat /var/run/udhcpc-wwan0.pid 2> /dev/null` &> /dev/null";
constexpr char kUpLine[] = "ifconfig wwan0 0.0.0.0 up &> /dev/null";
constexpr char kDownLine[] = "ifconfig wwan0 0.0.0.0 down &> /dev/null";
constexpr char kPingLine[] = "ping -c 1 -I wwan0 8.8.8.8 &> /dev/null";
constexpr char kResetLine[] = "ResetPCMCIA now &> /dev/null &";

constexpr char kRestarting[] = "LTE Connected returned 0, restarting connection";
constexpr char kGaveUp[] = "Failed to connect to LTE network 10 times, resetting modem";

// While the data call is up, a udhcpc that runs has an address on wwan0, at once; and bytes leave
// the interface all the time. The time of the network is not asked for.
class Carrier {
  public:
    explicit Carrier(rig::World& world);

  private:
    void Follow();

    rig::World& world_;
    bool call_is_up_ = false;
    bool client_runs_ = false;
};

// What the daemon did about the connection, in order: log lines of the connection ("log: ..."),
// shell lines but those of the SMS spool ("run: ...") and the commands to the data call and its APN
// ("modem: ...").
Lines ConnectionStory(const rig::World& world);

// The story from the first line that begins with `start` on, `count` lines of it.
Lines From(const Lines& story, const std::string& start, std::size_t count);

// How often the daemon has removed the file.
std::size_t CountRemovals(const rig::World& world, const std::string& path);
