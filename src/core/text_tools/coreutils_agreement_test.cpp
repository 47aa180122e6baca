// The digests and Base64 of the transforms against the coreutils tools of the machine, over
// random inputs of up to a megabyte. The tools read a temporary file; their output is the
// reference.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "core/text_tools/tt_ops.h"

namespace orvantis::TTOps {
namespace {

/// What `command` prints on standard output, or nullopt when it could not run.
std::optional<std::string> outputOf(const std::string& command) {
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return std::nullopt;
    std::string out;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
    if (::pclose(pipe) != 0) return std::nullopt;
    return out;
}

class CoreutilsAgreementTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* tool : {"md5sum", "sha1sum", "sha256sum", "sha512sum", "base64"}) {
            if (!outputOf(std::string("command -v ") + tool + " >/dev/null")) GTEST_SKIP() << tool << " missing";
        }
        char pattern[] = "/tmp/orvantis-coreutils-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override {
        if (!dir_.empty()) std::filesystem::remove_all(dir_);
    }

    /// Random bytes, sizes from empty to one megabyte: the edges of the 3-byte groups and
    /// the 64- and 128-byte blocks, then random sizes.
    std::vector<std::string> inputs() {
        std::mt19937_64 random(20261123);
        std::vector<std::size_t> sizes{0, 1, 2, 3, 4, 55, 56, 63, 64, 111, 112, 127, 128, 1000, 65537, 1 << 20};
        std::uniform_int_distribution<std::size_t> size(0, 1 << 20);
        for (int i = 0; i < 6; ++i) sizes.push_back(size(random));
        std::vector<std::string> all;
        for (std::size_t n : sizes) {
            std::string bytes(n, '\0');
            for (char& c : bytes) c = static_cast<char>(random() & 0xFF);
            all.push_back(std::move(bytes));
        }
        return all;
    }

    std::string write(const std::string& bytes) {
        const std::string path = (dir_ / "input").string();
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

    std::filesystem::path dir_;
};

TEST_F(CoreutilsAgreementTest, DigestsMatchTheSumTools) {
    for (const std::string& bytes : inputs()) {
        const std::string path = write(bytes);
        for (auto [algorithm, tool] : {std::pair{HashAlgorithm::md5, "md5sum"}, {HashAlgorithm::sha1, "sha1sum"},
                                       {HashAlgorithm::sha256, "sha256sum"}, {HashAlgorithm::sha512, "sha512sum"}}) {
            const auto line = outputOf(std::string(tool) + " " + path);
            ASSERT_TRUE(line) << tool;
            EXPECT_EQ(runHash(bytes, algorithm), line->substr(0, line->find(' '))) << tool << " of " << bytes.size();
        }
    }
}

TEST_F(CoreutilsAgreementTest, Base64MatchesTheBase64Tool) {
    for (const std::string& bytes : inputs()) {
        const std::string path = write(bytes);
        const auto encoded = outputOf("base64 -w 0 " + path);
        ASSERT_TRUE(encoded);
        EXPECT_EQ(runBase64Encode(bytes), *encoded) << bytes.size() << " bytes";

        // Decoding the tool's wrapped form (76 columns, line feeds) gives back the bytes, or
        // their hex for the (nearly always) binary ones.
        const auto wrapped = outputOf("base64 " + path);
        ASSERT_TRUE(wrapped);
        const std::string decoded = runBase64Decode(*wrapped);
        if (decoded.rfind("(non-UTF8) ", 0) == 0) {
            EXPECT_EQ(decoded.substr(11), runHexEncode(bytes)) << bytes.size() << " bytes";
        } else {
            EXPECT_EQ(decoded, bytes);
        }
        // And the tool decodes ours.
        const std::string ours = write(runBase64Encode(bytes));
        const auto back = outputOf("base64 -d " + ours);
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, bytes);
    }
}

}  // namespace
}  // namespace orvantis::TTOps
