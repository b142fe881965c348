#include "sweep/sweepCommand.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <thread>

#include "common/failure.h"
#include "common/table.h"
#include "common/text.h"
#include "sweep/sweepOutput.h"
#include "sweep/sweepPage.h"
#include "sweep/voiceFile.h"
#include "writers/output.h"

namespace {

constexpr int MostJobs = 256;
constexpr int MostPlaces = 100000;
constexpr double FromWall = 0.5;  // metres from the wall behind the array
constexpr double Height = 1.2;    // metres over the floor

struct Arguments {
    std::vector<std::string> arrays;
    bool isAll = false;
    SweepJob job;
    std::string grid, azimuth, elevation, range, room, position, error, voice, csv, json, report;
    double ratio = 0.0;
    CLI::Option* hasRatio = nullptr;
    CLI::Option* hasPlaces = nullptr;
    CLI::Option* hasTime = nullptr;
    CLI::Option* hasTurn = nullptr;
    const CLI::App* command = nullptr;
};

/** Numbers with commas between. Throws WrongUsage. */
std::vector<double> numbersFrom(const std::string& text, std::size_t count, const char* wanted) {
    std::vector<double> numbers;
    for (const std::string& part : split(text, ',')) {
        const auto number = numberFrom(trimmed(part));
        if (number && std::isfinite(*number)) numbers.push_back(*number);
    }
    if (numbers.size() != count || split(text, ',').size() != count) {
        throw WrongUsage(std::string(wanted) + ", not " + inQuotes(text));
    }
    return numbers;
}

std::optional<Span> spanFrom(const std::string& text, double lowest, double highest,
                             const char* wanted) {
    if (text.empty()) return {};
    const std::vector<double> ends = numbersFrom(text, 2, wanted);
    if (!(ends[0] >= lowest && ends[0] <= ends[1] && ends[1] <= highest)) {
        throw WrongUsage(std::string(wanted) + ", not " + inQuotes(text));
    }
    return Span{ends[0], ends[1]};
}

Point pointFrom(const std::string& text, const char* wanted) {
    const std::vector<double> numbers = numbersFrom(text, 3, wanted);
    return {numbers[0], numbers[1], numbers[2]};
}

void readChoice(const Arguments& arguments, PlaceChoice& choice) {
    choice.azimuth = spanFrom(arguments.azimuth, -90, 90, "--azimuth takes LOW,HIGH in degrees");
    choice.elevation =
        spanFrom(arguments.elevation, -90, 90, "--elevation takes LOW,HIGH in degrees");
    choice.range = spanFrom(arguments.range, 0.1, 1000, "--range takes LOW,HIGH in metres");
    if (arguments.grid.empty()) return;
    if (arguments.hasPlaces->count() > 0) throw WrongUsage("there is --grid or --places, not both");
    const char* wanted = "--grid takes the numbers of azimuths, elevations and ranges: 9,3,4";
    const std::vector<double> steps = numbersFrom(arguments.grid, 3, wanted);
    for (const double step : steps) {
        if (!(step >= 1 && step <= 1000 && step == std::floor(step))) throw WrongUsage(wanted);
    }
    if (steps[0] * steps[1] * steps[2] > MostPlaces) {
        throw WrongUsage("--grid has more than 100000 places");
    }
    choice.grid = GridSteps{static_cast<int>(steps[0]), static_cast<int>(steps[1]),
                            static_cast<int>(steps[2])};
}

void readRoom(const Arguments& arguments, SweepJob& job) {
    job.isSimulated = !arguments.room.empty();
    if (!job.isSimulated) {
        const bool isInRoom =
            arguments.hasTime->count() + arguments.hasRatio->count() + arguments.hasTurn->count() >
                0 ||
            !arguments.position.empty() || !arguments.error.empty() || !arguments.voice.empty();
        if (isInRoom) {
            throw WrongUsage(
                "--rt60, --snr, --position, --turn, --microphone-errors and --voice "
                "need --room");
        }
        job.room.rt60 = 0.0;
        return;
    }
    job.room.size = pointFrom(arguments.room, "--room takes X,Y,Z in metres");
    const Point& size = job.room.size;
    job.place.origin = {FromWall, 0.45 * size.y, std::min(Height, 0.5 * size.z)};
    if (!arguments.position.empty()) {
        job.place.origin = pointFrom(arguments.position, "--position takes X,Y,Z in metres");
    }
    if (arguments.hasRatio->count() > 0) job.noise.diffuseRatio = arguments.ratio;
    if (!arguments.error.empty()) {
        const Point limits =
            pointFrom(arguments.error, "--microphone-errors takes DB,SAMPLES,METRES");
        job.error = {{limits.z, limits.z, limits.z}, limits.y, limits.x, false};
    }
    job.voice = arguments.voice.empty() ? builtInVoice() : readVoice(arguments.voice);
}

std::vector<NamedArray> arraysOf(const Arguments& arguments) {
    std::vector<NamedArray> arrays;
    if (arguments.isAll == !arguments.arrays.empty()) {
        throw WrongUsage("sweep: there must be --array or --all, and not both");
    }
    for (const std::string& name : arguments.arrays) arrays.push_back(findArray(name));
    for (std::uint32_t i = 0; arguments.isAll && i < voxloc_getNumberOfProducts(); ++i) {
        arrays.push_back(productArray(voxloc_getProduct(i)->type));
    }
    return arrays;
}

std::string soundOf(const SweepJob& job) {
    if (!job.isSimulated) return "test generator";
    std::string text = "free field";
    if (job.room.rt60 > 0.0) {
        const Point& size = job.room.size;
        text = "room " + fixed(size.x, 1) + " x " + fixed(size.y, 1) + " x " + fixed(size.z, 1) +
               " m, RT60 " + fixed(job.room.rt60, 2) + " s";
    }
    if (job.noise.diffuseRatio) text += ", SNR " + fixed(*job.noise.diffuseRatio, 1) + " dB";
    return text;
}

void writeTo(const std::string& path, const std::string& text) {
    if (path.empty()) return;
    Output output(path);
    output.write(text);
    output.finish();
}

int runSweep(Arguments& arguments) {
    SweepJob& job = arguments.job;
    readChoice(arguments, job.choice);
    readRoom(arguments, job);
    const bool isText = arguments.csv != "-" && arguments.json != "-" && arguments.report != "-";
    SweepPageData data;
    std::vector<SweepResult>& results = data.results;
    try {
        for (const NamedArray& array : arraysOf(arguments)) {
            const SweepRun run = sweep(array, job);
            results.push_back({array.name, soundOf(job), figuresOf(run, job.framesAtPlace)});
            if (isText) writeTo("-", sweepText(results.back()) + "\n");
            if (arguments.report.empty()) continue;
            data.maps.push_back(errorMapsOf(run, job));
            data.arrays.push_back(array);
        }
    } catch (const Interrupted&) {
        return StatusInterrupted;
    } catch (const std::invalid_argument& refused) {
        throw WrongUsage(refused.what());
    }
    if (isText && results.size() > 1) writeTo("-", sweepOverview(results));
    writeTo(arguments.csv, sweepCsv(results));
    writeTo(arguments.json, sweepJson(results));
    if (!arguments.report.empty()) {
        data.command = sweepCommandLine(*arguments.command);
        writeTo(arguments.report, sweepPageText(data));
    }
    return StatusSuccess;
}

void addPlaceOptions(CLI::App& command, Arguments& arguments) {
    PlaceChoice& choice = arguments.job.choice;
    arguments.hasPlaces =
        command.add_option("--places", choice.places, "Talkers at that many random places; 100")
            ->check(CLI::Range(1, MostPlaces));
    command.add_option("--seed", choice.seed, "Other places and noises for another number; 1");
    command.add_option("--grid", arguments.grid,
                       "Talkers on a grid of A azimuths, E elevations and R ranges: A,E,R");
    command.add_option("--azimuth", arguments.azimuth,
                       "Degrees LOW,HIGH; else the inner 70 % of the search, up to 60 degrees");
    command.add_option("--elevation", arguments.elevation,
                       "Degrees LOW,HIGH; else the inner 70 % of the search, up to 30 degrees");
    command.add_option("--range", arguments.range, "Metres LOW,HIGH; else 1,5");
    command.add_flag("--whole-search", choice.isWholeSearch,
                     "All angles that the array searches, not the inner ones alone");
    command.add_option("--frames", arguments.job.framesAtPlace, "Frames at each place; 48")
        ->check(CLI::Range(SettlingFrames + 1, 10000));
}

void addRoomOptions(CLI::App& command, Arguments& arguments) {
    SweepJob& job = arguments.job;
    command.add_option("--room", arguments.room,
                       "Simulate a room of X,Y,Z metres; else the test generator is heard");
    arguments.hasTime =
        command.add_option("--rt60", job.room.rt60, "Reverberation time in seconds; 0: no walls")
            ->check(CLI::Range(0.0, 5.0));
    arguments.hasRatio =
        command
            .add_option("--snr", arguments.ratio, "Diffuse noise so many decibels below the talker")
            ->check(CLI::Range(-60.0, 120.0));
    command.add_option("--position", arguments.position,
                       "X,Y,Z metres of the array in the room; else before the middle of a wall");
    arguments.hasTurn =
        command.add_option("--turn", job.place.yaw, "Degrees by which the array is turned")
            ->check(CLI::Range(-360.0, 360.0));
    command.add_option("--microphone-errors", arguments.error,
                       "Random errors up to DB,SAMPLES,METRES on every microphone");
    command.add_option("--voice", arguments.voice,
                       "A WAV file of one channel at 48 kHz that talks");
}

}  // namespace

void addSweepCommand(CLI::App& program, int& status) {
    CLI::App* command = program.add_subcommand(
        "sweep", "Says how well an array finds talkers at many places, by simulation");
    command->footer(
        "Example: voxloc sweep --array aster --places 200 --room 6,5,3 --rt60 0.5 --snr 20");
    const auto arguments = std::make_shared<Arguments>();
    arguments->command = command;
    arguments->job.jobs = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    command->add_option("-a,--array", arguments->arrays,
                        "The array: a built-in one by its name, or a file NAME.json");
    command->add_flag("--all", arguments->isAll, "All built-in arrays");
    addPlaceOptions(*command, *arguments);
    addRoomOptions(*command, *arguments);
    command->add_option("--csv", arguments->csv, "Write the figures as CSV; - is standard output");
    command->add_option("--json", arguments->json,
                        "Write all figures as JSON; - is standard output");
    addSweepPageOption(*command, arguments->report);
    command->add_option("-j,--jobs", arguments->job.jobs, "Threads that work at the same time")
        ->check(CLI::Range(1, MostJobs));
    command->callback([arguments, &status] {
        status = guarded([](void* context) { return runSweep(*static_cast<Arguments*>(context)); },
                         arguments.get());
    });
}
