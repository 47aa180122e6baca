#include "core/clipboard/clipboard_monitor.h"

#include <algorithm>
#include <utility>

#include "core/clipboard/reference_date.h"
#include "core/settings/app_settings.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

namespace orvantis {
namespace {

namespace type = platform::pasteboard_type;

bool contains(std::string_view haystack, std::string_view needle) {
    return haystack.find(needle) != std::string_view::npos;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string percentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int high = hexDigit(text[i + 1]);
            const int low = hexDigit(text[i + 2]);
            if (high >= 0 && low >= 0) {
                out.push_back(static_cast<char>(high * 16 + low));
                i += 2;
                continue;
            }
        }
        out.push_back(text[i]);
    }
    return out;
}

/// The length of a URI scheme with its colon at the start of `uri`, or 0 when there is none.
std::size_t schemeLength(std::string_view uri) {
    if (uri.empty() || !((uri[0] >= 'a' && uri[0] <= 'z') || (uri[0] >= 'A' && uri[0] <= 'Z'))) return 0;
    for (std::size_t i = 1; i < uri.size(); ++i) {
        const char c = uri[i];
        if (c == ':') return i + 1;
        const bool schemeChar = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                                c == '+' || c == '-' || c == '.';
        if (!schemeChar) return 0;
    }
    return 0;
}

}  // namespace

ClipboardMonitor::ClipboardMonitor(AppSettings& settings, platform::Pasteboard& pasteboard,
                                   const platform::Applications& applications, platform::Accessibility& accessibility,
                                   platform::MainLoop& loop, const platform::Clock& clock, UuidGenerator& ids,
                                   std::filesystem::path snapshotFile, const LogCategory* log)
    : settings_(settings), pasteboard_(pasteboard), applications_(applications), accessibility_(accessibility),
      loop_(loop), clock_(clock), ids_(ids), history_(settings.clipboardHistorySize()),
      persistence_(std::make_unique<ClipboardPersistence>(std::move(snapshotFile), loop, log)),
      lastChangeCount_(pasteboard.changeCount()),
      historySubscription_(history_.onChange([this] { historyDidChange(); })) {
    if (settings_.clipboardPersistEnabled()) {
        // restore() tells no observer, so reading the file back doesn't write it again.
        if (auto lists = persistence_->loadSnapshot())
            history_.restore(std::move(lists->pinned), std::move(lists->unpinned));
    }
}

ClipboardMonitor::~ClipboardMonitor() = default;

void ClipboardMonitor::start() {
    if (timer_.isActive()) return;
    lastChangeCount_ = pasteboard_.changeCount();
    if (pasteboard_.reportsChanges()) {
        // Each copy is taken up as soon as it is told of; the poll only catches a lost notice.
        changeNotices_ = pasteboard_.onChange([this] { tick(); });
        timer_ = loop_.every(kSafetyNetPollInterval, [this] { tick(); });
    } else {
        timer_ = loop_.every(kPollInterval, [this] { tick(); });
    }
}

void ClipboardMonitor::stop() {
    timer_.cancel();
    changeNotices_.reset();
}

void ClipboardMonitor::flushPersistence() { persistence_->flush(); }

void ClipboardMonitor::acknowledgeCurrentChangeCount() { lastChangeCount_ = pasteboard_.changeCount(); }

void ClipboardMonitor::deletePersistedHistory() { persistence_->clear(); }

void ClipboardMonitor::tick() {
    // Off: the count stays, so the first poll after switching back on takes up what was copied.
    if (!settings_.clipboardHistoryEnabled()) return;
    const std::int64_t count = pasteboard_.changeCount();
    if (count == lastChangeCount_) return;
    // From here on this content is dealt with once, whatever follows decides.
    lastChangeCount_ = count;

    if (focusedElementIsSecure()) return;

    std::optional<std::string> source;
    if (auto app = applications_.frontmostApplication(); app && !app->bundleID.empty()) {
        const std::vector<std::string> ignored = settings_.clipboardIgnoredApps();
        if (std::find(ignored.begin(), ignored.end(), app->bundleID) != ignored.end()) return;
        source = text::isValidUtf8(app->bundleID) ? app->bundleID : text::repairUtf8(app->bundleID);
    }

    std::optional<ClipboardItem> item = buildItem(pasteboard_, source);
    if (!item) return;
    history_.add(std::move(*item));
    // Read afresh: a size changed elsewhere takes effect with this capture.
    history_.resize(settings_.clipboardHistorySize());
}

bool ClipboardMonitor::focusedElementIsSecure() {
    // Without an element (no focus, no accessibility) captures go on.
    const std::unique_ptr<platform::TextElement> element = accessibility_.focusedTextElement();
    return element != nullptr && element->isSecure();
}

bool ClipboardMonitor::isConcealed(const platform::Pasteboard& pasteboard) {
    if (pasteboard.data(type::kConcealed).has_value()) return true;
    const std::optional<std::string> hint = pasteboard.data(type::kPasswordManagerHint);
    return hint && *hint == type::kPasswordManagerHintSecret;
}

std::optional<ClipboardItem> ClipboardMonitor::buildItem(const platform::Pasteboard& pasteboard,
                                                         const std::optional<std::string>& sourceBundleID) {
    if (isConcealed(pasteboard)) return std::nullopt;
    // A copied file also offers a plain-text form; the file wins, whatever the non-text setting.
    if (pasteboard.data(type::kFileURL).has_value()) return buildNonTextItem(pasteboard, sourceBundleID);
    if (std::optional<std::string> string = pasteboard.data(type::kText); string && !string->empty()) {
        return ClipboardItem::makeText(std::move(*string), sourceBundleID, ids_.generate(),
                                       secondsSinceReferenceDate(clock_.wallNow()));
    }
    if (!settings_.clipboardStoreNonText()) return std::nullopt;
    return buildNonTextItem(pasteboard, sourceBundleID);
}

std::optional<ClipboardItem> ClipboardMonitor::buildNonTextItem(const platform::Pasteboard& pasteboard,
                                                                const std::optional<std::string>& sourceBundleID) {
    const std::vector<std::string> types = pasteboard.types();
    if (types.empty()) return std::nullopt;

    std::string typeEmoji(kDefaultEmoji);
    std::string displayName = "data";
    PasteboardTypeData data;
    for (const std::string& name : types) {
        // A type whose data is gone by now (its owner quit mid-read) is skipped.
        std::optional<std::string> bytes = pasteboard.data(name);
        if (name == type::kFileURL && bytes) {
            if (std::optional<std::string> fileName = fileNameFromURLData(*bytes)) {
                displayName = fileName->empty() ? std::string("file") : std::move(*fileName);
                typeEmoji = kFileEmoji;
            }
        }
        if (bytes) data.insert_or_assign(name, std::move(*bytes));
        if (contains(name, "image") || contains(name, "png") || contains(name, "jpeg") || contains(name, "tiff")) {
            typeEmoji = kImageEmoji;
            if (displayName == "data") displayName = "image";
        }
        if (contains(name, "html") || contains(name, "rtf")) {
            typeEmoji = kRichTextEmoji;
            if (displayName == "data") displayName = "rich text";
        }
    }
    if (data.empty()) return std::nullopt;
    return ClipboardItem::makeNonText(std::move(typeEmoji), std::move(displayName), std::move(data), sourceBundleID,
                                      ids_.generate(), secondsSinceReferenceDate(clock_.wallNow()));
}

std::optional<std::string> ClipboardMonitor::fileNameFromURLData(std::string_view data) {
    if (!text::isValidUtf8(data)) return std::nullopt;
    // File URL data is a URI list on some desktops: the first line that is neither empty nor a
    // comment holds the first file.
    std::string_view uri;
    while (!data.empty()) {
        const std::size_t end = data.find('\n');
        std::string_view line = data.substr(0, end);
        data = end == std::string_view::npos ? std::string_view() : data.substr(end + 1);
        line = text::trimmed(line, text::WhitespaceSet::whitespacesAndNewlines);
        if (!line.empty() && line.front() != '#') {
            uri = line;
            break;
        }
    }
    if (uri.empty()) return std::nullopt;

    uri = uri.substr(0, uri.find_first_of("?#"));
    std::string_view path = uri.substr(schemeLength(uri));
    if (path.starts_with("//")) {
        // The authority (a host, or nothing for local files) ends where the path begins.
        const std::size_t slash = path.find('/', 2);
        path = slash == std::string_view::npos ? std::string_view() : path.substr(slash);
    }
    if (path.empty()) return std::string();
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) return std::string("/");
    path = path.substr(0, last + 1);
    const std::size_t start = path.rfind('/');
    const std::string_view component = start == std::string_view::npos ? path : path.substr(start + 1);
    std::string decoded = percentDecoded(component);
    if (!text::isValidUtf8(decoded)) return std::string(component);
    return decoded;
}

void ClipboardMonitor::historyDidChange() {
    if (settings_.clipboardPersistEnabled()) persistence_->saveDebounced(history_.pinned(), history_.unpinned());
    loop_.post([this, alive = std::weak_ptr<bool>(alive_)] {
        if (alive.lock()) historyChanged_.notify();
    });
}

}  // namespace orvantis
