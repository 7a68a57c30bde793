// Writes what the build makes of the command line's own tree of commands: manual pages and completions.
//
//   quillmere-reference FOLDER DATE
//
// FOLDER gets man/NAME.1 for each command, and a folder each for bash, zsh and fish; DATE is that of the
// manual.

#include <exception>
#include <filesystem>
#include <iostream>
#include <span>
#include <string>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Reference/CommandReference.h"
#include "QuillmereCLI/Reference/Completion.h"
#include "QuillmereCLI/Reference/ManualPage.h"
#include "QuillmereCore/Util/AtomicFile.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    writeFileAtomically(file, std::as_bytes(std::span(text)), Durability::disposable);
}

void writeReference(const fs::path& folder, const std::string& date) {
    Invocation invocation;
    const CommandReference root = referenceOf(*commandTree(invocation));
    const Edition edition{.version = QUILLMERE_VERSION, .date = date};
    // A command that is no more leaves no page.
    fs::remove_all(folder / "man");
    for (const CommandReference* command : allCommands(root))
        write(folder / "man" / (command->pageName() + ".1"), manualPage(*command, root, edition));
    write(folder / "bash" / "quillmere-cli", bashCompletion(root));
    write(folder / "zsh" / "_quillmere-cli", zshCompletion(root));
    write(folder / "fish" / "quillmere-cli.fish", fishCompletion(root));
}

}  // namespace
}  // namespace quillmere::cli

int main(int argc, char** argv) {
    const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
    if (arguments.size() != 3) {
        std::cerr << "usage: quillmere-reference FOLDER DATE\n";
        return 2;
    }
    try {
        quillmere::cli::writeReference(arguments[1], arguments[2]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "quillmere-reference: " << error.what() << "\n";
        return 1;
    }
}
