#pragma once

#include <array>
#include <string_view>

#include "Schooling/Sounds/Blocks.h"

// Families of short, struck or spoken sounds. Each draws its own settings and gives count samples.
namespace quillmere::schooling {

struct Family {
    std::string_view name;
    Samples (*make)(Dice& dice, std::size_t count);
};

[[nodiscard]] Samples kick(Dice& dice, std::size_t count);
[[nodiscard]] Samples snare(Dice& dice, std::size_t count);
[[nodiscard]] Samples hat(Dice& dice, std::size_t count);
[[nodiscard]] Samples clap(Dice& dice, std::size_t count);
[[nodiscard]] Samples rim(Dice& dice, std::size_t count);
[[nodiscard]] Samples shaker(Dice& dice, std::size_t count);
[[nodiscard]] Samples handDrum(Dice& dice, std::size_t count);
[[nodiscard]] Samples struckBar(Dice& dice, std::size_t count);
[[nodiscard]] Samples plate(Dice& dice, std::size_t count);
[[nodiscard]] Samples shortPluck(Dice& dice, std::size_t count);
[[nodiscard]] Samples shortKey(Dice& dice, std::size_t count);
[[nodiscard]] Samples modulated(Dice& dice, std::size_t count);
[[nodiscard]] Samples burst(Dice& dice, std::size_t count);
[[nodiscard]] Samples clicks(Dice& dice, std::size_t count);
[[nodiscard]] Samples zap(Dice& dice, std::size_t count);
[[nodiscard]] Samples word(Dice& dice, std::size_t count);

inline constexpr std::array<Family, 16> percussiveFamilies{{{"kick", kick},
                                                            {"snare", snare},
                                                            {"hat", hat},
                                                            {"clap", clap},
                                                            {"rim", rim},
                                                            {"shaker", shaker},
                                                            {"hand drum", handDrum},
                                                            {"struck bar", struckBar},
                                                            {"plate", plate},
                                                            {"short pluck", shortPluck},
                                                            {"short key", shortKey},
                                                            {"modulated", modulated},
                                                            {"burst", burst},
                                                            {"clicks", clicks},
                                                            {"zap", zap},
                                                            {"word", word}}};

}  // namespace quillmere::schooling
