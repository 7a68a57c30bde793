#pragma once

#include <cstdint>
#include <span>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/LatentMap.h"
#include "QuillmereCore/Origin/Recipe.h"

// New variations out of known ones. What is drawn depends on the seed and the index alone, as in a request.
// Recipes are of the generator's model and have its size of latent vectors; another one is a programming
// error. Any thread.
namespace quillmere::Likeness {

// A place around those of the liked ones: their latent vectors are blended by weights drawn as those of the
// corpus clips are, and the blend walks along the corpus's own directions of variation as with a drift of
// 1 - closeness. With 1 a single liked one keeps its place. closeness: 0 to 1. liked: at least one. The
// sources are those of the liked ones, their shares multiplied: the eight greatest.
[[nodiscard]] SampleOrigin around(const SampleGenerator& generator, std::span<const Recipe> liked,
                                  double closeness, std::uint64_t seed, std::int64_t index);

// A place on the map of the generator's model: its blend of clips (LatentMap::blendAt), and from there a walk
// as above. With a closeness of 1 every variation is at the place itself.
[[nodiscard]] SampleOrigin atPlace(const SampleGenerator& generator, const LatentMap& map, MapPlace place,
                                   double closeness, std::uint64_t seed, std::int64_t index);

// The place of the recipe; everything that is drawn after it is new.
[[nodiscard]] SampleOrigin sameBody(const Recipe& recipe, std::uint64_t seed, std::int64_t index);

// A new place, drawn with these parameters; everything that is drawn after it is the recipe's.
[[nodiscard]] SampleOrigin sameSkin(const SampleGenerator& generator, const Recipe& recipe,
                                    const Aesthetics& aesthetics, std::uint64_t seed, std::int64_t index);

}  // namespace quillmere::Likeness
