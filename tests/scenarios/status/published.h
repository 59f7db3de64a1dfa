// What the stories of this folder share: how a modem answers, and whole published files.
#pragma once

#include <string>
#include <vector>

#include "rig/world.h"

using Lines = std::vector<std::string>;
// Lines of a file that change: "KEY=value" replaces each line of that key, a lone "KEY" takes it
// out.
using Changes = std::vector<std::string>;

// From now on the modem answers this command with these lines and OK; a lone "ERROR" is the whole
// answer.
struct Reply {
    std::string command;
    Lines lines;
};

std::string Answered(const Lines& lines);
void Teach(rig::World& world, const std::vector<Reply>& replies);

std::string With(const std::string& text, const Changes& changes);

// The newest statistics file, which must be watched, reads so; `text` is without the first line.
// The first line must tell when the file was made.
void ExpectStatistics(const rig::World& world, const std::string& text);
void ExpectStatistics(const rig::FileVersion& version, const std::string& text);

constexpr char kStatistics[] = "/var/log/wireless.cardstats";
