// The signal and the call over time, for the graph and the strip of modemctl watch.
#pragma once

#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "modemctl/chain.h"
#include "modemctl/terminal.h"

namespace modemctl {

struct Sample {
    std::time_t when = 0;
    int permille = -1;  // of a full signal; -1 for no reading
    Hold call = Hold::kUnknown;
};

class History {
  public:
    void Add(const Sample& sample);

    // One line of text for each row, the newest column at the right; a column stands for `seconds`.
    std::vector<std::string> Graph(const Terminal& terminal, int columns, int rows,
                                   long long seconds) const;
    // One row: a call that is up, down, or unknown.
    std::string Strip(const Terminal& terminal, int columns, long long seconds) const;

  private:
    struct Column {
        int permille = -1;
        Hold call = Hold::kUnknown;
        bool seen = false;
    };
    std::vector<Column> Columns(int columns, long long seconds) const;

    std::deque<Sample> samples_;
};

}  // namespace modemctl
