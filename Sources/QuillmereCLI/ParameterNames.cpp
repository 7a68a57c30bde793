#include "QuillmereCLI/ParameterNames.h"

#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere::cli {

std::vector<std::string> presetNames() {
    std::vector<std::string> names;
    for (const Preset& preset : Preset::all())
        names.emplace_back(preset.name);
    return names;
}

std::vector<std::string> parameterIDs() {
    std::vector<std::string> ids;
    for (const ParameterSpec& spec : Aesthetics::specs())
        ids.emplace_back(spec.id);
    return ids;
}

}  // namespace quillmere::cli
