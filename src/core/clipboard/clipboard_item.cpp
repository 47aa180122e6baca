#include "core/clipboard/clipboard_item.h"

#include <optional>

#include <openssl/evp.h>

#include "core/text/graphemes.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

#include <dlfcn.h>

namespace orvantis {
namespace {

std::string wellFormed(std::string text) {
    if (text::isValidUtf8(text)) return text;
    return text::repairUtf8(text);
}

/// The digest functions of libcrypto, looked up the first time non-text content is hashed:
/// linked at start, the library is loaded and relocated (over a megabyte) by every launch,
/// and text copies never need it. It stays loaded to the end of the process.
struct Libcrypto {
    decltype(&::EVP_MD_CTX_new) contextNew;
    decltype(&::EVP_MD_CTX_free) contextFree;
    decltype(&::EVP_sha256) sha256;
    decltype(&::EVP_DigestInit_ex) digestInit;
    decltype(&::EVP_DigestUpdate) digestUpdate;
    decltype(&::EVP_DigestFinal_ex) digestFinal;
};

template <typename Function>
bool resolve(void* library, const char* name, Function& out) {
    out = reinterpret_cast<Function>(::dlsym(library, name));
    return out != nullptr;
}

/// Null when the library or one of its functions is missing.
const Libcrypto* libcrypto() {
    static const std::optional<Libcrypto> loaded = []() -> std::optional<Libcrypto> {
        // The soname of OpenSSL 3, the ABI this program is built against.
        void* library = ::dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return std::nullopt;
        Libcrypto functions{};
        const bool ok = resolve(library, "EVP_MD_CTX_new", functions.contextNew) &&
                        resolve(library, "EVP_MD_CTX_free", functions.contextFree) &&
                        resolve(library, "EVP_sha256", functions.sha256) &&
                        resolve(library, "EVP_DigestInit_ex", functions.digestInit) &&
                        resolve(library, "EVP_DigestUpdate", functions.digestUpdate) &&
                        resolve(library, "EVP_DigestFinal_ex", functions.digestFinal);
        if (!ok) return std::nullopt;
        return functions;
    }();
    return loaded ? &*loaded : nullptr;
}

}  // namespace

ClipboardItem::ClipboardItem(Uuid id, double timestamp, ClipboardItemKind kind, std::string previewText,
                             std::optional<std::string> sourceBundleID,
                             std::optional<std::string> nonTextContentHash)
    : id_(id), timestamp_(timestamp), kind_(std::move(kind)), previewText_(std::move(previewText)),
      sourceBundleID_(std::move(sourceBundleID)), nonTextContentHash_(std::move(nonTextContentHash)) {
    if (const auto* content = std::get_if<NonTextContent>(&kind_)) {
        nonTextDedupKey_ = content->typeEmoji + content->displayName + "#" + nonTextContentHash_.value_or("");
    } else {
        const std::string& whole = std::get<TextContent>(kind_).text;
        const std::string_view key = text::trimmed(whole, text::WhitespaceSet::whitespacesAndNewlines);
        textKeyOffset_ = key.empty() ? 0 : static_cast<std::size_t>(key.data() - whole.data());
        textKeyLength_ = key.size();
    }
}

ClipboardItem ClipboardItem::makeText(std::string text, std::optional<std::string> sourceBundleID, Uuid id,
                                      double timestamp) {
    text = wellFormed(std::move(text));
    std::string previewText = preview(text);
    return ClipboardItem(id, timestamp, TextContent{std::move(text)}, std::move(previewText),
                         std::move(sourceBundleID), std::nullopt);
}

ClipboardItem ClipboardItem::makeNonText(std::string typeEmoji, std::string displayName, PasteboardTypeData types,
                                         std::optional<std::string> sourceBundleID, Uuid id, double timestamp) {
    std::string previewText = typeEmoji + " " + displayName;
    std::string contentHash = hash(types);
    NonTextContent content{std::move(typeEmoji), std::move(displayName),
                           std::make_shared<const PasteboardTypeData>(std::move(types))};
    return ClipboardItem(id, timestamp, std::move(content), std::move(previewText), std::move(sourceBundleID),
                         std::move(contentHash));
}

ClipboardItem::ClipboardItem(PersistedClipboardItem persisted)
    : ClipboardItem(makeText(std::move(persisted.text), std::move(persisted.sourceBundleID), persisted.id,
                             persisted.timestamp)) {
    isPinned_ = persisted.isPinned;
}

std::optional<PersistedClipboardItem> ClipboardItem::toPersisted() const {
    const std::string* content = text();
    if (content == nullptr) return std::nullopt;
    return PersistedClipboardItem{id_, timestamp_, *content, isPinned_, sourceBundleID_};
}

const std::string* ClipboardItem::text() const {
    if (const auto* content = std::get_if<TextContent>(&kind_)) return &content->text;
    return nullptr;
}

std::string_view ClipboardItem::dedupKey() const {
    if (const std::string* content = text()) return std::string_view(*content).substr(textKeyOffset_, textKeyLength_);
    return nonTextDedupKey_;
}

std::string ClipboardItem::preview(std::string_view text) {
    // The first line that holds more than blanks; found without cutting the whole text into
    // lines, since a copied text can be megabytes long.
    std::string_view chosen = text;
    std::size_t lineStart = 0;
    auto hasContent = [](std::string_view line) {
        return !text::trimmed(line, text::WhitespaceSet::whitespaces).empty();
    };
    bool found = false;
    for (const text::CodePoint& c : text::codePoints(text)) {
        if (!text::isIn(text::WhitespaceSet::newlines, c.value)) continue;
        const std::string_view line = text.substr(lineStart, c.offset - lineStart);
        if (hasContent(line)) {
            chosen = line;
            found = true;
            break;
        }
        lineStart = c.offset + c.length;
    }
    if (!found && hasContent(text.substr(lineStart))) chosen = text.substr(lineStart);
    return text::truncatedGraphemes(chosen, kPreviewLength, kEllipsis);
}

std::string ClipboardItem::hash(const PasteboardTypeData& types) {
    // libcrypto fails only when it is missing or without memory; an entry without a hash still
    // has an identity.
    const Libcrypto* crypto = libcrypto();
    if (crypto == nullptr) return {};
    const auto freeContext = [crypto](EVP_MD_CTX* context) { crypto->contextFree(context); };
    std::unique_ptr<EVP_MD_CTX, decltype(freeContext)> context(crypto->contextNew(), freeContext);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    bool ok = context && crypto->digestInit(context.get(), crypto->sha256(), nullptr) == 1;
    for (const auto& [type, bytes] : types) {  // the map keeps the names in ascending order
        ok = ok && crypto->digestUpdate(context.get(), type.data(), type.size()) == 1;
        ok = ok && crypto->digestUpdate(context.get(), bytes.data(), bytes.size()) == 1;
    }
    ok = ok && crypto->digestFinal(context.get(), digest, &length) == 1;
    if (!ok) return {};
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        out.push_back(kHex[digest[i] >> 4]);
        out.push_back(kHex[digest[i] & 0x0F]);
    }
    return out;
}

}  // namespace orvantis
