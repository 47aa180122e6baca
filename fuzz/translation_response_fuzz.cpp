// libFuzzer target for the readers of translation replies: any bytes go in, and besides not
// crashing, leaking or overflowing the stack, what comes out must keep the readers' promises.

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "core/text/case_mapping.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/translation/translation_response.h"

namespace {

void require(bool condition) {
    if (!condition) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using orvantis::TranslationError;
    const std::string_view body(reinterpret_cast<const char*>(data), size);

    const auto translation = orvantis::parseTranslationResponse(body);
    if (translation.ok()) {
        require(!translation.value().empty());
        require(orvantis::text::isValidUtf8(translation.value()));
    } else {
        const auto kind = translation.error().kind();
        require(kind == TranslationError::Kind::parseFailure || kind == TranslationError::Kind::emptyResult);
    }

    const auto alternates = orvantis::parseAlternatesResponse(body);
    if (alternates.ok()) {
        require(!alternates.value().empty());
        std::set<std::string> lowered;
        for (const auto& item : alternates.value()) {
            require(!item.empty());
            require(orvantis::text::isValidUtf8(item));
            require(orvantis::text::trimmed(item) == item);
            require(lowered.insert(orvantis::text::lowercased(item)).second);
        }
    } else {
        const auto kind = alternates.error().kind();
        require(kind == TranslationError::Kind::parseFailure || kind == TranslationError::Kind::emptyResult);
    }

    // A body that translate can read is an array, so the other reader never calls it malformed.
    if (translation.ok()) require(alternates.ok() || alternates.error().kind() == TranslationError::Kind::emptyResult);
    return 0;
}
