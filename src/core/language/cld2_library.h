#pragma once

#include <cstdio>  // the detector's headers need FILE

#include <cld2/internal/lang_script.h>
#include <cld2/public/compact_lang_det.h>
#include <cld2/public/encodings.h>

namespace orvantis {

/// The functions of the compact language detector that detection uses, looked up in its library
/// at the first call (dlopen), so that a program that never detects a language never maps its
/// code and tables. Internal to `core/language`.
struct Cld2Library {
    decltype(&CLD2::ExtDetectLanguageSummaryCheckUTF8) detect;
    decltype(&CLD2::LanguageCode) languageCode;
    decltype(&CLD2::GetULScriptFromName) scriptFromName;
    decltype(&CLD2::LanguageRecognizedScript) recognizedScript;
    decltype(&CLD2::DefaultLanguage) defaultLanguage;

    /// Null when the library or one of its functions is missing; loaded once, any thread.
    static const Cld2Library* get();
};

}  // namespace orvantis
