// A world with a modem that takes text messages, and words for its spool.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/world.h"

using namespace std::chrono_literals;

inline constexpr char kSend[] = "/tmp/sms/send/";
inline constexpr char kFail[] = "/tmp/sms/send_fail/";
inline constexpr char kReceive[] = "/tmp/sms/recv/";
inline constexpr char kMakeSend[] = "mkdir -p /tmp/sms/send/ /tmp/sms/send_fail/";
inline constexpr char kListUnread[] = "AT+CMGL=\"REC UNREAD\"";
inline constexpr char kDeleteRead[] = "AT+CMGD=0,1";

class SmsWorld : public rig::World {
  public:
    // The Sierra 881 is the model that is asked for text mode.
    explicit SmsWorld(const std::string& arguments = "-881") : World(arguments) {}

    // Drops a send file, as another program would.
    void Drop(const std::string& name, const std::string& text = "TO=+15551234567\nMSG=Hello\n");
    void Arrive(const std::string& from, const std::string& text);  // a message, over the air
    void LetTheModemRefuse() { modem.Control("sms-fails 38 forever body"); }

    bool IsGone(const std::string& name) const { return !rig::Files::Exists(kSend + name); }
    // Runs until the send file is gone.
    bool RunUntilGone(const std::string& name, rig::Duration limit);
    // Texts of the messages that the modem has sent, oldest first.
    std::vector<std::string> Sent();
    // Contents of all received files, by name.
    static std::vector<std::string> Received();
    // "20260314-091502", the router's time.
    std::string Stamp() const;
    // The name that the daemon's listing of the send directory begins with.
    static std::string FirstListed();
    // Files in the send directory, sorted.
    static std::vector<std::string> Waiting() { return rig::Files::List("/tmp/sms/send"); }
    // The daemon's address space at its largest, KiB.
    static long PeakMemory();
};
