// A folder of a test's own.
#pragma once

#include <stdlib.h>

#include <stdexcept>
#include <string>

namespace machine {

// Makes one and returns its path: in memory where the machine has a place for that, since a disk
// that others keep busy makes a test wait for seconds; else where TMPDIR says, or in /tmp.
inline std::string MakeOwnFolder() {
    for (const char* place : {"/dev/shm", static_cast<const char*>(getenv("TMPDIR")), "/tmp"}) {
        if (place == nullptr || *place == '\0') continue;
        std::string path = std::string(place) + "/modemd-test-XXXXXX";
        if (mkdtemp(path.data()) != nullptr) return path;
    }
    throw std::runtime_error("no place for a folder: /dev/shm, TMPDIR, /tmp");
}

}  // namespace machine
