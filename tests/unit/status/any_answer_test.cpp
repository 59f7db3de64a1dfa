// Each answer of the modem replaced in turn by silence, an echo, an error, a piece of itself, noise
// and a flood: only the fields that it feeds may change, and no answer can add a line to a file.
// What the file says when all is well is told by the hours of scenarios/status.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>
#include <sstream>

#include "any_answer_cards.h"
#include "state/timers.h"
#include "status/card_statistics.h"
#include "status/health_report.h"
#include "status/identity.h"
#include "status/registration.h"
#include "status/service_type.h"
#include "status/signal_quality.h"
#include "status/system_info.h"
#include "status_test.h"
#include "support/countdown_timer.h"

namespace {

Lines SplitLines(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line, '\n');) lines.push_back(line);
    return lines;
}

std::string KeyOf(const std::string& line) {
    return line.substr(0, line.find('='));
}

bool IsContext(const std::string& line) {
    return line.compare(0, 22, "CELLMODEM_SIM_CONT_APN") == 0;
}

// The lines with the changes made: "KEY=value" replaces each line of that key, a lone "KEY" takes
// it out.
Lines Changed(const Lines& lines, const std::vector<const char*>& changes) {
    std::map<std::string, std::string> by_key;
    for (const std::string change : changes) by_key[KeyOf(change)] = change;
    Lines result;
    for (const std::string& line : lines) {
        const auto change = by_key.find(KeyOf(line));
        if (change == by_key.end()) {
            result.push_back(line);
        } else if (change->second.find('=') != std::string::npos) {
            result.push_back(change->second);
        }
    }
    return result;
}

std::string Noise(unsigned seed, std::size_t length) {
    std::mt19937 random(seed);
    std::string noise;
    while (noise.size() < length) noise += static_cast<char>(random() % 255 + 1);
    return noise;
}

}  // namespace

class AnyAnswer : public StatusTest {
  protected:
    // What the router knows of a card after its first pass.
    Lines FileAfterOnePass(const AnsweringCard& card,
                           const std::map<std::string, std::string>& instead = {}) {
        world.answers.clear();
        for (const CardAnswer& answer : card.answers) {
            world.answers[answer.command] = Answered(answer.lines);
        }
        for (const auto& [command, answer] : instead) world.answers[command] = answer;
        g_i_CardType = card.type;
        stats = GlobalStats();
        ResetGlobalStats();
        g_i_FirstHealthReport = 1;
        g_Cp_NoServiceTimer->Stop();
        world.now_us = 1773479700000000;
        RunOnePass();
        Lines lines = SplitLines(Published("wireless.cardstats"));
        lines.erase(lines.begin());  // the time
        return lines;
    }

    // Of each card each answer is replaced by `instead`, and the file changes by `changes`.
    void ExpectChanges(const std::function<std::string(const CardAnswer&)>& instead,
                       const std::function<std::vector<const char*>(const CardAnswer&)>& changes) {
        for (const AnsweringCard& card : AnsweringCards()) {
            const Lines usual = FileAfterOnePass(card);
            for (const CardAnswer& answer : card.answers) {
                SCOPED_TRACE(std::string(card.name) + " " + answer.command);
                const Lines expected = Changed(usual, changes(answer));
                EXPECT_EQ(expected, FileAfterOnePass(card, {{answer.command, instead(answer)}}));
                EXPECT_EQ(expected == usual, answer.when_silent.empty())
                    << "the answer told nothing";
            }
        }
    }

    // Only lines of the answer's own keys differ from the usual file, and all keys are there in
    // their order.
    static void ExpectOnlyOwnKeysChanged(const CardAnswer& answer, Lines usual, Lines lines) {
        const auto drop_contexts = [](Lines& all) {
            all.erase(std::remove_if(all.begin(), all.end(), IsContext), all.end());
        };
        if (std::string(answer.command) == "AT+CGDCONT?") {
            drop_contexts(usual);
            drop_contexts(lines);
        }
        std::map<std::string, bool> own;
        for (const std::string change : answer.when_silent) own[KeyOf(change)] = true;
        for (const char* key : answer.also_changes) own[key] = true;
        ASSERT_EQ(usual.size(), lines.size());
        for (std::size_t i = 0; i < lines.size(); ++i) {
            EXPECT_EQ(KeyOf(usual[i]), KeyOf(lines[i]));
            if (!own[KeyOf(usual[i])]) {
                EXPECT_EQ(usual[i], lines[i]);
            }
        }
    }

    void ExpectSingleLines() const {
        for (const char* name :
             {"wireless.serialno", "wireless.mdn", "lightbar", "lightbar_ecio_in",
              "lightbar_chan_in", "wirelessactivation_status"}) {
            const std::string text = Published(name);
            if (text == "(missing)") continue;
            EXPECT_EQ(text.size() - 1, text.find('\n')) << name;
        }
    }

  private:
    static void RunOnePass() {
        UpdateCardIdentity();
        GetSysinfo();
        QueryBand();
        QueryServiceType();
        QuerySierraEcio();
        QueryNovatelSignal();
        QueryHealthReport();
        CheckRegistration();
        UpdateLightbar("+CSQ: 17,99");
        QueryPdpContexts();
        DumpAllCardInfo();
    }
};

TEST_F(AnyAnswer, SilenceLeavesTheFieldsAtTheirReset) {
    ExpectChanges([](const CardAnswer&) { return ""; },
                  [](const CardAnswer& answer) { return answer.when_silent; });
}

// Only the signal query's own text holds one of its labels.
TEST_F(AnyAnswer, AnEchoIsNoAnswerButForTheNovatelSignal) {
    ExpectChanges(
        [](const CardAnswer& answer) { return std::string(answer.command) + "\r\r\nOK\r\n"; },
        [](const CardAnswer& answer) {
            return answer.on_echo.empty() ? answer.when_silent : answer.on_echo;
        });
}

// Where any line will do that is no echo, "ERROR" is taken for the value.
TEST_F(AnyAnswer, AnErrorIsNoAnswerButForTheLinesWithoutALabel) {
    ExpectChanges([](const CardAnswer&) { return "\r\nERROR\r\n"; },
                  [](const CardAnswer& answer) {
                      return answer.on_error.empty() ? answer.when_silent : answer.on_error;
                  });
}

TEST_F(AnyAnswer, ACutAnswerChangesItsOwnFieldsOnly) {
    for (const AnsweringCard& card : AnsweringCards()) {
        const Lines usual = FileAfterOnePass(card);
        for (const CardAnswer& answer : card.answers) {
            const std::string whole = Answered(answer.lines);
            for (std::size_t length = 0; length < whole.size(); length += 7) {
                SCOPED_TRACE(std::string(card.name) + " " + answer.command + " cut at " +
                             std::to_string(length));
                ExpectOnlyOwnKeysChanged(
                    answer, usual,
                    FileAfterOnePass(card, {{answer.command, whole.substr(0, length)}}));
            }
        }
    }
}

TEST_F(AnyAnswer, NoiseAndFloodsChangeTheirOwnFieldsOnly) {
    unsigned seed = 1;
    for (const AnsweringCard& card : AnsweringCards()) {
        const Lines usual = FileAfterOnePass(card);
        for (const CardAnswer& answer : card.answers) {
            const std::string whole = Answered(answer.lines);
            const std::string hostile[] = {
                Noise(seed, 200),
                Noise(seed, 131072),
                whole + Noise(seed, 300) + whole,
                std::string(131072, 'x'),
                std::string(131072, '\n'),
                whole.substr(0, whole.size() / 2) + std::string(140000, '9'),
            };
            for (const std::string& bytes : hostile) {
                SCOPED_TRACE(std::string(card.name) + " " + answer.command + " seed " +
                             std::to_string(seed) + " length " + std::to_string(bytes.size()));
                ExpectOnlyOwnKeysChanged(answer, usual,
                                         FileAfterOnePass(card, {{answer.command, bytes}}));
                ExpectSingleLines();
            }
            ++seed;
        }
    }
}

// A line of the modem that looks like a line of the file stays one value, or none.
TEST_F(AnyAnswer, CannotForgeALine) {
    const std::string forged = "CELLMODEM_MDN=666";
    for (const AnsweringCard& card : AnsweringCards()) {
        const Lines usual = FileAfterOnePass(card);
        for (const CardAnswer& answer : card.answers) {
            for (const char* end : {"\n", "\r\n", "\r", "\n\r", "\v", "\f"}) {
                std::string bytes = end + forged + end;
                for (const std::string& line : answer.lines) {
                    bytes += line + end + forged + end + line + forged + end;
                }
                SCOPED_TRACE(std::string(card.name) + " " + answer.command);
                const Lines lines = FileAfterOnePass(card, {{answer.command, bytes}});
                ExpectOnlyOwnKeysChanged(answer, usual, lines);
                for (const std::string& line : lines) EXPECT_NE(forged, line);
                ExpectSingleLines();
            }
        }
    }
}
