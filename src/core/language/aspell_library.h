#pragma once

#include <aspell.h>

namespace orvantis {

/// The functions of GNU Aspell that the word lists use, looked up in its library when the first
/// word list is opened (dlopen). Internal to `core/language`.
struct AspellLibrary {
    decltype(&::new_aspell_config) newConfig;
    decltype(&::aspell_config_replace) configReplace;
    decltype(&::delete_aspell_config) deleteConfig;
    decltype(&::new_aspell_speller) newSpeller;
    decltype(&::aspell_error_number) errorNumber;
    decltype(&::to_aspell_speller) toSpeller;
    decltype(&::delete_aspell_can_have_error) deleteCanHaveError;
    decltype(&::delete_aspell_speller) deleteSpeller;
    decltype(&::aspell_speller_check) check;

    /// Null when the library or one of its functions is missing; loaded once, any thread.
    static const AspellLibrary* get();
};

}  // namespace orvantis
