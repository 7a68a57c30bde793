#include "QuillmereCore/Generate/SoundFile.h"

#include <system_error>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Util/AtomicFile.h"
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

void requireFree(std::span<const fs::path> files) {
    std::error_code ignored;  // the attempt to write tells of any other trouble
    for (const fs::path& file : files) {
        if (fs::exists(fs::symlink_status(file, ignored))) throwTaken(file);
    }
}

}  // namespace quillmere::SoundFile
