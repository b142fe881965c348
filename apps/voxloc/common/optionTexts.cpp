#include "common/optionTexts.h"

#include <ctime>

#include "common/failure.h"
#include "common/text.h"

std::vector<int> channelsFrom(const std::string& list) {
    std::vector<int> channels;
    if (list.empty()) return channels;
    for (const std::string& part : split(list, ',')) {
        const auto channel = integerFrom(trimmed(part));
        if (!channel || *channel < 0 || *channel > 1023) {
            throw WrongUsage("--channels takes channels from 0 on with commas between, not " +
                             inQuotes(list));
        }
        channels.push_back(static_cast<int>(*channel));
    }
    return channels;
}

std::optional<double> clockFrom(const std::string& text) {
    if (text.empty()) return {};
    if (text == "now") return static_cast<double>(std::time(nullptr));
    std::tm parts = {};
    const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    if (rest == nullptr || (*rest != '\0' && std::string(rest) != "Z")) {
        throw WrongUsage("--clock takes now or a time such as 2026-11-21T10:00:00Z, not " +
                         inQuotes(text));
    }
    return static_cast<double>(timegm(&parts));
}
