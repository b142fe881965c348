/** A float buffer at a chosen alignment between two stretches of NaNs. */
#ifndef VERIFY_REFERENCE_GUARDED_FLOATS_H
#define VERIFY_REFERENCE_GUARDED_FLOATS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace reference {

/**
 * `size` floats that begin `offset` floats after a 64-byte boundary. The guards are quiet NaNs of
 * one bit pattern: a value read from them shows in any result, a value written to them in intact().
 */
class GuardedFloats {
  public:
    explicit GuardedFloats(std::size_t size, std::size_t offset = 0, float fill = 0.0f)
        : size_(size), storage_(size + 2 * GuardFloats + offset, fill) {
        const auto address = reinterpret_cast<std::uintptr_t>(storage_.data() + GuardFloats / 2);
        begin_ = GuardFloats / 2 + (64 - address % 64) % 64 / sizeof(float) + offset;
        std::fill(storage_.data(), data(), guard());
        std::fill(data() + size, storage_.data() + storage_.size(), guard());
    }

    explicit GuardedFloats(const std::vector<float>& values, std::size_t offset = 0)
        : GuardedFloats(values.size(), offset) {
        std::copy(values.begin(), values.end(), data());
    }

    float* data() { return storage_.data() + begin_; }
    const float* data() const { return storage_.data() + begin_; }
    std::size_t size() const { return size_; }
    float& operator[](std::size_t i) { return data()[i]; }
    float operator[](std::size_t i) const { return data()[i]; }

    /** Whether every guard still has its bits. */
    bool intact() const {
        const float pattern = guard();
        for (std::size_t i = 0; i < storage_.size(); ++i) {
            const bool inside = i >= begin_ && i < begin_ + size_;
            if (!inside && std::memcmp(&storage_[i], &pattern, sizeof(float)) != 0) return false;
        }
        return true;
    }

    bool sameBitsAs(const GuardedFloats& other) const {
        return size_ == other.size_ &&
               std::memcmp(data(), other.data(), size_ * sizeof(float)) == 0;
    }

  private:
    static constexpr std::size_t GuardFloats = 64;
    static float guard() { return std::numeric_limits<float>::quiet_NaN(); }

    std::size_t size_;
    std::vector<float> storage_;
    std::size_t begin_ = 0;
};

}  // namespace reference

#endif
