#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

// What a file is recognised by, wherever it is and whatever it is called. Each is a SHA-256 in hexadecimal.
struct FileDigests {
    std::string bytes;  // of the file
    std::string sound;  // of what is heard, which other containers keep: see soundDigest

    friend bool operator==(const FileDigests&, const FileDigests&) = default;
};

// The digest of the line of text "quillmere sound 1 RATE", ended by a line feed, and the samples as
// little-endian single precision. samples: as AudioIO::readMono reads them; sampleRate in Hz.
[[nodiscard]] std::string soundDigest(std::span<const float> samples, std::int64_t sampleRate);

// One file that was written.
struct JournalEntry {
    FileDigests digests;
    std::string file;     // its absolute path then; UTF-8, with replacement characters for what is none
    std::string written;  // when: UTC in whole seconds, ISO 8601
    Recipe recipe;

    friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};
// Variations that were rendered to be heard and not written: enough to render them once more.
struct JournalSet {
    // Of what they are relatives of, where they are any: the first one's lineage says which.
    struct Parent {
        std::string name;  // for people; UTF-8
        Recipe recipe;

        friend bool operator==(const Parent&, const Parent&) = default;
    };
    std::int64_t count = 1;  // at least 1
    std::string made;        // when, as JournalEntry::written
    Recipe first;            // of the first of them; its format means nothing
    std::optional<Parent> parent;

    friend bool operator==(const JournalSet&, const JournalSet&) = default;
};

// One JSON object on one line. Decoding throws RecipeError.
[[nodiscard]] std::string encodeJSON(const JournalEntry& entry);
[[nodiscard]] JournalEntry decodeJournalEntry(std::string_view line);
[[nodiscard]] std::string encodeJSON(const JournalSet& set);
[[nodiscard]] JournalSet decodeJournalSet(std::string_view line);

// This moment, as the journal writes it.
[[nodiscard]] std::string journalTime();

// The recipes of all files that were written, one per line, so that a file is recognised by its bytes while
// nothing is added to it; and, in lines of their own, of the sets that were only heard. Lines are appended
// and never changed.
//
// Any number of programs and threads may append at once: each line is one write at the end of the file. One
// that a crash or a full disk has cut short costs itself, not the next one. When the file reaches its size,
// it becomes NAME.1, NAME.1 becomes NAME.2 and so on, and the last of them is dropped: the journal holds at
// most segments * segmentBytes and forgets its oldest part first.
class Journal {
public:
    struct Limits {
        std::uint64_t segmentBytes = std::uint64_t{64} << 20;
        int segments = 4;  // the file itself included; at least 1
    };
    explicit Journal(std::filesystem::path file, Limits limits);
    explicit Journal(std::filesystem::path file) : Journal(std::move(file), Limits()) {}

    // journal.jsonl beside the user's own models; nothing for a user without a home directory.
    [[nodiscard]] static std::optional<std::filesystem::path> place();

    [[nodiscard]] const std::filesystem::path& file() const { return file_; }

    // What it takes on the disk, its older parts included; 0 where there is none. Throws FileError.
    [[nodiscard]] std::uint64_t bytes() const;

    // Creates the file and its folder if they are missing. Throws FileError.
    void append(const JournalEntry& entry) const;
    void append(const JournalSet& set) const;

    // For each of the wanted files the newest entry with its bytes, else the newest with its sound, else
    // nothing. An empty digest matches none. Reads the journal once. Lines that cannot be read are passed
    // over. Throws FileError and CancellationError; no journal is an empty one.
    [[nodiscard]] std::vector<std::optional<JournalEntry>> find(std::span<const FileDigests> wanted,
                                                                const std::stop_token& stop = {}) const;

    // The newest entries, at most that many, oldest of them first. Throws as find.
    [[nodiscard]] std::vector<JournalEntry> newest(std::size_t count, const std::stop_token& stop = {}) const;

    using Line = std::variant<JournalEntry, JournalSet>;
    // Hands over everything that can be read and is wanted, oldest first; wanted sees the text of a line, to
    // spare the decoding of the others. Throws as find.
    void read(const std::function<bool(std::string_view line)>& wanted,
              const std::function<void(Line line)>& take, const std::stop_token& stop = {}) const;

private:
    [[nodiscard]] std::filesystem::path segment(int number) const;
    void appendLine(std::string line) const;
    void makeRoom(std::uint64_t bytes) const;
    void shiftSegments() const;
    // All lines, oldest first, without their line feeds; each is valid during its call.
    void scan(const std::function<void(std::string_view line)>& take, const std::stop_token& stop) const;

    std::filesystem::path file_;
    Limits limits_;
};

}  // namespace quillmere
