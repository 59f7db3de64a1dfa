// Lengths of simulated time. GoogleTest shows them as seconds, not as the bytes they are made of.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>

namespace rig {

using namespace std::chrono_literals;
using Duration = std::chrono::microseconds;

}  // namespace rig

namespace testing::internal {

template <typename Rep, typename Period>
class UniversalPrinter<std::chrono::duration<Rep, Period>> {
  public:
    static void Print(const std::chrono::duration<Rep, Period>& value, std::ostream* out) {
        *out << std::chrono::duration<double>(value).count() << "s";
    }
};

}  // namespace testing::internal
