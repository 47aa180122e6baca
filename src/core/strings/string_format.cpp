#include "core/strings/string_format.h"

#include <cstddef>

namespace orvantis {
namespace {

/// What stands at a percent sign: a placeholder, an escaped percent, or nothing special.
enum class Directive { integer, text, percent, none };

Directive directiveAt(std::string_view format, std::size_t percent) {
    if (percent + 1 >= format.size()) return Directive::none;
    switch (format[percent + 1]) {
        case 'd':
            return Directive::integer;
        case '@':
            return Directive::text;
        case '%':
            return Directive::percent;
        default:
            return Directive::none;
    }
}

/// Calls `onLiteral(view)` for every run of plain text and `onPlaceholder(kind, spelling)` for
/// every %d and %@, in order. %% arrives as the literal "%".
template <typename OnLiteral, typename OnPlaceholder>
void scan(std::string_view format, OnLiteral onLiteral, OnPlaceholder onPlaceholder) {
    std::size_t runStart = 0;
    std::size_t position = 0;
    while ((position = format.find('%', position)) != std::string_view::npos) {
        const Directive directive = directiveAt(format, position);
        if (directive == Directive::none) {
            ++position;
            continue;
        }
        onLiteral(format.substr(runStart, position - runStart));
        const std::string_view spelling = format.substr(position, 2);
        if (directive == Directive::percent) {
            onLiteral(spelling.substr(0, 1));
        } else {
            const auto kind = directive == Directive::integer ? FormatPlaceholder::integer : FormatPlaceholder::text;
            onPlaceholder(kind, spelling);
        }
        position += 2;
        runStart = position;
    }
    onLiteral(format.substr(runStart));
}

}  // namespace

std::string formatString(std::string_view format, std::span<const FormatArgument> arguments) {
    std::string result;
    result.reserve(format.size() + 16);
    std::size_t next = 0;
    scan(
        format, [&](std::string_view literal) { result.append(literal); },
        [&](FormatPlaceholder kind, std::string_view spelling) {
            if (next >= arguments.size()) {
                result.append(spelling);
                return;
            }
            const FormatArgument& argument = arguments[next++];
            if (kind == FormatPlaceholder::integer) {
                if (const auto number = argument.integer()) {
                    result.append(std::to_string(*number));
                    return;
                }
            } else if (const auto text = argument.text()) {
                result.append(*text);
                return;
            }
            result.append(spelling);
        });
    return result;
}

std::string formatString(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    return formatString(format, std::span<const FormatArgument>(arguments.begin(), arguments.size()));
}

std::vector<FormatPlaceholder> formatPlaceholders(std::string_view format) {
    std::vector<FormatPlaceholder> placeholders;
    scan(
        format, [](std::string_view) {},
        [&](FormatPlaceholder kind, std::string_view) { placeholders.push_back(kind); });
    return placeholders;
}

}  // namespace orvantis
