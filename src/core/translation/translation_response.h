#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "core/translation/translation_error.h"

// The reading of a reply body, without the network. The body is a JSON array, `root`:
// root[0] holds the translation segments (each segment's element 0, when a string, is a piece
// of the translation), root[1] the dictionary entries (each entry's element 1, when an array of
// strings, holds terms) and root[5] the alternatives (each entry's element 2, when an array of
// arrays, holds alternatives whose element 0, when a string, is a term).
//
// Both readers take any bytes: a body that is truncated, nested too deeply, of the wrong shape
// or not well-formed UTF-8 is a parse failure, never a crash.

namespace orvantis {

/// Nesting deeper than this is refused before any tree is built; real replies nest four deep.
inline constexpr std::size_t kMaxTranslationResponseDepth = 512;

/// The translation: the string pieces of root[0] joined with nothing between them, untrimmed.
/// parseFailure unless the body is a JSON array whose first element is an array of arrays;
/// emptyResult when the pieces join to nothing.
TranslationResult<std::string> parseTranslationResponse(std::string_view body);

/// The primary translation (trimmed), then the dictionary terms, then the alternatives, each
/// trimmed, without blanks and without a second entry of the same lower-case form (the first
/// one's case is kept). A root[0] of the wrong shape gives an empty primary rather than a
/// failure. parseFailure unless the body is a JSON array; emptyResult when nothing is left.
TranslationResult<std::vector<std::string>> parseAlternatesResponse(std::string_view body);

}  // namespace orvantis
