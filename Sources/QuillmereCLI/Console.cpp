#include "QuillmereCLI/Console.h"

#include <ostream>

#include "QuillmereCLI/Wording.h"

namespace quillmere::cli {

void Console::print(std::string_view line) {
    if (!json_) streams_.out << line << '\n';
}

void Console::emit(const JSON& event) {
    if (json_) writeEvent(streams_.out, event);
}

void Console::note(std::string_view line) {
    streams_.err << line << '\n' << std::flush;
}

void Console::fail(const Message& message) {
    if (json_) {
        JSON event = makeEvent("error");
        event["message"] = message.english();
        emit(event);
    }
    // Before the failure, so that a log with both streams keeps their order.
    streams_.out << std::flush;
    note("quillmere-cli: " + printable(Language::text(message)));
}

bool Console::flush() {
    streams_.out << std::flush;
    return streams_.out.good();
}

void Console::redraw(std::string_view text) {
    streams_.err << "\r\x1b[K" << text << std::flush;
}

}  // namespace quillmere::cli
