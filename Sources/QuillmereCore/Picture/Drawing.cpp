#include "QuillmereCore/Picture/Drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quillmere {
namespace {

using Point = Drawing::Point;

Point moved(Point point, Point by) {
    return {point.x + by.x, point.y + by.y};
}

void move(std::vector<Point>& points, Point by) {
    for (Point& point : points)
        point = moved(point, by);
}

void move(Drawing::Area& area, Point by) {
    move(area.corners, by);
}

void move(Drawing::Line& line, Point by) {
    move(line.points, by);
}

void move(Drawing::Dot& dot, Point by) {
    dot.centre = moved(dot.centre, by);
}

void move(Drawing::Text& text, Point by) {
    text.place = moved(text.place, by);
}

void move(Drawing::Image& image, Point by) {
    image.box.x += by.x;
    image.box.y += by.y;
}

// Where each character of UTF-8 text begins, and the end.
std::vector<std::size_t> characterStarts(const std::string& text) {
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool continues = (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U;
        if (!continues) starts.push_back(i);
    }
    starts.push_back(text.size());
    return starts;
}

constexpr double meanWidth = 0.54;  // of a character, in sizes

}  // namespace

void Drawing::addBox(const Box& box, Colour colour) {
    const double right = box.x + box.width;
    const double bottom = box.y + box.height;
    add(Area{{{box.x, box.y}, {right, box.y}, {right, bottom}, {box.x, bottom}}, colour});
}

void Drawing::addDrawing(const Drawing& other, Point at) {
    for (const Shape& shape : other.shapes_) {
        const auto addMoved = [&](auto one) {
            move(one, at);
            add(std::move(one));
        };
        std::visit(addMoved, shape);
    }
}

double textWidth(const std::string& text, double size) {
    return meanWidth * size * static_cast<double>(characterStarts(text).size() - 1);
}

std::string fitted(const std::string& text, double size, double width) {
    if (textWidth(text, size) <= width) return text;
    const std::vector<std::size_t> starts = characterStarts(text);
    const std::size_t count = starts.size() - 1;
    const auto room = static_cast<std::size_t>(std::max(width / (meanWidth * size), 3.0));
    const std::size_t kept = std::min(room - 1, count);  // one place is the ellipsis's
    const std::size_t atEnd = kept / 2;
    return text.substr(0, starts[kept - atEnd]) + "…" + text.substr(starts[count - atEnd]);
}

Colour Palette::ramp(double position) {
    static constexpr std::array<std::array<double, 3>, 6> anchors{
        {{13, 16, 40}, {52, 30, 104}, {134, 42, 120}, {212, 70, 92}, {250, 148, 72}, {252, 246, 190}}};
    const double place = std::clamp(position, 0.0, 1.0) * static_cast<double>(anchors.size() - 1);
    const std::size_t lower = std::min(static_cast<std::size_t>(place), anchors.size() - 2);
    const double share = place - static_cast<double>(lower);
    std::array<std::uint8_t, 3> mixed{};
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        mixed[i] = static_cast<std::uint8_t>(
            std::lround(anchors[lower][i] + share * (anchors[lower + 1][i] - anchors[lower][i])));
    }
    return {mixed[0], mixed[1], mixed[2]};
}

}  // namespace quillmere
