// Array files: any text is refused with one line or read; what is read can be tracked with and
// prints to what reads back to itself.

#include <string>

#include "arrays/arrayJson.h"
#include "arrays/suggest.h"
#include "common/failure.h"
#include "fuzz.h"

namespace {

void demandOneLine(const std::string& message) {
    demand(message.rfind("fuzz: ", 0) == 0, "a refusal begins with the file");
    demand(message.find('\n') == std::string::npos, "a refusal is one line");
}

void read(std::string_view text) {
    try {
        const NamedArray array = arrayFromJson(text, "fuzz");
        demand(array.product || voxloc_checkArray(&array.array, nullptr) == 1,
               "what is read can be tracked with");
        const std::string printed = arrayToText(array);
        demand(printed == arrayToText(arrayFromJson(printed, "fuzz")), "an array reads back");
    } catch (const BadData& refusal) {
        demandOneLine(refusal.what());
    }
}

void suggest(std::string_view text) {
    try {
        const Suggestion suggestion = suggestPairs(draftFromJson(text, "fuzz"), "fuzz");
        arrayFromJson(arrayToText(suggestion.named), "fuzz");
    } catch (const BadData& refusal) {
        demandOneLine(refusal.what());
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    read(asText(data, size));
    suggest(asText(data, size));
    return 0;
}
