#include "QuillmereCore/Origin/MapPicture.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

constexpr double pictureWidth = 960;
constexpr double pictureHeight = 760;
constexpr Drawing::Box field{64, 52, pictureWidth - 64 - 24, pictureHeight - 52 - 56};
constexpr double dotRadius = 3.5;
constexpr double nameSize = 10;

// The part of the plane that is shown, in equal units on both axes.
struct View {
    double centreX = 0, centreY = 0;
    double pixelsPerUnit = 1;

    [[nodiscard]] Drawing::Point pointOf(MapPlace place) const {
        return {field.x + field.width / 2 + (place.x - centreX) * pixelsPerUnit,
                field.y + field.height / 2 - (place.y - centreY) * pixelsPerUnit};
    }
    [[nodiscard]] double left() const { return centreX - field.width / 2 / pixelsPerUnit; }
    [[nodiscard]] double right() const { return centreX + field.width / 2 / pixelsPerUnit; }
    [[nodiscard]] double bottom() const { return centreY - field.height / 2 / pixelsPerUnit; }
    [[nodiscard]] double top() const { return centreY + field.height / 2 / pixelsPerUnit; }
};

View viewOf(std::span<const MapPlace> places) {
    if (places.empty()) return {};
    constexpr double margin = 1.12;
    constexpr double smallest = 1e-6;  // of clips that are all at one place
    const auto [left, right] = std::ranges::minmax(places, {}, &MapPlace::x);
    const auto [bottom, top] = std::ranges::minmax(places, {}, &MapPlace::y);
    const double width = std::max((right.x - left.x) * margin, smallest);
    const double height = std::max((top.y - bottom.y) * margin, smallest);
    return {(left.x + right.x) / 2, (bottom.y + top.y) / 2,
            std::min(field.width / width, field.height / height)};
}

void addAxis(Drawing& drawing, Drawing::Point from, Drawing::Point to) {
    drawing.add(Drawing::Line{{from, to}, Palette::grid, 1});
}

void addScales(Drawing& drawing, const View& view) {
    constexpr int marksAcross = 8;
    constexpr double textSize = 11;
    const std::vector<double> across = scaleMarks(view.left(), view.right(), marksAcross);
    const double distance = across.size() > 1 ? across[1] - across[0] : 1;
    const double fieldBottom = field.y + field.height;
    for (const double mark : across) {
        const double x = view.pointOf({mark, 0}).x;
        addAxis(drawing, {x, field.y}, {x, fieldBottom});
        drawing.add(Drawing::Text{{x, fieldBottom + 18},
                                  scaleText(mark, distance),
                                  textSize,
                                  Palette::faint,
                                  Drawing::Anchor::middle});
    }
    // The same distance upwards, because the units are the same.
    const auto lowest = static_cast<int>(std::ceil(view.bottom() / distance));
    const auto highest = static_cast<int>(std::floor(view.top() / distance));
    for (int i = lowest; i <= highest; ++i) {
        const double mark = i * distance;
        const double y = view.pointOf({0, mark}).y;
        addAxis(drawing, {field.x, y}, {field.x + field.width, y});
        drawing.add(Drawing::Text{
            {field.x - 8, y + 4}, scaleText(mark, distance), textSize, Palette::faint, Drawing::Anchor::end});
    }
}

std::string percent(double share) {
    return Text::fixed(100 * share, 0) + " %";
}

void addHead(Drawing& drawing, const LatentMap& map, const std::string& title) {
    const auto [x, y] = map.shares();
    drawing.add(Drawing::Text{{field.x, 30}, title, 16, Palette::ink, Drawing::Anchor::start});
    drawing.add(Drawing::Text{{field.x + field.width / 2, pictureHeight - 14},
                              "x: " + percent(x) + " of all differences · y: " + percent(y),
                              11,
                              Palette::faint,
                              Drawing::Anchor::middle});
}

bool isWithin(const Drawing::Box& box, const Drawing::Box& outer) {
    return box.x >= outer.x && box.y >= outer.y && box.x + box.width <= outer.x + outer.width &&
           box.y + box.height <= outer.y + outer.height;
}

// Which boxes are taken, found by the cell of a grid that they reach into.
class Crowd {
public:
    // Takes the box if it is free.
    bool take(const Drawing::Box& box) {
        if (!isWithin(box, {0, 0, pictureWidth, pictureHeight})) return false;
        for (const std::size_t cell : cellsOf(box)) {
            if (std::ranges::any_of(cells_[cell],
                                    [&](const Drawing::Box& other) { return box.overlaps(other); }))
                return false;
        }
        occupy(box);
        return true;
    }
    void occupy(const Drawing::Box& box) {
        for (const std::size_t cell : cellsOf(box))
            cells_[cell].push_back(box);
    }

private:
    static constexpr double cellSize = 40;
    static constexpr auto across = static_cast<std::size_t>(pictureWidth / cellSize) + 1;
    static constexpr auto down = static_cast<std::size_t>(pictureHeight / cellSize) + 1;

    static std::size_t index(double position, std::size_t count) {
        return static_cast<std::size_t>(std::clamp(position / cellSize, 0.0, static_cast<double>(count - 1)));
    }
    static std::vector<std::size_t> cellsOf(const Drawing::Box& box) {
        std::vector<std::size_t> cells;
        for (std::size_t y = index(box.y, down); y <= index(box.y + box.height, down); ++y) {
            for (std::size_t x = index(box.x, across); x <= index(box.x + box.width, across); ++x)
                cells.push_back(y * across + x);
        }
        return cells;
    }

    std::vector<std::vector<Drawing::Box>> cells_ = std::vector<std::vector<Drawing::Box>>(across * down);
};

// Beside the dot, on the right or on the left; nowhere where others are.
void addName(Drawing& drawing, Crowd& crowd, Drawing::Point dot, const std::string& name) {
    constexpr double longest = 150;
    const std::string shown = fitted(name, nameSize, longest);
    const double width = textWidth(shown, nameSize);
    const double away = dotRadius + 3;
    for (const bool isRight : {true, false}) {
        const double x = isRight ? dot.x + away : dot.x - away - width;
        if (!crowd.take({x, dot.y - nameSize / 2, width, nameSize})) continue;
        drawing.add(Drawing::Text{{isRight ? x : x + width, dot.y + 3.5},
                                  shown,
                                  nameSize,
                                  Palette::ink,
                                  isRight ? Drawing::Anchor::start : Drawing::Anchor::end});
        return;
    }
}

}  // namespace

std::vector<double> scaleMarks(double low, double high, int count) {
    constexpr std::array<double, 4> steps{1, 2, 5, 10};
    const double rough = (high - low) / count;
    if (!(rough > 0) || !std::isfinite(rough)) return {};
    const double power = std::pow(10, std::floor(std::log10(rough)));
    const auto step = std::ranges::find_if(steps, [&](double one) { return one * power >= rough; });
    const double distance = (step == steps.end() ? steps.back() : *step) * power;
    std::vector<double> marks;
    for (double number = std::ceil(low / distance); number * distance <= high; ++number)
        marks.push_back(number * distance);
    return marks;
}

std::string scaleText(double mark, double distance) {
    const double decimals = std::ceil(-std::log10(distance) - 1e-9);
    const std::string text = Text::fixed(mark, static_cast<int>(std::clamp(decimals, 0.0, 9.0)));
    const bool isZero = text.find_first_not_of("-0.") == std::string::npos;
    return isZero ? "0" : text;
}

Drawing mapPicture(const LatentMap& map, std::span<const std::string> names, const std::string& title) {
    Drawing drawing(pictureWidth, pictureHeight);
    const View view = viewOf(map.places());
    addHead(drawing, map, title);
    addScales(drawing, view);
    Crowd crowd;
    std::vector<Drawing::Point> dots;
    for (const MapPlace& place : map.places()) {
        dots.push_back(view.pointOf(place));
        crowd.occupy({dots.back().x - dotRadius, dots.back().y - dotRadius, 2 * dotRadius, 2 * dotRadius});
    }
    const auto nameOf = [&](std::size_t clip) { return clip < names.size() ? names[clip] : std::string(); };
    for (std::size_t clip = 0; clip < dots.size(); ++clip) {
        const MapPlace& place = map.places()[clip];
        drawing.add(Drawing::Dot{
            dots[clip], dotRadius, Palette::accent,
            nameOf(clip) + " (" + Text::fixed(place.x, 3) + ", " + Text::fixed(place.y, 3) + ")"});
    }
    for (std::size_t clip = 0; clip < dots.size(); ++clip)
        addName(drawing, crowd, dots[clip], nameOf(clip));
    return drawing;
}

}  // namespace quillmere
