#include <memory>
#include <optional>
#include <span>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"

namespace quillmere::cli {
namespace {

JSON parameterJSON(const ParameterSpec& spec) {
    JSON item = JSON::object();
    item["id"] = spec.id;
    item["title"] = spec.title;
    item["help"] = spec.help;
    item["group"] = rawValue(spec.group);
    item["lower"] = spec.lower;
    item["upper"] = spec.upper;
    item["step"] = spec.step;
    item["unit"] = spec.unit;
    item["logarithmic"] = spec.logarithmic;
    item["default"] = spec.value(Aesthetics());
    item["field"] = spec.field;
    return item;
}

void print(std::span<const ParameterSpec> specs, Console& console) {
    constexpr std::size_t idColumns = 18;
    const Aesthetics defaults;
    std::optional<ParameterSpec::Group> group;
    for (const ParameterSpec& spec : specs) {
        if (group != spec.group) {
            if (group) console.print("");
            console.print(trTable(rawValue(spec.group)));
            group = spec.group;
        }
        console.print("  " + padded(spec.id, idColumns) +
                      tr("{0} to {1}, default {2}", spec.format(spec.lower), spec.format(spec.upper),
                         spec.format(spec.value(defaults))));
        console.print("      " + trTable(spec.help));
    }
}

void listParameters(Console& console) {
    print(Aesthetics::specs(), console);
    JSON result = makeResult("parameters");
    result["parameters"] = JSON::array();
    for (const ParameterSpec& spec : Aesthetics::specs())
        result["parameters"].push_back(parameterJSON(spec));
    console.emit(result);
}

}  // namespace

void addParameters(CLI::App& app, Invocation& invocation) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand("parameters", tr("List the parameters that --set takes"));
    addJSON(*command, *json);
    command->callback([json, &invocation] {
        invocation.json = *json;
        invocation.action = [](Console& console, const CancelFlag&) { listParameters(console); };
    });
}

}  // namespace quillmere::cli
