#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Chunks of a WAV file that stand behind its sound, of kinds of our own. A program that does not know a kind
// passes over it. Stateless; any thread.
namespace quillmere::RIFFChunk {

// Appends a chunk to a whole WAV file in memory, padded to an even length; the bytes before stay as they are
// but for the length of the whole. id: four ASCII characters. False, with nothing done, when the file would
// pass 4 GiB, the end of what RIFF can count.
[[nodiscard]] bool append(std::vector<std::byte>& wav, std::string_view id, std::string_view content);

// Longer ones are none of ours.
inline constexpr std::size_t mostBytes = std::size_t{1} << 20;

// The content of the first chunk of that kind; nothing when there is none, or the file is no RIFF/WAVE file.
// Opens regular files only, and never waits. Throws AudioIOError (unreadable), also for a chunk that is cut
// off or longer than mostBytes.
[[nodiscard]] std::optional<std::string> find(const std::filesystem::path& file, std::string_view id);

}  // namespace quillmere::RIFFChunk
