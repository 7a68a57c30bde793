#pragma once

#include <cstddef>
#include <span>

// What reads bytes that others wrote, each with any bytes at all. A target returns whatever they are: what a
// user can cause is a Failure, which it takes for an answer. It ends the program where an answer contradicts
// itself. The fuzzer calls them (scripts/fuzz.sh), and in every build FuzzCorpusTest with the files in
// Corpus.
namespace quillmere::fuzz {

using Bytes = std::span<const std::byte>;

void audio(Bytes bytes);       // a sample in any container
void model(Bytes bytes);       // model.json, a zero byte, and how weights.bin begins
void parameters(Bytes bytes);  // a file of parameters, and one of a preset
void recipes(Bytes bytes);  // a recipe, a line of the journal, a document of recipes, a recipe in a WAV file
void names(Bytes bytes);    // names of files, one per line
void catalogues(Bytes bytes);  // a catalogue of texts in another language

}  // namespace quillmere::fuzz
