// The text tools' transforms: throughput on 100 MB for the digests, Base64 and hex, against
// which bench/text_tools_vs_coreutils.sh sets the coreutils tools; and the time of every
// transform on a one-megabyte text, the size the window recomputes on each keystroke.

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "core/text_tools/text_transform.h"

namespace orvantis {
namespace {

/// `size` bytes of printable ASCII with blanks and line breaks: text, as the window and the
/// command line take it.
std::string asciiText(std::size_t size) {
    std::mt19937 random(7);
    std::string s(size, ' ');
    for (char& c : s) {
        const unsigned r = random() % 100;
        c = r < 15 ? ' ' : r == 15 ? '\n' : static_cast<char>('!' + random() % 94);
    }
    return s;
}

/// A mixed one-megabyte text: Latin and Cyrillic words, emoji, a combining mark.
std::string mixedText(std::size_t size) {
    const std::string unit = "Hello мир e\u0301 😀 {\"k\": [1, 2.5, \"x/y\"]} &amp; 0x41\n";
    std::string s;
    while (s.size() + unit.size() <= size) s += unit;
    return s;
}

const std::string& hundredMegabytes() {
    static const std::string data = asciiText(100u << 20);
    return data;
}

void runOnHundredMegabytes(benchmark::State& state, TextTransform transform) {
    const std::string& input =
        transform == TextTransform::base64Decode
            ? *new std::string(orvantis::applyTransform(TextTransform::base64Encode, hundredMegabytes()))
            : hundredMegabytes();
    for (auto _ : state) benchmark::DoNotOptimize(orvantis::applyTransform(transform, input));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.size()));
}

void runOnOneMegabyte(benchmark::State& state, TextTransform transform) {
    std::string input = mixedText(1u << 20);
    // The decoders and parsers get input of their own format.
    switch (transform) {
    case TextTransform::base64Decode: input = orvantis::applyTransform(TextTransform::base64Encode, input).substr(0, 1u << 20); break;
    case TextTransform::hexDecode: input = orvantis::applyTransform(TextTransform::hexEncode, input).substr(0, 1u << 20); break;
    case TextTransform::urlDecode: input = orvantis::applyTransform(TextTransform::urlEncode, input); break;
    case TextTransform::unicodeUnescape: input = orvantis::applyTransform(TextTransform::unicodeEscape, input); break;
    case TextTransform::htmlUnescape: input = orvantis::applyTransform(TextTransform::htmlEscape, input); break;
    case TextTransform::jsonPretty:
    case TextTransform::jsonMinify: {
        std::string json = "[";
        while (json.size() < (1u << 20)) json += R"({"name":"мир 😀","n":[1,2.5,null,true],"path":"a/b"},)";
        json += "0]";
        input = json;
        break;
    }
    case TextTransform::unixToISO: input = "1700000000.123"; break;
    case TextTransform::isoToUnix: input = "2023-11-14T22:13:20.123Z"; break;
    default: break;
    }
    for (auto _ : state) {
        try {
            benchmark::DoNotOptimize(orvantis::applyTransform(transform, input));
        } catch (const TransformError&) {
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.size()));
}

void registerAll() {
    for (TextTransform t : {TextTransform::sha256, TextTransform::md5, TextTransform::base64Encode,
                            TextTransform::base64Decode, TextTransform::hexEncode}) {
        benchmark::RegisterBenchmark(("HundredMB/" + std::string(id(t))).c_str(), runOnHundredMegabytes, t)
            ->Unit(benchmark::kMillisecond)
            ->MinTime(2.0);
    }
    for (TextTransform t : kAllTextTransforms) {
        benchmark::RegisterBenchmark(("OneMB/" + std::string(id(t))).c_str(), runOnOneMegabyte, t)
            ->Unit(benchmark::kMillisecond);
    }
}

const int kRegistered = (registerAll(), 0);

}  // namespace
}  // namespace orvantis
