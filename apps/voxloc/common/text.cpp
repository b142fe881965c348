#include "common/text.h"

#include <array>
#include <charconv>
#include <cmath>

void appendNumber(std::string& text, float value) {
    if (std::isnan(value)) {
        text += "nan";  // without the sign that some machines give it
        return;
    }
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    text.append(digits.data(), end.ptr);
}

void appendFixed(std::string& text, double value, int digits) {
    if (!std::isfinite(value)) {
        appendNumber(text, static_cast<float>(value));
        return;
    }
    std::array<char, 400> number;
    const auto end = std::to_chars(number.data(), number.data() + number.size(), value,
                                   std::chars_format::fixed, digits);
    text.append(number.data(), end.ptr);
}

std::optional<double> numberFrom(std::string_view text) {
    double value = 0.0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || end.ec != std::errc{} || end.ptr != text.data() + text.size()) return {};
    return value;
}

std::optional<long long> integerFrom(std::string_view text) {
    long long value = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || end.ec != std::errc{} || end.ptr != text.data() + text.size()) return {};
    return value;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string inQuotes(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        result += code < 32 || code == 127 ? '?' : c;
    }
    return result + "'";
}
