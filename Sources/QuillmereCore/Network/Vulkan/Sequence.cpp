#include "QuillmereCore/Network/Vulkan/Sequence.h"

#include <algorithm>

namespace quillmere::network::vulkan {
namespace {

constexpr VkPipelineStageFlags workStages =
    VK_PIPELINE_STAGE_COMPUTE_SHADER_BIT | VK_PIPELINE_STAGE_TRANSFER_BIT;
constexpr VkAccessFlags workAccess = VK_ACCESS_SHADER_READ_BIT | VK_ACCESS_SHADER_WRITE_BIT |
                                     VK_ACCESS_TRANSFER_READ_BIT | VK_ACCESS_TRANSFER_WRITE_BIT;
constexpr std::uint64_t longestLine = 65535;  // groups along an axis that every device has

VkDeviceSize bytes(std::uint64_t floats) {
    return floats * sizeof(float);
}

}  // namespace

Range rangeOf(const Buffer& buffer, std::uint64_t count) {
    require(bytes(count) <= buffer.bytes(), "a range goes beyond its buffer");
    return {&buffer, 0, count};
}

Range rangeOf(const Buffer& buffer) {
    return {&buffer, 0, buffer.bytes() / sizeof(float)};
}

std::array<std::uint32_t, 3> linearGroups(std::uint64_t count) {
    const std::uint64_t rows = (count + longestLine - 1) / longestLine;
    return {static_cast<std::uint32_t>((count + rows - 1) / rows), static_cast<std::uint32_t>(rows), 1};
}

Access Sequence::access(const Range& range, bool writes) {
    const auto found = std::find(buffers_.begin(), buffers_.end(), range.buffer->get());
    const auto number = static_cast<std::uint32_t>(found - buffers_.begin());
    if (found == buffers_.end()) buffers_.push_back(range.buffer->get());
    return {number, bytes(range.first), bytes(range.first + range.count), writes};
}

void Sequence::add(Operation operation, std::vector<Access> accesses) {
    require(commands_ == VK_NULL_HANDLE, "an operation comes after the recording");
    operations_.push_back(std::move(operation));
    accesses_.push_back(std::move(accesses));
}

void Sequence::dispatch(Dispatch dispatch) {
    require(dispatch.buffers.size() == bindingCount(dispatch.shader), "wrong number of buffers of a shader");
    std::vector<Access> accesses;
    for (const Bound& bound : dispatch.buffers)
        accesses.push_back(access(bound.range, bound.writes));
    add({.kind = Operation::Kind::dispatch, .dispatch = std::move(dispatch)}, std::move(accesses));
}

void Sequence::copy(const Range& source, const Range& destination) {
    require(source.count == destination.count, "a copy between ranges of different sizes");
    add({.kind = Operation::Kind::copy, .source = source, .destination = destination},
        {access(source, false), access(destination, true)});
}

void Sequence::clear(const Range& range) {
    add({.kind = Operation::Kind::clear, .destination = range}, {access(range, true)});
}

void Sequence::makePools() {
    VkCommandPoolCreateInfo commandInfo{};
    commandInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    commandInfo.queueFamilyIndex = context_.queueFamily();
    commandPool_ = context_.make<CommandPoolHandle>(vkCreateCommandPool, commandInfo,
                                                    translatable("creating a command pool"));
    VkCommandBufferAllocateInfo commands{};
    commands.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    commands.commandPool = commandPool_.get();
    commands.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    commands.commandBufferCount = 1;
    context_.check(vkAllocateCommandBuffers(context_.device(), &commands, &commands_),
                   translatable("creating a command buffer"));

    std::uint32_t sets = 0;
    std::uint32_t descriptors = 0;
    for (const Operation& operation : operations_) {
        if (operation.kind != Operation::Kind::dispatch) continue;
        ++sets;
        descriptors += static_cast<std::uint32_t>(operation.dispatch.buffers.size());
    }
    if (sets > 0) {
        const VkDescriptorPoolSize size{VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, descriptors};
        VkDescriptorPoolCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
        info.maxSets = sets;
        info.poolSizeCount = 1;
        info.pPoolSizes = &size;
        descriptorPool_ = context_.make<DescriptorPoolHandle>(vkCreateDescriptorPool, info,
                                                              translatable("creating a descriptor pool"));
    }
    if (mode_ == Mode::profiled && context_.timestampPeriod() > 0) {
        VkQueryPoolCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO;
        info.queryType = VK_QUERY_TYPE_TIMESTAMP;
        info.queryCount = static_cast<std::uint32_t>(operations_.size()) + 1;
        queryPool_ =
            context_.make<QueryPoolHandle>(vkCreateQueryPool, info, translatable("creating a clock"));
    }
}

void Sequence::record() {
    makePools();
    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    context_.check(vkBeginCommandBuffer(commands_, &begin), translatable("beginning to record"));
    if (queryPool_.get() != VK_NULL_HANDLE)
        vkCmdResetQueryPool(commands_, queryPool_.get(), 0,
                            static_cast<std::uint32_t>(operations_.size()) + 1);
    barrier(workStages, workAccess);  // after whatever ran before
    stamp();
    bool isFirst = true;
    for (const std::vector<std::size_t>& level : levelsOf(accesses_)) {
        if (mode_ == Mode::plain && !isFirst) barrier(workStages, workAccess);
        isFirst = false;
        for (const std::size_t i : level) {
            record(operations_[i]);
            if (mode_ != Mode::profiled) continue;
            barrier(workStages, workAccess);
            names_.push_back(operations_[i].kind == Operation::Kind::dispatch ? operations_[i].dispatch.name
                                                                              : "copy");
            stamp();
        }
    }
    barrier(VK_PIPELINE_STAGE_HOST_BIT, VK_ACCESS_HOST_READ_BIT);
    context_.check(vkEndCommandBuffer(commands_), translatable("ending the recording"));
    context_.savePipelines();
}

void Sequence::barrier(VkPipelineStageFlags after, VkAccessFlags access) {
    VkMemoryBarrier memory{};
    memory.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER;
    memory.srcAccessMask = VK_ACCESS_SHADER_WRITE_BIT | VK_ACCESS_TRANSFER_WRITE_BIT;
    memory.dstAccessMask = access;
    vkCmdPipelineBarrier(commands_, workStages, after, 0, 1, &memory, 0, nullptr, 0, nullptr);
    ++barriers_;
}

void Sequence::stamp() {
    if (queryPool_.get() != VK_NULL_HANDLE)
        vkCmdWriteTimestamp(commands_, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, queryPool_.get(), stamps_++);
}

void Sequence::record(const Operation& operation) {
    const Range& to = operation.destination;
    switch (operation.kind) {
        case Operation::Kind::dispatch:
            recordDispatch(operation.dispatch);
            return;
        case Operation::Kind::copy: {
            const VkBufferCopy region{bytes(operation.source.first), bytes(to.first), bytes(to.count)};
            vkCmdCopyBuffer(commands_, operation.source.buffer->get(), to.buffer->get(), 1, &region);
            return;
        }
        case Operation::Kind::clear:
            vkCmdFillBuffer(commands_, to.buffer->get(), bytes(to.first), bytes(to.count), 0);
            return;
    }
}

void Sequence::recordDispatch(const Dispatch& dispatch) {
    const ComputeDevice& device = context_.description();
    for (std::size_t axis = 0; axis < dispatch.groups.size(); ++axis) {
        if (dispatch.groups[axis] > device.limits.workGroups[axis])
            throw DeviceError(
                "{0} cannot compute images of this size. Choose shorter clips, or another device.",
                device.name());
    }
    const Pipeline pipeline = context_.pipeline(dispatch.shader, dispatch.constants);
    const VkDescriptorSet set = makeSet(dispatch, pipeline.setLayout);
    vkCmdBindPipeline(commands_, VK_PIPELINE_BIND_POINT_COMPUTE, pipeline.pipeline);
    vkCmdBindDescriptorSets(commands_, VK_PIPELINE_BIND_POINT_COMPUTE, pipeline.layout, 0, 1, &set, 0,
                            nullptr);
    if (!dispatch.arguments.empty()) {
        vkCmdPushConstants(commands_, pipeline.layout, VK_SHADER_STAGE_COMPUTE_BIT, 0,
                           static_cast<std::uint32_t>(dispatch.arguments.size() * sizeof(std::uint32_t)),
                           dispatch.arguments.data());
    }
    vkCmdDispatch(commands_, dispatch.groups[0], dispatch.groups[1], dispatch.groups[2]);
}

VkDescriptorSet Sequence::makeSet(const Dispatch& dispatch, VkDescriptorSetLayout layout) {
    VkDescriptorSetAllocateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    info.descriptorPool = descriptorPool_.get();
    info.descriptorSetCount = 1;
    info.pSetLayouts = &layout;
    VkDescriptorSet set = VK_NULL_HANDLE;
    context_.check(vkAllocateDescriptorSets(context_.device(), &info, &set), translatable("binding buffers"));
    std::vector<VkDescriptorBufferInfo> buffers;
    for (const Bound& bound : dispatch.buffers) {
        const Range& range = bound.range;
        buffers.push_back({range.buffer->get(), bytes(range.first), bytes(range.count)});
    }
    VkWriteDescriptorSet write{};
    write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
    write.dstSet = set;
    write.descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
    write.descriptorCount = static_cast<std::uint32_t>(buffers.size());  // from binding 0 on
    write.pBufferInfo = buffers.data();
    vkUpdateDescriptorSets(context_.device(), 1, &write, 0, nullptr);
    return set;
}

void Sequence::run() {
    require(commands_ != VK_NULL_HANDLE, "a sequence runs before it is recorded");
    context_.run(commands_);
}

std::vector<std::pair<Shader, std::vector<std::uint32_t>>> Sequence::pipelines() const {
    std::vector<std::pair<Shader, std::vector<std::uint32_t>>> result;
    for (const Operation& operation : operations_) {
        if (operation.kind == Operation::Kind::dispatch)
            result.emplace_back(operation.dispatch.shader, operation.dispatch.constants);
    }
    return result;
}

std::vector<OperationTime> Sequence::times() const {
    if (queryPool_.get() == VK_NULL_HANDLE) return {};
    std::vector<std::uint64_t> ticks(stamps_);
    context_.check(
        vkGetQueryPoolResults(context_.device(), queryPool_.get(), 0, stamps_,
                              ticks.size() * sizeof(std::uint64_t), ticks.data(), sizeof(std::uint64_t),
                              VK_QUERY_RESULT_64_BIT | VK_QUERY_RESULT_WAIT_BIT),
        translatable("reading the clock"));
    std::vector<OperationTime> times;
    for (std::size_t i = 0; i < names_.size(); ++i) {
        const auto elapsed = static_cast<double>(ticks[i + 1] - ticks[i]);
        times.push_back({names_[i], elapsed * context_.timestampPeriod() * 1e-6});
    }
    return times;
}

}  // namespace quillmere::network::vulkan
