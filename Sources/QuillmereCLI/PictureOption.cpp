#include "QuillmereCLI/PictureOption.h"

#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Picture/PictureFile.h"
#include "QuillmereCore/Util/Paths.h"

namespace quillmere::cli {

void PictureOption::addTo(CLI::App& app) {
    const auto store = [this](const std::string& text) {
        if (PictureFile::problemWithName(text)) throwUsageError("--picture", tr("must end in .png or .svg"));
        file_ = text;
    };
    app.add_option_function<std::string>("--picture", store, tr("Draw it into this file"))
        ->type_name("FILE.png|svg");
}

std::filesystem::path PictureOption::file() const {
    return Paths::plain(file_);
}

void PictureOption::write(const Drawing& drawing) const {
    PictureFile::write(drawing, file());
}

}  // namespace quillmere::cli
