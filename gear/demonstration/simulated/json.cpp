#include "json.h"

#include <cstdio>

namespace demo {

namespace {

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned>(static_cast<unsigned char>(c));
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (byte >= 0x20 && byte < 0x7f) {
            quoted += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\u%04x", byte);
            quoted += escape;
        }
    }
    return quoted + "\"";
}

std::string QuotedOrNull(const std::optional<std::string>& text) {
    return text ? Quoted(*text) : "null";
}

}  // namespace

void JsonLine::AddRaw(const std::string& name, const std::string& value) {
    members_ += (members_.empty() ? "" : ", ") + Quoted(name) + ": " + value;
}

void JsonLine::Add(const std::string& name, const std::string& text) {
    AddRaw(name, Quoted(text));
}

void JsonLine::Add(const std::string& name, const std::optional<std::string>& text) {
    AddRaw(name, QuotedOrNull(text));
}

void JsonLine::Add(const std::string& name, bool yes) {
    AddRaw(name, yes ? "true" : "false");
}

void JsonLine::Add(const std::string& name, std::int64_t number) {
    AddRaw(name, std::to_string(number));
}

void JsonLine::Add(const std::string& name, const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + Quoted(text);
    AddRaw(name, "[" + list + "]");
}

void JsonLine::Add(const std::string& name,
                   const std::vector<std::pair<std::string, std::optional<std::string>>>& table) {
    JsonLine object;
    for (const auto& [key, text] : table) object.AddRaw(key, QuotedOrNull(text));
    AddRaw(name, object.Text());
}

}  // namespace demo
