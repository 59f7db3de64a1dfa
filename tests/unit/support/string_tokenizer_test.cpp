// Splitting on a delimiter: every delimiter ends one token, and nothing is trimmed on the way.
#include "support/string_tokenizer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using Tokens = std::vector<std::string>;

Tokens Split(const std::string& source, const std::string& delimiter) {
    return cStringTokenizer(source, delimiter);
}

TEST(StringTokenizer, SplitsAsTheTableSays) {
    struct Row {
        const char* source;
        const char* delimiter;
        Tokens expected;
    };
    const Row rows[] = {
        {"a,b,c", ",", {"a", "b", "c"}},
        {",a,", ",", {"", "a", ""}},
        {"a,,b", ",", {"a", "", "b"}},
        {",", ",", {"", ""}},
        {",,,", ",", {"", "", "", ""}},
        {"abc", ",", {"abc"}},
        {"", ",", {}},
        {"abc", "", {}},
        {" a , b ", ",", {" a ", " b "}},
        {"\"a,b\"", ",", {"\"a", "b\""}},
        {"a\\,b", ",", {"a\\", "b"}},
        {"x::y", "::", {"x", "y"}},
        {":::", "::", {"", ":"}},
        {"::::", "::", {"", "", ""}},
        {"a:b", "::", {"a:b"}},
        {"a:", "::", {"a:"}},
        {"ab", "abc", {"ab"}},
        {"aXbxc", "x", {"aXb", "c"}},
        {"aaa", "aa", {"", "a"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.source) + " on " + row.delimiter);
        EXPECT_EQ(Split(row.source, row.delimiter), row.expected);
    }
}

TEST(StringTokenizer, SplitsAModemAnswerIntoItsLines) {
    cStringTokenizer lines(std::string("\r\n+CSQ: 20,99\r\n\r\nOK\r\n"), '\n');
    EXPECT_EQ(Tokens(lines), (Tokens{"\r", "+CSQ: 20,99\r", "\r", "OK\r", ""}));
    EXPECT_EQ(lines.TrimTokens(), 5u);
    EXPECT_EQ(Tokens(lines), (Tokens{"", "+CSQ: 20,99", "", "OK", ""}));
}

TEST(StringTokenizer, EveryFormOfTheConstructorSplitsAlike) {
    const std::string source = "k=v";
    const std::string delimiter = "=";
    const Tokens expected = {"k", "v"};
    EXPECT_EQ(Tokens(cStringTokenizer(source, delimiter)), expected);
    EXPECT_EQ(Tokens(cStringTokenizer(source, "=")), expected);
    EXPECT_EQ(Tokens(cStringTokenizer(source, '=')), expected);
    EXPECT_EQ(Tokens(cStringTokenizer("k=v", delimiter)), expected);
    EXPECT_EQ(Tokens(cStringTokenizer("k=v", "=")), expected);
    EXPECT_EQ(Tokens(cStringTokenizer("k=v", '=')), expected);
}

TEST(StringTokenizer, ADefaultOneHasNoTokens) {
    const cStringTokenizer tokens;
    EXPECT_EQ(tokens.GetTokenCount(), 0u);
    EXPECT_EQ(tokens.FirstToken(), "");
}

TEST(StringTokenizer, FirstTokenIsACopyOrTheEmptyText) {
    EXPECT_EQ(cStringTokenizer("a,b", ',').FirstToken(), "a");
    EXPECT_EQ(cStringTokenizer(",b", ',').FirstToken(), "");
    EXPECT_EQ(cStringTokenizer("", ',').FirstToken(), "");
}

TEST(StringTokenizer, TokensCanBeChangedThroughTheIndex) {
    cStringTokenizer tokens("a,b", ',');
    tokens[1] += "!";
    EXPECT_EQ(Tokens(tokens), (Tokens{"a", "b!"}));
}

TEST(StringTokenizer, SetDelimiterSplitsTheKeptSourceAgain) {
    cStringTokenizer tokens("a,b;c", ',');
    tokens.SetDelimiter(';');
    EXPECT_EQ(Tokens(tokens), (Tokens{"a,b", "c"}));
    tokens.SetDelimiter(std::string("b;"));
    EXPECT_EQ(Tokens(tokens), (Tokens{"a,", "c"}));
    tokens.SetDelimiter(",");
    EXPECT_EQ(Tokens(tokens), (Tokens{"a", "b;c"}));
}

TEST(StringTokenizer, AnEmptyDelimiterKeepsTheTokens) {
    cStringTokenizer tokens("a,b", ',');
    tokens.SetDelimiter("");
    EXPECT_EQ(Tokens(tokens), (Tokens{"a", "b"}));
}

TEST(StringTokenizer, TrimTakesWhiteSpaceFromBothEndsOnly) {
    cStringTokenizer tokens("  a b  ,   ,\t\v\f\r\nc\t,", ',');
    EXPECT_EQ(tokens.TrimTokens(), 4u);
    EXPECT_EQ(Tokens(tokens), (Tokens{"a b", "", "c", ""}));
}

TEST(StringTokenizer, TrimKeepsBytesAboveSevenBits) {
    cStringTokenizer tokens(" \xa0\x85\xff ", ',');
    tokens.TrimTokens();
    EXPECT_EQ(tokens[0], "\xa0\x85\xff");
}

// Deliberate: the list is not shortened, and the table files rely on it.
// Guards oddity tokens-keep-their-tail.
TEST(StringTokenizer, RemovingEmptyTokensKeepsTheCountAndTheTail) {
    struct Row {
        const char* source;
        Tokens expected;
    };
    const Row rows[] = {
        {"a,,b", {"a", "b", "b"}},
        {",value", {"value", "value"}},
        {"a,,b,,c", {"a", "b", "c", "", "c"}},
        {",,", {"", "", ""}},
        {"a,b", {"a", "b"}},
        {"a,", {"a", ""}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.source);
        cStringTokenizer tokens(row.source, ',');
        const unsigned before = tokens.GetTokenCount();
        EXPECT_EQ(tokens.RemoveEmptyTokens(), before);
        EXPECT_EQ(tokens.GetTokenCount(), before);
        EXPECT_EQ(Tokens(tokens), row.expected);
    }
}

// Deliberate: what is assigned is a cleaned version, not a copy.
TEST(StringTokenizer, AssignmentParsesAgainTrimsAndMovesEmptyTokensOut) {
    cStringTokenizer source(" a ,, b ", ',');
    source[0] = "changed";
    cStringTokenizer target("old", ',');
    target = source;
    EXPECT_EQ(Tokens(target), (Tokens{"a", "b", "b"}));
    EXPECT_EQ(Tokens(source), (Tokens{"changed", "", " b "}));
}

TEST(StringTokenizer, AssigningAnEmptyOneKeepsTheOldTokens) {
    const cStringTokenizer empty("", ',');
    cStringTokenizer target(" a , b ", ',');
    target = empty;
    EXPECT_EQ(Tokens(target), (Tokens{"a", "b"}));
}

TEST(StringTokenizer, ACopyIsExact) {
    const cStringTokenizer source(" a ,, b ", ',');
    const cStringTokenizer copy(source);
    EXPECT_EQ(Tokens(copy), (Tokens{" a ", "", " b "}));
}

TEST(StringTokenizer, PrintsTheTokensInQuotesAndEndsInANul) {
    std::ostringstream text;
    text << cStringTokenizer("a,b,", ',');
    EXPECT_EQ(text.str(), std::string("'a' 'b' ''\0", 11));
}

TEST(StringTokenizer, PrintsOnlyTheNulWithoutTokens) {
    std::ostringstream text;
    text << cStringTokenizer();
    EXPECT_EQ(text.str(), std::string(1, '\0'));
}

TEST(StringTokenizer, DumpsSourceDelimiterCountAndTokens) {
    std::ostringstream text;
    cStringTokenizer("a,,b c", ',').DumpTo(text);
    const std::string expected =
        "Pre-parsed string:   'a,,b c'\n"
        "Parsed on delimiter: ','\n"
        "Parsed token count:  3\n"
        "Token #1: 'a'\n"
        "Token #2: (empty)\n"
        "Token #3: 'b c'\n";
    EXPECT_EQ(text.str(), expected + '\0');
}

TEST(StringTokenizer, KeepsZeroBytesInTheSource) {
    const std::string source("a\0b,c", 5);
    EXPECT_EQ(Split(source, ","), (Tokens{std::string("a\0b", 3), "c"}));
}

TEST(StringTokenizer, SplitsAFloodOfDelimiters) {
    EXPECT_EQ(cStringTokenizer(std::string(0x20000, '\n'), '\n').GetTokenCount(), 0x20001u);
}

}  // namespace
