#include "core/popup/translation_popup_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/key_output.h"

namespace orvantis {
namespace {

/// Keypad Enter: confirms like Return.
constexpr std::uint16_t kKeypadEnter = 76;

}  // namespace

TranslationPopupModel::TranslationPopupModel(PopupTextMetrics metrics,
                                             std::function<std::optional<PopupRect>()> visibleFrame)
    : metrics_(std::move(metrics)), visibleFrame_(std::move(visibleFrame)) {}

void TranslationPopupModel::show(PopupPoint pointer) {
    clearRows();
    visible_ = true;
    state_ = TranslationPopupState::loading;
    // The loading row first sizes the present frame; the frame then set below wins.
    resizeToFit();
    frame_ = placeBelowPointer(pointer, {kMinWidth, kRowHeight + kVerticalInsets}, kPointerGap, visibleFrame_());
}

void TranslationPopupModel::showOptions(std::vector<PopupOption> options) {
    clearRows();
    options_ = std::move(options);
    selection_.reset(options_.size());
    state_ = TranslationPopupState::list;
    resizeToFitContents(computeContentWidth(options_));
}

void TranslationPopupModel::setFooterHint(std::optional<std::string> hint) {
    hint_.reset();
    if (!hint || hint->empty()) return;
    hint_ = std::move(hint);
    if (isVisible()) resizeToFitContents(std::max(frame_.width, kMinWidth));
}

void TranslationPopupModel::showError(std::string message) {
    clearRows();
    error_ = std::move(message);
    state_ = TranslationPopupState::error;
    resizeToFit();
}

bool TranslationPopupModel::dismiss() {
    if (!isVisible()) return false;
    clearRows();
    hint_.reset();
    visible_ = false;
    state_ = TranslationPopupState::hidden;
    return true;
}

PopupOutcome TranslationPopupModel::handleKey(const PopupKey& key) {
    if (!isVisible()) return PopupOutcome::passed();
    const std::string& c = key.charactersIgnoringModifiers;
    if ((key.flags & platform::key_flags::kCommand) && !c.empty() && c[0] >= '1' && c[0] <= '9')
        return confirm(static_cast<std::size_t>(c[0] - '1'));
    switch (key.keyCode) {
        case platform::key_code::kReturn:
        case kKeypadEnter: return confirm(selection_.index());
        case platform::key_code::kTab: return PopupOutcome::take(PopupAction::tab);
        case platform::key_code::kEscape: return PopupOutcome::take(PopupAction::dismiss);
        case platform::key_code::kDownArrow:
            return PopupOutcome::take(selection_.moveDown() ? PopupAction::selectionChanged : PopupAction::none);
        case platform::key_code::kUpArrow:
            return PopupOutcome::take(selection_.moveUp() ? PopupAction::selectionChanged : PopupAction::none);
        default: return PopupOutcome::passed();
    }
}

PopupOutcome TranslationPopupModel::click(std::size_t index, int clickCount) {
    if (clickCount == 2) return confirm(index);
    return PopupOutcome::take(selection_.select(index) ? PopupAction::selectionChanged : PopupAction::none);
}

std::optional<std::string> TranslationPopupModel::valueAt(std::size_t index) const {
    if (index >= options_.size()) return std::nullopt;
    return options_[index].value;
}

PopupOutcome TranslationPopupModel::confirm(std::size_t index) const {
    auto value = valueAt(index);
    if (!value) return PopupOutcome::take();
    return PopupOutcome::confirmed(std::move(*value));
}

double TranslationPopupModel::optionRowHeight(std::size_t index) const {
    if (index >= options_.size()) return 0;
    return metrics_.wrappedHeight(options_[index].displayText, labelWidthLimit()) + 2 * kLabelVerticalInset;
}

double TranslationPopupModel::computeContentWidth(const std::vector<PopupOption>& options) const {
    double widest = 0;
    for (const auto& option : options) widest = std::max(widest, metrics_.singleLineWidth(option.displayText));
    double cap = kNoScreenMaxWidth;
    if (const auto screen = visibleFrame_())
        cap = std::max(kMinWidth, std::min(kMaxWidth, screen->width * kMaxScreenWidthShare));
    return std::max(kMinWidth, std::min(cap, std::ceil(widest) + kRowChrome + kWidthSlack));
}

double TranslationPopupModel::heightLimit() const {
    if (const auto screen = visibleFrame_()) return screen->height * kMaxScreenHeightShare;
    return kNoScreenMaxHeight;
}

std::size_t TranslationPopupModel::stackedViewCount() const {
    const std::size_t rows = state_ == TranslationPopupState::list ? options_.size() : 1;
    return rows + (hint_ ? 1 : 0);
}

double TranslationPopupModel::stackFittingHeight(double width) const {
    double height = hint_ ? kHintHeight : 0;
    if (state_ != TranslationPopupState::list) return height + kRowHeight;
    for (const auto& option : options_)
        height += metrics_.wrappedHeight(option.displayText, width - kRowChrome) + 2 * kLabelVerticalInset;
    return height;
}

void TranslationPopupModel::clearRows() {
    options_.clear();
    selection_.reset(0);
    error_.clear();
}

void TranslationPopupModel::resizeToFit() {
    // Serves the single loading or error row. The frame's upward-y origin, its bottom-left
    // corner, stands: the bottom edge is kept.
    const auto views = std::clamp<std::size_t>(stackedViewCount(), 1, kMaxVisibleRows);
    const double height = kVerticalInsets + kRowHeight * static_cast<double>(views);
    frame_.y = frame_.bottom() - height;
    frame_.height = height;
}

void TranslationPopupModel::resizeToFitContents(double width) {
    const double height = std::min(stackFittingHeight(width) + kVerticalInsets, heightLimit());
    // The top edge stays; the screen may still push the popup up.
    const PopupPoint origin = clampToScreen({frame_.x, frame_.y}, {width, height}, visibleFrame_());
    frame_ = {origin.x, origin.y, width, height};
}

}  // namespace orvantis
