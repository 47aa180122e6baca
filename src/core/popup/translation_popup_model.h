#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/popup/list_selection.h"
#include "core/popup/popup_geometry.h"
#include "core/popup/popup_option.h"

namespace orvantis {

/// What the popup shows.
enum class TranslationPopupState {
    hidden,
    loading,  ///< the "Translating…" row
    list,     ///< numbered option rows (possibly none), with the footer hint if there is one
    error,    ///< one message row; the window closes it after `kErrorDismissDelay`
};

/// Text measuring for the popup's layout, supplied by the toolkit so that this logic needs no
/// fonts. Widths and heights are in logical pixels.
struct PopupTextMetrics {
    /// Width of `text` on one line in the option font.
    std::function<double(std::string_view text)> singleLineWidth;
    /// Height of `text` in the option font, wrapped to `width` (at word boundaries, or anywhere
    /// inside a word longer than a line).
    std::function<double(std::string_view text, double width)> wrappedHeight;
};

/// A key press as the popup sees it. `keyCode` and `flags` are the `key_code` and `key_flags`
/// values of platform/key_output.h: on Linux the Ctrl key sets `key_flags::kCommand`.
struct PopupKey {
    std::uint16_t keyCode = 0;
    std::uint64_t flags = 0;
    /// What the key types with no modifier held ("1" for the key 1 with Ctrl); empty for keys
    /// without text.
    std::string charactersIgnoringModifiers;
};

/// What the window must do after a key or a click.
enum class PopupAction {
    none,              ///< nothing changed
    selectionChanged,  ///< redraw the highlight
    confirm,           ///< close, then hand `value` over
    dismiss,           ///< close without a choice
    tab,               ///< Tab: ask for the next set of options
};

struct PopupOutcome {
    /// False when the key is not the popup's and passes on; clicks are always taken.
    bool taken = true;
    PopupAction action = PopupAction::none;
    /// The chosen option's value, for `confirm`.
    std::string value;

    /// The key is not the popup's.
    static PopupOutcome passed() { return {false, PopupAction::none, {}}; }
    /// Taken, with `action` to carry out.
    static PopupOutcome take(PopupAction action = PopupAction::none) { return {true, action, {}}; }
    /// Taken: close and hand `value` over.
    static PopupOutcome confirmed(std::string value) { return {true, PopupAction::confirm, std::move(value)}; }
    bool operator==(const PopupOutcome&) const = default;
};

/// The translation popup without its window: the state, the options and the selected row,
/// the key and mouse rules, and the frame of the window in screen coordinates (downward y,
/// see popup_geometry.h). The window shows what this says and asks it after each event.
/// Owned by the popup's controller; main thread only.
class TranslationPopupModel {
public:
    // The numbers of the design, in logical pixels.
    static constexpr double kMinWidth = 300;            ///< smallest width
    static constexpr double kRowHeight = 30;            ///< the loading and error rows
    static constexpr std::size_t kMaxVisibleRows = 10;  ///< most rows the loading formula counts
    static constexpr double kVerticalInsets = 8;        ///< 4 above and 4 below the rows
    static constexpr double kPointerGap = 30;           ///< the popup's top stands this far below the pointer
    static constexpr double kHintHeight = 22;           ///< the footer hint row
    /// Around an option's label: 8 left, 18 number, 4 gap, and 12 right.
    static constexpr double kRowLeadingInset = 8;
    static constexpr double kNumberWidth = 18;
    static constexpr double kNumberGap = 4;
    static constexpr double kRowTrailingInset = 12;
    static constexpr double kRowChrome = kRowLeadingInset + kNumberWidth + kNumberGap + kRowTrailingInset;  // 42
    static constexpr double kLabelVerticalInset = 6;  ///< above and below an option's label
    static constexpr double kWidthSlack = 4;          ///< added to the widest label's width
    static constexpr double kMaxScreenWidthShare = 0.6;
    static constexpr double kMaxWidth = 720;
    static constexpr double kMaxScreenHeightShare = 0.7;
    static constexpr double kNoScreenMaxWidth = 600;
    static constexpr double kNoScreenMaxHeight = 600;
    static constexpr int kErrorDismissDelaySeconds = 3;

    /// `visibleFrame` is asked each time a frame is computed: the main screen less panels, or
    /// nullopt when there is no screen.
    TranslationPopupModel(PopupTextMetrics metrics, std::function<std::optional<PopupRect>()> visibleFrame);

    // Operations of the popup. Each one sets the new frame.

    /// The loading row, 300 x 38, its top 30 below `pointer`, clamped to the screen.
    void show(PopupPoint pointer);
    /// Replaces the content by `options`, the first one selected; the width follows the widest
    /// text, the height the wrapped rows; the top edge stays. A hidden popup stays hidden.
    void showOptions(std::vector<PopupOption> options);
    /// Sets the footer, or removes it for nullopt or an empty text. While visible, a new
    /// footer resizes the popup at its present width (at least 300).
    void setFooterHint(std::optional<std::string> hint);
    /// Replaces the content by one message row.
    void showError(std::string message);
    /// Closes: forgets the options and the footer. Answers false, changing nothing, when the
    /// popup was not visible.
    bool dismiss();

    // Input.

    /// The key rules, in order: Ctrl (Command) with a digit 1-9 confirms that row (a row past
    /// the end: taken, nothing happens); Return or keypad Enter confirms the selected row; Tab
    /// asks for `tab`; Esc dismisses; Down and Up move the selection without wrapping; any
    /// other key passes on. Nothing is taken while hidden.
    PopupOutcome handleKey(const PopupKey& key);
    /// A press on row `index`: a click count of 2 confirms the row, any other count selects it.
    PopupOutcome click(std::size_t index, int clickCount);
    /// The value of row `index`, or nullopt out of range.
    std::optional<std::string> valueAt(std::size_t index) const;

    // What the window shows.

    /// `hidden` whenever the popup is not shown, whatever content it holds.
    TranslationPopupState state() const { return visible_ ? state_ : TranslationPopupState::hidden; }
    bool isVisible() const { return visible_; }
    const std::vector<PopupOption>& options() const { return options_; }
    std::size_t selectedIndex() const { return selection_.index(); }
    const std::optional<std::string>& footerHint() const { return hint_; }
    const std::string& errorMessage() const { return error_; }
    /// The window's frame; meaningful while visible.
    const PopupRect& frame() const { return frame_; }
    /// The width of the option rows and the footer.
    double contentWidth() const { return frame_.width; }
    /// The width to which option labels wrap: the content width less 42.
    double labelWidthLimit() const { return contentWidth() - kRowChrome; }
    /// Height of option row `index` at the present width: its wrapped label plus 6 above and below.
    double optionRowHeight(std::size_t index) const;

    // The arithmetic, exposed for tests and for popups built the same way.

    /// The width for `options`: widest one-line text rounded up, plus 42 and 4, at most the
    /// cap (0.6 of the screen's width, between 300 and 720; 600 without a screen), at least 300.
    double computeContentWidth(const std::vector<PopupOption>& options) const;
    /// Largest height: 0.7 of the screen's height, 600 without a screen.
    double heightLimit() const;

private:
    std::size_t stackedViewCount() const;
    double stackFittingHeight(double width) const;
    void clearRows();
    void resizeToFit();
    void resizeToFitContents(double width);
    PopupOutcome confirm(std::size_t index) const;

    PopupTextMetrics metrics_;
    std::function<std::optional<PopupRect>()> visibleFrame_;
    bool visible_ = false;  ///< from show() to dismiss(); the content operations never show
    TranslationPopupState state_ = TranslationPopupState::hidden;  ///< the content
    std::vector<PopupOption> options_;
    ListSelection selection_;
    std::optional<std::string> hint_;
    std::string error_;
    PopupRect frame_{};
};

}  // namespace orvantis
