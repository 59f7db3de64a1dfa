// Three rules, one priority, one sink.

#include "support/system_log.h"

#include <syslog.h>

#include <cerrno>
#include <cstdarg>

int g_i_DebugLevel = 0;

void NameLogLines() {
#ifndef __GLIBC__
    openlog(program_invocation_short_name, 0, LOG_USER);
#endif
}

bool IsDebug() {
    return g_i_DebugLevel != 0;
}

bool IsAbove(int level) {
    return g_i_DebugLevel > level;
}

void Log(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_NOTICE, format, arguments);
    va_end(arguments);
}

void LogDebug(const char* format, ...) {
    if (!IsDebug()) return;
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_NOTICE, format, arguments);
    va_end(arguments);
}

void LogAbove(int level, const char* format, ...) {
    if (!IsAbove(level)) return;
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_NOTICE, format, arguments);
    va_end(arguments);
}
