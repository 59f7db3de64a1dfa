#include "sim/modem/profile_answers.h"

#include "sim/modem/values.h"

namespace sim {

namespace {

bool Holds(const ScriptedAnswer& answer, const State& state) {
    return answer.when_name.empty() || Value(state, answer.when_name) == answer.when_value;
}

Reply ReplyOf(const ScriptedAnswer& answer, const State& state) {
    Reply reply;
    reply.delay = answer.delay;
    reply.result = answer.result;
    std::string line;
    for (const std::string& text : answer.lines) {
        if (!Expand(state, text, &line)) continue;
        if (!reply.info.empty()) reply.info += "\r\n";
        reply.info += line;
    }
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
