#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Schedule.h"

namespace quillmere::network::vulkan {

// Part of a buffer, counted in floats.
struct Range {
    const Buffer* buffer = nullptr;
    std::uint64_t first = 0, count = 0;

    [[nodiscard]] bool isEmpty() const { return buffer == nullptr; }
};

// The first count floats of buffer.
[[nodiscard]] Range rangeOf(const Buffer& buffer, std::uint64_t count);
[[nodiscard]] Range rangeOf(const Buffer& buffer);

// A range bound to a shader, with what the shader does to it.
struct Bound {
    Range range;
    bool reads = false, writes = false;
};
[[nodiscard]] inline Bound in(const Range& range) {
    return {range, true, false};
}
[[nodiscard]] inline Bound out(const Range& range) {
    return {range, false, true};
}
[[nodiscard]] inline Bound inOut(const Range& range) {
    return {range, true, true};
}

struct Dispatch {
    std::string name;  // in profiles
    Shader shader{};
    std::vector<std::uint32_t> constants{};  // specialization
    std::vector<Bound> buffers{};
    std::vector<std::uint32_t> arguments{};  // push constants, fixed once recorded
    std::array<std::uint32_t, 3> groups{1, 1, 1};
};

// Work groups for count items or groups along one line. Shaders number them group.y * groups.x + group.x.
[[nodiscard]] std::array<std::uint32_t, 3> linearGroups(std::uint64_t count);

struct OperationTime {
    std::string name;
    double milliseconds = 0;
};

// Operations that run again and again: stated once, recorded as one command buffer, submitted at each run.
//
// The host may write the upload buffers before a run and read the download buffers after it.
// Threads: one thread at a time.
class Sequence {
public:
    enum class Mode {
        plain,
        profiled,         // a barrier after every operation, and the time of each
        withoutBarriers,  // wrong on purpose: shows that validation notices
    };

    explicit Sequence(Context& context, Mode mode = Mode::plain) : context_(context), mode_(mode) {}

    void dispatch(Dispatch dispatch);
    // Between ranges of one size.
    void copy(const Range& source, const Range& destination);
    void clear(const Range& range);
    // Ends the statement of operations. Throws DeviceError if a dispatch is larger than the device allows.
    void record();

    // Requires record(). Returns when all is done. Throws DeviceError.
    void run();

    // Of the last run; empty unless profiled and the device keeps time.
    [[nodiscard]] std::vector<OperationTime> times() const;
    // What every dispatch asks Context::pipeline for.
    [[nodiscard]] std::vector<std::pair<Shader, std::vector<std::uint32_t>>> pipelines() const;
    [[nodiscard]] std::size_t operations() const { return operations_.size(); }
    [[nodiscard]] std::size_t barriers() const { return barriers_; }

private:
    struct Operation {
        enum class Kind { dispatch, copy, clear };
        Kind kind{};
        Dispatch dispatch{};
        Range source{}, destination{};
    };

    void add(Operation operation, std::vector<Access> accesses);
    [[nodiscard]] Access access(const Range& range, bool writes);
    void makePools();
    void record(const Operation& operation);
    void recordDispatch(const Dispatch& dispatch);
    [[nodiscard]] VkDescriptorSet makeSet(const Dispatch& dispatch, VkDescriptorSetLayout layout);
    void barrier(VkPipelineStageFlags after, VkAccessFlags access);
    void stamp();

    Context& context_;
    Mode mode_;
    std::vector<Operation> operations_;
    std::vector<std::vector<Access>> accesses_;
    std::vector<VkBuffer> buffers_;   // position: the number in Access
    std::vector<std::string> names_;  // of the timestamps after the first, in the order of running
    DescriptorPoolHandle descriptorPool_;
    CommandPoolHandle commandPool_;
    QueryPoolHandle queryPool_;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
    std::uint32_t stamps_ = 0;
    std::size_t barriers_ = 0;
};

}  // namespace quillmere::network::vulkan
