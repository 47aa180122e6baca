#include "app/transform_command.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <string_view>

#include "core/text/utf.h"
#include "core/text_tools/text_transform.h"
#include "core/text_tools/tt_ops.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvantis::app {
namespace {

constexpr std::string_view kTransformUsage = "usage: orvantis transform NAME < INPUT, or orvantis transform --list\n";

int usageError(std::ostream& err, std::string_view message) {
    err << "orvantis: " << message << '\n' << kTransformUsage;
    return 2;
}

/// Asks for the unused capacity of a large buffer in huge pages, which take a small part of
/// the page faults of ordinary ones. Advice only.
void adviseHugePages(std::string& buffer) {
    constexpr std::uintptr_t kHugePage = 2u << 20;
    const auto address = reinterpret_cast<std::uintptr_t>(buffer.data());
    const std::uintptr_t begin = (address + buffer.size() + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t end = (address + buffer.capacity()) & ~(kHugePage - 1);
    if (end > begin + 4 * kHugePage) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

/// All of `in`, read in large blocks. Standard input that is a file is read into a buffer of
/// its size at once.
std::string readAll(std::istream& in) {
    std::string data;
    std::size_t block = 1 << 20;
    struct stat status {};
    if (&in == &std::cin && ::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
        block = static_cast<std::size_t>(status.st_size) + 1;  // one more, to see the end at once
    }
    while (in) {
        const std::size_t size = data.size();
        if (data.capacity() < size + block) {
            data.reserve(size + block);
            adviseHugePages(data);
        }
        data.resize(size + block);
        in.read(data.data() + size, static_cast<std::streamsize>(block));
        data.resize(size + static_cast<std::size_t>(in.gcount()));
        block = std::max<std::size_t>(block, data.size());  // the buffer doubles, at least
    }
    return data;
}

/// Checks UTF-8 that arrives in pieces: a sequence cut by the end of a piece is kept for the
/// next one.
class Utf8Stream {
public:
    /// False as soon as the text so far cannot be UTF-8.
    bool add(std::string_view piece) {
        std::string_view rest = piece;
        if (!pending_.empty()) {
            // Complete the cut sequence with the first bytes of this piece.
            const std::size_t take = std::min<std::size_t>(4 - pending_.size(), rest.size());
            pending_.append(rest.substr(0, take));
            const text::CodePoint c = text::decodeCodePoint(pending_, 0);
            if (c.valid) {
                rest.remove_prefix(c.length - (pending_.size() - take));
                pending_.clear();
            } else if (pending_.size() < 4 && take == rest.size()) {
                return true;  // still too short to judge
            } else {
                return false;
            }
        }
        // Keep back a lead byte whose sequence this piece does not finish.
        std::size_t cut = rest.size();
        for (std::size_t back = 1; back <= 3 && back <= rest.size(); ++back) {
            const auto byte = static_cast<unsigned char>(rest[rest.size() - back]);
            if ((byte & 0xC0) == 0x80) continue;
            const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
            if (length > back) cut = rest.size() - back;
            break;
        }
        pending_.assign(rest.substr(cut));
        return text::isValidUtf8(rest.substr(0, cut));
    }
    /// True when no sequence is left unfinished.
    bool finish() const { return pending_.empty(); }

private:
    std::string pending_;
};

/// A digest of standard input read in pieces, so that a large input is never held whole.
int runStreamingHash(TTOps::HashAlgorithm algorithm, std::istream& in, std::ostream& out, std::ostream& err) {
    TTOps::IncrementalHash hash(algorithm);
    Utf8Stream utf8;
    std::string buffer(1 << 20, '\0');
    bool valid = true;
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const std::string_view piece(buffer.data(), static_cast<std::size_t>(in.gcount()));
        valid = valid && utf8.add(piece);
        hash.update(piece);
    }
    if (!valid || !utf8.finish()) {
        err << "orvantis: transform: the input is not valid UTF-8\n";
        return 2;
    }
    out << hash.hex();
    out.flush();
    return 0;
}

}  // namespace

int runTransformCommand(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                        std::ostream& err, const std::function<SettingsLanguage()>& language) {
    if (args.size() != 2) return usageError(err, "transform takes one NAME, or --list");
    if (args[1] == "--list") {
        for (TextTransform t : kAllTextTransforms) out << id(t) << '\t' << displayName(t, SettingsLanguage::en) << '\n';
        return 0;
    }
    const std::optional<TextTransform> transform = textTransformFromId(args[1]);
    if (!transform) {
        return usageError(err, "unknown transform \"" + args[1] + "\" (see: orvantis transform --list)");
    }
    switch (*transform) {
    case TextTransform::md5: return runStreamingHash(TTOps::HashAlgorithm::md5, in, out, err);
    case TextTransform::sha1: return runStreamingHash(TTOps::HashAlgorithm::sha1, in, out, err);
    case TextTransform::sha256: return runStreamingHash(TTOps::HashAlgorithm::sha256, in, out, err);
    case TextTransform::sha512: return runStreamingHash(TTOps::HashAlgorithm::sha512, in, out, err);
    default: break;
    }
    const std::string input = readAll(in);
    if (!text::isValidUtf8(input)) {
        err << "orvantis: transform: the input is not valid UTF-8\n";
        return 2;
    }
    try {
        const SettingsLanguage lang =
            *transform == TextTransform::count && language ? language() : SettingsLanguage::en;
        const std::string result = applyTransform(*transform, input, lang);
        out.write(result.data(), static_cast<std::streamsize>(result.size()));
        out.flush();
    } catch (const TransformError& error) {
        err << error.errorDescription() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace orvantis::app
