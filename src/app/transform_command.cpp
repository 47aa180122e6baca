#include "app/transform_command.h"

#include <iostream>
#include <string_view>

#include "core/text/utf.h"
#include "core/text_tools/text_transform.h"

namespace orvantis::app {
namespace {

constexpr std::string_view kTransformUsage = "usage: orvantis transform NAME < INPUT, or orvantis transform --list\n";

int usageError(std::ostream& err, std::string_view message) {
    err << "orvantis: " << message << '\n' << kTransformUsage;
    return 2;
}

/// All of `in`, read in large blocks.
std::string readAll(std::istream& in) {
    std::string data;
    constexpr std::size_t kBlock = 1 << 20;
    while (in) {
        const std::size_t size = data.size();
        data.resize(size + kBlock);
        in.read(data.data() + size, static_cast<std::streamsize>(kBlock));
        data.resize(size + static_cast<std::size_t>(in.gcount()));
    }
    return data;
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
    const std::string input = readAll(in);
    if (!text::isValidUtf8(input)) {
        err << "orvantis: transform: the input is not valid UTF-8\n";
        return 2;
    }
    try {
        const SettingsLanguage lang =
            *transform == TextTransform::count && language ? language() : SettingsLanguage::en;
        const std::string result = apply(*transform, input, lang);
        out.write(result.data(), static_cast<std::streamsize>(result.size()));
        out.flush();
    } catch (const TransformError& error) {
        err << error.errorDescription() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace orvantis::app
