#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The rise of a sound. A decoded image blurs the first frames in time, so that a drum reaches half its height
// some milliseconds late; here these frames get the course of the levels that the sources of the blend have.
//
// Images are band-major [bands][frames] in network units. Pure functions; any thread.
namespace quillmere::Detail {

// The first frames of an image.
struct AttackFrames {
    std::size_t rise = 0;  // they get the sources' course
    std::size_t fade = 0;  // here it passes into the decoded one

    [[nodiscard]] std::size_t count() const { return rise + fade; }
    // 35 ms at 44.1 kHz each, but at least 2 and at most 6 frames: 6 with a hop of 256, 2 with 1024.
    [[nodiscard]] static AttackFrames forHop(std::int64_t hop);
};

// Adds a source to the course of the levels: share times how far each level lies below the loudest of its
// band's rising frames. image: of the source, [bands][columns] of at least attack.count() columns.
// course: [bands][attack.count()], 0 before the first source.
void addCourse(std::span<const float> image, std::size_t columns, const AttackFrames& attack, float share,
               std::span<float> course);

// Gives image [bands][frames] that course: the loudest of each band's rising frames stays. amount: 0 ... 1.
// Frames that the image does not have are left out.
void applyAttack(std::span<float> image, std::size_t frames, const AttackFrames& attack,
                 std::span<const float> course, float amount);

}  // namespace quillmere::Detail
