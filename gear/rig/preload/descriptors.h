// What the hooks know of the program's file descriptors.
#pragma once

#include <sys/stat.h>

namespace rig::agent {

struct Descriptor {
    bool port;      // stands for the modem's port; really /dev/null
    bool kernel;    // a file below /proc or /sys, really a file in memory
    bool writable;  // an ordinary file opened for writing
    char path[512];
};

// nullptr for a descriptor that the table does not hold.
Descriptor* Find(int fd);
void Remember(int fd, const char* path, bool port, bool kernel, bool writable);
void Forget(int fd);

// The file times of simulated time; each leaves errno alone.
void NoteWritten(int fd);
void NoteRenamed(const char* path);
void Translate(struct stat& file, int fd);
// The file that a name stands for, to be told of when the name has gone or stands for another;
// zero for none.
struct stat Behind(const char* path);
void NoteGone(const struct stat& file);

// A record that the file has been written; with its text when the scenario watches it.
void JournalFile(const char* path);

// The port, see port.cpp.
int OpenPortFile(const char* path);
void ClosePortFile();
long WritePort(const void* data, unsigned long size);
long ReadPortBytes(void* buffer, unsigned long size);
int ControlPort(unsigned long request, void* argument);

// errno that the scenario wants for opening this path, or 0.
int PathError(const char* path);
bool IsPortPath(const char* path);
// Files whose text the scenario makes up: of /proc those of processes and the uptime, of /sys
// those of network interfaces.
bool IsKernelPath(const char* path);
// A descriptor on such a file, or -1 with errno.
int OpenKernelFile(const char* path);
// 0, or errno.
int FindKernelFile(const char* path);

}  // namespace rig::agent
