// The APN of the LTE cards, kept by the modem in context 3.

#include "connection/apn_provisioning.h"

#include <unistd.h>

#include <string>

#include "modem/at_channel.h"
#include "state/settings.h"
#include "support/system_log.h"

namespace {

constexpr char kProfilePrefix[] = "AT+NWAPNE=3,\"";
constexpr char kProfileSuffix[] =
    "\",True,1439,V4,0.0.0.0,0.0.0.0,0:0:0:0:0:0:0:0,0:0:0:0:0:0:0:0,HRPD_EHRPD";
constexpr char kContextPrefix[] = "AT+CGDCONT=3,\"ipv4v6\",\"";
constexpr char kContextSuffix[] = "\"";
constexpr useconds_t kCommandPause = 20000;  // microseconds

}  // namespace

void SetApnContext3() {
    const std::string& apn = g_S_PppConfig.apn;
    if (apn.empty() || !IsLteCard()) return;
    Log("Setting Context 3 APN to '%s'", apn.c_str());
    SendAtCommand(kProfilePrefix + apn + kProfileSuffix, 0);
    usleep(kCommandPause);
    SendAtCommand(kContextPrefix + apn + kContextSuffix, 0);
    SendCommandType(kSendDataCallDisconnect);
}
