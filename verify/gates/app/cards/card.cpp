/**
 * What the doctor finds, and what it finds where there is nothing, over rooms and products.
 *
 *     voxloc_doctor_card RECORDINGS SEED [--verbose | --limits]
 *
 * prints a table in Markdown from so many recordings a product; --verbose also each miss. With
 * --limits it tries only what limits are held for, and fails when one is missed.
 */
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "faults.h"

namespace {

struct Tally {
    int tried = 0, found = 0, alone = 0;
};

/** Row 0: sound recordings, `found` those of which nothing is said; then the injections. */
struct Card {
    std::vector<std::vector<Tally>> rows;  // of each row and product
    std::mutex mutex;

    Card() : rows(injections().size() + 1, std::vector<Tally>(voxloc_getNumberOfProducts())) {}
};

constexpr std::size_t LimitedRows = 9;    // of the injections, from the first on
constexpr double LeastFound = 95.0;       // per cent of all of them
constexpr double LeastFoundOfOne = 85.0;  // per cent of each
constexpr double LeastSound = 98.0;       // per cent of sound recordings

bool g_isVerbose = false, g_isLimited = false;

/** As what it is, or as what it may be. */
bool names(const Diagnosis& diagnosis, Fault fault, const std::vector<int>& channels) {
    return std::any_of(diagnosis.findings.begin(), diagnosis.findings.end(),
                       [&](const Finding& one) {
                           const auto& other = one.instead;
                           return one.fault == fault &&
                                  (one.channels == channels ||
                                   std::find(other.begin(), other.end(), channels) != other.end());
                       });
}

void say(const VoxlocProduct& product, std::uint64_t seed, const char* what,
         const std::vector<int>& channels, const Diagnosis& diagnosis) {
    if (!g_isVerbose) return;
    std::string text = std::string(product.name) + " " + std::to_string(seed) + " " + what;
    for (const int c : channels) text += " " + std::to_string(c);
    text += " | speech " + std::to_string(diagnosis.speechSeconds) + " response " +
            std::to_string(diagnosis.response);
    for (const Finding& one : diagnosis.findings) {
        text += " | " + one.text;
        for (const auto& [name, value] : one.figures) {
            text += " " + name + "=" + std::to_string(value);
        }
    }
    for (const std::string& note : diagnosis.notes) text += " | note: " + note;
    std::fprintf(stderr, "%s\n", text.c_str());
}

void tally(Card& card, std::size_t row, std::uint32_t product, bool isFound, bool isAlone) {
    const std::lock_guard<std::mutex> lock(card.mutex);
    Tally& one = card.rows[row][product];
    ++one.tried;
    one.found += isFound ? 1 : 0;
    one.alone += isFound && isAlone ? 1 : 0;
}

void trySound(Card& card, std::uint32_t index, std::uint64_t seed, const Channels& sound) {
    const VoxlocProduct& product = *voxloc_getProduct(index);
    const Diagnosis diagnosis = diagnosed(product, sound);
    const bool isSound = diagnosis.verdict == Verdict::Sound;
    if (!isSound) say(product, seed, "FALSE ALARM", {}, diagnosis);
    tally(card, 0, index, isSound, true);
}

void tryFault(Card& card, std::size_t row, std::uint32_t index, std::uint64_t seed,
              Channels channels) {
    const VoxlocProduct& product = *voxloc_getProduct(index);
    const Injection& injection = injections()[row - 1];
    Dice dice(seed * 1000 + row);
    const std::vector<int> expected = inject(injection, dice, channels);
    const Diagnosis diagnosis = diagnosed(product, channels);
    const bool isFound = names(diagnosis, injection.fault, expected);
    const bool isAlone =
        diagnosis.findings.size() == 1 && diagnosis.findings.front().instead.empty();
    if (!isFound || !isAlone) {
        say(product, seed, (std::string(isFound ? "BESIDE " : "MISSED ") + injection.text).c_str(),
            expected, diagnosis);
    }
    tally(card, row, index, isFound, isAlone);
}

void tryRecording(Card& card, std::uint32_t index, std::uint64_t seed) {
    const Channels sound = soundRecording(voxloc_getProduct(index)->array, seed);
    trySound(card, index, seed, sound);
    for (std::size_t row = 1; row <= injections().size(); ++row) {
        const std::uint64_t every = row <= LimitedRows ? (g_isLimited ? 1 : 2) : 5;
        if ((row > LimitedRows && g_isLimited) || (seed + row) % every != 0) continue;
        tryFault(card, row, index, seed, sound);
    }
}

std::string cell(const Tally& one) {
    if (one.tried == 0) return "-";
    return std::to_string(one.found) + "/" + std::to_string(one.tried);
}

Tally sumOf(const std::vector<Tally>& row) {
    Tally sum;
    for (const Tally& one : row) {
        sum.tried += one.tried;
        sum.found += one.found;
        sum.alone += one.alone;
    }
    return sum;
}

double percent(int part, int whole) {
    return whole > 0 ? 100.0 * part / whole : 0.0;
}

std::string rowText(const std::string& title, const std::vector<Tally>& row) {
    std::string text = "| " + title + " |";
    for (const Tally& one : row) text += " " + cell(one) + " |";
    const Tally all = sumOf(row);
    char share[64];
    std::snprintf(share, sizeof share, " %.1f | %.1f |\n", percent(all.found, all.tried),
                  percent(all.alone, all.tried));
    return text + share;
}

bool keeps(const char* what, const Tally& tally, double least) {
    const double share = percent(tally.found, tally.tried);
    std::printf("%s: %d of %d, %.1f %%\n", what, tally.found, tally.tried, share);
    if (share >= least) return true;
    std::printf("that is less than %.1f %%\n", least);
    return false;
}

bool keepsLimits(const Card& card) {
    bool isKept = keeps("sound recordings found sound", sumOf(card.rows[0]), LeastSound);
    Tally all;
    for (std::size_t row = 1; row <= LimitedRows; ++row) {
        const Tally one = sumOf(card.rows[row]);
        all.tried += one.tried;
        all.found += one.found;
        isKept = keeps(injections()[row - 1].text, one, LeastFoundOfOne) && isKept;
    }
    return keeps("of all these faults", all, LeastFound) && isKept;
}

void print(const Card& card) {
    std::string text = "| |";
    std::string line = "|---|";
    for (std::uint32_t p = 0; p < voxloc_getNumberOfProducts(); ++p) {
        text += std::string(" ") + voxloc_getProduct(p)->name + " |";
        line += "---|";
    }
    text += " % | % without doubt |\n" + line + "---|---|\n";
    text += rowText("sound, and said so", card.rows[0]);
    for (std::size_t i = 0; i < injections().size(); ++i) {
        text += rowText(injections()[i].text, card.rows[i + 1]);
    }
    std::fputs(text.c_str(), stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: voxloc_doctor_card RECORDINGS SEED [--verbose | --limits]\n", stderr);
        return 2;
    }
    const int recordings = std::atoi(argv[1]);
    const auto seed = static_cast<std::uint64_t>(std::atoll(argv[2]));
    g_isVerbose = argc > 3 && std::strcmp(argv[3], "--verbose") == 0;
    g_isLimited = argc > 3 && std::strcmp(argv[3], "--limits") == 0;
    Card card;
    const std::uint32_t products = voxloc_getNumberOfProducts();
    const auto jobs = static_cast<std::uint32_t>(recordings) * products;
    std::atomic<std::uint32_t> next{0};
    std::vector<std::thread> workers;
    for (unsigned w = 0; w < std::max(1u, std::thread::hardware_concurrency()); ++w) {
        workers.emplace_back([&] {
            for (std::uint32_t job = next++; job < jobs; job = next++) {
                tryRecording(card, job % products, seed + job);
            }
        });
    }
    for (std::thread& worker : workers) worker.join();
    if (g_isLimited) return keepsLimits(card) ? 0 : 1;
    print(card);
    return 0;
}
