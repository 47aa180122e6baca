#include "platform/freedesktop/shell_bus.h"

#include <exception>

#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/running_program_call.h"
#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/freedesktop/single_instance_guard.h"

namespace orvantis::freedesktop {

/// The vtable's handler; a friend of the service.
struct ShellBusCalls {
    static int show(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<ShellBusService*>(userdata);
        const char* window = nullptr;
        if (const int r = sd_bus_message_read(call, "s", &window); r < 0 || window == nullptr)
            return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "Show takes the name of a window");
        std::optional<std::string> refusal;
        try {
            if (service->show_) refusal = service->show_(window);
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        if (refusal) return sd_bus_error_set(error, std::string(kShellUnknownWindowError).c_str(), refusal->c_str());
        return sd_bus_reply_method_return(call, "");
    }
};

namespace {

const sd_bus_vtable kShellVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("Show", "s", SD_BUS_PARAM(window), "", , ShellBusCalls::show,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

std::unique_ptr<ShellBusService> ShellBusService::exportOn(SingleInstanceGuard& guard, ShowHandler show) {
    if (guard.bus_ == nullptr) return nullptr;
    std::unique_ptr<ShellBusService> service(new ShellBusService(std::move(show)));
    if (sd_bus_add_object_vtable(guard.bus_, &service->slot_, std::string(kClipboardObjectPath).c_str(),
                                 std::string(kShellInterface).c_str(), kShellVtable, service.get()) < 0) {
        return nullptr;
    }
    return service;
}

ShellBusService::~ShellBusService() { sd_bus_slot_unref(slot_); }

ShellBusReply callRunningShell(std::string_view window, std::chrono::milliseconds timeout, std::string_view busName) {
    using Status = ShellBusReply::Status;
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    if (!bus) return {Status::NotRunning, {}};
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &raw, std::string(busName).c_str(),
                                       std::string(kClipboardObjectPath).c_str(), std::string(kShellInterface).c_str(),
                                       "Show") < 0)
        return {Status::Failed, "could not build the call to the running Orvantis"};
    SdBusMessagePtr message(raw);
    sd_bus_message_set_auto_start(message.get(), 0);
    if (sd_bus_message_append(message.get(), "s", std::string(window).c_str()) < 0)
        return {Status::Failed, "could not build the call to the running Orvantis"};
    SdBusError error;
    sd_bus_message* replyRaw = nullptr;
    const int r = sd_bus_call(bus.get(), message.get(), static_cast<std::uint64_t>(perCall.count()), error.get(),
                              &replyRaw);
    SdBusMessagePtr reply(replyRaw);
    if (r >= 0) return {Status::Answered, {}};
    auto failure = classifyRunningProgramCallFailure(r, error.get(), "the running Orvantis cannot show windows");
    if (failure.kind == RunningProgramCallFailure::Kind::notRunning) return {Status::NotRunning, {}};
    return {Status::Failed, std::move(failure.text)};
}

}  // namespace orvantis::freedesktop
