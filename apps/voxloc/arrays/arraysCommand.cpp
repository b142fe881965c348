#include "arrays/arraysCommand.h"

#include <memory>

#include "arrays/arrayDrawing.h"
#include "arrays/arrayJson.h"
#include "arrays/arrayReport.h"
#include "arrays/suggest.h"
#include "common/failure.h"
#include "writers/output.h"

namespace {

struct Arguments {
    std::string array, svg, output = "-";
    bool isJson = false, isCheck = false;
};

void writeTo(const std::string& path, const std::string& text) {
    Output output(path);
    output.write(text);
    output.finish();
}

/** "-" is an array's JSON on standard input here. */
NamedArray arrayOf(const std::string& nameOrFile) {
    return nameOrFile == "-" ? readArrayFile(nameOrFile) : findArray(nameOrFile);
}

int runArrays(Arguments& arguments) {
    if (arguments.array.empty()) {
        if (arguments.isJson || arguments.isCheck || !arguments.svg.empty()) {
            throw WrongUsage(
                "arrays: --json, --check and --svg take the name of an array or a file");
        }
        writeTo("-", listOfArrays());
        return StatusSuccess;
    }
    const NamedArray array = arrayOf(arguments.array);
    if (!arguments.svg.empty()) writeTo(arguments.svg, drawArray(array));
    const bool isReport = arguments.isCheck || (!arguments.isJson && arguments.svg.empty());
    if (isReport && arguments.svg != "-") writeTo("-", reportOnArray(array));
    if (arguments.isJson) writeTo("-", arrayToText(array));
    return StatusSuccess;
}

int runSuggest(Arguments& arguments) {
    const std::string& file = arguments.array;
    const std::string name = file == "-" ? "standard input" : file;
    const Suggestion suggestion = suggestPairs(draftFromJson(readArrayText(file), name), name);
    for (const std::string& note : suggestion.notes)
        say(std::string(name).append(": ").append(note));
    writeTo(arguments.output, arrayToText(suggestion.named));
    return StatusSuccess;
}

template <int (*Run)(Arguments&)>
int guardedRun(Arguments& arguments) {
    return guarded([](void* context) { return Run(*static_cast<Arguments*>(context)); },
                   &arguments);
}

void addSuggest(CLI::App& arrays, const std::shared_ptr<Arguments>& arguments, int& status) {
    CLI::App* command = arrays.add_subcommand(
        "suggest", "Chooses pairs and channels for microphones that come without");
    command->footer("Example: voxloc arrays suggest desk.json -o deskWithPairs.json");
    command
        ->add_option("file", arguments->array,
                     "An array in JSON, its pairs left out; - is standard input")
        ->required();
    command->add_option("-o,--output", arguments->output,
                        "Where the completed array goes; - is standard output");
    command->callback([arguments, &status] { status = guardedRun<runSuggest>(*arguments); });
}

}  // namespace

void addArraysCommand(CLI::App& program, int& status) {
    CLI::App* command =
        program.add_subcommand("arrays", "Lists, prints and checks microphone arrays");
    command->footer("Example: voxloc arrays desk.json --check --svg desk.svg");
    const auto arguments = std::make_shared<Arguments>();
    command->add_option("array", arguments->array,
                        "A built-in array by its name, or a file NAME.json; - is standard input");
    command->add_flag("--json", arguments->isJson, "Print it in the form that --array reads");
    command->add_flag("--check", arguments->isCheck, "Print what it can resolve");
    command->add_option("--svg", arguments->svg,
                        "Draw the microphones and the resolution; - is standard output");
    addSuggest(*command, std::make_shared<Arguments>(), status);
    command->callback([command, arguments, &status] {
        if (command->get_subcommands().empty()) status = guardedRun<runArrays>(*arguments);
    });
}
