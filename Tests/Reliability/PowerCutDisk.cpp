#include "Reliability/PowerCutDisk.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "Support/TempFolder.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using Kind = FileCall::Kind;

bool changesFiles(const FileCall& call) {
    switch (call.kind) {
        case Kind::open:
            return (call.flags & (O_CREAT | O_TRUNC)) != 0;
        case Kind::write:
        case Kind::sync:
        case Kind::rename:
        case Kind::link:
        case Kind::makeFolder:
        case Kind::remove:
            return true;
        default:
            return false;
    }
}

// A log is a sequence of numbers and texts, each text behind its length.
void appendNumber(std::string& log, std::uint64_t number) {
    log.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void appendText(std::string& log, std::string_view text) {
    appendNumber(log, text.size());
    log += text;
}

class LogReader {
public:
    explicit LogReader(std::string_view log) : log_(log) {}

    [[nodiscard]] bool atEnd() const { return log_.empty(); }
    std::uint64_t number() {
        std::uint64_t number = 0;
        std::memcpy(&number, take(sizeof number).data(), sizeof number);
        return number;
    }
    std::string text() { return std::string(take(number())); }

private:
    std::string_view take(std::size_t count) {
        if (count > log_.size()) throw std::runtime_error("a log that has been cut short");
        const std::string_view taken = log_.substr(0, count);
        log_.remove_prefix(count);
        return taken;
    }

    std::string_view log_;
};

}  // namespace

// ---- The log

void FileLog::record(const fs::path& folder) const {
    const int descriptor = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) throw std::runtime_error("cannot write " + file_.string());
    FileCallWatch watch;
    watch.folder = folder;
    watch.after = [descriptor](const FileCall& call, std::size_t moved) {
        if (!changesFiles(call)) return;
        std::string entry;
        appendNumber(entry, static_cast<std::uint64_t>(call.kind));
        appendNumber(entry, static_cast<std::uint64_t>(call.flags));
        appendText(entry, call.path);
        appendText(entry, call.other);
        const auto* const bytes = reinterpret_cast<const char*>(call.bytes.data());
        appendText(entry, call.bytes.empty() ? std::string_view() : std::string_view(bytes, moved));
        if (::write(descriptor, entry.data(), entry.size()) != static_cast<ssize_t>(entry.size()))
            ::_exit(99);
    };
    watchFiles(std::move(watch));
}

std::vector<FileLog::Step> FileLog::steps() const {
    const std::string log = readText(file_);
    LogReader reader(log);
    std::vector<Step> steps;
    while (!reader.atEnd()) {
        Step& step = steps.emplace_back();
        step.kind = static_cast<Kind>(reader.number());
        step.flags = static_cast<int>(reader.number());
        step.path = reader.text();
        step.other = reader.text();
        step.bytes = reader.text();
    }
    return steps;
}

// ---- The disk

PowerCutDisk::PowerCutDisk(const fs::path& folder) : folder_(folder) {
    load(folder_);
}

std::size_t PowerCutDisk::add(bool isFolder) {
    nodes_.emplace_back().isFolder = isFolder;
    return nodes_.size() - 1;
}

std::size_t PowerCutDisk::load(const fs::path& place) {
    const std::size_t node = add(fs::is_directory(place));
    if (!nodes_[node].isFolder) {
        nodes_[node].content = readText(place);
        nodes_[node].forced = nodes_[node].content.size();
        return node;
    }
    std::map<std::string, std::size_t> names;
    for (const auto& entry : fs::directory_iterator(place))
        names[entry.path().filename().string()] = load(entry.path());
    nodes_[node].names = names;
    nodes_[node].forcedNames = std::move(names);
    return node;
}

std::size_t PowerCutDisk::nodeAt(const fs::path& path) const {
    std::size_t node = 0;
    const fs::path below = path.lexically_relative(folder_);
    if (below == ".") return node;
    for (const fs::path& name : below)
        node = nodes_[node].names.at(name.string());
    return node;
}

std::map<std::string, std::size_t>& PowerCutDisk::namesAround(const fs::path& path) {
    return nodes_[nodeAt(path.parent_path())].names;
}

bool PowerCutDisk::isThere(const fs::path& path) const {
    return nodes_[nodeAt(path.parent_path())].names.contains(path.filename().string());
}

void PowerCutDisk::move(const FileLog::Step& step) {
    const std::string from = fs::path(step.path).filename().string();
    const std::string to = fs::path(step.other).filename().string();
    if ((static_cast<unsigned>(step.flags) & RENAME_EXCHANGE) != 0) {
        std::swap(namesAround(step.path).at(from), namesAround(step.other).at(to));
        return;
    }
    const std::size_t moved = namesAround(step.path).at(from);
    namesAround(step.path).erase(from);
    namesAround(step.other)[to] = moved;
}

void PowerCutDisk::apply(const FileLog::Step& step) {
    const fs::path path = step.path;
    const std::string name = path.filename().string();
    switch (step.kind) {
        case Kind::open:
            if (!isThere(path)) {
                const std::size_t node = add(false);
                namesAround(path)[name] = node;
            } else if ((step.flags & O_TRUNC) != 0) {
                nodes_[nodeAt(path)].content.clear();
                nodes_[nodeAt(path)].forced = 0;
            }
            break;
        case Kind::makeFolder: {
            const std::size_t node = add(true);
            namesAround(path)[name] = node;
            break;
        }
        case Kind::write:
            nodes_[nodeAt(path)].content += step.bytes;
            break;
        case Kind::sync: {
            Node& node = nodes_[nodeAt(path)];
            node.forced = node.content.size();
            node.forcedNames = node.names;
            break;
        }
        case Kind::rename:
            move(step);
            break;
        case Kind::link:
            namesAround(step.other)[fs::path(step.other).filename().string()] = nodeAt(path);
            break;
        case Kind::remove:
            namesAround(path).erase(name);
            break;
        default:
            throw std::runtime_error("a step that changes nothing");
    }
}

template <typename NamesOf>
void PowerCutDisk::collect(std::size_t index, const std::string& path, Unforced unforced,
                           const NamesOf& namesOf, std::map<std::string, std::string>& found) const {
    const Node& node = nodes_[index];
    if (!node.isFolder) {
        const std::size_t rest = node.content.size() - node.forced;
        const std::size_t kept = unforced == Unforced::all ? rest : unforced == Unforced::half ? rest / 2 : 0;
        found[path] = node.content.substr(0, node.forced + kept);
        return;
    }
    if (!path.empty()) found[path + "/"];
    for (const auto& [name, child] : namesOf(index))
        collect(child, path.empty() ? name : path + "/" + name, unforced, namesOf, found);
}

std::map<std::string, std::string> PowerCutDisk::left(Unforced unforced) const {
    std::map<std::string, std::string> found;
    collect(
        0, {}, unforced, [&](std::size_t node) { return nodes_[node].names; }, found);
    return found;
}

std::size_t PowerCutDisk::unforcedFolders() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        nodes_, [](const Node& node) { return node.isFolder && node.names != node.forcedNames; }));
}

std::map<std::string, std::string> PowerCutDisk::leftInAnyOrder(unsigned choice) const {
    std::vector<bool> isWritten(nodes_.size());
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
        if (!nodes_[node].isFolder || nodes_[node].names == nodes_[node].forcedNames) continue;
        isWritten[node] = (choice & 1U) != 0;
        choice >>= 1U;
    }
    const auto namesOf = [&](std::size_t node) {
        return isWritten[node] ? nodes_[node].names : nodes_[node].forcedNames;
    };
    std::map<std::string, std::string> found;
    collect(0, {}, Unforced::none, namesOf, found);
    return found;
}

void writeFiles(const fs::path& folder, const std::map<std::string, std::string>& files) {
    for (const auto& entry : fs::directory_iterator(folder))
        fs::remove_all(entry.path());
    for (const auto& [name, content] : files) {
        if (name.ends_with('/')) {
            fs::create_directories(folder / name);
        } else {
            writeText(folder / name, content);
        }
    }
}

}  // namespace quillmere::testing
