#include "sim/program/control_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace sim {

namespace {

constexpr std::size_t kLongestLine = 256 * 1024;
constexpr std::size_t kMostClients = 16;

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
    throw std::runtime_error(path + ": " + why);
}

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) Fail(path, "not a usable path");
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

const sockaddr* Plain(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

int NewSocket(int flags) {
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
}

bool SomebodyAnswers(const sockaddr_un& address) {
    const int probe = NewSocket(0);
    const bool answers = connect(probe, Plain(address), sizeof(address)) == 0;
    close(probe);
    return answers;
}

// A socket of our own that nobody serves any more is swept away; anything else stays.
void ClearPath(const std::string& path, const sockaddr_un& address) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return;
    if (!S_ISSOCK(status.st_mode) || status.st_uid != geteuid()) Fail(path, "is in the way");
    if (SomebodyAnswers(address)) Fail(path, "another modem answers here");
    unlink(path.c_str());
}

bool WouldBlock() {
    return errno == EAGAIN || errno == EINTR;
}

}  // namespace

ControlSocket::ControlSocket(std::string path, Answerer answerer)
    : path_(std::move(path)), answerer_(std::move(answerer)) {
    const sockaddr_un address = AddressOf(path_);
    ClearPath(path_, address);
    listener_ = NewSocket(SOCK_NONBLOCK);
    const mode_t before = umask(0177);  // mode 0600 from the first moment
    const bool bound = bind(listener_, Plain(address), sizeof(address)) == 0;
    const int why = errno;
    umask(before);
    if (!bound || listen(listener_, 8) != 0) {
        close(listener_);
        Fail(path_, std::strerror(bound ? errno : why));
    }
}

ControlSocket::~ControlSocket() {
    for (const Client& client : clients_) close(client.descriptor);
    close(listener_);
    unlink(path_.c_str());
}

void ControlSocket::AddTo(std::vector<pollfd>* polled) const {
    const bool room = clients_.size() < kMostClients;
    polled->push_back({listener_, static_cast<short>(room ? POLLIN : 0), 0});
    for (const Client& client : clients_) {
        const short wanted = client.answered ? POLLOUT : POLLIN;
        polled->push_back({client.descriptor, wanted, 0});
    }
}

void ControlSocket::Handle(const std::vector<pollfd>& polled) {
    const auto events_of = [&polled](int descriptor) -> short {
        for (const pollfd& entry : polled) {
            if (entry.fd == descriptor) return entry.revents;
        }
        return 0;
    };
    for (auto client = clients_.begin(); client != clients_.end();) {
        const short events = events_of(client->descriptor);
        if (events == 0 || Serve(&*client, events)) {
            ++client;
        } else {
            close(client->descriptor);
            client = clients_.erase(client);
        }
    }
    if (events_of(listener_) != 0) Accept();
}

void ControlSocket::Accept() {
    const int descriptor = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor >= 0) clients_.push_back({descriptor, "", ""});
}

bool ControlSocket::Serve(Client* client, short events) {
    if (!client->answered) {
        char buffer[4096];
        const ssize_t count = recv(client->descriptor, buffer, sizeof(buffer), 0);
        if (count < 0) return WouldBlock();
        client->asked.append(buffer, static_cast<std::size_t>(count));
        if (client->asked.size() > kLongestLine) return false;
        const std::size_t end = client->asked.find('\n');
        if (end == std::string::npos && count > 0) return true;
        client->answer = answerer_(client->asked.substr(0, end)) + "\n";
        client->answered = true;
    } else if ((events & POLLOUT) == 0) {
        return false;
    }
    const ssize_t count =
        send(client->descriptor, client->answer.data(), client->answer.size(), MSG_NOSIGNAL);
    if (count < 0) return WouldBlock();
    client->answer.erase(0, static_cast<std::size_t>(count));
    return !client->answer.empty();
}

std::string DefaultControlPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && runtime[0] == '/') return std::string(runtime) + "/modem-sim.ctl";
    return "/tmp/modem-sim-" + std::to_string(getuid()) + ".ctl";
}

std::string AskModem(const std::string& path, const std::string& line) {
    const sockaddr_un address = AddressOf(path);
    const int descriptor = NewSocket(0);
    if (connect(descriptor, Plain(address), sizeof(address)) != 0) {
        const std::string why = std::strerror(errno);
        close(descriptor);
        Fail(path, "no modem answers (" + why + ")");
    }
    std::string rest = line + "\n";
    while (!rest.empty()) {
        const ssize_t count = send(descriptor, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (count <= 0) break;
        rest.erase(0, static_cast<std::size_t>(count));
    }
    std::string answer;
    char buffer[4096];
    for (ssize_t count; (count = recv(descriptor, buffer, sizeof(buffer), 0)) > 0;) {
        answer.append(buffer, static_cast<std::size_t>(count));
    }
    close(descriptor);
    if (answer.empty()) Fail(path, "no answer");
    answer.pop_back();
    return answer;
}

std::string ControlLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        if (!line.empty()) line += ' ';
        line += '"';
        for (const char c : word) {
            if (c == '\n') {
                line += "\\n";
            } else {
                if (c == '"') line += '\\';
                line += c;
            }
        }
        line += '"';
    }
    return line;
}

}  // namespace sim
