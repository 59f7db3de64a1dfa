// A world in which the sample program plays the daemon.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "rig/world.h"

class SampleWorld : public rig::World {
  public:
    explicit SampleWorld(const std::string& role, const std::string& argument = "")
        : World(rig::Exactly{{role, argument}}) {
        daemon.SetProgram(RIG_SAMPLE);
        port.SetDevice("/dev/ttyUSB0");
    }
};
