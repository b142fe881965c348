/** Tables for people: columns as wide as their widest cell. */
#ifndef VOXLOC_APP_COMMON_TABLE_H
#define VOXLOC_APP_COMMON_TABLE_H

#include <string>
#include <string_view>
#include <vector>

class Table {
  public:
    /** One letter a column: 'l' puts cells to the left, 'r' to the right. */
    Table(std::string_view sides, std::vector<std::string> header);

    /** As many cells as there are columns. */
    void add(std::vector<std::string> row);

    /** Lines with their ends, without blanks at them. */
    std::string text() const;

  private:
    std::string sides_;
    std::vector<std::vector<std::string>> rows_;
};

/** A number with that many digits after the point. */
std::string fixed(double value, int digits);

#endif
