#include "core/passwords/password_generator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>

#include "core/log/app_logger.h"
#include "core/passwords/test_random_sources.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

using testing::FailingRandomSource;
using testing::ScriptedRandomSource;
using testing::SeededRandomSource;

PasswordConfig config(int length, bool upper, bool lower, bool digits, bool symbols) {
    return PasswordConfig{length, upper, lower, digits, symbols};
}

std::size_t countOf(const std::string& password, std::string_view pool) {
    return static_cast<std::size_t>(
        std::count_if(password.begin(), password.end(), [pool](char c) { return pool.find(c) != pool.npos; }));
}

TEST(PasswordGeneratorTest, ThePoolsHoldTheirCharacters) {
    EXPECT_EQ(PasswordGenerator::kUppercase.size(), 26u);
    EXPECT_EQ(PasswordGenerator::kLowercase.size(), 26u);
    EXPECT_EQ(PasswordGenerator::kDigits.size(), 10u);
    EXPECT_EQ(PasswordGenerator::kSymbols.size(), 27u);
    for (char c : std::string_view("\"'\\`| ")) EXPECT_EQ(PasswordGenerator::kSymbols.find(c), std::string_view::npos);
}

TEST(PasswordGeneratorTest, LengthIsClampedToFourThrough128) {
    SeededRandomSource source(1);
    PasswordGenerator generator(source);
    EXPECT_EQ(generator.generate(config(2, true, true, true, true)).size(), 4u);
    EXPECT_EQ(generator.generate(config(-7, true, false, false, false)).size(), 4u);
    EXPECT_EQ(generator.generate(config(500, true, true, true, true)).size(), 128u);
    EXPECT_EQ(generator.generate(config(37, true, true, false, false)).size(), 37u);
}

TEST(PasswordGeneratorTest, LengthFourWithAllClassesHasOneOfEachInRandomOrder) {
    SeededRandomSource source(2);
    PasswordGenerator generator(source);
    std::set<std::string> orders;
    for (int i = 0; i < 200; ++i) {
        const std::string password = generator.generate(config(4, true, true, true, true));
        ASSERT_EQ(password.size(), 4u);
        EXPECT_EQ(countOf(password, PasswordGenerator::kUppercase), 1u) << password;
        EXPECT_EQ(countOf(password, PasswordGenerator::kLowercase), 1u) << password;
        EXPECT_EQ(countOf(password, PasswordGenerator::kDigits), 1u) << password;
        EXPECT_EQ(countOf(password, PasswordGenerator::kSymbols), 1u) << password;
        std::string order;
        for (char c : password) {
            if (PasswordGenerator::kUppercase.find(c) != std::string_view::npos) order += 'U';
            else if (PasswordGenerator::kLowercase.find(c) != std::string_view::npos) order += 'l';
            else if (PasswordGenerator::kDigits.find(c) != std::string_view::npos) order += 'd';
            else order += 's';
        }
        orders.insert(order);
    }
    // The shuffle puts the classes in every one of the 24 orders.
    EXPECT_EQ(orders.size(), 24u);
}

TEST(PasswordGeneratorTest, OnlyDigitsAt128IsAllDigits) {
    SeededRandomSource source(3);
    PasswordGenerator generator(source);
    const std::string password = generator.generate(config(128, false, false, true, false));
    EXPECT_EQ(password.size(), 128u);
    EXPECT_EQ(countOf(password, PasswordGenerator::kDigits), 128u);
}

TEST(PasswordGeneratorTest, NoClassGivesTheEmptyStringWithoutDrawing) {
    SeededRandomSource source(4);
    PasswordGenerator generator(source);
    EXPECT_EQ(generator.generate(config(16, false, false, false, false)), "");
    EXPECT_EQ(source.calls, 0u);
}

TEST(PasswordGeneratorTest, EveryChosenClassOccursAtEveryLength) {
    SeededRandomSource source(5);
    PasswordGenerator generator(source);
    for (int length = 4; length <= 128; ++length) {
        for (int mask = 1; mask < 16; ++mask) {
            const PasswordConfig c = config(length, mask & 1, mask & 2, mask & 4, mask & 8);
            const std::string password = generator.generate(c);
            ASSERT_EQ(password.size(), static_cast<std::size_t>(length));
            EXPECT_EQ(countOf(password, PasswordGenerator::kUppercase) > 0, c.includeUppercase) << password;
            EXPECT_EQ(countOf(password, PasswordGenerator::kLowercase) > 0, c.includeLowercase) << password;
            EXPECT_EQ(countOf(password, PasswordGenerator::kDigits) > 0, c.includeDigits) << password;
            EXPECT_EQ(countOf(password, PasswordGenerator::kSymbols) > 0, c.includeSymbols) << password;
        }
    }
}

TEST(PasswordGeneratorTest, BoundOneAlwaysYieldsZero) {
    SeededRandomSource source(6);
    PasswordGenerator generator(source);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(generator.secureRandomIndex(1), 0u);
    ScriptedRandomSource extremes({0xFFFFFFFFu, 0u, 0x80000000u});
    PasswordGenerator scripted(extremes);
    // 4294967295 / 1 * 1 is the limit: only the all-ones value is drawn again.
    EXPECT_EQ(scripted.secureRandomIndex(1), 0u);
    EXPECT_EQ(extremes.draws, 2u);
}

// Bound 10: limit = 429496729 * 10 = 4294967290. Values 4294967290 through 4294967295 are
// drawn again; 4294967289, the last value below the limit, is taken.
TEST(PasswordGeneratorTest, ValuesAtOrAboveTheLimitAreDrawnAgain) {
    ScriptedRandomSource source({4294967290u, 4294967295u, 4294967293u, 4294967289u, 7u});
    PasswordGenerator generator(source);
    EXPECT_EQ(generator.secureRandomIndex(10), 9u);
    EXPECT_EQ(source.draws, 4u);
    EXPECT_EQ(generator.secureRandomIndex(10), 7u);
    EXPECT_EQ(generator.fallbackCount(), 0u);
}

TEST(PasswordGeneratorTest, TheValueJustBelowTheLimitIsTakenAtOnce) {
    // Bound 89 (all four pools): 4294967295 / 89 = 48258059, and 48258059 * 89 = 4294967251.
    constexpr std::uint32_t kLimit = (4294967295u / 89u) * 89u;
    static_assert(kLimit == 4294967251u);
    ScriptedRandomSource source({kLimit - 1, kLimit, 4294967295u, 0x01020304u});
    PasswordGenerator generator(source);
    EXPECT_EQ(generator.secureRandomIndex(89), (kLimit - 1) % 89);
    EXPECT_EQ(source.draws, 1u);
    // The limit itself and above are rejected; then the bytes 01 02 03 04 read big-endian.
    EXPECT_EQ(generator.secureRandomIndex(89), 0x01020304u % 89);
    EXPECT_EQ(source.draws, 4u);
}

TEST(PasswordGeneratorTest, AFailingSourceFallsBackForThatIndex) {
    FailingRandomSource source;
    std::uint32_t askedBound = 0;
    PasswordGenerator generator(source, [&askedBound](std::uint32_t bound) {
        askedBound = bound;
        return bound - 1;
    });
    EXPECT_EQ(generator.secureRandomIndex(26), 25u);
    EXPECT_EQ(askedBound, 26u);
    EXPECT_EQ(source.calls, 1u);
    EXPECT_EQ(generator.fallbackCount(), 1u);
}

TEST(PasswordGeneratorTest, AFailingSourceStillGivesFullPasswordsWithTheSystemFallback) {
    FailingRandomSource source;
    PasswordGenerator generator(source);
    for (int i = 0; i < 50; ++i) {
        const std::string password = generator.generate(config(20, true, true, true, true));
        ASSERT_EQ(password.size(), 20u);
        EXPECT_GT(countOf(password, PasswordGenerator::kSymbols), 0u);
        EXPECT_GT(countOf(password, PasswordGenerator::kDigits), 0u);
    }
    EXPECT_GT(generator.fallbackCount(), 0u);
    for (std::uint32_t bound : {1u, 2u, 89u, 4294967295u})
        EXPECT_LT(PasswordGenerator::systemRandomIndex(bound), bound);
}

TEST(PasswordGeneratorTest, AFailingSourceIsLoggedOnceWithoutThePassword) {
    testing::TemporaryDirectory dir;
    sim::VirtualMainLoop loop;
    auto queue = loop.makeSerialQueue("log");
    AppLogger logger(dir.path(), *queue, loop);
    FailingRandomSource source;
    PasswordGenerator generator(source, PasswordGenerator::systemRandomIndex, &logger.log().app);
    const std::string first = generator.generate(config(24, true, true, true, true));
    generator.generate(config(24, true, true, true, true));
    loop.runUntilIdle();
    const std::string log = logger.recentLogs(1);
    EXPECT_NE(log.find("password: the kernel's random source failed"), std::string::npos) << log;
    EXPECT_EQ(log.find("random source failed"), log.rfind("random source failed")) << "logged more than once";
    EXPECT_EQ(log.find(first), std::string::npos);
}

TEST(PasswordGeneratorTest, TheKernelSourceFillsBuffers) {
    KernelRandomSource source;
    std::array<std::uint8_t, 64> a{};
    std::array<std::uint8_t, 64> b{};
    ASSERT_TRUE(source.fill(a));
    ASSERT_TRUE(source.fill(b));
    EXPECT_NE(a, b);
    PasswordGenerator generator(source);
    EXPECT_EQ(generator.generate(config(16, true, true, true, false)).size(), 16u);
    EXPECT_EQ(generator.fallbackCount(), 0u);
}

/// The upper tail bound of the chi-square distribution with `df` degrees of freedom at about
/// p = 1e-4 (Wilson-Hilferty).
double chiSquareCritical(int df) {
    const double z = 3.719;  // the standard normal's 1 - 1e-4 quantile
    const double k = df;
    const double t = 1.0 - 2.0 / (9.0 * k) + z * std::sqrt(2.0 / (9.0 * k));
    return k * t * t * t;
}

// Over 200,000 characters for each of the 15 choices of classes, every character turns up as
// often as the algorithm makes it: each password has one character of each chosen class, and
// the rest is drawn evenly from the union. A draw class by class, a biased index or a broken
// shuffle that leaves the union's draws out of some characters fails the test.
TEST(PasswordGeneratorTest, CharactersAreUniformOverEveryChoiceOfClasses) {
    constexpr std::size_t kCharacters = 200000;
    constexpr int kLength = 20;
    SeededRandomSource source(20261123);
    PasswordGenerator generator(source);
    for (int mask = 1; mask < 16; ++mask) {
        const PasswordConfig c = config(kLength, mask & 1, mask & 2, mask & 4, mask & 8);
        std::vector<std::string_view> pools;
        if (c.includeUppercase) pools.push_back(PasswordGenerator::kUppercase);
        if (c.includeLowercase) pools.push_back(PasswordGenerator::kLowercase);
        if (c.includeDigits) pools.push_back(PasswordGenerator::kDigits);
        if (c.includeSymbols) pools.push_back(PasswordGenerator::kSymbols);
        std::size_t unionSize = 0;
        for (auto pool : pools) unionSize += pool.size();

        std::map<char, std::size_t> counts;
        std::size_t passwords = 0;
        std::size_t total = 0;
        while (total < kCharacters) {
            for (char ch : generator.generate(c)) ++counts[ch];
            total += kLength;
            ++passwords;
        }
        double chi = 0;
        for (auto pool : pools) {
            // Per password: one guaranteed draw from the pool, and (length - classes) from the union.
            const double perCharacter =
                static_cast<double>(passwords) *
                (1.0 / static_cast<double>(pool.size()) +
                 static_cast<double>(kLength - static_cast<int>(pools.size())) / static_cast<double>(unionSize));
            for (char ch : pool) {
                const double observed = static_cast<double>(counts[ch]);
                chi += (observed - perCharacter) * (observed - perCharacter) / perCharacter;
            }
        }
        const int df = static_cast<int>(unionSize) - 1;
        EXPECT_LT(chi, chiSquareCritical(df)) << "classes mask " << mask << ", " << unionSize << " characters";
        EXPECT_EQ(counts.size(), unionSize) << "mask " << mask;
    }
}

// Every position of the password takes every class as often as the others: the shuffle leaves
// the guaranteed characters nowhere in particular.
TEST(PasswordGeneratorTest, TheShuffleSpreadsTheGuaranteedCharactersOverAllPositions) {
    SeededRandomSource source(77);
    PasswordGenerator generator(source);
    constexpr int kRuns = 40000;
    std::array<int, 4> digitAt{};
    for (int i = 0; i < kRuns; ++i) {
        const std::string password = generator.generate(config(4, true, true, true, false));
        // Three classes in four places: the one digit stands at each place a quarter of the time
        // (plus the draws from the union).
        for (int p = 0; p < 4; ++p)
            if (PasswordGenerator::kDigits.find(password[static_cast<std::size_t>(p)]) != std::string_view::npos)
                ++digitAt[static_cast<std::size_t>(p)];
    }
    const double mean = (digitAt[0] + digitAt[1] + digitAt[2] + digitAt[3]) / 4.0;
    double chi = 0;
    for (int n : digitAt) chi += (n - mean) * (n - mean) / mean;
    EXPECT_LT(chi, chiSquareCritical(3)) << digitAt[0] << " " << digitAt[1] << " " << digitAt[2] << " " << digitAt[3];
}

}  // namespace
}  // namespace orvantis
