/** The documented JSON form of an array (docs/arrays.md). */
#ifndef VOXLOC_APP_ARRAYS_ARRAY_JSON_H
#define VOXLOC_APP_ARRAYS_ARRAY_JSON_H

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "arrays/arrays.h"

/** Keeps its fields in the order in which they were added. */
using Json = nlohmann::ordered_json;

/** The array in a file. Throws BadData that names the file and the field. */
NamedArray readArrayFile(const std::string& path);

/** The array in a text; `where` begins each message. Checked with voxloc_checkArray. */
NamedArray arrayFromJson(std::string_view text, const std::string& where);

Json arrayToJson(const NamedArray& array);

#endif
