// For tests that stand in front of the C library: how it declares what they define again.
#pragma once

#include <features.h>

#ifdef __GLIBC__
#define LIBC_NOEXCEPT noexcept
using IoctlRequest = unsigned long;
#else
#define LIBC_NOEXCEPT
using IoctlRequest = int;
#endif
