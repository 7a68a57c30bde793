#include "QuillmereCore/Origin/ReportPage.h"

#include <algorithm>
#include <cstddef>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Picture/PictureFile.h"
#include "QuillmereCore/Picture/SoundPictures.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

constexpr const char* style =
    "body { font: 15px/1.5 sans-serif; max-width: 62rem; margin: 2rem auto; padding: 0 1rem; color: #22262e; "
    "}\n"
    "h1 { font-size: 1.6rem; } h2 { font-size: 1.2rem; margin-top: 2.5rem; }\n"
    ".verdict { font-size: 1.15rem; padding: .8rem 1rem; border-left: .3rem solid #206ea0; background: "
    "#f2f5f8; }\n"
    ".good { border-color: #2e8b57; } .fair { border-color: #d99a1c; } .poor { border-color: #c0392b; }\n"
    "table { border-collapse: collapse; width: 100%; } td, th { padding: .25rem .6rem; text-align: left; "
    "border-bottom: 1px solid #e0e3e8; } .number { text-align: right; font-variant-numeric: tabular-nums; }\n"
    ".example { display: grid; grid-template-columns: 1fr 1fr; gap: 0 1.5rem; margin-bottom: 2rem; }\n"
    ".example h3 { grid-column: 1 / -1; margin: .5rem 0; font-size: 1rem; }\n"
    ".example img { width: 100%; height: 9rem; image-rendering: pixelated; display: block; }\n"
    ".example svg { width: 100%; height: auto; display: block; } audio { width: 100%; }\n";

std::string element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">\n";
}

std::string textElement(const std::string& name, const std::string& text) {
    return element(name, PictureFile::escaped(text));
}

std::string number(double value, int decimals = 1) {
    return "<td class=\"number\">" + Text::fixed(value, decimals) + "</td>";
}

std::string cell(const std::string& text) {
    return "<td>" + PictureFile::escaped(text) + "</td>";
}

std::string head(const ReportCard& card) {
    std::string page = textElement("h1", "How well " + card.corpusName + " was learned");
    page += "<p class=\"verdict " + std::string(rawValue(card.grade())) + "\">" +
            PictureFile::escaped(card.verdict().english()) + "</p>\n";
    const std::vector<Message> advice = card.advice();
    if (advice.empty()) return page;
    std::string items;
    for (const Message& sentence : advice)
        items += textElement("li", sentence);
    return page + textElement("h2", "What to do") + element("ul", items);
}

std::string numbers(const ReportCard& card) {
    std::string rows;
    const auto add = [&](const std::string& name, const std::string& value) {
        rows += element("tr", cell(name) + "<td class=\"number\">" + PictureFile::escaped(value) + "</td>");
    };
    add("Samples learned", std::to_string(card.clips.size()));
    add("Steps", std::to_string(card.steps));
    add("Loss after the last step", Text::fixed(static_cast<double>(card.finalLoss), 5));
    add("Reconstruction error", Text::fixed(static_cast<double>(card.finalReconstructionError), 5));
    add("Error of the samples", Text::fixed(card.errorDB, 2) + " dB");
    if (card.heldBack) {
        add("Error of samples learned, with " + std::to_string(card.heldBack->clips) + " held back",
            Text::fixed(card.heldBack->learnedDB, 2) + " dB");
        add("Error of those held back", Text::fixed(card.heldBack->heldBackDB, 2) + " dB");
    }
    return textElement("h2", "Numbers") + element("table", rows);
}

std::string list(const std::string& title, const std::string& items) {
    return items.empty() ? std::string() : textElement("h2", title) + element("ul", items);
}

std::string findings(const ReportCard& card) {
    std::string pairs;
    for (const ReportCard::Pair& pair : card.nearDuplicates)
        pairs += textElement("li", card.clips[pair.first].name + " and " + card.clips[pair.second].name +
                                       ": " + Text::fixed(pair.distanceDB, 1) + " dB apart");
    std::string outliers;
    for (const std::size_t clip : card.outliers)
        outliers +=
            textElement("li", card.clips[clip].name + ": " + Text::fixed(card.clips[clip].nearestDB, 1) +
                                  " dB from the nearest");
    std::string blemishes;
    for (const ReportCard::Blemish& blemish : card.blemishes)
        blemishes +=
            textElement("li", blemish.name + ": " + std::string(rawValue(blemish.kind)) +
                                  (blemish.reason.empty() ? "" : " (" + blemish.reason.english() + ")"));
    return list("Near-duplicates", pairs) + list("Unlike all others", outliers) +
           list("Files that were not learned as they are", blemishes);
}

std::string clipTable(const ReportCard& card) {
    std::string rows =
        element("tr", "<th>Sample</th><th>Error, dB</th><th>Most like</th><th>Distance, dB</th>");
    for (std::size_t i = 0; i < card.clips.size(); ++i) {
        const ReportCard::Clip& clip = card.clips[i];
        const bool hasOther = clip.nearest != i;
        rows += element("tr", cell(clip.name) + number(clip.errorDB) +
                                  cell(hasOther ? card.clips[clip.nearest].name : "") +
                                  (hasOther ? number(clip.nearestDB) : "<td></td>"));
    }
    return textElement("h2", "All samples") + element("table", rows);
}

// One of the two sides of an example.
std::string side(const std::string& title, std::span<const float> samples, std::span<const float> image,
                 const ModelConfig& config, double seconds) {
    constexpr double width = 460;
    constexpr double height = 70;
    const int rate = static_cast<int>(config.sampleRate);
    const std::vector<std::byte> sound = AudioIO::encode(samples, title, rate, OutputFormat::wav16);
    const Pixels pixels = SoundPictures::mel(image, static_cast<std::size_t>(config.nMels),
                                             static_cast<std::size_t>(config.frames));
    const std::string alt = PictureFile::escaped("Mel image, " + title);
    std::string content = textElement("p", title);
    content += PictureFile::svgElement(SoundPictures::waveform(samples, rate, seconds, width, height));
    content += "<img alt=\"" + alt + "\" src=\"" +
               PictureFile::dataAddress(PictureFile::png(pixels), "image/png") + "\"/>\n";
    content += "<audio controls=\"controls\" preload=\"none\" src=\"" +
               PictureFile::dataAddress(sound, "audio/wav") + "\"></audio>\n";
    return element("div", content);
}

std::string exampleSection(const ReportExample& example, const ModelConfig& config) {
    const std::size_t longest = std::max({example.original.size(), example.learned.size(), std::size_t{1}});
    const double seconds = static_cast<double>(longest) / static_cast<double>(config.sampleRate);
    return "<section class=\"example\">\n" +
           textElement("h3", example.name + ", " + Text::fixed(example.errorDB, 1) + " dB off") +
           side("Original", example.original, example.originalImage, config, seconds) +
           side("Learned", example.learned, example.learnedImage, config, seconds) + "</section>\n";
}

}  // namespace

std::string reportPage(const ReportCard& card, std::span<const ReportExample> examples,
                       const ModelConfig& config) {
    const std::string title = "Report on " + card.corpusName;
    std::string body = head(card) + numbers(card) + findings(card);
    if (!examples.empty()) body += textElement("h2", "As they are and as they were learned, worst first");
    for (const ReportExample& example : examples)
        body += exampleSection(example, config);
    body += clipTable(card);
    return "<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
           "<meta charset=\"utf-8\"/>\n" +
           textElement("title", title) + element("style", style) + "</head>\n" + element("body", body) +
           "</html>\n";
}

}  // namespace quillmere
