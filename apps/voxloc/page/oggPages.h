/** Pages of an Ogg stream. */
#ifndef VOXLOC_APP_PAGE_OGG_PAGES_H
#define VOXLOC_APP_PAGE_OGG_PAGES_H

#include <cstdio>
#include <vector>

/**
 * Reads the next page; false at the end of the file or at what is no page. The number of its stream
 * becomes 1: encoders draw it by chance, and the same sound is to give the same bytes.
 */
bool readOggPage(std::FILE* file, std::vector<unsigned char>& page);

#endif
