// Another program whose output is read. No shell is between.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

namespace modemctl {

class Child {
  public:
    // Found in PATH; its standard error is thrown away.
    explicit Child(const std::vector<std::string>& words);
    // Ends it, if it has not ended.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Null when there is no such program.
    std::FILE* output() const { return output_; }

  private:
    pid_t pid_ = -1;
    std::FILE* output_ = nullptr;
};

}  // namespace modemctl
