#include "arrays/jsonFields.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/failure.h"
#include "common/text.h"

namespace {

constexpr std::size_t LongestName = 80;  // bytes

}  // namespace

bool isArrayName(const std::string& text) {
    return !text.empty() && text.size() <= LongestName &&
           std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; });
}

JsonFields::JsonFields(const Json& object, std::string where)
    : object_(object), where_(std::move(where)) {
    if (!object.is_object()) fail("", "must be an object in braces");
}

void JsonFields::fail(const std::string& field, const std::string& what) const {
    throw BadData(where_ + ": " + field + (field.empty() ? "" : ": ") + what);
}

void JsonFields::allow(std::initializer_list<const char*> names) const {
    for (const auto& entry : object_.items()) {
        const bool isKnown = std::any_of(names.begin(), names.end(),
                                         [&](const char* n) { return entry.key() == n; });
        if (!isKnown) fail(inQuotes(entry.key()), "is not a field here");
    }
}

const Json* JsonFields::find(const char* field) const {
    const auto found = object_.find(field);
    return found == object_.end() ? nullptr : &*found;
}

const Json& JsonFields::need(const char* field) const {
    const Json* value = find(field);
    if (value == nullptr) fail(field, "is missing");
    return *value;
}

float JsonFields::number(const Json& value, const std::string& field) const {
    if (!value.is_number()) fail(field, "must be a number");
    const double number = value.get<double>();
    if (!(std::fabs(number) <= static_cast<double>(std::numeric_limits<float>::max()))) {
        fail(field, "is beyond every sensible number");
    }
    return static_cast<float>(number);
}

std::int32_t JsonFields::integer(const Json& value, const std::string& field) const {
    if (!value.is_number_integer()) fail(field, "must be a whole number");
    // What does not fit becomes a channel that no array has.
    const auto number = value.is_number_unsigned() && value.get<std::uint64_t>() > 1000000
                            ? 1000000
                            : value.get<std::int64_t>();
    return static_cast<std::int32_t>(std::max<std::int64_t>(-1000000, number));
}

std::string JsonFields::line(const Json& value, const std::string& field) const {
    if (!value.is_string()) fail(field, "must be a text in quotes");
    std::string text = value.get<std::string>();
    if (!isArrayName(text)) fail(field, "must be one line of 1 to 80 bytes");
    return text;
}

bool JsonFields::truth(const Json& value, const std::string& field) const {
    if (!value.is_boolean()) fail(field, "must be true or false");
    return value.get<bool>();
}

const Json& JsonFields::list(const Json& value, const std::string& field, std::size_t most) const {
    if (!value.is_array()) fail(field, "must be a list in brackets");
    if (value.size() > most) {
        fail(field, "has " + std::to_string(value.size()) + " entries, at most " +
                        std::to_string(most) + " are possible");
    }
    return value;
}

Position JsonFields::position(const Json& value, const std::string& field) const {
    if (!value.is_array() || value.size() != 3) {
        fail(field, "must be three numbers in metres: [x, y, z]");
    }
    return {number(value[0], field + "[0]"), number(value[1], field + "[1]"),
            number(value[2], field + "[2]")};
}

VoxlocPair JsonFields::pair(const Json& value, const std::string& field) const {
    if (!value.is_array() || value.size() != 2) fail(field, "must be two channels: [0, 1]");
    return {integer(value[0], field + "[0]"), integer(value[1], field + "[1]")};
}

std::int32_t JsonFields::pairs(const Json& value, const std::string& field,
                               VoxlocPair* pairs) const {
    std::int32_t count = 0;
    for (const Json& entry : list(value, field, VOXLOC_MAX_PAIRS)) {
        pairs[count] = pair(entry, field + "[" + std::to_string(count) + "]");
        ++count;
    }
    return count;
}
