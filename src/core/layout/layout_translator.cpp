#include "core/layout/layout_translator.h"

#include <utility>

#include "core/text/graphemes.h"

namespace orvantis {

namespace {

bool isEnglish(const std::optional<std::string>& language) {
    return language && language->starts_with("en");
}

}  // namespace

std::optional<std::string> LayoutTranslator::primaryLanguage(
    const platform::InputSourceDescriptor& source) {
    if (source.languages.empty()) return std::nullopt;
    return source.languages.front();
}

std::optional<std::string> LayoutTranslator::translateKey(std::uint16_t keyCode, bool shift,
                                                          const platform::KeyLayout& layout) {
    const auto it = layout.find(keyCode);
    if (it == layout.end()) return std::nullopt;
    const std::string& output = shift ? it->second.shifted : it->second.unshifted;
    if (output.empty()) return std::nullopt;
    std::string first = text::firstGrapheme(output);
    if (first.empty()) return std::nullopt;
    return first;
}

std::optional<platform::InputSourceDescriptor> LayoutTranslator::findOtherSource(
    const std::optional<std::string>& currentLanguage) const {
    for (auto& source : sources_.enabledSources()) {
        if (!sources_.keyLayout(source.sourceID)) continue;
        if (primaryLanguage(source) != currentLanguage) return std::move(source);
    }
    return std::nullopt;
}

std::optional<LayoutTranslator::Pair> LayoutTranslator::buildPair() const {
    const auto current = sources_.currentSource();
    if (!current) return std::nullopt;
    const auto language = primaryLanguage(*current);
    const auto other = findOtherSource(language);
    if (!other) return std::nullopt;
    const auto otherLanguage = primaryLanguage(*other);

    const platform::InputSourceDescriptor* english = nullptr;
    const platform::InputSourceDescriptor* second = nullptr;
    if (isEnglish(language)) {
        english = &*current;
        second = &*other;
    } else if (isEnglish(otherLanguage)) {
        english = &*other;
        second = &*current;
    } else {
        return std::nullopt;
    }

    const auto englishKeys = sources_.keyLayout(english->sourceID);
    if (!englishKeys) return std::nullopt;
    const auto secondKeys = sources_.keyLayout(second->sourceID);
    if (!secondKeys) return std::nullopt;

    Pair pair;
    for (std::uint16_t code = 0; code <= kLastKeyCode; ++code) {
        for (const bool shift : {false, true}) {
            auto en = translateKey(code, shift, *englishKeys);
            if (!en) continue;
            auto ru = translateKey(code, shift, *secondKeys);
            if (!ru) continue;
            if (*en == *ru) continue;
            // The first key to type a character wins; later keys never overwrite.
            pair.enToRu.try_emplace(*en, *ru);
            pair.ruToEn.try_emplace(std::move(*ru), std::move(*en));
        }
    }
    if (pair.enToRu.empty() || pair.ruToEn.empty()) return std::nullopt;
    return pair;
}

}  // namespace orvantis
