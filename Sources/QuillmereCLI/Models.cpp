#include <algorithm>
#include <array>
#include <memory>
#include <variant>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 2> modelFiles{"model.json", "weights.bin"};

struct Damage {
    std::string reason;
};

struct StoredModel {
    fs::path folder;
    std::uint64_t bytes = 0;
    std::variant<ModelStore::Manifest, Damage> content;

    [[nodiscard]] std::string name() const { return Text::utf8(folder.filename()); }
};

bool isRegularFile(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(fs::symlink_status(file, error));
}

// Whether folder, itself no symbolic link, holds at least a part of a model.
bool holdsModel(const fs::path& folder) {
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(folder, error))) return false;
    return std::any_of(modelFiles.begin(), modelFiles.end(),
                       [&](std::string_view name) { return isRegularFile(folder / name); });
}

std::uint64_t fileSize(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

std::variant<ModelStore::Manifest, Damage> inspect(const fs::path& folder) {
    for (const std::string_view name : modelFiles) {
        if (!isRegularFile(folder / name)) return Damage{std::string(name) + " is missing"};
    }
    try {
        // The whole model: only its weights and latents tell whether they fit.
        ModelBundle bundle = ModelStore::load(folder);
        ModelStore::validate(bundle, folder);
        return ModelStore::Manifest{bundle.config, std::move(bundle.metadata)};
    } catch (const Failure& failure) {
        return Damage{failure.what()};
    }
}

// The entries of folder in order of their names; none if it does not exist. Throws FileError.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        entries.push_back(it->path());
    if (error && error != std::errc::no_such_file_or_directory) throw FileError(folder, error);
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::vector<StoredModel> storedModels(const fs::path& root) {
    std::vector<StoredModel> models;
    for (const fs::path& folder : entriesOf(root)) {
        if (!holdsModel(folder)) continue;
        StoredModel model{folder, 0, inspect(folder)};
        for (const std::string_view name : modelFiles)
            model.bytes += fileSize(folder / name);
        models.push_back(std::move(model));
    }
    return models;
}

void print(const StoredModel& model, Console& console) {
    console.print(printable(model.name()));
    if (const auto* damage = std::get_if<Damage>(&model.content)) {
        console.print("  damaged   " + printable(damage->reason));
    } else {
        const ModelMetadata& metadata = std::get<ModelStore::Manifest>(model.content).metadata;
        console.print("  corpus    " + printable(metadata.corpusName) + ", " +
                      counted(static_cast<std::int64_t>(metadata.clipNames.size()), "sample", "samples") +
                      ", " + printable(metadata.corpusPath));
        console.print("  trained   " + ModelStore::isoDate(metadata.trainedAt) + ", " +
                      counted(metadata.steps, "step", "steps") +
                      (metadata.analysis ? ", " + printable(*metadata.analysis) + " analysis" : ""));
    }
    console.print("  size      " + byteSize(model.bytes));
}

JSON toJSON(const StoredModel& model) {
    JSON item = JSON::object();
    item["name"] = model.name();
    item["bytes"] = model.bytes;
    if (const auto* damage = std::get_if<Damage>(&model.content)) {
        item["damaged"] = damage->reason;
        return item;
    }
    const ModelMetadata& metadata = std::get<ModelStore::Manifest>(model.content).metadata;
    item["corpusName"] = metadata.corpusName;
    item["corpusPath"] = metadata.corpusPath;
    item["clipCount"] = metadata.clipNames.size();
    item["trainedAt"] = ModelStore::isoDate(metadata.trainedAt);
    item["steps"] = metadata.steps;
    item["analysis"] = metadata.analysis ? JSON(*metadata.analysis) : JSON(nullptr);
    return item;
}

void listModels(const fs::path& root, Console& console) {
    const std::vector<StoredModel> models = storedModels(root);
    std::uint64_t bytes = 0;
    JSON list = JSON::array();
    for (const StoredModel& model : models) {
        print(model, console);
        list.push_back(toJSON(model));
        bytes += model.bytes;
    }
    if (models.empty()) {
        console.print("No models are stored in " + shownPath(root) + ".");
    } else {
        console.print(counted(static_cast<std::int64_t>(models.size()), "model", "models") + ", " +
                      byteSize(bytes) + ", in " + shownPath(root) + ".");
    }
    JSON result = makeResult("models");
    result["root"] = cli::toJSON(root);
    result["models"] = std::move(list);
    console.emit(result);
}

// Whether name can only be an entry of the models root itself.
bool isPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

// Whether folder holds only what the model store writes, unfinished files of a crash included.
bool holdsNothingElse(const fs::path& folder) {
    const std::vector<fs::path> entries = entriesOf(folder);
    return std::all_of(entries.begin(), entries.end(), [](const fs::path& entry) {
        const std::string name = entry.filename().string();
        const bool known = std::find(modelFiles.begin(), modelFiles.end(), name) != modelFiles.end();
        return isRegularFile(entry) && (known || name.starts_with(".quillmere-"));
    });
}

void removeModel(const fs::path& root, const std::string& name, Console& console) {
    const fs::path folder = root / name;
    if (!isPlainName(name) || !holdsModel(folder))
        throw Failure("There is no model named " + name + " in " + Text::utf8(root) + ".");
    if (!holdsNothingElse(folder))
        throw Failure(Text::utf8(folder) + " holds other files too; nothing was removed.");
    std::error_code error;
    fs::remove_all(folder, error);
    if (error) throw FileError(folder, error);
    console.print("Removed " + printable(name) + ".");
    JSON result = makeResult("models remove");
    result["removed"] = name;
    console.emit(result);
}

struct ModelsCommandOptions {
    ModelsOption models;
    bool json = false;
    std::string name;
};

}  // namespace

void addModels(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<ModelsCommandOptions>();
    CLI::App* const command = app.add_subcommand("models", "List the stored models, or remove one");
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->require_subcommand(0, 1);

    CLI::App* const remove = command->add_subcommand("remove", "Delete a stored model");
    remove->add_option("NAME", options->name, "Its name in the list")->type_name("")->required();
    options->models.addTo(*remove);
    addJSON(*remove, options->json);

    // CLI11 calls the inner command's callback first.
    command->callback([options, remove, &invocation] {
        invocation.json = options->json;
        const bool removing = remove->parsed();
        invocation.action = [options, removing](Console& console, const CancelFlag&) {
            if (removing) {
                removeModel(options->models.root(), options->name, console);
            } else {
                listModels(options->models.root(), console);
            }
        };
    });
}

}  // namespace quillmere::cli
