#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "core/crypto/digest.h"
#include "core/settings/settings_language.h"

// The transforms of the text tools that need more than a line. Each takes the UTF-8 text and
// returns the UTF-8 result; the ones that can fail throw `TransformError`.
namespace orvantis::TTOps {

using HashAlgorithm = crypto::DigestAlgorithm;

/// Lower-case hex digest of the bytes of `text`, through libcrypto.
std::string runHash(std::string_view text, HashAlgorithm algorithm);

/// The digest of a text that arrives in pieces, for input too large to hold twice: `hex()`
/// after every piece is what `runHash` gives for the whole.
using IncrementalHash = crypto::Digest;

/// Standard Base64 with padding, on one line.
std::string runBase64Encode(std::string_view text);
/// Tolerant Base64: blanks, CR and LF dropped, the URL-safe alphabet mapped, missing padding
/// added, then strict decoding. Bytes that are not UTF-8 come back as "(non-UTF8) " and hex.
/// Throws `TransformError("Base64")`.
std::string runBase64Decode(std::string_view text);
/// Receives a result in pieces, in order.
using PieceSink = std::function<void(std::string_view piece)>;
/// runBase64Encode of a text that arrives in pieces of any size, given in pieces as it is made,
/// through one buffer that is kept: together the pieces given are runBase64Encode of the whole.
class Base64PieceEncoder {
public:
    explicit Base64PieceEncoder(PieceSink sink);
    /// The next bytes of the text.
    void add(std::string_view bytes);
    /// The end of the text: the last bytes with their padding.
    void finish();

private:
    PieceSink sink_;
    std::string buffer_;
    std::string carried_;  ///< up to two bytes of an unfinished group
};

/// runBase64Encode given in pieces, for a result too large to hold at once: together the
/// pieces are runBase64Encode(text), and none is much larger than `pieceSize`.
void runBase64EncodeInPieces(std::string_view text, const PieceSink& sink, std::size_t pieceSize = 1 << 18);
/// The decoding of runBase64Decode for a text that arrives in pieces, given in pieces as it is
/// made. Takes text of the plain form: the Base64 alphabet (either form), blanks and line
/// breaks anywhere, and '=' only at the end (with blanks and breaks among them). On such text,
/// the pieces given are together the bytes that runBase64Decode decodes, before its check for
/// UTF-8. Anything else (a tab, an '=' with more after it, a character outside the alphabet, a
/// wrong number of '=') makes add() or finish() answer false, and nothing more is given: the
/// whole transform then gives its error.
class Base64PieceDecoder {
public:
    explicit Base64PieceDecoder(PieceSink sink);
    /// The next piece of the text. False once the text has left the plain form.
    bool add(std::string_view piece);
    /// The end of the text: decodes the last characters with their padding. False when the text
    /// has left the plain form or its end does not decode.
    bool finish();

private:
    PieceSink sink_;
    std::string compacted_;
    std::string decoded_;
    std::size_t carried_ = 0;  ///< characters of an unfinished group, at the start of compacted_
    std::string padding_;      ///< the '=' seen so far; only more of them may follow
    bool failed_ = false;
};

/// runBase64Decode given in pieces, for a result too large to hold at once. On text of the
/// plain form (see Base64PieceDecoder) whose bytes are UTF-8, the pieces are together
/// runBase64Decode(text), and the answer is true. For any other text it gives nothing and
/// answers false; runBase64Decode then gives the result, the hex form or the error. Reads
/// `text` twice: once to check, once to give.
bool runBase64DecodeInPieces(std::string_view text, const PieceSink& sink, std::size_t pieceSize = 1 << 18);
/// Percent-encodes every scalar outside Unicode's letters, marks and numbers and `-._~`.
std::string runUrlEncode(std::string_view text);
/// Replaces `%XX`; the input comes back as it is when a `%` is malformed or the bytes are not
/// UTF-8.
std::string runUrlDecode(std::string_view text);
/// Two lower-case hex digits per byte.
std::string runHexEncode(std::string_view text);
/// runHexEncode of `bytes` written into `buffer`, which grows as needed and is kept by the
/// caller for the next piece of a long text; the view is of `buffer`.
std::string_view runHexEncodeInto(std::string_view bytes, std::string& buffer);
/// Hex to bytes after dropping blanks, line breaks, tabs, "0x" and colons. Throws
/// `TransformError("Hex (odd length)")` or `TransformError("Hex")`.
std::string runHexDecode(std::string_view text);
/// `& < > " '` as entities.
std::string runHtmlEscape(std::string_view text);
/// The text content of `text` read as an HTML document: entities decoded, tags dropped,
/// white space laid out as HTML does.
std::string runHtmlUnescape(std::string_view text);
/// Whether the HTML parser's library is in this process's memory: it is loaded at the first
/// runHtmlUnescape(), never before. For tests and diagnostics.
bool htmlParserLoaded();
/// `\uXXXX` for controls, the backslash and everything above U+007F (surrogate pairs above
/// U+FFFF).
std::string runUnicodeEscape(std::string_view text);
/// `\uXXXX` groups that name a scalar become it; everything else stays.
std::string runUnicodeUnescape(std::string_view text);
/// Sorted keys, two blanks per level, `"key" : value`. Throws `TransformError("JSON")`.
std::string runJsonPretty(std::string_view text);
/// One line, keys in input order. Throws `TransformError("JSON")`.
std::string runJsonMinify(std::string_view text);
/// A to Z and a to z rotated by 13.
std::string runRot13(std::string_view text);
/// Seconds (or milliseconds above 1e10) since 1970 as "2023-11-14T22:13:20.000Z". Throws
/// `TransformError("Unix timestamp")`.
std::string runUnixToISO(std::string_view text);
/// An ISO 8601 date and time as seconds since 1970, shortest round-trip decimal with a point.
/// Throws `TransformError("ISO 8601")`.
std::string runIsoToUnix(std::string_view text);
/// Characters, words, lines and UTF-8 bytes, one labelled line each.
std::string runCountStats(std::string_view text, SettingsLanguage lang);

}  // namespace orvantis::TTOps
