#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>

// Stands between a test program and the system: every call that opens, reads, changes or looks at a file
// comes by here first, from whichever library, and may be counted, written down, refused or never returned
// from. The program's own definitions of these functions take the place of the C library's, so it must link
// FaultLayer.
namespace quillmere::testing {

struct FileCall {
    enum class Kind { open, read, write, close, rename, look, list, sync, link, map, makeFolder, remove };

    Kind kind;
    std::string_view name;               // of the function
    std::string path{};                  // of the file, absolute; that which a descriptor was opened by
    std::string other{};                 // the new name of rename and link
    int flags = 0;                       // of open and renameat2
    std::span<const std::byte> bytes{};  // what write is asked to write
};

struct FileCallWatch {
    std::filesystem::path folder;  // calls on it and on what lies below it
    // Before each call: 0 lets it do what it should, an error number lets it fail with that. A close that
    // fails closes all the same. May end the process. One thread at a time.
    std::function<int(const FileCall&)> before = [](const FileCall&) { return 0; };
    // After each call that has succeeded; moved is the number of bytes of a read or a write. One thread at a
    // time, and in the order in which the calls took effect. Empty: nobody wants to know.
    std::function<void(const FileCall&, std::size_t moved)> after{};
};

// From now on, in this process and the children it forks. Calls from within the functions of a watch are
// none.
void watchFiles(FileCallWatch watch);
void watchFilesNoMore();

}  // namespace quillmere::testing
