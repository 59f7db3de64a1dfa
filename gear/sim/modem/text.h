// Small text functions that every room of the simulated modem shares.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

using Micros = std::int64_t;  // microseconds of the caller's clock, which never goes back
constexpr Micros kNever = INT64_MAX;
constexpr Micros kSecond = 1'000'000;
constexpr Micros kMillisecond = 1'000;

std::string Lower(std::string_view text);
std::string Trim(std::string_view text);
bool StartsWith(std::string_view text, std::string_view start);

// A command as it is looked up: trimmed, and in capitals except between double quotes.
std::string NormaliseCommand(std::string_view line);

// Splits at `separator`, but not between double quotes; the quotes stay.
std::vector<std::string> SplitOutsideQuotes(std::string_view text, char separator);

// The parameters of a command, separated by commas: blanks around them and the quotes are removed.
std::vector<std::string> SplitParameters(std::string_view text);

// Words as a shell would see them: separated by blanks, double quotes keep blanks together, the
// escapes of Unescape are known in and out of quotes. Nothing when a quote is left open.
std::optional<std::vector<std::string>> SplitWords(std::string_view line);

// \r \n \t \e \" \\ and \xHH; any other escape stays as it is written.
std::string Unescape(std::string_view text);

// The whole text as a number; nothing when it is not one, or does not fit.
std::optional<int> ParseInt(std::string_view text, int base = 10);

// "300ms", "30s", "5m", "2h", "1d"; a number alone means seconds. Nothing when it is not a
// duration, negative, or longer than ten years.
std::optional<Micros> ParseDuration(std::string_view text);

// At most 1000 characters of printf output.
std::string Print(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace sim
