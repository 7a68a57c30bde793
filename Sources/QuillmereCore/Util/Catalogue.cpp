#include "QuillmereCore/Util/Catalogue.h"

#include <utility>

#include "QuillmereCore/Util/Text.h"
#include "QuillmereCore/Util/Unicode.h"

namespace quillmere {
namespace {

constexpr std::uint32_t magic = 0x950412DE;
constexpr std::size_t numberSize = 4;
constexpr std::size_t recordSize = 2 * numberSize;  // a text's length and place

// The bytes of a file, which promise nothing.
class Bytes {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    // In the file's own order, which its first number tells.
    [[nodiscard]] bool findOrder() {
        if (number(0) == magic) return true;
        isBig_ = true;
        return number(0) == magic;
    }

    [[nodiscard]] std::optional<std::uint32_t> number(std::size_t at) const {
        if (bytes_.size() < numberSize || at > bytes_.size() - numberSize) return std::nullopt;
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < numberSize; ++i) {
            const std::size_t byte = isBig_ ? i : numberSize - 1 - i;
            number = number << 8U | static_cast<unsigned char>(bytes_[at + byte]);
        }
        return number;
    }

    // The text whose record is at a place, which a zero byte follows.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t record) const {
        const auto length = number(record);
        const auto at = number(record + numberSize);
        if (!length || !at || *at >= bytes_.size() || *length >= bytes_.size() - *at) return std::nullopt;
        if (bytes_[std::size_t{*at} + *length] != '\0') return std::nullopt;
        return bytes_.substr(*at, *length);
    }

    [[nodiscard]] std::size_t size() const { return bytes_.size(); }

private:
    std::string_view bytes_;
    bool isBig_ = false;
};

// UTF-8 without characters that a terminal would obey; zero bytes separate forms.
bool isPlain(std::string_view text) {
    constexpr std::int32_t firstPrinted = 0x20;
    constexpr std::int32_t deletion = 0x7F;
    constexpr std::int32_t lastControl = 0x9F;
    for (std::size_t next = 0; next < text.size();) {
        const std::int32_t character = takeCharacter(text, next);
        const bool isControl =
            (character < firstPrinted && character != '\n' && character != '\t' && character != '\0') ||
            (character >= deletion && character <= lastControl);
        if (isControl) return false;
    }
    return true;
}

// A field of the header, "Name: value" on a line of its own; nothing where there is none.
std::optional<std::string_view> fieldOf(std::string_view header, std::string_view name) {
    while (!header.empty()) {
        const std::size_t end = std::min(header.find('\n'), header.size());
        std::string_view line = header.substr(0, end);
        header.remove_prefix(std::min(end + 1, header.size()));
        if (!line.starts_with(name)) continue;
        line.remove_prefix(name.size());
        if (line.starts_with(": ")) return line.substr(2);
    }
    return std::nullopt;
}

}  // namespace

std::optional<Catalogue> Catalogue::read(std::string_view content) {
    // The places of the numbers that a file begins with.
    constexpr std::size_t revisionAt = 4;
    constexpr std::size_t countAt = 8;
    constexpr std::size_t sourcesAt = 12;
    constexpr std::size_t textsAt = 16;
    constexpr std::uint32_t lastRevision = 0x1FFFF;  // major 0 or 1

    Bytes bytes(content);
    if (!bytes.findOrder()) return std::nullopt;
    const auto revision = bytes.number(revisionAt);
    const auto count = bytes.number(countAt);
    const auto sources = bytes.number(sourcesAt);
    const auto texts = bytes.number(textsAt);
    if (!texts || *revision > lastRevision || *count > bytes.size() / recordSize) return std::nullopt;

    Catalogue catalogue;
    std::size_t left =
        bytes.size();  // texts do not lie upon each other, or a small file would fill the memory
    for (std::size_t i = 0; i < *count; ++i) {
        const auto source = bytes.text(*sources + i * recordSize);
        const auto text = bytes.text(*texts + i * recordSize);
        if (!source || !text || source->size() + text->size() > left) return std::nullopt;
        left -= source->size() + text->size();
        if (!catalogue.add(*source, *text)) return std::nullopt;
    }
    if (!catalogue.readHeader()) return std::nullopt;
    return catalogue;
}

bool Catalogue::add(std::string_view source, std::string_view text) {
    if (!isPlain(source) || !isPlain(text)) return false;
    std::vector<std::string> forms;
    for (std::size_t end = text.find('\0'); end != std::string_view::npos; end = text.find('\0')) {
        forms.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    forms.emplace_back(text);
    // The plural stands behind the singular; the singular alone tells texts apart.
    return texts_.emplace(source.substr(0, source.find('\0')), std::move(forms)).second;
}

bool Catalogue::readHeader() {
    const auto header = texts_.find(std::string_view());  // what the empty text is in the language
    if (header == texts_.end()) return false;
    const std::string& fields = header->second.front();
    const auto type = fieldOf(fields, "Content-Type");
    if (!type || !Text::lowercase(*type).ends_with("charset=utf-8")) return false;
    if (const auto rule = fieldOf(fields, "Plural-Forms")) {
        const std::optional<PluralRule> plurals = PluralRule::parse(*rule);
        if (!plurals) return false;
        plurals_ = *plurals;
    }
    texts_.erase(header);
    return true;
}

const char* Catalogue::find(std::string_view singular, std::uint64_t count) const {
    const auto found = texts_.find(singular);
    if (found == texts_.end()) return nullptr;
    const std::vector<std::string>& forms = found->second;
    const std::size_t form = forms.size() > 1 ? plurals_.form(count) : 0;
    const std::string& text = forms[form < forms.size() ? form : 0];
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace quillmere
