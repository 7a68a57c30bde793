#pragma once

#include <filesystem>
#include <string>

#include <CLI/CLI.hpp>

#include "QuillmereCore/Picture/Drawing.h"

namespace quillmere::cli {

// --picture FILE.png|svg: a picture of the result. Another name is a usage error.
class PictureOption {
public:
    void addTo(CLI::App& app);

    [[nodiscard]] bool isGiven() const { return !file_.empty(); }
    // Absolute.
    [[nodiscard]] std::filesystem::path file() const;
    // Throws as PictureFile::write.
    void write(const Drawing& drawing) const;

private:
    std::filesystem::path file_;
};

}  // namespace quillmere::cli
