#pragma once

// The whole text toolkit of the core in one include: UTF-8 and UTF-16 offsets, characters
// (grapheme clusters), whitespace and splitting, case mapping and caseless search,
// character classes and words. Each part can also be included on its own.

#include "core/text/case_folding.h"
#include "core/text/case_mapping.h"
#include "core/text/character_class.h"
#include "core/text/graphemes.h"
#include "core/text/split.h"
#include "core/text/utf.h"
#include "core/text/whitespace.h"
#include "core/text/words.h"
