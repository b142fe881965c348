#include "heap.h"

#include <cstdlib>

Heap heap;

namespace {

void* counted(void* block) {
    if (heap.isWatched) ++heap.allocations;
    if (heap.isWatched && block != nullptr) ++heap.open;
    return block;
}

}  // namespace

// operator new, by the name that the linker knows it under: its argument is a size_t.
#if __SIZEOF_POINTER__ == 8
#define REAL_NEW __real__Znwm
#define WRAP_NEW __wrap__Znwm
#else
#define REAL_NEW __real__Znwj
#define WRAP_NEW __wrap__Znwj
#endif

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* old, std::size_t size);
int __real_posix_memalign(void** out, std::size_t alignment, std::size_t size);
void __real_free(void* block);
void* REAL_NEW(std::size_t size);

void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* old, std::size_t size);
int __wrap_posix_memalign(void** out, std::size_t alignment, std::size_t size);
void __wrap_free(void* block);
void* WRAP_NEW(std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return counted(__real_malloc(size));
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    if (heap.isWatched && heap.bytes.size() < heap.bytes.capacity()) {
        heap.bytes.push_back(count * size);
    }
    return counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* old, std::size_t size) {
    if (heap.isWatched) ++heap.allocations;
    return __real_realloc(old, size);
}

int __wrap_posix_memalign(void** out, std::size_t alignment, std::size_t size) {
    const int error = __real_posix_memalign(out, alignment, size);
    counted(error == 0 ? *out : nullptr);
    return error;
}

void __wrap_free(void* block) {
    if (heap.isWatched && block != nullptr) --heap.open;
    __real_free(block);
}

// operator new; what it gives is given back without this file's knowing
void* WRAP_NEW(std::size_t size) {
    if (heap.isWatched) ++heap.allocations;
    return REAL_NEW(size);
}
}
