/** The module, initialised for the length of a scope. */
#ifndef VERIFY_TRACK_INITIALIZED_MODULE_H
#define VERIFY_TRACK_INITIALIZED_MODULE_H

#include <cstdint>

#include "voxloc/voxloc.h"

class InitializedModule {
  public:
    explicit InitializedModule(std::int32_t product) { voxloc_initialize(product); }
    ~InitializedModule() { voxloc_destroy(); }
    InitializedModule(const InitializedModule&) = delete;
    InitializedModule& operator=(const InitializedModule&) = delete;
};

#endif
