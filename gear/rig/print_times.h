// GoogleTest shows durations as seconds, not as the bytes that they are made of.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>

namespace testing::internal {

template <typename Rep, typename Period>
class UniversalPrinter<std::chrono::duration<Rep, Period>> {
  public:
    static void Print(const std::chrono::duration<Rep, Period>& value, std::ostream* out) {
        *out << std::chrono::duration<double>(value).count() << "s";
    }
};

}  // namespace testing::internal
