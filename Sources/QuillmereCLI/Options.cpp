#include "QuillmereCLI/Options.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

std::string quoted(const std::string& text) {
    return "\"" + printable(text) + "\"";
}

// Up to six significant decimals, without trailing zeros.
std::string shortNumber(double value) {
    std::string text = Text::fixed(value, 6);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

network::ChosenDevice::Listener listenerFor(Console& console) {
    return {.opened = {}, .processorStandsIn = [&console](const Message& message) {
                if (console.terminalWidth()) console.redraw({});
                console.note(printable(Language::text(message)));
            }};
}

}  // namespace

void throwUsageError(const std::string& option, const std::string& message) {
    throw CLI::ValidationError(option, message);
}

CLI::Option* addWholeNumber(CLI::App& app, const std::string& name, std::int64_t& target, WholeRange range,
                            const std::string& help) {
    const auto store = [name, &target, range](const std::string& text) {
        const auto value = Text::parseInteger(text);
        if (!value || *value < range.lower || *value > range.upper) {
            throwUsageError(name, tr("must be a whole number from {0} to {1}, not {2}", range.lower,
                                     range.upper, quoted(text)));
        }
        target = *value;
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("N");
}

CLI::Option* addSeed(CLI::App& app, std::optional<std::uint64_t>& target, const std::string& help) {
    const auto store = [&target](const std::string& text) {
        target = Text::parseUnsigned(text);
        if (!target) {
            throwUsageError(
                "--seed", tr("must be a whole number from 0 to 18446744073709551615, not {0}", quoted(text)));
        }
    };
    return app.add_option_function<std::string>("--seed", store, help)->type_name("N");
}

CLI::Option* addPath(CLI::App& app, const std::string& name, std::filesystem::path& target,
                     const std::string& help) {
    const auto store = [name, &target](const std::string& text) {
        if (text.empty()) throwUsageError(name, tr("must not be empty"));
        target = text;
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("PATH");
}

CLI::Option* addReal(CLI::App& app, const std::string& name, std::optional<double>& target, RealRange range,
                     const std::string& help) {
    const auto store = [name, &target, range](const std::string& text) {
        const auto value = Text::parseDouble(text);
        // Written so that NaN fails.
        if (!value || !(*value >= range.lower && *value <= range.upper)) {
            throwUsageError(name, tr("must be a number from {0} to {1}, not {2}", shortNumber(range.lower),
                                     shortNumber(range.upper), quoted(text)));
        }
        target = *value;
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("F");
}

CLI::Option* addPlace(CLI::App& app, const std::string& name, std::optional<MapPlace>& target,
                      const std::string& help) {
    const auto store = [name, &target](const std::string& text) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const auto x = Text::parseDouble(text.substr(0, comma));
        const auto y = comma < text.size() ? Text::parseDouble(text.substr(comma + 1)) : std::nullopt;
        if (!x || !y || !std::isfinite(*x) || !std::isfinite(*y))
            throwUsageError(name, tr("must be two numbers like 1.5,-0.25, not {0}", quoted(text)));
        target = MapPlace{*x, *y};
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("X,Y");
}

CLI::Option* addPrefix(CLI::App& app, std::string& target) {
    const auto store = [&target](const std::string& text) {
        if (text.empty()) throwUsageError("--prefix", tr("must not be empty"));
        target = text;
    };
    return app.add_option_function<std::string>("--prefix", store, tr("How the names of the files begin"))
        ->type_name("NAME")
        ->default_str(tr("the folder's name"));
}

CLI::Option* addChoice(CLI::App& app, const std::string& name, std::string& target,
                       const std::vector<std::string>& choices, const std::string& help) {
    const auto store = [name, &target, choices](const std::string& text) {
        if (std::find(choices.begin(), choices.end(), text) == choices.end())
            throwUsageError(name, tr("must be one of {0}, not {1}", enumeration(choices), quoted(text)));
        target = text;
    };
    std::string typeName;
    for (const std::string& choice : choices)
        typeName += (typeName.empty() ? "" : "|") + choice;
    return app.add_option_function<std::string>(name, store, help)->type_name(typeName);
}

void addJSON(CLI::App& app, bool& target) {
    app.add_flag("--json", target, tr("Print one JSON object per line and nothing else"));
}

void ModelsOption::addTo(CLI::App& app) {
    addPath(app, "--models", directory_, tr("Folder of the stored models"))
        ->type_name("DIR")
        ->default_str(tr("the user's own"));
}

std::filesystem::path ModelsOption::root() const {
    return directory_.empty() ? ModelStore::rootDirectory() : ModelStore::corpusPath(directory_);
}

CLI::Option* CorpusOption::addTo(CLI::App& app) {
    return addPath(app, "FOLDER", folder_, tr("Folder of audio samples"))->type_name("")->required();
}

std::filesystem::path CorpusOption::folder() const {
    return ModelStore::corpusPath(folder_);
}

void ComputeOptions::addTo(CLI::App& app) {
    addWholeNumber(app, "--threads", threads_, {1, 1024}, tr("Threads to use"))
        ->default_str(tr("one per processor"));
    const auto storeDevice = [this](const std::string& text) {
        if (text.empty()) throwUsageError("--device", tr("must not be empty"));
        device_ = text;
    };
    app.add_option_function<std::string>("--device", storeDevice,
                                         tr("Where to compute; 'devices' lists numbers and names"))
        ->type_name("auto|cpu|gpu|INDEX|NAME")
        ->default_str(device_);
}

ComputeOptions::Scope::Scope(const ComputeOptions& options, network::Machine& machine, Console& console)
    : threads_(options.threads_ > 0 ? std::make_unique<ThreadLimit>(static_cast<int>(options.threads_))
                                    : nullptr),
      device_(machine, network::DeviceChoice::fromOption(options.device_),
              network::ChosenDevice::Otherwise::fail, listenerFor(console)) {
    if (network::DeviceChoice::fromOption(options.device_).isAutomatic()) return;
    try {
        (void)device_.device();
    } catch (const network::NoDeviceError& error) {
        throw network::NoDeviceError("{0} 'quillmere-cli devices' lists the devices.", error.message());
    }
}

}  // namespace quillmere::cli
