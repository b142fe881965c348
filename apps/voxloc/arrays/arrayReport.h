/** Arrays in tables for people. */
#ifndef VOXLOC_APP_ARRAYS_ARRAY_REPORT_H
#define VOXLOC_APP_ARRAYS_ARRAY_REPORT_H

#include <string>

#include "arrays/arrays.h"

/** The built-in arrays, a line each. */
std::string listOfArrays();

/** What an array can resolve. */
std::string reportOnArray(const NamedArray& array);

#endif
