// The hazards of docs/hazards.md as an integrator meets them. What happens in these stories is
// meant to happen: other programs rely on the daemon as it is. A story that goes red tells that
// somebody has mended it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/world.h"

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

inline constexpr char kStatistics[] = "/var/log/wireless.cardstats";
inline constexpr char kProvisioning[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
inline constexpr char kPpp[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
inline constexpr char kReset[] = "Resetting device";

// The published value, of the file as it is now; "no KEY" when the file has no such line.
std::string Published(const std::string& key);
