#include "core/text/case_mapping.h"

#include "core/text/icu_support.h"

namespace orvantis::text {

using detail::CaseOperation;
using detail::ValidUtf8;

std::string uppercased(std::string_view text) {
    const ValidUtf8 valid(text);
    return detail::mapCase(CaseOperation::upper, valid.view());
}

std::string lowercased(std::string_view text) {
    const ValidUtf8 valid(text);
    return detail::mapCase(CaseOperation::lower, valid.view());
}

std::string capitalized(std::string_view text) {
    const ValidUtf8 valid(text);
    return detail::mapCase(CaseOperation::title, valid.view());
}

std::string uppercasedFirst(std::string_view text) {
    const ValidUtf8 valid(text);
    detail::Segmenter segmenter(UBRK_CHARACTER, valid.view());
    const std::size_t end = segmenter.next().value_or(0);
    std::string result = detail::mapCase(CaseOperation::upper, valid.view().substr(0, end));
    result.append(valid.view().substr(end));
    return result;
}

}  // namespace orvantis::text
