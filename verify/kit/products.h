/** The library's products as a range: whatever is done for each of them goes over it. */
#ifndef VERIFY_KIT_PRODUCTS_H
#define VERIFY_KIT_PRODUCTS_H

#include <vector>

#include "voxloc/voxloc.h"

namespace kit {

inline std::vector<VoxlocProduct> products() {
    std::vector<VoxlocProduct> rows;
    for (uint32_t i = 0; i < voxloc_getNumberOfProducts(); ++i) {
        rows.push_back(*voxloc_getProduct(i));
    }
    return rows;
}

}  // namespace kit

#endif
