/** Numbers as text and back: the shortest text that reads back to the same bits, in any locale. */
#ifndef VOXLOC_APP_COMMON_TEXT_H
#define VOXLOC_APP_COMMON_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** Appends a float: shortest round trip, "nan", "inf" or "-inf". */
void appendNumber(std::string& text, float value);

/** Appends a number with that many digits after the point. */
void appendFixed(std::string& text, double value, int digits);

/** The whole text as a number; nothing when it is not one. Takes what appendNumber writes. */
std::optional<double> numberFrom(std::string_view text);
std::optional<long long> integerFrom(std::string_view text);

std::vector<std::string> split(std::string_view text, char separator);
std::string_view trimmed(std::string_view text);

/** The text in quotes that one line holds: control characters become question marks. */
std::string inQuotes(std::string_view text);

#endif
