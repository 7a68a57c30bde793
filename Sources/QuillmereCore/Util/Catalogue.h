#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/PluralRule.h"

namespace quillmere {

// Texts in one language, by their English: a catalogue as GNU gettext's msgfmt writes it (.mo), read by us,
// because the C library's own reader asks the locales that a system has. Little-endian or big-endian, UTF-8.
//
// Threads: a catalogue does not change.
class Catalogue {
public:
    // Of a file's bytes, whoever wrote them: nothing for what is no such file, is damaged, or holds
    // characters that steer a terminal. The hash table is not needed, nor the order of the texts.
    [[nodiscard]] static std::optional<Catalogue> read(std::string_view bytes);

    // The text for singular, in the form that goes with count; null where the catalogue has none. The pointer
    // lives as long as the catalogue.
    [[nodiscard]] const char* find(std::string_view singular, std::uint64_t count) const;

    [[nodiscard]] std::size_t size() const noexcept { return texts_.size(); }

private:
    [[nodiscard]] bool add(std::string_view source, std::string_view text);
    [[nodiscard]] bool readHeader();

    std::map<std::string, std::vector<std::string>, std::less<>> texts_;  // the forms, at least one
    PluralRule plurals_;
};

}  // namespace quillmere
