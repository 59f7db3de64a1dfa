// A simulated cellular modem behind a byte stream. It has no thread and no clock of its own: the
// caller hands it bytes and the time, and asks when it next has something to say. The same inputs
// at the same times with the same seed give the same answers.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sim/modem/dialogue.h"
#include "sim/modem/profile.h"
#include "sim/modem/state.h"
#include "sim/modem/text.h"

namespace sim {

// One command line as heard, without line end and NUL padding.
struct HeardCommand {
    Micros at;
    std::string text;
};

class Modem {
  public:
    explicit Modem(Profile profile, std::uint64_t seed = 1);
    Modem(const Modem&) = delete;
    Modem& operator=(const Modem&) = delete;

    // Bytes from the host. NUL bytes are ignored, CR ends a command, a LF behind it is ignored.
    // A command that comes while another is at work waits for its turn.
    void Receive(std::string_view bytes, Micros now);

    // When it next has bytes to send or state to change; kNever when idle.
    Micros NextEvent() const;

    // Runs all that is due up to `now`; returns the bytes for the host.
    std::string Transmit(Micros now);

    // One line of the control language (see `help`): "ok", "ok: value" or "error: why".
    std::string Control(std::string_view line, Micros now);

    // Overrides, for tests. The reply goes out byte for byte, in place of state and profile; one
    // that ends in "> " makes the modem take what follows as a message body. The command is
    // compared as NormaliseCommand leaves it, a '*' at its end stands for whatever follows, and
    // "<body>" is the answer to a message body.
    void Answer(const std::string& command, std::string reply, Micros delay = kUsualDelay);
    void AnswerOnce(const std::string& command, std::string reply, Micros delay = kUsualDelay);
    void Forget(const std::string& command);

    void SetEcho(bool on) { state_.modes.echo = on; }
    void SetClock(std::int64_t unix_seconds, Micros now);

    // What was heard since the last ClearHeard. With a limit of n at least the newest n lines are
    // kept, with 0 none.
    const std::vector<HeardCommand>& Heard() const { return heard_; }
    void ClearHeard() { heard_.clear(); }
    void SetHeardLimit(std::size_t lines) { heard_limit_ = lines; }

    // Commands that neither override, state nor profile knew; they were answered ERROR. The first
    // 5000 are kept.
    const std::vector<std::string>& Unexpected() const { return unexpected_; }

    const std::vector<SentSms>& SentMessages() const { return state_.sent; }
    const State& GetState() const { return state_; }
    bool Plugged() const { return plugged_; }
    const std::string& Name() const { return profile_.name; }

    std::function<void(bool up)> on_call;  // the host's link came up or went down
    std::function<void(const HeardCommand&)> on_heard;

  private:
    friend class ControlLanguage;

    struct Override {
        std::string reply;
        Micros delay;
    };
    struct Overrides {
        std::deque<Override> once;
        std::optional<Override> always;
        bool HasReply() const { return !once.empty() || always; }
    };
    // The answer under way; the next command waits until it is out.
    struct Pending {
        Micros at;
        std::string bytes;
        bool body_follows;
    };
    // What the host was last told without asking.
    struct Announced {
        int registration;
        unsigned lac, cell;
        int csq;
    };

    void ApplySettings();
    void Start(Micros now);
    Micros NextChange() const;
    void Advance(Micros now);
    void RunDue();
    void ReadInput();
    void TakeLine(const std::string& line);
    void TakeBody(LineReader::Event event);
    void Begin(const Reply& reply);
    void FinishPending();
    void Send(std::string_view bytes);
    void SendUnsolicited(std::string_view line);
    void Hear(const std::string& line);

    Reply ReplyToLine(const std::string& command);
    Reply ReplyOrError(const std::string& command);
    std::optional<Reply> ReplyToCommand(const std::string& command);
    std::optional<Reply> TakeOverride(const std::string& command);
    std::optional<Reply> AnswerFromProfile(const std::vector<ScriptedAnswer>& answers) const;
    Overrides* FindOverrides(const std::string& command);
    std::string Remember(const std::string& command);

    bool Silent() const { return state_.now < silent_until_; }
    Announced Now() const;
    void Changed();  // after any change of the state: tells the host and the data call
    void AnnounceRegistration(const char* name, int mode, bool registered, bool moved);
    void PowerOn();
    void Unplug();
    void Plug();
    void ReceiveSms(const std::string& from, const std::string& text);
    void StartDrive(bool on);
    void RunDriveStep();

    Profile profile_;
    State state_;
    LineReader reader_;
    std::mt19937_64 noise_;
    bool started_ = false;
    bool plugged_ = true;

    std::string input_;  // bytes behind the command at work
    std::optional<Pending> pending_;
    std::string output_;  // ready for the host
    std::string held_;    // unsolicited lines that wait for the end of a message body
    Micros silent_until_ = 0;
    Announced announced_{};

    bool driving_ = false;
    Micros drive_started_ = 0;
    std::size_t drive_step_ = 0;

    std::unordered_map<std::string, Overrides> overrides_;
    std::vector<std::string> override_patterns_;  // those keys of overrides_ that end in '*'
    std::vector<HeardCommand> heard_;
    std::size_t heard_limit_ = SIZE_MAX;
    std::vector<std::string> unexpected_;
};

}  // namespace sim
