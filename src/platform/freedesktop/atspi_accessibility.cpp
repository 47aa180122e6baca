#include "platform/freedesktop/atspi_accessibility.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <atspi/atspi.h>

#include "core/log/app_logger.h"
#include "core/text/utf.h"
#include "platform/freedesktop/accessibility_bus.h"

#include <unistd.h>

namespace orvantis::freedesktop {
namespace {

using Clock = std::chrono::steady_clock;

// --- Owning handles for GLib and libatspi objects -----------------------------------------------

struct GObjectUnref {
    void operator()(gpointer object) const {
        if (object != nullptr) g_object_unref(object);
    }
};
struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};

using AccessiblePtr = std::unique_ptr<AtspiAccessible, GObjectUnref>;
using StateSetPtr = std::unique_ptr<AtspiStateSet, GObjectUnref>;
using GCharPtr = std::unique_ptr<gchar, GFree>;
using RangePtr = std::unique_ptr<AtspiRange, GFree>;

/// Where a libatspi call leaves its error; frees it when reused or destroyed.
class ErrorSlot {
public:
    ErrorSlot() = default;
    ~ErrorSlot() { clear(); }
    ErrorSlot(const ErrorSlot&) = delete;
    ErrorSlot& operator=(const ErrorSlot&) = delete;

    /// For the next call: any earlier error is dropped.
    GError** out() {
        clear();
        return &error_;
    }
    bool failed() const { return error_ != nullptr; }

private:
    void clear() {
        if (error_ != nullptr) g_error_free(error_);
        error_ = nullptr;
    }
    GError* error_ = nullptr;
};

AccessiblePtr retained(AtspiAccessible* object) {
    return AccessiblePtr(static_cast<AtspiAccessible*>(g_object_ref(object)));
}

// --- The connection ------------------------------------------------------------------------------

enum class BusState { NotConnected, Connected, Failed };

/// libatspi keeps one connection per process, so this state is per process too.
BusState& busState() {
    static BusState state = BusState::NotConnected;
    return state;
}

// --- Offsets ---------------------------------------------------------------------------------

/// How a toolkit counts text offsets. ATK-based toolkits (GTK and the programs that use ATK)
/// count code points and take insert lengths in bytes; Qt counts UTF-16 units for both.
enum class Units { CodePoints, Utf16 };

/// The byte offset of code point `index`; past the end, the size of `text`.
std::size_t byteOffsetOfCodePoint(std::string_view text, std::size_t index) {
    std::size_t seen = 0;
    for (const text::CodePoint& c : text::codePoints(text)) {
        if (seen == index) return c.offset;
        ++seen;
    }
    return text.size();
}

/// `application` is the root of an application: Qt answers the toolkit's name there only.
bool isQtToolkit(AtspiAccessible* application) {
    ErrorSlot error;
    GCharPtr name(atspi_accessible_get_toolkit_name(application, error.out()));
    if (error.failed() || !name) return false;
    return g_ascii_strncasecmp(name.get(), "qt", 2) == 0;
}

/// An element of another application with the Text interface. The object may vanish at any
/// time; every call then fails.
class AtspiTextElement final : public platform::TextElement {
public:
    AtspiTextElement(AccessiblePtr object, bool secure, bool qt)
        : object_(std::move(object)), secure_(secure), qt_(qt), units_(qt ? Units::Utf16 : Units::CodePoints) {}

    bool isSecure() const override { return secure_; }

    std::optional<std::string> value() const override {
        if (secure_) return std::nullopt;
        return read();
    }

    std::optional<platform::TextRange> selectedRange() const override {
        if (secure_) return std::nullopt;
        const std::optional<std::string> text = read();
        if (!text) return std::nullopt;
        const std::optional<std::pair<gint, gint>> selection = selectionOffsets();
        if (!selection) return std::nullopt;
        const std::size_t start = toUtf16(*text, selection->first);
        const std::size_t end = toUtf16(*text, selection->second);
        return platform::TextRange{start, end - start};
    }

    std::optional<std::string> selectedText() const override {
        if (secure_) return std::nullopt;
        const std::optional<std::string> text = read();
        if (!text) return std::nullopt;
        const std::optional<std::pair<gint, gint>> selection = selectionOffsets();
        if (!selection) return std::nullopt;
        const std::size_t begin = toByte(*text, selection->first);
        const std::size_t end = toByte(*text, selection->second);
        return text->substr(begin, end - begin);
    }

    bool setSelectedRange(platform::TextRange range) override {
        if (secure_) return false;
        const std::optional<std::string> text = read();
        if (!text) return false;
        const gint start = fromUtf16(*text, range.location);
        const gint end = fromUtf16(*text, range.location + range.length);
        ErrorSlot error;
        if (end <= start) {
            // A caret alone: moving it drops the selection in the toolkits we know.
            const gboolean moved = atspi_text_set_caret_offset(textInterface(), start, error.out());
            return moved && !error.failed();
        }
        const gint selections = atspi_text_get_n_selections(textInterface(), error.out());
        if (error.failed()) return false;
        const gboolean selected = selections > 0
                                      ? atspi_text_set_selection(textInterface(), 0, start, end, error.out())
                                      : atspi_text_add_selection(textInterface(), start, end, error.out());
        return selected && !error.failed();
    }

    bool replaceSelectedText(std::string_view utf8) override {
        if (secure_) return false;
        const std::optional<std::string> text = read();
        if (!text) return false;
        const std::optional<std::pair<gint, gint>> selection = selectionOffsets();
        if (!selection) return false;
        const auto [start, end] = *selection;

        ErrorSlot error;
        if (end > start) {
            const gboolean deleted = atspi_editable_text_delete_text(editableInterface(), start, end, error.out());
            if (!deleted || error.failed()) return false;
        }
        // D-Bus strings are valid UTF-8 without NUL characters.
        std::string insert = text::repairUtf8(utf8);
        insert.erase(std::remove(insert.begin(), insert.end(), '\0'), insert.end());
        const gint inserted = units_ == Units::Utf16 ? static_cast<gint>(text::utf16Length(insert))
                                                     : static_cast<gint>(text::codePointCount(insert));
        // Qt takes the length in its own units; ATK takes it in bytes.
        const gint length = qt_ ? inserted : static_cast<gint>(insert.size());
        if (!insert.empty()) {
            const gboolean done =
                atspi_editable_text_insert_text(editableInterface(), start, insert.c_str(), length, error.out());
            if (!done || error.failed()) return false;
        }
        const gboolean moved = atspi_text_set_caret_offset(textInterface(), start + inserted, error.out());
        return moved && !error.failed();
    }

private:
    AtspiText* textInterface() const { return ATSPI_TEXT(object_.get()); }
    AtspiEditableText* editableInterface() const { return ATSPI_EDITABLE_TEXT(object_.get()); }

    /// The whole text; learns the toolkit's units when the text tells them apart.
    std::optional<std::string> read() const {
        ErrorSlot error;
        const gint count = atspi_text_get_character_count(textInterface(), error.out());
        if (error.failed() || count < 0) return std::nullopt;
        GCharPtr raw(atspi_text_get_text(textInterface(), 0, count, error.out()));
        if (error.failed() || !raw) return std::nullopt;
        std::string text = text::repairUtf8(raw.get());
        const std::size_t codePoints = text::codePointCount(text);
        const std::size_t utf16 = text::utf16Length(text);
        if (codePoints != utf16) {
            if (static_cast<std::size_t>(count) == utf16) units_ = Units::Utf16;
            if (static_cast<std::size_t>(count) == codePoints) units_ = Units::CodePoints;
        }
        return text;
    }

    /// The selection, or the caret as an empty one, in the toolkit's offsets, start first.
    std::optional<std::pair<gint, gint>> selectionOffsets() const {
        ErrorSlot error;
        const gint selections = atspi_text_get_n_selections(textInterface(), error.out());
        if (error.failed()) return std::nullopt;
        if (selections > 0) {
            RangePtr range(atspi_text_get_selection(textInterface(), 0, error.out()));
            if (error.failed() || !range) return std::nullopt;
            const gint start = std::max(0, std::min(range->start_offset, range->end_offset));
            const gint end = std::max(0, std::max(range->start_offset, range->end_offset));
            if (end > start) return std::pair{start, end};
        }
        const gint caret = atspi_text_get_caret_offset(textInterface(), error.out());
        if (error.failed() || caret < 0) return std::nullopt;
        return std::pair{caret, caret};
    }

    std::size_t toByte(const std::string& text, gint offset) const {
        const auto index = static_cast<std::size_t>(std::max(0, offset));
        return units_ == Units::Utf16 ? text::byteOffsetFromUtf16Offset(text, index)
                                      : byteOffsetOfCodePoint(text, index);
    }

    std::size_t toUtf16(const std::string& text, gint offset) const {
        return text::utf16OffsetFromByteOffset(text, toByte(text, offset));
    }

    gint fromUtf16(const std::string& text, std::size_t offset) const {
        const std::size_t byte = text::byteOffsetFromUtf16Offset(text, offset);
        const std::size_t units = units_ == Units::Utf16 ? text::utf16OffsetFromByteOffset(text, byte)
                                                         : text::codePointCount(std::string_view(text).substr(0, byte));
        return static_cast<gint>(units);
    }

    AccessiblePtr object_;
    bool secure_;
    bool qt_;
    mutable Units units_;
};

// --- Finding the focus -------------------------------------------------------------------------

/// Deeper than any real widget tree: a cycle in a broken tree ends here.
constexpr int kMaxDepth = 64;
/// Objects one lookup may visit: a busy window has a few hundred.
constexpr std::size_t kMaxVisited = 3000;

/// One lookup's progress.
struct Walk {
    Clock::time_point deadline;
    std::size_t visited = 0;
    /// The focus was found, on a text element or elsewhere: the lookup is over.
    bool done = false;
    /// The current application stopped answering: its other windows are left out.
    bool applicationFailed = false;
    AccessiblePtr found;

    bool exhausted() const { return done || visited >= kMaxVisited || Clock::now() >= deadline; }
};

/// An editable text element, or a password field.
bool isTextCandidate(AtspiAccessible* object, AtspiStateSet* states) {
    // The interface is the object itself, with a reference of its own when present.
    AtspiText* text = atspi_accessible_get_text_iface(object);
    if (text == nullptr) return false;
    g_object_unref(text);
    ErrorSlot error;
    const AtspiRole role = atspi_accessible_get_role(object, error.out());
    if (error.failed()) return false;
    return role == ATSPI_ROLE_PASSWORD_TEXT || atspi_state_set_contains(states, ATSPI_STATE_EDITABLE);
}

/// Searches `node` and what it shows, depth first, for the focused object.
void searchFocus(AtspiAccessible* node, Walk& walk, int depth) {
    if (walk.exhausted() || walk.applicationFailed || depth > kMaxDepth) return;
    ++walk.visited;
    StateSetPtr states(atspi_accessible_get_state_set(node));
    if (!states) {
        walk.applicationFailed = true;
        return;
    }
    if (depth > 0 && !atspi_state_set_contains(states.get(), ATSPI_STATE_SHOWING)) return;
    const bool focused = atspi_state_set_contains(states.get(), ATSPI_STATE_FOCUSED);
    if (focused && isTextCandidate(node, states.get())) {
        walk.found = retained(node);
        walk.done = true;
        return;
    }
    // Tables and long lists create their children on demand; walking them costs more than
    // it could find.
    if (atspi_state_set_contains(states.get(), ATSPI_STATE_MANAGES_DESCENDANTS)) return;
    ErrorSlot error;
    const gint children = atspi_accessible_get_child_count(node, error.out());
    if (error.failed()) {
        walk.applicationFailed = true;
        return;
    }
    // A focused leaf that is no text: the focus is elsewhere than in a text field.
    if (focused && children == 0) {
        walk.done = true;
        return;
    }
    for (gint i = 0; i < children && !walk.exhausted() && !walk.applicationFailed; ++i) {
        AccessiblePtr child(atspi_accessible_get_child_at_index(node, i, error.out()));
        if (error.failed()) {
            walk.applicationFailed = true;
            return;
        }
        if (child) searchFocus(child.get(), walk, depth + 1);
    }
}

}  // namespace

AtspiAccessibility::AtspiAccessibility(const LogCategory* log, std::chrono::milliseconds callTimeout)
    : log_(log), callTimeout_(callTimeout) {}

bool AtspiAccessibility::connect() {
    BusState& state = busState();
    if (state == BusState::Connected) return true;
    if (state == BusState::Failed) return false;
    // libatspi tries its bus once per process and aborts on any call after a failed try, so
    // it only tries a bus that answers now. Until then the check is repeated on each lookup.
    if (!busCheck_.enabled(callTimeout_)) {
        debug("accessibility: the accessibility bus is off or unreachable");
        return false;
    }
    const int result = atspi_init();
    // 1: another part of the process connected first.
    if (result != 0 && result != 1) {
        state = BusState::Failed;
        if (log_ != nullptr) log_->warning("accessibility: no connection to the accessibility bus");
        return false;
    }
    // The same short time-out for applications that started a moment ago.
    atspi_set_timeout(static_cast<gint>(callTimeout_.count()), 0);
    state = BusState::Connected;
    return true;
}

std::unique_ptr<platform::TextElement> AtspiAccessibility::focusedTextElement() {
    if (!connect()) return nullptr;
    const Clock::time_point start = Clock::now();
    AccessiblePtr desktop(atspi_get_desktop(0));
    if (!desktop) return nullptr;
    ErrorSlot error;
    const gint applications = atspi_accessible_get_child_count(desktop.get(), error.out());
    if (error.failed()) {
        debug("accessibility: the accessibility registry does not answer");
        return nullptr;
    }

    // A hung application costs one time-out per window at most; the whole lookup a few.
    Walk walk;
    walk.deadline = start + 6 * callTimeout_;
    const auto self = static_cast<guint>(::getpid());
    // Shown windows that are not active, each with its application.
    std::vector<std::pair<AccessiblePtr, AccessiblePtr>> otherWindows;
    AccessiblePtr focusedApplication;
    bool sawActiveWindow = false;
    for (gint a = 0; a < applications && !walk.exhausted(); ++a) {
        AccessiblePtr application(atspi_accessible_get_child_at_index(desktop.get(), a, error.out()));
        if (error.failed() || !application) continue;
        // Asked by the bus, not by the application: safe for our own entry too.
        const guint pid = atspi_accessible_get_process_id(application.get(), error.out());
        if (error.failed() || pid == self) continue;
        const gint windows = atspi_accessible_get_child_count(application.get(), error.out());
        if (error.failed()) continue;
        walk.applicationFailed = false;
        for (gint w = 0; w < windows && !walk.exhausted() && !walk.applicationFailed; ++w) {
            AccessiblePtr window(atspi_accessible_get_child_at_index(application.get(), w, error.out()));
            if (error.failed()) break;
            if (!window) continue;
            StateSetPtr states(atspi_accessible_get_state_set(window.get()));
            if (!states) break;
            // Only the application with the keyboard focus reports a focused object, and it
            // reports it in its active window.
            if (atspi_state_set_contains(states.get(), ATSPI_STATE_ACTIVE)) {
                sawActiveWindow = true;
                searchFocus(window.get(), walk, 0);
                if (walk.found) focusedApplication = retained(application.get());
            } else if (atspi_state_set_contains(states.get(), ATSPI_STATE_SHOWING)) {
                otherWindows.emplace_back(retained(application.get()), std::move(window));
            }
        }
    }
    // Toolkits that never mark a window active: the shown windows, within the same limits.
    if (!walk.done && !sawActiveWindow) {
        for (const auto& [application, window] : otherWindows) {
            if (walk.exhausted()) break;
            walk.applicationFailed = false;
            searchFocus(window.get(), walk, 0);
            if (walk.found) focusedApplication = retained(application.get());
        }
    }

    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (!walk.found) {
        if (log_ != nullptr) {
            log_->debug("accessibility: no focused text element (" + std::to_string(walk.visited) + " objects, " +
                        std::to_string(elapsed.count()) + " ms)");
        }
        return nullptr;
    }
    ErrorSlot roleError;
    const bool secure = atspi_accessible_get_role(walk.found.get(), roleError.out()) == ATSPI_ROLE_PASSWORD_TEXT;
    // An element whose role cannot be read any more is treated as secure: nothing is touched.
    const bool treatAsSecure = secure || roleError.failed();
    const bool qt = focusedApplication && isQtToolkit(focusedApplication.get());
    if (log_ != nullptr) {
        log_->debug(std::string("accessibility: focused ") + (treatAsSecure ? "secure " : "") + "text element in " +
                    (qt ? "a Qt" : "an ATK") + " application (" + std::to_string(walk.visited) + " objects, " +
                    std::to_string(elapsed.count()) + " ms)");
    }
    return std::make_unique<AtspiTextElement>(std::move(walk.found), treatAsSecure, qt);
}

void AtspiAccessibility::debug(const char* message) const {
    if (log_ != nullptr) log_->debug(message);
}

}  // namespace orvantis::freedesktop
