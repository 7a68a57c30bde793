#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Support/FaultLayer.h"

namespace quillmere::testing {

// What a program has asked of the files below a folder, in a file that outlives it.
class FileLog {
public:
    explicit FileLog(std::filesystem::path file) : file_(std::move(file)) {}

    // In the child: from now on every change below folder goes into the log.
    void record(const std::filesystem::path& folder) const;

    struct Step {
        FileCall::Kind kind;
        int flags = 0;
        std::string path, other, bytes;
    };
    [[nodiscard]] std::vector<Step> steps() const;

private:
    std::filesystem::path file_;
};

// A disk that a program's steps have gone to, of which a power cut leaves only what was forced onto it for
// certain, and of the rest what it likes.
class PowerCutDisk {
public:
    // Everything in folder is on the disk.
    explicit PowerCutDisk(const std::filesystem::path& folder);

    void apply(const FileLog::Step& step);

    // What a file holds of what was written to it and not forced onto the disk.
    enum class Unforced { all, half, none };

    // What a disk keeps that writes names in the order in which they changed.
    [[nodiscard]] std::map<std::string, std::string> left(Unforced unforced) const;
    // What a disk keeps that writes the names of each folder when it likes: those of folders with a bit of 0
    // in choice are as they were last forced onto it.
    [[nodiscard]] std::map<std::string, std::string> leftInAnyOrder(unsigned choice) const;
    // The folders whose names have changed and were not forced, which choice chooses from.
    [[nodiscard]] std::size_t unforcedFolders() const;

private:
    struct Node {
        bool isFolder = false;
        std::map<std::string, std::size_t> names, forcedNames;  // of a folder
        std::string content;                                    // of a file
        std::size_t forced = 0;                                 // bytes of it
    };

    std::size_t add(bool isFolder);
    std::size_t load(const std::filesystem::path& place);
    [[nodiscard]] std::size_t nodeAt(const std::filesystem::path& path) const;
    [[nodiscard]] bool isThere(const std::filesystem::path& path) const;
    std::map<std::string, std::size_t>& namesAround(const std::filesystem::path& path);
    void move(const FileLog::Step& step);
    template <typename NamesOf>
    void collect(std::size_t node, const std::string& path, Unforced unforced, const NamesOf& namesOf,
                 std::map<std::string, std::string>& found) const;

    std::filesystem::path folder_;
    std::vector<Node> nodes_;
};

// Lets folder hold exactly these files; names that end with a slash are folders.
void writeFiles(const std::filesystem::path& folder, const std::map<std::string, std::string>& files);

}  // namespace quillmere::testing
