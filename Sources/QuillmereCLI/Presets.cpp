#include <memory>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"

namespace quillmere::cli {
namespace {

void listPresets(Console& console) {
    std::vector<std::vector<std::string>> rows;
    JSON presets = JSON::array();
    for (const Preset& preset : Preset::all()) {
        rows.push_back({std::string(preset.name), trTable(preset.blurb)});
        JSON item = JSON::object();
        item["name"] = preset.name;
        item["blurb"] = preset.blurb;
        item["aesthetics"] = toJSON(preset.aesthetics);
        presets.push_back(std::move(item));
    }
    for (const std::string& line : table(rows))
        console.print(line);
    JSON result = makeResult("presets");
    result["presets"] = std::move(presets);
    console.emit(result);
}

}  // namespace

void addPresets(CLI::App& app, Invocation& invocation) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand("presets", tr("List the presets"));
    addJSON(*command, *json);
    command->callback([json, &invocation] {
        invocation.json = *json;
        invocation.action = [](Console& console, const CancelFlag&) { listPresets(console); };
    });
}

}  // namespace quillmere::cli
