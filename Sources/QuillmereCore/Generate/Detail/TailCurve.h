#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

// How a decoded sound dies away. A decoder that is not sure when a sound ends draws a quiet hiss; how quiet
// the learned clips really are where their decoded images have a certain level tells by how much to lower it.
namespace quillmere::Detail {

// From the level of a decoded frame to the true one. Levels are those of a frame's loudest band, in network
// units. Immutable; any thread.
class TailCurve {
public:
    static constexpr std::size_t cells = 32;
    static constexpr float lowest = -1.2F;
    static constexpr float highest = 0.0F;

    struct Levels {
        float decoded = 0;
        float real = 0;
    };
    // From frames of the learned clips, in any order. Each cell of the decoded level gets the median of the
    // real one (the mean of the middle two of an even number), never above the decoded level. With fewer than
    // eight frames it is silence below -0.9 and the decoded level above, and from -0.3 up always the latter.
    // The curve never falls.
    explicit TailCurve(std::span<const Levels> frames);
    // The real level at the middle of each cell, as that of another curve.
    explicit TailCurve(const std::array<float, cells>& values) : values_(values) {}

    [[nodiscard]] const std::array<float, cells>& values() const { return values_; }
    // The decoded level that a cell stands for.
    [[nodiscard]] static float middle(std::size_t cell);

    // What to add to all bands of a frame: 0 or less. Linear between the cells.
    [[nodiscard]] float change(float decoded) const;
    // Adds amount (0 ... 1) times the change of each frame. image: [bands][frames].
    void apply(std::span<float> image, std::size_t frames, float amount) const;

private:
    std::array<float, cells> values_{};
};

// The loudest band of each frame of an image [bands][frames].
[[nodiscard]] std::vector<float> framePeaks(std::span<const float> image, std::size_t frames);

}  // namespace quillmere::Detail
