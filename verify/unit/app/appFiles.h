/** Files of a test in a folder of its own, gone with it. */
#ifndef VERIFY_UNIT_APP_APP_FILES_H
#define VERIFY_UNIT_APP_APP_FILES_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "readers/reader.h"

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = ::testing::TempDir() + "voxloc_app_XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        path_ = pattern;
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path_); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path(const std::string& name) const { return (path_ / name).string(); }

    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string read(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool has(const std::string& name) const { return std::filesystem::exists(path(name)); }

  private:
    std::filesystem::path path_;
};

/** Runs it and gives the text of the Failure that it throws; empty when it throws none. */
template <class Failure, class Function>
std::string refusalOf(Function function) {
    try {
        function();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

/** All frames up to the end or to damage; the damage's text goes to `damage`. */
inline std::vector<InputFrame> allFrames(FrameReader& reader, std::string* damage = nullptr) {
    std::vector<InputFrame> frames;
    try {
        InputFrame frame;
        while (reader.read(frame)) frames.push_back(frame);
    } catch (const std::exception& failure) {
        if (damage == nullptr) throw;
        *damage = failure.what();
    }
    return frames;
}

/** A whole number of each sample that names its channel and its place, within 16 bits. */
inline int codeOf(std::size_t channel, std::size_t n) {
    return static_cast<int>(channel * 1000 + n % 997) - 4000;
}

#endif
