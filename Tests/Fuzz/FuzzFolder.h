#pragma once

#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>

namespace quillmere::fuzz {

// A folder in memory for this run of the program, removed at its end.
class FuzzFolder {
public:
    FuzzFolder() {
        std::string pattern = (parent() / "quillmere-fuzz-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
    }
    ~FuzzFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    // Writes a file, in place of the one that is there.
    [[nodiscard]] std::filesystem::path file(const char* name, std::span<const std::byte> bytes) const {
        std::filesystem::path file = path_ / name;
        std::ofstream stream(file, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
        return file;
    }
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    static std::filesystem::path parent() {
        const std::filesystem::path inMemory = "/dev/shm";
        return ::access(inMemory.c_str(), W_OK | X_OK) == 0 ? inMemory
                                                            : std::filesystem::temp_directory_path();
    }

    std::filesystem::path path_;
};

}  // namespace quillmere::fuzz
