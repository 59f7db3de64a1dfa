// A spool of the test's own: every path below /tmp/sms that the daemon opens, lists, looks at or
// deletes is led into the test's folder, so that no test touches the machine's spool.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "fakes/fixture.h"
#include "sms/spool.h"

// A message to 123, "Hello", as the modem hears it.
constexpr char kCommand[] = "AT+CMGS=\"123\"";
constexpr char kBody[] = "Hello\x1a";  // without line ends
constexpr char kDeleteSent[] = "AT+CMGD=0,2";

class SpoolTest : public fake::DaemonTest {
  protected:
    SpoolTest();
    ~SpoolTest() override;

    // Paths are given as the daemon spells them, "/tmp/sms/send/name".
    static void Put(const std::string& path, const std::string& text);
    static void PutToSend(const std::string& name, const std::string& text);
    static std::string Content(const std::string& path);
    static bool Exists(const std::string& path);
    // All entries of a directory, in the order the system returns them.
    static std::vector<std::string> Names(const std::string& directory);
    // A symbolic link at `path`; the target is taken as it stands.
    static void Link(const std::string& target, const std::string& path);
    // Where the path really lies.
    static std::string Real(const std::string& path);

    // The file's status changed so many seconds before the test's now. A file that was given no
    // age has just changed.
    static void SetAge(const std::string& path, std::time_t seconds);
    // The path belongs to a user who is neither root nor the daemon's.
    static void GiveToSomebody(const std::string& path);
    // With all that is in it.
    static void RemoveDirectory(const std::string& path);
};
