// KEY=value text files, read whole.
//
// Each line becomes an entry: a tokenizer whose token 0 is the Label and whose further tokens are
// the Info Fields, all trimmed. Blank lines, and lines whose first character that is not white
// space is "#", produce nothing. There is no quoting. Labels are case-sensitive; of two entries
// with one label the first wins.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "support/string_tokenizer.h"

class cInfoTable : public std::vector<cStringTokenizer> {
  public:
    cInfoTable() = default;
    explicit cInfoTable(const std::string& file_name);  // separated by one blank
    cInfoTable(const std::string& file_name, char separator);
    cInfoTable(const std::string& file_name, const std::string& separator);

    // A table over the text of a file that has been read already.
    static cInfoTable FromText(const std::string& text, char separator);

    // False when the file cannot be opened; the table is then empty.
    bool Load();
    // Parses the held contents again, or loads the file when nothing is held.
    void SetSeparator(const std::string& separator);
    void SetSeparator(char separator);

    bool HasLabel(const std::string& label) const;
    // A copy of the first entry with the label; an entry without tokens when there is none.
    cStringTokenizer GetEntry(const std::string& label) const;
    // Token 1 of that entry; empty when the label, or the field, is missing.
    std::string GetValue(const std::string& label) const;
    // The token at `index` of the first entry with the label that has so many; empty on a miss.
    std::string GetInfoField(const std::string& label, size_type index) const;
    // The same inside the table, valid as long as the table; null on a miss.
    const char* GetInfoField(const char* label, size_type index) const;

    // Labels and fields, indented, CR LF line ends, then a NUL; for diagnostics.
    void DumpTo(std::ostream& stream) const;

  private:
    void Parse();
    const std::string* FindField(const std::string& label, size_type index) const;

    std::string separator_ = " ";
    std::string contents_;
    std::string empty_field_;
    std::string file_name_;
    cStringTokenizer empty_entry_;
};
