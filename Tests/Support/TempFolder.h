#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace quillmere::testing {

// A new empty folder for one test, removed with everything in it afterwards.
class TempFolder {
public:
    explicit TempFolder(const std::filesystem::path& parent = ::testing::TempDir()) {
        std::string pattern = (parent / "quillmere-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const {
        return path_ / name;
    }

private:
    std::filesystem::path path_;
};

inline std::string readText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

// Creates missing folders on the way.
inline void writeText(const std::filesystem::path& file, std::string_view text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

inline std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

// Names in a folder, hidden ones included.
inline std::size_t entriesIn(const std::filesystem::path& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

}  // namespace quillmere::testing
