#include "readers/inputOptions.h"

#include "common/optionTexts.h"

void addInputOptions(CLI::App& command, InputOptions& options) {
    ReadOptions& read = options.read;
    command.add_option("-a,--array", options.array,
                       "The array: a built-in one by its name, or a file NAME.json");
    command.add_option("--channels", options.channels,
                       "Channels of the input, one a microphone: 3,0,1,2");
    command.add_option("--gain", read.gain, "Decibels on every sample")
        ->check(CLI::Range(-120.0, 120.0));
    command.add_option("--far-end", options.farEnd,
                       "CSV of the seconds in which the loudspeaker plays: from,to");
    command.add_option("--clock", options.clock,
                       "Times of the wall from this one on: now, or 2026-11-21T10:00:00Z");
    command.add_flag("--strict", read.strict, "Refuse what does not run at 48 kHz");
    command
        .add_option("--raw", read.rawFormat,
                    "The input is raw samples: S16, S24, S24_3, S32 or F32, little-endian")
        ->check(CLI::IsMember({"S16", "S24", "S24_3", "S32", "F32"}));
    command.add_option("--raw-channels", read.rawChannels, "Channels of raw samples")
        ->check(CLI::Range(1, 1024));
    command.add_option("--raw-rate", read.rawRate, "Rate of raw samples in Hz")
        ->check(CLI::Range(8000, 768000));
}

ReadOptions readOptionsFrom(const InputOptions& options) {
    ReadOptions read = options.read;
    read.channels = channelsFrom(options.channels);
    return read;
}
