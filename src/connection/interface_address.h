#pragma once

#include <cstdint>
#include <string>

// The interface's IPv4 address in host order; 0 when it has none or the query fails.
std::uint32_t GetInterfaceIpv4Address(const std::string& interface_name);
