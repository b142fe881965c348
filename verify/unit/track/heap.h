/**
 * The heap as the tracker sees it: the linker hands every allocation of the program's own objects
 * to heap.cpp, which counts them and lets chosen ones fail.
 */
#ifndef VERIFY_TRACK_HEAP_H
#define VERIFY_TRACK_HEAP_H

#include <cstddef>
#include <vector>

struct Heap {
    bool isWatched = false;
    int allocations = 0;        // of any kind, while watched
    int failing = 0;            // which calloc or posix_memalign fails, from 1; 0 for none
    bool failsOnwards = false;  // and all after it
    int failable = 0;           // calls of these two, while watched
    int open = 0;               // of their blocks and all others: not freed yet
    std::vector<std::size_t> bytes = {};  // asked of calloc
};
extern Heap heap;

/** Watches the heap from here to the end of the scope; the figures stay until the next one. */
class HeapWatch {
  public:
    explicit HeapWatch(int failing = 0, bool failsOnwards = false) {
        heap = Heap{};
        heap.bytes.reserve(64);
        heap.failing = failing;
        heap.failsOnwards = failsOnwards;
        heap.isWatched = true;
    }
    ~HeapWatch() { heap.isWatched = false; }
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;
};

#endif
