// Logs as they come from the field, line by line.
#pragma once

#include <string>

#include "capture/convert.h"

constexpr std::time_t kNow = 1773480000;  // 2026-03-14 09:20:00 UTC
constexpr char kHead[] = "Mar 14 09:15:00 router modemd[42]: ";

// The dump of bytes that were read.
std::string Dump(const std::string& bytes);

// "Sending command", one read, and how many bytes it was.
std::string Asked(const std::string& command, const std::string& answer);

// Converted with the same key each time.
capture::Result ConvertLog(const std::string& log, std::set<std::string> harmless = {});

// The story of one command with one answer.
capture::Story StoryOf(const std::string& command, const std::string& answer);
