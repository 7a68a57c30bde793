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
#include <fstream>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

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

// FFmpeg's default lets a damaged file ask for 2 GiB in one piece.
constexpr std::size_t largestAllocation = std::size_t{256} << 20;

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

std::string describe(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

void check(int code) {
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (code < 0) throw Error(describe(code));
}

void setUpLibraryOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(largestAllocation);
    });
}

// A pipe would block, a device may never end.
void requireRegularFile(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (error) throw Error(error.message());
    if (!fs::is_regular_file(status)) throw Error("it is not a regular file");
}

Format openFormat(const fs::path& file) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    av_dict_set(&options, "format_whitelist", "wav,w64,aiff,flac,mp3,aac,caf,mov", 0);
    // More probing only guards against compressed streams disguised as PCM, at 14 times the cost.
    av_dict_set(&options, "max_probe_packets", "1", 0);
    av_dict_set(&options, "max_streams", "16", 0);
    AVFormatContext* context = nullptr;
    const std::string url = "file:" + file.string();  // the prefix keeps colons in names from being schemes
    const int code = avformat_open_input(&context, url.c_str(), nullptr, &options);
    av_dict_free(&options);
    check(code);
    return Format(context);
}

// A CAF file's packet table header: how many frames are meant to be heard, and how many come before them.
struct PacketTable {
    std::int64_t validFrames = 0;
    std::int64_t primingFrames = 0;
};

std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

// FFmpeg 5.1 skips over these numbers. Chunks are a four-letter type and a 64-bit size; see Apple's Core
// Audio Format specification.
std::optional<PacketTable> readPacketTable(const fs::path& file) {
    constexpr int mostChunks = 64;
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(8);  // file header
    for (int i = 0; i < mostChunks; ++i) {
        std::array<char, 12> header{};
        if (!stream.read(header.data(), header.size())) return std::nullopt;
        const std::string_view type(header.data(), 4);
        const auto size = static_cast<std::int64_t>(bigEndian({header.data() + 4, 8}));
        if (type == "pakt") {
            std::array<char, 24> table{};
            if (!stream.read(table.data(), table.size())) return std::nullopt;
            const std::string_view bytes(table.data(), table.size());
            const auto valid = static_cast<std::int64_t>(bigEndian(bytes.substr(8, 8)));
            const auto priming = static_cast<std::int32_t>(bigEndian(bytes.substr(16, 4)));
            if (valid <= 0) return std::nullopt;
            return PacketTable{valid, std::max(priming, 0)};
        }
        if (size < 0) return std::nullopt;  // audio data up to the end of the file
        stream.seekg(size, std::ios::cur);
    }
    return std::nullopt;
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
    explicit Input(const fs::path& file) {
        setUpLibraryOnce();
        requireRegularFile(file);
        format_ = openFormat(file);
        dataStart_ = avio_tell(format_->pb);
        check(avformat_find_stream_info(format_.get(), nullptr));
        chooseStream();
        if (containerIs("caf")) packetTable_ = readPacketTable(file);
    }

    [[nodiscard]] const AVStream& stream() const { return *stream_; }
    [[nodiscard]] const AVCodec& codec() const { return *codec_; }
    [[nodiscard]] int sampleRate() const { return stream_->codecpar->sample_rate; }

    // Frames to leave out at the start, given the first packet.
    [[nodiscard]] std::int64_t primingFrames(const AVPacket& first) const {
        const bool demuxerSkips = skippedFrames(first).has_value();
        return packetTable_ && !demuxerSkips ? packetTable_->primingFrames : 0;
    }

    // What the container says of its length, where it can be believed.
    [[nodiscard]] std::optional<std::int64_t> statedFrames() const {
        const std::int64_t size = std::max<std::int64_t>(avio_size(format_->pb), 0);
        const auto stated = packetTable_ ? packetTable_->validFrames : statedDuration();
        if (!stated || *stated > size * mostFramesPerByte) return std::nullopt;
        if (const int bits = av_get_bits_per_sample(stream_->codecpar->codec_id); bits > 0) {
            // A cut file holds less than its header says.
            const int channels = stream_->codecpar->ch_layout.nb_channels;
            return std::min(*stated, std::max<std::int64_t>(size - dataStart_, 0) * 8 / bits / channels);
        }
        return stated;
    }

    // The sum of the packets' lengths. Reads the file to its end.
    [[nodiscard]] std::int64_t countFrames() {
        const Packet packet = allocated<Packet>(av_packet_alloc());
        const AVRational frameTime{1, sampleRate()};
        std::int64_t frames = 0;
        while (readPacket(*packet) >= 0) {
            if ((packet->flags & AV_PKT_FLAG_DISCARD) == 0) {
                frames += av_rescale_q(packet->duration, stream_->time_base, frameTime);
                frames -= skippedFrames(*packet).value_or(0);
            }
            av_packet_unref(packet.get());
        }
        return std::max<std::int64_t>(frames, 0);
    }

    // The stream's next packet; a negative code at the end and on errors.
    int readPacket(AVPacket& packet) {
        for (;;) {
            const int code = av_read_frame(format_.get(), &packet);
            if (code < 0 || packet.stream_index == stream_->index) return code;
            av_packet_unref(&packet);
        }
    }

private:
    void chooseStream() {
        const int index = av_find_best_stream(format_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, &codec_, 0);
        if (index < 0 || codec_ == nullptr) throw Error("it has no audio that can be decoded");
        const std::span streams(format_->streams, format_->nb_streams);
        for (AVStream* const other : streams)
            other->discard = AVDISCARD_ALL;  // cover art
        stream_ = streams[static_cast<std::size_t>(index)];
        stream_->discard = AVDISCARD_DEFAULT;
        if (stream_->codecpar->ch_layout.nb_channels <= 0) throw Error("it has no channels");
        if (sampleRate() < lowestRate || sampleRate() > highestRate) {
            throw Error("its sample rate of " + std::to_string(sampleRate()) + " Hz is not supported");
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

    Format format_;
    const AVCodec* codec_ = nullptr;
    AVStream* stream_ = nullptr;
    std::int64_t dataStart_ = 0;  // bytes
    std::optional<PacketTable> packetTable_;
};

// Decoded frames of any sample format as one float array per channel.
class Planes {
public:
    // False when the frame's sample format is none of ours.
    bool load(const AVFrame& frame) {
        channels_.resize(static_cast<std::size_t>(frame.ch_layout.nb_channels));
        for (std::vector<float>& channel : channels_)
            channel.resize(static_cast<std::size_t>(frame.nb_samples));
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

    // Removes the first frames of what was loaded.
    void dropFront(std::size_t frames) {
        for (std::vector<float>& channel : channels_)
            channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(frames));
    }

    [[nodiscard]] std::span<const std::vector<float>> channels() const { return channels_; }

private:
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

// One pass over a file's packets.
class Decoding {
public:
    Decoding(const fs::path& file, const Sink& sink)
        : input_(file), sink_(sink), codec_(allocated<Codec>(avcodec_alloc_context3(&input_.codec()))) {
        check(avcodec_parameters_to_context(codec_.get(), input_.stream().codecpar));
        codec_->pkt_timebase = input_.stream().time_base;
        codec_->thread_count = 1;
        check(avcodec_open2(codec_.get(), &input_.codec(), nullptr));
    }

    Result run() {
        const std::optional<std::int64_t> stated = input_.statedFrames();
        readPackets();
        if (!ended_) send(nullptr);  // what the decoder still holds
        Result result;
        result.sampleRate = sampleRate_ > 0 ? sampleRate_ : input_.sampleRate();
        if (stated && delivered_ - *stated <= longestPadding) {
            result.padding = std::max<std::int64_t>(delivered_ - *stated, 0);
        }
        if (firstError_ < 0) result.error = describe(firstError_);
        return result;
    }

private:
    void readPackets() {
        bool isFirst = true;
        int code = 0;
        while (!ended_ && (code = input_.readPacket(*packet_)) >= 0) {
            if (std::exchange(isFirst, false)) toDrop_ = input_.primingFrames(*packet_);
            send(packet_.get());
            av_packet_unref(packet_.get());
        }
        if (code != AVERROR_EOF) note(code);
    }

    // A packet that cannot be decoded is left out, as players do.
    void send(const AVPacket* packet) {
        note(avcodec_send_packet(codec_.get(), packet));
        int code = 0;
        while (!ended_ && (code = avcodec_receive_frame(codec_.get(), frame_.get())) >= 0) {
            deliver(*frame_);
            av_frame_unref(frame_.get());
        }
        if (code != AVERROR(EAGAIN) && code != AVERROR_EOF) note(code);
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
        const auto dropped = std::min<std::int64_t>(toDrop_, frame.nb_samples);
        toDrop_ -= dropped;
        if (dropped > 0) planes_.dropFront(static_cast<std::size_t>(dropped));
        const std::int64_t frames = frame.nb_samples - dropped;
        delivered_ += frames;
        if (frames > 0) sink_(planes_.channels(), static_cast<std::size_t>(frames));
    }

    void note(int code) {
        if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
        if (code < 0 && firstError_ == 0) firstError_ = code;
    }

    Input input_;
    const Sink& sink_;
    Codec codec_;
    Packet packet_ = allocated<Packet>(av_packet_alloc());
    Frame frame_ = allocated<Frame>(av_frame_alloc());
    Planes planes_;
    int channels_ = 0;
    int sampleRate_ = 0;
    std::int64_t toDrop_ = 0;
    std::int64_t delivered_ = 0;
    bool ended_ = false;
    int firstError_ = 0;
};

}  // namespace

Length measure(const fs::path& file) {
    Input input(file);
    const std::optional<std::int64_t> stated = input.statedFrames();
    return {stated ? *stated : input.countFrames(), input.sampleRate()};
}

Result decode(const fs::path& file, const Sink& sink) {
    return Decoding(file, sink).run();
}

}  // namespace quillmere::Decoder
