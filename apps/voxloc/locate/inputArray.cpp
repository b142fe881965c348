#include "locate/inputArray.h"

#include "common/failure.h"
#include "readers/channelMap.h"

namespace {

NamedArray arrayOf(const std::string& nameOrFile, const InputFormat& input) {
    if (!nameOrFile.empty()) return findArray(nameOrFile);
    if (input.product) return productArray(*input.product);
    throw WrongUsage(input.name +
                     (input.isRecording ? ": was made with an array of its own"
                                        : ": says nothing of its microphones") +
                     "; give its array with --array");
}

}  // namespace

NamedArray arrayFor(const std::string& nameOrFile, const InputFormat& input,
                    const ReadOptions& read) {
    NamedArray array = arrayOf(nameOrFile, input);
    const int channels = mappedChannels(input, read);
    if (channels == array.array.channels) return array;
    throw BadData(input.name + ": has " + std::to_string(channels) + " channels" +
                  (read.channels.empty() ? "" : " after --channels") + ", array " + array.name +
                  " has " + std::to_string(array.array.channels) +
                  (read.channels.empty() ? "; choose and order them with --channels" : ""));
}
