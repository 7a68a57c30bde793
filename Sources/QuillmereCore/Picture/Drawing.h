#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quillmere {

struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;

    friend bool operator==(const Colour&, const Colour&) = default;
};

// A raster, row by row from the top.
struct Pixels {
    std::size_t width = 0, height = 0;
    std::vector<Colour> colours;  // [height][width]

    friend bool operator==(const Pixels&, const Pixels&) = default;
};

// What a picture shows, for any kind of file (PictureFile.h). Units are pixels at the usual scale; x grows to
// the right, y downwards. Later shapes cover earlier ones. The background is white.
class Drawing {
public:
    struct Point {
        double x = 0, y = 0;

        friend bool operator==(const Point&, const Point&) = default;
    };
    struct Box {
        double x = 0, y = 0, width = 0, height = 0;

        [[nodiscard]] bool overlaps(const Box& other) const {
            return x < other.x + other.width && other.x < x + width && y < other.y + other.height &&
                   other.y < y + height;
        }
        friend bool operator==(const Box&, const Box&) = default;
    };
    // Filled.
    struct Area {
        std::vector<Point> corners;
        Colour colour;
    };
    struct Line {
        std::vector<Point> points;
        Colour colour;
        double width = 1;
    };
    struct Dot {
        Point centre;
        double radius = 1;
        Colour colour;
        std::string title;  // what a viewer may show of it; empty: nothing
    };
    enum class Anchor { start, middle, end };
    struct Text {
        Point place;       // on the baseline, where the anchor says
        std::string text;  // UTF-8
        double size = 12;
        Colour colour;
        Anchor anchor = Anchor::start;
    };
    // Its pixels keep their edges when they are enlarged.
    struct Image {
        Box box;
        Pixels pixels;  // at least one
    };
    using Shape = std::variant<Area, Line, Dot, Text, Image>;

    Drawing(double width, double height) : width_(width), height_(height) {}

    template <typename One>
    void add(One shape) {
        shapes_.emplace_back(std::move(shape));
    }
    void addBox(const Box& box, Colour colour);
    // Everything of another drawing, moved there.
    void addDrawing(const Drawing& other, Point at);

    [[nodiscard]] double width() const { return width_; }
    [[nodiscard]] double height() const { return height_; }
    [[nodiscard]] std::span<const Shape> shapes() const { return shapes_; }

private:
    double width_, height_;
    std::vector<Shape> shapes_;
};

// About how wide a text will be: fonts differ.
[[nodiscard]] double textWidth(const std::string& text, double size);
// The text, shortened in its middle with an ellipsis to about that width.
[[nodiscard]] std::string fitted(const std::string& text, double size, double width);

// The colours that the pictures share.
namespace Palette {
inline constexpr Colour white{255, 255, 255};
inline constexpr Colour ink{34, 38, 46};
inline constexpr Colour faint{120, 126, 138};
inline constexpr Colour grid{224, 227, 232};
inline constexpr Colour accent{32, 110, 160};
// From dark to bright, in steps that look alike; position from 0 to 1, beyond it the nearest end.
[[nodiscard]] Colour ramp(double position);
}  // namespace Palette

}  // namespace quillmere
