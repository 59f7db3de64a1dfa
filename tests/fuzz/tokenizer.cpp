// A text split at any delimiter: nothing is lost, and the list keeps its length whatever is done.
#include <fuzzer/FuzzedDataProvider.h>

#include <sstream>
#include <string>

#include "fuzz_main.h"
#include "support/string_tokenizer.h"

namespace {

std::string Joined(const cStringTokenizer& tokens, const std::string& delimiter) {
    std::string text;
    for (std::size_t i = 0; i < tokens.size(); ++i) text += (i > 0 ? delimiter : "") + tokens[i];
    return text;
}

void Split(const std::string& source, const std::string& delimiter) {
    cStringTokenizer tokens(source, delimiter);
    if (source.empty() || delimiter.empty()) {
        Must(tokens.empty() && tokens.FirstToken().empty(), "nothing to split, no tokens");
        return;
    }
    Must(Joined(tokens, delimiter) == source, "the tokens are the source");
    Must(tokens.FirstToken() == source.substr(0, source.find(delimiter)), "the first token");
    const unsigned count = tokens.GetTokenCount();
    const cStringTokenizer copy(tokens);
    Must(copy == tokens, "a copy is equal");
    cStringTokenizer cleaned;
    cleaned = tokens;
    Must(cleaned.GetTokenCount() == count, "a cleaned version has as many tokens");
    Must(tokens.RemoveEmptyTokens() == count, "moving empty tokens keeps the count");
    Must(tokens.TrimTokens() == count, "trimming keeps the count");
    std::ostringstream dump;
    tokens.DumpTo(dump);
    dump << tokens;
    tokens.SetDelimiter(source);
    Must(tokens.GetTokenCount() == 2 || tokens.GetTokenCount() == 0, "the whole source splits");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::string delimiter = input.ConsumeRandomLengthString(3);
    Split(input.ConsumeRemainingBytesAsString(), delimiter);
}
