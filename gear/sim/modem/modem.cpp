#include "sim/modem/modem.h"

#include <algorithm>

#include "sim/modem/commands.h"
#include "sim/modem/values.h"

namespace sim {

namespace {

// What a host may send ahead while a command is at work; the rest is lost, as in a real modem.
constexpr std::size_t kInputRoom = 65536;

// A host may ask the same wrong thing for days; the first few thousand tell enough.
constexpr std::size_t kMostUnexpected = 5000;

constexpr const char* kBodyKey = "<BODY>";

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

Modem::Modem(Profile profile, std::uint64_t seed) : profile_(std::move(profile)), noise_(seed) {
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
    if (!output_.empty()) return state_.now;
    if (!started_) return state_.IsOn("drive") ? 0 : kNever;
    return NextChange();
}

std::string Modem::Transmit(Micros now) {
    Advance(now);
    return std::exchange(output_, {});
}

void Modem::SetClock(std::int64_t unix_seconds, Micros now) {
    Advance(now);
    state_.clock.Set(unix_seconds, state_.now);
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
}

void Modem::Start(Micros now) {
    started_ = true;
    state_.now = now;
    state_.powered_at = now;
    state_.clock.Set(state_.clock.UnixSeconds(0), now);
    announced_ = Now();
    if (state_.IsOn("drive")) StartDrive(true);
}

Micros Modem::NextChange() const {
    Micros next = state_.call.Next();
    if (pending_) next = std::min(next, pending_->at);
    if (driving_) next = std::min(next, drive_started_ + profile_.drive[drive_step_].at);
    return next;
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
    if (driving_ && drive_started_ + profile_.drive[drive_step_].at <= state_.now) RunDriveStep();
}

void Modem::ReadInput() {
    std::size_t used = 0;
    std::string echo;
    while (!pending_ && used < input_.size()) {
        echo.clear();
        const LineReader::Event event = reader_.Take(input_[used++], &echo);
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
        Begin(ReplyToLine(command));
    } else if (const auto reply = TakeOverride(command)) {
        Begin(*reply);
    }
}

void Modem::TakeBody(LineReader::Event event) {
    if (Silent()) return;
    if (event == LineReader::Event::kCancelled) {
        Begin(Ok());
    } else if (const auto reply = TakeOverride(kBodyKey)) {
        Begin(*reply);
    } else {
        Begin(FinishMessage(state_, reader_.Text()));
    }
}

void Modem::Begin(const Reply& reply) {
    pending_ = Pending{state_.now + reply.delay, Frame(reply, state_.modes), reply.prompt};
}

void Modem::FinishPending() {
    const Pending answer = std::move(*pending_);
    pending_.reset();
    Send(answer.bytes);
    if (answer.body_follows && !Silent()) {
        reader_.ExpectBody();
    } else {
        Send(std::exchange(held_, {}));
    }
    if (state_.restart_wanted) PowerOn();
    Changed();
    ReadInput();
}

void Modem::Send(std::string_view bytes) {
    if (plugged_ && !Silent()) output_.append(bytes);
}

void Modem::SendUnsolicited(std::string_view line) {
    const bool in_message = reader_.InBody() || (pending_ && pending_->body_follows);
    if (in_message) {
        held_ += FrameUnsolicited(line);
    } else {
        Send(FrameUnsolicited(line));
    }
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
    if (auto reply = TakeOverride(command)) return *reply;
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
    if (auto reply = TakeOverride(command)) return reply;
    const auto scripted = profile_.answers.find(command);
    if (scripted != profile_.answers.end()) {
        if (auto reply = AnswerFromProfile(scripted->second)) return reply;
    }
    if (auto reply = RunBuiltIn(state_, command)) return reply;
    for (const auto& [start, answers] : profile_.patterns) {
        if (!StartsWith(command, start)) continue;
        if (auto reply = AnswerFromProfile(answers)) return reply;
    }
    return std::nullopt;
}

std::optional<Reply> Modem::AnswerFromProfile(const std::vector<ScriptedAnswer>& answers) const {
    for (const ScriptedAnswer& answer : answers) {
        if (!answer.when_name.empty() && Value(state_, answer.when_name) != answer.when_value) {
            continue;
        }
        Reply reply;
        reply.delay = answer.delay;
        reply.result = answer.result;
        std::string line;
        for (const std::string& text : answer.lines) {
            if (!Expand(state_, text, &line)) continue;
            if (!reply.info.empty()) reply.info += "\r\n";
            reply.info += line;
        }
        return reply;
    }
    return std::nullopt;
}

void Modem::Answer(const std::string& command, std::string reply, Micros delay) {
    overrides_[Remember(command)].always = Override{std::move(reply), delay};
}

void Modem::AnswerOnce(const std::string& command, std::string reply, Micros delay) {
    overrides_[Remember(command)].once.push_back({std::move(reply), delay});
}

void Modem::Forget(const std::string& command) {
    const std::string key = NormaliseCommand(command);
    overrides_.erase(key);
    override_patterns_.erase(std::remove(override_patterns_.begin(), override_patterns_.end(), key),
                             override_patterns_.end());
}

std::string Modem::Remember(const std::string& command) {
    const std::string key = NormaliseCommand(command);
    if (EndsWith(key, "*") && overrides_.count(key) == 0) override_patterns_.push_back(key);
    return key;
}

// An exact command goes before a pattern; what has nothing left to say is passed over.
Modem::Overrides* Modem::FindOverrides(const std::string& command) {
    if (overrides_.empty()) return nullptr;
    const auto exact = overrides_.find(command);
    if (exact != overrides_.end() && exact->second.HasReply()) return &exact->second;
    for (const std::string& pattern : override_patterns_) {
        if (!StartsWith(command, std::string_view(pattern).substr(0, pattern.size() - 1))) continue;
        if (overrides_[pattern].HasReply()) return &overrides_[pattern];
    }
    return nullptr;
}

std::optional<Reply> Modem::TakeOverride(const std::string& command) {
    Overrides* found = FindOverrides(command);
    if (found == nullptr) return std::nullopt;
    Override answer;
    if (!found->once.empty()) {
        answer = std::move(found->once.front());
        found->once.pop_front();
    } else {
        answer = *found->always;
    }
    Reply reply;
    reply.raw = true;
    reply.delay = answer.delay;
    reply.prompt = EndsWith(answer.reply, "> ");
    reply.info = std::move(answer.reply);
    return reply;
}

}  // namespace sim
