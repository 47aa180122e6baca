#include "app/transform_command.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
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

constexpr std::string_view kNotUtf8 = "orvantis: transform: the input is not valid UTF-8\n";

/// Standard input that is a regular file, read in pieces from where it stands, as often as
/// needed, without moving its position: a large input is never held whole, and no fresh memory
/// is touched for it (on a large input the kernel's clearing of new pages costs more than the
/// transform).
class RereadableStandardInput {
public:
    RereadableStandardInput() {
        struct stat status {};
        if (::fstat(STDIN_FILENO, &status) != 0 || !S_ISREG(status.st_mode)) return;
        start_ = ::lseek(STDIN_FILENO, 0, SEEK_CUR);
    }
    /// False when standard input is no regular file.
    bool usable() const { return start_ >= 0; }
    /// Calls `sink` with each piece of `size` bytes from the start (the last one shorter) and
    /// answers true; false when a read fails.
    bool forEachPiece(std::size_t size, const std::function<void(std::string_view)>& sink) {
        if (buffer_.size() < size) buffer_.resize(size);
        off_t offset = start_;
        while (true) {
            std::size_t filled = 0;
            while (filled < size) {
                const ssize_t n = ::pread(STDIN_FILENO, buffer_.data() + filled, size - filled, offset);
                if (n < 0 && errno == EINTR) continue;
                if (n < 0) return false;
                if (n == 0) break;
                filled += static_cast<std::size_t>(n);
                offset += n;
            }
            if (filled > 0) sink(std::string_view(buffer_.data(), filled));
            if (filled < size) return true;
        }
    }

private:
    off_t start_ = -1;
    std::string buffer_;
};

/// A digest of standard input read in pieces, so that a large input is never held whole.
int runStreamingHash(TTOps::HashAlgorithm algorithm, std::istream& in, std::ostream& out, std::ostream& err) {
    TTOps::IncrementalHash hash(algorithm);
    text::Utf8Stream utf8;
    bool valid = true;
    constexpr std::size_t kPiece = 1 << 20;
    std::string buffer(kPiece, '\0');
    while (in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const std::string_view piece(buffer.data(), static_cast<std::size_t>(in.gcount()));
        valid = valid && utf8.add(piece);
        hash.update(piece);
    }
    if (!valid || !utf8.finish()) {
        err << kNotUtf8;
        return 2;
    }
    out << hash.hex();
    out.flush();
    return 0;
}

/// The transform of the whole input, written at once.
int runWhole(TextTransform transform, std::string_view input, std::ostream& out, std::ostream& err,
             const std::function<SettingsLanguage()>& language) {
    if (!text::isValidUtf8(input)) {
        err << kNotUtf8;
        return 2;
    }
    try {
        const SettingsLanguage lang = transform == TextTransform::count && language ? language() : SettingsLanguage::en;
        const std::string result = applyTransform(transform, input, lang);
        out.write(result.data(), static_cast<std::streamsize>(result.size()));
        out.flush();
    } catch (const TransformError& error) {
        err << error.errorDescription() << '\n';
        return 1;
    }
    return 0;
}

constexpr std::string_view kUnreadable = "orvantis: transform: the input cannot be read\n";

/// Base64 either way and hex encoding of a file on standard input, written in pieces as they are
/// made. The file is read twice: first to check it (encoding: that it is UTF-8; decoding: that
/// it decodes in pieces, to UTF-8), then to write. What can't be decoded in pieces goes to the
/// whole transform.
int runInPiecesOnFile(TextTransform transform, RereadableStandardInput& file, std::istream& in, std::ostream& out,
                      std::ostream& err) {
    constexpr std::size_t kPiece = 3 << 16;  // whole groups of three bytes
    const auto write = [&out](std::string_view piece) { out.write(piece.data(), static_cast<std::streamsize>(piece.size())); };
    text::Utf8Stream utf8;
    bool valid = true;
    if (transform == TextTransform::base64Encode || transform == TextTransform::hexEncode) {
        if (!file.forEachPiece(kPiece, [&](std::string_view piece) { valid = valid && utf8.add(piece); })) {
            err << kUnreadable;
            return 2;
        }
        if (!valid || !utf8.finish()) {
            err << kNotUtf8;
            return 2;
        }
        TTOps::Base64PieceEncoder encoder(write);
        std::string hex;
        const bool read = file.forEachPiece(kPiece, [&](std::string_view piece) {
            if (transform == TextTransform::hexEncode) write(TTOps::runHexEncodeInto(piece, hex));
            else encoder.add(piece);
        });
        if (!read) {
            err << kUnreadable;
            return 2;
        }
        encoder.finish();
        out.flush();
        return 0;
    }
    TTOps::Base64PieceDecoder check([&](std::string_view piece) { valid = valid && utf8.add(piece); });
    bool plain = true;
    if (!file.forEachPiece(kPiece, [&](std::string_view piece) { plain = plain && check.add(piece); })) {
        err << kUnreadable;
        return 2;
    }
    if (!plain || !check.finish() || !valid || !utf8.finish()) return runWhole(transform, readAll(in), out, err, nullptr);
    TTOps::Base64PieceDecoder decoder(write);
    if (!file.forEachPiece(kPiece, [&](std::string_view piece) { decoder.add(piece); }) || !decoder.finish()) {
        err << kUnreadable;
        return 2;
    }
    out.flush();
    return 0;
}

/// Base64 either way and hex encoding, with the result written in pieces as it is made: a large
/// result is never held whole. A file on standard input is read in pieces too; other input is
/// held whole, since decoding needs to know that all its bytes are UTF-8 before it gives any.
/// An input that can't be decoded in pieces goes to the whole transform.
int runInPieces(TextTransform transform, std::istream& in, std::ostream& out, std::ostream& err) {
    if (&in == &std::cin) {
        if (RereadableStandardInput file; file.usable()) return runInPiecesOnFile(transform, file, in, out, err);
    }
    const std::string input = readAll(in);
    const auto write = [&out](std::string_view piece) { out.write(piece.data(), static_cast<std::streamsize>(piece.size())); };
    if (transform == TextTransform::base64Encode || transform == TextTransform::hexEncode) {
        if (!text::isValidUtf8(input)) {
            err << kNotUtf8;
            return 2;
        }
        if (transform == TextTransform::base64Encode) {
            TTOps::runBase64EncodeInPieces(input, write);
        } else {
            std::string hex;
            for (std::size_t offset = 0; offset < input.size(); offset += 1 << 17) {
                write(TTOps::runHexEncodeInto(std::string_view(input).substr(offset, 1 << 17), hex));
            }
        }
    } else if (!TTOps::runBase64DecodeInPieces(input, write)) {
        return runWhole(transform, input, out, err, nullptr);
    }
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
    case TextTransform::base64Encode:
    case TextTransform::base64Decode:
    case TextTransform::hexEncode: return runInPieces(*transform, in, out, err);
    default: break;
    }
    return runWhole(*transform, readAll(in), out, err, language);
}

}  // namespace orvantis::app
