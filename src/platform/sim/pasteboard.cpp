#include "platform/sim/pasteboard.h"

#include <algorithm>
#include <utility>

namespace orvantis::sim {

Pasteboard::Pasteboard(std::int64_t initialChangeCount) : changeCount_(initialChangeCount) {}

std::vector<std::string> Pasteboard::types() const {
    std::vector<std::string> result;
    if (!content_) return result;
    for (const auto& [type, bytes] : content_->representations) result.push_back(type);
    return result;
}

std::optional<std::string> Pasteboard::data(std::string_view type) const {
    if (!content_) return std::nullopt;
    if (std::find(lost_.begin(), lost_.end(), type) != lost_.end()) return std::nullopt;
    return content_->data(type);
}

void Pasteboard::loseData(std::string type) { lost_.push_back(std::move(type)); }

void Pasteboard::write(const platform::PasteboardItem& item) {
    store(item, {});
    announceChange();
}

void Pasteboard::writeFromOtherApp(const platform::PasteboardItem& item, std::string application) {
    // An empty name would read as the program's own write.
    if (application.empty()) application = "org.example.other";
    store(item, std::move(application));
    announceChange();
}

void Pasteboard::writeTextFromOtherApp(std::string utf8, std::string application) {
    writeFromOtherApp(platform::PasteboardItem::text(std::move(utf8)), std::move(application));
}

void Pasteboard::clear() {
    content_.reset();
    lost_.clear();
    ++changeCount_;
    announceChange();
}

Subscription Pasteboard::onChange(std::function<void()> callback) { return changed_.add(std::move(callback)); }

void Pasteboard::announceChange() {
    if (noticeLoop_ == nullptr) return;
    noticeLoop_->post([this, alive = std::weak_ptr<bool>(alive_)] {
        if (alive.lock()) changed_.notify();
    });
}

std::size_t Pasteboard::programWriteCount() const {
    return static_cast<std::size_t>(
        std::count_if(writes_.begin(), writes_.end(), [](const Write& w) { return w.byProgram(); }));
}

void Pasteboard::store(const platform::PasteboardItem& item, std::string application) {
    content_ = item;
    lost_.clear();
    writes_.push_back(Write{item, std::move(application)});
    ++changeCount_;
}

}  // namespace orvantis::sim
