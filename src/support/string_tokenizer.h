// Splits one string on a delimiter into a list of tokens, empty ones included: k delimiters give
// k + 1 tokens. Nothing is trimmed and nothing is quoted. An empty source gives no tokens at all.
//
// The object is the list: index it, after comparing with GetTokenCount().
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

class cStringTokenizer : public std::vector<std::string> {
  public:
    cStringTokenizer() = default;
    cStringTokenizer(const std::string& source, const std::string& delimiter);
    cStringTokenizer(const std::string& source, char delimiter);
    cStringTokenizer(const cStringTokenizer&) = default;
    cStringTokenizer(cStringTokenizer&&) noexcept = default;
    ~cStringTokenizer() = default;

    // A cleaned version of the other, not a copy: parsed again, trimmed, empty tokens moved out.
    cStringTokenizer& operator=(const cStringTokenizer& other);

    unsigned GetTokenCount() const { return static_cast<unsigned>(size()); }
    // A copy of token 0, or the empty text when there are no tokens.
    std::string FirstToken() const;

    // Splits the kept source again. An empty delimiter leaves the tokens as they are.
    void SetDelimiter(const std::string& delimiter);
    void SetDelimiter(char delimiter);

    // Both return the token count.
    unsigned TrimTokens();
    // Moves the non-empty tokens to the front, without shortening the list.
    unsigned RemoveEmptyTokens();

    // Source, delimiter, count and every token, a line each, for diagnostics; ends in a NUL.
    void DumpTo(std::ostream& stream) const;

  private:
    void Parse();

    std::string source_;
    std::string delimiter_;
    std::string empty_token_;
};

// 'a' 'b' 'c', then a NUL.
std::ostream& operator<<(std::ostream& stream, const cStringTokenizer& tokens);
