#include "core/language/language_detector.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "core/language/cld2_library.h"
#include "core/language/spelling_dictionaries.h"
#include "core/text/split.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/text/words.h"

namespace orvantis {
namespace {

/// Texts of this many words or more are the detector's alone when it calls its answer
/// reliable: it has seen enough of them. Shorter ones go through the script and the word lists.
constexpr std::size_t kSentenceWords = 4;
/// Words of a text that the word lists are asked about; the rest add nothing to the vote.
constexpr std::size_t kMostWordsLookedUp = 8;
/// A longer "word" (in bytes) is no dictionary's, and asking would cost time on a pasted blob.
constexpr std::size_t kLongestWordLookedUp = 100;
/// Bytes of a text that the short road reads: a text it gets that is longer than this (a blob
/// the detector found unreliable) is judged by its beginning.
constexpr std::size_t kLongestShortText = 4096;

/// The languages whose word lists vote on a text of each script, in the order that settles a
/// tie: roughly their share of the text on the web, so that a word that is English and German
/// alike ("Hand", "Computer") is taken for English, and "собака" for Russian.
constexpr std::array<std::string_view, 15> kLatinCandidates = {"en", "es", "de", "fr", "pt", "it", "nl", "pl",
                                                               "tr", "cs", "sv", "ro", "hu", "da", "no"};
constexpr std::array<std::string_view, 3> kCyrillicCandidates = {"ru", "uk", "bg"};

/// The detector's code for a language, in the form the rest of the program compares: the
/// two-letter codes of today where the detector keeps an older one, Chinese as "zh" whatever
/// its script.
std::string commonCode(std::string code) {
    if (code == "iw") return "he";
    if (code == "jw") return "jv";
    if (code == "zh-Hant") return "zh";
    return code;
}

std::optional<std::string> codeOf(const Cld2Library& cld2, CLD2::Language language) {
    if (language == CLD2::UNKNOWN_LANGUAGE || language == CLD2::TG_UNKNOWN_LANGUAGE) return std::nullopt;
    const char* code = cld2.languageCode(language);
    if (code == nullptr || *code == '\0') return std::nullopt;
    return commonCode(code);
}

/// What the compact language detector makes of `text`.
struct Judgement {
    CLD2::Language language = CLD2::UNKNOWN_LANGUAGE;
    bool reliable = false;
};

/// With `bestEffort` it names a language even for a single word, where it would otherwise
/// give up; that answer is a guess.
Judgement judge(const Cld2Library& cld2, std::string_view text, bool bestEffort) {
    CLD2::Language languages[3] = {CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE, CLD2::UNKNOWN_LANGUAGE};
    int percents[3] = {0, 0, 0};
    double scores[3] = {0, 0, 0};
    int letterBytes = 0;
    int validPrefix = 0;
    bool reliable = false;
    CLD2::CLDHints hints{nullptr, "", CLD2::UNKNOWN_ENCODING, CLD2::UNKNOWN_LANGUAGE};
    cld2.detect(text.data(), static_cast<int>(std::min<std::size_t>(text.size(), 1u << 30)),
                /*is_plain_text=*/true, &hints, bestEffort ? CLD2::kCLDFlagBestEffort : 0, languages, percents, scores,
                nullptr, &letterBytes, &reliable, &validPrefix);
    // With nothing to score the detector still names its default language; that is no answer.
    if (letterBytes == 0 || percents[0] == 0) return {};
    return {languages[0], reliable};
}

/// Chinese characters, kana and Hangul count as one script: Japanese mixes the first two,
/// Korean may mix the first and the last.
UScriptCode scriptGroup(UScriptCode script) {
    switch (script) {
        case USCRIPT_HIRAGANA:
        case USCRIPT_KATAKANA:
        case USCRIPT_KATAKANA_OR_HIRAGANA:
        case USCRIPT_HANGUL: return USCRIPT_HAN;
        default: return script;
    }
}

UScriptCode scriptOf(char32_t c) {
    UErrorCode status = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(c), &status);
    return U_FAILURE(status) ? USCRIPT_INVALID_CODE : script;
}

/// A letter that belongs to one script (not the common letters such as the Japanese length
/// mark, which take the script around them).
bool isScriptLetter(char32_t c, UScriptCode& script) {
    if (!u_isalpha(static_cast<UChar32>(c))) return false;
    script = scriptOf(c);
    return script != USCRIPT_COMMON && script != USCRIPT_INHERITED && script != USCRIPT_INVALID_CODE &&
           script != USCRIPT_UNKNOWN;
}

/// The letters of a text by script.
struct Census {
    std::map<UScriptCode, std::size_t> letters;  ///< by script group
    bool kana = false;
    bool hangul = false;

    /// The script with most letters; the first in code order among equals.
    std::optional<UScriptCode> dominant() const {
        std::optional<UScriptCode> best;
        std::size_t most = 0;
        for (const auto& [script, count] : letters) {
            if (count > most) {
                best = script;
                most = count;
            }
        }
        return best;
    }
};

Census takeCensus(std::string_view text) {
    Census census;
    for (const text::CodePoint c : text::codePoints(text)) {
        UScriptCode script = USCRIPT_INVALID_CODE;
        if (!isScriptLetter(c.value, script)) continue;
        if (script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA) census.kana = true;
        if (script == USCRIPT_HANGUL) census.hangul = true;
        ++census.letters[scriptGroup(script)];
    }
    return census;
}

/// The words of `text` whose first letter is of `script`, in order, but for overlong ones.
std::vector<std::string> wordsOfScript(std::string_view text, UScriptCode script) {
    std::vector<std::string> words;
    for (text::WordToken& token : text::wordTokens(text)) {
        if (token.text.size() > kLongestWordLookedUp) continue;
        for (const text::CodePoint c : text::codePoints(token.text)) {
            UScriptCode letterScript = USCRIPT_INVALID_CODE;
            if (!isScriptLetter(c.value, letterScript)) continue;
            if (scriptGroup(letterScript) == script) words.push_back(std::move(token.text));
            break;
        }
    }
    return words;
}

bool contains(std::u32string_view letters, std::u32string_view any) {
    return letters.find_first_of(any) != std::u32string_view::npos;
}

/// Letters that only some of the languages written in Cyrillic have. Russian and Ukrainian
/// share most of the alphabet; each has letters of its own, and so have their neighbours.
std::optional<std::string_view> languageOfCyrillicLetters(const std::vector<std::string>& words) {
    std::u32string letters;
    for (const auto& word : words) letters += text::toCodePoints(word);
    if (contains(letters, U"ўЎ")) return "be";
    if (contains(letters, U"ѓќѕЃЌЅ")) return "mk";
    if (contains(letters, U"ђћЂЋјљњџЈЉЊЏ")) return "sr";
    if (contains(letters, U"їєґЇЄҐ")) return "uk";
    const bool russianLetters = contains(letters, U"ыэёЫЭЁ");
    if (contains(letters, U"іІ")) return russianLetters ? "be" : "uk";
    if (russianLetters) return "ru";
    return std::nullopt;
}

bool writtenIn(const Cld2Library& cld2, CLD2::Language language, UScriptCode script) {
    const CLD2::ULScript wanted = cld2.scriptFromName(uscript_getShortName(script));
    if (wanted == CLD2::ULScript_Common) return false;
    for (int n = 0; n < 4; ++n)
        if (cld2.recognizedScript(language, n) == wanted) return true;
    return false;
}

/// The word lists' vote on `words`, for a script written by several languages: the language
/// that knows most of the words; among equals the detector's own guess if it is one of them,
/// else the first in the order of `candidates`. Nothing when no list knows a word, or when none
/// knows them all and the detector's guess is a language without a list to ask.
std::optional<std::string> voteOfWordLists(const std::vector<std::string>& words,
                                           std::span<const std::string_view> candidates,
                                           const std::optional<std::string>& guess,
                                           SpellingDictionaries& dictionaries) {
    const std::size_t asked = std::min(words.size(), kMostWordsLookedUp);
    std::vector<std::pair<std::string_view, std::size_t>> known;
    std::size_t most = 0;
    bool guessHasList = false;
    for (std::string_view language : candidates) {
        if (!dictionaries.has(language)) continue;
        guessHasList = guessHasList || guess == language;
        std::size_t count = 0;
        for (std::size_t i = 0; i < asked; ++i) count += dictionaries.knows(language, words[i]) ? 1 : 0;
        known.emplace_back(language, count);
        most = std::max(most, count);
    }
    if (most == 0) return std::nullopt;
    if (most < asked && guess && !guessHasList) return std::nullopt;
    for (const auto& [language, count] : known)
        if (count == most && guess == language) return *guess;
    for (const auto& [language, count] : known)
        if (count == most) return std::string(language);
    return std::nullopt;
}

/// A short text: its script where that names the language, else the word lists' vote, else the
/// detector's best guess, else the main language of the script.
std::optional<std::string> detectShort(const Cld2Library& cld2, std::string_view text,
                                       SpellingDictionaries& dictionaries) {
    const Census census = takeCensus(text);
    const std::optional<UScriptCode> script = census.dominant();
    if (!script) return std::nullopt;
    if (*script == USCRIPT_HAN) {
        if (census.hangul) return "ko";
        if (census.kana) return "ja";
        return "zh";
    }
    const std::vector<std::string> words = wordsOfScript(text, *script);
    if (*script == USCRIPT_CYRILLIC) {
        if (const auto language = languageOfCyrillicLetters(words)) return std::string(*language);
    }
    std::string joined;
    for (const auto& word : words) {
        if (!joined.empty()) joined += ' ';
        joined += word;
    }
    // For a script of one language (Greek, Hebrew, Thai, Georgian…) the guess is that language
    // whatever the letters.
    std::optional<std::string> guess;
    const Judgement judgement = judge(cld2, joined.empty() ? text : std::string_view(joined), /*bestEffort=*/true);
    if (writtenIn(cld2, judgement.language, *script)) guess = codeOf(cld2, judgement.language);

    std::span<const std::string_view> candidates;
    if (*script == USCRIPT_LATIN) candidates = kLatinCandidates;
    if (*script == USCRIPT_CYRILLIC) candidates = kCyrillicCandidates;
    if (!candidates.empty() && !words.empty()) {
        if (auto vote = voteOfWordLists(words, candidates, guess, dictionaries)) return vote;
    }
    if (guess) return guess;
    const CLD2::ULScript cldScript = cld2.scriptFromName(uscript_getShortName(*script));
    return codeOf(cld2, cld2.defaultLanguage(cldScript));
}

SpellingDictionaries& installedDictionaries() {
    static SpellingDictionaries dictionaries;
    return dictionaries;
}

}  // namespace

std::optional<std::string> LanguageDetector::detect(std::string_view text) {
    return detect(text, installedDictionaries());
}

std::optional<std::string> LanguageDetector::detect(std::string_view text, SpellingDictionaries& dictionaries) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty()) return std::nullopt;
    // The detector reads well-formed UTF-8 only.
    const std::string valid = text::repairUtf8(trimmed);
    // The detector's library is loaded here, at the first text; without it nothing is detected.
    const Cld2Library* cld2 = Cld2Library::get();
    if (cld2 == nullptr) return std::nullopt;
    if (text::wordCount(valid) >= kSentenceWords) {
        const Judgement judgement = judge(*cld2, valid, /*bestEffort=*/false);
        if (judgement.reliable) {
            if (auto code = codeOf(*cld2, judgement.language)) return code;
        }
    }
    std::size_t end = std::min(valid.size(), kLongestShortText);
    while (end < valid.size() && (static_cast<unsigned char>(valid[end]) & 0xC0) == 0x80) --end;
    return detectShort(*cld2, std::string_view(valid).substr(0, end), dictionaries);
}

std::size_t LanguageDetector::wordCount(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty()) return 0;
    const std::size_t words = text::wordCount(trimmed);
    if (words >= 1) return words;
    return text::splitAt(trimmed, text::WhitespaceSet::whitespacesAndNewlines, text::EmptyPieces::omit).size();
}

}  // namespace orvantis
