#include "core/crypto/digest.h"

#include <string>

#include <gtest/gtest.h>

namespace orvantis::crypto {
namespace {

TEST(DigestTest, KnownDigestsOfTheEmptyText) {
    ASSERT_TRUE(digestsAvailable());
    EXPECT_EQ(hexDigest(DigestAlgorithm::md5, ""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hexDigest(DigestAlgorithm::sha1, ""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(hexDigest(DigestAlgorithm::sha256, ""),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hexDigest(DigestAlgorithm::sha512, "").size(), 128u);
}

TEST(DigestTest, PiecesGiveTheDigestOfTheWhole) {
    Digest digest(DigestAlgorithm::sha256);
    digest.update("ab");
    digest.update("");
    digest.update("c");
    EXPECT_EQ(digest.hex(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest.hex(), "");  // a second call has nothing left to give
}

TEST(DigestTest, NonTextBytes) {
    const std::string bytes("\x00\xff\x80", 3);
    EXPECT_EQ(hexDigest(DigestAlgorithm::md5, bytes).size(), 32u);
    EXPECT_NE(hexDigest(DigestAlgorithm::md5, bytes), hexDigest(DigestAlgorithm::md5, std::string("\x00\xff", 2)));
}

}  // namespace
}  // namespace orvantis::crypto
