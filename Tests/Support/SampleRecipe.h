#pragma once

#include <string>
#include <utility>

#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere::testing {

// A recipe with something in every place. Its model does not exist.
inline Recipe sampleRecipe() {
    Recipe recipe;
    recipe.program = "0.1.0";
    recipe.device = "cpu";
    recipe.model = std::string(64, 'a');
    recipe.corpusName = "Kicks \"café\"";
    recipe.fingerprint = "3f2a9c0d11e4b7a5";
    recipe.seed = 18446744073709551615U;
    recipe.index = 7;
    recipe.aesthetics = Preset::named("Wild")->aesthetics;
    recipe.aesthetics.pitch = 0.1;  // no float has this value
    recipe.format = OutputFormat::wav16;
    recipe.latent = {0.1F, -0.0F, 1e-42F, 3.4e38F};
    recipe.state = {1, 2, 0xFFFFFFFFFFFFFFFF, 0x0123456789ABCDEF};
    recipe.sources = {{3, "a/one.wav", 0.7F}, {0, "two.wav", 0.3F}};
    return recipe;
}

// An entry of the journal whose digests are repetitions of one hexadecimal digit each.
inline JournalEntry sampleEntry(char bytes, char sound, std::string file = "/tmp/a.wav") {
    return {.digests = {std::string(64, bytes), std::string(64, sound)},
            .file = std::move(file),
            .written = "2026-01-02T03:04:05Z",
            .recipe = sampleRecipe()};
}

}  // namespace quillmere::testing
