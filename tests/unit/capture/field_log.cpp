#include "field_log.h"

#include "support/text.h"

std::string Dump(const std::string& bytes) {
    std::string text = "Raw Response: ";
    for (const char c : bytes) {
        text += Format("%2.2x ", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string Asked(const std::string& command, const std::string& answer) {
    std::string log = kHead + ("Sending command: " + command) + "\n";
    if (answer.empty()) return log + kHead + "DEBUG: returning string class : \n";
    log += kHead + Dump(answer) + "\n";
    return log + kHead + Format("read %zu bytes from port", answer.size()) + "\n";
}

capture::Result ConvertLog(const std::string& log, std::set<std::string> harmless) {
    capture::Request request;
    request.name = "messages";
    request.now = kNow;
    request.key = {1, 2};
    request.harmless = std::move(harmless);
    return capture::Convert(log, request);
}

capture::Story StoryOf(const std::string& command, const std::string& answer) {
    const capture::Result result = ConvertLog(Asked(command, answer) + Asked("AT", "\r\nOK\r\n") +
                                              kHead + "Sending command: AT\n");
    return result.text.empty() ? capture::Story() : capture::ReadStory(result.text);
}
