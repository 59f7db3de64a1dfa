// As much of JSON as a snapshot needs: one object on one line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace demo {

class JsonLine {
  public:
    // Bytes that are no ASCII are told as the characters of Latin-1: what a modem says may be any.
    void Add(const std::string& name, const std::string& text);
    void Add(const std::string& name, const std::optional<std::string>& text);  // null for none
    void Add(const std::string& name, bool yes);
    void Add(const std::string& name, std::int64_t number);
    void Add(const std::string& name, const std::vector<std::string>& texts);
    void Add(const std::string& name,
             const std::vector<std::pair<std::string, std::optional<std::string>>>& table);

    std::string Text() const { return "{" + members_ + "}"; }

  private:
    void AddRaw(const std::string& name, const std::string& value);

    std::string members_;
};

}  // namespace demo
