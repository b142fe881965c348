/** Chooses pairs and channels for microphones that come without. */
#ifndef VOXLOC_APP_ARRAYS_SUGGEST_H
#define VOXLOC_APP_ARRAYS_SUGGEST_H

#include <string>
#include <vector>

#include "arrays/arrayJson.h"

struct Suggestion {
    NamedArray named;
    std::vector<std::string> notes;  // what such an array cannot do
};

/**
 * Fills in what the draft leaves out and keeps what it says. Throws BadData, which begins with
 * `where`, when no two microphones can be an azimuth pair.
 */
Suggestion suggestPairs(const ArrayDraft& draft, const std::string& where);

#endif
