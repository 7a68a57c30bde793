#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Console.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/LatentMap.h"
#include "QuillmereCore/Util/Parallel.h"

// Options that several commands share, and options with checked values. A value that does not fit is a usage
// error (CLI::ParseError). Numbers are read independently of the locale.
namespace quillmere::cli {

struct WholeRange {
    std::int64_t lower, upper;  // both inclusive
};

// Each adds an option that stores its value in target, which must outlive the parsing.
CLI::Option* addWholeNumber(CLI::App& app, const std::string& name, std::int64_t& target, WholeRange range,
                            const std::string& help);
CLI::Option* addSeed(CLI::App& app, std::optional<std::uint64_t>& target, const std::string& help);
// A path that must not be empty; name may be a positional one.
CLI::Option* addPath(CLI::App& app, const std::string& name, std::filesystem::path& target,
                     const std::string& help);

struct RealRange {
    double lower, upper;  // both inclusive
};
CLI::Option* addReal(CLI::App& app, const std::string& name, std::optional<double>& target, RealRange range,
                     const std::string& help);

// X,Y: a place on the map of a corpus.
CLI::Option* addPlace(CLI::App& app, const std::string& name, std::optional<MapPlace>& target,
                      const std::string& help);

// --prefix NAME: how the names of files begin.
CLI::Option* addPrefix(CLI::App& app, std::string& target);

// One of choices, matched exactly.
CLI::Option* addChoice(CLI::App& app, const std::string& name, std::string& target,
                       const std::vector<std::string>& choices, const std::string& help);

[[noreturn]] void throwUsageError(const std::string& option, const std::string& message);

// --json
void addJSON(CLI::App& app, bool& target);

// --models DIR
class ModelsOption {
public:
    void addTo(CLI::App& app);
    // The given folder as an absolute path, else the user's own models root.
    [[nodiscard]] std::filesystem::path root() const;
    [[nodiscard]] bool isGiven() const { return !directory_.empty(); }

private:
    std::filesystem::path directory_;
};

// FOLDER, the corpus.
class CorpusOption {
public:
    // The option is required unless its caller takes that back.
    CLI::Option* addTo(CLI::App& app);
    [[nodiscard]] bool isGiven() const { return !folder_.empty(); }
    // Absolute and without "." and "..", because the folder's name becomes part of names.
    [[nodiscard]] std::filesystem::path folder() const;

private:
    std::filesystem::path folder_;
};

// --threads N and --device auto|cpu|gpu|INDEX|NAME.
class ComputeOptions {
public:
    // In force while it lives.
    class Scope {
    public:
        Scope(const ComputeOptions& options, network::Machine& machine, Console& console);
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

        [[nodiscard]] network::ChosenDevice& device() { return device_; }

    private:
        std::unique_ptr<ThreadLimit> threads_;  // null without --threads
        network::ChosenDevice device_;
    };

    // byDefault: the device without --device.
    explicit ComputeOptions(std::string byDefault = "auto") : device_(std::move(byDefault)) {}

    void addTo(CLI::App& app);
    // Limits the threads and chooses one of machine's devices; tells console when the processor has to stand
    // in for it. Throws network::DeviceError if there is no such device or it does not open; what is chosen
    // automatically is not opened before it is needed.
    [[nodiscard]] Scope begin(network::Machine& machine, Console& console) const {
        return {*this, machine, console};
    }

private:
    std::int64_t threads_ = 0;  // 0: one per processor
    std::string device_;
};

}  // namespace quillmere::cli
