#include "QuillmereCLI/Reference/ManualPage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

// The character that begins at text[at], which must be UTF-8; at moves behind it.
std::uint32_t nextCharacter(const std::string& text, std::size_t& at) {
    const auto byte = static_cast<unsigned char>(text[at++]);
    const int following = byte < 0x80 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    constexpr std::array<unsigned, 4> masks{0x7F, 0x1F, 0x0F, 0x07};
    std::uint32_t character = byte & masks[static_cast<std::size_t>(following)];
    for (int i = 0; i < following && at < text.size(); ++i)
        character = character << 6U | (static_cast<unsigned char>(text[at++]) & 0x3FU);
    return character;
}

std::string namedCharacter(std::uint32_t character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string hexadecimal;
    for (; character > 0 || hexadecimal.size() < 4; character >>= 4U)
        hexadecimal.insert(hexadecimal.begin(), digits[character & 0xFU]);
    return "\\[u" + hexadecimal + "]";
}

std::string bold(const std::string& text) {
    return "\\fB" + roffText(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + roffText(text) + "\\fR";
}

std::string joined(const std::vector<std::string>& words, std::string_view between) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : std::string(between)) + word;
    return text;
}

std::string capitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

// "Look at a folder" as it stands in the middle of a sentence.
std::string uncapitalised(std::string text) {
    if (!text.empty()) text.front() = Text::lowercase(text.substr(0, 1)).front();
    return text;
}

// text, broken at blanks into lines that people can read.
std::string wrapped(const std::string& text) {
    constexpr std::size_t width = 80;
    std::string result;
    std::size_t column = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        std::string word = text.substr(at, end - at);
        at = end + 1;
        if (column > 0 && column + 1 + word.size() >= width) {
            result += '\n';
            column = 0;
            if (word.starts_with('.')) word.insert(0, "\\&");
        }
        if (column > 0) result += ' ';
        column += word.size() + (column > 0 ? 1 : 0);
        result += word;
    }
    return result;
}

class Page {
public:
    void heading(const std::string& text) { line(".SH " + text); }
    void text(const std::string& text) { line(wrapped(text)); }
    void item(const std::string& tag, const std::string& text) {
        line(".TP\n" + tag);
        this->text(text);
    }
    // A request, or what must stay on one line.
    void line(const std::string& text) { text_ += text + "\n"; }
    [[nodiscard]] const std::string& roff() const { return text_; }

private:
    std::string text_;
};

std::string argumentText(const OptionReference& argument) {
    const std::string text = italic(argument.names.back()) + (argument.takesMany ? " \\|.\\|.\\|." : "");
    return argument.isRequired ? text : "[" + text + "]";
}

std::string synopsis(const CommandReference& command) {
    std::string text = bold(joined(command.words, " ")) + " [" + italic("options") + "]";
    for (const OptionReference& argument : command.arguments)
        text += " " + argumentText(argument);
    return text;
}

std::string optionTag(const OptionReference& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.names)
        names.push_back(bold(name));
    return joined(names, ", ") + (option.value.empty() ? "" : " " + italic(option.value));
}

// The help without a full stop is one sentence.
std::string sentence(const std::string& help) {
    return roffText(help) + ".";
}

void writeArguments(const CommandReference& command, Page& page) {
    if (command.arguments.empty()) return;
    page.heading("ARGUMENTS");
    for (const OptionReference& argument : command.arguments)
        page.item(italic(argument.names.back()), sentence(argument.help));
}

void writeOptions(const CommandReference& command, Page& page) {
    page.heading("OPTIONS");
    for (const OptionReference& option : command.options)
        page.item(optionTag(option), sentence(option.help));
}

void writeCommands(const CommandReference& command, Page& page) {
    if (command.commands.empty()) return;
    page.heading("COMMANDS");
    for (const CommandReference& below : command.commands)
        page.item(bold(below.name()), sentence(below.description));
}

bool hasOption(const CommandReference& command, std::string_view name) {
    return std::any_of(command.options.begin(), command.options.end(),
                       [&](const OptionReference& option) { return option.names.back() == name; });
}

void writePresets(const CommandReference& command, Page& page) {
    if (!hasOption(command, "--preset")) return;
    page.heading("PRESETS");
    for (const Preset& preset : Preset::all())
        page.item(bold(std::string(preset.name)), roffText(std::string(preset.blurb)));
}

void writeParameters(const CommandReference& command, Page& page) {
    if (!hasOption(command, "--set")) return;
    page.heading("PARAMETERS");
    page.text("What " + bold("--set") + " changes, with the range and the default of each.");
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        page.item(bold(std::string(spec.id)),
                  roffText(spec.format(spec.lower) + " to " + spec.format(spec.upper) + ", default " +
                           spec.format(spec.value(Aesthetics())) + "."));
        page.text(roffText(std::string(spec.help)));
    }
}

void writeFiles(Page& page) {
    page.heading("FILES");
    page.item(italic("~/.local/share/Quillmere/Models"), "Stored models, one folder for each corpus.");
    page.item(italic("~/.local/share/Quillmere/journal.jsonl"),
              "How the files that were generated were made.");
    page.item(italic("~/.config/Quillmere/no-journal"), "While it is there, no journal is kept.");
    page.item(italic("~/.cache/quillmere"), "Compiled programs for graphics processors.");
    page.heading("ENVIRONMENT");
    page.item(bold("XDG_DATA_HOME"), "Stands for " + italic("~/.local/share") + " where it is set.");
    page.item(bold("XDG_CONFIG_HOME"), "Stands for " + italic("~/.config") + " where it is set.");
    page.item(bold("XDG_CACHE_HOME"), "Stands for " + italic("~/.cache") + " where it is set.");
    page.item(
        bold("LC_ALL") + ", " + bold("LC_MESSAGES") + ", " + bold("LANG") + ", " + bold("LANGUAGE"),
        "The language: English, German, Spanish, French or Japanese. Numbers and JSON are the same in all.");
}

void writeExitStatus(Page& page) {
    page.heading("EXIT STATUS");
    page.item("0", "Done.");
    page.item("1", "Failed; the reason is on standard error.");
    page.item("2", "The command line itself is wrong.");
    page.item("130, 143", "Cancelled by SIGINT (Ctrl-C) or SIGTERM; no half file is left.");
}

std::string crossReference(const std::string& page) {
    return bold(page) + "(1)";
}

// The page above, the pages below, and of a command the pages beside it.
void writeSeeAlso(const CommandReference& command, const CommandReference& root, Page& page) {
    std::vector<std::string> references;
    for (const CommandReference* other : allCommands(root)) {
        if (other != &command) references.push_back(crossReference(other->pageName()));
    }
    references.push_back(crossReference("quillmere"));
    std::sort(references.begin(), references.end());
    page.heading("SEE ALSO");
    page.line(joined(references, ",\n"));
}

}  // namespace

std::string roffText(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::uint32_t character = nextCharacter(text, at);
        if (character >= 0x80) {
            result += namedCharacter(character);
        } else if (character == '\\') {
            result += "\\e";
        } else if (character == '-') {
            result += "\\-";
        } else if (character == '\'') {
            result += "\\(aq";
        } else if (character == '.' && result.empty()) {
            result += "\\&.";
        } else {
            result += static_cast<char>(character);
        }
    }
    return result;
}

std::string manualPage(const CommandReference& command, const CommandReference& root,
                       const Edition& edition) {
    Page page;
    page.line(".TH " + roffText(capitals(command.pageName())) + " 1 " + edition.date + " \"Quillmere " +
              edition.version + "\" \"Quillmere\"");
    page.heading("NAME");
    page.line(roffText(command.pageName()) + " \\- " + roffText(uncapitalised(command.description)));
    page.heading("SYNOPSIS");
    page.text(synopsis(command));
    if (!command.commands.empty()) {
        page.line(".br");
        page.text(bold(joined(command.words, " ")) + " " + italic("command") + " [" + italic("options") +
                  "] [" + italic("arguments") + "]");
    }
    page.heading("DESCRIPTION");
    page.text(sentence(command.description));
    writeCommands(command, page);
    writeArguments(command, page);
    writeOptions(command, page);
    writePresets(command, page);
    writeParameters(command, page);
    if (&command == &root) writeFiles(page);
    writeExitStatus(page);
    writeSeeAlso(command, root, page);
    return page.roff();
}

}  // namespace quillmere::cli
