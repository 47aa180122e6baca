#include "platform/freedesktop/pomodoro_bus.h"

#include <exception>

#include "platform/freedesktop/clipboard_bus.h"
#include "platform/freedesktop/running_program_call.h"
#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/freedesktop/single_instance_guard.h"

namespace orvantis::freedesktop {

/// The vtable's handlers; a friend of the service.
struct PomodoroBusCalls {
    template <const char* kAction>
    static int act(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<PomodoroBusService*>(userdata);
        std::optional<std::string> refusal;
        try {
            if (service->handlers_.act) refusal = service->handlers_.act(kAction);
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        if (refusal) return sd_bus_error_set(error, std::string(kPomodoroRefusedError).c_str(), refusal->c_str());
        return sd_bus_reply_method_return(call, "");
    }
    static int status(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<PomodoroBusService*>(userdata);
        std::string line;
        try {
            if (service->handlers_.status) line = service->handlers_.status();
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        return sd_bus_reply_method_return(call, "s", line.c_str());
    }
};

namespace {

constexpr char kStart[] = "start";
constexpr char kStop[] = "stop";
constexpr char kPause[] = "pause";
constexpr char kResume[] = "resume";
constexpr char kSkip[] = "skip";
constexpr char kReset[] = "reset";

const sd_bus_vtable kPomodoroVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Start", "", "", PomodoroBusCalls::act<kStart>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Stop", "", "", PomodoroBusCalls::act<kStop>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Pause", "", "", PomodoroBusCalls::act<kPause>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Resume", "", "", PomodoroBusCalls::act<kResume>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Skip", "", "", PomodoroBusCalls::act<kSkip>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Reset", "", "", PomodoroBusCalls::act<kReset>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Status", "", , "s", SD_BUS_PARAM(line), PomodoroBusCalls::status,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

std::unique_ptr<PomodoroBusService> PomodoroBusService::exportOn(SingleInstanceGuard& guard,
                                                                 PomodoroBusHandlers handlers) {
    if (guard.bus_ == nullptr) return nullptr;
    std::unique_ptr<PomodoroBusService> service(new PomodoroBusService(std::move(handlers)));
    if (sd_bus_add_object_vtable(guard.bus_, &service->slot_, std::string(kClipboardObjectPath).c_str(),
                                 std::string(kPomodoroInterface).c_str(), kPomodoroVtable, service.get()) < 0) {
        return nullptr;
    }
    return service;
}

PomodoroBusService::~PomodoroBusService() { sd_bus_slot_unref(slot_); }

PomodoroBusReply callRunningPomodoro(std::string_view method, std::chrono::milliseconds timeout,
                                     std::string_view busName) {
    using Status = PomodoroBusReply::Status;
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    if (!bus) return {Status::NotRunning, {}};
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &raw, std::string(busName).c_str(),
                                       std::string(kClipboardObjectPath).c_str(),
                                       std::string(kPomodoroInterface).c_str(), std::string(method).c_str()) < 0)
        return {Status::Failed, "could not build the call to the running Orvantis"};
    SdBusMessagePtr message(raw);
    sd_bus_message_set_auto_start(message.get(), 0);
    SdBusError error;
    sd_bus_message* replyRaw = nullptr;
    const int r = sd_bus_call(bus.get(), message.get(), static_cast<std::uint64_t>(perCall.count()), error.get(),
                              &replyRaw);
    SdBusMessagePtr reply(replyRaw);
    if (r < 0) {
        auto failure = classifyRunningProgramCallFailure(r, error.get(), "the running Orvantis has no Pomodoro");
        if (failure.kind == RunningProgramCallFailure::Kind::notRunning) return {Status::NotRunning, {}};
        return {Status::Failed, std::move(failure.text)};
    }
    if (method != "Status") return {Status::Answered, {}};
    const char* line = nullptr;
    if (sd_bus_message_read(reply.get(), "s", &line) < 0 || line == nullptr)
        return {Status::Failed, "the running Orvantis sent a reply of another type"};
    return {Status::Answered, line};
}

}  // namespace orvantis::freedesktop
