#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "QuillmereCLI/Options.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"

namespace quillmere::cli {

// --start fresh|head-start|MODEL: what a training begins from; --head-start DIR: where the head start is.
class StartOption {
public:
    void addTo(CLI::App& app);

    // Null for random weights: where nothing else was asked for, and, with a note that says why, where the
    // head start is missing or damaged. A model is one of those that 'models' lists, or a folder that holds
    // one; throws Failure if there is none, or as ModelStore::open.
    [[nodiscard]] std::shared_ptr<const TrainingStart> open(const ModelsOption& models,
                                                            Console& console) const;

private:
    [[nodiscard]] std::filesystem::path headStartFolder() const;

    std::string start_ = "fresh";
    std::filesystem::path headStartFolder_;  // empty: by the environment, or the program's own
};

// What a model says that it began from, to begin there again: the head start of this program, whichever it
// was, or that very model, if it is in root. Throws as HeadStart::load, or Failure where it is not.
[[nodiscard]] std::shared_ptr<const TrainingStart> openAgain(const ModelStart& start,
                                                             const std::filesystem::path& root);

}  // namespace quillmere::cli
