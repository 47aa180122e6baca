#pragma once

#include <string>
#include <string_view>

namespace orvantis::crypto {

enum class DigestAlgorithm { md5, sha1, sha256, sha512 };

/// A message digest through libcrypto. The library is loaded the first time a digest is made in
/// the process (dlopen), not at launch: most sessions never hash anything, and linking it would
/// have every launch load and relocate it. It stays loaded to the end of the process. Where it
/// is missing, every digest comes out empty. Any thread; one object per thread.
class Digest {
public:
    explicit Digest(DigestAlgorithm algorithm);
    ~Digest();
    Digest(const Digest&) = delete;
    Digest& operator=(const Digest&) = delete;

    /// Adds `bytes`. Does nothing once a step has failed.
    void update(std::string_view bytes);
    /// The digest of everything added, as lower-case hex; empty when libcrypto or the algorithm
    /// is missing or a step failed. Call once, at the end.
    std::string hex();

private:
    void* context_ = nullptr;  ///< the library's digest context
    bool ok_ = false;
};

/// The lower-case hex digest of `bytes` in one call; empty as Digest::hex() is.
std::string hexDigest(DigestAlgorithm algorithm, std::string_view bytes);

/// True when libcrypto could be loaded with every function a digest needs.
bool digestsAvailable();

}  // namespace orvantis::crypto
