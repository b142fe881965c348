#include "many/runFile.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "common/failure.h"

namespace {

constexpr std::size_t LongestLine = std::size_t{16} << 20;  // bytes; a summary of 100,000 turns
constexpr const char* CsvSign = "# ";

/** The last line without its end; nothing when the file does not end in one. */
std::optional<std::string> lastLine(std::ifstream& file) {
    file.clear();
    file.seekg(0, std::ios::end);
    const auto size = static_cast<std::size_t>(file.tellg());
    for (std::size_t block = 4096;; block *= 4) {
        const std::size_t taken = std::min(block, size);
        std::string text(taken, '\0');
        file.seekg(static_cast<std::streamoff>(size - taken));
        file.read(text.data(), static_cast<std::streamsize>(taken));
        if (!file || text.empty() || text.back() != '\n') return {};
        text.pop_back();
        const std::size_t begin = text.rfind('\n');
        if (begin != std::string::npos) return text.substr(begin + 1);
        if (taken == size) return text;
        if (block > LongestLine) return {};
    }
}

std::optional<Json> ofType(const std::optional<std::string>& line, const char* type) {
    std::optional<Json> json = line ? jsonOfLine(*line) : std::nullopt;
    if (!json || !json->contains("type") || (*json)["type"] != type) return {};
    return json;
}

/** Up to a line's end or as much as no first line of a run takes. */
std::optional<std::string> nextLine(std::ifstream& file) {
    std::string line;
    for (char c = '\0'; line.size() < LongestLine && file.get(c);) {
        if (c == '\n') return line;
        line += c;
    }
    return {};
}

std::string inputOf(const Json& header) {
    const auto input = header.find("input");
    if (input == header.end() || !input->is_object() || !input->contains("name") ||
        !(*input)["name"].is_string()) {
        return "";
    }
    return (*input)["name"].get<std::string>();
}

}  // namespace

const char* extensionOf(RecordForm form) {
    switch (form) {
        case RecordForm::Csv:
            return "csv";
        case RecordForm::JsonLines:
            return "jsonl";
        case RecordForm::Text:
            break;
    }
    return "txt";
}

std::string runPath(const std::string& folder, const std::string& input, RecordForm form) {
    namespace fs = std::filesystem;
    fs::path place = fs::path(input).lexically_normal();
    // What lies above the working folder can only be told apart by its whole path.
    if (!place.empty() && *place.begin() == "..") place = fs::absolute(input).lexically_normal();
    return (fs::path(folder) / place.relative_path()).string() + "." + extensionOf(form);
}

std::optional<Json> jsonOfLine(const std::string& line) {
    const bool isCsv = line.rfind(CsvSign, 0) == 0;
    Json json = Json::parse(isCsv ? line.substr(2) : line, nullptr, false);
    if (!json.is_object()) return {};
    return json;
}

RunEnds readRunEnds(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw cannot("read", path);
    const std::optional<std::string> first = nextLine(file);
    const std::optional<Json> header = ofType(first, "header");
    RunEnds ends;
    if (header) ends.input = inputOf(*header);
    if (ends.input.empty()) throw BadData(path + ": is no run in CSV or JSON lines");
    ends.isCsv = first->front() == '#';
    if (ends.isCsv) ends.columns = nextLine(file).value_or("");
    const std::optional<Json> summary = ofType(lastLine(file), "summary");
    if (!summary) throw BadData(path + ": is not finished: its last line is no summary");
    ends.summary = *summary;
    return ends;
}
