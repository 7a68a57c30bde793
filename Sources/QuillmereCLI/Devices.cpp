#include <memory>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Network/Device/DeviceChoice.h"
#include "QuillmereCore/Network/Device/GPU.h"

namespace quillmere::cli {
namespace {

using network::ComputeDevice;

void print(const ComputeDevice& device, std::size_t index, bool isAutomatic, Console& console) {
    const auto row = [&](const std::string& label, const std::string& text) {
        constexpr std::size_t labelColumns = 10;
        console.print("   " + labelled(label, labelColumns, text));
    };
    console.print(std::to_string(index) + "  " + printable(device.name()) +
                  (isAutomatic ? "  " + tr("(taken unless --device says otherwise)") : ""));
    row(tr("type"), trTable(rawValue(device.type)));
    if (device.type == ComputeDevice::Type::processor) return;
    row(tr("driver"), device.api + ", " + printable(device.driver));
    row(tr("memory"),
        tr("{0}, tensors up to {1}", byteSize(device.limits.memory), byteSize(device.limits.largestTensor)));
    row(tr("groups"), tr("{0} threads, {1} of shared memory, {2} buffers", device.limits.workGroupThreads,
                         byteSize(device.limits.sharedMemory), device.limits.storageBuffers));
    if (!device.usable()) row(tr("unusable"), printable(Language::text(device.problem)));
}

JSON toJSON(const ComputeDevice& device, std::size_t index, bool isAutomatic) {
    JSON item = JSON::object();
    item["index"] = index;
    item["name"] = device.name();
    item["type"] = rawValue(device.type);
    item["automatic"] = isAutomatic;
    item["usable"] = device.usable();
    if (!device.usable()) item["problem"] = device.problem;
    if (device.type == ComputeDevice::Type::processor) return item;
    item["api"] = device.api;
    item["driver"] = device.driver;
    item["memory"] = device.limits.memory;
    item["largestTensor"] = device.limits.largestTensor;
    item["sharedMemory"] = device.limits.sharedMemory;
    item["workGroupThreads"] = device.limits.workGroupThreads;
    item["workGroups"] = device.limits.workGroups;
    item["storageBuffers"] = device.limits.storageBuffers;
    return item;
}

void listDevices(Console& console) {
    const std::vector<ComputeDevice> devices = GPU::shared().machine().list();
    const network::DeviceChoice choice;
    const ComputeDevice& automatic = choice.in(devices);
    JSON list = JSON::array();
    for (std::size_t index = 0; index < devices.size(); ++index) {
        const ComputeDevice& device = devices[index];
        print(device, index, &device == &automatic, console);
        list.push_back(toJSON(device, index, &device == &automatic));
    }
    JSON result = makeResult("devices");
    result["devices"] = std::move(list);
    console.emit(result);
}

}  // namespace

void addDevices(CLI::App& app, Invocation& invocation) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand("devices", tr("List what can compute, with its limits"));
    addJSON(*command, *json);
    command->callback([json, &invocation] {
        invocation.json = *json;
        invocation.action = [](Console& console, const CancelFlag&) { listDevices(console); };
    });
}

}  // namespace quillmere::cli
