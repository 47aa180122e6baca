#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include <gumbo.h>

#include "core/text/utf.h"
#include "core/text_tools/tt_ops.h"

#include <dlfcn.h>

namespace orvantis::TTOps {
namespace {

/// The soname of the gumbo ABI this program is built against.
constexpr const char* kGumboSoname = "libgumbo.so.1";

/// The parser's entry point and default options, looked up in its library at the first HTML
/// transform (dlopen), so that a program that never reads HTML never maps the parser.
struct GumboLibrary {
    decltype(&::gumbo_parse_with_options) parse;
    const GumboOptions* defaultOptions;

    /// Null when the library or one of its symbols is missing; loaded once, any thread.
    static const GumboLibrary* get() {
        static const std::optional<GumboLibrary> loaded = []() -> std::optional<GumboLibrary> {
            void* library = ::dlopen(kGumboSoname, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
            if (library == nullptr) return std::nullopt;
            GumboLibrary f{};
            f.parse = reinterpret_cast<decltype(f.parse)>(::dlsym(library, "gumbo_parse_with_options"));
            f.defaultOptions = static_cast<const GumboOptions*>(::dlsym(library, "kGumboDefaultOptions"));
            if (f.parse == nullptr || f.defaultOptions == nullptr) return std::nullopt;
            return f;
        }();
        return loaded ? &*loaded : nullptr;
    }
};

/// Memory of one parse. The parser's own tree release walks the tree recursively, which a
/// deeply nested document would overflow; instead everything it allocates lives here and goes
/// at once. Small blocks come from chunks; large ones (the growing text buffers) are real
/// allocations, given back when the parser releases them.
class ParseArena {
public:
    ParseArena() = default;
    ParseArena(const ParseArena&) = delete;
    ParseArena& operator=(const ParseArena&) = delete;
    ~ParseArena() {
        for (void* p : large_) std::free(p);
    }

    static void* allocate(void* self, size_t size) { return static_cast<ParseArena*>(self)->allocate(size); }
    static void release(void* self, void* pointer) { static_cast<ParseArena*>(self)->release(pointer); }

private:
    static constexpr std::size_t kChunk = 1 << 20;
    static constexpr std::size_t kLarge = 4096;

    void* allocate(std::size_t size) {
        if (size >= kLarge) {
            void* p = std::malloc(size);
            if (p == nullptr) std::abort();
            large_.insert(p);
            return p;
        }
        size = (size + 15) & ~static_cast<std::size_t>(15);
        if (chunks_.empty() || used_ + size > kChunk) {
            chunks_.push_back(std::make_unique<std::byte[]>(kChunk));
            used_ = 0;
        }
        void* p = chunks_.back().get() + used_;
        used_ += size;
        return p;
    }
    void release(void* pointer) {
        if (pointer != nullptr && large_.erase(pointer) != 0) std::free(pointer);
    }

    std::vector<std::unique_ptr<std::byte[]>> chunks_;
    std::size_t used_ = 0;
    std::unordered_set<void*> large_;
};

bool isBlock(GumboTag tag) {
    switch (tag) {
    case GUMBO_TAG_ADDRESS: case GUMBO_TAG_ARTICLE: case GUMBO_TAG_ASIDE: case GUMBO_TAG_BLOCKQUOTE:
    case GUMBO_TAG_BODY: case GUMBO_TAG_CAPTION: case GUMBO_TAG_CENTER: case GUMBO_TAG_DD: case GUMBO_TAG_DETAILS:
    case GUMBO_TAG_DIR: case GUMBO_TAG_DIV: case GUMBO_TAG_DL: case GUMBO_TAG_DT:
    case GUMBO_TAG_FIELDSET: case GUMBO_TAG_FIGCAPTION: case GUMBO_TAG_FIGURE: case GUMBO_TAG_FOOTER:
    case GUMBO_TAG_FORM: case GUMBO_TAG_H1: case GUMBO_TAG_H2: case GUMBO_TAG_H3: case GUMBO_TAG_H4:
    case GUMBO_TAG_H5: case GUMBO_TAG_H6: case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP: case GUMBO_TAG_HR:
    case GUMBO_TAG_LI: case GUMBO_TAG_LISTING: case GUMBO_TAG_MAIN: case GUMBO_TAG_MENU: case GUMBO_TAG_NAV:
    case GUMBO_TAG_OL: case GUMBO_TAG_P: case GUMBO_TAG_PLAINTEXT: case GUMBO_TAG_PRE: case GUMBO_TAG_SECTION:
    case GUMBO_TAG_SUMMARY: case GUMBO_TAG_TABLE: case GUMBO_TAG_TR: case GUMBO_TAG_UL: case GUMBO_TAG_XMP:
    case GUMBO_TAG_LEGEND: case GUMBO_TAG_OPTION:
        return true;
    default:
        return false;
    }
}

bool isHidden(GumboTag tag) {
    return tag == GUMBO_TAG_HEAD || tag == GUMBO_TAG_SCRIPT || tag == GUMBO_TAG_STYLE || tag == GUMBO_TAG_TEMPLATE ||
           tag == GUMBO_TAG_TITLE || tag == GUMBO_TAG_NOFRAMES;
}

bool keepsWhiteSpace(GumboTag tag) {
    return tag == GUMBO_TAG_PRE || tag == GUMBO_TAG_TEXTAREA || tag == GUMBO_TAG_LISTING ||
           tag == GUMBO_TAG_PLAINTEXT || tag == GUMBO_TAG_XMP;
}

/// The rendered text, built as a browser lays out white space: runs of blanks and line breaks
/// in ordinary text are one blank, none at the start or end of a line; blocks start and end
/// lines; `<br>` is a line break; cells of a table row are parted by tabs.
class TextLayout {
public:
    void text(std::string_view s, bool preformatted) {
        if (preformatted) {
            flushBreak();
            out_.append(s);
            space_ = false;
            atLineStart_ = !s.empty() && s.back() == '\n';
            return;
        }
        for (char c : s) {
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f') {
                space_ = true;
                continue;
            }
            if (breakPending_) {
                flushBreak();
            } else if (space_ && !atLineStart_) {
                out_.push_back(' ');
            }
            space_ = false;
            out_.push_back(c);
            atLineStart_ = false;
        }
    }
    void blockBoundary() {
        if (!out_.empty() && !atLineStart_) breakPending_ = true;
        space_ = false;
    }
    void lineBreak() {
        flushBreak();
        out_.push_back('\n');
        atLineStart_ = true;
        space_ = false;
    }
    void cellSeparator() {
        if (!atLineStart_ && !breakPending_ && !out_.empty()) {
            out_.push_back('\t');
            space_ = false;
        }
    }
    std::string take() { return std::move(out_); }

private:
    void flushBreak() {
        if (breakPending_) {
            out_.push_back('\n');
            atLineStart_ = true;
            breakPending_ = false;
        }
    }

    std::string out_;
    bool space_ = false;
    bool breakPending_ = false;
    bool atLineStart_ = true;
};


/// Documents nested deeper than this are refused: the parser's tree construction looks
/// through the stack of open elements for many tags, so a bomb of a hundred thousand nested
/// blocks would take minutes. Browsers stop nesting at a few hundred levels; no real page
/// comes near this.
constexpr std::size_t kMaxNesting = 4096;

bool nameIs(std::string_view name, std::initializer_list<std::string_view> names) {
    for (std::string_view n : names) {
        if (name == n) return true;
    }
    return false;
}

/// An upper bound of the element nesting of `html`, read from its tags without parsing: every
/// start tag of an element that is neither void nor closed by its next sibling opens a level,
/// every end tag closes one. Comments and the contents of raw-text elements are skipped.
std::size_t estimatedNesting(std::string_view html) {
    std::size_t depth = 0;
    std::size_t deepest = 0;
    std::size_t i = 0;
    const std::size_t n = html.size();
    auto isAlpha = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    while (i < n) {
        const std::size_t lt = html.find('<', i);
        if (lt == std::string_view::npos || lt + 1 >= n) break;
        i = lt + 1;
        const char next = html[i];
        if (next == '!') {
            const bool comment = html.substr(i, 3) == "!--";
            const std::size_t end = html.find(comment ? "-->" : ">", i);
            if (end == std::string_view::npos) break;
            i = end + 1;
            continue;
        }
        if (next == '/') {
            if (i + 1 < n && isAlpha(html[i + 1]) && depth > 0) --depth;
            continue;
        }
        if (!isAlpha(next)) continue;
        std::string name;
        while (i < n && name.size() < 16 && (isAlpha(html[i]) || (html[i] >= '0' && html[i] <= '9'))) {
            name.push_back(static_cast<char>(html[i] | 0x20));
            ++i;
        }
        const std::size_t gt = html.find('>', i);
        const bool selfClosing = gt != std::string_view::npos && gt > 0 && html[gt - 1] == '/';
        if (nameIs(name, {"script", "style", "textarea", "title", "xmp", "iframe", "noembed", "noframes"})) {
            const std::size_t end = html.find("</", gt == std::string_view::npos ? i : gt);
            i = end == std::string_view::npos ? n : end;
            continue;
        }
        if (nameIs(name, {"plaintext"})) break;
        if (selfClosing ||
            nameIs(name, {"area", "base", "br", "col", "embed", "hr", "img", "input", "link", "meta", "param",
                          "source", "track", "wbr", "keygen", "p", "li", "dt", "dd", "option", "optgroup", "tr",
                          "td", "th", "tbody", "thead", "tfoot", "colgroup", "rb", "rt", "rp", "rtc", "html",
                          "head", "body"})) {
            continue;
        }
        deepest = std::max(deepest, ++depth);
    }
    return deepest;
}

}  // namespace

std::string runHtmlUnescape(std::string_view text) {
    // A document the parser would not finish in good time counts as one it could not read.
    if (estimatedNesting(text) > kMaxNesting) return std::string(text);
    // Without the parser's library the text stays as it is, as with a document it cannot read.
    const GumboLibrary* gumbo = GumboLibrary::get();
    if (gumbo == nullptr) return std::string(text);
    ParseArena arena;
    GumboOptions options = *gumbo->defaultOptions;
    options.allocator = &ParseArena::allocate;
    options.deallocator = &ParseArena::release;
    options.userdata = &arena;
    options.max_errors = 0;  // only the tree is wanted
    GumboOutput* output = gumbo->parse(&options, text.data(), text.size());
    if (output == nullptr) return std::string(text);

    // Depth-first over the tree with an explicit stack, since documents may nest very deep.
    struct Visit {
        const GumboNode* node;
        unsigned nextChild;
        int preformatted;  // depth of enclosing elements that keep their white space
    };
    TextLayout layout;
    std::vector<Visit> stack;
    stack.push_back({output->document, 0, 0});
    while (!stack.empty()) {
        Visit& visit = stack.back();
        const GumboNode* node = visit.node;
        const GumboVector* children = nullptr;
        if (node->type == GUMBO_NODE_DOCUMENT) children = &node->v.document.children;
        else if (node->type == GUMBO_NODE_ELEMENT || node->type == GUMBO_NODE_TEMPLATE)
            children = &node->v.element.children;
        if (children == nullptr || visit.nextChild >= children->length) {
            if (node->type == GUMBO_NODE_ELEMENT && isBlock(node->v.element.tag)) layout.blockBoundary();
            stack.pop_back();
            continue;
        }
        const auto* child = static_cast<const GumboNode*>(children->data[visit.nextChild++]);
        const int preformatted = visit.preformatted;
        switch (child->type) {
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_WHITESPACE:
        case GUMBO_NODE_CDATA:
            layout.text(child->v.text.text, preformatted > 0);
            break;
        case GUMBO_NODE_ELEMENT: {
            const GumboTag tag = child->v.element.tag;
            if (isHidden(tag)) break;
            if (tag == GUMBO_TAG_BR) {
                layout.lineBreak();
                break;
            }
            if (tag == GUMBO_TAG_TD || tag == GUMBO_TAG_TH) layout.cellSeparator();
            if (isBlock(tag)) layout.blockBoundary();
            stack.push_back({child, 0, preformatted + (keepsWhiteSpace(tag) ? 1 : 0)});
            break;
        }
        default:
            break;  // comments, and templates' contents, which are not shown
        }
    }
    // The arena releases the tree; the parser's own release would recurse through it. A numeric
    // reference too large for any character comes out of the parser as a stray byte, not as
    // the replacement character that HTML makes of it: such bytes become that character here.
    std::string result = layout.take();
    if (!text::isValidUtf8(result)) result = text::repairUtf8(result);
    return result;
}

bool htmlParserLoaded() {
    void* library = ::dlopen(kGumboSoname, RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return false;
    ::dlclose(library);
    return true;
}

}  // namespace orvantis::TTOps
