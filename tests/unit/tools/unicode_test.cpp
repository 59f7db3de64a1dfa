#include "modemctl/unicode.h"

#include <gtest/gtest.h>

namespace modemctl {
namespace {

constexpr bool kUtf8 = true;
constexpr bool kAscii = false;

TEST(Escaping, LeavesPlainTextAlone) {
    EXPECT_EQ(Escaped("Example Net, -71 dBm", kAscii), "Example Net, -71 dBm");
}

TEST(Escaping, ShowsControlCharactersAsCWouldWriteThem) {
    EXPECT_EQ(Escaped("a\x1b[2Jb\n\r\t\x7f", kUtf8), "a\\x1b[2Jb\\n\\r\\t\\x7f");
    EXPECT_EQ(Escaped(std::string("\0", 1), kUtf8), "\\x00");
}

TEST(Escaping, DoublesTheBackslashSoThatNothingCanLookEscaped) {
    EXPECT_EQ(Escaped("\\x1b", kUtf8), "\\\\x1b");
}

// C1 controls do in one character what ESC [ does in two.
TEST(Escaping, CatchesControlsInTheirTwoByteForm) {
    EXPECT_EQ(Escaped("\xc2\x9b"
                      "2J",
                      kUtf8),
              "\\u009b2J");
}

TEST(Escaping, ShowsWhatTurnsTheDirectionOrIsUnseen) {
    EXPECT_EQ(Escaped("a\xe2\x80\xae"
                      "b",
                      kUtf8),
              "a\\u202eb");
    EXPECT_EQ(Escaped("\xef\xbb\xbf", kUtf8), "\\ufeff");
    EXPECT_EQ(Escaped("\xf3\xa0\x81\x81", kUtf8), "\\U000e0041");
}

TEST(Escaping, KeepsUtf8OnlyWhereItCanBeShown) {
    EXPECT_EQ(Escaped("caf\xc3\xa9", kUtf8), "caf\xc3\xa9");
    EXPECT_EQ(Escaped("caf\xc3\xa9", kAscii), "caf\\u00e9");
}

TEST(Escaping, TakesBrokenUtf8ByteByByte) {
    EXPECT_EQ(Escaped("\xc3", kUtf8), "\\xc3");
    EXPECT_EQ(Escaped("\xc0\xaf", kUtf8), "\\xc0\\xaf");           // overlong
    EXPECT_EQ(Escaped("\xed\xa0\x80", kUtf8), "\\xed\\xa0\\x80");  // a surrogate
    EXPECT_EQ(Escaped("\xf4\x90\x80\x80", kUtf8), "\\xf4\\x90\\x80\\x80");
}

TEST(Escaping, KnowsTheDashOfEndReason5) {
    EXPECT_EQ(Escaped("BS \x96 no", kAscii), "BS - no");
    EXPECT_EQ(Escaped("BS \x96 no", kUtf8), "BS \xe2\x80\x93 no");
}

// Whatever the bytes: what is shown has no control character, and is ASCII or UTF-8.
TEST(Escaping, OfEveryPairOfBytesIsHarmless) {
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            const std::string pair = {static_cast<char>(a), static_cast<char>(b)};
            for (const char c : Escaped(pair, kAscii)) {
                ASSERT_GE(c, ' ') << a << " " << b;
                ASSERT_LE(c, '~') << a << " " << b;
            }
            const std::string shown = Escaped(pair, kUtf8);
            for (std::size_t at = 0; at < shown.size();) {
                const CodePoint code = DecodeAt(shown, at);
                ASSERT_TRUE(code.valid) << a << " " << b;
                ASSERT_TRUE(code.value >= 0xa0 || (code.value >= 0x20 && code.value < 0x7f));
                at += code.length;
            }
        }
    }
}

TEST(Columns, CountsWhatTheTerminalShows) {
    EXPECT_EQ(Columns("caf\xc3\xa9"), 4U);
    EXPECT_EQ(Columns("\xe4\xb8\xad\xe5\x9b\xbd"), 4U);  // two wide characters
    EXPECT_EQ(Columns("e\xcc\x81"), 1U);                 // an accent of its own
}

TEST(Columns, CutsAndPads) {
    EXPECT_EQ(Cut("abcdef", 6), "abcdef");
    EXPECT_EQ(Cut("abcdefg", 6), "abcd..");
    EXPECT_EQ(Cut("\xe4\xb8\xad\xe5\x9b\xbd\xe4\xb8\xad", 5), "\xe4\xb8\xad..");
    EXPECT_EQ(Cut("abc", 1), ".");
    EXPECT_EQ(Padded("ab", 4), "ab  ");
    EXPECT_EQ(Padded("abcde", 4), "abcde");
}

TEST(Columns, WrapsAtBlanks) {
    EXPECT_EQ(Wrapped("one two three", 7), (std::vector<std::string>{"one two", "three"}));
    EXPECT_EQ(Wrapped("abcdefghij", 4), (std::vector<std::string>{"abcd", "efgh", "ij"}));
    EXPECT_EQ(Wrapped("", 4), (std::vector<std::string>{""}));
}

TEST(JsonText, IsAlwaysUtf8AndHarmlessOnATerminal) {
    EXPECT_EQ(JsonString("a\"b\\c"), "\"a\\\"b\\\\c\"");
    EXPECT_EQ(JsonString("\x1b\n\xc2\x9b"), "\"\\u001b\\u000a\\u009b\"");
    EXPECT_EQ(JsonString("\xff"), "\"\xef\xbf\xbd\"");
    EXPECT_EQ(JsonString("\xe2\x80\xae"), "\"\\u202e\"");
    EXPECT_EQ(JsonString("\xf3\xa0\x81\x81"), "\"\\udb40\\udc41\"");
}

}  // namespace
}  // namespace modemctl
