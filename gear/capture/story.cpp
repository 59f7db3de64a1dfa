#include "capture/story.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "support/text.h"

namespace capture {

namespace {

constexpr std::int64_t kLongestDelay = 3600 * 1000;  // milliseconds

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw std::runtime_error("\\x wants two hexadecimal digits");
}

// Cut behind each line feed, so that an answer reads as it looks.
std::string WriteBytes(const std::string& bytes) {
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const auto feed = bytes.find('\n', at);
        const std::size_t end = feed == std::string::npos ? bytes.size() : feed + 1;
        text += (at == 0 ? "" : "| ") + Escaped(bytes.substr(at, end - at)) + "\n";
        at = end;
    }
    return text;
}

class Reader {
  public:
    Story Read(const std::string& text) {
        std::istringstream lines(text);
        std::string line;
        for (int number = 1; std::getline(lines, line); ++number) {
            try {
                Take(line);
            } catch (const std::runtime_error& error) {
                throw std::runtime_error(Format("line %d: %s", number, error.what()));
            }
        }
        if (story_.arguments.empty()) throw std::runtime_error("line 1: no story of a card");
        return story_;
    }

  private:
    void Take(const std::string& line) {
        if (line.empty() || line[0] == '#') return;
        const auto blank = line.find(' ');
        const std::string word = line.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
        if (word == "story" && !rest.empty()) {
            story_.arguments = rest;
        } else if (word == "began") {
            story_.began = rest;
        } else if (word == "start") {
            story_.exchanges.emplace_back();
        } else if (word == "lost") {
            lost_ = true;
        } else if (word == ">" && !rest.empty()) {
            story_.exchanges.push_back({Unescaped(rest), {}, lost_});
            lost_ = false;
        } else if (word == "<") {
            TakeSaying(rest);
        } else if (word == "|") {
            LastAnswer().back().bytes += Unescaped(rest);
        } else {
            throw std::runtime_error("what is '" + word + "'?");
        }
    }

    std::vector<Saying>& LastAnswer() {
        const bool continues = !story_.exchanges.empty() && !story_.exchanges.back().answer.empty();
        if (!continues) throw std::runtime_error("nothing was said before");
        return story_.exchanges.back().answer;
    }

    void TakeSaying(const std::string& text) {
        if (story_.exchanges.empty()) throw std::runtime_error("an answer without a command");
        long long delay = 0;
        int length = 0;
        const int found = std::sscanf(text.c_str(), "%9lldms%n", &delay, &length);
        if (found < 1 || length == 0 || delay < 0 || delay > kLongestDelay) {
            throw std::runtime_error("no delay such as '25ms'");
        }
        const auto start = std::min(static_cast<std::size_t>(length) + 1, text.size());
        story_.exchanges.back().answer.push_back(
            {delay * kMillisecond, Unescaped(text.substr(start))});
    }

    Story story_;
    bool lost_ = false;
};

}  // namespace

std::string Exchange::Text() const {
    std::string text;
    for (const Saying& saying : answer) text += saying.bytes;
    return text;
}

std::vector<Story> Story::Lives() const {
    std::vector<Story> lives;
    for (const Exchange& exchange : exchanges) {
        if (lives.empty() || exchange.IsStart()) lives.push_back({arguments, began, {}});
        if (!exchange.IsStart() || !exchange.answer.empty()) {
            lives.back().exchanges.push_back(exchange);
        }
    }
    return lives;
}

std::string Escaped(const std::string& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        const bool last_blank = c == ' ' && i + 1 == bytes.size();
        switch (c) {
            case '\r':
                text += "\\r";
                break;
            case '\n':
                text += "\\n";
                break;
            case '\t':
                text += "\\t";
                break;
            case '\\':
                text += "\\\\";
                break;
            default:
                text +=
                    c < ' ' || c > '~' || last_blank
                        ? Format("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)))
                        : std::string(1, c);
        }
    }
    return text;
}

std::string Unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            bytes += text[i];
            continue;
        }
        const char c = ++i < text.size() ? text[i] : '\0';
        if (c == 'x' && i + 2 < text.size()) {
            bytes += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
            i += 2;
        } else if (c == 'r' || c == 'n' || c == 't' || c == '\\') {
            bytes += c == 'r' ? '\r' : c == 'n' ? '\n' : c == 't' ? '\t' : '\\';
        } else {
            throw std::runtime_error("a backslash wants r, n, t, x and two digits, or another one");
        }
    }
    return bytes;
}

std::string WriteStory(const Story& story) {
    std::string text = "story " + story.arguments + "\n";
    if (!story.began.empty()) text += "began " + story.began + "\n";
    for (const Exchange& exchange : story.exchanges) {
        if (exchange.after_loss) text += "lost\n";
        text += exchange.IsStart() ? "\nstart\n" : "> " + Escaped(exchange.command) + "\n";
        for (const Saying& saying : exchange.answer) {
            text += Format("< %lldms ", static_cast<long long>(saying.delay / kMillisecond)) +
                    WriteBytes(saying.bytes);
        }
    }
    return text;
}

Story ReadStory(const std::string& text) {
    return Reader().Read(text);
}

}  // namespace capture
