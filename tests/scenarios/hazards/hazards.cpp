#include "hazards.h"

#include <sstream>

std::string Published(const std::string& key) {
    std::istringstream lines(rig::Files::Read(kStatistics));
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, key.size() + 1, key + "=") == 0) return line.substr(key.size() + 1);
    }
    return "no " + key;
}
