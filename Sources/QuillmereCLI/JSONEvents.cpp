#include "QuillmereCLI/JSONEvents.h"

#include <ostream>

#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {

void writeEvent(std::ostream& out, const JSON& event) {
    constexpr int onOneLine = -1;
    // Flushed line by line: the reader acts on events as they come.
    out << event.dump(onOneLine, ' ', false, JSON::error_handler_t::replace) << '\n' << std::flush;
}

JSON makeEvent(std::string_view event) {
    JSON object = JSON::object();
    object["event"] = event;
    return object;
}

JSON makeResult(std::string_view command) {
    JSON object = makeEvent("result");
    object["command"] = command;
    return object;
}

JSON toJSON(const std::filesystem::path& path) {
    return Text::utf8(path);
}

JSON toJSON(const Aesthetics& aesthetics) {
    return JSON::parse(encodeJSON(aesthetics));
}

}  // namespace quillmere::cli
