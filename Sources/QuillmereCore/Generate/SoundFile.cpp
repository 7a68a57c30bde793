#include "QuillmereCore/Generate/SoundFile.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::SoundFile {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void throwTaken(const fs::path& file) {
    throw FileError(file, std::make_error_code(std::errc::file_exists));
}

GeneratedSample finish(const FinishedSound& sound, const fs::path& file, std::span<const std::byte> bytes,
                       const GenerationHooks& hooks) {
    GeneratedSample sample{file, static_cast<double>(sound.samples.size()) / sound.sampleRate, sound.origin};
    if (hooks.written) hooks.written({sample, sound.samples, sound.sampleRate, bytes});
    return sample;
}

}  // namespace

std::vector<std::byte> encode(const FinishedSound& sound, const fs::path& file,
                              const GenerationHooks& hooks) {
    std::vector<std::byte> bytes = AudioIO::encode(sound.samples, file, sound.sampleRate, sound.format);
    if (!hooks.chunk) return bytes;
    const GenerationHooks::Chunk chunk = hooks.chunk(sound.origin);
    if (!RIFFChunk::append(bytes, chunk.id, chunk.content))
        throw FileError(file, std::make_error_code(std::errc::file_too_large));
    return bytes;
}

GeneratedSample writeNew(const FinishedSound& sound, const fs::path& file, const GenerationHooks& hooks) {
    const std::vector<std::byte> bytes = encode(sound, file, hooks);
    if (!writeNewFile(file, bytes)) throwTaken(file);
    return finish(sound, file, bytes, hooks);
}

GeneratedSample replace(const FinishedSound& sound, const fs::path& file, const GenerationHooks& hooks) {
    const std::vector<std::byte> bytes = encode(sound, file, hooks);
    writeFileAtomically(file, bytes);
    return finish(sound, file, bytes, hooks);
}

GeneratedSample writeNumbered(const FinishedSound& sound, const fs::path& folder, std::string_view prefix,
                              const GenerationHooks& hooks) {
    prepareFolder(folder);
    const NumberedNames names(folder, prefix);
    std::size_t number = names.firstFree();
    const std::vector<std::byte> bytes = encode(sound, names.file(number), hooks);
    while (!writeNewFile(names.file(number), bytes))
        number = std::max(number + 1, names.firstFree());
    if (const std::error_code unsafe = syncFolder(folder)) throw FileError(folder, unsafe);
    return finish(sound, names.file(number), bytes, hooks);
}

void prepareFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw FileError(folder, error);
    removeAbandonedFiles(folder);
}

NumberedNames::NumberedNames(fs::path folder, std::string_view prefix)
    : folder_(std::move(folder)),
      base_(Finishing::sanitisedPrefix(prefix) + std::string(Finishing::variationMark)) {}

fs::path NumberedNames::file(std::size_t number) const {
    const std::string name = Finishing::fileName(base_, number);
    return folder_ / std::u8string(name.begin(), name.end());
}

std::size_t NumberedNames::firstFree() const {
    return Finishing::firstFreeIndex(folder_, base_);
}

void requireFree(std::span<const fs::path> files) {
    std::error_code ignored;  // the attempt to write tells of any other trouble
    for (const fs::path& file : files) {
        if (fs::exists(fs::symlink_status(file, ignored))) throwTaken(file);
    }
}

}  // namespace quillmere::SoundFile
