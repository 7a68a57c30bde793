#include "QuillmereCore/Origin/Journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <chrono>
#include <deque>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/FileLock.h"
#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/UserFolders.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Writer = nlohmann::ordered_json;
using Reader = json::DoubleJson;

constexpr mode_t permissions = 0666;                       // before the umask
constexpr std::size_t longestLine = std::size_t{1} << 20;  // longer ones are none of ours
constexpr std::size_t digestDigits = 64;

// How every line of ours begins: what find looks at without decoding the line.
constexpr std::string_view beforeBytes = R"({"sha256":")";
constexpr std::string_view beforeSound = R"(","sound":")";

// How lines of sets begin, so that they are none of those.
constexpr std::string_view beforeCount = R"({"heard":)";

struct LineDigests {
    std::string_view bytes, sound;
};

std::optional<LineDigests> digestsOf(std::string_view line) {
    constexpr std::size_t soundAt = beforeBytes.size() + digestDigits;
    if (line.size() < soundAt + beforeSound.size() + digestDigits) return std::nullopt;
    if (!line.starts_with(beforeBytes) || !line.substr(soundAt).starts_with(beforeSound)) return std::nullopt;
    return LineDigests{line.substr(beforeBytes.size(), digestDigits),
                       line.substr(soundAt + beforeSound.size(), digestDigits)};
}

std::optional<JournalEntry> tryDecode(std::string_view line) {
    try {
        return decodeJournalEntry(line);
    } catch (const RecipeError&) {
        return std::nullopt;
    }
}

std::optional<Journal::Line> tryDecodeAny(std::string_view line) {
    try {
        if (digestsOf(line)) return decodeJournalEntry(line);
        if (line.starts_with(beforeCount)) return decodeJournalSet(line);
    } catch (const RecipeError&) {
        return std::nullopt;
    }
    return std::nullopt;
}

RecipeError damagedEntry(const DecodingError& error) {
    return RecipeError(RecipeError::Kind::damaged, "the entry is damaged: {0}", error.message());
}

// ---- Files

struct stat statusOf(const Descriptor& descriptor, const fs::path& file) {
    struct stat status {};
    if (::fstat(descriptor.get(), &status) != 0) throw FileError(file, lastError());
    if (!S_ISREG(status.st_mode))
        throw FileError(file, std::make_error_code(std::errc::operation_not_supported));
    return status;
}

// Never waits for a pipe's other end.
Descriptor openToAppend(const fs::path& file) {
    const auto open = [&] {
        return Descriptor(
            ::open(file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, permissions));
    };
    Descriptor descriptor = open();
    if (!descriptor.isOpen() && errno == ENOENT) {
        std::error_code ignored;  // the second attempt tells
        fs::create_directories(file.parent_path(), ignored);
        descriptor = open();
    }
    if (!descriptor.isOpen()) throw FileError(file, lastError());
    return descriptor;
}

// Whether the last line was cut short by a crash or a full disk.
bool endsWithinLine(const Descriptor& descriptor, off_t size) {
    char last = '\n';
    return size > 0 && ::pread(descriptor.get(), &last, 1, size - 1) == 1 && last != '\n';
}

void writeAll(const Descriptor& descriptor, std::string_view text, const fs::path& file) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor.get(), text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw FileError(file, lastError());
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

// Splits what is read piece by piece into lines.
class LineReader {
public:
    explicit LineReader(const std::function<void(std::string_view)>& take) : take_(take) {}

    void read(const Descriptor& descriptor, const fs::path& file, const std::stop_token& stop) {
        while (true) {
            throwIfCancelled(stop);
            const std::size_t kept = buffer_.size();
            buffer_.resize(kept + piece);
            const ssize_t count = ::read(descriptor.get(), buffer_.data() + kept, piece);
            if (count < 0 && errno != EINTR) throw FileError(file, lastError());
            buffer_.resize(kept + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            if (count == 0) break;
            takeLines();
        }
        if (!buffer_.empty()) take_(buffer_);
    }

private:
    static constexpr std::size_t piece = std::size_t{1} << 20;

    void takeLines() {
        std::size_t begin = 0;
        for (std::size_t end = buffer_.find('\n'); end != std::string::npos;
             end = buffer_.find('\n', begin)) {
            take_(std::string_view(buffer_).substr(begin, end - begin));
            begin = end + 1;
        }
        const bool isTooLong = buffer_.size() - begin > longestLine;
        buffer_.erase(0, isTooLong ? buffer_.size() : begin);
    }

    const std::function<void(std::string_view)>& take_;
    std::string buffer_;
};

}  // namespace

std::string soundDigest(std::span<const float> samples, std::int64_t sampleRate) {
    static_assert(std::endian::native == std::endian::little);
    const std::string head = "quillmere sound 1 " + std::to_string(sampleRate) + "\n";
    SHA256 digest;
    digest.update(std::as_bytes(std::span(head)));
    digest.update(std::as_bytes(samples));
    return digest.finish();
}

std::string encodeJSON(const JournalEntry& entry) {
    Writer line;
    line["sha256"] = entry.digests.bytes;
    line["sound"] = entry.digests.sound;
    line["file"] = entry.file;
    line["written"] = entry.written;
    line["recipe"] = Writer::parse(encodeJSON(entry.recipe));
    constexpr int onOneLine = -1;
    return line.dump(onOneLine, ' ', false, Writer::error_handler_t::replace);
}

JournalEntry decodeJournalEntry(std::string_view line) {
    try {
        const auto object = json::parseObject<Reader>(line);
        return {.digests = {json::stringMember(object, "sha256"), json::stringMember(object, "sound")},
                .file = json::stringMember(object, "file"),
                .written = json::stringMember(object, "written"),
                .recipe = decodeRecipe(json::objectMember(object, "recipe").dump())};
    } catch (const DecodingError& error) {
        throw damagedEntry(error);
    }
}

std::string encodeJSON(const JournalSet& set) {
    Writer line;
    line["heard"] = set.count;
    line["made"] = set.made;
    line["recipe"] = Writer::parse(encodeJSON(set.first));
    if (set.parent)
        line["parent"] = {{"name", set.parent->name},
                          {"recipe", Writer::parse(encodeJSON(set.parent->recipe))}};
    constexpr int onOneLine = -1;
    return line.dump(onOneLine, ' ', false, Writer::error_handler_t::replace);
}

JournalSet decodeJournalSet(std::string_view line) {
    try {
        const auto object = json::parseObject<Reader>(line);
        JournalSet set{.count = json::integerMember(object, "heard"),
                       .made = json::stringMember(object, "made"),
                       .first = decodeRecipe(json::objectMember(object, "recipe").dump()),
                       .parent = {}};
        if (set.count < 1) throw DecodingError("\"heard\" must be 1 or more");
        if (object.contains("parent")) {
            const Reader& parent = json::objectMember(object, "parent");
            set.parent = {.name = json::stringMember(parent, "name"),
                          .recipe = decodeRecipe(json::objectMember(parent, "recipe").dump())};
        }
        return set;
    } catch (const DecodingError& error) {
        throw damagedEntry(error);
    }
}

std::string journalTime() {
    return ModelStore::isoDate(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

Journal::Journal(fs::path file, Limits limits) : file_(std::move(file)), limits_(limits) {
    require(limits_.segments >= 1, "a journal needs a file");
}

std::optional<fs::path> Journal::place() {
    const std::optional<fs::path> data = UserFolders::data();
    if (!data) return std::nullopt;
    return *data / "journal.jsonl";
}

std::uint64_t Journal::bytes() const {
    std::uint64_t bytes = 0;
    for (int number = 0; number < limits_.segments; ++number) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(segment(number), error);
        if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) continue;
        if (error) throw FileError(segment(number), error);
        bytes += size;
    }
    return bytes;
}

void Journal::append(const JournalEntry& entry) const {
    appendLine(encodeJSON(entry) + "\n");
}

void Journal::append(const JournalSet& set) const {
    appendLine(encodeJSON(set) + "\n");
}

void Journal::appendLine(std::string line) const {
    makeRoom(line.size());
    const Descriptor descriptor = openToAppend(file_);
    if (endsWithinLine(descriptor, statusOf(descriptor, file_).st_size)) line.insert(0, 1, '\n');
    writeAll(descriptor, line, file_);
}

fs::path Journal::segment(int number) const {
    if (number == 0) return file_;
    fs::path name = file_;
    return name += "." + std::to_string(number);
}

void Journal::makeRoom(std::uint64_t bytes) const {
    constexpr std::chrono::milliseconds patience = std::chrono::seconds(2);
    const auto isFull = [&] {
        std::error_code missing;
        const std::uintmax_t size = fs::file_size(file_, missing);
        return !missing && size > 0 && size + bytes > limits_.segmentBytes;
    };
    if (!isFull()) return;
    fs::path lock = file_.parent_path() / ("." + file_.filename().string() + ".lock");
    // Who does not get the lock leaves the room to whoever has it: a journal a little too long does no harm.
    const auto held = FileLock::acquire(lock, patience);
    if (held && !held->isWithoutEffect() && isFull()) shiftSegments();
}

// A program that has opened the file before still appends to it under its new name: nothing is lost.
void Journal::shiftSegments() const {
    std::error_code missing;
    if (limits_.segments == 1) fs::remove(file_, missing);
    for (int number = limits_.segments - 1; number > 0; --number)
        fs::rename(segment(number - 1), segment(number), missing);
}

void Journal::scan(const std::function<void(std::string_view line)>& take,
                   const std::stop_token& stop) const {
    // Opened from the newest on, in the direction in which they move when room is made: none is missed. One
    // that is met twice has moved meanwhile.
    std::vector<Descriptor> found;
    std::vector<std::pair<dev_t, ino_t>> known;
    for (int number = 0; number < limits_.segments; ++number) {
        Descriptor descriptor(::open(segment(number).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        if (!descriptor.isOpen() && errno == ENOENT) continue;
        if (!descriptor.isOpen()) throw FileError(segment(number), lastError());
        const struct stat status = statusOf(descriptor, segment(number));
        const std::pair identity(status.st_dev, status.st_ino);
        if (std::ranges::find(known, identity) != known.end()) continue;
        known.push_back(identity);
        found.push_back(std::move(descriptor));
    }
    std::ranges::reverse(found);
    for (const Descriptor& descriptor : found)
        LineReader(take).read(descriptor, file_, stop);
}

std::vector<std::optional<JournalEntry>> Journal::find(std::span<const FileDigests> wanted,
                                                       const std::stop_token& stop) const {
    struct Match {
        std::optional<JournalEntry> byBytes, bySound;
    };
    std::vector<Match> matches(wanted.size());
    std::unordered_multimap<std::string_view, std::size_t> bytes;
    std::unordered_multimap<std::string_view, std::size_t> sounds;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i].bytes.empty()) bytes.emplace(wanted[i].bytes, i);
        if (!wanted[i].sound.empty()) sounds.emplace(wanted[i].sound, i);
    }
    scan(
        [&](std::string_view line) {
            const auto digests = digestsOf(line);
            if (!digests) return;
            const auto [firstBytes, endBytes] = bytes.equal_range(digests->bytes);
            const auto [firstSound, endSound] = sounds.equal_range(digests->sound);
            if (firstBytes == endBytes && firstSound == endSound) return;
            const std::optional<JournalEntry> entry = tryDecode(line);
            if (!entry) return;
            for (auto match = firstBytes; match != endBytes; ++match)
                matches[match->second].byBytes = entry;
            for (auto match = firstSound; match != endSound; ++match)
                matches[match->second].bySound = entry;
        },
        stop);
    std::vector<std::optional<JournalEntry>> entries;
    entries.reserve(matches.size());
    for (Match& match : matches)
        entries.push_back(match.byBytes ? std::move(match.byBytes) : std::move(match.bySound));
    return entries;
}

std::vector<JournalEntry> Journal::newest(std::size_t count, const std::stop_token& stop) const {
    std::deque<std::string> lines;
    scan(
        [&](std::string_view line) {
            if (!digestsOf(line)) return;
            lines.emplace_back(line);
            if (lines.size() > count) lines.pop_front();
        },
        stop);
    std::vector<JournalEntry> entries;
    for (const std::string& line : lines) {
        if (std::optional<JournalEntry> entry = tryDecode(line)) entries.push_back(std::move(*entry));
    }
    return entries;
}

void Journal::read(const std::function<bool(std::string_view line)>& wanted,
                   const std::function<void(Line line)>& take, const std::stop_token& stop) const {
    scan(
        [&](std::string_view line) {
            if (!wanted(line)) return;
            if (std::optional<Line> decoded = tryDecodeAny(line)) take(std::move(*decoded));
        },
        stop);
}

}  // namespace quillmere
