// A file with any content, read as each of the files that others write for the daemon.
#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>

#include "core/config_files.h"
#include "core/error_checks.h"
#include "core/single_instance.h"
#include "fuzz_main.h"
#include "sms/spool.h"
#include "state/settings.h"
#include "support/file_reader.h"
#include "support/info_table.h"

namespace {

constexpr char kPppFile[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
constexpr char kProvisioningFile[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";

void ReadAsText(const std::string& path, const std::string& content) {
    std::string text;
    Must(ReadTextFile(path, LastCharacter::kAsItIs, text) && text == content, "the file's text");
    Must(ReadTextFile(path, LastCharacter::kDoubled, text), "the file can be opened");
    Must(text == content + (content.empty() ? "" : content.substr(content.size() - 1)),
         "the last character is doubled");
}

void ReadAsTable(const std::string& path, const std::string& separator) {
    cInfoTable table(path, separator);
    for (const cStringTokenizer& entry : table) {
        Must(!entry.empty(), "an entry has a label");
        Must(table.HasLabel(entry[0]), "a label is found");
        const cStringTokenizer first = table.GetEntry(entry[0]);
        Must(table.GetValue(entry[0]) == (first.size() > 1 ? first[1] : ""), "the value");
        const char* field = table.GetInfoField(entry[0].c_str(), entry.size() - 1);
        const bool cut = entry[0].find('\0') != std::string::npos;
        Must(cut || field != nullptr, "the last field is there");
    }
    Must(table.GetInfoField("no such label", 7) == nullptr, "what is not there is not found");
    std::ostringstream dump;
    table.DumpTo(dump);
    table.SetSeparator('=');
}

void ReadAsSendFile(const std::string& path, const std::string& content) {
    std::string to;
    std::string message;
    const bool usable = ReadSmsSendFile(path, to, message);
    Must(to.find_first_of(" \t\r\n") == std::string::npos, "a number has no white space");
    if (content.find("MSG=") != std::string::npos) {
        Must(usable && message.size() <= content.size() - 3, "the message is a part of the file");
    }
}

// Files are read again when their time changes.
void Write(const char* path, const std::string& content) {
    static std::time_t now = 1000;
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
    const timespec times[] = {{++now, 0}, {now, 0}};
    utimensat(AT_FDCWD, path, times, 0);
}

void ReadAsConfiguration(const std::string& content) {
    Write(kPppFile, content);
    Must(ReadPppConfigFile() == 1, "the PPP file has changed");
    const std::string& apn = g_S_PppConfig.apn;
    Must(apn.size() <= 20 && apn.find_first_of(" \"'`$;&|<>\r\n\t\\") == std::string::npos,
         "an APN is harmless");
    Write(kProvisioningFile, content);
    Must(ReadProvisioningFile() == 1, "the provisioning file has changed");
    Must(g_S_PppConfig.provisioning_changed, "the change is noted");
}

}  // namespace

void FuzzOne(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    FreshDaemon daemon(input.ConsumeIntegral<std::uint8_t>());
    const std::string separator = input.ConsumeRandomLengthString(2);
    const std::string content = input.ConsumeRemainingBytesAsString();
    const std::string path = daemon.WriteTemp("file", content);
    ReadAsText(path, content);
    ReadAsTable(path, separator);
    ReadAsTable(path, "=");
    ReadAsSendFile(path, content);
    ReadAsConfiguration(content);
    ReadStoredPid(path);
    int last_seen = 0;
    ResetIsDue(ReadStoredPid(path), 8, last_seen);
}
