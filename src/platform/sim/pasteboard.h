#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/main_loop.h"
#include "platform/pasteboard.h"
#include "platform/subscription.h"

namespace orvantis::sim {

/// The simulated system pasteboard: one item at most, a change count that rises by one on
/// every write and every clearing, and a record of who wrote what. The program writes through
/// the platform interface; tests write as other applications do. By default it can't report
/// changes, like a desktop that has to be polled; reportChangesOn() makes it tell of every
/// change by another application in a turn of the given loop of its own, as a desktop that
/// notifies does. Main thread only.
class Pasteboard final : public platform::Pasteboard {
public:
    /// One write, in the order they happened.
    struct Write {
        platform::PasteboardItem item;
        std::string application;  ///< the writer; empty for the program itself
        bool byProgram() const { return application.empty(); }
    };

    explicit Pasteboard(std::int64_t initialChangeCount = 0);

    // platform::Pasteboard
    std::int64_t changeCount() const override { return changeCount_; }
    std::vector<std::string> types() const override;
    std::optional<std::string> data(std::string_view type) const override;
    /// The program's own write.
    void write(const platform::PasteboardItem& item) override;
    bool reportsChanges() const override { return noticeLoop_ != nullptr; }
    [[nodiscard]] Subscription onChange(std::function<void()> callback) override;

    /// From now on each write, the program's own or another application's, and each clearing is
    /// told of in a later turn of `loop`; null stops it (notices already posted still come).
    /// `loop` must outlive this.
    void reportChangesOn(platform::MainLoop* loop) { noticeLoop_ = loop; }

    /// Another application (by default the user's editor) replaces the content.
    void writeFromOtherApp(const platform::PasteboardItem& item, std::string application = "org.example.other");
    /// Shorthand for another application copying plain text.
    void writeTextFromOtherApp(std::string utf8, std::string application = "org.example.other");
    /// Empties the pasteboard, as a clearing by another application does; the count rises.
    void clear();
    /// The owner of the content goes away while it is being read: `type` stays listed by
    /// types(), but data() answers nullopt for it. The count doesn't move; the next write or
    /// clearing ends it.
    void loseData(std::string type);

    /// What lies on the pasteboard, or nullopt when it is empty.
    const std::optional<platform::PasteboardItem>& content() const { return content_; }
    /// Every write since construction, oldest first. Clearings are not writes.
    const std::vector<Write>& writes() const { return writes_; }
    /// Number of writes made by the program itself.
    std::size_t programWriteCount() const;

private:
    void store(const platform::PasteboardItem& item, std::string application);
    void announceChange();

    std::int64_t changeCount_;
    std::optional<platform::PasteboardItem> content_;
    std::vector<std::string> lost_;
    std::vector<Write> writes_;
    platform::MainLoop* noticeLoop_ = nullptr;
    CallbackList<> changed_;
    /// Held weakly by posted notices, which do nothing once the pasteboard is gone.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace orvantis::sim
