#pragma once

#include <string>

#include <curl/curl.h>

namespace orvantis::curl {

/// The entry points of libcurl, looked up in the shared library the first time a request needs
/// them. Linked at start, libcurl would load two dozen libraries with it (TLS, Kerberos, LDAP,
/// SSH, IDN) and relocate them all, for a program that may never translate anything.
/// The library stays loaded to the end of the process. Any thread.
struct CurlLibrary {
    /// The loaded library, set up with curl_global_init once; null when it cannot be loaded,
    /// and then `error` says why.
    static const CurlLibrary* load(std::string& error);

    // Named apart from the functions: curl.h makes some of those names type-checking macros.
    decltype(&::curl_global_init) globalInit;
    decltype(&::curl_easy_init) easyInit;
    decltype(&::curl_easy_cleanup) easyCleanup;
    decltype(&::curl_easy_setopt) easySetopt;
    decltype(&::curl_easy_getinfo) easyGetinfo;
    decltype(&::curl_easy_strerror) easyStrerror;
    decltype(&::curl_multi_init) multiInit;
    decltype(&::curl_multi_cleanup) multiCleanup;
    decltype(&::curl_multi_add_handle) multiAddHandle;
    decltype(&::curl_multi_remove_handle) multiRemoveHandle;
    decltype(&::curl_multi_perform) multiPerform;
    decltype(&::curl_multi_poll) multiPoll;
    decltype(&::curl_multi_wakeup) multiWakeup;
    decltype(&::curl_multi_info_read) multiInfoRead;
};

}  // namespace orvantis::curl
