#include "sim/modem/profile_answers.h"

#include <algorithm>

#include "sim/modem/values.h"

namespace sim {

namespace {

bool Holds(const ScriptedAnswer& answer, const State& state) {
    return std::all_of(answer.when.begin(), answer.when.end(), [&](const auto& condition) {
        return Value(state, condition.first) == condition.second;
    });
}

// A page of status, some makers think, looks better with blanks at the ends and below.
bool IsPadded(const ScriptedAnswer& answer, const State& state) {
    constexpr std::size_t kPage = 6;  // lines
    return answer.lines.size() >= kPage && state.Setting("form.page") == "padded";
}

Reply ReplyOf(const ScriptedAnswer& answer, const State& state) {
    Reply reply;
    reply.delay = answer.delay;
    reply.result = answer.result;
    const char* const line_end = IsPadded(answer, state) ? "  \r\n" : "\r\n";
    std::string line;
    for (const std::string& text : answer.lines) {
        if (!Expand(state, text, &line)) continue;
        if (!reply.info.empty()) reply.info += line_end;
        reply.info += line;
    }
    if (IsPadded(answer, state)) reply.info += "  \r\n\r\n";
    return reply;
}

std::optional<Reply> FirstThatHolds(const std::vector<ScriptedAnswer>& answers,
                                    const State& state) {
    for (const ScriptedAnswer& answer : answers) {
        if (Holds(answer, state)) return ReplyOf(answer, state);
    }
    return std::nullopt;
}

}  // namespace

std::optional<Reply> AnswerExactly(const Profile& profile, const State& state,
                                   const std::string& command) {
    const auto scripted = profile.answers.find(command);
    if (scripted == profile.answers.end()) return std::nullopt;
    return FirstThatHolds(scripted->second, state);
}

std::optional<Reply> AnswerByPattern(const Profile& profile, const State& state,
                                     const std::string& command) {
    for (const auto& [start, answers] : profile.patterns) {
        if (!StartsWith(command, start)) continue;
        if (auto reply = FirstThatHolds(answers, state)) return reply;
    }
    return std::nullopt;
}

}  // namespace sim
