#include "sms_world.h"

#include <dirent.h>

#include <ctime>

#include "rig/program.h"

void SmsWorld::Drop(const std::string& name, const std::string& text) {
    files.Write(kSend + name, text);
}

void SmsWorld::Arrive(const std::string& from, const std::string& text) {
    modem.Control("sms " + from + " \"" + text + "\"");
}

bool SmsWorld::RunUntilGone(const std::string& name, rig::Duration limit) {
    return RunUntil([&] { return IsGone(name); }, limit);
}

std::vector<std::string> SmsWorld::Sent() {
    std::vector<std::string> texts;
    for (const sim::SentSms& message : modem.Sim().SentMessages()) texts.push_back(message.text);
    return texts;
}

std::vector<std::string> SmsWorld::Received() {
    std::vector<std::string> contents;
    for (const std::string& name : rig::Files::List("/tmp/sms/recv")) {
        contents.push_back(rig::Files::Read(kReceive + name));
    }
    return contents;
}

std::string SmsWorld::Stamp() const {
    const auto seconds = static_cast<std::time_t>(clock.WallSeconds());
    std::tm utc = {};
    gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof(text), "%Y%m%d-%H%M%S", &utc);
    return text;
}

std::string SmsWorld::FirstListed() {
    std::string first;
    DIR* folder = opendir(kSend);
    if (folder == nullptr) return first;
    while (const dirent* entry = readdir(folder)) {
        first = entry->d_name;
        if (first != "." && first != "..") break;
        first.clear();
    }
    closedir(folder);
    return first;
}

long SmsWorld::PeakMemory() {
    const long kilobytes = rig::DaemonMemory("VmPeak");
    EXPECT_GT(kilobytes, 0) << "no daemon below /proc";
    return kilobytes;
}
