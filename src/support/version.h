// The version, in one place: CMakeLists.txt reads it here, so that a build without CMake has it.
// scripts/version changes it here and in the papers and packages that repeat it.
#pragma once

inline constexpr char kVersion[] = "1.45";
