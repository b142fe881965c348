#include "simulator/convolution.h"

#include <algorithm>

#include <voxloc/voxlocParts.h>

namespace {

constexpr std::size_t LeastBlock = 1024, MostBlock = 8192;

using Spectra = std::vector<std::vector<float>>;

/** The spectra of a signal's blocks, each followed by as many zeros. */
Spectra spectraOf(const std::vector<float>& signal, std::size_t block, Transform& transform) {
    Spectra spectra;
    std::vector<float> samples(2 * block);
    for (std::size_t from = 0; from < signal.size(); from += block) {
        const std::size_t count = std::min(block, signal.size() - from);
        std::fill(samples.begin(), samples.end(), 0.0f);
        std::copy_n(signal.begin() + static_cast<std::ptrdiff_t>(from), count, samples.begin());
        transform.forward(samples.data(), spectra.emplace_back(2 * block + 2).data());
    }
    return spectra;
}

void addProduct(const std::vector<float>& a, const std::vector<float>& b, std::vector<float>& sum) {
    for (std::size_t i = 0; i + 1 < sum.size(); i += 2) {
        sum[i] += a[i] * b[i] - a[i + 1] * b[i + 1];
        sum[i + 1] += a[i] * b[i + 1] + a[i + 1] * b[i];
    }
}

void addSamples(const float* samples, std::size_t count, std::ptrdiff_t start,
                std::vector<float>& channel) {
    const auto end = static_cast<std::ptrdiff_t>(channel.size());
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, -start);
    const std::ptrdiff_t last =
        std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(count), end - start);
    for (std::ptrdiff_t i = first; i < last; ++i) {
        channel[static_cast<std::size_t>(start + i)] += samples[i];
    }
}

void addThroughOne(const Spectra& sound, const Spectra& response, std::size_t block,
                   std::ptrdiff_t start, Transform& transform, std::vector<float>& channel) {
    std::vector<float> sum(2 * block + 2);
    for (std::size_t j = 0; j + 1 < sound.size() + response.size(); ++j) {
        std::fill(sum.begin(), sum.end(), 0.0f);
        const std::size_t first = j < sound.size() ? 0 : j - sound.size() + 1;
        for (std::size_t p = first; p <= std::min(j, response.size() - 1); ++p) {
            addProduct(sound[j - p], response[p], sum);
        }
        transform.inverse(sum.data());
        addSamples(sum.data(), 2 * block, start + static_cast<std::ptrdiff_t>(j * block), channel);
    }
}

}  // namespace

Transform::Transform(int size)
    : size_(size),
      aTable_(static_cast<std::size_t>(size)),
      bTable_(static_cast<std::size_t>(size)),
      work_(static_cast<std::size_t>(size) + 2) {
    voxloc_generateAbTables(aTable_.data(), bTable_.data(), size / 2);
}

void Transform::forward(float* samples, float* spectrum) {
    voxloc_realFft(size_, samples, nullptr, spectrum, 0, aTable_.data(), bTable_.data(),
                   work_.data());
}

void Transform::inverse(float* spectrum) {
    voxloc_realIfft(size_, spectrum, nullptr, work_.data(), 0, aTable_.data(), bTable_.data());
}

void addThrough(const std::vector<std::vector<float>>& responses, const std::vector<float>& sound,
                std::ptrdiff_t start, std::vector<std::vector<float>>& channels) {
    if (sound.empty() || responses.empty()) return;
    std::size_t block = LeastBlock;
    while (block < MostBlock && block < responses.front().size()) block *= 2;
    Transform transform(static_cast<int>(2 * block));
    const Spectra spectra = spectraOf(sound, block, transform);
    for (std::size_t c = 0; c < responses.size(); ++c) {
        addThroughOne(spectra, spectraOf(responses[c], block, transform), block, start, transform,
                      channels[c]);
    }
}
