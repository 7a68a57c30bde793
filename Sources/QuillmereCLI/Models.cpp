#include <memory>
#include <variant>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

// Why nothing more can be said of a model.
struct Problem {
    std::string_view kind;  // also the key of its JSON form
    std::string reason;
};

struct StoredModel {
    ModelStore::StoredFolder stored;
    std::variant<ModelMetadata, Problem> content;

    [[nodiscard]] std::string name() const { return Text::utf8(stored.folder.filename()); }
};

std::variant<ModelMetadata, Problem> inspect(const ModelStore::StoredFolder& stored) {
    constexpr std::string_view damaged = "damaged";
    if (!stored.holdsModel) return Problem{damaged, "only remains of a model that was being stored"};
    try {
        // The whole model: only its weights and latents tell whether they fit.
        return ModelStore::open(stored.folder).metadata;
    } catch (const FileError& error) {
        if (error.reason() == std::errc::no_such_file_or_directory)
            return Problem{damaged, Text::utf8(error.file().filename()) + " is missing"};
        return Problem{"unreadable", error.what()};
    } catch (const Failure& failure) {
        return Problem{damaged, failure.what()};
    }
}

std::vector<StoredModel> storedModels(const fs::path& root) {
    std::vector<StoredModel> models;
    for (ModelStore::StoredFolder& stored : ModelStore::list(root))
        models.push_back({stored, inspect(stored)});
    return models;
}

void print(const StoredModel& model, Console& console) {
    console.print(printable(model.name()));
    if (const auto* problem = std::get_if<Problem>(&model.content)) {
        console.print("  " + padded(problem->kind, 9) + " " + printable(problem->reason));
    } else {
        const ModelMetadata& metadata = std::get<ModelMetadata>(model.content);
        console.print("  corpus    " + printable(metadata.corpusName) + ", " +
                      counted(static_cast<std::int64_t>(metadata.clipNames.size()), "sample", "samples") +
                      ", " + printable(metadata.corpusPath));
        console.print("  trained   " + ModelStore::isoDate(metadata.trainedAt) + ", " +
                      counted(metadata.steps, "step", "steps") +
                      (metadata.analysis ? ", " + printable(*metadata.analysis) + " analysis" : "") +
                      (metadata.start ? ", onto " + startText(*metadata.start) : ""));
    }
    console.print("  size      " + byteSize(model.stored.bytes));
    if (model.stored.remains > 0)
        console.print("  remains   " + byteSize(model.stored.remains) +
                      " left behind while a model was being stored; 'models remove' deletes them too");
}

JSON toJSON(const StoredModel& model) {
    JSON item = JSON::object();
    item["name"] = model.name();
    item["bytes"] = model.stored.bytes;
    if (model.stored.remains > 0) item["remains"] = model.stored.remains;
    if (const auto* problem = std::get_if<Problem>(&model.content)) {
        item[std::string(problem->kind)] = problem->reason;
        return item;
    }
    const ModelMetadata& metadata = std::get<ModelMetadata>(model.content);
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
        bytes += model.stored.bytes + model.stored.remains;
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

void removeModel(const fs::path& root, const std::string& name, Console& console, const CancelFlag& cancel) {
    const fs::path folder = root / name;
    if (!isPlainName(name) || !ModelStore::remove(folder, cancel.token()))
        throw Failure("There is no model named " + name + " in " + Text::utf8(root) + ".");
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
        invocation.action = [options, removing](Console& console, const CancelFlag& cancel) {
            if (removing) {
                removeModel(options->models.root(), options->name, console, cancel);
            } else {
                listModels(options->models.root(), console);
            }
        };
    });
}

}  // namespace quillmere::cli
