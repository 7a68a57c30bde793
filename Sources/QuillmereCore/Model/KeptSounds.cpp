#include "QuillmereCore/Model/KeptSounds.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <utility>

#include "QuillmereCore/Model/ModelFiles.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view title = "quillmere sounds 1\n";
constexpr std::size_t headSize = title.size() + 64 + 1;
constexpr std::size_t countSize = 4;
constexpr std::size_t sampleSize = 2;
constexpr float fullScale = 32767;

std::string headOf(const ModelBundle& model) {
    return std::string(title) + modelIdentity(model) + "\n";
}

void appendCount(std::string& bytes, std::size_t count) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(count >> shift);
}

unsigned byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

std::uint32_t countAt(std::string_view bytes, std::size_t at) {
    return byteAt(bytes, at) | byteAt(bytes, at + 1) << 8 | byteAt(bytes, at + 2) << 16 |
           byteAt(bytes, at + 3) << 24;
}

}  // namespace

struct KeptSounds::File {
    // Of sounds.bin in a folder; not open if there is no such file.
    explicit File(const fs::path& folder)
        : path(folder / ModelFiles::soundsName),
          descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (!descriptor.isOpen()) {
            if (errno != ENOENT && errno != ENOTDIR) throw FileError(path, lastError());
            return;
        }
        struct stat status {};
        if (::fstat(descriptor.get(), &status) != 0) throw FileError(path, lastError());
        size = static_cast<std::uint64_t>(status.st_size);
        if (!S_ISREG(status.st_mode)) descriptor.reset();
    }

    // So many bytes from position at on; fewer if the file ends before.
    [[nodiscard]] std::string bytes(std::uint64_t at, std::size_t count) const {
        std::string result(count, '\0');
        std::size_t done = 0;
        while (done < count) {
            const ssize_t got =
                ::pread(descriptor.get(), result.data() + done, count - done, static_cast<off_t>(at + done));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) throw FileError(path, lastError());
            if (got == 0) break;
            done += static_cast<std::size_t>(got);
        }
        result.resize(done);
        return result;
    }

    [[nodiscard]] std::string digest() const {
        constexpr std::size_t piece = 1 << 20;
        SHA256 sum;
        for (std::uint64_t at = 0; at < size; at += piece) {
            const std::string content =
                bytes(at, static_cast<std::size_t>(std::min<std::uint64_t>(piece, size - at)));
            sum.update(std::as_bytes(std::span(content)));
        }
        return sum.finish();
    }

    // False if this is no file of such a model.
    [[nodiscard]] bool readTable(const ModelBundle& model) {
        const std::size_t clips = model.latents.size();
        const std::size_t tableSize = (clips + 1) * countSize;
        const std::string head = bytes(0, headSize + tableSize);
        if (head.size() < headSize + tableSize || !head.starts_with(headOf(model)) ||
            countAt(head, headSize) != clips)
            return false;
        std::uint64_t position = head.size();
        for (std::size_t clip = 0; clip < clips; ++clip) {
            starts.push_back(position);
            position += sampleSize * std::uint64_t{countAt(head, headSize + (clip + 1) * countSize)};
        }
        starts.push_back(position);
        return position == size;
    }

    fs::path path;
    Descriptor descriptor;
    std::uint64_t size = 0;
    std::vector<std::uint64_t> starts;  // of each clip, and the end
};

std::string KeptSounds::encode(const ModelBundle& model, std::span<const std::vector<std::int16_t>> clips) {
    require(clips.size() == model.latents.size(), "KeptSounds: not one clip per latent");
    std::uint64_t samples = 0;
    for (const std::vector<std::int16_t>& clip : clips)
        samples += clip.size();
    std::string bytes = headOf(model);
    bytes.reserve(static_cast<std::size_t>(size(clips.size(), samples)));
    appendCount(bytes, clips.size());
    for (const std::vector<std::int16_t>& clip : clips)
        appendCount(bytes, clip.size());
    for (const std::vector<std::int16_t>& clip : clips) {
        for (const std::int16_t sample : clip) {
            bytes += static_cast<char>(sample);
            bytes += static_cast<char>(sample >> 8);
        }
    }
    return bytes;
}

std::vector<std::int16_t> KeptSounds::quantise(std::span<const float> samples) {
    std::vector<std::int16_t> codes(samples.size());
    std::ranges::transform(samples, codes.begin(), [](float sample) {
        return static_cast<std::int16_t>(std::lrint(std::clamp(sample, -1.0F, 1.0F) * fullScale));
    });
    return codes;
}

std::uint64_t KeptSounds::size(std::size_t clips, std::uint64_t samples) {
    return headSize + countSize * (std::uint64_t{clips} + 1) + sampleSize * samples;
}

std::optional<KeptSounds> KeptSounds::open(const ModelBundle& model, const fs::path& modelFolder) {
    const auto file = std::make_shared<File>(modelFolder);
    if (!file->descriptor.isOpen() || !file->readTable(model)) return std::nullopt;
    if (file->digest() != ModelFiles::digestOfSounds(modelFolder)) return std::nullopt;
    return KeptSounds(file);
}

std::optional<std::vector<float>> KeptSounds::read(std::size_t clip) const {
    if (clip + 1 >= file_->starts.size()) return std::nullopt;
    const std::uint64_t begin = file_->starts[clip];
    const auto count = static_cast<std::size_t>(file_->starts[clip + 1] - begin);
    const std::string bytes = file_->bytes(begin, count);
    if (count == 0 || bytes.size() < count) return std::nullopt;
    std::vector<float> samples(count / sampleSize);
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const auto code =
            static_cast<std::int16_t>(byteAt(bytes, sampleSize * n) | byteAt(bytes, sampleSize * n + 1) << 8);
        samples[n] = static_cast<float>(code) / fullScale;
    }
    return samples;
}

}  // namespace quillmere
