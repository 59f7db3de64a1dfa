// What a maker needs to see of a router, in a tar file without personal data.
//
// Unpacked it is a tree that every subcommand reads: modemctl why --root DIR.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "modemctl/anonymize.h"
#include "modemctl/command_line.h"
#include "modemctl/doctor.h"

namespace modemctl {

struct BundleFile {
    std::string path;  // as on the router
    std::string text;
    std::time_t modified = 0;
};

struct Bundle {
    std::vector<BundleFile> files;
    std::size_t left_out = 0;  // lines and values that could not be placed
};

Bundle MakeBundle(const Patient& patient, const std::vector<CheckedFinding>& findings,
                  Anonymizer& anonymizer);

// doctor --bundle FILE; "-" is standard output.
int WriteBundle(const Session& session, const Patient& patient,
                const std::vector<CheckedFinding>& findings);

// The files as one archive in the old tar format, which every tar reads.
std::string TarOf(const std::vector<BundleFile>& files);

}  // namespace modemctl
