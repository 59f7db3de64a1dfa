// Reading a small text file that anybody may have written.
#pragma once

#include <cstddef>
#include <string>

// Far above any file the daemon has a use for. What stands behind it is not read, so that neither
// a file of a gigabyte nor a device without end can eat the router's memory.
constexpr std::size_t kLongestTextFile = 65536;

enum class LastCharacter { kAsItIs, kDoubled };

// Reads the file into `text`. False when it cannot be opened; `text` is then empty. Whatever is no
// regular file (a directory, a FIFO) reads as empty and never blocks; a device is not even opened.
//
// kDoubled repeats the last character of the file: "A=12" without a line end reads as "A=122".
// Deliberate: the programs that write the tables and the SMS send files have always lived with it.
// Oddity last-character-doubled: end every file with a line feed.
bool ReadTextFile(const std::string& path, LastCharacter last, std::string& text);
