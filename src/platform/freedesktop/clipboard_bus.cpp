#include "platform/freedesktop/clipboard_bus.h"

#include <cerrno>
#include <cstdint>
#include <exception>
#include <string>

#include "platform/freedesktop/running_program_call.h"
#include "platform/freedesktop/sd_bus_handles.h"
#include "platform/freedesktop/single_instance_guard.h"

namespace orvantis::freedesktop {

/// The method handlers of the vtable; a friend of the service, so they reach its handlers.
struct ClipboardBusCalls {
    /// Room for the reply's header and the string's length and end, on top of the listing.
    static constexpr std::size_t kReplyHeaderAllowance = 4096;

    static int list(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        return answerListing(call, static_cast<ClipboardBusService*>(userdata), "", error);
    }

    static int search(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        const char* text = nullptr;
        if (const int r = sd_bus_message_read(call, "s", &text); r < 0) return r;
        return answerListing(call, static_cast<ClipboardBusService*>(userdata), text, error);
    }

    static int clear(sd_bus_message* call, void* userdata, sd_bus_error* error) {
        auto* service = static_cast<ClipboardBusService*>(userdata);
        bool cleared = false;
        try {
            cleared = service->handlers_.clear && service->handlers_.clear();
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        if (!cleared) return noHistory(error);
        return sd_bus_reply_method_return(call, "");
    }

private:
    static int answerListing(sd_bus_message* call, ClipboardBusService* service, std::string_view search,
                             sd_bus_error* error) {
        std::optional<std::string> listing;
        try {
            if (service->handlers_.list) listing = service->handlers_.list(search);
        } catch (const std::exception& e) {
            return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, e.what());
        }
        if (!listing) return noHistory(error);
        // The reply carries the listing, its length and its end, and a header of a few hundred
        // bytes. A message beyond the limit would fail on one side or the other of the bus; the
        // caller is told so by name before anything that large is built.
        if (listing->size() + kReplyHeaderAllowance > service->messageSizeLimit_) return tooLarge(*listing, error);
        const int r = sd_bus_reply_method_return(call, "s", listing->c_str());
        if (r == -ENOBUFS || r == -EMSGSIZE) return tooLarge(*listing, error);
        return r;
    }

    static int tooLarge(const std::string& listing, sd_bus_error* error) {
        const std::string message =
            "the listing of " + std::to_string(listing.size()) + " bytes is larger than one bus message";
        return sd_bus_error_set(error, std::string(kReplyTooLargeError).c_str(), message.c_str());
    }

    static int noHistory(sd_bus_error* error) {
        return sd_bus_error_set(error, std::string(kNoClipboardHistoryError).c_str(),
                                "Orvantis runs without a clipboard history");
    }
};

namespace {

const sd_bus_vtable kClipboardVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD_WITH_NAMES("List", "", , "s", SD_BUS_PARAM(items), ClipboardBusCalls::list,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD_WITH_NAMES("Search", "s", SD_BUS_PARAM(text), "s", SD_BUS_PARAM(items), ClipboardBusCalls::search,
                             SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Clear", "", "", ClipboardBusCalls::clear, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

ClipboardBusReply call(std::string_view method, std::optional<std::string_view> argument,
                       std::chrono::milliseconds timeout, std::string_view busName) {
    const auto perCall = std::chrono::duration_cast<std::chrono::microseconds>(timeout);
    SdBusPtr bus = openSessionBus(perCall);
    if (!bus) return {ClipboardBusReply::Status::NotRunning, {}};
    sd_bus_message* raw = nullptr;
    if (sd_bus_message_new_method_call(bus.get(), &raw, std::string(busName).c_str(),
                                       std::string(kClipboardObjectPath).c_str(),
                                       std::string(kClipboardInterface).c_str(), std::string(method).c_str()) < 0) {
        return {ClipboardBusReply::Status::Failed, "could not build the call to the running Orvantis"};
    }
    SdBusMessagePtr message(raw);
    // Nobody owning the name means the program is not running; the bus must not start anything.
    sd_bus_message_set_auto_start(message.get(), 0);
    if (argument && sd_bus_message_append(message.get(), "s", std::string(*argument).c_str()) < 0) {
        return {ClipboardBusReply::Status::Failed, "could not build the call to the running Orvantis"};
    }
    SdBusError error;
    sd_bus_message* replyRaw = nullptr;
    const int r = sd_bus_call(bus.get(), message.get(), static_cast<std::uint64_t>(perCall.count()), error.get(),
                              &replyRaw);
    SdBusMessagePtr reply(replyRaw);
    if (r < 0) {
        if (sd_bus_error_has_name(error.get(), std::string(kReplyTooLargeError).c_str())) {
            return {ClipboardBusReply::Status::TooLarge, error.get()->message != nullptr ? error.get()->message : ""};
        }
        auto failure = classifyRunningProgramCallFailure(r, error.get());
        switch (failure.kind) {
            case RunningProgramCallFailure::Kind::notRunning: return {ClipboardBusReply::Status::NotRunning, {}};
            case RunningProgramCallFailure::Kind::busFailed:
                return {ClipboardBusReply::Status::Failed, std::move(failure.text)};
            case RunningProgramCallFailure::Kind::programFailed:
                return {ClipboardBusReply::Status::Failed, "the running Orvantis answered: " + failure.text};
        }
    }
    if (method == "Clear") return {ClipboardBusReply::Status::Answered, {}};
    const char* listing = nullptr;
    if (sd_bus_message_read(reply.get(), "s", &listing) < 0 || listing == nullptr) {
        return {ClipboardBusReply::Status::Failed, "the running Orvantis sent a reply of another type"};
    }
    return {ClipboardBusReply::Status::Answered, listing};
}

}  // namespace

std::unique_ptr<ClipboardBusService> ClipboardBusService::exportOn(SingleInstanceGuard& guard,
                                                                   ClipboardBusHandlers handlers,
                                                                   std::size_t messageSizeLimit) {
    if (guard.bus_ == nullptr) return nullptr;
    std::unique_ptr<ClipboardBusService> service(new ClipboardBusService(std::move(handlers), messageSizeLimit));
    if (sd_bus_add_object_vtable(guard.bus_, &service->slot_, std::string(kClipboardObjectPath).c_str(),
                                 std::string(kClipboardInterface).c_str(), kClipboardVtable, service.get()) < 0) {
        return nullptr;
    }
    return service;
}

ClipboardBusService::~ClipboardBusService() { sd_bus_slot_unref(slot_); }

ClipboardBusReply listRunningClipboard(std::optional<std::string_view> search, std::chrono::milliseconds timeout,
                                       std::string_view busName) {
    return search ? call("Search", search, timeout, busName) : call("List", std::nullopt, timeout, busName);
}

ClipboardBusReply clearRunningClipboard(std::chrono::milliseconds timeout, std::string_view busName) {
    return call("Clear", std::nullopt, timeout, busName);
}

}  // namespace orvantis::freedesktop
