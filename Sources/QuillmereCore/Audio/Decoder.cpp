#include "QuillmereCore/Audio/Decoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "QuillmereCore/Audio/ByteSource.h"
#include "QuillmereCore/Audio/Container.h"
#include "QuillmereCore/Audio/FrameScan.h"

namespace quillmere::Decoder {
namespace {

namespace fs = std::filesystem;

// What converters and recorders really use; beyond it a rate is damage or mischief, and converting from it
// would multiply the memory a file needs.
constexpr int lowestRate = 1000;
constexpr int highestRate = 768000;

// FLAC packs the most frames into a byte: a block of 65535 equal samples in about 11 bytes.
constexpr std::int64_t mostFramesPerByte = 8192;

// The longest end padding a packet table may announce: two packets of the longest codec.
constexpr std::int64_t longestPadding = 4096;

// FFmpeg's default lets a damaged file ask for 2 GiB in one piece. The index of a stream is the largest thing
// of use: this is enough for nine hours.
constexpr std::size_t largestAllocation = std::size_t{32} << 20;

// No codec puts more frames into a packet.
constexpr std::int64_t mostFramesPerPacket = 65536;

struct FreeIO {
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};
struct CloseInput {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct FreeCodec {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using IO = std::unique_ptr<AVIOContext, FreeIO>;
using Format = std::unique_ptr<AVFormatContext, CloseInput>;
using Codec = std::unique_ptr<AVCodecContext, FreeCodec>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

// FFmpeg's constructors answer null when memory is short.
template <typename Pointer>
Pointer allocated(typename Pointer::pointer object) {
    if (object == nullptr) throw std::bad_alloc();
    return Pointer(object);
}

// FFmpeg's own words, and the system's for an errno.
Message describe(int code) {
    if (code == AVERROR_INVALIDDATA) return Message("Invalid data found when processing input");
    constexpr int largestErrno = 4095;  // FFmpeg's own codes are four letters each
    const int number = AVUNERROR(code);
    if (number > 0 && number <= largestErrno) return Message::system({number, std::generic_category()});
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return Message::verbatim(text.data());
}

// The library says that memory is short also when a file asks for more than the largest allocation.
[[noreturn]] void throwOutOfMemory() {
    void* const proof = av_malloc(largestAllocation / 2);
    if (proof == nullptr) throw std::bad_alloc();
    av_free(proof);
    throw ReadError("it asks for more memory than a sample can need");
}

void check(int code) {
    if (code == AVERROR(ENOMEM)) throwOutOfMemory();
    if (code < 0) throw ReadError(describe(code));
}

void setUpLibraryOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(largestAllocation);
    });
}

// A supervised file as FFmpeg reads it.
class Reading {
public:
    explicit Reading(ByteSource& bytes) : bytes_(bytes) {
        constexpr int bufferBytes = 32768;  // FFmpeg's own choice
        void* const buffer = av_malloc(bufferBytes);
        if (buffer == nullptr) throw std::bad_alloc();
        AVIOContext* const context = avio_alloc_context(static_cast<unsigned char*>(buffer), bufferBytes, 0,
                                                        this, &Reading::read, nullptr, &Reading::seek);
        if (context == nullptr) av_free(buffer);
        context_ = allocated<IO>(context);
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    [[nodiscard]] AVIOContext* context() const { return context_.get(); }

private:
    static int read(void* self, std::uint8_t* buffer, int size) {
        auto& reading = *static_cast<Reading*>(self);
        const std::span out(reinterpret_cast<std::byte*>(buffer), static_cast<std::size_t>(size));
        const std::int64_t count = reading.bytes_.tryReadAt(reading.at_, out);
        if (count < 0) return AVERROR_EXIT;
        reading.at_ += count;
        return count > 0 ? static_cast<int>(count) : AVERROR_EOF;
    }

    static std::int64_t seek(void* self, std::int64_t offset, int whence) {
        auto& reading = *static_cast<Reading*>(self);
        const std::int64_t size = reading.bytes_.size();
        switch (whence & ~AVSEEK_FORCE) {
            case AVSEEK_SIZE:
                return size;
            case SEEK_SET:
                break;
            case SEEK_CUR:
                offset += reading.at_;
                break;
            case SEEK_END:
                offset += size;
                break;
            default:
                return AVERROR(EINVAL);
        }
        if (offset < 0) return AVERROR(EINVAL);
        return reading.at_ = offset;
    }

    ByteSource& bytes_;
    IO context_;
    std::int64_t at_ = 0;
};

int isCancelled(void* bytes) {
    return static_cast<const ByteSource*>(bytes)->isCancelled() ? 1 : 0;
}

// Files do not lead to other files.
int refuseToOpen(AVFormatContext* /*context*/, AVIOContext** /*io*/, const char* /*url*/, int /*flags*/,
                 AVDictionary** /*options*/) {
    return AVERROR(EACCES);
}

Format openFormat(const fs::path& file, ByteSource& bytes, const Reading& reading) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "format_whitelist", "wav,w64,aiff,flac,mp3,aac,caf,mov", 0);
    // More probing only guards against compressed streams disguised as PCM, at 14 times the cost.
    av_dict_set(&options, "max_probe_packets", "1", 0);
    av_dict_set(&options, "max_streams", "16", 0);
    Format format = allocated<Format>(avformat_alloc_context());
    format->pb = reading.context();
    format->io_open = refuseToOpen;
    format->interrupt_callback = {isCancelled, &bytes};
    // The name only helps to tell formats apart; the prefix keeps colons in it from being schemes.
    const std::string url = "file:" + file.string();
    AVFormatContext* context = format.release();
    const int code = avformat_open_input(&context, url.c_str(), nullptr, &options);  // frees it when it fails
    format.reset(context);
    av_dict_free(&options);
    bytes.check();
    check(code);
    return format;
}

// Frames that the demuxer itself marks to be skipped at either end of a packet, or nothing.
std::optional<std::int64_t> skippedFrames(const AVPacket& packet) {
    std::size_t size = 0;
    const std::uint8_t* data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (data == nullptr || size < 8) return std::nullopt;
    std::array<std::uint32_t, 2> startAndEnd{};
    std::memcpy(startAndEnd.data(), data, sizeof startAndEnd);
    return std::int64_t{startAndEnd[0]} + startAndEnd[1];
}

// An opened file and its audio stream.
class Input {
public:
    Input(const fs::path& file, const AudioIO::ReadOptions& options)
        : bytes_(file, options.followsLinks, options.stop, {}), outline_(Container::outlineOf(bytes_)) {
        if (outline_.soundEnd) bytes_.show({{0, *outline_.soundEnd}});
        open(file);
        if (isFrameStream() && findLosses()) open(file);
        chooseStream();
    }

    [[nodiscard]] const AVStream& stream() const { return *stream_; }
    [[nodiscard]] const AVCodec& codec() const { return *codec_; }
    [[nodiscard]] int sampleRate() const { return stream_->codecpar->sample_rate; }

    // Frames to leave out at the start, given the first packet.
    [[nodiscard]] std::int64_t primingFrames(const AVPacket& first) const {
        const bool demuxerSkips = skippedFrames(first).has_value();
        return outline_.packetTable && !demuxerSkips ? outline_.packetTable->primingFrames : 0;
    }

    // What the container says of its length, where it can be believed.
    [[nodiscard]] std::optional<std::int64_t> statedFrames() const {
        if (samplesAcrossLosses_) return samplesAcrossLosses_;
        const auto stated =
            outline_.packetTable ? std::optional(outline_.packetTable->validFrames) : statedDuration();
        if (!stated || *stated > bytes_.size() * mostFramesPerByte) return std::nullopt;
        if (const int bits = av_get_bits_per_sample(stream_->codecpar->codec_id); bits > 0) {
            // A cut file holds less than its header says.
            const int channels = stream_->codecpar->ch_layout.nb_channels;
            return std::min(*stated, soundBytes() * 8 / bits / channels);
        }
        return stated;
    }

    // Whether the file is shorter than it says.
    [[nodiscard]] bool isTruncated() const {
        return outline_.isTruncated || losesTail_ || indexedBytes() < indexedBytes(/*inFile=*/false);
    }

    // Whether the stream's frames were looked for one by one, so that the above is all there is to say.
    [[nodiscard]] bool isScanned() const { return isScanned_; }

    // Packets of this stream that are gone before the given one. Asked for each packet, in order.
    std::int64_t lostBefore(const AVPacket& packet) {
        std::int64_t frames = 0;
        for (; nextLoss_ < losses_.size() && packet.pos >= losses_[nextLoss_].at; ++nextLoss_)
            frames += losses_[nextLoss_].frames;
        return frames;
    }

    // The sum of the packets' lengths. Reads the file to its end.
    [[nodiscard]] std::int64_t countFrames() {
        const Packet packet = allocated<Packet>(av_packet_alloc());
        std::int64_t frames = 0;
        while (readPacket(*packet) >= 0) {
            const std::int64_t duration = durationOf(*packet);
            frames += duration * lostBefore(*packet);
            if ((packet->flags & AV_PKT_FLAG_DISCARD) == 0) {
                frames += duration - skippedFrames(*packet).value_or(0);
                if (duration > 0) bytes_.progress();
            }
            av_packet_unref(packet.get());
        }
        return std::max<std::int64_t>(frames, 0);
    }

    // A packet's length in frames.
    [[nodiscard]] std::int64_t durationOf(const AVPacket& packet) const {
        return av_rescale_q(packet.duration, stream_->time_base, AVRational{1, sampleRate()});
    }

    // The stream's next packet; a negative code at the end and on errors.
    int readPacket(AVPacket& packet) {
        for (;;) {
            const int code = av_read_frame(format_.get(), &packet);
            bytes_.check();
            if (code < 0 || packet.stream_index == stream_->index) return code;
            av_packet_unref(&packet);
        }
    }

    // Something was decoded.
    void progress() { bytes_.progress(); }

private:
    void open(const fs::path& file) {
        format_.reset();
        reading_.emplace(bytes_);
        format_ = openFormat(file, bytes_, *reading_);
        dataStart_ = avio_tell(format_->pb);
        const int code = avformat_find_stream_info(format_.get(), nullptr);
        bytes_.check();
        check(code);
        bytes_.progress();
    }

    [[nodiscard]] bool isFrameStream() const {
        const std::string_view name = format_->iformat->name;
        return name == "mp3" || name == "aac";
    }

    // Whether the file has to be read without what lies between its frames.
    bool findLosses() {
        const bool isMP3 = std::string_view(format_->iformat->name) == "mp3";
        auto found = FrameScan::scan(bytes_, isMP3 ? FrameScan::Stream::mp3 : FrameScan::Stream::adts);
        bytes_.progress();
        if (!found) return false;
        isScanned_ = true;
        losesTail_ = found->isTruncated;
        losses_ = std::move(found->losses);
        samplesAcrossLosses_ = found->samples;
        if (found->parts.size() == 1) return false;
        bytes_.show(std::move(found->parts));
        return true;
    }

    void chooseStream() {
        const int index = av_find_best_stream(format_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec_, 0);
        if (index < 0 || codec_ == nullptr) throw ReadError("it has no audio that can be decoded");
        const std::span streams(format_->streams, format_->nb_streams);
        for (AVStream* const other : streams)
            other->discard = AVDISCARD_ALL;  // cover art
        stream_ = streams[static_cast<std::size_t>(index)];
        stream_->discard = AVDISCARD_DEFAULT;
        if (stream_->codecpar->ch_layout.nb_channels <= 0) throw ReadError("it has no channels");
        if (sampleRate() < lowestRate || sampleRate() > highestRate) {
            throw ReadError("its sample rate of {0} Hz is not supported", sampleRate());
        }
    }

    [[nodiscard]] bool containerIs(std::string_view name) const {
        return std::string_view(format_->iformat->name).find(name) != std::string_view::npos;
    }

    // Streams of MP3 and AAC packets state no length, or the rounded one of their encoder.
    [[nodiscard]] bool isPacketStream() const {
        const AVCodecID codec = stream_->codecpar->codec_id;
        return codec == AV_CODEC_ID_MP3 || codec == AV_CODEC_ID_MP2 ||
               (codec == AV_CODEC_ID_AAC && !containerIs("mov"));
    }

    [[nodiscard]] std::optional<std::int64_t> statedDuration() const {
        const bool isEstimate =
            format_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE && !containerIs("caf");
        if (isPacketStream() || isEstimate || stream_->duration == AV_NOPTS_VALUE || stream_->duration < 0) {
            return std::nullopt;
        }
        return av_rescale_q(stream_->duration, stream_->time_base, AVRational{1, sampleRate()});
    }

    // Bytes that may be sound. MPEG-4 files may hold it before what describes it; their index says where.
    [[nodiscard]] std::int64_t soundBytes() const {
        if (!containerIs("mov")) return std::max<std::int64_t>(bytes_.size() - dataStart_, 0);
        return isTruncated() ? indexedBytes() : bytes_.size();
    }

    // The bytes that an MPEG-4 file's index points to: all of them, or those that are in the file.
    [[nodiscard]] std::int64_t indexedBytes(bool inFile = true) const {
        if (!containerIs("mov")) return 0;
        std::int64_t sum = 0;
        for (int i = 0; i < avformat_index_get_entries_count(stream_); ++i) {
            const AVIndexEntry& entry = *avformat_index_get_entry(stream_, i);
            const std::int64_t present = std::clamp<std::int64_t>(bytes_.size() - entry.pos, 0, entry.size);
            sum += inFile ? present : entry.size;
        }
        return sum;
    }

    ByteSource bytes_;
    Container::Outline outline_;
    std::optional<Reading> reading_;
    Format format_;  // uses the two above
    const AVCodec* codec_ = nullptr;
    AVStream* stream_ = nullptr;
    std::int64_t dataStart_ = 0;  // bytes
    std::vector<FrameScan::Loss> losses_;
    std::size_t nextLoss_ = 0;
    std::optional<std::int64_t> samplesAcrossLosses_;
    bool isScanned_ = false;
    bool losesTail_ = false;
};

// Decoded frames of any sample format as one float array per channel.
class Planes {
public:
    // False when the frame's sample format is none of ours.
    bool load(const AVFrame& frame) {
        resize(static_cast<std::size_t>(frame.ch_layout.nb_channels),
               static_cast<std::size_t>(frame.nb_samples));
        switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
            case AV_SAMPLE_FMT_U8:
                convert<std::uint8_t>(frame, [](int v) { return static_cast<float>(v - 128) * 0x1p-7F; });
                return true;
            case AV_SAMPLE_FMT_S16:
                convert<std::int16_t>(frame, [](int v) { return static_cast<float>(v) * 0x1p-15F; });
                return true;
            case AV_SAMPLE_FMT_S32:  // 24-bit samples as well, shifted to the top
                convert<std::int32_t>(frame, [](int v) { return static_cast<float>(v) * 0x1p-31F; });
                return true;
            case AV_SAMPLE_FMT_FLT:
                convert<float>(frame, [](float v) { return v; });
                return true;
            case AV_SAMPLE_FMT_DBL:
                convert<double>(frame, [](double v) { return static_cast<float>(v); });
                return true;
            default:
                return false;
        }
    }

    void loadSilence(std::size_t channels, std::size_t frames) {
        resize(channels, frames);
        for (std::vector<float>& channel : channels_)
            std::fill(channel.begin(), channel.end(), 0.0F);
    }

    // Removes the first frames of what was loaded.
    void dropFront(std::size_t frames) {
        for (std::vector<float>& channel : channels_)
            channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(frames));
    }

    // Adds another's frames from the given one on.
    void append(const Planes& other, std::size_t from) {
        channels_.resize(other.channels_.size());
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            const std::vector<float>& source = other.channels_[c];
            channels_[c].insert(channels_[c].end(), source.begin() + static_cast<std::ptrdiff_t>(from),
                                source.end());
        }
    }

    [[nodiscard]] std::span<const std::vector<float>> channels() const { return channels_; }
    [[nodiscard]] std::size_t frames() const { return channels_.empty() ? 0 : channels_.front().size(); }

private:
    void resize(std::size_t channels, std::size_t frames) {
        channels_.resize(channels);
        for (std::vector<float>& channel : channels_)
            channel.resize(frames);
    }

    template <typename Sample, typename Conversion>
    void convert(const AVFrame& frame, Conversion toFloat) {
        const bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
        const std::size_t stride = planar ? 1 : channels_.size();
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            const auto* plane = reinterpret_cast<const Sample*>(frame.extended_data[planar ? c : 0]);
            const Sample* source = planar ? plane : plane + c;
            for (float& value : channels_[c]) {
                value = toFloat(*source);
                source += stride;
            }
        }
    }

    std::vector<std::vector<float>> channels_;
};

// Passes frames on but for those that an encoder made up at the end. Which these are shows only there: a few
// frames beyond the stated length are held back, more of them tell that the stated length is wrong.
class Delivery {
public:
    Delivery(std::optional<std::int64_t> stated, const Sink& sink) : stated_(stated), sink_(sink) {}

    void add(const Planes& planes, int sampleRate) {
        sampleRate_ = sampleRate;
        const auto frames = static_cast<std::int64_t>(planes.frames());
        const std::int64_t room = stated_ ? std::max<std::int64_t>(*stated_ - delivered_, 0) : frames;
        const std::int64_t now = std::min(frames, room);
        give(planes, now);
        if (now == frames) return;
        held_.append(planes, static_cast<std::size_t>(now));
        if (static_cast<std::int64_t>(held_.frames()) <= longestPadding) return;
        stated_.reset();
        give(held_, static_cast<std::int64_t>(held_.frames()));
        held_ = Planes();
    }

    [[nodiscard]] std::int64_t delivered() const { return delivered_; }

private:
    void give(const Planes& planes, std::int64_t frames) {
        delivered_ += frames;
        if (frames > 0) sink_({planes.channels(), static_cast<std::size_t>(frames), sampleRate_});
    }

    std::optional<std::int64_t> stated_;
    const Sink& sink_;
    int sampleRate_ = 0;
    Planes held_;
    std::int64_t delivered_ = 0;
};

// The number of the frame or, in streams of varying block length, of the first sample in a FLAC frame header:
// RFC 9639, section 9.1. Nothing for bytes that are none.
struct FLACPosition {
    bool countsSamples = false;
    std::int64_t number = 0;
};
std::optional<FLACPosition> flacPosition(const AVPacket& packet) {
    const std::span bytes(packet.data, static_cast<std::size_t>(std::max(packet.size, 0)));
    if (bytes.size() < 11 || bytes[0] != 0xFF || (bytes[1] & 0xFE) != 0xF8) return std::nullopt;
    // The first of these bytes begins with as many ones as there are bytes, but none for a single one.
    const std::uint8_t first = bytes[4];
    std::size_t count = 0;
    while (count < 8 && (first & 0x80 >> count) != 0)
        ++count;
    if (count == 1 || count == 8) return std::nullopt;
    std::int64_t number = first & 0x7F >> count;
    for (std::size_t i = 1; i < count; ++i)
        number = number << 6 | (bytes[4 + i] & 0x3F);
    return FLACPosition{(bytes[1] & 1) != 0, number};
}

// One pass over a file's packets.
class Decoding {
public:
    Decoding(const fs::path& file, const Sink& sink, const AudioIO::ReadOptions& options)
        : input_(file, options),
          stated_(input_.statedFrames()),
          delivery_(stated_, sink),
          codec_(allocated<Codec>(avcodec_alloc_context3(&input_.codec()))) {
        check(avcodec_parameters_to_context(codec_.get(), input_.stream().codecpar));
        codec_->pkt_timebase = input_.stream().time_base;
        codec_->thread_count = 1;
        // Every FLAC frame carries a sum over itself.
        if (isFLAC()) codec_->err_recognition = AV_EF_CRCCHECK | AV_EF_EXPLODE;
        check(avcodec_open2(codec_.get(), &input_.codec(), nullptr));
    }

    Result run() {
        readPackets();
        if (!ended_) send(nullptr);  // what the decoder still holds
        if (delivery_.delivered() == 0 && firstError_ < 0) throw ReadError(describe(firstError_));
        // Translators: sound: whole, undamaged.
        if (silent_ > delivery_.delivered() - silent_) throw ReadError("more of it is damaged than sound");
        return {sampleRate_ > 0 ? sampleRate_ : input_.sampleRate(), delivery_.delivered(), silent_,
                isTruncated()};
    }

private:
    [[nodiscard]] bool isFLAC() const { return input_.codec().id == AV_CODEC_ID_FLAC; }

    [[nodiscard]] bool isLossless() const {
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get(input_.codec().id);
        return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
    }

    [[nodiscard]] bool isTruncated() const {
        if (ended_ || input_.isTruncated()) return true;
        if (input_.isScanned()) return false;
        // Behind the last frame there may be a tag that looks like a broken one.
        const bool isComplete = stated_ && delivery_.delivered() >= *stated_;
        return (isPending_ && !isComplete) || (isFLAC() && stated_ && !isComplete);
    }

    void readPackets() {
        bool isFirst = true;
        int code = 0;
        while (!ended_ && (code = input_.readPacket(*packet_)) >= 0) {
            if (std::exchange(isFirst, false)) toDrop_ = input_.primingFrames(*packet_);
            bridge(input_.lostBefore(*packet_));
            if (isFLAC()) checkPosition();
            send(packet_.get());
            av_packet_unref(packet_.get());
        }
        if (code < 0 && code != AVERROR_EOF) note(code);
    }

    // Where packets are known to be gone, the decoder must not go on from what it has.
    void bridge(std::int64_t lostPackets) {
        if (lostPackets == 0) return;
        avcodec_flush_buffers(codec_.get());
        pendingSilence_ += lostPackets * packetFrames();
    }

    // Frames of the current packet.
    [[nodiscard]] std::int64_t packetFrames() const {
        const std::int64_t frames = codec_->frame_size > 0 ? codec_->frame_size : input_.durationOf(*packet_);
        return std::clamp<std::int64_t>(frames, 0, mostFramesPerPacket);
    }

    // A FLAC stream may begin with any number, but whoever leaves one out has lost a frame.
    void checkPosition() {
        const std::optional<FLACPosition> position = flacPosition(*packet_);
        if (!position) return;
        const std::int64_t length = position->countsSamples ? input_.durationOf(*packet_) : 1;
        if (nextPosition_ && length > 0 && position->number > *nextPosition_) isPending_ = true;
        nextPosition_ = position->number + length;
        if (length == 0) nextPosition_.reset();
    }

    // Each packet of ALAC is decoded by itself and has its length in the container; damage can look like its
    // end.
    [[nodiscard]] bool comesShort(const AVPacket& packet, std::int64_t frames) const {
        return input_.codec().id == AV_CODEC_ID_ALAC && frames < input_.durationOf(packet);
    }

    // A packet that cannot be decoded is left out, as players do, and silence stands in for it.
    void send(const AVPacket* packet) {
        const std::int64_t before = decoded_;
        int code = avcodec_send_packet(codec_.get(), packet);
        const int sendCode = code;
        while (!ended_ && (code = avcodec_receive_frame(codec_.get(), frame_.get())) >= 0) {
            deliver(*frame_);
            av_frame_unref(frame_.get());
        }
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF || ended_) code = 0;
        if (code == 0 && packet != nullptr && comesShort(*packet, decoded_ - before))
            code = AVERROR_INVALIDDATA;
        if (sendCode >= 0 && code >= 0) return;
        note(sendCode < 0 ? sendCode : code);
        if (packet != nullptr && decoded_ == before) pendingSilence_ += packetFrames();
    }

    void deliver(const AVFrame& frame) {
        if (channels_ == 0) {
            channels_ = frame.ch_layout.nb_channels;
            sampleRate_ = frame.sample_rate;
        }
        ended_ = frame.ch_layout.nb_channels != channels_ || frame.sample_rate != sampleRate_;
        if (ended_) return;
        if (!planes_.load(frame)) {
            note(AVERROR_PATCHWELCOME);
            return;
        }
        decoded_ += frame.nb_samples;
        if (isPending_ && isLossless()) throw ReadError("it is damaged in the middle");
        isPending_ = false;
        deliverSilence();
        const auto dropped = std::min<std::int64_t>(toDrop_, frame.nb_samples);
        toDrop_ -= dropped;
        if (dropped > 0) planes_.dropFront(static_cast<std::size_t>(dropped));
        delivery_.add(planes_, sampleRate_);
        input_.progress();
    }

    // In place of what was lost before the frame in hand.
    void deliverSilence() {
        while (pendingSilence_ > 0) {
            const auto frames = std::min(pendingSilence_, mostFramesPerPacket);
            pendingSilence_ -= frames;
            const auto dropped = std::min(toDrop_, frames);
            toDrop_ -= dropped;
            silence_.loadSilence(static_cast<std::size_t>(channels_),
                                 static_cast<std::size_t>(frames - dropped));
            delivery_.add(silence_, sampleRate_);
            silent_ += frames - dropped;
        }
    }

    void note(int code) {
        if (code == AVERROR(ENOMEM)) throwOutOfMemory();
        if (code >= 0) return;
        if (firstError_ == 0) firstError_ = code;
        isPending_ = true;
    }

    Input input_;
    std::optional<std::int64_t> stated_;  // frames
    Delivery delivery_;
    Codec codec_;
    Packet packet_ = allocated<Packet>(av_packet_alloc());
    Frame frame_ = allocated<Frame>(av_frame_alloc());
    Planes planes_;
    Planes silence_;
    int channels_ = 0;
    int sampleRate_ = 0;
    std::int64_t toDrop_ = 0;
    std::int64_t decoded_ = 0;         // frames, priming included
    std::int64_t pendingSilence_ = 0;  // frames lost since the last one that was decoded
    std::int64_t silent_ = 0;
    std::optional<std::int64_t> nextPosition_;  // of a FLAC frame, in what it counts
    bool isPending_ = false;                    // an error has occurred since the last decoded frame
    bool ended_ = false;
    int firstError_ = 0;
};

}  // namespace

Length measure(const fs::path& file, const AudioIO::ReadOptions& options) {
    setUpLibraryOnce();
    Input input(file, options);
    const std::optional<std::int64_t> stated = input.statedFrames();
    return {stated ? *stated : input.countFrames(), input.sampleRate()};
}

Result decode(const fs::path& file, const Sink& sink, const AudioIO::ReadOptions& options) {
    setUpLibraryOnce();
    return Decoding(file, sink, options).run();
}

}  // namespace quillmere::Decoder
