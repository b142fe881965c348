/** The documented JSON form of an array (docs/arrays.md). */
#ifndef VOXLOC_APP_ARRAYS_ARRAY_JSON_H
#define VOXLOC_APP_ARRAYS_ARRAY_JSON_H

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "arrays/arrays.h"

/** Keeps its fields in the order in which they were added. */
using Json = nlohmann::ordered_json;

/** The form that is written, and the only one that is read. */
constexpr int ArrayFormVersion = 1;

/** What a text says of an array, and which of the fields that one may leave out it has. */
struct ArrayDraft {
    NamedArray named;
    bool hasAzimuthPairs = false, hasElevationPairs = false;
    bool hasVoiceChannels = false, hasNoiseChannels = false, hasTimeDomainVoiceChannel = false;
};

/** The text of a file, or of standard input for "-". Throws BadData. */
std::string readArrayText(const std::string& path);

/** The array in a file; "-" is standard input. Throws BadData that names the file and the field. */
NamedArray readArrayFile(const std::string& path);

/** The array in a text; `where` begins each message. Checked with voxloc_checkArray. */
NamedArray arrayFromJson(std::string_view text, const std::string& where);

/** Each field looked over by itself; whether the array can work is not checked. */
ArrayDraft draftFromJson(std::string_view text, const std::string& where);

/** Throws BadData with the library's reason in the terms of the file. */
void checkArray(const NamedArray& named, const std::string& where);

/** Reads back to the same bits. */
Json arrayToJson(const NamedArray& array);

/** The same for people: a field a line, a microphone a line. */
std::string arrayToText(const NamedArray& array);

#endif
