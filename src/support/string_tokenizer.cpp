// k delimiters, k + 1 tokens.

#include "support/string_tokenizer.h"

#include <ostream>

#include "support/text.h"

cStringTokenizer::cStringTokenizer(const std::string& source, const std::string& delimiter)
    : source_(source), delimiter_(delimiter) {
    Parse();
}

cStringTokenizer::cStringTokenizer(const std::string& source, char delimiter)
    : cStringTokenizer(source, std::string(1, delimiter)) {}

cStringTokenizer& cStringTokenizer::operator=(const cStringTokenizer& other) {
    const std::string delimiter = other.delimiter_;
    source_ = other.source_;
    SetDelimiter(delimiter);
    TrimTokens();
    RemoveEmptyTokens();
    return *this;
}

std::string cStringTokenizer::FirstToken() const {
    return empty() ? empty_token_ : front();
}

void cStringTokenizer::SetDelimiter(const std::string& delimiter) {
    delimiter_ = delimiter;
    Parse();
}

void cStringTokenizer::SetDelimiter(char delimiter) {
    SetDelimiter(std::string(1, delimiter));
}

unsigned cStringTokenizer::TrimTokens() {
    for (std::string& token : *this) Trim(token);
    return GetTokenCount();
}

// The list is deliberately not shortened: the slots behind the last token keep their old text, so
// that a, (empty), b reads a, b, b. The table files rely on it: "=value" gets the label "value".
// Oddity tokens-keep-their-tail: a line "=value" has the key "value".
unsigned cStringTokenizer::RemoveEmptyTokens() {
    size_type write = 0;
    for (size_type read = 0; read < size(); ++read) {
        if ((*this)[read].empty()) continue;
        if (write != read) (*this)[write] = (*this)[read];
        ++write;
    }
    return GetTokenCount();
}

void cStringTokenizer::DumpTo(std::ostream& stream) const {
    stream << "Pre-parsed string:   '" << source_ << "'" << std::endl;
    stream << "Parsed on delimiter: '" << delimiter_ << "'" << std::endl;
    stream << "Parsed token count:  " << size() << std::endl;
    for (size_type i = 0; i < size(); ++i) {
        stream << "Token #" << i + 1 << ": ";
        if ((*this)[i].empty()) {
            stream << "(empty)" << std::endl;
        } else {
            stream << "'" << (*this)[i] << "'" << std::endl;
        }
    }
    stream << std::ends;
}

// An empty source or delimiter leaves the tokens of the previous parse in place.
void cStringTokenizer::Parse() {
    if (source_.empty() || delimiter_.empty()) return;
    clear();
    std::string::size_type start = 0;
    for (;;) {
        const auto end = source_.find(delimiter_, start);
        push_back(source_.substr(start, end - start));
        if (end == std::string::npos) return;
        start = end + delimiter_.size();
    }
}

std::ostream& operator<<(std::ostream& stream, const cStringTokenizer& tokens) {
    const char* separator = "";
    for (const std::string& token : tokens) {
        stream << separator << "'" << token << "'";
        separator = " ";
    }
    return stream << std::ends;
}
