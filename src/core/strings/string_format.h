#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvantis {

/// One value for a placeholder of formatString(): a whole number for %d or a text for %@.
/// Built implicitly from any integer type (except bool) and from anything that reads as text,
/// so that `formatString(format, {3, 20})` and `formatString(format, {"9:59"})` just work.
/// A text argument views its characters without copying them: they must live until the call
/// returns, which temporaries in the argument list do. A null `const char*` reads as an empty
/// text. Whole numbers are held as 64-bit signed values.
class FormatArgument {
public:
    template <std::integral T>
        requires(!std::same_as<T, bool>)
    constexpr FormatArgument(T value) : value_(static_cast<std::int64_t>(value)) {}
    constexpr FormatArgument(std::string_view text) : value_(text) {}
    constexpr FormatArgument(const char* text) : value_(text ? std::string_view(text) : std::string_view()) {}
    FormatArgument(const std::string& text) : value_(std::string_view(text)) {}

    /// The number, or nullopt for a text argument.
    constexpr std::optional<std::int64_t> integer() const {
        if (const auto* number = std::get_if<std::int64_t>(&value_)) return *number;
        return std::nullopt;
    }
    /// The text, or nullopt for a number argument.
    constexpr std::optional<std::string_view> text() const {
        if (const auto* view = std::get_if<std::string_view>(&value_)) return *view;
        return std::nullopt;
    }

private:
    std::variant<std::int64_t, std::string_view> value_;
};

/// The kinds of placeholder that a template may hold.
enum class FormatPlaceholder {
    integer,  ///< %d, a whole number in decimal
    text,     ///< %@, a text inserted as it is
};

/// Fills the printf-style `format` with `arguments`, taken in order, one per placeholder.
///
/// - %d takes a whole number and writes it in decimal, with a minus sign when negative.
/// - %@ takes a text and inserts it unchanged.
/// - %% writes one percent sign and takes no argument.
/// - A percent sign followed by anything else, or at the very end, is copied as it stands;
///   flags, widths and positions (%02d, %1$d) are not understood and stay literal.
///
/// Nothing here can fail. A placeholder without an argument stays in the result as it was
/// written ("%d", "%@"). A placeholder whose argument has the wrong type also stays as it was,
/// and that argument is used up, so that later placeholders keep their own arguments. Arguments
/// beyond the last placeholder are ignored. The format is scanned byte by byte; a percent sign
/// never occurs inside a multi-byte UTF-8 sequence, so any UTF-8 text passes through intact.
std::string formatString(std::string_view format, std::span<const FormatArgument> arguments);

/// The same, for an argument list written in place: `formatString(s.countFormat, {3, 20})`.
std::string formatString(std::string_view format, std::initializer_list<FormatArgument> arguments = {});

/// The placeholders of `format` in the order in which formatString() fills them. %% is no
/// placeholder, and neither is a percent sign that starts no known placeholder.
std::vector<FormatPlaceholder> formatPlaceholders(std::string_view format);

}  // namespace orvantis
