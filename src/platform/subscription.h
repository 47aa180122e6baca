#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace orvantis {

/// A registration that ends when the handle is destroyed or reset. Move-only.
/// This is how an object that hands out a callback to a longer-lived one makes sure the
/// callback never runs after the object is gone: it keeps the Subscription as a member.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            cancel_ = std::exchange(other.cancel_, nullptr);
        }
        return *this;
    }
    ~Subscription() { reset(); }

    /// Ends the registration now; later calls do nothing.
    void reset() {
        if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
    }
    /// True while the registration stands.
    explicit operator bool() const { return static_cast<bool>(cancel_); }

private:
    std::function<void()> cancel_;
};

/// A list of callbacks with RAII registration. Thread-safe; callbacks run on the thread
/// that calls notify(). A callback removed during a notification is not called afterwards,
/// one added during a notification is called from the next one on. Subscriptions may
/// outlive the list.
template <typename... Args>
class CallbackList {
public:
    using Callback = std::function<void(Args...)>;

    CallbackList() : state_(std::make_shared<State>()) {}
    CallbackList(const CallbackList&) = delete;
    CallbackList& operator=(const CallbackList&) = delete;

    [[nodiscard]] Subscription add(Callback callback) {
        std::lock_guard lock(state_->mutex);
        const std::uint64_t id = ++state_->nextId;
        state_->entries.push_back({id, std::make_shared<Callback>(std::move(callback))});
        return Subscription([weak = std::weak_ptr<State>(state_), id] {
            if (auto state = weak.lock()) {
                std::lock_guard lock(state->mutex);
                std::erase_if(state->entries, [id](const Entry& e) { return e.id == id; });
            }
        });
    }

    void notify(Args... args) const {
        std::vector<Entry> snapshot;
        {
            std::lock_guard lock(state_->mutex);
            snapshot = state_->entries;
        }
        for (const auto& entry : snapshot) {
            if (!stillRegistered(entry.id)) continue;
            (*entry.callback)(args...);
        }
    }

    bool empty() const {
        std::lock_guard lock(state_->mutex);
        return state_->entries.empty();
    }

private:
    struct Entry {
        std::uint64_t id;
        std::shared_ptr<Callback> callback;
    };
    struct State {
        mutable std::mutex mutex;
        std::uint64_t nextId = 0;
        std::vector<Entry> entries;
    };

    bool stillRegistered(std::uint64_t id) const {
        std::lock_guard lock(state_->mutex);
        for (const auto& e : state_->entries)
            if (e.id == id) return true;
        return false;
    }

    std::shared_ptr<State> state_;
};

}  // namespace orvantis
