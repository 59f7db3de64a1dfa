// Counts what the program takes from the heap and gives back. Under a sanitizer these hooks are
// never reached: its own stand in front.

#include <stddef.h>

#include "rig/preload/agent.h"

using namespace rig;

extern "C" {

// The C library's own, under the names that it keeps for whoever stands in front of it.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) {
    if (agent::shared != nullptr) ++agent::shared->allocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    if (agent::shared != nullptr) ++agent::shared->allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) {
    if (agent::shared != nullptr && block == nullptr) ++agent::shared->allocations;
    return __libc_realloc(block, size);
}

void free(void* block) {
    if (agent::shared != nullptr && block != nullptr) ++agent::shared->releases;
    __libc_free(block);
}

}  // extern "C"
