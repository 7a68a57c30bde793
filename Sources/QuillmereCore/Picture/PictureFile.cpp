#include "QuillmereCore/Picture/PictureFile.h"

#include <cairo.h>
#include <openssl/evp.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <numbers>
#include <string_view>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"
#include "QuillmereCore/Util/Unicode.h"

namespace quillmere::PictureFile {
namespace {

namespace fs = std::filesystem;

constexpr const char* fontFamily = "sans-serif";

// Whether XML has this character.
bool isPossible(UChar32 character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

// text with replacement characters for what is no UTF-8 or no character of XML.
std::string validText(std::string_view text) {
    static constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string result;
    for (std::size_t next = 0; next < text.size();) {
        const std::size_t start = next;
        const UChar32 character = takeCharacter(text, next);
        const bool isValid = character >= 0 && isPossible(character);
        result += isValid ? text.substr(start, next - start) : replacement;
    }
    return result;
}

// ---- SVG

std::string number(double value) {
    std::string text = Text::fixed(value, 2);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

std::string attribute(std::string_view name, double value) {
    return " " + std::string(name) + "=\"" + number(value) + "\"";
}

std::string colourText(Colour colour) {
    return "#" + Text::hexadecimal(std::array<std::uint8_t, 3>{colour.red, colour.green, colour.blue});
}

std::string pointsText(std::span<const Drawing::Point> points) {
    std::string text;
    for (const Drawing::Point& point : points)
        text += (text.empty() ? "" : " ") + number(point.x) + "," + number(point.y);
    return text;
}

std::string element(const Drawing::Area& area) {
    return "<polygon points=\"" + pointsText(area.corners) + "\" fill=\"" + colourText(area.colour) + "\"/>";
}

std::string element(const Drawing::Line& line) {
    return "<polyline points=\"" + pointsText(line.points) + "\" fill=\"none\" stroke=\"" +
           colourText(line.colour) + "\"" + attribute("stroke-width", line.width) + "/>";
}

std::string element(const Drawing::Dot& dot) {
    const std::string circle = "<circle" + attribute("cx", dot.centre.x) + attribute("cy", dot.centre.y) +
                               attribute("r", dot.radius) + " fill=\"" + colourText(dot.colour) + "\"";
    if (dot.title.empty()) return circle + "/>";
    return circle + "><title>" + escaped(dot.title) + "</title></circle>";
}

const char* anchorText(Drawing::Anchor anchor) {
    if (anchor == Drawing::Anchor::start) return "start";
    return anchor == Drawing::Anchor::middle ? "middle" : "end";
}

std::string element(const Drawing::Text& text) {
    return "<text" + attribute("x", text.place.x) + attribute("y", text.place.y) +
           attribute("font-size", text.size) + " fill=\"" + colourText(text.colour) + "\" text-anchor=\"" +
           anchorText(text.anchor) + "\">" + escaped(text.text) + "</text>";
}

std::string element(const Drawing::Image& image) {
    return "<image" + attribute("x", image.box.x) + attribute("y", image.box.y) +
           attribute("width", image.box.width) + attribute("height", image.box.height) +
           " preserveAspectRatio=\"none\" image-rendering=\"pixelated\" href=\"" +
           dataAddress(png(image.pixels), "image/png") + "\"/>";
}

// ---- PNG

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

struct ContextDeleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

void requireMemory(cairo_status_t status) {
    if (status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    require(status == CAIRO_STATUS_SUCCESS, cairo_status_to_string(status));
}

constexpr double mostPixels = 32767;  // on a side, of the library

Surface makeSurface(double width, double height) {
    if (!(width <= mostPixels && height <= mostPixels))
        throw Failure("The picture would have more than 32767 pixels on a side; as SVG it has no limit.");
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::ceil(width)),
                                               static_cast<int>(std::ceil(height))));
    requireMemory(cairo_surface_status(surface.get()));
    return surface;
}

Surface surfaceOf(const Pixels& pixels) {
    Surface surface = makeSurface(static_cast<double>(pixels.width), static_cast<double>(pixels.height));
    cairo_surface_flush(surface.get());
    unsigned char* const data = cairo_image_surface_get_data(surface.get());
    const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
    for (std::size_t y = 0; y < pixels.height; ++y) {
        for (std::size_t x = 0; x < pixels.width; ++x) {
            const Colour& colour = pixels.colours[y * pixels.width + x];
            const std::uint32_t code =
                std::uint32_t{colour.red} << 16 | std::uint32_t{colour.green} << 8 | colour.blue;
            std::memcpy(data + y * stride + 4 * x, &code, sizeof(code));
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// The usual one, or what the library can take.
double largestScale(const Drawing& drawing) {
    constexpr double usual = 2;
    return std::min(usual, mostPixels / std::max(drawing.width(), drawing.height()));
}

std::vector<std::byte> encoded(cairo_surface_t* surface) {
    std::vector<std::byte> bytes;
    const auto take = [](void* closure, const unsigned char* data, unsigned int length) {
        const auto part = std::as_bytes(std::span(data, length));
        auto& all = *static_cast<std::vector<std::byte>*>(closure);
        all.insert(all.end(), part.begin(), part.end());
        return CAIRO_STATUS_SUCCESS;
    };
    requireMemory(cairo_surface_write_to_png_stream(surface, take, &bytes));
    return bytes;
}

void setColour(cairo_t* context, Colour colour) {
    cairo_set_source_rgb(context, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
}

void trace(cairo_t* context, std::span<const Drawing::Point> points) {
    for (const Drawing::Point& point : points)
        cairo_line_to(context, point.x, point.y);
}

void draw(cairo_t* context, const Drawing::Area& area) {
    setColour(context, area.colour);
    trace(context, area.corners);
    cairo_fill(context);
}

void draw(cairo_t* context, const Drawing::Line& line) {
    setColour(context, line.colour);
    cairo_set_line_width(context, line.width);
    trace(context, line.points);
    cairo_stroke(context);
}

void draw(cairo_t* context, const Drawing::Dot& dot) {
    setColour(context, dot.colour);
    cairo_arc(context, dot.centre.x, dot.centre.y, dot.radius, 0, 2 * std::numbers::pi);
    cairo_fill(context);
}

void draw(cairo_t* context, const Drawing::Text& text) {
    const std::string shown = validText(text.text);
    cairo_set_font_size(context, text.size);
    cairo_text_extents_t extents;
    cairo_text_extents(context, shown.c_str(), &extents);
    const double share = text.anchor == Drawing::Anchor::start    ? 0
                         : text.anchor == Drawing::Anchor::middle ? 0.5
                                                                  : 1;
    setColour(context, text.colour);
    cairo_move_to(context, text.place.x - share * extents.x_advance, text.place.y);
    cairo_show_text(context, shown.c_str());
    cairo_new_path(context);
}

void draw(cairo_t* context, const Drawing::Image& image) {
    const Surface surface = surfaceOf(image.pixels);
    cairo_save(context);
    cairo_translate(context, image.box.x, image.box.y);
    cairo_scale(context, image.box.width / static_cast<double>(image.pixels.width),
                image.box.height / static_cast<double>(image.pixels.height));
    cairo_set_source_surface(context, surface.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
    cairo_rectangle(context, 0, 0, static_cast<double>(image.pixels.width),
                    static_cast<double>(image.pixels.height));
    cairo_fill(context);
    cairo_restore(context);
}

}  // namespace

std::string svg(const Drawing& drawing) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + svgElement(drawing);
}

std::string svgElement(const Drawing& drawing) {
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\"" + attribute("width", drawing.width()) +
                       attribute("height", drawing.height()) + " viewBox=\"0 0 " + number(drawing.width()) +
                       " " + number(drawing.height()) + "\" font-family=\"" + fontFamily + "\">\n";
    text += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    for (const Drawing::Shape& shape : drawing.shapes())
        text += std::visit([](const auto& one) { return element(one); }, shape) + "\n";
    return text + "</svg>\n";
}

std::vector<std::byte> png(const Drawing& drawing, double scale) {
    const Surface surface = makeSurface(drawing.width() * scale, drawing.height() * scale);
    const Context context(cairo_create(surface.get()));
    cairo_scale(context.get(), scale, scale);
    cairo_select_font_face(context.get(), fontFamily, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    setColour(context.get(), Palette::white);
    cairo_paint(context.get());
    for (const Drawing::Shape& shape : drawing.shapes())
        std::visit([&](const auto& one) { draw(context.get(), one); }, shape);
    requireMemory(cairo_status(context.get()));
    return encoded(surface.get());
}

std::vector<std::byte> png(const Pixels& pixels) {
    return encoded(surfaceOf(pixels).get());
}

std::string dataAddress(std::span<const std::byte> content, const std::string& mediaType) {
    require(content.size() <= std::numeric_limits<int>::max(), "dataAddress: more than 2 GiB");
    std::string digits((content.size() + 2) / 3 * 4 + 1, '\0');  // and the zero that the library adds
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(digits.data()),
                                       reinterpret_cast<const unsigned char*>(content.data()),
                                       static_cast<int>(content.size()));
    digits.resize(static_cast<std::size_t>(length));
    return "data:" + mediaType + ";base64," + digits;
}

std::optional<Message> problemWithName(const fs::path& file) {
    const std::string extension = Text::lowercase(Text::utf8(file.extension()));
    if (extension == ".png" || extension == ".svg") return std::nullopt;
    return Message("The name of a picture must end in .png or .svg, not {0}.", file.filename());
}

void write(const Drawing& drawing, const fs::path& file) {
    if (const auto problem = problemWithName(file)) throw Failure(*problem);
    if (Text::lowercase(Text::utf8(file.extension())) == ".png")
        return writeFileAtomically(file, png(drawing, largestScale(drawing)));
    const std::string text = svg(drawing);
    writeFileAtomically(file, std::as_bytes(std::span(text)));
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : validText(text)) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

}  // namespace quillmere::PictureFile
