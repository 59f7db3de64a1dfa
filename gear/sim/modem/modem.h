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
#include <vector>

#include "sim/modem/announcements.h"
#include "sim/modem/boot.h"
#include "sim/modem/chance.h"
#include "sim/modem/chatter.h"
#include "sim/modem/dialogue.h"
#include "sim/modem/drive.h"
#include "sim/modem/line.h"
#include "sim/modem/overrides.h"
#include "sim/modem/pace.h"
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
    virtual ~Modem() = default;
    Modem(const Modem&) = delete;
    Modem& operator=(const Modem&) = delete;

    // Bytes from the host. NUL bytes are ignored, CR ends a command, a LF behind it is ignored.
    // A command that comes while another is at work waits for its turn.
    void Receive(std::string_view bytes, Micros now);

    // When it next has bytes to send or state to change; kNever when idle.
    Micros NextEvent() const;

    // Runs all that is due up to `now`; returns the bytes for the host.
    std::string Transmit(Micros now);

    // Overrides, for tests. The reply goes out byte for byte, in place of state and profile; one
    // that ends in "> " makes the modem take what follows as a message body. The command is
    // compared as NormaliseCommand leaves it, a '*' at its end stands for whatever follows, and
    // "<body>" is the answer to a message body.
    void Answer(const std::string& command, std::string reply, Micros delay = kUsualDelay) {
        overrides_.Always(command, std::move(reply), delay);
    }
    void AnswerOnce(const std::string& command, std::string reply, Micros delay = kUsualDelay) {
        overrides_.Once(command, std::move(reply), delay);
    }
    void Forget(const std::string& command) { overrides_.Forget(command); }

    // --- What happens to it -------------------------------------------------------------------
    void Advance(Micros now);
    State& Fate() { return state_; }  // to be changed at will; Changed() tells who must know
    void Changed();
    void Set(const std::string& setting, const std::string& value);
    void SetEcho(bool on) { state_.modes.echo = on; }
    void SetClock(std::int64_t unix_seconds, Micros now);
    void ReceiveSms(const std::string& from, const std::string& text);
    void SendUnsolicited(std::string_view line);
    void MakeNoise(int bytes);
    void FallSilent(Micros length);  // neither hears nor speaks
    bool Silent() const { return state_.now < silent_until_; }
    void Restart(Micros length);  // as after power-on: it takes this long until all is there
    void Unplug();
    // Back in, at the port it had or at another: /dev/ttyUSB0 is /dev/ttyUSB1 then.
    void Plug(std::optional<int> port_number = std::nullopt);
    Drive& GetDrive() { return drive_; }

    // --- What can be seen of it ---------------------------------------------------------------
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
    std::optional<int> PortNumber() const { return port_number_; }  // nothing: the usual one
    bool LosesWhatNobodyReads() const { return line_.HasRate(); }
    const std::string& Name() const { return profile_.name; }

    std::function<void(bool up)> on_call;  // the host's link came up or went down
    std::function<void(const HeardCommand&)> on_heard;

  protected:
    // A step of the drive is a line for whoever plays the modem's fate; a modem alone has nobody.
    virtual void RunDriveStep(const std::string& /*line*/) {}

  private:
    // The answer under way; the next command waits until it is out.
    struct Pending {
        Micros at;                       // when the first piece is due
        std::deque<std::string> pieces;  // more than one of a list that comes in pieces
        bool body_follows;
    };

    void ApplySettings();
    void Start(Micros now);
    Micros NextChange() const;
    void RunDue();
    void ReadInput();
    void TakeLine(const std::string& line);
    void TakeBody(LineReader::Event event);
    void Begin(const std::string& command, const Reply& reply);
    std::deque<std::string> PiecesOf(const Reply& reply) const;
    void FinishPending();
    void Send(std::string_view bytes);
    void SendUnasked(std::string_view bytes);  // at once, or behind a message under way
    void Hear(const std::string& line);
    void PowerOn();
    void StepBoot();

    Reply ReplyToLine(const std::string& command);
    Reply ReplyOrError(const std::string& command);
    std::optional<Reply> ReplyToCommand(const std::string& command);

    Profile profile_;
    State state_;
    LineReader reader_;
    Overrides overrides_;
    Announcements announcements_;
    Drive drive_;
    Pacer pacer_;
    Chatter chatter_;
    Boot boot_;
    Chance pauses_;
    std::mt19937_64 noise_;
    bool started_ = false;
    bool plugged_ = true;
    bool doubled_echo_ = false;
    std::optional<int> port_number_;

    std::string input_;  // bytes behind the command at work
    std::optional<Pending> pending_;
    Line line_;         // to the host
    std::string held_;  // unsolicited lines that wait for the end of a message body
    Micros silent_until_ = 0;

    std::vector<HeardCommand> heard_;
    std::size_t heard_limit_ = SIZE_MAX;
    std::vector<std::string> unexpected_;
};

}  // namespace sim
