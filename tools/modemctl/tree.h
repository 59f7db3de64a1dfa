// The router's files, or a copied tree of them below another root. Reads only, never waits, and
// leaves alone whatever is no regular file.
#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace modemctl {

enum class Presence {
    kAbsent,      // no such file
    kUnreadable,  // there, but not to be read: rights, a directory, a device
    kUnsettled,   // was being rewritten at every look
    kEmpty,       // there, and stays empty
    kWhole,
};

struct TextFile {
    Presence presence = Presence::kAbsent;
    std::string text;  // whole, or what could be had of it
    std::time_t modified = 0;

    bool IsWhole() const { return presence == Presence::kWhole; }
};

// Judges whether a text that was read is all of a file.
using WholeTest = bool (*)(const std::string& text);
// Ends with a line feed and holds no zero byte.
bool HasWholeLines(const std::string& text);
bool AnyText(const std::string& text);

struct Entry {
    std::string name;
    // Its status, as the daemon counts the age of a message; in a copied tree its content.
    std::time_t changed = 0;
    bool regular = false;
};

class Tree {
  public:
    Tree() = default;
    explicit Tree(const std::string& root);

    // This router itself: what the kernel says now belongs to the files.
    bool IsLive() const { return root_.empty(); }
    // When the files were as they are: now, or the time in a copied tree's facts.
    std::time_t Now() const;
    // The value of a copied tree's fact, empty for none: see docs/modemctl.md.
    std::string Fact(const std::string& name) const;

    // Where a path of the router is. Links are followed within the root, also absolute ones.
    std::string Locate(const std::string& path) const;
    bool Exists(const std::string& path) const;

    // The daemon truncates a file and writes it anew in one piece. So a text counts only when it
    // is whole and a second reading has found the same; until then it is read again, for a
    // quarter of a second at most.
    TextFile Read(const std::string& path, WholeTest is_whole = HasWholeLines) const;

    // Names but "." and "..", sorted. False when the directory cannot be read.
    bool List(const std::string& directory, std::vector<Entry>& entries) const;

  private:
    std::string root_;  // empty for this router
};

}  // namespace modemctl
