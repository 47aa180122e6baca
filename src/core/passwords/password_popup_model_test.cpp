#include "core/passwords/password_popup_model.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/passwords/password_generator.h"
#include "core/passwords/test_random_sources.h"
#include "core/settings/app_settings.h"
#include "core/settings/preference_store.h"
#include "platform/key_output.h"
#include "platform/sim/virtual_main_loop.h"
#include "testing/test_support.h"

namespace orvantis {
namespace {

namespace key_code = platform::key_code;
namespace key_flags = platform::key_flags;

class PasswordPopupModelTest : public ::testing::Test {
protected:
    PasswordConfig stored() const { return PasswordConfig::fromSettings(settings_); }

    testing::TemporaryDirectory dir_;
    sim::VirtualMainLoop loop_;
    std::unique_ptr<platform::SerialQueue> queue_ = loop_.makeSerialQueue("prefs");
    PreferenceStore store_{dir_.path() / "preferences.plist", *queue_, nullptr};
    AppSettings settings_{store_};
    testing::SeededRandomSource random_{5};
    PasswordGenerator generator_{random_};
};

TEST_F(PasswordPopupModelTest, OpensMaskedWithAPasswordOfTheConfig) {
    PasswordPopupModel model({20, true, true, true, false}, generator_, settings_);
    EXPECT_EQ(model.password().size(), 20u);
    EXPECT_FALSE(model.isRevealed());
    std::string bullets;
    for (int i = 0; i < 20; ++i) bullets += "\u2022";
    EXPECT_EQ(model.displayText(), bullets);
    EXPECT_EQ(model.revealSymbol(), "eye");
    EXPECT_EQ(model.revealDescription(), "Reveal");
    EXPECT_EQ(model.sliderValue(), 20);
}

TEST_F(PasswordPopupModelTest, RevealShowsThePasswordAndSurvivesANewPassword) {
    PasswordPopupModel model({16, true, true, true, false}, generator_, settings_);
    model.toggleReveal();
    EXPECT_EQ(model.displayText(), model.password());
    EXPECT_EQ(model.revealSymbol(), "eye.slash");
    EXPECT_EQ(model.revealDescription(), "Hide");
    const std::string before = model.password();
    model.regenerate();
    EXPECT_NE(model.password(), before);
    EXPECT_TRUE(model.isRevealed());
    EXPECT_EQ(model.displayText(), model.password());
    model.toggleReveal();
    EXPECT_EQ(model.displayText().find(model.password()), std::string::npos);
}

TEST_F(PasswordPopupModelTest, UntickingTheLastClassTicksLowerCaseWhicheverItWas) {
    PasswordPopupModel model({16, false, false, true, false}, generator_, settings_);
    model.setClass(PasswordClass::digits, false);
    EXPECT_TRUE(model.isClassOn(PasswordClass::lowercase));
    EXPECT_FALSE(model.isClassOn(PasswordClass::digits));
    EXPECT_EQ(model.password().size(), 16u);
    for (char c : model.password()) EXPECT_TRUE(c >= 'a' && c <= 'z') << model.password();
    EXPECT_TRUE(stored().includeLowercase);
    EXPECT_FALSE(stored().includeDigits);
    // The last class being lower case itself: it stays on.
    model.setClass(PasswordClass::lowercase, false);
    EXPECT_TRUE(model.isClassOn(PasswordClass::lowercase));
}

TEST_F(PasswordPopupModelTest, AConfigWithNoClassOpensWithLowerCase) {
    PasswordPopupModel model({16, false, false, false, false}, generator_, settings_);
    EXPECT_TRUE(model.config().includeLowercase);
    EXPECT_EQ(model.password().size(), 16u);
}

TEST_F(PasswordPopupModelTest, EachSliderStepMakesANewPasswordAndStoresTheLength) {
    PasswordPopupModel model({16, true, true, true, true}, generator_, settings_);
    std::string previous = model.password();
    for (int value = 17; value <= 24; ++value) {
        model.setLength(value);
        EXPECT_EQ(model.password().size(), static_cast<std::size_t>(value));
        EXPECT_NE(model.password(), previous);
        EXPECT_EQ(settings_.passwordLength(), value);
        previous = model.password();
    }
    model.setLength(3);
    EXPECT_EQ(model.sliderValue(), 4);
    model.setLength(99);
    EXPECT_EQ(model.sliderValue(), 64);
    EXPECT_EQ(model.password().size(), 64u);
}

TEST_F(PasswordPopupModelTest, AStoredLengthOf100OpensAt64AndTheSettingThenReads64) {
    settings_.setPasswordLength(100);
    PasswordPopupModel model(stored(), generator_, settings_);
    EXPECT_EQ(model.sliderValue(), 64);
    EXPECT_EQ(model.password().size(), 64u);
    EXPECT_EQ(settings_.passwordLength(), 64);
}

TEST_F(PasswordPopupModelTest, EveryChangeIsWrittenToTheSettings) {
    PasswordPopupModel model({16, true, true, true, false}, generator_, settings_);
    model.setClass(PasswordClass::symbols, true);
    model.setClass(PasswordClass::uppercase, false);
    model.setLength(30);
    EXPECT_EQ(stored(), (PasswordConfig{30, false, true, true, true}));
    EXPECT_EQ(store_.integerForKey("MOLVEX.Orvantis.passwordLength"), 30);
    EXPECT_FALSE(store_.boolForKey("MOLVEX.Orvantis.passwordIncludeUppercase"));
    EXPECT_TRUE(store_.boolForKey("MOLVEX.Orvantis.passwordIncludeSymbols"));
}

TEST_F(PasswordPopupModelTest, TheKeys) {
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kC, key_flags::kCommand), PasswordPopupAction::copy);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kC, 0), PasswordPopupAction::none);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kC, key_flags::kControl), PasswordPopupAction::none);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kReturn, 0), PasswordPopupAction::paste);
    EXPECT_EQ(PasswordPopupModel::actionForKey(PasswordPopupModel::kKeypadEnter, 0), PasswordPopupAction::paste);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kSpace, 0), PasswordPopupAction::regenerate);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kEscape, 0), PasswordPopupAction::close);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kA, 0), PasswordPopupAction::none);
    EXPECT_EQ(PasswordPopupModel::actionForKey(key_code::kTab, 0), PasswordPopupAction::none);
}

}  // namespace
}  // namespace orvantis
