#pragma once

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/settings/settings_language.h"

namespace orvantis {

/// The one-shot conversions of the text tools window, in the order of its list. Each takes a
/// whole text and yields a whole text or throws `TransformError`. Pure logic: no state, no
/// threads; safe to call from any thread.
enum class TextTransform {
    md5,
    sha1,
    sha256,
    sha512,
    base64Encode,
    base64Decode,
    urlEncode,
    urlDecode,
    hexEncode,
    hexDecode,
    htmlEscape,
    htmlUnescape,
    unicodeEscape,
    unicodeUnescape,
    jsonPretty,
    jsonMinify,
    upper,
    lower,
    titleCase,
    reverse,
    rot13,
    trim,
    unixToISO,
    isoToUnix,
    count,
};

/// Every transform in list order.
inline constexpr std::array<TextTransform, 25> kAllTextTransforms{
    TextTransform::md5,           TextTransform::sha1,           TextTransform::sha256,
    TextTransform::sha512,        TextTransform::base64Encode,   TextTransform::base64Decode,
    TextTransform::urlEncode,     TextTransform::urlDecode,      TextTransform::hexEncode,
    TextTransform::hexDecode,     TextTransform::htmlEscape,     TextTransform::htmlUnescape,
    TextTransform::unicodeEscape, TextTransform::unicodeUnescape, TextTransform::jsonPretty,
    TextTransform::jsonMinify,    TextTransform::upper,          TextTransform::lower,
    TextTransform::titleCase,     TextTransform::reverse,        TextTransform::rot13,
    TextTransform::trim,          TextTransform::unixToISO,      TextTransform::isoToUnix,
    TextTransform::count,
};

/// The case name, such as "base64Decode": the identifier of the command line.
std::string_view id(TextTransform transform);

/// The transform whose case name is `name`, or nullopt.
std::optional<TextTransform> textTransformFromId(std::string_view name);

/// The name shown in the window's list, in `language`.
std::string_view displayName(TextTransform transform, SettingsLanguage language);

/// The only failure of a transform: the input is not valid for the format named by `format()`
/// ("Base64", "Hex (odd length)", "Hex", "JSON", "Unix timestamp", "ISO 8601"). `what()` is the
/// text the user reads, "Invalid input for Base64.", the same in every interface language.
class TransformError : public std::runtime_error {
public:
    explicit TransformError(std::string format);
    const std::string& format() const { return format_; }
    /// The user's text: "Invalid input for " + format + ".".
    std::string errorDescription() const { return what(); }

private:
    std::string format_;
};

/// Applies `transform` to the whole of `text` (UTF-8). `language` is the interface language,
/// read only by `count` for its labels. Throws `TransformError` when the input does not fit
/// the format; never anything else for any input, ill-formed UTF-8 included (read as U+FFFD
/// where characters are needed). (Not named `apply`: an unqualified call with a std::string
/// would meet std::apply through argument-dependent lookup and fail to compile.)
std::string applyTransform(TextTransform transform, std::string_view text, SettingsLanguage language = SettingsLanguage::en);

}  // namespace orvantis
