// The files of a story's router at one instant, copied to a tree of their own, and modemctl looking
// at them: as a technician would who has been sent them.
#pragma once

#include <ctime>
#include <string>

#include "rig/world.h"

struct ToolResult {
    int status = -1;
    std::string output;
};

class CopiedRouter {
  public:
    // What the daemon has written so far, its log among it, and what the kernel says of it.
    explicit CopiedRouter(const rig::World& world);
    // A router on which nothing has run.
    CopiedRouter();
    ~CopiedRouter();
    CopiedRouter(const CopiedRouter&) = delete;
    CopiedRouter& operator=(const CopiedRouter&) = delete;

    void Write(const std::string& path, const std::string& text) const;
    void Remove(const std::string& path) const;
    // A process that runs there.
    void AddProcess(int id, const std::string& command) const;
    void SetAddress(const std::string& address) { address_ = address; }
    // So much later than the files were copied.
    void Wait(std::time_t seconds) { now_ += seconds; }

    ToolResult Run(const std::string& arguments) const;
    // The id of the cause that modemctl why finds; "none" when it finds none.
    std::string Cause() const;
    // A text of the document of modemctl why.
    std::string WhyText(const std::string& name) const;

  private:
    void CopyFiles() const;
    void WriteLog(const rig::World& world) const;
    void WriteFacts() const;

    std::string root_;
    std::string address_;
    std::time_t now_ = 0;
};
