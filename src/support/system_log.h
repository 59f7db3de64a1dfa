// The one way to write a system log line. Every line has the priority LOG_NOTICE.
//
// Three rules decide whether a line is written. "Debug" and "above 0" are not the same rule: the
// provisioning file can set a negative debug level, at which LogDebug speaks and LogAbove(0) is
// silent.
#pragma once

// Verbosity; 0 is quiet. Written by the command line (one for each -d) and by the provisioning
// file, which can make it negative.
extern int g_i_DebugLevel;

// Puts the program's own name, "modemd", in front of every line where the C library does not do so
// unasked: glibc does, musl writes lines without a name. Opens nothing yet.
void NameLogLines();

// Always.
void Log(const char* format, ...) __attribute__((format(printf, 1, 2)));

// When the debug level is not zero.
void LogDebug(const char* format, ...) __attribute__((format(printf, 1, 2)));

// When the debug level is greater than `level`.
void LogAbove(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// True when LogDebug, or LogAbove with this level, would write.
bool IsDebug();
bool IsAbove(int level);
