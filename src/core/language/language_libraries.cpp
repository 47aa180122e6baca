#include "core/language/language_libraries.h"

#include <optional>

#include <aspell.h>

#include "core/language/aspell_library.h"
#include "core/language/cld2_library.h"

#include <dlfcn.h>

namespace orvantis {
namespace {

// The sonames of the ABIs this program is built against.
constexpr const char* kCld2Soname = "libcld2.so.0";
constexpr const char* kAspellSoname = "libaspell.so.15";

template <typename Function>
bool resolve(void* library, const char* name, Function& out) {
    out = reinterpret_cast<Function>(::dlsym(library, name));
    return out != nullptr;
}

bool inMemory(const char* soname) {
    void* library = ::dlopen(soname, RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return false;
    ::dlclose(library);
    return true;
}

}  // namespace

const Cld2Library* Cld2Library::get() {
    static const std::optional<Cld2Library> loaded = []() -> std::optional<Cld2Library> {
        void* library = ::dlopen(kCld2Soname, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return std::nullopt;
        // The library is C++: its functions go by their mangled names, fixed by its soname.
        Cld2Library f{};
        const bool ok =
            resolve(library,
                    "_ZN4CLD233ExtDetectLanguageSummaryCheckUTF8EPKcibPKNS_8CLDHintsEiPNS_8LanguageEPiPdPSt6vectorINS_"
                    "11ResultChunkESaISA_EES7_PbS7_",
                    f.detect) &&
            resolve(library, "_ZN4CLD212LanguageCodeENS_8LanguageE", f.languageCode) &&
            resolve(library, "_ZN4CLD219GetULScriptFromNameEPKc", f.scriptFromName) &&
            resolve(library, "_ZN4CLD224LanguageRecognizedScriptENS_8LanguageEi", f.recognizedScript) &&
            resolve(library, "_ZN4CLD215DefaultLanguageENS_8ULScriptE", f.defaultLanguage);
        if (!ok) return std::nullopt;
        return f;
    }();
    return loaded ? &*loaded : nullptr;
}

const AspellLibrary* AspellLibrary::get() {
    static const std::optional<AspellLibrary> loaded = []() -> std::optional<AspellLibrary> {
        void* library = ::dlopen(kAspellSoname, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return std::nullopt;
        AspellLibrary f{};
        const bool ok = resolve(library, "new_aspell_config", f.newConfig) &&
                        resolve(library, "aspell_config_replace", f.configReplace) &&
                        resolve(library, "delete_aspell_config", f.deleteConfig) &&
                        resolve(library, "new_aspell_speller", f.newSpeller) &&
                        resolve(library, "aspell_error_number", f.errorNumber) &&
                        resolve(library, "to_aspell_speller", f.toSpeller) &&
                        resolve(library, "delete_aspell_can_have_error", f.deleteCanHaveError) &&
                        resolve(library, "delete_aspell_speller", f.deleteSpeller) &&
                        resolve(library, "aspell_speller_check", f.check);
        if (!ok) return std::nullopt;
        return f;
    }();
    return loaded ? &*loaded : nullptr;
}

namespace language_libraries {

bool detectorLoaded() { return inMemory(kCld2Soname); }
bool spellingLoaded() { return inMemory(kAspellSoname); }

}  // namespace language_libraries
}  // namespace orvantis
