/** Test data from fixed seeds. */
#ifndef VERIFY_KIT_NOISE_H
#define VERIFY_KIT_NOISE_H

#include <cstddef>
#include <random>
#include <vector>

namespace reference {

/** Uniform in [-1, 1). */
inline std::vector<float> noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0f, 1.0f);
    std::vector<float> samples(count);
    for (float& sample : samples) sample = level(random);
    return samples;
}

}  // namespace reference

#endif
