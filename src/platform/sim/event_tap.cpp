#include "platform/sim/event_tap.h"

#include <algorithm>
#include <utility>

#include "platform/key_output.h"

namespace orvantis::sim {

using platform::EventDisposition;
using platform::KeyEvent;

KeyEvent keyDown(std::uint16_t keyCode, std::uint64_t flags, std::string characters, bool autorepeat) {
    KeyEvent event;
    event.type = KeyEvent::Type::keyDown;
    event.keyCode = keyCode;
    event.flags = flags;
    event.autorepeat = autorepeat;
    event.characters = std::move(characters);
    return event;
}

KeyEvent keyUp(std::uint16_t keyCode, std::uint64_t flags) {
    KeyEvent event;
    event.type = KeyEvent::Type::keyUp;
    event.keyCode = keyCode;
    event.flags = flags;
    return event;
}

KeyEvent flagsChanged(std::uint64_t flags) {
    KeyEvent event;
    event.type = KeyEvent::Type::flagsChanged;
    event.flags = flags;
    return event;
}

KeyEvent mouseDown(bool right) {
    KeyEvent event;
    event.type = right ? KeyEvent::Type::rightMouseDown : KeyEvent::Type::leftMouseDown;
    return event;
}

KeyEvent systemDefined(std::int32_t subtype) {
    KeyEvent event;
    event.type = KeyEvent::Type::systemDefined;
    event.subtype = subtype;
    return event;
}

bool EventTap::start(Handler handler) {
    if (!permitted_) return false;
    handler_ = std::move(handler);
    running_ = true;
    enabled_ = true;
    ++starts_;
    return true;
}

void EventTap::stop() {
    if (!running_) return;
    handler_ = nullptr;
    running_ = false;
    enabled_ = false;
}

void EventTap::reenable() {
    if (!running_ || enabled_) return;
    enabled_ = true;
    ++reenables_;
}

void EventTap::setGrabbedHotkeys(std::vector<platform::GrabbedKey> keys) {
    grabbed_ = std::move(keys);
    ++grabUpdates_;
}

void EventTap::setWholeKeyboardGrabbed(bool grabbed) { wholeKeyboard_ = grabbed; }

bool EventTap::isGrabbed(const KeyEvent& event) const {
    const bool isKey = event.type == KeyEvent::Type::keyDown || event.type == KeyEvent::Type::keyUp;
    const bool isKeyboard =
        isKey || event.type == KeyEvent::Type::flagsChanged || event.type == KeyEvent::Type::systemDefined;
    if (wholeKeyboard_ && isKeyboard) return true;
    if (!isKey) return false;
    const platform::GrabbedKey key{event.keyCode, event.flags & platform::key_flags::kModifierMask};
    return std::find(grabbed_.begin(), grabbed_.end(), key) != grabbed_.end();
}

EventDisposition EventTap::deliver(const KeyEvent& event) {
    EventDisposition answer = EventDisposition::pass;
    if (running_ && enabled_ && handler_) answer = handler_(event);
    if (answer == EventDisposition::pass || !isGrabbed(event)) applicationEvents_.push_back(event);
    return answer;
}

void EventTap::disable(KeyEvent::Type reason) {
    if (!running_) return;
    enabled_ = false;
    KeyEvent event;
    event.type = reason;
    if (handler_) handler_(event);
}

}  // namespace orvantis::sim
