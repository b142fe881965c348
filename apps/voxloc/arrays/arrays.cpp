#include "arrays/arrays.h"

#include <fstream>
#include <iterator>

#include "arrays/arrayJson.h"
#include "common/failure.h"

namespace {

NamedArray named(const VoxlocProduct& product) {
    return {product.name, product.array, product.type};
}

std::string namesOfProducts() {
    std::string names;
    for (std::uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        names += (i == 0 ? "" : ", ") + std::string(voxloc_getProduct(i)->name);
    }
    return names;
}

}  // namespace

NamedArray findArray(const std::string& nameOrFile) {
    const VoxlocProduct* product = voxloc_findProductByName(nameOrFile.c_str());
    if (product != nullptr) return named(*product);
    if (nameOrFile.find('/') == std::string::npos && nameOrFile.find('.') == std::string::npos) {
        throw BadData("no array is called '" + nameOrFile + "': there are " + namesOfProducts() +
                      ", and files (NAME.json)");
    }
    return readArrayFile(nameOrFile);
}

NamedArray productArray(std::int32_t type) {
    const VoxlocProduct* product = voxloc_findProduct(type);
    if (product == nullptr) throw BadData("no product has the number " + std::to_string(type));
    return named(*product);
}

Tracker createTracker(const NamedArray& array) {
    char reason[VOXLOC_REASON_SIZE] = "";
    Tracker tracker(array.product ? voxloc_createProductTracker(*array.product, reason)
                                  : voxloc_createTracker(&array.array, reason));
    if (tracker == nullptr) throw BadData("array " + array.name + ": " + reason);
    return tracker;
}
