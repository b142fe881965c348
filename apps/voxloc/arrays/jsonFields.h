/** The fields of one object in the documented form of an array. */
#ifndef VOXLOC_APP_ARRAYS_JSON_FIELDS_H
#define VOXLOC_APP_ARRAYS_JSON_FIELDS_H

#include <cstdint>
#include <initializer_list>
#include <string>

#include "arrays/arrayJson.h"

/** Whether it is one line of 1 to 80 bytes. */
bool isArrayName(const std::string& text);

/**
 * Reads the fields of one JSON object. Everything throws BadData where a field is not what it must
 * be; every complaint begins with the place and the field.
 */
class JsonFields {
  public:
    /** The object must live as long. */
    JsonFields(const Json& object, std::string where);

    [[noreturn]] void fail(const std::string& field, const std::string& what) const;

    /** Throws for a field of any other name. */
    void allow(std::initializer_list<const char*> names) const;

    /** Null when it is not there. */
    const Json* find(const char* field) const;
    const Json& need(const char* field) const;

    float number(const Json& value, const std::string& field) const;
    std::int32_t integer(const Json& value, const std::string& field) const;
    std::string line(const Json& value, const std::string& field) const;
    bool truth(const Json& value, const std::string& field) const;

    /** The value itself, with at most so many entries. */
    const Json& list(const Json& value, const std::string& field, std::size_t most) const;

    Position position(const Json& value, const std::string& field) const;
    VoxlocPair pair(const Json& value, const std::string& field) const;

    /** Writes up to VOXLOC_MAX_PAIRS pairs; returns their count. */
    std::int32_t pairs(const Json& value, const std::string& field, VoxlocPair* pairs) const;

  private:
    const Json& object_;
    std::string where_;
};

#endif
