/** Data in a page. */
#ifndef VOXLOC_APP_PAGE_DATA_ELEMENT_H
#define VOXLOC_APP_PAGE_DATA_ELEMENT_H

#include <string>

/** A JSON text as an element of the page; no "<" in it can end the element. */
std::string dataElement(const char* id, const std::string& json);

#endif
