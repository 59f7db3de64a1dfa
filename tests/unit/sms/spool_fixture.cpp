#include "sms/spool_fixture.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "fakes/libc.h"

namespace {

constexpr char kSpool[] = "/tmp/sms";
constexpr uid_t kSomebody = 54321;

std::string g_root;                        // stands for /tmp; empty between tests
std::map<std::string, std::time_t> g_age;  // seconds, by the daemon's path
std::set<std::string> g_foreign;           // paths that belong to kSomebody

std::string Lead(const char* path) {
    const std::string asked = path;
    const bool in_spool = !g_root.empty() && asked.compare(0, sizeof(kSpool) - 1, kSpool) == 0;
    return in_spool ? g_root + asked.substr(sizeof("/tmp") - 1) : asked;
}

// The status as the test's world has it: owner and time of the last change.
void Dress(const char* path, struct stat& status) {
    if (g_root.empty()) return;
    const auto age = g_age.find(path);
    const auto now = static_cast<std::time_t>(fake::Current().now_us / 1000000);
    status.st_ctime = now - (age != g_age.end() ? age->second : 0);
    if (g_foreign.count(path) > 0) status.st_uid = kSomebody;
}

}  // namespace

// Each by the call that stands behind it, which nobody has replaced.
extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openat(AT_FDCWD, Lead(path).c_str(), flags, mode);
}

DIR* opendir(const char* path) {
    const int fd = openat(AT_FDCWD, Lead(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    return fd != -1 ? fdopendir(fd) : nullptr;
}

int unlink(const char* path) LIBC_NOEXCEPT {
    return unlinkat(AT_FDCWD, Lead(path).c_str(), 0);
}

int stat(const char* path, struct stat* status) LIBC_NOEXCEPT {
    const int result = fstatat(AT_FDCWD, Lead(path).c_str(), status, 0);
    if (result == 0) Dress(path, *status);
    return result;
}

int lstat(const char* path, struct stat* status) LIBC_NOEXCEPT {
    const int result = fstatat(AT_FDCWD, Lead(path).c_str(), status, AT_SYMLINK_NOFOLLOW);
    if (result == 0) Dress(path, *status);
    return result;
}

}  // extern "C"

SpoolTest::SpoolTest() {
    g_root = Folder();
    for (const char* directory : {kSmsSendDirectory, kSmsFailDirectory, kSmsReceiveDirectory}) {
        std::filesystem::create_directories(Real(directory));
    }
}

SpoolTest::~SpoolTest() {
    g_root.clear();
    g_age.clear();
    g_foreign.clear();
}

std::string SpoolTest::Real(const std::string& path) {
    return Lead(path.c_str());
}

void SpoolTest::Put(const std::string& path, const std::string& text) {
    std::ofstream(Real(path), std::ios::binary) << text;
}

void SpoolTest::PutToSend(const std::string& name, const std::string& text) {
    Put(kSmsSendDirectory + name, text);
}

std::string SpoolTest::Content(const std::string& path) {
    return ReadAll(Real(path));
}

bool SpoolTest::Exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(Real(path)));
}

std::vector<std::string> SpoolTest::Names(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(Real(directory))) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

void SpoolTest::Link(const std::string& target, const std::string& path) {
    std::filesystem::create_symlink(target, Real(path));
}

void SpoolTest::SetAge(const std::string& path, std::time_t seconds) {
    g_age[path] = seconds;
}

void SpoolTest::GiveToSomebody(const std::string& path) {
    g_foreign.insert(path);
}

void SpoolTest::RemoveDirectory(const std::string& path) {
    std::filesystem::remove_all(Real(path));
}
