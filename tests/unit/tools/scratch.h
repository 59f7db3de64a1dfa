// A router's files below a folder of the test's own, gone with it.
#pragma once

#include <sys/stat.h>
#include <utime.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "machine/own_folder.h"

class Scratch {
  public:
    Scratch() = default;
    ~Scratch() { std::filesystem::remove_all(root_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& root() const { return root_; }

    // Nobody has touched it lately, unless `age` says so.
    void Write(const std::string& path, const std::string& text, int age = 10) const {
        std::filesystem::create_directories(std::filesystem::path(root_ + path).parent_path());
        std::ofstream(root_ + path, std::ios::binary) << text;
        const std::time_t then = std::time(nullptr) - age;
        const utimbuf times = {then, then};
        utime((root_ + path).c_str(), &times);
    }

  private:
    const std::string root_ = machine::MakeOwnFolder();
};
