// The LTE cards' network interface: up, down, and its address.
#pragma once

#include <cstdint>
#include <string>

// Up, without an address. Returns what the shell returned: not 0 when there is no such interface.
int BringWwanUp();
// Down, without an address.
void TakeWwanDown();

// The interface's IPv4 address in host order; 0 when it has none or cannot be asked.
std::uint32_t GetInterfaceIpv4Address(const std::string& interface_name);
