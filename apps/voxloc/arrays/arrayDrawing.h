/** An array as a picture: where the microphones are and what they resolve. */
#ifndef VOXLOC_APP_ARRAYS_ARRAY_DRAWING_H
#define VOXLOC_APP_ARRAYS_ARRAY_DRAWING_H

#include <string>

#include "arrays/arrays.h"

/** A whole SVG document, for light and dark. */
std::string drawArray(const NamedArray& array);

/** From the front and from above, an element <svg> each, for a page that styles their classes. */
std::string drawViews(const NamedArray& array);

#endif
