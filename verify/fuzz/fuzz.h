/** What fuzz targets share. */
#ifndef VERIFY_FUZZ_FUZZ_H
#define VERIFY_FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/** Ends the program, which libFuzzer takes for a find. */
inline void demand(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/** An input taken apart from its start on; what is taken behind its end is zero. */
class InputReader {
  public:
    InputReader(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    bool isEmpty() const { return left_ == 0; }
    std::string_view rest() const { return asText(data_, left_); }

    template <class Value>
    Value take() {
        Value value{};
        const std::size_t bytes = left_ < sizeof value ? left_ : sizeof value;
        if (bytes > 0) std::memcpy(&value, data_, bytes);
        data_ += bytes;
        left_ -= bytes;
        return value;
    }

    /** 0 to bound-1 */
    int below(int bound) { return take<std::uint16_t>() % bound; }

    /** Any number, mostly a small one of either sign. */
    int number() {
        const int wide = take<std::int8_t>();
        return wide == INT8_MIN ? take<std::int32_t>() : wide;
    }

    std::string_view bytes(std::size_t most) {
        const std::size_t count = left_ < most ? left_ : most;
        const std::string_view text = asText(data_, count);
        data_ += count;
        left_ -= count;
        return text;
    }

    /**
     * Floats of a kind that the input chooses: any bits as they are, whole numbers of 16 or 24
     * bits, or one value; out of `most` numbers of the input at most, again and again.
     */
    std::vector<float> floats(std::size_t count, std::size_t most) {
        const int kind = below(4);
        std::vector<float> drawn;
        const std::size_t needed = kind == 3 ? 1 : count < most ? count : most;
        while (drawn.size() < needed && (drawn.empty() || left_ > 0)) {
            drawn.push_back(kind == 1   ? static_cast<float>(take<std::int16_t>())
                            : kind == 2 ? static_cast<float>(take<std::int32_t>() >> 8)
                                        : take<float>());
        }
        std::vector<float> values(count);
        for (std::size_t i = 0; i < count; ++i) values[i] = drawn[i % drawn.size()];
        return values;
    }

  private:
    const std::uint8_t* data_;
    std::size_t left_;
};

#endif
