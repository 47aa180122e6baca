#include "app/password_command.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <ostream>
#include <string_view>

#include "core/passwords/password_generator.h"
#include "core/passwords/random_source.h"

namespace orvantis::app {

namespace {

constexpr long long kMaximumCount = 1000000;

int usageError(std::ostream& err, std::string_view message) {
    err << "orvantis: " << message << "\n";
    return 2;
}

std::optional<long long> wholeNumber(std::string_view text) {
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

int runPasswordCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       const std::function<PasswordConfig()>& settings, RandomSource& random) {
    std::optional<int> length;
    std::optional<bool> upper, lower, digits, symbols;
    long long count = 1;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--length" || arg == "--count") {
            if (i + 1 >= args.size()) return usageError(err, "password " + arg + " needs a number");
            const auto value = wholeNumber(args[++i]);
            if (!value) return usageError(err, "password " + arg + " needs a whole number, not \"" + args[i] + "\"");
            if (arg == "--length") {
                // Held within the generator's range, as the hotkey does.
                length = static_cast<int>(std::clamp<long long>(*value, -1, PasswordGenerator::kMaximumLength + 1));
            } else {
                if (*value < 1 || *value > kMaximumCount)
                    return usageError(err, "password --count takes 1 through 1000000");
                count = *value;
            }
            continue;
        }
        const bool negated = arg.starts_with("--no-");
        const std::string_view name = std::string_view(arg).substr(negated ? 5 : 2);
        if (!arg.starts_with("--")) return usageError(err, "password takes no argument \"" + arg + "\"");
        if (name == "uppercase") upper = !negated;
        else if (name == "lowercase") lower = !negated;
        else if (name == "digits") digits = !negated;
        else if (name == "symbols") symbols = !negated;
        else return usageError(err, "unknown option \"" + arg + "\" for password");
    }

    PasswordConfig config = settings ? settings() : PasswordConfig{};
    if (length) config.length = *length;
    if (upper) config.includeUppercase = *upper;
    if (lower) config.includeLowercase = *lower;
    if (digits) config.includeDigits = *digits;
    if (symbols) config.includeSymbols = *symbols;
    if (!config.hasAtLeastOneClass()) {
        err << "orvantis: password: no character class is chosen; add --uppercase, --lowercase, --digits or "
               "--symbols\n";
        return 1;
    }
    PasswordGenerator generator(random);
    for (long long i = 0; i < count; ++i) out << generator.generate(config) << '\n';
    out.flush();
    return 0;
}

}  // namespace orvantis::app
