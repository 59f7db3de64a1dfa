// Everything about wwan0 but its traffic; the only socket of the daemon.

#include "connection/wwan_interface.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "state/published.h"
#include "support/shell.h"
#include "support/text.h"

int BringWwanUp() {
    return RunShell(Format("ifconfig %s 0.0.0.0 up &> /dev/null", published::kWwanInterface));
}

void TakeWwanDown() {
    RunShell(Format("ifconfig %s 0.0.0.0 down &> /dev/null", published::kWwanInterface));
}

std::uint32_t GetInterfaceIpv4Address(const std::string& interface_name) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return 0;
    ifreq request = {};
    std::strncpy(request.ifr_name, interface_name.c_str(), sizeof(request.ifr_name) - 1);
    request.ifr_addr.sa_family = AF_INET;
    std::uint32_t address = 0;
    if (ioctl(fd, SIOCGIFADDR, &request) == 0) {
        sockaddr_in internet = {};
        std::memcpy(&internet, &request.ifr_addr, sizeof(internet));
        address = ntohl(internet.sin_addr.s_addr);
    }
    close(fd);
    return address;
}
