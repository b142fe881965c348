#include "many/merge.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "common/failure.h"
#include "many/runFile.h"

namespace {

namespace fs = std::filesystem;

struct Run {
    std::string path;
    RunEnds ends;
};

bool isNameOfRun(const fs::path& path) {
    return path.extension() == ".csv" || path.extension() == ".jsonl";
}

/** Each run once, however often it is named. */
std::set<std::string> filesIn(const std::vector<std::string>& paths) {
    std::set<std::string> files;
    for (const std::string& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            files.insert(fs::path(path).lexically_normal().string());
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(path)) {
            if (entry.is_regular_file() && isNameOfRun(entry.path())) {
                files.insert(entry.path().lexically_normal().string());
            }
        }
    }
    return files;
}

void checkFit(const std::vector<Run>& runs) {
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const Run& one = runs[i - 1];
        const Run& other = runs[i];
        if (one.ends.input == other.ends.input) {
            throw BadData(one.path + " and " + other.path + " are both runs of " +
                          other.ends.input);
        }
        if (one.ends.isCsv != other.ends.isCsv) {
            throw BadData(one.path + " and " + other.path + " are not of one format");
        }
        if (one.ends.columns != other.ends.columns) {
            throw BadData(one.path + " and " + other.path +
                          " have other columns: their arrays differ; JSON lines can be merged");
        }
    }
}

std::string dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/** A name as a field of CSV. */
std::string asField(const std::string& name) {
    if (name.find_first_of(",\"\r\n") == std::string::npos) return name;
    std::string field = "\"";
    for (const char c : name) {
        if (c == '"') field += '"';
        field += c;
    }
    return field + "\"";
}

/** A line of JSON with the input as its first field. */
std::string withInput(const std::string& line, const std::string& name) {
    const std::size_t brace = line.find('{');
    if (brace == std::string::npos) return line + "\n";
    return line.substr(0, brace) + "{\"file\":" + name + "," + line.substr(brace + 1) + "\n";
}

void copyRun(const Run& run, Output& output) {
    std::ifstream file(run.path, std::ios::binary);
    if (!file) throw cannot("read", run.path);
    const std::string name = dumped(run.ends.input), field = asField(run.ends.input) + ",";
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        const bool isRow = run.ends.isCsv && line.rfind('#', 0) != 0;
        if (++number == 2 && run.ends.isCsv) continue;  // the columns, once for all
        output.write(isRow ? field + line + "\n" : withInput(line, name));
    }
    if (file.bad()) throw cannot("read", run.path);
}

void writeHead(const std::vector<Run>& runs, Output& output) {
    const Json head = {{"type", "merged"},
                       {"schema", SchemaVersion},
                       {"version", voxloc_getVersion()},
                       {"runs", runs.size()}};
    const bool isCsv = runs.front().ends.isCsv;
    output.write((isCsv ? "# " : "") + dumped(head) + "\n");
    if (isCsv) output.write("file," + runs.front().ends.columns + "\n");
}

}  // namespace

int mergeRuns(const std::vector<std::string>& paths, Output& output) {
    std::vector<Run> runs;
    int status = StatusSuccess;
    for (const std::string& path : filesIn(paths)) {
        try {
            runs.push_back({path, readRunEnds(path)});
        } catch (const BadData& bad) {
            say(bad.what());
            status = StatusBadData;
        }
    }
    std::sort(runs.begin(), runs.end(),
              [](const Run& a, const Run& b) { return a.ends.input < b.ends.input; });
    if (runs.empty()) throw BadData("there is no finished run to merge");
    checkFit(runs);
    writeHead(runs, output);
    for (const Run& run : runs) copyRun(run, output);
    return status;
}
