#include <bit>
#include <chrono>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "Golden/GoldenAreas.h"
#include "Golden/GoldenModel.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Trainer.h"
#include "Support/TempFolder.h"

namespace quillmere::golden {
namespace {

using testing::readText;
using testing::TempFolder;
using testing::writeText;

// Little-endian fields of a byte string; reading beyond its end throws.
std::uint32_t unsignedAt(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i) {
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes.substr(offset + i).at(0)))
                 << (8 * i);
    }
    return value;
}

// The contents of a chunk of a RIFF/WAVE file.
std::string_view chunk(std::string_view file, std::string_view id) {
    if (file.substr(0, 4) != "RIFF" || file.substr(8, 4) != "WAVE") throw std::runtime_error("no WAV file");
    for (std::size_t at = 12; at + 8 <= file.size();) {
        const std::size_t size = unsignedAt(file, at + 4, 4);
        if (file.substr(at, 4) == id) {
            if (at + 8 + size > file.size()) throw std::runtime_error("the WAV file is cut");
            return file.substr(at + 8, size);
        }
        at += 8 + size + size % 2;
    }
    throw std::runtime_error("the WAV file has no chunk " + std::string(id));
}

std::string written(std::span<const float> samples, int sampleRate, OutputFormat format) {
    const TempFolder folder;
    AudioIO::write(samples, folder / "written.wav", sampleRate, format);
    return readText(folder / "written.wav");
}

OutputFormat requiredFormat(const Case& vector) {
    const auto format = outputFormat(vector.input.at("format").get<std::string>());
    if (!format) throw std::invalid_argument("unknown format");
    return *format;
}

Outputs formats(const Case& /*vector*/) {
    Json raw = Json::array(), labels = Json::array(), bits = Json::array(), tags = Json::array();
    for (const OutputFormat format : allOutputFormats) {
        raw.push_back(rawValue(format));
        labels.push_back(label(format));
        bits.push_back(bitDepth(format));
        tags.push_back(unsignedAt(chunk(written({}, 44100, format), "fmt "), 0, 2));
    }
    Outputs out;
    out.value("raw", raw);
    out.value("labels", labels);
    out.value("bits", bits);
    out.value("tags", tags);
    return out;
}

Outputs formatNamed(const Case& vector) {
    const std::optional<OutputFormat> format = outputFormat(vector.input.at("raw").get<std::string>());
    Outputs out;
    out.value("case", format ? Json(rawValue(*format)) : Json());
    return out;
}

// The number that a sample of a WAV file stores: its integer code, or the float itself.
double storedCode(std::string_view bytes, OutputFormat format) {
    const std::uint32_t raw = unsignedAt(bytes, 0, bytes.size());
    if (format == OutputFormat::wav32float) return std::bit_cast<float>(raw);
    const int unused = 32 - bitDepth(format);
    return static_cast<std::int32_t>(raw << unused) >> unused;
}

Outputs quantise(const Case& vector) {
    const OutputFormat format = requiredFormat(vector);
    const std::string file = written(floats(vector.input.at("samples")), 44100, format);
    const std::string_view data = chunk(file, "data");
    const auto width = static_cast<std::size_t>(bitDepth(format) / 8);
    std::vector<double> codes;
    for (std::size_t at = 0; at < data.size(); at += width) {
        codes.push_back(storedCode(data.substr(at, width), format));
    }
    Outputs out;
    out.array("codes", codes);
    return out;
}

Outputs wavFile(const Case& vector) {
    const std::string file = written(floats(vector.input.at("samples")),
                                     vector.input.at("sampleRate").get<int>(), requiredFormat(vector));
    const std::string_view fmt = chunk(file, "fmt ");
    Outputs out;
    out.value("formatTag", unsignedAt(fmt, 0, 2));
    out.value("channels", unsignedAt(fmt, 2, 2));
    out.value("sampleRate", unsignedAt(fmt, 4, 4));
    out.value("byteRate", unsignedAt(fmt, 8, 4));
    out.value("blockAlign", unsignedAt(fmt, 12, 2));
    out.value("bits", unsignedAt(fmt, 14, 2));
    out.value("dataBytes", chunk(file, "data").size());
    return out;
}

ModelBundle storedModel() {
    const ModelConfig config = smallConfig(2);
    ModelBundle bundle = blankModel(config, {{0.5F, -1}});
    bundle.metadata.corpusName = "Kicks";
    bundle.metadata.corpusPath = "/samples/Kicks";
    bundle.metadata.fingerprint = "3f2a9c0d11e4b7a5";
    bundle.metadata.steps = 1;
    bundle.metadata.clipNames = {"kick.wav"};
    bundle.metadata.analysis = std::string(rawValue(config.profile));
    return bundle;
}

Json keysOf(const nlohmann::ordered_json& object) {
    Json keys = Json::array();
    for (const auto& entry : object.items()) {
        keys.push_back(entry.key());
    }
    return keys;
}

Outputs manifestKeys(const Case& /*vector*/) {
    const TempFolder folder;
    ModelStore::save(storedModel(), folder.path());
    const auto manifest = nlohmann::ordered_json::parse(readText(folder / "model.json"));
    Outputs out;
    out.value("manifest", keysOf(manifest));
    out.value("config", keysOf(manifest.at("config")));
    out.value("metadata", keysOf(manifest.at("metadata")));
    return out;
}

Outputs folderName(const Case& vector) {
    Outputs out;
    out.value("name", ModelStore::folderName(vector.input.at("corpusFolder").get<std::string>(),
                                             vector.input.at("fingerprint").get<std::string>()));
    return out;
}

Outputs isoDate(const Case& vector) {
    const std::chrono::duration<double> sinceEpoch(vector.input.at("secondsSince1970").get<double>());
    Outputs out;
    out.value("text", ModelStore::isoDate(
                          std::chrono::sys_seconds(std::chrono::floor<std::chrono::seconds>(sinceEpoch))));
    return out;
}

Outputs weightsBlob(const Case& vector) {
    std::string hex;
    for (const char byte : ModelStore::weightsBlob(floatArrays(vector.input.at("arrays")))) {
        const auto value = static_cast<unsigned char>(byte);
        hex += "0123456789abcdef"[value >> 4];
        hex += "0123456789abcdef"[value & 15];
    }
    Outputs out;
    out.value("hex", hex);
    return out;
}

Outputs weightsSize(const Case& vector) {
    Outputs out;
    out.value("bytes", ModelStore::weightsSize(modelConfig(vector.input.at("config"))));
    return out;
}

// What the failure says that action ends with.
template <typename Error, typename Action>
std::string messageOf(Action action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    throw std::runtime_error("nothing failed");
}

std::string weightsMismatchMessage() {
    const TempFolder folder;
    ModelStore::save(storedModel(), folder.path());
    const std::string weights = readText(folder / "weights.bin");
    writeText(folder / "weights.bin", std::string_view(weights).substr(1));
    return messageOf<CorruptModelError>([&] { (void)ModelStore::load(folder.path()); });
}

std::string message(const Json& input) {
    const auto kind = input.at("kind").get<std::string>();
    const std::filesystem::path path = input.value("path", "");
    if (kind == "unreadable")
        return AudioIOError::unreadable(path, Message::verbatim(input.at("reason").get<std::string>()))
            .what();
    if (kind == "empty") return AudioIOError::empty(path).what();
    if (kind == "notAFolder") return messageOf<FileError>([&] { (void)Corpus::scan(path); });
    if (kind == "noUsableAudio") return TrainingError(TrainingError::Kind::noUsableAudio).what();
    if (kind == "diverged") return TrainingError(TrainingError::Kind::diverged).what();
    if (kind == "weightsMismatch") return weightsMismatchMessage();
    throw std::invalid_argument("unknown message " + kind);
}

Outputs messages(const Case& vector) {
    Outputs out;
    out.value("text", message(vector.input));
    return out;
}

}  // namespace

Area formatArea() {
    return {"format",
            {{"Format",
              {{"formats", formats},
               {"formatNamed", formatNamed},
               {"quantise", quantise},
               {"wavFile", wavFile},
               {"manifestKeys", manifestKeys},
               {"folderName", folderName},
               {"isoDate", isoDate},
               {"weightsBlob", weightsBlob},
               {"weightsSize", weightsSize},
               {"message", messages}}}}};
}

}  // namespace quillmere::golden
