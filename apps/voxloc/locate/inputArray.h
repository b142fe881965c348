/** The array that an input was made with. */
#ifndef VOXLOC_APP_LOCATE_INPUT_ARRAY_H
#define VOXLOC_APP_LOCATE_INPUT_ARRAY_H

#include <string>

#include "arrays/arrays.h"
#include "readers/reader.h"

/**
 * The array of that name or file; if `nameOrFile` is empty, that of the recording. Throws
 * WrongUsage when there is neither, BadData when the input's channels are not as many as its
 * microphones.
 */
NamedArray arrayFor(const std::string& nameOrFile, const InputFormat& input,
                    const ReadOptions& read);

#endif
