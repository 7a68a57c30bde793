#include "QuillmereCore/Generate/Sweep.h"

#include "QuillmereCore/Util/Text.h"

namespace quillmere::Sweep {
namespace {

// With the decimals that it has, six at most.
std::string number(double value) {
    std::string text = Text::fixed(value, 6);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

}  // namespace

double Axis::value(std::int64_t step) const {
    if (step == count - 1) return to;
    return from + (to - from) * static_cast<double>(step) / static_cast<double>(count - 1);
}

std::vector<Point> points(const Aesthetics& start, std::span<const Axis> axes) {
    std::vector<Point> all{{{}, start}};
    // The last axis is the outermost loop.
    for (std::size_t i = axes.size(); i-- > 0;) {
        std::vector<Point> finer;
        for (const Point& point : all) {
            for (std::int64_t step = 0; step < axes[i].count; ++step) {
                Point next = point;
                next.values.insert(next.values.begin(), axes[i].value(step));
                next.aesthetics.set(*axes[i].spec, axes[i].value(step));
                finer.push_back(std::move(next));
            }
        }
        all = std::move(finer);
    }
    return all;
}

std::string title(const Point& point, std::span<const Axis> axes) {
    std::string text;
    for (std::size_t i = 0; i < axes.size(); ++i)
        text += (i > 0 ? ", " : "") + std::string(axes[i].spec->id) + " " + number(point.values[i]);
    return text;
}

std::string fileName(const std::string& prefix, const Point& point, std::span<const Axis> axes) {
    std::string name = prefix;
    for (std::size_t i = 0; i < axes.size(); ++i)
        name += "_" + std::string(axes[i].spec->id) + "_" + number(point.values[i]);
    return name + ".wav";
}

}  // namespace quillmere::Sweep
