/**
 * The heap as the tracker sees it: the linker hands every allocation of the program's own objects
 * to heap.cpp, which counts them.
 */
#ifndef VERIFY_TRACK_HEAP_H
#define VERIFY_TRACK_HEAP_H

#include <cstddef>
#include <vector>

struct Heap {
    bool isWatched = false;
    int allocations = 0;                  // of any kind, while watched
    int open = 0;                         // blocks that are not freed yet
    std::vector<std::size_t> bytes = {};  // asked of calloc
};
extern Heap heap;

/** Watches the heap from here to the end of the scope; the figures stay until the next one. */
class HeapWatch {
  public:
    HeapWatch() {
        heap = Heap{};
        heap.bytes.reserve(64);
        heap.isWatched = true;
    }
    ~HeapWatch() { heap.isWatched = false; }
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;
};

#endif
