#include "app/transform_command.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <string_view>

#include "core/text/utf.h"
#include "core/text_tools/text_transform.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvantis::app {
namespace {

constexpr std::string_view kTransformUsage = "usage: orvantis transform NAME < INPUT, or orvantis transform --list\n";

int usageError(std::ostream& err, std::string_view message) {
    err << "orvantis: " << message << '\n' << kTransformUsage;
    return 2;
}

/// Asks for the unused capacity of a large buffer in huge pages, which take a small part of
/// the page faults of ordinary ones. Advice only.
void adviseHugePages(std::string& buffer) {
    constexpr std::uintptr_t kHugePage = 2u << 20;
    const auto address = reinterpret_cast<std::uintptr_t>(buffer.data());
    const std::uintptr_t begin = (address + buffer.size() + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t end = (address + buffer.capacity()) & ~(kHugePage - 1);
    if (end > begin + 4 * kHugePage) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

/// All of `in`, read in large blocks. Standard input that is a file is read into a buffer of
/// its size at once.
std::string readAll(std::istream& in) {
    std::string data;
    std::size_t block = 1 << 20;
    struct stat status {};
    if (&in == &std::cin && ::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
        block = static_cast<std::size_t>(status.st_size) + 1;  // one more, to see the end at once
    }
    while (in) {
        const std::size_t size = data.size();
        if (data.capacity() < size + block) {
            data.reserve(size + block);
            adviseHugePages(data);
        }
        data.resize(size + block);
        in.read(data.data() + size, static_cast<std::streamsize>(block));
        data.resize(size + static_cast<std::size_t>(in.gcount()));
        block = std::max<std::size_t>(block, data.size());  // the buffer doubles, at least
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
        const std::string result = applyTransform(*transform, input, lang);
        out.write(result.data(), static_cast<std::streamsize>(result.size()));
        out.flush();
    } catch (const TransformError& error) {
        err << error.errorDescription() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace orvantis::app
