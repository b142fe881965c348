#include "common/table.h"

#include <algorithm>
#include <cstddef>

#include "common/text.h"

namespace {

/** Characters, not bytes: UTF-8's later bytes take no room. */
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
    }));
}

}  // namespace

Table::Table(std::string_view sides, std::vector<std::string> header) : sides_(sides) {
    add(std::move(header));
}

void Table::add(std::vector<std::string> row) {
    row.resize(sides_.size());
    rows_.push_back(std::move(row));
}

std::string Table::text() const {
    std::vector<std::size_t> widths(sides_.size(), 0);
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    std::string text;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string blanks(widths[i] - widthOf(row[i]), ' ');
            if (i > 0) line += "  ";
            line += sides_[i] == 'l' ? row[i] + blanks : blanks + row[i];
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string fixed(double value, int digits) {
    std::string text;
    appendFixed(text, value, digits);
    return text;
}
