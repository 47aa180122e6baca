#include "core/layout/keystroke_buffer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace orvantis {
namespace {

TEST(KeystrokeBufferTest, StartsEmpty) {
    KeystrokeBuffer buffer;
    EXPECT_TRUE(buffer.isEmpty());
    EXPECT_EQ(buffer.count(), 0u);
    EXPECT_EQ(buffer.string(), "");
}

TEST(KeystrokeBufferTest, AppendsInOrderAndJoins) {
    KeystrokeBuffer buffer;
    for (const char* c : {"g", "h", "b", "d", "t", "n"}) buffer.append(c);
    EXPECT_EQ(buffer.count(), 6u);
    EXPECT_EQ(buffer.string(), "ghbdtn");
    EXPECT_EQ(buffer.characters().front(), "g");
}

TEST(KeystrokeBufferTest, HoldsExactly256) {
    KeystrokeBuffer buffer;
    for (int i = 0; i < 256; ++i) buffer.append("a");
    EXPECT_EQ(buffer.count(), 256u);
}

TEST(KeystrokeBufferTest, The257thCharacterEmptiesTheBuffer) {
    KeystrokeBuffer buffer;
    for (int i = 0; i < 256; ++i) buffer.append("a");
    buffer.append("b");
    EXPECT_TRUE(buffer.isEmpty());
}

TEST(KeystrokeBufferTest, The258thCharacterStartsAfresh) {
    KeystrokeBuffer buffer;
    for (int i = 0; i < 257; ++i) buffer.append("a");
    buffer.append("c");
    EXPECT_EQ(buffer.string(), "c");
}

TEST(KeystrokeBufferTest, CountsGraphemesNotBytes) {
    KeystrokeBuffer buffer;
    buffer.append("й");
    buffer.append("👍🏽");
    buffer.append("e\xCC\x81");  // e + combining acute
    EXPECT_EQ(buffer.count(), 3u);
    EXPECT_EQ(buffer.string(), "й👍🏽e\xCC\x81");
    // 256 emoji of several code points each still fill the buffer at 256.
    KeystrokeBuffer full;
    for (int i = 0; i < 256; ++i) full.append("👨‍👩‍👧");
    EXPECT_EQ(full.count(), 256u);
    full.append("x");
    EXPECT_TRUE(full.isEmpty());
}

TEST(KeystrokeBufferTest, TextOfSeveralClustersCountsAsSeveralKeystrokes) {
    KeystrokeBuffer buffer;
    buffer.append("при");
    EXPECT_EQ(buffer.count(), 3u);
    buffer.append("");
    EXPECT_EQ(buffer.count(), 3u);
}

TEST(KeystrokeBufferTest, RemoveLastCharacter) {
    KeystrokeBuffer buffer;
    buffer.append("a");
    buffer.append("👍🏽");
    buffer.removeLastCharacter();
    EXPECT_EQ(buffer.string(), "a");
    buffer.removeLastCharacter();
    buffer.removeLastCharacter();  // on an empty buffer: nothing
    EXPECT_TRUE(buffer.isEmpty());
}

TEST(KeystrokeBufferTest, Reset) {
    KeystrokeBuffer buffer;
    buffer.append("a");
    buffer.reset();
    EXPECT_TRUE(buffer.isEmpty());
}

TEST(KeystrokeBufferTest, ReplaceAllKeepsTheFirst256) {
    KeystrokeBuffer buffer;
    buffer.append("x");
    std::vector<std::string> many(300, "a");
    many[0] = "b";
    many[256] = "c";
    buffer.replaceAll(many);
    EXPECT_EQ(buffer.count(), 256u);
    EXPECT_EQ(buffer.characters().front(), "b");
    EXPECT_EQ(buffer.characters().back(), "a");
    buffer.replaceAll(std::vector<std::string>{"п", "р"});
    EXPECT_EQ(buffer.string(), "пр");
}

TEST(KeystrokeBufferTest, ReplaceAllFromTextSplitsByGraphemes) {
    KeystrokeBuffer buffer;
    buffer.replaceAll(std::string_view("привет👍🏽"));
    EXPECT_EQ(buffer.count(), 7u);
    buffer.replaceAll(std::string_view(""));
    EXPECT_TRUE(buffer.isEmpty());
}

TEST(KeystrokeBufferTest, IllFormedInputIsRepaired) {
    KeystrokeBuffer buffer;
    buffer.append("\xFF");
    ASSERT_EQ(buffer.count(), 1u);
    EXPECT_EQ(buffer.string(), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace orvantis
