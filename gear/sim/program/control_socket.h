// The control language over a local socket: one line asked, its answer, end. Only the owner of the
// socket can open it.
#pragma once

#include <poll.h>

#include <functional>
#include <list>
#include <string>
#include <vector>

namespace sim {

class ControlSocket {
  public:
    using Answerer = std::function<std::string(const std::string& line)>;

    // Takes over a socket that a dead modem left behind. Throws std::runtime_error when the path
    // cannot be used, is taken by something else, or a living modem answers there.
    ControlSocket(std::string path, Answerer answerer);
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    void AddTo(std::vector<pollfd>* polled) const;
    void Handle(const std::vector<pollfd>& polled);

  private:
    struct Client {
        int descriptor;
        std::string asked;
        std::string answer;
        bool answered = false;
    };

    void Accept();
    bool Serve(Client* client, short events);  // false: done with it

    std::string path_;
    Answerer answerer_;
    int listener_ = -1;
    std::list<Client> clients_;
};

// $XDG_RUNTIME_DIR/modem-sim.ctl, or /tmp/modem-sim-UID.ctl.
std::string DefaultControlPath();

// Asks one line and returns the answer. Throws std::runtime_error when nobody answers.
std::string AskModem(const std::string& path, const std::string& line);

// The words of a command line as one line of the control language.
std::string ControlLine(const std::vector<std::string>& words);

}  // namespace sim
