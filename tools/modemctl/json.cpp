#include "modemctl/json.h"

#include <algorithm>

#include "modemctl/unicode.h"
#include "support/text.h"

namespace modemctl {

std::string JsonWord(const std::string& words) {
    std::string word = words;
    std::replace(word.begin(), word.end(), ' ', '_');
    return word;
}

JsonWriter::JsonWriter(const char* schema) {
    Open('{', '}');
    Text("schema", schema);
}

void JsonWriter::Separate() {
    if (!first_) text_ += ',';
    first_ = false;
}

void JsonWriter::Name(const char* name) {
    Separate();
    text_ += JsonString(name) + ":";
}

void JsonWriter::Open(char bracket, char closing) {
    text_ += bracket;
    open_ += closing;
    first_ = true;
}

void JsonWriter::Text(const char* name, const std::string& value) {
    Name(name);
    text_ += JsonString(value);
}

void JsonWriter::Number(const char* name, long long value) {
    Name(name);
    text_ += Format("%lld", value);
}

void JsonWriter::Number(const char* name, const std::optional<long long>& value) {
    if (value) {
        Number(name, *value);
    } else {
        Null(name);
    }
}

// Finite, in the few digits that a measured value has.
void JsonWriter::Decimal(const char* name, double value) {
    Name(name);
    text_ += Format("%.6g", value);
}

void JsonWriter::Bool(const char* name, bool value) {
    Name(name);
    text_ += value ? "true" : "false";
}

void JsonWriter::Null(const char* name) {
    Name(name);
    text_ += "null";
}

void JsonWriter::Texts(const char* name, const std::vector<std::string>& values) {
    BeginArray(name);
    for (const std::string& value : values) {
        Separate();
        text_ += JsonString(value);
    }
    End();
}

void JsonWriter::BeginObject(const char* name) {
    Name(name);
    Open('{', '}');
}

void JsonWriter::BeginArray(const char* name) {
    Name(name);
    Open('[', ']');
}

void JsonWriter::BeginElement() {
    Separate();
    Open('{', '}');
}

void JsonWriter::End() {
    text_ += open_.back();
    open_.pop_back();
    first_ = false;
}

std::string JsonWriter::Finish() {
    while (!open_.empty()) End();
    return text_;
}

}  // namespace modemctl
