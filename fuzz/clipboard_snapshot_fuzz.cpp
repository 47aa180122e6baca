// libFuzzer target for the clipboard snapshot reader: any bytes go in, and besides not
// crashing, leaking or overflowing the stack, a snapshot that reads must write back to bytes
// that read as the same snapshot, and a failure must never quote the file.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/clipboard/clipboard_item.h"
#include "core/clipboard/clipboard_snapshot.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"

namespace {

void require(bool condition) {
    if (!condition) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    std::string error;
    const auto snapshot = orvantis::decodeSnapshot(bytes, &error);
    if (!snapshot) {
        require(!error.empty());
        require(orvantis::text::isValidUtf8(error));
        // Descriptions are built from places and byte offsets only: short, whatever the input.
        require(error.size() < 200);
        return 0;
    }

    for (const auto* list : {&snapshot->pinned, &snapshot->unpinned}) {
        for (const auto& record : *list) {
            require(orvantis::text::isValidUtf8(record.text));
            require(!record.sourceBundleID || orvantis::text::isValidUtf8(*record.sourceBundleID));
            // The history's records are made from the stored ones, and give them back unchanged.
            const orvantis::ClipboardItem item(record);
            require(item.isText());
            require(item.toPersisted() == record);
            require(item.dedupKey() == orvantis::text::trimmed(record.text));
            require(orvantis::text::isValidUtf8(item.previewText()));
        }
    }

    const auto written = orvantis::encodeSnapshot(*snapshot);
    require(written.has_value());
    const auto reread = orvantis::decodeSnapshot(*written);
    require(reread.has_value());
    require(*reread == *snapshot);
    // From the second generation on, the bytes stay the same. (Not from the first: a timestamp
    // of -0 is written as "-0", which reads back as 0.)
    const auto second = orvantis::encodeSnapshot(*reread);
    require(second.has_value());
    const auto third = orvantis::decodeSnapshot(*second);
    require(third.has_value());
    require(orvantis::encodeSnapshot(*third) == second);
    return 0;
}
