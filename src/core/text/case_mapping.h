#pragma once

#include <string>
#include <string_view>

// Upper, lower and title case after Unicode's full case mappings, independent of the locale
// of the process (the root locale: no Turkish dotless i, no Lithuanian dot rules). Full
// mappings may change the length: "ß" upper-cases to "SS", "ŉ" to "ʼN". Context is honoured:
// a Greek capital sigma at the end of a word lower-cases to "ς".
//
// Every function accepts any bytes; ill-formed sequences come back as U+FFFD.

namespace orvantis::text {

/// The whole text in upper case.
std::string uppercased(std::string_view text);

/// The whole text in lower case.
std::string lowercased(std::string_view text);

/// Every word with its first character in title case and all its other characters in lower
/// case. A word is a run of characters outside `WhitespaceSet::whitespacesAndNewlines`, so
/// punctuation does not start a word: "hello wORLD" gives "Hello World", "hello-world" gives
/// "Hello-world", "(hello" gives "(hello".
std::string capitalized(std::string_view text);

/// The text with its first character (one grapheme cluster) in upper case and the rest as
/// it stands; the empty text stays empty.
std::string uppercasedFirst(std::string_view text);

}  // namespace orvantis::text
