#include "QuillmereCore/Model/Corpus.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

std::string lowerExtension(const fs::path& name) {
    const std::string extension = Text::lowercase(Text::utf8(name.extension()));
    return extension.empty() ? extension : extension.substr(1);
}

bool isHidden(const fs::path& name) {
    return name.native().starts_with('.');
}

// Folders that a desktop shows as one document or program; what sounds they hold are its parts.
bool isPackage(const fs::path& folderName) {
    static const std::set<std::string, std::less<>> extensions{
        "aaxplugin",     "app",       "appex",         "au",       "band",   "bundle", "component",
        "fcpbundle",     "framework", "imovielibrary", "kext",     "logicx", "mpkg",   "musiclibrary",
        "photoslibrary", "pkg",       "plugin",        "prefpane", "rtfd",   "saver",  "vst",
        "vst3",          "wdgt",      "xcodeproj",     "xpc"};
    return extensions.contains(lowerExtension(folderName));
}

// Times before 1970 have negative seconds and a positive fraction: -1.75 s is {-2, 0.25}.
std::int64_t truncatedSeconds(const timespec& time) {
    const bool cutsUp = time.tv_sec < 0 && time.tv_nsec > 0;
    return std::int64_t{time.tv_sec} + (cutsUp ? 1 : 0);
}

// What a refused look at something below the corpus folder means.
enum class Refusal {
    isGone,    // removed meanwhile, or no longer what it was
    isClosed,  // not for us to read, or too deep for a path
    isTrouble  // nothing that the file or folder is to blame for
};

Refusal meaningOf(int code) {
    switch (code) {
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
            return Refusal::isGone;
        case EACCES:
        case EPERM:
        case ENAMETOOLONG:
            return Refusal::isClosed;
        default:
            return Refusal::isTrouble;
    }
}

std::error_code systemCode(int code) {
    return {code, std::generic_category()};
}

// The entries of a folder.
class Folder {
public:
    struct Entry {
        std::string name;
        unsigned char type = DT_UNKNOWN;
    };

    // Throws std::system_error, as the others do. Only the corpus folder itself may be a link.
    Folder(const fs::path& path, bool isLinkAllowed)
        : descriptor_(
              ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (isLinkAllowed ? 0 : O_NOFOLLOW))) {
        if (descriptor_ < 0) throw std::system_error(systemCode(errno));
        stream_ = ::fdopendir(descriptor_);
        if (stream_ != nullptr) return;
        const int code = errno;
        ::close(descriptor_);
        throw std::system_error(systemCode(code));
    }
    ~Folder() { ::closedir(stream_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    // Nothing at the end.
    std::optional<Entry> next() {
        errno = 0;
        const dirent* const entry = ::readdir(stream_);
        if (entry != nullptr) return Entry{entry->d_name, entry->d_type};
        if (errno != 0) throw std::system_error(systemCode(errno));
        return std::nullopt;
    }

    // What an entry is; links are not followed.
    [[nodiscard]] struct stat look(const std::string& name) const {
        struct stat status {};
        if (::fstatat(descriptor_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            throw std::system_error(systemCode(errno));
        return status;
    }

private:
    int descriptor_;
    DIR* stream_ = nullptr;
};

// Collects the files below a folder.
class Walk {
public:
    Walk(fs::path root, const std::stop_token& stop) : root_(std::move(root)), stop_(stop) {}

    void run(CorpusSummary& summary) {
        try {
            Folder folder(root_, true);
            visit(folder, "");
        } catch (const std::system_error& error) {
            throw FileError(root_, error.code());
        }
        while (!pending_.empty()) {
            const std::string folder = std::move(pending_.back());
            pending_.pop_back();
            descend(folder);
        }
        std::ranges::sort(passedOver_, {}, &PassedOver::folder);
        summary.files = std::move(files_);
        summary.passedOver = std::move(passedOver_);
    }

private:
    void descend(const std::string& relativePath) {
        try {
            Folder folder(root_ / relativePath, false);
            visit(folder, relativePath + "/");
        } catch (const std::system_error& error) {
            const Refusal refusal = meaningOf(error.code().value());
            if (refusal == Refusal::isTrouble) throw FileError(root_ / relativePath, error.code());
            if (refusal == Refusal::isClosed)
                passedOver_.push_back({relativePath, Message::system(error.code())});
        }
    }

    void visit(Folder& folder, const std::string& prefix) {
        while (const std::optional<Folder::Entry> entry = folder.next()) {
            throwIfCancelled(stop_);
            if (!isHidden(entry->name)) add(folder, *entry, prefix);
        }
    }

    // An entry that is gone since it was listed is none.
    void add(const Folder& folder, const Folder::Entry& entry, const std::string& prefix) {
        const bool mayBeFile = entry.type == DT_REG || entry.type == DT_UNKNOWN;
        const bool mayBeFolder = entry.type == DT_DIR || entry.type == DT_UNKNOWN;
        const bool isWanted = mayBeFile && Corpus::isSupported(entry.name);
        if (!isWanted && !(mayBeFolder && !isPackage(entry.name))) return;
        if (entry.type == DT_DIR) {
            pending_.push_back(prefix + entry.name);
            return;
        }
        try {
            const struct stat status = folder.look(entry.name);
            if (S_ISREG(status.st_mode) && isWanted) {
                files_.push_back({root_ / (prefix + entry.name), prefix + entry.name, status.st_size,
                                  truncatedSeconds(status.st_mtim)});
            }
            if (S_ISDIR(status.st_mode) && !isPackage(entry.name)) pending_.push_back(prefix + entry.name);
        } catch (const std::system_error& error) {
            if (meaningOf(error.code().value()) != Refusal::isGone) throw;
        }
    }

    fs::path root_;
    const std::stop_token& stop_;
    std::vector<std::string> pending_;  // folders below the root that are still to be visited
    std::vector<CorpusFile> files_;
    std::vector<PassedOver> passedOver_;
};

// Sort keys of ICU's root collation with numbers by value. One fixed locale: the order decides the
// fingerprint, which must not change with the user's language.
class NaturalOrder {
public:
    NaturalOrder() {
        UErrorCode status = U_ZERO_ERROR;
        collator_.reset(icu::Collator::createInstance(icu::Locale::getRoot(), status));
        require(U_SUCCESS(status), "ICU has no root collation");
        collator_->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        require(U_SUCCESS(status), "ICU cannot compare numbers by value");
    }

    // Keys compare as bytes.
    [[nodiscard]] std::string key(const std::string& text) const {
        const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(text);
        std::string bytes(static_cast<std::size_t>(collator_->getSortKey(characters, nullptr, 0)), '\0');
        collator_->getSortKey(characters, reinterpret_cast<std::uint8_t*>(bytes.data()),
                              static_cast<std::int32_t>(bytes.size()));
        return bytes;
    }

private:
    std::unique_ptr<icu::Collator> collator_;
};

// 64-bit FNV-1a (Fowler, Noll and Vo).
class Hash {
public:
    void add(std::string_view bytes) {
        for (const char byte : bytes)
            value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    [[nodiscard]] std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

std::string hexadecimal(std::uint64_t value) {
    std::array<char, 16> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return {digits.data(), result.ptr};
}

// Nothing for a file that cannot be opened for a reason of its own.
std::optional<AudioIO::AudioInfo> measure(const CorpusFile& file, const std::stop_token& stop) {
    try {
        return AudioIO::measure(file.url, {.stop = stop, .followsLinks = false});
    } catch (const AudioIOError& error) {
        if (error.isSystemTrouble()) throw;
        return std::nullopt;
    }
}

std::vector<std::optional<AudioIO::AudioInfo>> measureAll(const std::vector<CorpusFile>& files,
                                                          const Corpus::ProgressCallback& progress,
                                                          const std::stop_token& stop) {
    std::vector<std::optional<AudioIO::AudioInfo>> infos(files.size());
    struct {
        Mutex mutex;  // held during the progress callback
        std::int64_t done QUILLMERE_GUARDED_BY(mutex) = 0;
    } measured;
    const auto total = static_cast<std::int64_t>(files.size());
    if (progress) progress(0, total);
    parallelFor(files.size(), [&](std::size_t i) {
        throwIfCancelled(stop);
        infos[i] = measure(files[i], stop);
        if (!progress) return;
        const MutexLock lock(measured.mutex);
        progress(++measured.done, total);
    });
    return infos;
}

}  // namespace

int CorpusSummary::dominantSampleRate() const {
    int dominant = 44100;
    int most = 0;
    for (const auto& [rate, count] : sampleRates) {
        if (count > most) {
            dominant = rate;
            most = count;
        }
    }
    return dominant;
}

double CorpusSummary::suggestedClipSeconds() const {
    if (durations.empty()) return 1.0;
    std::vector<double> sorted = durations;
    std::sort(sorted.begin(), sorted.end());
    const auto index = static_cast<std::size_t>(static_cast<double>(sorted.size()) * 0.9);
    return std::clamp(sorted[std::min(sorted.size() - 1, index)], 0.3, 4.0);
}

std::string CorpusSummary::fingerprint() const {
    Hash hash;
    for (const CorpusFile& file : files) {
        hash.add(file.relativePath);
        hash.add(std::to_string(file.size));
        hash.add(std::to_string(file.modified));
    }
    return hexadecimal(hash.value());
}

CorpusSummary Corpus::scan(const fs::path& directory) {
    return scan(directory, {}, {});
}

CorpusSummary Corpus::scan(const fs::path& directory, const ProgressCallback& progress,
                           const std::stop_token& stop) {
    std::error_code ignored;  // what cannot be looked at is no folder
    if (!fs::is_directory(directory, ignored)) {
        throw FileError(directory, std::make_error_code(std::errc::no_such_file_or_directory),
                        Message("{0} is not a folder", directory));
    }
    CorpusSummary summary;
    summary.directory = directory;
    Walk(directory, stop).run(summary);
    sortNaturally(summary.files);
    for (const auto& info : measureAll(summary.files, progress, stop)) {
        if (!info) {
            ++summary.unreadable;
            continue;
        }
        summary.durations.push_back(info->duration);
        ++summary.sampleRates[static_cast<int>(info->sampleRate)];
    }
    summary.totalSeconds = totalSeconds(summary.durations);
    return summary;
}

double Corpus::totalSeconds(std::span<const double> durations) {
    return std::accumulate(durations.begin(), durations.end(), 0.0);
}

void Corpus::sortNaturally(std::vector<CorpusFile>& files) {
    struct Keyed {
        std::string key;
        CorpusFile file;
    };
    const NaturalOrder order;
    std::vector<Keyed> keyed;
    keyed.reserve(files.size());
    for (CorpusFile& file : files) {
        std::string key = order.key(file.relativePath);
        keyed.push_back({std::move(key), std::move(file)});
    }
    // Names that the collation calls equal (kick2, kick02) stand in the order of their bytes, because the
    // order in which a folder yields them means nothing.
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
        return std::tie(a.key, a.file.relativePath) < std::tie(b.key, b.file.relativePath);
    });
    std::transform(keyed.begin(), keyed.end(), files.begin(), [](Keyed& k) { return std::move(k.file); });
}

bool Corpus::isSupported(const fs::path& file) {
    return AudioIO::supportedExtensions().contains(lowerExtension(file));
}

}  // namespace quillmere
