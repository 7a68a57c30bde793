#include <memory>
#include <optional>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/JournalPreference.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

// change: what the preference becomes; nothing where it stays.
void showJournal(std::optional<bool> change, Console& console) {
    if (change) JournalPreference::set(*change);
    const bool isOn = JournalPreference::isOn();
    const auto place = Journal::place();
    if (!place) throw Failure("There is no home directory to keep a journal in.");
    const std::uint64_t bytes = Journal(*place).bytes();
    console.print(isOn ? tr("The journal is on: it knows how each new file is made.")
                       : tr("The journal is off: nothing is added to it."));
    console.print("  " + shownPath(*place) + ", " + byteSize(bytes));
    JSON result = makeResult("journal");
    result["on"] = isOn;
    result["journal"] = toJSON(*place);
    result["bytes"] = bytes;
    console.emit(result);
}

}  // namespace

void addJournal(CLI::App& app, Invocation& invocation) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command =
        app.add_subcommand("journal", tr("Say where the journal of the files made here is, or switch it"));
    addJSON(*command, *json);
    command->require_subcommand(0, 1);
    CLI::App* const on = command->add_subcommand("on", tr("Note how each new file is made, from now on"));
    addJSON(*on, *json);
    CLI::App* const off =
        command->add_subcommand("off", tr("Note nothing any more; what was noted stays until it is deleted"));
    addJSON(*off, *json);

    // CLI11 calls the inner command's callback first.
    command->callback([json, on, off, &invocation] {
        invocation.json = *json;
        std::optional<bool> change;
        if (on->parsed() || off->parsed()) change = on->parsed();
        invocation.action = [change](Console& console, const CancelFlag&) { showJournal(change, console); };
    });
}

}  // namespace quillmere::cli
