#include "platform/freedesktop/system_utilities_bus.h"

#include <cstdint>
#include <exception>

#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/running_program_call.h"
#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/freedesktop/single_instance_guard.h"

namespace orvantis::freedesktop {

struct SystemUtilitiesBusCalls {
    static int caffeineOn(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        std::int32_t minutes = -1;
        if (const int r = sd_bus_message_read(call, "i", &minutes); r < 0) return r;
        auto* service = static_cast<SystemUtilitiesBusService*>(userdata);
        return answer(call, error, [&] {
            return service->handlers_.caffeineOn(minutes < 0 ? std::nullopt : std::optional<int>(minutes));
        }, true);
    }
    static int caffeineOff(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<SystemUtilitiesBusService*>(userdata);
        return answer(call, error, [&] { return service->handlers_.caffeineOff(); }, true);
    }
    static int caffeineStatus(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<SystemUtilitiesBusService*>(userdata);
        return answer(call, error, [&] { return service->handlers_.caffeineStatus(); }, true);
    }
    static int lock(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<SystemUtilitiesBusService*>(userdata);
        return answer(call, error, [&] { return service->handlers_.lock(); }, false);
    }

private:
    template <typename Handler>
    static int answer(sd_bus_message* call, sd_bus_error* error, Handler handler, bool withText) {
        SystemUtilitiesAnswer result;
        try {
            result = handler();
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        if (!result.errorName.empty())
            return sd_bus_error_set(error, result.errorName.c_str(), result.errorMessage.c_str());
        return withText ? sd_bus_reply_method_return(call, "s", result.text.c_str())
                        : sd_bus_reply_method_return(call, "");
    }
};

namespace {

const sd_bus_vtable kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("CaffeineOn", "i", SD_BUS_PARAM(minutes), "s", SD_BUS_PARAM(status),
                             SystemUtilitiesBusCalls::caffeineOn, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("CaffeineOff", "", , "s", SD_BUS_PARAM(status), SystemUtilitiesBusCalls::caffeineOff,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("CaffeineStatus", "", , "s", SD_BUS_PARAM(status),
                             SystemUtilitiesBusCalls::caffeineStatus, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Lock", "", "", SystemUtilitiesBusCalls::lock, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

std::unique_ptr<SystemUtilitiesBusService> SystemUtilitiesBusService::exportOn(SingleInstanceGuard& guard,
                                                                               SystemUtilitiesBusHandlers handlers) {
    if (guard.bus_ == nullptr) return nullptr;
    std::unique_ptr<SystemUtilitiesBusService> service(new SystemUtilitiesBusService(std::move(handlers)));
    if (sd_bus_add_object_vtable(guard.bus_, &service->slot_, std::string(kClipboardObjectPath).c_str(),
                                 std::string(kSystemUtilitiesInterface).c_str(), kVtable, service.get()) < 0) {
        return nullptr;
    }
    return service;
}

SystemUtilitiesBusService::~SystemUtilitiesBusService() { sd_bus_slot_unref(slot_); }

SystemUtilitiesReply callSystemUtilities(std::string_view method, std::optional<int> minutes,
                                         std::chrono::milliseconds timeout) {
    using Status = SystemUtilitiesReply::Status;
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    if (!bus) return {Status::NotRunning, {}, {}};
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &raw, std::string(kClipboardBusName).c_str(),
                                       std::string(kClipboardObjectPath).c_str(),
                                       std::string(kSystemUtilitiesInterface).c_str(), std::string(method).c_str()) < 0)
        return {Status::Failed, "could not build the call to the running Orvantis", {}};
    SdBusMessagePtr message(raw);
    sd_bus_message_set_auto_start(message.get(), 0);
    if (method == "CaffeineOn" && sd_bus_message_append(message.get(), "i", static_cast<std::int32_t>(minutes.value_or(-1))) < 0)
        return {Status::Failed, "could not build the call to the running Orvantis", {}};
    SdBusError error;
    sd_bus_message* replyRaw = nullptr;
    const int r =
        sd_bus_call(bus.get(), message.get(), static_cast<std::uint64_t>(perCall.count()), error.get(), &replyRaw);
    SdBusMessagePtr reply(replyRaw);
    if (r < 0) {
        auto failure = classifyRunningProgramCallFailure(r, error.get());
        if (failure.kind == RunningProgramCallFailure::Kind::notRunning) return {Status::NotRunning, {}, {}};
        const bool answered = failure.kind == RunningProgramCallFailure::Kind::programFailed;
        return {Status::Failed, std::move(failure.text),
                answered && error.get()->name != nullptr ? error.get()->name : ""};
    }
    if (method == "Lock") return {Status::Answered, {}, {}};
    const char* text = nullptr;
    if (sd_bus_message_read(reply.get(), "s", &text) < 0 || text == nullptr)
        return {Status::Failed, "the running Orvantis sent a reply of another type", {}};
    return {Status::Answered, text, {}};
}

}  // namespace orvantis::freedesktop
