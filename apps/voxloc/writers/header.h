/** What stands at the head of every run. */
#ifndef VOXLOC_APP_WRITERS_HEADER_H
#define VOXLOC_APP_WRITERS_HEADER_H

#include <optional>
#include <string>

#include "arrays/arrayJson.h"
#include "arrays/arrays.h"
#include "readers/reader.h"

/** The form of records and headers; counted up when a field changes its meaning. */
constexpr int SchemaVersion = 1;

struct RunHeader {
    NamedArray array;
    InputFormat input;
    ReadOptions options;
    std::string farEnd;           // the file of flag times, or empty
    std::optional<double> clock;  // seconds since 1970 at the first sample: times are of the wall
};

/** {"type": "header", "schema": 1, "version", "input", "array", "options" ...}: docs/records.md. */
Json headerToJson(const RunHeader& header);

/** "2026-11-21T10:00:00.042Z" from seconds since 1970. */
std::string wallTime(double seconds);

#endif
