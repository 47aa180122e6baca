#include "ui/settings_window_controller.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <chrono>
#include <iostream>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTableWidget>
#include <QToolBar>

#include "core/settings/preference_store.h"
#include "platform/sim/desktop.h"
#include "testing/test_support.h"

namespace orvantis::ui {
namespace {

namespace s = settings;

/// Records the calls of a save that matter here; everything else succeeds silently.
class FakeTarget final : public SettingsSaveTarget {
public:
    explicit FakeTarget(std::vector<std::string>& calls) : calls_(calls) {}
    bool confirmClipboardSyncConsent() override { return true; }
    void setLaunchAtLogin(bool) override {}
    void postSettingsLanguageChanged() override { calls_.push_back("languageChanged"); }
    void clearClipboardPersistence() override {}
    void applyScrollReverser() override {}
    void updateMenuBarHiderHotkey(const HotkeyDescriptor&) override {}
    void applyMenuBarHider() override {}
    void showLidCloseNeedsApp() override {}
    bool provisionLidCloseInteractively() override { return true; }
    bool deprovisionLidClose() override { return true; }
    void showLidCloseRemovalCancelled() override {}
    void applyCaffeine() override {}
    bool keyboardLocked() const override { return false; }
    void unlockKeyboard(std::string_view) override {}
    void postMenuBarNeedsRebuild() override {}
    void updateMonitorHotkey(HotkeyField field, const HotkeyDescriptor& hotkey) override {
        calls_.push_back("monitor " + std::string(caseName(field)) + " " + std::to_string(hotkey.keyCode));
    }
    void setClipboardHistoryMaxSize(int) override {}
    void settingsSyncToggled() override {}
    void clipboardSyncToggled() override {}
    void closeWindow() override { calls_.push_back("close"); }

private:
    std::vector<std::string>& calls_;
};

class SettingsWindowTest : public ::testing::Test {
protected:
    std::unique_ptr<SettingsWindowController> makeWindow() {
        SettingsWindowServices services;
        services.installedApps = [] { return std::vector<InstalledApp>{{"org.example.Editor", "Editor", ""}}; };
        // X keycodes of the tests' keys: 53 is X, 9 is Escape, 38 is A.
        services.virtualKeyForScanCode = [](std::uint32_t code) -> std::optional<std::uint16_t> {
            if (code == 53) return 7;
            if (code == 9) return 53;
            if (code == 38) return 0;
            return std::nullopt;
        };
        services.suspendGrabs = [this](bool on) { grabs_.push_back(on); };
        services.makeSaveTarget = [this](SettingsWindowController&) { return std::make_unique<FakeTarget>(calls_); };
        services.focusCommandsAvailable = [this] {
            ++focusChecks_;
            return focusCommandsThere_;
        };
        services.openFocusCommandFolder = [this] { ++focusFolderOpened_; };
        services.grabKeyboard = [this](QWindow&) { return keyboardFree_; };
        services.captureInterrupted = [this](std::string_view why) { interruptions_.emplace_back(why); };
        services.pagePainted = [this](SettingsSection section, bool first, double ms) {
            painted_.push_back(std::string(caseName(section)) + (first ? " first" : " switch"));
            EXPECT_GE(ms, 0.0);
        };
        return std::make_unique<SettingsWindowController>(settings_, services, [this] { ++closed_; });
    }
    static void press(QWidget* target, quint32 scanCode, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, modifiers, scanCode, 0, 0);
        QApplication::sendEvent(target, &event);
    }

    orvantis::testing::TemporaryDirectory dir_;
    sim::Desktop desktop_;
    std::unique_ptr<platform::SerialQueue> prefsQueue_ = desktop_.loop().makeSerialQueue("prefs");
    PreferenceStore store_{dir_.path() / "preferences.plist", *prefsQueue_, nullptr};
    AppSettings settings_{store_};
    std::vector<std::string> calls_;
    std::vector<bool> grabs_;
    int closed_ = 0;
    bool focusCommandsThere_ = false;
    int focusChecks_ = 0;
    int focusFolderOpened_ = 0;
    bool keyboardFree_ = true;
    std::vector<std::string> interruptions_;
    std::vector<std::string> painted_;
};

TEST_F(SettingsWindowTest, HasTenPagesInTheToolbarAndBuildsEachOnce) {
    auto w = makeWindow();
    EXPECT_EQ(w->size(), QSize(760, 560));
    EXPECT_EQ(w->windowTitle().toStdString(), SettingsStrings::make(SettingsLanguage::en).settingsWindowTitle);
    ASSERT_EQ(w->toolbar()->actions().size(), 10);
    EXPECT_EQ(w->toolbar()->actions()[0]->objectName(), "settings.general");
    for (const auto section : kAllSettingsSections) {
        EXPECT_FALSE(w->toolbar()->actions()[static_cast<int>(section)]->icon().isNull());
        QWidget* page = w->page(section);
        EXPECT_EQ(w->page(section), page);
    }
    for (std::size_t i = 0; i < kHotkeyFieldCount; ++i)
        EXPECT_NE(w->hotkeyButton(static_cast<HotkeyField>(i)), nullptr) << caseName(static_cast<HotkeyField>(i));
}

TEST_F(SettingsWindowTest, ACapturedHotkeySuspendsTheGrabsAndIsSavedToTheMonitor) {
    auto w = makeWindow();
    w->selectSection(SettingsSection::translator);
    QPushButton* button = w->hotkeyButton(HotkeyField::translation);
    button->click();
    EXPECT_EQ(button->text().toStdString(), SettingsStrings::make(SettingsLanguage::en).pressKeys);
    press(button, 38, Qt::NoModifier);  // a plain letter: ignored
    EXPECT_TRUE(w->form().activeCapture());
    press(button, 53, Qt::MetaModifier | Qt::AltModifier);  // Super+Alt+X
    EXPECT_FALSE(w->form().activeCapture());
    EXPECT_EQ(button->text().toStdString(), "Super+Alt+X");
    EXPECT_EQ(grabs_, (std::vector<bool>{true, false}));
    EXPECT_TRUE(settings_.translationHotkey() == s::kTranslationHotkey.defaultValue);
    w->saveClicked();
    EXPECT_EQ(settings_.translationHotkey(), (HotkeyDescriptor{7, HotkeyDescriptor::kControl | HotkeyDescriptor::kOption}));
    EXPECT_NE(std::find(calls_.begin(), calls_.end(), "monitor translation 7"), calls_.end());
}

TEST_F(SettingsWindowTest, EscEndsTheCaptureWithTheOldTitle) {
    auto w = makeWindow();
    w->selectSection(SettingsSection::translator);
    QPushButton* button = w->hotkeyButton(HotkeyField::translation);
    button->click();
    press(button, 9, Qt::NoModifier);
    EXPECT_EQ(button->text().toStdString(), "Super+Shift+X");
    EXPECT_FALSE(w->form().activeCapture());
}

TEST_F(SettingsWindowTest, ACaptureThatCannotTakeTheKeyboardEndsAndSaysSo) {
    keyboardFree_ = false;  // another program holds the keyboard
    auto w = makeWindow();
    w->show();
    w->selectSection(SettingsSection::translator);
    QPushButton* button = w->hotkeyButton(HotkeyField::translation);
    button->click();
    QApplication::processEvents();
    EXPECT_FALSE(w->form().activeCapture());
    EXPECT_EQ(grabs_, (std::vector<bool>{true, false}));  // the global hotkeys are back
    EXPECT_EQ(button->text(), QStringLiteral("Keyboard taken; not recorded"));
    EXPECT_EQ(interruptions_.size(), 1u);
    keyboardFree_ = true;  // the other program let go: the next click captures as usual
    button->click();
    EXPECT_TRUE(w->form().activeCapture());
    EXPECT_EQ(button->text().toStdString(), SettingsStrings::make(SettingsLanguage::en).pressKeys);
    press(button, 53, Qt::MetaModifier | Qt::AltModifier);
    EXPECT_EQ(button->text(), QStringLiteral("Super+Alt+X"));
}

TEST_F(SettingsWindowTest, ACaptureEndsWhenTheWindowLosesTheKeyboard) {
    settings_.setSettingsLanguage(SettingsLanguage::ru);
    auto w = makeWindow();
    w->show();
    w->selectSection(SettingsSection::translator);
    QPushButton* button = w->hotkeyButton(HotkeyField::translation);
    button->click();
    ASSERT_TRUE(w->form().activeCapture());
    QEvent deactivate(QEvent::WindowDeactivate);
    QApplication::sendEvent(w.get(), &deactivate);
    QApplication::processEvents();
    EXPECT_FALSE(w->form().activeCapture());
    EXPECT_EQ(grabs_, (std::vector<bool>{true, false}));
    EXPECT_EQ(button->text(), QString::fromUtf8("Клавиатура занята, не записано"));
    w->saveClicked();
    EXPECT_TRUE(settings_.translationHotkey() == s::kTranslationHotkey.defaultValue);
}

TEST_F(SettingsWindowTest, TellsTheFirstPaintOfTheWindowAndOfEachChosenPage) {
    auto w = makeWindow();
    EXPECT_TRUE(painted_.empty());
    w->show();
    QApplication::processEvents();
    w->repaint();
    EXPECT_EQ(painted_, std::vector<std::string>{"general first"});
    w->repaint();  // later paints of the same page are not timed
    EXPECT_EQ(painted_.size(), 1u);
    w->selectSection(SettingsSection::translator);
    QApplication::processEvents();
    w->repaint();
    w->selectSection(SettingsSection::general);
    QApplication::processEvents();
    w->repaint();
    EXPECT_EQ(painted_, (std::vector<std::string>{"general first", "translator switch", "general switch"}));
}

TEST_F(SettingsWindowTest, CancelChangesNothingOnDisk) {
    store_.flush();
    const auto path = dir_.path() / "preferences.plist";
    const std::string before = std::filesystem::exists(path) ? orvantis::testing::readFile(path) : "";
    auto w = makeWindow();
    w->selectSection(SettingsSection::layoutSwitcher);
    auto* slider = w->page(SettingsSection::layoutSwitcher)->findChild<QSlider*>("switchDelayMs");
    ASSERT_NE(slider, nullptr);
    slider->setValue(321);
    EXPECT_EQ(w->form().get(s::kSwitchDelayMs), 321);
    w->cancelClicked();
    EXPECT_EQ(closed_, 1);
    store_.flush();
    EXPECT_FALSE(store_.hasStoredValue(s::kSwitchDelayMs.key));
    EXPECT_EQ(std::filesystem::exists(path) ? orvantis::testing::readFile(path) : "", before);
}

TEST_F(SettingsWindowTest, SwitchingTheLanguagePreviewsItAtOnce) {
    auto w = makeWindow();
    auto* russian = w->page(SettingsSection::general)->findChild<QPushButton*>("language:ru");
    ASSERT_NE(russian, nullptr);
    russian->click();
    QApplication::processEvents();
    const auto ru = SettingsStrings::make(SettingsLanguage::ru);
    EXPECT_EQ(w->windowTitle().toStdString(), ru.settingsWindowTitle);
    EXPECT_EQ(w->toolbar()->actions()[1]->text().toStdString(), ru.translator);
    EXPECT_EQ(settings_.settingsLanguage(), SettingsLanguage::en);
}

TEST_F(SettingsWindowTest, TheSnippetTableAddsEditsAndDropsIncompleteRows) {
    auto w = makeWindow();
    w->selectSection(SettingsSection::snippets);
    QTableWidget* table = w->snippetTable();
    ASSERT_NE(table, nullptr);
    auto* empty = w->page(SettingsSection::snippets)->findChild<QLabel*>("snippetEmptyLabel");
    auto* add = w->page(SettingsSection::snippets)->findChild<QPushButton*>("snippetsAdd");
    auto* remove = w->page(SettingsSection::snippets)->findChild<QPushButton*>("snippetsRemove");
    EXPECT_FALSE(empty->isHidden());
    EXPECT_FALSE(remove->isEnabled());
    add->click();
    EXPECT_TRUE(empty->isHidden());
    table->item(0, 0)->setText("sig");
    add->click();
    table->item(1, 0)->setText("addr");
    table->item(1, 1)->setText("1 Main Street");
    w->saveClicked();
    const auto entries = SnippetExpander(store_).entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].shortcut, "addr");
}

TEST_F(SettingsWindowTest, TheFocusStatusLineRechecksAndOpensTheCommandsFolder) {
    auto w = makeWindow();
    EXPECT_EQ(focusChecks_, 0);  // asked only when the Pomodoro page is built
    QWidget* page = w->page(SettingsSection::pomodoro);
    EXPECT_EQ(focusChecks_, 1);
    EXPECT_EQ(w->focusStatusText(), QStringLiteral("Commands not found"));
    focusCommandsThere_ = true;  // the user made both commands meanwhile
    EXPECT_EQ(w->focusStatusText(), QStringLiteral("Commands not found"));
    page->findChild<QPushButton*>("focusRecheck")->click();
    EXPECT_EQ(focusChecks_, 2);
    EXPECT_EQ(w->focusStatusText(), QStringLiteral("Both commands found"));
    EXPECT_FALSE(page->findChild<QLabel*>("focusStatusIcon")->pixmap().isNull());
    page->findChild<QPushButton*>("focusOpenShortcuts")->click();
    EXPECT_EQ(focusFolderOpened_, 1);
}

TEST_F(SettingsWindowTest, TheFocusStatusLineSpeaksTheFormsLanguage) {
    settings_.setSettingsLanguage(SettingsLanguage::ru);
    auto w = makeWindow();
    w->page(SettingsSection::pomodoro);
    EXPECT_EQ(w->focusStatusText().toStdString(), SettingsStrings::make(SettingsLanguage::ru).focusStatusMissing);
}

TEST_F(SettingsWindowTest, AStoredPasswordLengthAboveTheSliderShowsAtItsEnd) {
    settings_.setPasswordLength(100);
    auto w = makeWindow();
    auto* slider = w->page(SettingsSection::password)->findChild<QSlider*>("passwordLength");
    ASSERT_NE(slider, nullptr);
    EXPECT_EQ(slider->maximum(), 64);
    EXPECT_EQ(slider->value(), 64);
    EXPECT_EQ(w->form().get(s::kPasswordLength), 100);
}

}  // namespace
}  // namespace orvantis::ui

namespace orvantis::ui {
namespace {

double medianMs(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// Opening (window made, first page built and shown) and switching to a page already visited,
// median of 20 each, on the offscreen platform.
TEST_F(SettingsWindowTest, OpensWithinItsBudgetAndSwitchesPagesWithinAFrame) {
    std::vector<double> open, change;
    for (int i = 0; i < 20; ++i) {
        const auto start = std::chrono::steady_clock::now();
        auto w = makeWindow();
        w->show();
        w->repaint();
        open.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
        for (const auto section : kAllSettingsSections) w->page(section);
        const auto switchStart = std::chrono::steady_clock::now();
        w->selectSection(SettingsSection::bonus);
        w->repaint();
        change.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - switchStart).count());
        w->close();
    }
    std::cout << "settings window: open median " << medianMs(open) << " ms, page switch median "
              << medianMs(change) << " ms\n";
    EXPECT_LT(medianMs(open), 150.0);
    EXPECT_LT(medianMs(change), 16.0);
}

}  // namespace
}  // namespace orvantis::ui
