#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace orvantis {

/// The system's spelling dictionaries (GNU Aspell's word lists, one Debian package per
/// language), asked whether a word is a word of a language. A language's dictionary is opened
/// when it is first asked about, on the calling thread, and kept; its word list is mapped from
/// disk, so it costs a few milliseconds and a few megabytes of shared file pages. A missing
/// dictionary simply knows no word. Any thread: one lock guards the dictionaries.
class SpellingDictionaries {
public:
    /// The installed dictionaries, or with `directory` the ones in that folder only.
    explicit SpellingDictionaries(std::string directory = {});
    ~SpellingDictionaries();
    SpellingDictionaries(const SpellingDictionaries&) = delete;
    SpellingDictionaries& operator=(const SpellingDictionaries&) = delete;

    /// Whether the dictionary of `language` (a two-letter code) is there; opens it.
    bool has(std::string_view language);
    /// Whether `word` (UTF-8) is spelt right in `language`, taken as typed or in lower case
    /// (in German also with a capital: "haus" is German as "Haus" is), and with either
    /// apostrophe; false when the language has no dictionary.
    bool knows(std::string_view language, std::string_view word);

private:
    struct Speller;
    Speller* spellerOf(std::string_view language);

    std::string directory_;
    std::mutex mutex_;
    /// nullptr once a dictionary could not be opened, so that it is not tried again.
    std::map<std::string, std::unique_ptr<Speller>, std::less<>> spellers_;
};

}  // namespace orvantis
