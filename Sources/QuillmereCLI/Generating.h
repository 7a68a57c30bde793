#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"
#include "QuillmereCLI/ProgressLine.h"
#include "QuillmereCore/Generate/Generator.h"

// What the commands that write variations have in common.
namespace quillmere::cli {

// Counts the variations of a command, of one job or several.
class GeneratingReport {
public:
    GeneratingReport(ProgressLine& progress, std::int64_t count) : progress_(progress), count_(count) {}

    void report(std::int64_t done);
    [[nodiscard]] std::int64_t done() const { return done_; }

private:
    ProgressLine& progress_;
    std::int64_t count_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::int64_t done_ = 0;
};

// A result event for the files of a job: path and seconds of each, in the order given.
[[nodiscard]] JSON filesJSON(const std::vector<GeneratedSample>& files);
// "Wrote 3 variations to DIR:"
[[nodiscard]] std::string wroteText(std::int64_t variations, const std::filesystem::path& folder);
// What people need to know of the seed of a command that draws.
[[nodiscard]] std::string seedText(std::uint64_t seed, bool wasGiven);
// Prints a line for each.
void printFiles(const std::vector<GeneratedSample>& files, Console& console);

// Runs a job and returns its files by their numbers. report goes on from what it has. A failure or a
// cancellation after the first file is preceded by a note of how many are there.
[[nodiscard]] std::vector<GeneratedSample> generateFiles(SampleGenerator& generator,
                                                         const GenerationRequest& request,
                                                         const GenerationHooks& hooks,
                                                         GeneratingReport& report, ProgressLine& progress,
                                                         Console& console, const CancelFlag& cancel);

}  // namespace quillmere::cli
