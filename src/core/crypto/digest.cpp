#include "core/crypto/digest.h"

#include <optional>

#include <openssl/evp.h>

#include <dlfcn.h>

namespace orvantis::crypto {
namespace {

/// The digest functions of libcrypto, looked up once.
struct Libcrypto {
    decltype(&::EVP_MD_CTX_new) contextNew;
    decltype(&::EVP_MD_CTX_free) contextFree;
    decltype(&::EVP_md5) md5;
    decltype(&::EVP_sha1) sha1;
    decltype(&::EVP_sha256) sha256;
    decltype(&::EVP_sha512) sha512;
    decltype(&::EVP_DigestInit_ex) digestInit;
    decltype(&::EVP_DigestUpdate) digestUpdate;
    decltype(&::EVP_DigestFinal_ex) digestFinal;
};

template <typename Function>
bool resolve(void* library, const char* name, Function& out) {
    out = reinterpret_cast<Function>(::dlsym(library, name));
    return out != nullptr;
}

/// Null when the library or one of its functions is missing.
const Libcrypto* libcrypto() {
    static const std::optional<Libcrypto> loaded = []() -> std::optional<Libcrypto> {
        // The soname of OpenSSL 3, the ABI this program is built against.
        void* library = ::dlopen("libcrypto.so.3", RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        if (library == nullptr) return std::nullopt;
        Libcrypto f{};
        const bool ok = resolve(library, "EVP_MD_CTX_new", f.contextNew) &&
                        resolve(library, "EVP_MD_CTX_free", f.contextFree) && resolve(library, "EVP_md5", f.md5) &&
                        resolve(library, "EVP_sha1", f.sha1) && resolve(library, "EVP_sha256", f.sha256) &&
                        resolve(library, "EVP_sha512", f.sha512) &&
                        resolve(library, "EVP_DigestInit_ex", f.digestInit) &&
                        resolve(library, "EVP_DigestUpdate", f.digestUpdate) &&
                        resolve(library, "EVP_DigestFinal_ex", f.digestFinal);
        if (!ok) return std::nullopt;
        return f;
    }();
    return loaded ? &*loaded : nullptr;
}

const EVP_MD* algorithmOf(const Libcrypto& crypto, DigestAlgorithm algorithm) {
    switch (algorithm) {
    case DigestAlgorithm::md5: return crypto.md5();
    case DigestAlgorithm::sha1: return crypto.sha1();
    case DigestAlgorithm::sha256: return crypto.sha256();
    case DigestAlgorithm::sha512: return crypto.sha512();
    }
    return nullptr;
}

}  // namespace

Digest::Digest(DigestAlgorithm algorithm) {
    const Libcrypto* crypto = libcrypto();
    if (crypto == nullptr) return;
    EVP_MD_CTX* context = crypto->contextNew();
    context_ = context;
    const EVP_MD* md = algorithmOf(*crypto, algorithm);
    ok_ = context != nullptr && md != nullptr && crypto->digestInit(context, md, nullptr) == 1;
}

Digest::~Digest() {
    if (context_ != nullptr) libcrypto()->contextFree(static_cast<EVP_MD_CTX*>(context_));
}

void Digest::update(std::string_view bytes) {
    if (ok_) ok_ = libcrypto()->digestUpdate(static_cast<EVP_MD_CTX*>(context_), bytes.data(), bytes.size()) == 1;
}

std::string Digest::hex() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!ok_ || libcrypto()->digestFinal(static_cast<EVP_MD_CTX*>(context_), digest, &length) != 1) length = 0;
    ok_ = false;
    static constexpr char kHex[] = "0123456789abcdef";
    std::string out;
    out.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        out.push_back(kHex[digest[i] >> 4]);
        out.push_back(kHex[digest[i] & 0x0F]);
    }
    return out;
}

std::string hexDigest(DigestAlgorithm algorithm, std::string_view bytes) {
    Digest digest(algorithm);
    digest.update(bytes);
    return digest.hex();
}

bool digestsAvailable() { return libcrypto() != nullptr; }

}  // namespace orvantis::crypto
