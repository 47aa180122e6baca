#include "core/language/spelling_dictionaries.h"

#include <vector>

#include "core/language/aspell_library.h"
#include "core/text/case_mapping.h"

namespace orvantis {

struct SpellingDictionaries::Speller {
    Speller(const AspellLibrary& aspell, AspellSpeller* handle) : aspell(aspell), handle(handle) {}
    ~Speller() { aspell.deleteSpeller(handle); }
    Speller(const Speller&) = delete;
    Speller& operator=(const Speller&) = delete;
    bool check(std::string_view word) const {
        return aspell.check(handle, word.data(), static_cast<int>(word.size())) == 1;
    }
    const AspellLibrary& aspell;
    AspellSpeller* handle;
};

namespace {

/// The dictionary name of a language where it differs from its code.
std::string dictionaryName(std::string_view language) {
    if (language == "no") return "nb";
    return std::string(language);
}

/// The forms of a word worth asking about: as typed, in lower case, with a capital where the
/// language writes its nouns so (German "haus" is "Haus"; elsewhere a capital makes a name, and
/// "миша" is no "Миша"), and each with the other apostrophe (dictionaries keep either ' or ’ in
/// "aujourd'hui", "ім'я").
std::vector<std::string> formsOf(std::string_view language, std::string_view word) {
    std::vector<std::string> forms;
    const auto add = [&forms](std::string form) {
        for (const auto& known : forms)
            if (known == form) return;
        forms.push_back(std::move(form));
    };
    const std::string lower = text::lowercased(word);
    add(std::string(word));
    add(lower);
    if (language == "de") add(text::uppercasedFirst(lower));
    static constexpr std::string_view kTypographic = "\u2019";
    const std::size_t count = forms.size();
    for (std::size_t i = 0; i < count; ++i) {
        std::string swapped = forms[i];
        bool changed = false;
        for (std::size_t at = 0; at < swapped.size(); ++at) {
            if (swapped[at] == '\'') {
                swapped.replace(at, 1, kTypographic);
                changed = true;
            } else if (swapped.compare(at, kTypographic.size(), kTypographic) == 0) {
                swapped.replace(at, kTypographic.size(), "'");
                changed = true;
            }
        }
        if (changed) add(std::move(swapped));
    }
    return forms;
}

}  // namespace

SpellingDictionaries::SpellingDictionaries(std::string directory) : directory_(std::move(directory)) {}

SpellingDictionaries::~SpellingDictionaries() = default;

SpellingDictionaries::Speller* SpellingDictionaries::spellerOf(std::string_view language) {
    if (const auto found = spellers_.find(language); found != spellers_.end()) return found->second.get();
    std::unique_ptr<Speller> speller;
    // Without the library every dictionary is missing.
    if (const AspellLibrary* aspell = AspellLibrary::get()) {
        AspellConfig* config = aspell->newConfig();
        aspell->configReplace(config, "lang", dictionaryName(language).c_str());
        aspell->configReplace(config, "encoding", "utf-8");
        // One-letter words are words of every language by default; here they must be listed.
        aspell->configReplace(config, "ignore", "0");
        aspell->configReplace(config, "run-together", "false");
        // Where a language comes in several sizes (French: 40 and 60), the smallest: it holds
        // the common words, which is what a selection is made of, in a third of the memory.
        aspell->configReplace(config, "size", "10");
        if (!directory_.empty()) {
            aspell->configReplace(config, "dict-dir", directory_.c_str());
            aspell->configReplace(config, "data-dir", directory_.c_str());
        }
        AspellCanHaveError* result = aspell->newSpeller(config);
        aspell->deleteConfig(config);
        if (aspell->errorNumber(result) == 0) {
            speller = std::make_unique<Speller>(*aspell, aspell->toSpeller(result));
        } else {
            aspell->deleteCanHaveError(result);
        }
    }
    Speller* raw = speller.get();
    spellers_.emplace(std::string(language), std::move(speller));
    return raw;
}

bool SpellingDictionaries::has(std::string_view language) {
    const std::lock_guard lock(mutex_);
    return spellerOf(language) != nullptr;
}

bool SpellingDictionaries::knows(std::string_view language, std::string_view word) {
    if (word.empty()) return false;
    const std::lock_guard lock(mutex_);
    const Speller* speller = spellerOf(language);
    if (speller == nullptr) return false;
    for (const std::string& form : formsOf(language, word))
        if (speller->check(form)) return true;
    return false;
}

}  // namespace orvantis
