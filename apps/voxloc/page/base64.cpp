#include "page/base64.h"

#include <cstdint>

namespace {

constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

void appendBase64(std::string& text, const void* bytes, std::size_t count) {
    const auto* const byte = static_cast<const unsigned char*>(bytes);
    const std::size_t begin = text.size();
    text.resize(begin + (count + 2) / 3 * 4, '=');
    char* out = &text[begin];
    for (std::size_t i = 0; i < count; i += 3) {
        const std::size_t left = count - i;
        const std::uint32_t word = static_cast<std::uint32_t>(byte[i]) << 16 |
                                   (left > 1 ? static_cast<std::uint32_t>(byte[i + 1]) << 8 : 0u) |
                                   (left > 2 ? static_cast<std::uint32_t>(byte[i + 2]) : 0u);
        out[0] = Digits[word >> 18];
        out[1] = Digits[word >> 12 & 63u];
        if (left > 1) out[2] = Digits[word >> 6 & 63u];
        if (left > 2) out[3] = Digits[word & 63u];
        out += 4;
    }
}
