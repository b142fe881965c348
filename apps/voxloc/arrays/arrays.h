/** Microphone arrays by name or by file. */
#ifndef VOXLOC_APP_ARRAYS_ARRAYS_H
#define VOXLOC_APP_ARRAYS_ARRAYS_H

#include <memory>
#include <optional>
#include <string>

#include <voxloc/voxloc.h>

struct NamedArray {
    std::string name;
    VoxlocArray array = {};
    std::optional<std::int32_t> product;  // PRODUCT_... of a built-in one
};

/** A built-in array by its name, else the array in the JSON file of that name. Throws BadData. */
NamedArray findArray(const std::string& nameOrFile);

/** The built-in array of that type. Throws BadData. */
NamedArray productArray(std::int32_t type);

struct DestroyTracker {
    void operator()(VoxlocTracker* tracker) const { voxloc_destroyTracker(tracker); }
};
using Tracker = std::unique_ptr<VoxlocTracker, DestroyTracker>;

/** Throws BadData with the library's reason. */
Tracker createTracker(const NamedArray& array);

#endif
