#include "core/translation/translation_error.h"

namespace orvantis {

std::string TranslationError::message() const {
    switch (kind_) {
        case Kind::httpError: return "HTTP " + std::to_string(status_);
        case Kind::timeout: return "timeout after 5s";
        case Kind::parseFailure: return "the request could not be made or its reply could not be read";
        case Kind::emptyResult: return "the reply held no translation";
        case Kind::network: return "network error — " + description_;
    }
    return {};
}

}  // namespace orvantis
