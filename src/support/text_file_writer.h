// Collects lines and writes them to a file in one go. A file is replaced whole, never appended to.
//
// Below /tmp, where anybody may plant a link, a link in the file's place, symbolic or hard, is
// removed and never followed. No write blocks: a FIFO without a reader counts as a file that cannot
// be opened.
#pragma once

#include <string>
#include <vector>

class cTextFileWriter : public std::vector<std::string> {
  public:
    explicit cTextFileWriter(const std::string& file_name) : file_name_(file_name) {}

    // The stored line ends in a newline, whether or not the given one does; the empty line is
    // stored as a lone newline.
    void AddLine(const std::string& line);
    // Before the line at `index`; at the end when there are not so many lines.
    void InsertLine(const std::string& line, size_type index);

    // Truncates the file, or creates it with mode 0666 less the umask, and writes the lines in a
    // single write, so that a reader sees the old text, nothing yet, or the new text; a reader that
    // keeps the file open goes on seeing what is written. False when the file cannot be opened.
    bool WriteFile() const;

  private:
    std::string Text() const;

    std::string file_name_;
};
