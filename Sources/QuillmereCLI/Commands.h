#pragma once

#include <functional>
#include <memory>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"

namespace quillmere::cli {

// What the command line asked for, filled in while it is parsed.
struct Invocation {
    bool json = false;
    // Throws Failure or CancellationError.
    std::function<void(Console&, const CancelFlag&)> action;
};

// Each adds one command to app. invocation must outlive the parsing.
void addScan(CLI::App& app, Invocation& invocation);
void addTrain(CLI::App& app, Invocation& invocation);
void addGenerate(CLI::App& app, Invocation& invocation);
void addAudition(CLI::App& app, Invocation& invocation);
void addPresets(CLI::App& app, Invocation& invocation);
void addParameters(CLI::App& app, Invocation& invocation);
void addDevices(CLI::App& app, Invocation& invocation);
void addJournal(CLI::App& app, Invocation& invocation);
void addRecipe(CLI::App& app, Invocation& invocation);
void addVerify(CLI::App& app, Invocation& invocation);
void addRelatives(CLI::App& app, Invocation& invocation);
void addKit(CLI::App& app, Invocation& invocation);
void addSweep(CLI::App& app, Invocation& invocation);
void addReport(CLI::App& app, Invocation& invocation);
void addMap(CLI::App& app, Invocation& invocation);
void addModels(CLI::App& app, Invocation& invocation);

// All of them with their options and help. invocation must outlive the tree.
[[nodiscard]] std::unique_ptr<CLI::App> commandTree(Invocation& invocation);

}  // namespace quillmere::cli
