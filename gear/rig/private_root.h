// A root of its own for a test program: private mount, pid and network namespaces in which the
// folders that the daemon works in are empty and in memory. Works for root, and for a normal user
// where the kernel allows user namespaces. The machine's files, clock and network stay out of
// reach: CAP_SYS_TIME is dropped, and the only network device is a loopback that is down. Why this
// is not bwrap's work: docs/testing.md.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace rig {

// What RunInPrivateRoot returns where such a root cannot be had. CTest counts a test that ends with
// it as skipped, see cmake/discover_cases.cmake.
constexpr int kNoPrivateRoot = 77;

// Runs `body` in such a root, as a process of its own, and returns its exit status; kNoPrivateRoot,
// with the reason on standard error, where the machine does not let it be made. Folders in `keep`,
// and the current one, stay reachable under their names even when they lie in a folder that is
// covered.
int RunInPrivateRoot(std::vector<std::string> keep, const std::function<int()>& body);

// Removes all that lies in the private folders: /var/log, /var/run, /tmp, /etc/kvt and /etc/ssh.
// Kept folders are left alone. Does nothing outside a private root.
void EmptyPrivateFolders();

// True behind RunInPrivateRoot. Nothing of the rig writes an absolute path elsewhere.
bool InPrivateRoot();

}  // namespace rig
