/**
 * Prints what the tracker holds on the heap after voxloc_initialize, a line for each product: its
 * name, bytes and blocks. The linker leads the libraries' calloc here; they call no other
 * allocating function, which memory.py looks after.
 */
#include <cstdio>
#include <cstdlib>

#include "voxloc/voxloc.h"

namespace {

std::size_t Bytes;
int Blocks;

}  // namespace

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);

void* __wrap_calloc(std::size_t count, std::size_t size) {
    Bytes += count * size;
    ++Blocks;
    return __real_calloc(count, size);
}
}

int main() {
    for (uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        const VoxlocProduct* product = voxloc_getProduct(i);
        Bytes = 0;
        Blocks = 0;
        voxloc_initialize(product->type);
        std::printf("%s %zu %d\n", product->name, Bytes, Blocks);
        voxloc_destroy();
    }
    return EXIT_SUCCESS;
}
