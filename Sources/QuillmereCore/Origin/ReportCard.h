#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// How well a model has learned its folder, and what stands in its way.
//
// The error of a clip is the root mean square difference of its mel image and of what the model makes of it,
// over all values, in decibels. Near-duplicates and outliers are told by the distance of sounds of
// SoundPrint.h, which no model has a part in.
struct ReportCard {
    // A clip that was learned.
    struct Clip {
        std::string name;
        double errorDB = 0;
        std::size_t nearest = 0;  // the clip that is most like it; itself if there is no other
        double nearestDB = 0;     // distance of that one
    };
    struct Pair {
        std::size_t first = 0, second = 0;  // positions in clips, first < second
        double distanceDB = 0;
    };
    // A file that was not learned, or not as it is.
    struct Blemish {
        enum class Kind { cut, silent, unreadable, damaged };
        std::string name;
        Kind kind = Kind::cut;
        Message reason;  // a phrase or a sentence; may be empty
    };
    // What a model of nine in ten of the clips makes of the others.
    struct HeldBack {
        std::size_t clips = 0;  // that were held back
        double learnedDB = 0;   // error of those that were learned
        double heldBackDB = 0;  // error of the others
    };
    enum class Grade { good, fair, poor };

    std::string corpusName;
    std::int64_t steps = 0;
    float finalLoss = 0;
    float finalReconstructionError = 0;  // as the model says it
    double clipSeconds = 0;
    std::vector<Clip> clips;            // in the order of the model
    double errorDB = 0;                 // root mean square of the errors of all clips
    std::vector<std::size_t> worst;     // the three clips with the greatest errors, greatest first
    std::vector<Pair> nearDuplicates;   // nearest first
    std::vector<std::size_t> outliers;  // farthest first
    std::vector<Blemish> blemishes;     // in the order of the files
    std::optional<HeldBack> heldBack;

    [[nodiscard]] std::size_t count(Blemish::Kind kind) const;
    // Good below 4 dB, poor from 8 dB on.
    [[nodiscard]] Grade grade() const;
    // A sentence for people.
    [[nodiscard]] Message verdict() const;
    // What to do about it: sentences, the most useful first; none where all is well.
    [[nodiscard]] std::vector<Message> advice() const;
};

[[nodiscard]] std::string_view rawValue(ReportCard::Grade grade);         // "good", "fair", "poor"
[[nodiscard]] std::string_view rawValue(ReportCard::Blemish::Kind kind);  // "cut", ...

// Where a report is in its work.
struct ReportProgress {
    enum class Part { reading, comparing, training };
    Part part = Part::reading;
    std::int64_t done = 0, total = 0;  // files, clips or steps
};

struct ReportOptions {
    bool holdsBack = false;  // trains a model anew, which takes as long as training does
    // What that training begins from: what the model itself began from, which its few steps may be meant
    // for. Null: random weights.
    std::shared_ptr<const TrainingStart> start{};
};

// corpus: the folder of the model, unchanged. progress may be empty; it is called by one thread at a time.
// Throws CancellationError, Failure where the folder is not what was learned, AudioIOError for the system's
// trouble, TrainingError, and network::DeviceError.
[[nodiscard]] ReportCard makeReport(const ModelBundle& model, const CorpusSummary& corpus,
                                    network::Backend& backend, const ReportOptions& options = {},
                                    const std::function<void(const ReportProgress&)>& progress = {},
                                    const std::stop_token& stop = {});

// A clip as it was learned and as the model makes it.
struct ReportExample {
    std::string name;
    double errorDB = 0;
    std::vector<float> original, learned;            // samples at the model's rate
    std::vector<float> originalImage, learnedImage;  // [nMels][frames], network units
};
// The clips with the greatest errors, at most so many, greatest first. Throws as makeReport.
[[nodiscard]] std::vector<ReportExample> reportExamples(const ReportCard& card, const ModelBundle& model,
                                                        const CorpusSummary& corpus,
                                                        network::Backend& backend, std::size_t most,
                                                        const std::stop_token& stop = {});

}  // namespace quillmere
