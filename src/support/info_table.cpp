// Lines to labels and fields.

#include "support/info_table.h"

#include <algorithm>
#include <ostream>

#include "support/file_reader.h"
#include "support/text.h"

namespace {

// A line that begins with the separator has an empty label for now and is kept: moving the empty
// tokens out makes the text behind the separator its label.
bool HoldsAnEntry(const cStringTokenizer& line) {
    if (line.empty()) return false;
    std::string label = line[0];
    if (label.empty()) return true;
    TrimLeft(label);
    return !label.empty() && label[0] != '#';
}

}  // namespace

cInfoTable::cInfoTable(const std::string& file_name) : cInfoTable(file_name, " ") {}

cInfoTable::cInfoTable(const std::string& file_name, char separator)
    : cInfoTable(file_name, std::string(1, separator)) {}

cInfoTable::cInfoTable(const std::string& file_name, const std::string& separator)
    : separator_(separator), file_name_(file_name) {
    Load();
}

cInfoTable cInfoTable::FromText(const std::string& text, char separator) {
    cInfoTable table;
    table.separator_ = separator;
    table.contents_ = text;
    table.Parse();
    return table;
}

bool cInfoTable::Load() {
    clear();
    if (!ReadTextFile(file_name_, LastCharacter::kDoubled, contents_)) return false;
    Parse();
    return true;
}

void cInfoTable::SetSeparator(const std::string& separator) {
    separator_ = separator;
    if (!contents_.empty()) {
        Parse();
    } else if (!file_name_.empty()) {
        Load();
    }
}

void cInfoTable::SetSeparator(char separator) {
    SetSeparator(std::string(1, separator));
}

void cInfoTable::Parse() {
    if (contents_.empty()) return;
    clear();
    for (const std::string& line : cStringTokenizer(contents_, '\n')) {
        cStringTokenizer entry(line, separator_);
        if (HoldsAnEntry(entry)) push_back(std::move(entry));
    }
    for (cStringTokenizer& entry : *this) {
        entry.RemoveEmptyTokens();
        entry.TrimTokens();
    }
}

bool cInfoTable::HasLabel(const std::string& label) const {
    return FindField(label, 0) != nullptr;
}

cStringTokenizer cInfoTable::GetEntry(const std::string& label) const {
    for (const cStringTokenizer& entry : *this) {
        if (entry[0] == label) return entry;
    }
    return empty_entry_;
}

std::string cInfoTable::GetValue(const std::string& label) const {
    const cStringTokenizer entry = GetEntry(label);
    return entry.GetTokenCount() > 1 ? entry[1] : empty_field_;
}

std::string cInfoTable::GetInfoField(const std::string& label, size_type index) const {
    const std::string* field = FindField(label, index);
    return field != nullptr ? *field : empty_field_;
}

const char* cInfoTable::GetInfoField(const char* label, size_type index) const {
    const std::string* field = FindField(label, index);
    return field != nullptr ? field->c_str() : nullptr;
}

// Entries with the label but too few tokens are passed over.
const std::string* cInfoTable::FindField(const std::string& label, size_type index) const {
    const auto entry = std::find_if(begin(), end(), [&](const cStringTokenizer& candidate) {
        return candidate[0] == label && candidate.size() > index;
    });
    return entry != end() ? &(*entry)[index] : nullptr;
}

void cInfoTable::DumpTo(std::ostream& stream) const {
    if (!empty()) stream << "Table '" << file_name_ << "' Contents:\r\n";
    for (size_type i = 0; i < size(); ++i) {
        const cStringTokenizer& entry = (*this)[i];
        stream << "\t-- Entry #" << i + 1 << " -- \r\n";
        stream << "\t\tLabel: '" << entry[0] << "'\r\n";
        for (size_type j = 1; j < entry.size(); ++j) {
            stream << "\t\t\tInfo Field #" << j << ": '" << entry[j] << "'\r\n";
        }
    }
    stream << std::ends << std::flush;
}
