#include <memory>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/PictureOption.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/MapPicture.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

struct MapOptions {
    CorpusOption corpus;
    PictureOption picture;
    ModelsOption models;
    bool json = false;
};

Message nameOf(const ModelBundle& bundle, std::size_t clip) {
    const std::vector<std::string>& names = bundle.metadata.clipNames;
    return clip < names.size() ? Message::verbatim(names[clip]) : Message("sample {0}", clip + 1);
}

std::string coordinate(double value) {
    return Text::fixed(value, 3);
}

void print(const LatentMap& map, const ModelBundle& bundle, Console& console) {
    std::vector<std::vector<std::string>> rows{{"x", "y", ""}};
    for (std::size_t clip = 0; clip < map.places().size(); ++clip) {
        const MapPlace& place = map.places()[clip];
        rows.push_back(
            {coordinate(place.x), coordinate(place.y), printable(Language::text(nameOf(bundle, clip)))});
    }
    for (const std::string& line : table(rows))
        console.print(line);
    const auto [x, y] = map.shares();
    console.print(tr("x has {0} % of all differences of the samples, y {1} %.", Text::fixed(100 * x, 0),
                     Text::fixed(100 * y, 0)));
}

JSON resultJSON(const LatentMap& map, const ModelBundle& bundle, const KnownCorpus& corpus) {
    JSON result = makeResult("map");
    result["corpus"] = toJSON(corpus.summary.directory);
    result["shares"] = map.shares();
    JSON clips = JSON::array();
    for (std::size_t clip = 0; clip < map.places().size(); ++clip) {
        const MapPlace& place = map.places()[clip];
        clips.push_back({{"name", nameOf(bundle, clip).english()}, {"x", place.x}, {"y", place.y}});
    }
    result["clips"] = std::move(clips);
    return result;
}

void drawMap(const MapOptions& options, Console& console, const CancelFlag& cancel) {
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    const ModelBundle bundle = storedModel(corpus, console);
    const LatentMap map(bundle.latents, static_cast<std::size_t>(bundle.config.latentDim), cancel.token());
    JSON result = resultJSON(map, bundle, corpus);
    if (options.picture.isGiven()) {
        options.picture.write(
            mapPicture(map, bundle.metadata.clipNames, "The samples of " + bundle.metadata.corpusName));
        result["picture"] = toJSON(options.picture.file());
    }
    progress.finish();
    print(map, bundle, console);
    if (options.picture.isGiven()) console.print(tr("Drawn in {0}.", shownPath(options.picture.file())));
    console.print(
        tr("Next: {0}", "quillmere-cli generate " + corpus.arguments + " --at X,Y --output FOLDER"));
    console.emit(result);
}

}  // namespace

void addMap(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<MapOptions>();
    CLI::App* const command =
        app.add_subcommand("map", tr("Show where the samples of a learned folder lie in the model"));
    options->corpus.addTo(*command);
    options->picture.addTo(*command);
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            drawMap(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
