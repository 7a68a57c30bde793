#include "QuillmereCore/Audio/FrameScan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string_view>

namespace quillmere::FrameScan {
namespace {

// How far into a file the first frame may begin, tags aside.
constexpr std::int64_t longestLead = 64 << 10;

// Reads forward through a file, with a look at a few bytes ahead.
class Window {
public:
    explicit Window(ByteSource& bytes) : bytes_(bytes) {}

    // Up to count bytes from offset on; fewer only at the end of the file. count <= 4096.
    std::string_view at(std::int64_t offset, std::size_t count) {
        const std::int64_t end = begin_ + static_cast<std::int64_t>(filled_);
        if (offset < begin_ || offset + static_cast<std::int64_t>(count) > end) {
            begin_ = offset;
            filled_ = bytes_.readAt(offset, std::as_writable_bytes(std::span(buffer_)));
        }
        const auto from = static_cast<std::size_t>(offset - begin_);
        return std::string_view(buffer_.data(), filled_).substr(std::min(from, filled_), count);
    }

private:
    ByteSource& bytes_;
    std::vector<char> buffer_ = std::vector<char>(std::size_t{32} << 10);
    std::int64_t begin_ = 0;
    std::size_t filled_ = 0;
};

std::uint32_t bigEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

struct Header {
    std::uint32_t kind = 0;    // equal in all frames of one stream
    std::int64_t length = 0;   // of the frame in bytes, the header included
    std::int64_t samples = 0;  // of each channel; 0 when not known
};

// ISO/IEC 11172-3, 2.4.1.3, and 13818-3. Free-format frames are not known.
std::optional<Header> mpegHeader(std::string_view bytes) {
    if (bytes.size() < 4) return std::nullopt;
    const std::uint32_t bits = bigEndian(bytes.substr(0, 4));
    const std::uint32_t version = bits >> 19 & 3;  // 3: MPEG 1, 2: MPEG 2, 0: MPEG 2.5
    const std::uint32_t layer = 4 - (bits >> 17 & 3);
    const std::uint32_t bitRateIndex = bits >> 12 & 15;
    const std::uint32_t rateIndex = bits >> 10 & 3;
    const std::uint32_t padding = bits >> 9 & 1;
    const bool isValid = bits >> 21 == 0x7FF && version != 1 && layer != 4 && bitRateIndex != 0 &&
                         bitRateIndex != 15 && rateIndex != 3;
    if (!isValid) return std::nullopt;
    // kbit/s of MPEG 1 layers I to III, then of MPEG 2 layer I and layers II and III.
    static constexpr std::array<std::array<int, 15>, 5> bitRates{
        {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
         {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
         {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
         {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
         {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};
    static constexpr std::array<int, 3> sampleRates{44100, 48000, 32000};
    const bool isFirstVersion = version == 3;
    const std::size_t row = isFirstVersion ? layer - 1 : (layer == 1 ? 3 : 4);
    const std::int64_t bitRate = std::int64_t{1000} * bitRates.at(row).at(bitRateIndex);
    const int sampleRate = sampleRates.at(rateIndex) / (version == 3 ? 1 : version == 2 ? 2 : 4);
    const std::int64_t samples = layer == 1 ? 384 : layer == 3 && !isFirstVersion ? 576 : 1152;
    const std::int64_t slotBytes = layer == 1 ? 4 : 1;
    const std::int64_t slots = samples / 8 / slotBytes * bitRate / sampleRate;
    return Header{bits & 0xFFFE0C00, (slots + padding) * slotBytes, samples};
}

// ISO/IEC 13818-7, 6.2.
std::optional<Header> adtsHeader(std::string_view bytes) {
    constexpr std::uint32_t headerBytes = 7;
    if (bytes.size() < headerBytes) return std::nullopt;
    const std::uint32_t bits = bigEndian(bytes.substr(0, 4));
    const std::uint32_t length = bigEndian(bytes.substr(3, 3)) >> 5 & 0x1FFF;
    const bool isValid = (bits & 0xFFF60000) == 0xFFF00000 && (bits >> 10 & 15) < 13 && length > headerBytes;
    if (!isValid) return std::nullopt;
    return Header{bits & 0xFFFFFDC0, length, 1024};  // all but the private bit and what varies
}

bool isTag(std::string_view bytes) {
    const auto starts = [&](std::string_view mark) { return bytes.starts_with(mark); };
    return starts("TAG") || starts("ID3") || starts("APETAGEX") || starts("LYRICSBEGIN");
}

// A stretch between two frames that holds none.
struct Gap {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    std::int64_t previousFrame = 0;  // where the frame before it begins
    bool isTag = false;
};

class Scan {
public:
    Scan(ByteSource& bytes, Stream stream) : bytes_(bytes), window_(bytes), stream_(stream) {}

    std::optional<Findings> run() {
        if (!findFirst()) return std::nullopt;
        while (walk() && resume()) {
        }
        return findings();
    }

private:
    std::optional<Header> headerAt(std::int64_t at) {
        return stream_ == Stream::mp3 ? mpegHeader(window_.at(at, 4)) : adtsHeader(window_.at(at, 7));
    }

    // A header of this stream; any stream's before the first frame.
    std::optional<Header> ownHeaderAt(std::int64_t at) {
        std::optional<Header> header = headerAt(at);
        if (header && kind_ && header->kind != *kind_) header.reset();
        return header;
    }

    // Bytes look like a header now and then; where the next one stands in its place, it is one.
    bool isFrame(std::int64_t at) {
        const std::optional<Header> header = ownHeaderAt(at);
        if (!header) return false;
        const std::int64_t next = at + header->length;
        if (next == bytes_.size()) return true;
        const std::optional<Header> following = headerAt(next);
        return (following && following->kind == header->kind) || isTag(window_.at(next, 11));
    }

    // What an encoder noted in a frame of its own before all others, after a description known by the name of
    // its writer, Xing, and the extension of LAME.
    void readNote(std::int64_t first) {
        const std::string_view frame = window_.at(first, 256);
        const std::size_t at = std::min(frame.substr(0, 64).find("Xing"), frame.substr(0, 64).find("Info"));
        if (at == std::string_view::npos || frame.size() < 256) return;
        const std::uint32_t fields = bigEndian(frame.substr(at + 4, 4));
        if ((fields & 1) == 0) return;
        stated_ = bigEndian(frame.substr(at + 8, 4));
        const std::size_t encoder = at + 12 + ((fields & 2) != 0 ? 4 : 0) + ((fields & 4) != 0 ? 100 : 0) +
                                    ((fields & 8) != 0 ? 4 : 0);
        const std::string_view name = frame.substr(encoder, 4);
        if (name != "LAME" && name != "Lavf" && name != "Lavc") return;
        const std::uint32_t padding = bigEndian(frame.substr(encoder + 21, 3));  // 12 bits for either end
        samples_ = stated_ * headerAt(first)->samples - (padding >> 12) - (padding & 0xFFF);
    }

    bool findFirst() {
        skipLeadingTags();
        for (const std::int64_t last = at_ + longestLead; at_ < std::min(last, bytes_.size()); ++at_) {
            if (!isFrame(at_)) continue;
            kind_ = headerAt(at_)->kind;
            if (stream_ == Stream::mp3) readNote(at_);
            return true;
        }
        return false;
    }

    void skipLeadingTags() {
        for (;;) {
            const std::string_view tag = window_.at(at_, 10);
            if (tag.size() < 10 || !tag.starts_with("ID3")) return;
            std::int64_t size = 0;  // seven bits to a byte
            for (const char byte : tag.substr(6))
                size = size << 7 | (byte & 0x7F);
            const bool hasFooter = (tag[5] & 0x10) != 0;
            at_ += 10 + size + (hasFooter ? 10 : 0);
        }
    }

    // From frame to frame, as long as there is one. False at the end.
    bool walk() {
        while (const std::optional<Header> header = ownHeaderAt(at_)) {
            if (at_ + header->length > bytes_.size()) {
                isTruncated_ = true;
                return false;
            }
            shortest_ = frames_ == 0 ? header->length : std::min(shortest_, header->length);
            longest_ = std::max(longest_, header->length);
            total_ += header->length;
            ++frames_;
            previous_ = at_;
            at_ += header->length;
            bytes_.progress();
        }
        // Another stream begins where this one ends: that is for the decoder to see.
        return at_ < bytes_.size() && !(headerAt(at_) && isAnotherStream());
    }

    bool isAnotherStream() {
        const std::uint32_t own = *kind_;
        kind_.reset();
        const bool isOne = isFrame(at_);
        kind_ = own;
        return isOne;
    }

    // Goes on behind a gap. False when no frame follows.
    bool resume() {
        const Gap gap{at_, 0, previous_, isTag(window_.at(at_, 11))};
        for (; at_ < bytes_.size(); ++at_) {
            if (!isFrame(at_)) continue;
            gaps_.push_back(gap);
            gaps_.back().end = at_;
            return true;
        }
        // A tag or some padding may end a file, but not what a frame would take.
        isTruncated_ = !gap.isTag && bytes_.size() - gap.begin >= longest_;
        return false;
    }

    // Sound that is missing in a gap, in frames.
    [[nodiscard]] std::int64_t lostIn(const Gap& gap) const {
        if (gap.isTag) return 0;
        const double mean = static_cast<double>(total_) / static_cast<double>(frames_);
        // With one length for all, damage to a length itself shows in what lies between sound beginnings.
        const bool hasOneLength = longest_ - shortest_ <= 1;
        const std::int64_t from = hasOneLength ? gap.previousFrame : gap.begin;
        const std::int64_t frames = std::llround(static_cast<double>(gap.end - from) / mean);
        return std::max<std::int64_t>(frames - (hasOneLength ? 1 : 0), 0);
    }

    [[nodiscard]] Findings findings() const {
        Findings result;
        result.isTruncated = isTruncated_;
        std::int64_t begin = 0;
        std::int64_t shown = 0;
        std::int64_t lost = 0;
        for (const Gap& gap : gaps_) {
            result.parts.push_back({begin, gap.begin});
            shown += gap.begin - begin;
            begin = gap.end;
            const std::int64_t frames = lostIn(gap);
            lost += frames;
            if (frames > 0) result.losses.push_back({shown, frames});
        }
        // Translators: sound: whole, undamaged.
        if (lost > frames_) throw ReadError("more of it is damaged than sound");
        // Encoders count the noting frame or not, and some are wrong by one.
        constexpr std::int64_t miscount = 2;
        result.isTruncated = result.isTruncated || frames_ + lost + miscount < stated_;
        if (lost > 0 && !result.isTruncated && samples_ > 0) result.samples = samples_;
        result.parts.push_back({begin, bytes_.size()});
        return result;
    }

    ByteSource& bytes_;
    Window window_;
    Stream stream_;
    std::optional<std::uint32_t> kind_;
    std::int64_t at_ = 0;
    std::int64_t previous_ = 0;
    std::int64_t stated_ = 0;   // frames by the encoder's note; 0 without one
    std::int64_t samples_ = 0;  // to be heard, likewise
    std::int64_t frames_ = 0;
    std::int64_t total_ = 0;  // bytes of all frames
    std::int64_t shortest_ = 0;
    std::int64_t longest_ = 0;
    bool isTruncated_ = false;
    std::vector<Gap> gaps_;
};

}  // namespace

std::optional<Findings> scan(ByteSource& bytes, Stream stream) {
    return Scan(bytes, stream).run();
}

}  // namespace quillmere::FrameScan
