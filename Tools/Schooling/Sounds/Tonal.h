#pragma once

#include "Schooling/Sounds/Percussive.h"

// Families of sounds that last and have a pitch. Each draws its own settings and gives count samples.
namespace quillmere::schooling {

[[nodiscard]] Samples plucked(Dice& dice, std::size_t count);
[[nodiscard]] Samples struck(Dice& dice, std::size_t count);
[[nodiscard]] Samples bell(Dice& dice, std::size_t count);
[[nodiscard]] Samples blown(Dice& dice, std::size_t count);
[[nodiscard]] Samples bowed(Dice& dice, std::size_t count);
[[nodiscard]] Samples organ(Dice& dice, std::size_t count);
[[nodiscard]] Samples electricKey(Dice& dice, std::size_t count);
[[nodiscard]] Samples pad(Dice& dice, std::size_t count);
[[nodiscard]] Samples bass(Dice& dice, std::size_t count);
[[nodiscard]] Samples voice(Dice& dice, std::size_t count);
[[nodiscard]] Samples sentence(Dice& dice, std::size_t count);
[[nodiscard]] Samples glide(Dice& dice, std::size_t count);
[[nodiscard]] Samples chord(Dice& dice, std::size_t count);
[[nodiscard]] Samples texture(Dice& dice, std::size_t count);

inline constexpr std::array<Family, 14> tonalFamilies{{{"plucked", plucked},
                                                       {"struck", struck},
                                                       {"bell", bell},
                                                       {"blown", blown},
                                                       {"bowed", bowed},
                                                       {"organ", organ},
                                                       {"electric key", electricKey},
                                                       {"pad", pad},
                                                       {"bass", bass},
                                                       {"voice", voice},
                                                       {"sentence", sentence},
                                                       {"glide", glide},
                                                       {"chord", chord},
                                                       {"texture", texture}}};

}  // namespace quillmere::schooling
