#include "QuillmereCLI/StartOption.h"

#include <array>
#include <filesystem>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

fs::path modelFolder(const std::string& name, const fs::path& root) {
    for (const fs::path& folder : std::array<fs::path, 2>{root / name, ModelStore::corpusPath(name)}) {
        if (ModelStore::isStored(folder)) return folder;
    }
    throw Failure("There is no model named " + name + " in " + Text::utf8(root) +
                  ". 'quillmere-cli models' lists them.");
}

}  // namespace

void StartOption::addTo(CLI::App& app) {
    const auto store = [this](const std::string& text) {
        if (text.empty()) throwUsageError("--start", "must not be empty");
        start_ = text;
    };
    app.add_option_function<std::string>("--start", store,
                                         "Begin from random weights, or build on what a model of the same "
                                         "analysis has learned; 'models' lists them")
        ->type_name("fresh|MODEL")
        ->default_str(fresh);
}

std::shared_ptr<const TrainingStart> StartOption::open(const ModelsOption& models) const {
    if (isFresh()) return nullptr;
    return std::make_shared<const TrainingStart>(ModelStore::open(modelFolder(start_, models.root())));
}

}  // namespace quillmere::cli
