// The validation layers watch whole steps and must have nothing to say; and they do speak when they should.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/SoftwareDevice.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::network::vulkan {
namespace {

using ::testing::AnyOf;
using ::testing::Contains;
using testing::DeviceArrays;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::NetworkShape;
using testing::StepInput;

// A device under validation, with what the layers say.
class WatchedDevice {
public:
    explicit WatchedDevice(Validation::Extra extra)
        : context_(std::make_shared<Context>(testing::softwareDevice(),
                                             Validation{extra, [this](const std::string& message) {
                                                            const MutexLock lock(mutex_);
                                                            messages_.push_back(message);
                                                        }})) {}

    [[nodiscard]] const std::shared_ptr<Context>& context() const { return context_; }
    // Those about the device's use. Ends the device, which nothing may use any more: newer layers have a
    // thread that speaks of what a shader did, and it has come to its end then. What the layers announce of
    // their own settings as warnings is left out.
    [[nodiscard]] std::vector<std::string> messages() {
        context_.reset();
        const MutexLock lock(mutex_);
        std::vector<std::string> result;
        for (const std::string& message : messages_) {
            const bool ofSettings = std::ranges::any_of(announcements, [&](const char* announcement) {
                return message.find(announcement) != std::string::npos;
            });
            if (!ofSettings) result.push_back(message);
        }
        return result;
    }

private:
    static constexpr std::array announcements{"UNASSIGNED-GPU-Assisted Validation Warning",
                                              "Internal Warning",
                                              "Both GPU Assisted Validation and Normal Core Check"};

    Mutex mutex_;
    std::vector<std::string> messages_ QUILLMERE_GUARDED_BY(mutex_);
    std::shared_ptr<Context> context_;
};

class Validated : public ::testing::TestWithParam<Validation::Extra> {};

TEST_P(Validated, TrainingEncodingAndDecodingGiveNoMessage) {
    const NetworkShape shape{32, 32, 5, 2};
    WatchedDevice device(GetParam());
    const StepInput input(shape, 3);
    std::vector<float> mean(10), logVariance(10), images(input.x.size());
    for (const Purpose purpose : {Purpose::training, Purpose::inference}) {
        VulkanExecutor executor(device.context(), shape.plan(), purpose);
        executor.setWeights(testing::busyWeights(shape, 1));
        if (purpose == Purpose::training) executor.step(input.x, input.eps, 1e-3F, 0.01F);
        executor.encode(input.x, mean, logVariance);
        executor.decode(input.eps, images);
        executor.encode(std::span(input.x).first(shape.imageSize()), std::span(mean).first(5), {});
        executor.decode(std::span(input.eps).first(5), std::span(images).first(shape.imageSize()));
        (void)executor.weights();
    }
    EXPECT_THAT(device.messages(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Layers, Validated,
                         ::testing::Values(Validation::Extra::none, Validation::Extra::synchronization,
                                           Validation::Extra::gpuAssisted),
                         [](const auto& test) {
                             switch (test.param) {
                                 case Validation::Extra::none:
                                     return "Core";
                                 case Validation::Extra::synchronization:
                                     return "Synchronization";
                                 case Validation::Extra::gpuAssisted:
                                     return "GPUAssisted";
                             }
                             return "";
                         });

TEST(Validation, NoticesMissingBarriers) {
    WatchedDevice device(Validation::Extra::synchronization);
    (void)VulkanExecutor(device.context(), NetworkShape{32, 32, 4, 1}.plan(), Purpose::training,
                         Sequence::Mode::withoutBarriers);
    EXPECT_THAT(device.messages(), Contains(AnyOf(HasSubstr("SYNC-HAZARD-READ-AFTER-WRITE"),
                                                  HasSubstr("READ_AFTER_WRITE hazard"))));
}

TEST(Validation, NoticesAWrongUseOfTheInterface) {
    WatchedDevice device(Validation::Extra::none);
    {
        Tensors tensors(*device.context());
        const Range host = tensors.make(16, Buffer::Place::upload);  // no shader may bind it
        const Range result = tensors.make(16);
        Sequence sequence(*device.context());
        sequence.dispatch({.name = "sum",
                           .shader = Shader::sumSlices,
                           .constants = {0},
                           .buffers = {in(host), out(result), in(host)},
                           .arguments = {1, 16, 1}});
        sequence.record();
    }
    EXPECT_THAT(device.messages(), Contains(HasSubstr("VUID-")));
}

std::vector<std::string> messagesOfAReadBeyondABuffer() {
    WatchedDevice device(Validation::Extra::gpuAssisted);
    {
        DeviceArrays arrays(*device.context());
        const Range result = arrays.make(16);
        // Claims more slices than the buffer holds.
        arrays.operations().addSumSlices("sum", {arrays.up(std::vector<float>(16)), 1000}, result, {});
        (void)arrays.run(result);
    }
    return device.messages();
}

TEST(Validation, NoticesAReadBeyondABuffer) {
    // The thread of newer layers may come too late on a busy machine: what it has not said by the device's
    // end, it never says.
    constexpr int attempts = 10;
    std::vector<std::string> messages;
    for (int attempt = 0; attempt < attempts && messages.empty(); ++attempt)
        messages = messagesOfAReadBeyondABuffer();
    EXPECT_THAT(messages, Contains(HasSubstr("ut of bounds")));
}

}  // namespace
}  // namespace quillmere::network::vulkan
