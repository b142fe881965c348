/**
 * Prints what the tracker holds on the heap after voxloc_initialize, a line for each product: the
 * product's number, bytes and blocks. The linker leads the libraries' calloc here; they call no
 * other allocating function, which memory.py looks after.
 */
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

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
    for (const int product : {PRODUCT_ASTER, PRODUCT_BRAMBLE, PRODUCT_CINDER, PRODUCT_ELMWOOD,
                              PRODUCT_DOVETAIL, PRODUCT_FOXGLOVE, PRODUCT_GANNET}) {
        Bytes = 0;
        Blocks = 0;
        voxloc_initialize(product);
        std::printf("%d %zu %d\n", product, Bytes, Blocks);
        voxloc_destroy();
    }
    return EXIT_SUCCESS;
}
