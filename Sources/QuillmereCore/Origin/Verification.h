#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// What came out when a file was made again.
enum class Verdict {
    sameBytes,     // byte for byte
    sameSamples,   // what is heard is the same in another container or with other chunks
    different,     // the sound was changed since, or was made on a device that computes otherwise
    modelMissing,  // it cannot be made again here
    modelChanged,  // the corpus was learned again since
    unknown,       // there is no recipe for it
    unusable,      // the file, or its recipe, cannot be read
};

[[nodiscard]] std::string_view rawValue(Verdict verdict);  // "sameBytes", ...

struct Verification {
    std::filesystem::path file;
    Verdict verdict = Verdict::unknown;
    std::optional<Recipe> recipe;
    // Of a different one: the first sample that differs, or the length of the shorter one where one goes on.
    std::optional<std::size_t> firstDifference;
    Message reason;  // of every verdict but the first two: a phrase, or a sentence that names the file

    [[nodiscard]] bool isSame() const {
        return verdict == Verdict::sameBytes || verdict == Verdict::sameSamples;
    }
};

// Makes each of the files again and compares. known: as lookUp gives it, without documents. The results are
// in its order. backend makes the samples; what the processor makes is the reference. root: of the models.
// progress(done, total) follows each file, on the calling thread. Throws CancellationError, FileError when
// the models cannot be listed, and network::DeviceError.
using VerificationProgress = std::function<void(std::size_t done, std::size_t total)>;
[[nodiscard]] std::vector<Verification> verify(std::span<const KnownFile> known,
                                               const std::filesystem::path& root, network::Backend& backend,
                                               const VerificationProgress& progress = {},
                                               const std::stop_token& stop = {});

}  // namespace quillmere
