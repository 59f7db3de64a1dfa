// A usual first pass of each card: what the modem answers, what the router then publishes, and
// what is left of it when one of the answers fails.
#pragma once

#include <vector>

#include "status_test.h"

struct CardAnswer {
    const char* command;
    Lines lines;
    // Lines of the file that change: "KEY=value", or a lone "KEY" for a line that is gone.
    std::vector<const char*> when_silent;
    // The same for an ERROR answer; empty when it counts as silence.
    std::vector<const char*> on_error = {};
    // The same for an echo with nothing behind it; empty when it counts as silence.
    std::vector<const char*> on_echo = {};
    // Keys that a strange answer may change besides those of when_silent.
    std::vector<const char*> also_changes = {};
};

struct AnsweringCard {
    const char* name;
    int type;
    std::vector<CardAnswer> answers;
};

const std::vector<AnsweringCard>& AnsweringCards();
