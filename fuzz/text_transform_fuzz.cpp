// libFuzzer target for the text tools' transforms that parse their input. Built once per
// transform, with ORVANTIS_FUZZ_TRANSFORM set to its case name; any bytes go in. Besides not
// crashing, leaking or overflowing the stack, a transform may only fail with TransformError,
// and what comes out must keep its promises: well-formed UTF-8 from well-formed input, the
// round trip with the opposite transform, and for Base64 the same result when decoded in pieces.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/text/utf.h"
#include "core/text_tools/text_transform.h"
#include "core/text_tools/tt_ops.h"

namespace {

using orvantis::TextTransform;

void require(bool condition) {
    if (!condition) __builtin_trap();
}

TextTransform fuzzed() {
    static const TextTransform transform = [] {
        const auto t = orvantis::textTransformFromId(ORVANTIS_FUZZ_TRANSFORM);
        require(t.has_value());
        return *t;
    }();
    return transform;
}

std::optional<std::string> tryApply(TextTransform t, std::string_view text) {
    try {
        return orvantis::applyTransform(t, text);
    } catch (const orvantis::TransformError& error) {
        require(error.errorDescription().rfind("Invalid input for ", 0) == 0);
        return std::nullopt;
    }
}

bool isBinaryResult(const std::string& s) { return s.rfind("(non-UTF8) ", 0) == 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using orvantis::text::isValidUtf8;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const bool valid = isValidUtf8(input);
    const TextTransform t = fuzzed();
    const std::optional<std::string> out = tryApply(t, input);

    switch (t) {
    case TextTransform::base64Decode:
        // Decoding in pieces, at any cut, gives the whole transform's result or declines.
        for (std::size_t piece : {std::size_t{1}, std::size_t{3}, std::size_t{7}, size / 2 + 1}) {
            std::string joined;
            if (orvantis::TTOps::runBase64DecodeInPieces(input, [&](std::string_view p) { joined.append(p); }, piece)) {
                require(out.has_value() && joined == *out);
            } else {
                require(joined.empty());
            }
        }
        [[fallthrough]];
    case TextTransform::hexDecode:
        if (out) {
            require(isValidUtf8(*out));
            if (!isBinaryResult(*out)) {
                const TextTransform encode =
                    t == TextTransform::base64Decode ? TextTransform::base64Encode : TextTransform::hexEncode;
                require(tryApply(t, orvantis::applyTransform(encode, *out)) == *out);
            }
        }
        break;
    case TextTransform::urlDecode:
        require(out.has_value());
        if (valid) require(isValidUtf8(*out));
        if (valid) require(tryApply(t, orvantis::applyTransform(TextTransform::urlEncode, input)) == std::string(input));
        break;
    case TextTransform::unicodeUnescape:
        require(out.has_value());
        if (valid) {
            require(isValidUtf8(*out));
            bool basicPlane = true;
            for (const auto& c : orvantis::text::codePoints(input)) basicPlane = basicPlane && c.value <= 0xFFFF;
            if (basicPlane) require(tryApply(t, orvantis::applyTransform(TextTransform::unicodeEscape, input)) == std::string(input));
        }
        break;
    case TextTransform::jsonPretty:
    case TextTransform::jsonMinify:
        if (out) {
            require(isValidUtf8(*out));
            // Formatting is idempotent, and the other form reads back too.
            require(tryApply(t, *out) == *out);
            const TextTransform other = t == TextTransform::jsonPretty ? TextTransform::jsonMinify : TextTransform::jsonPretty;
            require(tryApply(other, *out).has_value());
        }
        break;
    case TextTransform::unixToISO:
        if (out) require(tryApply(TextTransform::isoToUnix, *out).has_value() || (*out)[0] == '-' || out->size() > 24);
        break;
    case TextTransform::isoToUnix:
        if (out) {
            const double seconds = std::stod(*out);
            if (seconds > -1e10 && seconds <= 1e10) {
                const auto iso = tryApply(TextTransform::unixToISO, *out);
                require(iso.has_value());
                require(tryApply(TextTransform::isoToUnix, *iso) == *out);
            }
        }
        break;
    case TextTransform::htmlUnescape:
        require(out.has_value());
        if (valid) require(isValidUtf8(*out));
        break;
    default:
        break;
    }
    return 0;
}
