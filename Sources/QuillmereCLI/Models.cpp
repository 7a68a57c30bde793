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
    Message reason;
};

struct StoredModel {
    ModelStore::StoredFolder stored;
    std::variant<ModelMetadata, Problem> content;

    [[nodiscard]] std::string name() const { return Text::utf8(stored.folder.filename()); }
};

std::variant<ModelMetadata, Problem> inspect(const ModelStore::StoredFolder& stored) {
    constexpr std::string_view damaged = translatable("damaged");
    if (!stored.holdsModel) return Problem{damaged, Message("only remains of a model that was being stored")};
    try {
        // The whole model: only its weights and latents tell whether they fit.
        return ModelStore::open(stored.folder).metadata;
    } catch (const FileError& error) {
        if (error.reason() == std::errc::no_such_file_or_directory)
            return Problem{damaged, Message("{0} is missing", error.file().filename())};
        return Problem{translatable("unreadable"), error.message()};
    } catch (const Failure& failure) {
        return Problem{damaged, failure.message()};
    }
}

std::vector<StoredModel> storedModels(const fs::path& root) {
    std::vector<StoredModel> models;
    for (ModelStore::StoredFolder& stored : ModelStore::list(root))
        models.push_back({stored, inspect(stored)});
    return models;
}

// "2026-01-31, 2000 steps, percussive analysis, onto head start 1"
std::string trainedText(const ModelMetadata& metadata) {
    std::string text = ModelStore::isoDate(metadata.trainedAt);
    text = tr("{0}, {1}", text, trCounted(metadata.steps, "{0} step", "{0} steps"));
    if (metadata.analysis) {
        // As it is typed: --analysis takes no other word.
        text = tr("{0}, {1}", text, tr("{0} analysis", printable(*metadata.analysis)));
    }
    if (metadata.start) text = tr("{0}, {1}", text, tr("onto {0}", startText(*metadata.start)));
    return text;
}

void print(const StoredModel& model, Console& console) {
    const auto row = [&](const std::string& label, const std::string& text) {
        constexpr std::size_t labelColumns = 10;
        console.print("  " + labelled(label, labelColumns, text));
    };
    console.print(printable(model.name()));
    if (const auto* problem = std::get_if<Problem>(&model.content)) {
        row(trTable(problem->kind), printable(Language::text(problem->reason)));
    } else {
        const ModelMetadata& metadata = std::get<ModelMetadata>(model.content);
        row(tr("corpus"),
            trCounted(std::ssize(metadata.clipNames), "{1}, {0} sample, {2}", "{1}, {0} samples, {2}",
                      printable(metadata.corpusName), printable(metadata.corpusPath)));
        row(tr("trained"), trainedText(metadata));
    }
    row(tr("size"), byteSize(model.stored.bytes));
    if (model.stored.remains > 0)
        row(tr("remains"),
            tr("{0} left behind while a model was being stored; 'models remove' deletes them too",
               byteSize(model.stored.remains)));
}

JSON toJSON(const StoredModel& model) {
    JSON item = JSON::object();
    item["name"] = model.name();
    item["bytes"] = model.stored.bytes;
    if (model.stored.remains > 0) item["remains"] = model.stored.remains;
    if (const auto* problem = std::get_if<Problem>(&model.content)) {
        item[std::string(problem->kind)] = problem->reason.english();
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
        console.print(tr("No models are stored in {0}.", shownPath(root)));
    } else {
        console.print(trCounted(std::ssize(models), "{0} model, {1}, in {2}.", "{0} models, {1}, in {2}.",
                                byteSize(bytes), shownPath(root)));
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
        throw Failure("There is no model named {0} in {1}.", name, root);
    console.print(tr("Removed {0}.", printable(name)));
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
    CLI::App* const command = app.add_subcommand("models", tr("List the stored models, or remove one"));
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->require_subcommand(0, 1);

    CLI::App* const remove = command->add_subcommand("remove", tr("Delete a stored model"));
    remove->add_option("NAME", options->name, tr("Its name in the list"))->type_name("")->required();
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
