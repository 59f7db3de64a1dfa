// Writes one JSON document on one line. Every document of modemctl begins with its schema, name and
// version: {"schema":"modemctl.status/1",...}. Within a version, fields are added and never
// changed.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace modemctl {

// "aged out" as the documents have it: "aged_out".
std::string JsonWord(const std::string& words);

class JsonWriter {
  public:
    JsonWriter() = default;
    // The document's outermost object, begun.
    explicit JsonWriter(const char* schema);

    // Members of the object at hand.
    void Text(const char* name, const std::string& value);
    void Number(const char* name, long long value);
    void Decimal(const char* name, double value);
    void Bool(const char* name, bool value);
    void Null(const char* name);
    void Number(const char* name, const std::optional<long long>& value);
    void Texts(const char* name, const std::vector<std::string>& values);

    // The members that follow belong to the inner object or array.
    void BeginObject(const char* name);
    void BeginArray(const char* name);
    void BeginElement();  // an object of the array at hand
    void End();

    // The document; ends what is still open.
    std::string Finish();

  private:
    void Separate();
    void Name(const char* name);
    void Open(char bracket, char closing);

    std::string text_;
    std::string open_;  // the closing brackets that are due
    bool first_ = true;
};

}  // namespace modemctl
