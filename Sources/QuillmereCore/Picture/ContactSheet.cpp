#include "QuillmereCore/Picture/ContactSheet.h"

#include <algorithm>

#include "QuillmereCore/Picture/SoundPictures.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

constexpr double margin = 16;
constexpr double headHeight = 36;
constexpr double cellWidth = 150;
constexpr double gap = 10;
constexpr double titleHeight = 16;
constexpr double waveHeight = 40;
constexpr double melHeight = 80;
constexpr double cellHeight = titleHeight + waveHeight + melHeight;
constexpr double titleSize = 11;

Drawing cellDrawing(const ContactSheet::Cell& cell, const SoundPictures::MelPainter& painter,
                    double sampleRate, double seconds) {
    Drawing drawing(cellWidth, cellHeight);
    drawing.add(Drawing::Text{{0, titleHeight - 5},
                              fitted(cell.title, titleSize, cellWidth),
                              titleSize,
                              Palette::ink,
                              Drawing::Anchor::start});
    drawing.addDrawing(SoundPictures::waveform(cell.samples, sampleRate, seconds, cellWidth, waveHeight),
                       {0, titleHeight});
    drawing.add(
        Drawing::Image{{0, titleHeight + waveHeight, cellWidth, melHeight}, painter.paint(cell.samples)});
    return drawing;
}

}  // namespace

Drawing ContactSheet::draw() const {
    std::size_t longest = 1;
    for (const Cell& cell : cells)
        longest = std::max(longest, cell.samples.size());
    const double seconds = static_cast<double>(longest) / sampleRate;
    const std::size_t rows = (cells.size() + columns - 1) / columns;
    const auto across = static_cast<double>(columns);
    Drawing sheet(2 * margin + across * cellWidth + (across - 1) * gap,
                  headHeight + margin + static_cast<double>(rows) * (cellHeight + gap));
    sheet.add(Drawing::Text{{margin, 24}, title, 15, Palette::ink, Drawing::Anchor::start});
    sheet.add(Drawing::Text{{sheet.width() - margin, 24},
                            Text::fixed(seconds, 2) + " s across",
                            titleSize,
                            Palette::faint,
                            Drawing::Anchor::end});
    const SoundPictures::MelPainter painter(sampleRate, seconds, static_cast<std::size_t>(cellWidth));
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t line = i / columns;
        const auto row = static_cast<double>(line);
        const auto column = static_cast<double>(i - line * columns);
        sheet.addDrawing(cellDrawing(cells[i], painter, sampleRate, seconds),
                         {margin + column * (cellWidth + gap), headHeight + row * (cellHeight + gap)});
    }
    return sheet;
}

}  // namespace quillmere
