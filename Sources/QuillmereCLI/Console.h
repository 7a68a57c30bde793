#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string_view>

#include "QuillmereCLI/JSONEvents.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere::cli {

// Where a command writes. Results go to out: lines for people, or with --json one JSON object per line and
// nothing else. Notes, failures and progress for people go to err.
// Threads: one at a time.
class Console {
public:
    struct Streams {
        std::ostream& out;
        std::ostream& err;
        // Columns of the terminal behind err; nothing when err is no terminal.
        std::function<std::optional<std::size_t>()> terminalWidth;
    };

    explicit Console(Streams streams) : streams_(std::move(streams)) {}

    void useJSON() { json_ = true; }
    [[nodiscard]] bool json() const { return json_; }

    // A line of the result for people; nothing with --json.
    void print(std::string_view line);
    // An event; nothing without --json.
    void emit(const JSON& event);
    // A line on err that is no failure.
    void note(std::string_view line);
    // "quillmere-cli: " and the message on err, and an error event with --json, which is in English.
    void fail(const Message& message);

    // Flushes out. False if it did not take everything, as on a full disk or a closed pipe.
    [[nodiscard]] bool flush();

    [[nodiscard]] std::optional<std::size_t> terminalWidth() const { return streams_.terminalWidth(); }
    // Shows text as the terminal's last line, in place of the one shown before; empty text clears it.
    void redraw(std::string_view text);

private:
    Streams streams_;
    bool json_ = false;
};

}  // namespace quillmere::cli
