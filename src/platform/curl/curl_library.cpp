#include "platform/curl/curl_library.h"

#include <mutex>

#include <dlfcn.h>

namespace orvantis::curl {
namespace {

// The soname of libcurl 7.16 and later: the ABI this program is built against.
constexpr const char* kSoname = "libcurl.so.4";

template <typename Function>
bool resolve(void* handle, const char* name, Function& out, std::string& error) {
    out = reinterpret_cast<Function>(::dlsym(handle, name));
    if (out == nullptr) error = std::string(kSoname) + " has no " + name;
    return out != nullptr;
}

struct Loaded {
    CurlLibrary library{};
    bool ok = false;
    std::string error;
};

Loaded loadOnce() {
    Loaded loaded;
    void* handle = ::dlopen(kSoname, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        const char* why = ::dlerror();
        loaded.error = why != nullptr ? why : std::string("cannot load ") + kSoname;
        return loaded;
    }
    CurlLibrary& lib = loaded.library;
    std::string& error = loaded.error;
    loaded.ok = resolve(handle, "curl_global_init", lib.globalInit, error) &&
                resolve(handle, "curl_easy_init", lib.easyInit, error) &&
                resolve(handle, "curl_easy_cleanup", lib.easyCleanup, error) &&
                resolve(handle, "curl_easy_setopt", lib.easySetopt, error) &&
                resolve(handle, "curl_easy_getinfo", lib.easyGetinfo, error) &&
                resolve(handle, "curl_easy_strerror", lib.easyStrerror, error) &&
                resolve(handle, "curl_multi_init", lib.multiInit, error) &&
                resolve(handle, "curl_multi_cleanup", lib.multiCleanup, error) &&
                resolve(handle, "curl_multi_add_handle", lib.multiAddHandle, error) &&
                resolve(handle, "curl_multi_remove_handle", lib.multiRemoveHandle, error) &&
                resolve(handle, "curl_multi_perform", lib.multiPerform, error) &&
                resolve(handle, "curl_multi_poll", lib.multiPoll, error) &&
                resolve(handle, "curl_multi_wakeup", lib.multiWakeup, error) &&
                resolve(handle, "curl_multi_info_read", lib.multiInfoRead, error);
    if (!loaded.ok) return loaded;
    // libcurl's global state is made once per process and never torn down: other libraries of
    // the process may use it too, and its cleanup is not safe while any thread still runs.
    if (const CURLcode code = lib.globalInit(CURL_GLOBAL_DEFAULT); code != CURLE_OK) {
        loaded.ok = false;
        loaded.error = std::string(kSoname) + " could not be set up: " + lib.easyStrerror(code);
    }
    return loaded;
}

}  // namespace

const CurlLibrary* CurlLibrary::load(std::string& error) {
    static const Loaded loaded = loadOnce();
    if (!loaded.ok) {
        error = loaded.error;
        return nullptr;
    }
    return &loaded.library;
}

}  // namespace orvantis::curl
