#include "doctor/doctorCommand.h"

#include <memory>

#include "common/failure.h"
#include "common/signals.h"
#include "doctor/doctor.h"
#include "locate/inputArray.h"
#include "readers/farEnd.h"
#include "readers/inputOptions.h"
#include "writers/output.h"

namespace {

// In the place of StatusBadData, which would read as an array with faults.
enum DoctorStatus : int { StatusFaults = 1, StatusCannotTell = 3 };

struct Arguments {
    std::vector<std::string> files;
    InputOptions input;
    std::string output = "-", form = "text";
};

struct Examined {
    std::string array;
    Diagnosis diagnosis;
};

/** To the end of the input or up to damage, of which a note speaks then. */
void readAll(FrameReader& reader, const FarEnd& farEnd, Doctor& doctor, std::string& damage) {
    InputFrame frame;
    try {
        while (!stopRequested() && reader.read(frame)) {
            if (farEnd.isPlaying(frame.sample)) {
                voxloc_setFlag(VOXLOC_INPUT_FAR_END, 1, &frame.flags);
            }
            doctor.add(frame);
        }
    } catch (const BadData& failure) {
        damage = failure.what();
    }
}

Examined examine(const std::string& file, const Arguments& arguments, const ReadOptions& read,
                 const FarEnd& farEnd) {
    const std::unique_ptr<FrameReader> reader = openReader(file, read);
    const NamedArray array = arrayFor(arguments.input.array, reader->format(), read);
    Doctor doctor(array);
    std::string damage;
    readAll(*reader, farEnd, doctor, damage);
    Examined examined{array.name, doctor.diagnose()};
    if (!damage.empty()) {
        say(damage);
        examined.diagnosis.notes.push_back("the input is damaged and was read up to there only");
        if (examined.diagnosis.verdict == Verdict::Sound) {
            examined.diagnosis.verdict = Verdict::CannotTell;
        }
    }
    return examined;
}

int statusOf(bool hasFaults, bool isUnsure) {
    if (stopRequested()) return StatusInterrupted;
    if (hasFaults) return StatusFaults;
    return isUnsure ? int{StatusCannotTell} : int{StatusSuccess};
}

int runDoctor(Arguments& arguments) {
    const ReadOptions read = readOptionsFrom(arguments.input);
    const FarEnd farEnd =
        arguments.input.farEnd.empty() ? FarEnd() : FarEnd::fromFile(arguments.input.farEnd);
    Output output(arguments.output);
    bool hasFaults = false, isUnsure = false;
    for (const std::string& file : arguments.files) {
        if (stopRequested()) break;
        try {
            const Examined examined = examine(file, arguments, read, farEnd);
            const auto& write = arguments.form == "json" ? diagnosisJson : diagnosisText;
            output.write(write(file, examined.array, examined.diagnosis));
            hasFaults = hasFaults || examined.diagnosis.verdict == Verdict::Faults;
            isUnsure = isUnsure || examined.diagnosis.verdict == Verdict::CannotTell;
        } catch (const BadData& unreadable) {
            say(unreadable.what());
            isUnsure = true;
        }
    }
    output.finish();
    return statusOf(hasFaults, isUnsure);
}

int guardedDoctor(void* context) {
    try {
        return runDoctor(*static_cast<Arguments*>(context));
    } catch (const BadData& failure) {
        say(failure.what());
        return StatusCannotTell;
    }
}

void addOptions(CLI::App& command, Arguments& arguments) {
    command.add_option("files", arguments.files, "Recordings or sound files; - is standard input")
        ->required();
    addInputOptions(command, arguments.input);
    command.remove_option(command.get_option("--clock"));  // no times are written
    command.add_option("-o,--output", arguments.output,
                       "Where the findings go; - is standard output");
    command.add_option("-f,--format", arguments.form, "text, or json: one line for each input")
        ->check(CLI::IsMember({"text", "json"}));
}

}  // namespace

void addDoctorCommand(CLI::App& program, int& status) {
    CLI::App* command = program.add_subcommand(
        "doctor", "Finds what is wrong with an array, from ten seconds of speech");
    command->footer("Example: voxloc doctor meeting.wav --array aster");
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*command, *arguments);
    command->callback([arguments, &status] { status = guarded(guardedDoctor, arguments.get()); });
}
