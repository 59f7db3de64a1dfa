// Texts into the fixed arrays of the shared memory.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>

namespace rig {

// Throws when it does not fit, the NUL included.
template <std::size_t kSize>
void CopyText(char (&to)[kSize], const std::string& text) {
    if (text.size() >= kSize) throw std::invalid_argument("too long: " + text);
    std::memcpy(to, text.c_str(), text.size() + 1);
}

}  // namespace rig
