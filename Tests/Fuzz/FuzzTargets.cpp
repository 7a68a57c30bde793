#include "Fuzz/FuzzTargets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzz/FuzzFolder.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelFiles.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Catalogue.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::fuzz {
namespace {

const FuzzFolder& folder() {
    static const FuzzFolder folder;
    return folder;
}

std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Does work; a failure is an answer, too.
template <typename Work>
void answered(const Work& work) {
    try {
        work();
    } catch (const Failure& failure) {
        require(failure.what()[0] != '\0', "a failure says what is wrong");
    }
}

}  // namespace

void audio(Bytes bytes) {
    const std::filesystem::path file = folder().file("sample", bytes);
    (void)AudioIO::info(file);
    answered([&] {
        // A few hundred bytes of a lossless format can hold hours.
        std::int64_t heard = 0;
        constexpr double rate = 44100;
        const auto count = [&](std::span<const float> samples) {
            heard += static_cast<std::int64_t>(samples.size());
            constexpr std::int64_t enough = 1 << 20;
            if (heard > enough) throw Failure("That is long enough.");
        };
        const AudioIO::StreamedAudio streamed = AudioIO::stream(file, rate, count);
        require(streamed.frames > 0 && streamed.sampleRate > 0, "what is read has a length and a rate");
    });
}

void model(Bytes bytes) {
    const auto border = std::ranges::find(bytes, std::byte{0});
    const auto manifestSize = static_cast<std::size_t>(border - bytes.begin());
    (void)folder().file("model.json", bytes.first(manifestSize));
    const Bytes beginning = border == bytes.end() ? Bytes() : bytes.subspan(manifestSize + 1);
    const std::filesystem::path weights = folder().file("weights.bin", beginning);
    // Zeros make up what no input could hold.
    answered([&] {
        const ModelConfig config = ModelFiles::readManifest(folder().path()).config;
        constexpr std::int64_t largest = std::int64_t{16} << 20;
        if (problemWith(config) || ModelStore::weightsSize(config) > largest) return;
        std::filesystem::resize_file(weights, static_cast<std::uintmax_t>(ModelStore::weightsSize(config)));
    });
    answered([&] {
        const ModelBundle bundle = ModelStore::open(folder().path());
        require(!bundle.latents.empty(), "a model that was opened has learned something");
        for (const std::vector<float>& values : bundle.weights)
            require(std::ranges::all_of(values, [](float weight) { return std::isfinite(weight); }),
                    "the weights of a model that was opened are numbers");
    });
}

void parameters(Bytes bytes) {
    const std::string_view text = textOf(bytes);
    answered([&] {
        const Aesthetics read = decodeAesthetics(text);
        validate(read);
        require(decodeAesthetics(encodeJSON(read)) == read, "parameters come back as they were written");
    });
    answered([&] {
        const Aesthetics read = decodePreset(text);
        validate(read);
        Aesthetics inRange;
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            inRange.set(spec, spec.value(read));
            require(spec.value(inRange) >= spec.lower && spec.value(inRange) <= spec.upper,
                    "a value that was set is in its range");
        }
        require(decodePreset(encodePreset(inRange)) == inRange, "a preset comes back as it was written");
    });
}

void recipes(Bytes bytes) {
    const std::string_view text = textOf(bytes);
    answered([&] {
        const Recipe read = decodeRecipe(text);
        require(decodeRecipe(encodeJSON(read)) == read, "a recipe comes back as it was written");
    });
    answered([&] {
        const JournalEntry read = decodeJournalEntry(text);
        require(decodeJournalEntry(encodeJSON(read)) == read, "an entry comes back as it was written");
    });
    const std::filesystem::path document = folder().file("recipes.jsonl", bytes);
    answered([&] { require(!readRecipes(document).empty(), "a document that was read holds a recipe"); });
    answered([&] {
        const Journal journal(document);
        constexpr std::size_t few = 3;
        require(journal.newest(few).size() <= few, "no more entries than were asked for");
        const std::filesystem::path sound = folder().file("sample.wav", bytes);
        require(lookUp(std::span(&sound, 1), &journal).size() == 1, "an answer for each file");
    });
}

void names(Bytes bytes) {
    std::vector<CorpusFile> files;
    std::string_view rest = textOf(bytes);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string name(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        (void)Corpus::isSupported(name);
        const std::string shown = cli::printable(name);
        require(std::ranges::none_of(shown, [](unsigned char c) { return c < ' ' || c == 0x7F; }),
                "what is shown steers no terminal");
        require(cli::printable(shown).size() >= shown.size(), "what is shown can be shown");
        constexpr std::size_t width = 10;
        require(cli::columns(cli::cutToWidth(shown, width)) <= width, "what is cut to a width fits");
        (void)cli::shellWord(name);
        (void)ModelStore::folderName(name, "0");
        (void)ModelStore::parseISODate(name);
        (void)Text::parseDouble(name);
        CorpusFile file;
        file.relativePath = name;
        files.push_back(std::move(file));
    }
    constexpr std::size_t many = 1000;  // sorting is no matter of their number
    files.resize(std::min(files.size(), many));
    Corpus::sortNaturally(files);
    std::vector<CorpusFile> again(files.rbegin(), files.rend());
    Corpus::sortNaturally(again);
    require(std::ranges::equal(files, again, {}, &CorpusFile::relativePath, &CorpusFile::relativePath),
            "names have one order, however they came");
}

void catalogues(Bytes bytes) {
    const std::optional<Catalogue> read = Catalogue::read(textOf(bytes));
    if (!read) return;
    require(read->find("", 1) == nullptr, "the header is no text");
    for (const std::uint64_t count : {0U, 1U, 2U, 100U}) {
        const char* const found = read->find("{0} file", count);
        if (found == nullptr) continue;
        require(*found != '\0', "a text that is found says something");
        require(std::string_view(found).find('\x1B') == std::string_view::npos, "a text steers no terminal");
    }
}

}  // namespace quillmere::fuzz
