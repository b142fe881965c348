#include "page/oggPages.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace {

// RFC 3533, section 6.
constexpr std::size_t HeaderSize = 27;
constexpr std::size_t StreamNumber = 14;
constexpr std::size_t Checksum = 22;
constexpr std::size_t Segments = 26;
constexpr std::uint32_t Polynomial = 0x04c11db7;

std::array<std::uint32_t, 256> makeTable() {
    std::array<std::uint32_t, 256> table = {};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t rest = byte << 24;
        for (int bit = 0; bit < 8; ++bit) {
            rest = (rest & 0x80000000u) != 0 ? rest << 1 ^ Polynomial : rest << 1;
        }
        table[byte] = rest;
    }
    return table;
}

std::uint32_t checksumOf(const std::vector<unsigned char>& page) {
    static const std::array<std::uint32_t, 256> Table = makeTable();
    std::uint32_t rest = 0;
    for (const unsigned char byte : page) rest = rest << 8 ^ Table[rest >> 24 ^ byte];
    return rest;
}

void put(std::vector<unsigned char>& page, std::size_t place, std::uint32_t word) {
    for (std::size_t i = 0; i < 4; ++i) {
        page[place + i] = static_cast<unsigned char>(word >> 8 * i & 255u);
    }
}

/** Appends so many bytes; false when the file ends before. */
bool append(std::FILE* file, std::vector<unsigned char>& page, std::size_t count) {
    const std::size_t begin = page.size();
    page.resize(begin + count);
    return std::fread(page.data() + begin, 1, count, file) == count;
}

}  // namespace

bool readOggPage(std::FILE* file, std::vector<unsigned char>& page) {
    page.clear();
    if (!append(file, page, HeaderSize) || std::memcmp(page.data(), "OggS", 4) != 0) return false;
    if (!append(file, page, page[Segments])) return false;
    std::size_t size = 0;
    for (std::size_t i = HeaderSize; i < page.size(); ++i) size += page[i];
    if (!append(file, page, size)) return false;
    put(page, StreamNumber, 1);
    put(page, Checksum, 0);
    put(page, Checksum, checksumOf(page));
    return true;
}
