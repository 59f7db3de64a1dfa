// capture: turns the daemon's log at debug level 4 into a story that can be replayed.

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

#include "capture/convert.h"

namespace {

constexpr char kUsage[] =
    "Usage: capture [--profile] [--keep WORD]... LOG\n"
    "\n"
    "Writes the dialogue between modemd and its modem, out of a system log written at debug level "
    "4,\n"
    "as a story for gear/capture/replay; with --profile as a profile for modem-sim. \"-\" reads\n"
    "standard input. Identities are replaced; what may be one and cannot be placed is refused,\n"
    "unless --keep says that the word is harmless. Then nothing is written, and the status is 1.\n";

int Fail(const std::string& why) {
    std::cerr << "capture: " << why << "\n";
    return 1;
}

bool ReadAll(const std::string& path, std::string& text) {
    std::ifstream file;
    if (path != "-") file.open(path, std::ios::binary);
    std::istream& input = path == "-" ? std::cin : file;
    if (!input) return false;
    text.assign(std::istreambuf_iterator<char>(input), {});
    return !input.bad();
}

}  // namespace

int main(int argc, char** argv) {
    setenv("TZ", "UTC", 1);  // stamps without a zone are the router's own time
    capture::Request request;
    std::string path;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--profile") {
            request.as_profile = true;
        } else if (word == "--keep" && i + 1 < argc) {
            request.harmless.insert(argv[++i]);
        } else if (path.empty() && (word == "-" || word[0] != '-')) {
            path = word;
        } else {
            std::cerr << kUsage;
            return word == "--help" ? 0 : 2;
        }
    }
    if (path.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    std::string log;
    if (!ReadAll(path, log)) return Fail("cannot read " + path + ": " + std::strerror(errno));
    request.name = path;
    request.now = std::time(nullptr);
    request.key = modemctl::Anonymizer::NewKey();
    const capture::Result result = capture::Convert(log, request);
    for (const std::string& complaint : result.complaints) std::cerr << complaint << "\n";
    if (result.text.empty()) return Fail("nothing written");
    std::cout << result.text << std::flush;
    return std::cout ? 0 : Fail("cannot write");
}
