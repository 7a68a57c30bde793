#pragma once

#include <memory>
#include <string>

#include "QuillmereCLI/Options.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"

namespace quillmere::cli {

// --start fresh|MODEL: what a training begins from.
class StartOption {
public:
    void addTo(CLI::App& app);

    [[nodiscard]] bool isFresh() const { return start_ == fresh; }

    // Null for random weights. A model is one of those that 'models' lists, or a folder that holds one.
    // Throws Failure if there is none, or as ModelStore::open.
    [[nodiscard]] std::shared_ptr<const TrainingStart> open(const ModelsOption& models) const;

private:
    static constexpr const char* fresh = "fresh";

    std::string start_ = fresh;
};

}  // namespace quillmere::cli
