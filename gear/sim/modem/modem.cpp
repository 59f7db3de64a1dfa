#include "sim/modem/modem.h"

#include <algorithm>

#include "sim/modem/commands.h"
#include "sim/modem/message_commands.h"
#include "sim/modem/profile_answers.h"

namespace sim {

namespace {

// What a host may send ahead while a command is at work; the rest is lost, as in a real modem.
constexpr std::size_t kInputRoom = 65536;

// A host may ask the same wrong thing for days; the first few thousand tell enough.
constexpr std::size_t kMostUnexpected = 5000;

constexpr const char* kBodyKey = "<BODY>";

}  // namespace

Modem::Modem(Profile profile, std::uint64_t seed)
    : profile_(std::move(profile)),
      drive_(profile_.drive),
      pacer_(seed),
      chatter_(seed + 1),
      boot_(seed + 2),
      pauses_(seed + 3),
      noise_(seed) {
    state_.settings = profile_.settings;
    state_.contexts = profile_.contexts;
    state_.seed = seed;
    Radio& radio = state_.radio;
    if (ReadAccess(state_.Setting("best-access"), &radio.access)) radio.best_access = radio.access;
    radio.csq = ParseInt(state_.Setting("signal")).value_or(radio.csq);
    ApplySettings();
    state_.call.on_link = [this](bool up) {
        if (on_call) on_call(up);
    };
}

void Modem::Receive(std::string_view bytes, Micros now) {
    Advance(now);
    if (!plugged_) return;
    input_.append(bytes.substr(0, kInputRoom - std::min(kInputRoom, input_.size())));
    ReadInput();
}

Micros Modem::NextEvent() const {
    if (!started_) return state_.IsOn("drive") ? 0 : kNever;
    return std::min(line_.Next(), NextChange());
}

std::string Modem::Transmit(Micros now) {
    Advance(now);
    return line_.Take(state_.now);
}

void Modem::SetClock(std::int64_t unix_seconds, Micros now) {
    Advance(now);
    state_.clock.Set(unix_seconds, state_.now);
}

void Modem::Changed() {
    for (const std::string& line : announcements_.News(state_)) SendUnsolicited(line);
    state_.call.ServiceChanged(state_.radio.HasService(), state_.now);
}

void Modem::Set(const std::string& setting, const std::string& value) {
    state_.settings[setting] = value;
    ApplySettings();
}

void Modem::ReceiveSms(const std::string& from, const std::string& text) {
    state_.sms.Deliver({SmsState::kUnread, from, state_.clock.Stamp(state_.now), text});
}

void Modem::SendUnsolicited(std::string_view line) {
    SendUnasked(FrameUnsolicited(line));
}

void Modem::SendUnasked(std::string_view bytes) {
    const bool in_message = reader_.InBody() || (pending_ && pending_->body_follows);
    if (in_message) {
        held_ += bytes;
    } else {
        Send(bytes);
    }
}

void Modem::MakeNoise(int bytes) {
    std::string noise;
    for (int i = 0; i < bytes; ++i) noise += static_cast<char>(noise_() >> 56);
    Send(noise);
}

void Modem::FallSilent(Micros length) {
    silent_until_ = state_.now + length;
}

void Modem::Restart(Micros length) {
    PowerOn();
    state_.modes.cmee = 1;
    state_.clock.Lose(state_.now);
    state_.radio.Register(Registration::kSearching);
    boot_.Start(state_.now, length);
    FallSilent(boot_.Next() - state_.now);
}

void Modem::StepBoot() {
    for (const std::string& line : boot_.Step()) SendUnsolicited(line);
    if (boot_.GetPhase() != Boot::Phase::kDone) return;
    state_.clock.HearTheTime();
    state_.radio.Register(Registration::kHome);
    Changed();
}

void Modem::Unplug() {
    plugged_ = false;
    line_.Clear();
    state_.call.Drop(kEndedByClient, state_.now);
}

void Modem::Plug(std::optional<int> port_number) {
    if (plugged_) return;
    plugged_ = true;
    port_number_ = port_number;
    silent_until_ = 0;
    PowerOn();
}

// Those settings that are the modem's habits, not its state at power-on.
void Modem::ApplySettings() {
    state_.clock.SetZone(ParseInt(state_.Setting("timezone")).value_or(0));
    state_.call.SetTimes(
        ParseDuration(state_.Setting("connect-time")).value_or(1500 * kMillisecond),
        ParseDuration(state_.Setting("disconnect-time")).value_or(400 * kMillisecond),
        ParseDuration(state_.Setting("call-survives")).value_or(60 * kSecond));
    state_.prompt_delay =
        ParseDuration(state_.Setting("prompt-delay")).value_or(state_.prompt_delay);
    state_.send_delay = ParseDuration(state_.Setting("send-delay")).value_or(state_.send_delay);
    pacer_.Set(ReadPace(state_.Setting("pace")).value_or(Pace::kPolite));
    chatter_.SetGap(ParseDuration(state_.Setting("unasked")).value_or(0), state_.now);
    line_.SetRate(ParseInt(state_.Setting("line-rate")).value_or(0));
    doubled_echo_ = state_.Setting("form.echo") == "doubled";
}

void Modem::Start(Micros now) {
    started_ = true;
    state_.now = now;
    state_.powered_at = now;
    state_.clock.Set(state_.clock.UnixSeconds(0), now);
    announcements_.Forget(state_);
    if (state_.IsOn("drive")) drive_.Start(now);
}

Micros Modem::NextChange() const {
    const Micros next =
        std::min({state_.call.Next(), drive_.Next(), chatter_.Next(), boot_.Next()});
    return pending_ ? std::min(next, pending_->at) : next;
}

void Modem::Advance(Micros now) {
    if (!started_) Start(now);
    for (Micros next = NextChange(); next <= now; next = NextChange()) {
        state_.now = std::max(next, state_.now);
        RunDue();
    }
    state_.now = std::max(now, state_.now);
}

void Modem::RunDue() {
    if (pending_ && pending_->at <= state_.now) FinishPending();
    if (state_.call.Next() <= state_.now) state_.call.Run(state_.now);
    if (drive_.Next() <= state_.now) RunDriveStep(drive_.Take(state_.now));
    if (boot_.Next() <= state_.now) StepBoot();
    if (chatter_.Next() <= state_.now) SendUnasked(chatter_.Take(state_));
}

void Modem::ReadInput() {
    std::size_t used = 0;
    std::string echo;
    while (!pending_ && used < input_.size()) {
        echo.clear();
        const LineReader::Event event = reader_.Take(input_[used++], &echo);
        if (doubled_echo_ && echo == "\r") echo = "\r\r\n";
        if (state_.modes.echo) Send(echo);
        switch (event) {
            case LineReader::Event::kNothing:
                break;
            case LineReader::Event::kLine:
                TakeLine(Trim(reader_.Text()));
                break;
            case LineReader::Event::kBody:
            case LineReader::Event::kCancelled:
                TakeBody(event);
                break;
        }
    }
    input_.erase(0, used);
}

void Modem::TakeLine(const std::string& line) {
    if (line.empty()) return;
    Hear(line);
    if (Silent()) return;
    const std::string command = NormaliseCommand(line);
    if (StartsWith(command, "AT")) {
        Begin(command, ReplyToLine(command));
    } else if (const auto reply = overrides_.Take(command)) {
        Begin(command, *reply);
    }
}

void Modem::TakeBody(LineReader::Event event) {
    if (Silent()) return;
    if (event == LineReader::Event::kCancelled) {
        Begin("AT", Ok());  // as quick as any command
    } else if (const auto reply = overrides_.Take(kBodyKey)) {
        Begin("", *reply);
    } else {
        Begin("", FinishMessage(state_, reader_.Text()));
    }
}

void Modem::Begin(const std::string& command, const Reply& reply) {
    pending_ = Pending{state_.now + pacer_.DelayOf(command, reply), PiecesOf(reply), reply.prompt};
    if (!reply.prompt && chatter_.Interrupts()) Send(chatter_.Take(state_));
}

// A list is cut before each of its entries.
std::deque<std::string> Modem::PiecesOf(const Reply& reply) const {
    const std::string bytes = Frame(reply, state_.modes);
    if (!reply.is_list || !state_.IsOn("pieces")) return {bytes};
    const std::string entry = "\r\n" + reply.info.substr(0, reply.info.find(':') + 1);
    std::deque<std::string> pieces;
    std::size_t at = 0;
    for (;;) {
        const std::size_t next = bytes.find(entry, at + entry.size());
        if (reply.info.empty() || next == bytes.npos) break;
        pieces.push_back(bytes.substr(at, next + 2 - at));
        at = next + 2;
    }
    pieces.push_back(bytes.substr(at));
    return pieces;
}

void Modem::FinishPending() {
    constexpr Micros kShortestPause = 51 * kMillisecond;
    constexpr Micros kLongestPause = 300 * kMillisecond;
    Send(pending_->pieces.front());
    pending_->pieces.pop_front();
    if (!pending_->pieces.empty()) {
        pending_->at = state_.now + pauses_.Between(kShortestPause, kLongestPause);
        return;
    }
    const bool body_follows = pending_->body_follows;
    pending_.reset();
    if (body_follows && !Silent()) {
        reader_.ExpectBody();
        if (!input_.empty() && pacer_.LosesEarlyText()) input_.clear();
    } else {
        Send(std::exchange(held_, {}));
    }
    Changed();
    ReadInput();
}

void Modem::Send(std::string_view bytes) {
    if (plugged_ && !Silent()) line_.Put(bytes, state_.now);
}

void Modem::Hear(const std::string& line) {
    const HeardCommand heard{state_.now, line};
    if (on_heard) on_heard(heard);
    if (heard_limit_ == 0) return;
    if (heard_.size() / 2 >= heard_limit_) {
        heard_.erase(heard_.begin(), heard_.end() - static_cast<std::ptrdiff_t>(heard_limit_));
    }
    heard_.push_back(heard);
}

// Commands may share a line, as in "AT+CMEE=1;+CREG?": the answers are joined, and the first
// that fails ends the line.
Reply Modem::ReplyToLine(const std::string& command) {
    const std::vector<std::string> parts = SplitOutsideQuotes(command.substr(2), ';');
    if (parts.size() == 1) return ReplyOrError(command);
    if (auto reply = overrides_.Take(command)) return *reply;
    Reply whole;
    for (const std::string& part : parts) {
        const Reply reply = ReplyOrError("AT" + part);
        if (!whole.info.empty() && !reply.info.empty()) whole.info += "\r\n";
        whole.info += reply.info;
        whole.delay = std::max(whole.delay, reply.delay);
        whole.result = reply.result;
        if (whole.result != "OK") break;
    }
    return whole;
}

Reply Modem::ReplyOrError(const std::string& command) {
    if (auto reply = ReplyToCommand(command)) return *reply;
    if (unexpected_.size() < kMostUnexpected) unexpected_.push_back(command);
    return Error();
}

std::optional<Reply> Modem::ReplyToCommand(const std::string& command) {
    if (auto reply = overrides_.Take(command)) return reply;
    if (auto reply = boot_.Refuse(command)) return reply;
    if (auto reply = AnswerExactly(profile_, state_, command)) return reply;
    if (auto reply = RunBuiltIn(state_, command)) return reply;
    return AnswerByPattern(profile_, state_, command);
}

// What the host has chosen is forgotten; what a modem keeps in its flash stays.
void Modem::PowerOn() {
    state_.modes = Modes();
    state_.powered_at = state_.now;
    state_.call.Drop(kEndedByClient, state_.now);
    reader_.Reset();
    pending_.reset();
    input_.clear();
    held_.clear();
    announcements_.Forget(state_);
}

}  // namespace sim
