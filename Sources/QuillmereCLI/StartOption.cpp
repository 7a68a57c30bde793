#include "QuillmereCLI/StartOption.h"

#include <array>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* fresh = "fresh";
constexpr const char* headStart = "head-start";

fs::path modelFolder(const std::string& name, const fs::path& root) {
    for (const fs::path& folder : std::array<fs::path, 2>{root / name, ModelStore::corpusPath(name)}) {
        if (ModelStore::isStored(folder)) return folder;
    }
    throw Failure("There is no model named {0} in {1}. 'quillmere-cli models' lists them.", name, root);
}

std::shared_ptr<const TrainingStart> openHeadStart(const fs::path& folder, Console& console) {
    try {
        return std::make_shared<const TrainingStart>(HeadStart::load(folder));
    } catch (const Failure& failure) {
        console.note(tr("The head start cannot be used: {0}", printable(Language::text(failure.message()))));
        console.note(tr("Learning begins from random weights instead."));
        return nullptr;
    }
}

}  // namespace

void StartOption::addTo(CLI::App& app) {
    const auto store = [this](const std::string& text) {
        if (text.empty()) throwUsageError("--start", tr("must not be empty"));
        start_ = text;
    };
    app.add_option_function<std::string>(
           "--start", store,
           tr("Begin from random weights, from a network that knows many "
              "sounds, or from a model of the same analysis ('models' lists them)"))
        ->type_name("fresh|head-start|MODEL")
        ->default_str(fresh);
    addPath(app, "--head-start", headStartFolder_, tr("Folder of the head start"))
        ->type_name("DIR")
        ->default_str(tr("the program's own"));
}

fs::path StartOption::headStartFolder() const {
    return headStartFolder_.empty() ? HeadStart::ownFolder() : headStartFolder_;
}

std::shared_ptr<const TrainingStart> StartOption::open(const ModelsOption& models, Console& console) const {
    if (start_ == fresh) return nullptr;
    if (start_ == headStart) return openHeadStart(headStartFolder(), console);
    return std::make_shared<const TrainingStart>(ModelStore::open(modelFolder(start_, models.root())));
}

std::shared_ptr<const TrainingStart> openAgain(const ModelStart& start, const fs::path& root) {
    if (start.kind == ModelStart::Kind::headStart)
        return std::make_shared<const TrainingStart>(HeadStart::load(HeadStart::ownFolder()));
    if (const auto model = findIdentified(start.identity, root))
        return std::make_shared<const TrainingStart>(model->bundle);
    throw Failure("The model of {0} that this one was learned onto is no longer there as it was.",
                  start.name);
}

}  // namespace quillmere::cli
