#include "platform/sim/accessibility.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/sim/pasteboard.h"
#include "platform/sim/text_field.h"

namespace orvantis::sim {
namespace {

using platform::TextRange;

class AccessibilityTest : public ::testing::Test {
protected:
    TextField& make(std::string_view text) {
        field_ = std::make_unique<TextField>("field", "org.example.editor", pasteboard_, text);
        focused_ = field_.get();
        return *field_;
    }

    Pasteboard pasteboard_;
    std::unique_ptr<TextField> field_;
    TextField* focused_ = nullptr;
    Accessibility accessibility_{[this] { return focused_; }};
};

TEST_F(AccessibilityTest, NothingFocusedAnswersNoElement) {
    EXPECT_EQ(accessibility_.focusedTextElement(), nullptr);
    EXPECT_EQ(accessibility_.lookupCount(), 1u);
}

TEST_F(AccessibilityTest, AnElementReadsTheFieldInUtf16Units) {
    auto& field = make("\U0001F600 ghbdtn");
    ASSERT_TRUE(field.select({3, 3}));
    auto element = accessibility_.focusedTextElement();
    ASSERT_NE(element, nullptr);
    EXPECT_FALSE(element->isSecure());
    EXPECT_EQ(element->value(), "\U0001F600 ghbdtn");
    EXPECT_EQ(element->selectedRange(), (TextRange{3, 3}));
    EXPECT_EQ(element->selectedText(), "ghb");
}

TEST_F(AccessibilityTest, AnElementReplacesARangeAsTheSwitcherDoes) {
    auto& field = make("say ghbdtn");
    auto element = accessibility_.focusedTextElement();
    ASSERT_TRUE(element->setSelectedRange({4, 6}));
    ASSERT_TRUE(element->replaceSelectedText("привет"));
    EXPECT_EQ(field.text(), "say привет");
    EXPECT_EQ(element->selectedRange(), (TextRange{10, 0}));
    EXPECT_EQ(field.accessibilityWriteCount(), 2u);
}

TEST_F(AccessibilityTest, ARangePastTheEndIsRefused) {
    make("abc");
    auto element = accessibility_.focusedTextElement();
    EXPECT_FALSE(element->setSelectedRange({2, 5}));
    EXPECT_EQ(element->selectedRange(), (TextRange{3, 0}));
}

TEST_F(AccessibilityTest, ASecureFieldShowsNothingAndRefusesWrites) {
    auto& field = make("hunter2");
    field.setSecure(true);
    auto element = accessibility_.focusedTextElement();
    ASSERT_NE(element, nullptr);
    EXPECT_TRUE(element->isSecure());
    EXPECT_EQ(element->value(), "");
    EXPECT_EQ(element->selectedRange(), (TextRange{0, 0}));
    EXPECT_EQ(element->selectedText(), std::nullopt);
    EXPECT_FALSE(element->setSelectedRange({0, 1}));
    EXPECT_FALSE(element->replaceSelectedText("x"));
    EXPECT_EQ(field.text(), "hunter2");
}

TEST_F(AccessibilityTest, AnUnreadableApplicationAnswersNoRead) {
    auto& field = make("hello");
    field.setReadable(false);
    field.setSecure(true);
    auto element = accessibility_.focusedTextElement();
    ASSERT_NE(element, nullptr);
    EXPECT_FALSE(element->isSecure());  // the subrole cannot be read either
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(element->selectedRange(), std::nullopt);
    EXPECT_EQ(element->selectedText(), std::nullopt);
}

TEST_F(AccessibilityTest, AnUnwritableApplicationRefusesWritesButReads) {
    auto& field = make("hello");
    field.setWritable(false);
    auto element = accessibility_.focusedTextElement();
    EXPECT_EQ(element->value(), "hello");
    EXPECT_FALSE(element->setSelectedRange({0, 5}));
    EXPECT_FALSE(element->replaceSelectedText("bye"));
    EXPECT_EQ(field.text(), "hello");
    EXPECT_EQ(field.selectedRange(), (TextRange{5, 0}));
}

TEST_F(AccessibilityTest, AnApplicationThatIgnoresWritesStillReportsSuccess) {
    auto& field = make("ghbdtn");
    field.setAccessibilityWrites(AccessibilityWrites::ignored);
    auto element = accessibility_.focusedTextElement();
    EXPECT_TRUE(element->setSelectedRange({0, 6}));
    EXPECT_TRUE(element->replaceSelectedText("привет"));
    EXPECT_EQ(element->value(), "ghbdtn");
    EXPECT_EQ(field.accessibilityWriteCount(), 0u);
}

TEST_F(AccessibilityTest, AVanishedElementFailsEveryCallAndANewOneWorks) {
    auto& field = make("hello");
    auto element = accessibility_.focusedTextElement();
    field.invalidateElements();
    EXPECT_FALSE(element->isSecure());
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_EQ(element->selectedRange(), std::nullopt);
    EXPECT_EQ(element->selectedText(), std::nullopt);
    EXPECT_FALSE(element->setSelectedRange({0, 1}));
    EXPECT_FALSE(element->replaceSelectedText("x"));
    EXPECT_EQ(field.text(), "hello");
    auto fresh = accessibility_.focusedTextElement();
    EXPECT_EQ(fresh->value(), "hello");
}

TEST_F(AccessibilityTest, AnElementOutlivesItsFieldAndThenFails) {
    make("hello");
    auto element = accessibility_.focusedTextElement();
    focused_ = nullptr;
    field_.reset();
    EXPECT_EQ(element->value(), std::nullopt);
    EXPECT_FALSE(element->replaceSelectedText("x"));
}

TEST_F(AccessibilityTest, AnElementKeepsItsFieldWhenTheFocusMoves) {
    auto& field = make("first");
    auto element = accessibility_.focusedTextElement();
    TextField other("other", "org.example.editor", pasteboard_, "second");
    focused_ = &other;
    EXPECT_EQ(element->value(), "first");
    EXPECT_EQ(accessibility_.focusedTextElement()->value(), "second");
    EXPECT_TRUE(element->replaceSelectedText("!"));
    EXPECT_EQ(field.text(), "first!");
    EXPECT_EQ(other.text(), "second");
}

}  // namespace
}  // namespace orvantis::sim
