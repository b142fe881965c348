/** Bytes as text that a page can hold. */
#ifndef VOXLOC_APP_PAGE_BASE64_H
#define VOXLOC_APP_PAGE_BASE64_H

#include <cstddef>
#include <string>

/** Appends the bytes in base64, padded to a whole number of fours. */
void appendBase64(std::string& text, const void* bytes, std::size_t count);

#endif
