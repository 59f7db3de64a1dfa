// The base of the data connection's tests: the daemon's globals, a router whose files live in the
// test's own folder, and one story of what happened, in order.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fakes/fixture.h"

using Lines = std::vector<std::string>;
using Levels = std::vector<int>;

constexpr std::int64_t kSecond = 1000000;       // of the world's clock
constexpr char kQuestion[] = "AT$NWQMISTATUS";  // is there a call?
constexpr char kPingLine[] = "ping -c 1 -I wwan0 8.8.8.8 &> /dev/null";

// The debug levels, of -1 to 4, at which a line is written.
inline const Levels kAlways = {-1, 0, 1, 2, 3, 4};
inline const Levels kNonZero = {-1, 1, 2, 3, 4};
inline const Levels kAbove0 = {1, 2, 3, 4};
inline const Levels kAbove1 = {2, 3, 4};

class ConnectionTest : public fake::DaemonTest {
  protected:
    ConnectionTest();
    ~ConnectionTest() override;

    // Files of the router, by the path that the daemon knows them by.
    void Put(const std::string& path, const std::string& text);
    std::string Get(const std::string& path) const { return ReadAll(Folder() + path); }
    bool Exists(const std::string& path) const;
    void Remove(const std::string& path);
    // Where a path of the router really is.
    std::string RealPath(const std::string& path) const { return Folder() + path; }

    // wwan0's IPv4 address, "10.64.0.2"; no address until one is set.
    void SetAddress(const std::string& dotted);
    void ClearAddress();
    // From now on no socket can be opened.
    void RefuseSockets();

    // Log lines ("log: ..."), shell lines ("run: ..."), commands that the modem heard
    // ("modem: ..."), files removed and rewritten ("remove: ...", "write: ..."), and pauses of
    // 100 ms and more ("sleep 5000 ms"). Pauses and file work divide the story into sections; in
    // a section log lines stand before shell lines, and shell lines before commands.
    Lines Story();
    // Forgets the story, the log, the shell lines and the commands so far.
    void StartStory();
    // The story of a child process that runs `action` until it exits, and its exit status as the
    // last line ("exit 0").
    Lines StoryToExit(const std::function<void()>& action);

    // The debug levels at which `action` writes exactly this line to the log.
    Levels LevelsThatLog(const std::string& line, const std::function<void()>& action);
};
