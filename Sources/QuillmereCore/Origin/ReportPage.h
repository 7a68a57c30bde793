#pragma once

#include <span>
#include <string>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Origin/ReportCard.h"

namespace quillmere {

// The report as one page that needs nothing else: words, a table of all clips, and for each of the examples
// waveform, mel image and a player, original and learned side by side. HTML that is XML, too; in UTF-8.
// config: of the model. Throws AudioIOError when memory is short.
[[nodiscard]] std::string reportPage(const ReportCard& card, std::span<const ReportExample> examples,
                                     const ModelConfig& config);

}  // namespace quillmere
