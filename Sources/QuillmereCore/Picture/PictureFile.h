#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Picture/Drawing.h"
#include "QuillmereCore/Util/Message.h"

// Drawings as files. The same drawing gives the same SVG on every machine; the texts of a PNG are in a font
// of the machine's. Stateless; any thread.
namespace quillmere::PictureFile {

// A document in UTF-8 with its texts as text. Characters that XML knows none of, and bytes that are no UTF-8,
// become replacement characters.
[[nodiscard]] std::string svg(const Drawing& drawing);
// The same as an element for a page: without the line that begins a document.
[[nodiscard]] std::string svgElement(const Drawing& drawing);

// With so many pixels per unit, more than 0. Throws Failure for a picture that is too large for any program.
[[nodiscard]] std::vector<std::byte> png(const Drawing& drawing, double scale = 2);
[[nodiscard]] std::vector<std::byte> png(const Pixels& pixels);
// "data:image/png;base64,..."
[[nodiscard]] std::string dataAddress(std::span<const std::byte> content, const std::string& mediaType);

// Why a file of this name can be no picture, a sentence; nothing if its name ends in .png or .svg, in any
// case.
[[nodiscard]] std::optional<Message> problemWithName(const std::filesystem::path& file);
// Replaces the file or creates it, as its name says; a large drawing gets fewer pixels per unit. Throws
// Failure for a name with a problem, and FileError.
void write(const Drawing& drawing, const std::filesystem::path& file);

// Text as the content of an XML or HTML element, or of an attribute in double quotes.
[[nodiscard]] std::string escaped(std::string_view text);

}  // namespace quillmere::PictureFile
