#include "core/strings/settings_strings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/strings/string_format.h"

namespace orvantis {
namespace {

// The field names in their required order, written out independently of the code under test.
constexpr std::array<std::string_view, 284> kExpectedFieldNames{
    "translator", "layoutSwitcher", "enableTranslation", "translationHotkeyVariants",
    "translationHotkeyDirect", "enableLayoutSwitching", "hotkey", "delay", "launchAtLogin", "help",
    "helpTranslatorTitle", "helpTranslatorText", "helpSwitcherTitle", "helpSwitcherText", "cancel", "save",
    "conflictWarning", "pressKeys", "clipboardHistory", "enableClipboardHistory", "historySize",
    "storeNonText", "historyItems", "noHistory", "helpClipboardTitle", "helpClipboardText", "pomodoroTimer",
    "pomodoroHotkey", "enablePomodoro", "workDuration", "breakDuration", "longBreakDuration", "longBreakHint",
    "minutesUnit", "pomodoroStartItem", "pomodoroPauseItem", "pomodoroResumeItem", "pomodoroStopItem",
    "pomodoroDashboardMenuItem", "pomodoroDashboardTitle", "pomodoroPhaseFocus", "pomodoroPhaseBreak",
    "pomodoroPhaseLongBreak", "pomodoroDashboardStart", "pomodoroDashboardPause", "pomodoroDashboardResume",
    "pomodoroDashboardSkip", "pomodoroDashboardReset", "pomodoroDashboardSessionFormat",
    "pomodoroDashboardToday", "pomodoroDashboardFocused", "pomodoroDashboardThisWeek", "pomodoroDashboardDND",
    "pomodoroDashboardDNDHint", "notifWorkEndTitle", "notifWorkEndBody", "notifBreakEndTitle",
    "notifBreakEndBody", "helpPomodoroTitle", "helpPomodoroText", "clipboardSearchPlaceholder",
    "clipboardPopupShortcuts", "clipboardPopupCountFormat", "clipboardPopupCountFilteredFormat",
    "clipboardPersist", "clipboardPersistHint", "clipboardClear", "clipboardClearConfirm",
    "clipboardIgnoredApps", "clipboardIgnoredAppsHint", "clipboardAddApp", "clipboardShortcuts",
    "clipboardShortcutsHint", "general", "appearance", "language", "startup", "about", "aboutBody",
    "settingsWindowTitle", "focusToggleEnable", "focusToggleHint", "focusSectionTitle", "focusWhy",
    "focusStepsTitle", "focusStatusLabel", "focusStatusFound", "focusStatusMissing", "focusRecheck",
    "focusOpenShortcuts", "focusMissingAlertTitle", "focusMissingAlertBody", "focusMissingAlertContinue",
    "howItWorks", "tips", "translatorTips", "switcherTips", "aboutTagline", "aboutFeaturesTitle",
    "aboutFeatures", "aboutBonusTitle", "aboutBonus", "aboutPrivacyTitle", "aboutPrivacy", "aboutSystemTitle",
    "aboutSystem", "aboutCreditsTitle", "aboutCredits", "onboardingWindowTitle", "onboardingWelcomeTitle",
    "onboardingWelcomeSubtitle", "onboardingFeaturesTitle", "onboardingPermissionsTitle",
    "onboardingAccessibilityName", "onboardingAccessibilityWhy", "onboardingAccessibilityGrantedNote",
    "onboardingAccessibilityMissingNote", "onboardingOpenAccessibility", "onboardingInputMonitoringName",
    "onboardingInputMonitoringWhy", "onboardingInputMonitoringGrantedNote",
    "onboardingInputMonitoringMissingNote", "onboardingOpenInputMonitoring", "onboardingNotificationsName",
    "onboardingNotificationsWhy", "onboardingTipsTitle", "onboardingTipsBody", "onboardingGetStarted",
    "onboardingSkip", "passwordSection", "passwordEnable", "passwordMode", "passwordModePopup",
    "passwordModeAutoPaste", "passwordModeCopyOnly", "passwordLength", "passwordCharsetTitle",
    "passwordCharsetUppercase", "passwordCharsetLowercase", "passwordCharsetDigits", "passwordCharsetSymbols",
    "passwordClipboardClearTitle", "passwordClipboardClearHint", "passwordClipboardClearUnitSec",
    "passwordClipboardNever", "passwordPopupTitle", "passwordPopupCopy", "passwordPopupPaste",
    "passwordToastCopied", "passwordToastCopiedSub", "passwordToastCopiedSubNoClear", "passwordToastTyped",
    "passwordHelpTitle", "passwordHelpText", "snippetsSection", "snippetsEnable", "snippetsTableShortcut",
    "snippetsTableExpansion", "snippetsAdd", "snippetsRemove", "snippetsEmpty", "snippetsExampleShortcut",
    "snippetsExampleExpansion", "snippetsHelpTitle", "snippetsHelpText", "snippetsTipsTitle", "snippetsTips",
    "toolbarLabelSwitcher", "toolbarLabelClipboard", "toolbarLabelPomodoro", "toolbarLabelPassword",
    "toolbarLabelSnippets", "translationTabHint", "translationPopupHintVariants",
    "translationPopupHintDirect", "translatorLanguagesTitle", "translatorPrimaryLanguage",
    "translatorSecondaryLanguage", "translatorLanguagesHint", "iCloudSection", "iCloudSyncSettings",
    "iCloudSyncSettingsHint", "iCloudSyncClipboard", "iCloudSyncClipboardHint", "iCloudUnavailableNote",
    "iCloudClipboardConsentTitle", "iCloudClipboardConsentBody", "iCloudClipboardConsentEnable",
    "iCloudClipboardConsentCancel", "feedbackCardTitle", "feedbackCardHint", "feedbackButton",
    "feedbackWindowTitle", "feedbackRecipientLabel", "feedbackSubjectLabel", "feedbackSubjectDefault",
    "feedbackBodyLabel", "feedbackBodyPlaceholder", "feedbackIncludeLogs", "feedbackIncludeLogsHint",
    "feedbackSendButton", "feedbackUnavailableTitle", "feedbackUnavailableBody", "feedbackEmptyBodyTitle",
    "feedbackEmptyBodyMessage", "textTransformerSection", "toolbarLabelTextTransformer",
    "textTransformerEnable", "textTransformerWindowTitle", "textTransformerInputLabel",
    "textTransformerOutputLabel", "textTransformerTransformLabel", "textTransformerSearchPlaceholder",
    "textTransformerCopyButton", "textTransformerHelpTitle", "textTransformerHelpText",
    "textTransformerTipsTitle", "textTransformerTips", "hintsSection", "hintsCardHint", "hotkeyOverlayTitle",
    "overlayTranslatorVariants", "overlayTranslatorDirect", "menuSettingsItem", "menuCheckForUpdatesItem",
    "menuQuitItem", "menuEnablePermissionsItem", "menuKeyboardLockItem", "toolbarLabelKeyboardLock",
    "toolbarLabelBonus", "bonusSection", "bonusSectionHint", "scrollReverserCardTitle",
    "scrollReverserCardHint", "scrollReverserTrackpadLabel", "scrollReverserMouseLabel",
    "scrollReverserMagicMouseLabel", "finderCutCardTitle", "finderCutEnable", "finderCutCardHint",
    "menuBarHiderCardTitle", "menuBarHiderEnable", "menuBarHiderHotkeyLabel", "menuBarHiderAutoCollapseLabel",
    "menuBarHiderAutoCollapseOff", "menuBarHiderSecondsUnit", "menuBarHiderCardHint", "caffeineCardTitle",
    "caffeineEnable", "keyboardLockEnable", "caffeineHotkeyLabel", "caffeineDurationLabel",
    "caffeineDurationIndefinite", "caffeineMinutesUnit", "caffeineHoursUnit", "caffeineCardHint",
    "caffeineActiveApps", "caffeineActiveAppsHint", "caffeineLidCloseToggle", "caffeineLidCloseHint",
    "caffeineLidAlwaysToggle", "caffeineLidAlwaysHint", "menuCaffeineLidAlwaysItem",
    "caffeineLidExplainTitle", "caffeineLidExplainBody", "caffeineLidExplainAllow",
    "caffeineLidExplainCancel", "caffeineLidRevokedTitle", "caffeineLidRevokedBody",
    "caffeineLidRemovalCancelledTitle", "caffeineLidRemovalCancelledBody", "caffeineLidNeedsAppTitle",
    "caffeineLidNeedsAppBody", "menuCaffeineItem", "pomodoroDashboardPinTooltip", "keyboardLockSection",
    "keyboardLockHotkeyLabel", "keyboardLockAutoUnlockLabel", "keyboardLockCardHint",
    "keyboardLockOverlayTitle", "keyboardLockOverlaySubtitle", "keyboardLockOverlayEscHint",
    "keyboardLockOverlayUnlockButton", "keyboardLockOverlayAutoUnlockTemplate",
};

/// A text that both languages must carry word for word.
struct BilingualText {
    std::string_view field;
    std::string_view english;
    std::string_view russian;
};

// Texts shared by many screens, or whose exact words decide behaviour.
constexpr BilingualText kSharedTexts[] = {
    {"pomodoroDashboardSessionFormat", "Session %d of %d", "Сессия %d из %d"},
    {"clipboardPopupCountFormat", "%d items", "%d записей"},
    {"clipboardPopupCountFilteredFormat", "%d of %d", "%d из %d"},
    {"passwordToastCopiedSub", "%d chars · clears in %d s", "%d символов · очистится через %d с"},
    {"passwordToastCopiedSubNoClear", "%d chars", "%d символов"},
    {"keyboardLockOverlayAutoUnlockTemplate", "Auto-unlock in %@", "Авто-разблокировка через %@"},
    {"general", "General", "Основные"},
    {"translator", "Translator", "Переводчик"},
    {"layoutSwitcher", "Layout Switcher", "Переключатель раскладки"},
    {"toolbarLabelSwitcher", "Switcher", "Раскладка"},
    {"clipboardHistory", "Clipboard History", "История буфера обмена"},
    {"toolbarLabelClipboard", "Clipboard", "Буфер"},
    {"pomodoroTimer", "Pomodoro Timer", "Помодоро-таймер"},
    {"toolbarLabelPomodoro", "Pomodoro", "Помодоро"},
    {"passwordSection", "Password Generator", "Генератор паролей"},
    {"toolbarLabelPassword", "Password", "Пароли"},
    {"snippetsSection", "Snippet Expander", "Автодополнение"},
    {"toolbarLabelSnippets", "Snippets", "Сокращения"},
    {"textTransformerSection", "Text Tools", "Текстовые инструменты"},
    {"toolbarLabelTextTransformer", "Text Tools", "Текст"},
    {"hintsSection", "Hint", "Подсказка"},
    {"keyboardLockSection", "Keyboard Lock", "Блокировка клавиатуры"},
    {"toolbarLabelKeyboardLock", "Lock", "Защита"},
    {"bonusSection", "Bonus", "Бонус"},
    {"toolbarLabelBonus", "Bonus", "Бонус"},
    {"about", "About", "О программе"},
    {"settingsWindowTitle", "Orvantis Settings", "Настройки Orvantis"},
    {"appearance", "Appearance", "Внешний вид"},
    {"language", "Language", "Язык"},
    {"startup", "Startup", "Запуск"},
    {"iCloudSection", "Synced Folder", "Синхронизируемая папка"},
    {"pomodoroStartItem", "Start Pomodoro", "Запустить помодоро"},
    {"pomodoroPauseItem", "Pause Pomodoro", "Пауза"},
    {"pomodoroResumeItem", "Resume Pomodoro", "Продолжить"},
    {"pomodoroStopItem", "Stop Pomodoro", "Остановить"},
    {"pomodoroDashboardMenuItem", "Open Pomodoro Dashboard…", "Открыть дашборд Помодоро…"},
    {"help", "Help", "Справка"},
    {"menuSettingsItem", "Settings…", "Настройки…"},
    {"menuCheckForUpdatesItem", "Check for Updates…", "Проверить обновления…"},
    {"menuQuitItem", "Quit Orvantis", "Выйти из Orvantis"},
    {"menuEnablePermissionsItem", "Enable Permissions…", "Включить разрешения…"},
    {"menuKeyboardLockItem", "Lock Keyboard for Cleaning", "Заблокировать клавиатуру для протирки"},
    {"menuCaffeineItem", "Caffeine", "Кофеин"},
    {"menuCaffeineLidAlwaysItem", "Keep awake with lid closed", "Не спать с закрытой крышкой"},
    {"cancel", "Cancel", "Отмена"},
    {"save", "Save", "Сохранить"},
    {"pressKeys", "Press keys…", "Нажмите клавиши…"},
    {"conflictWarning",
     "⚠ May conflict with a system shortcut",
     "⚠ Может конфликтовать с системным сочетанием"},
    {"minutesUnit", "min", "мин"},
    {"passwordClipboardClearUnitSec", "sec", "сек"},
    {"passwordClipboardNever", "Never", "Никогда"},
    {"menuBarHiderAutoCollapseOff", "off", "выкл"},
    {"menuBarHiderSecondsUnit", "s", "с"},
    {"caffeineDurationIndefinite", "Indefinitely", "Бесконечно"},
    {"caffeineMinutesUnit", "min", "мин"},
    {"caffeineHoursUnit", "h", "ч"},
    {"historyItems", "items", "зап."},
    {"noHistory", "No clipboard history", "История пуста"},
    {"clipboardClearConfirm",
     "Remove all clipboard entries? Pinned items will also be removed.",
     "Удалить все записи буфера обмена? Закреплённые тоже будут удалены."},
    {"focusMissingAlertTitle", "Focus shortcuts not configured", "Команды для Фокуса не настроены"},
    {"focusMissingAlertContinue", "Start without Focus", "Запустить без Фокуса"},
    {"iCloudClipboardConsentTitle",
     "Sync clipboard history through the synced folder?",
     "Синхронизировать историю буфера через синхронизируемую папку?"},
    {"iCloudClipboardConsentEnable", "Enable sync", "Включить синхронизацию"},
    {"iCloudClipboardConsentCancel", "Cancel", "Отмена"},
    {"caffeineLidExplainTitle",
     "Allow keeping the computer awake with the lid closed?",
     "Разрешить не засыпать с закрытой крышкой?"},
    {"caffeineLidExplainAllow", "Allow", "Разрешить"},
    {"caffeineLidExplainCancel", "Cancel", "Отмена"},
    {"caffeineLidRevokedTitle", "Administrator access removed", "Права администратора отозваны"},
    {"caffeineLidRevokedBody",
     "Lid-close sleep prevention is off. The permission rule has been removed — Orvantis no longer has any "
     "administrator access.",
     "Блокировка сна при закрытой крышке выключена. Правило-разрешение удалено — у Orvantis больше нет "
     "никаких прав администратора."},
    {"caffeineLidRemovalCancelledTitle", "Feature left on", "Функция осталась включённой"},
    {"caffeineLidRemovalCancelledBody",
     "The administrator password prompt was cancelled, so the permission rule couldn't be removed. Lid-close "
     "sleep prevention is still on. Try turning it off again to revoke access.",
     "Запрос пароля администратора был отменён, поэтому правило-разрешение не удалось удалить. Блокировка "
     "сна при закрытой крышке всё ещё включена. Попробуйте выключить её снова, чтобы отозвать права."},
    {"caffeineLidNeedsAppTitle", "Add an app first", "Сначала добавьте приложение"},
    {"caffeineLidNeedsAppBody",
     "Lid-close sleep prevention keys off the apps in the list above. Add at least one app before turning it "
     "on, so there's something to keep the computer awake for.",
     "Блокировка сна при закрытой крышке ориентируется на приложения из списка выше. Добавьте хотя бы одно "
     "приложение перед включением, чтобы было ради чего держать компьютер активным."},
    {"feedbackUnavailableTitle", "No mail client configured", "Почтовый клиент не настроен"},
    {"feedbackUnavailableBody",
     "This computer doesn’t have a mail account set up. Add one in your mail client’s settings and try again.",
     "На этом компьютере не настроена учётная запись почты. Добавьте её в настройках почтового клиента и "
     "попробуйте снова."},
    {"feedbackEmptyBodyTitle", "Message is empty", "Пустое сообщение"},
    {"feedbackEmptyBodyMessage",
     "Add a few words about what you’d like to report before sending.",
     "Напишите несколько слов о том, что хотите сообщить, перед отправкой."},
    {"notifWorkEndTitle", "Break time!", "Перерыв!"},
    {"notifWorkEndBody", "Great work! Time for a short break.", "Время отдохнуть."},
    {"notifBreakEndTitle", "Back to work!", "За работу!"},
    {"notifBreakEndBody",
     "Break over — start your next focus session.",
     "Перерыв окончен — начните новый сеанс."},
};

/// A text fixed for one language by the screen that shows it.
struct FixedText {
    std::string_view field;
    SettingsLanguage language;
    std::string_view text;
};

// Texts laid down by the individual features: alerts, notifications, overlays, labels.
constexpr FixedText kFeatureTexts[] = {
    {"focusMissingAlertBody",
     SettingsLanguage::en,
     "You enabled “Focus during Pomodoro”, but the two required commands haven’t been created yet. "
     "Create them as executable files in ~/.config/orvantis/focus:\n"
     "\n"
     "   • “Orvantis Focus On” → turns Do Not Disturb on\n"
     "   • “Orvantis Focus Off” → turns Do Not Disturb off\n"
     "\n"
     "The Pomodoro will start without toggling Focus."},
    {"focusMissingAlertTitle", SettingsLanguage::en, "Focus shortcuts not configured"},
    {"focusOpenShortcuts", SettingsLanguage::en, "Open Folder"},
    {"focusMissingAlertContinue", SettingsLanguage::en, "Start without Focus"},
    {"notifWorkEndTitle", SettingsLanguage::en, "Break time!"},
    {"notifWorkEndTitle", SettingsLanguage::ru, "Перерыв!"},
    {"notifWorkEndBody", SettingsLanguage::en, "Great work! Time for a short break."},
    {"notifWorkEndBody", SettingsLanguage::ru, "Время отдохнуть."},
    {"notifBreakEndTitle", SettingsLanguage::en, "Back to work!"},
    {"notifBreakEndTitle", SettingsLanguage::ru, "За работу!"},
    {"notifBreakEndBody", SettingsLanguage::en, "Break over — start your next focus session."},
    {"notifBreakEndBody", SettingsLanguage::ru, "Перерыв окончен — начните новый сеанс."},
    {"passwordToastCopied", SettingsLanguage::en, "Password copied"},
    {"passwordToastCopied", SettingsLanguage::ru, "Пароль скопирован"},
    {"passwordToastCopiedSub", SettingsLanguage::en, "%d chars · clears in %d s"},
    {"passwordToastCopiedSub", SettingsLanguage::ru, "%d символов · очистится через %d с"},
    {"passwordToastCopiedSubNoClear", SettingsLanguage::en, "%d chars"},
    {"passwordToastCopiedSubNoClear", SettingsLanguage::ru, "%d символов"},
    {"passwordToastTyped", SettingsLanguage::en, "Password typed"},
    {"passwordToastTyped", SettingsLanguage::ru, "Пароль вставлен"},
    {"keyboardLockOverlayTitle", SettingsLanguage::en, "Keyboard locked for cleaning"},
    {"keyboardLockOverlayTitle", SettingsLanguage::ru, "Клавиатура заблокирована"},
    {"keyboardLockOverlaySubtitle", SettingsLanguage::en, "Wipe away — key presses are ignored."},
    {"keyboardLockOverlaySubtitle", SettingsLanguage::ru, "Можно протирать — нажатия не пройдут."},
    {"keyboardLockOverlayEscHint", SettingsLanguage::en, "Hold Esc for 3 seconds to unlock"},
    {"keyboardLockOverlayEscHint", SettingsLanguage::ru, "Удерживайте Esc 3 секунды, чтобы разблокировать"},
    {"keyboardLockOverlayUnlockButton", SettingsLanguage::en, "Unlock"},
    {"keyboardLockOverlayUnlockButton", SettingsLanguage::ru, "Разблокировать"},
    {"keyboardLockOverlayAutoUnlockTemplate", SettingsLanguage::en, "Auto-unlock in %@"},
    {"keyboardLockOverlayAutoUnlockTemplate", SettingsLanguage::ru, "Авто-разблокировка через %@"},
    {"pomodoroDashboardSessionFormat", SettingsLanguage::en, "Session %d of %d"},
    {"pomodoroDashboardPinTooltip", SettingsLanguage::en, "Keep window on top"},
    {"pomodoroDashboardToday", SettingsLanguage::en, "TODAY"},
    {"pomodoroDashboardFocused", SettingsLanguage::en, "FOCUSED"},
    {"pomodoroDashboardThisWeek", SettingsLanguage::en, "THIS WEEK"},
    {"textTransformerInputLabel", SettingsLanguage::en, "Input"},
    {"textTransformerOutputLabel", SettingsLanguage::en, "Result"},
    {"passwordPopupTitle", SettingsLanguage::en, "Generate password"},
    {"passwordPopupCopy", SettingsLanguage::en, "Copy"},
    {"passwordPopupPaste", SettingsLanguage::en, "Paste here"},
    {"feedbackRecipientLabel", SettingsLanguage::en, "Your message goes straight to the developer."},
    {"feedbackSubjectDefault", SettingsLanguage::en, "Orvantis feedback"},
    {"feedbackBodyPlaceholder",
     SettingsLanguage::en,
     "Describe what you saw, what you expected, or what you’d like to see in the app…"},
    {"feedbackIncludeLogs", SettingsLanguage::en, "Attach diagnostic logs"},
    {"feedbackIncludeLogsHint",
     SettingsLanguage::en,
     "Adds the last 3 days of app log entries plus app and system versions. No clipboard contents or selected "
     "text is included."},
    {"feedbackEmptyBodyTitle", SettingsLanguage::en, "Message is empty"},
    {"feedbackEmptyBodyMessage",
     SettingsLanguage::en,
     "Add a few words about what you’d like to report before sending."},
    {"feedbackUnavailableTitle", SettingsLanguage::en, "No mail client configured"},
    {"feedbackUnavailableBody",
     SettingsLanguage::en,
     "This computer doesn’t have a mail account set up. Add one in your mail client’s settings and try again."},
    {"caffeineLidRevokedTitle", SettingsLanguage::en, "Administrator access removed"},
    {"caffeineLidRevokedBody",
     SettingsLanguage::en,
     "Lid-close sleep prevention is off. The permission rule has been removed — Orvantis no longer has any "
     "administrator access."},
    {"caffeineLidNeedsAppTitle", SettingsLanguage::en, "Add an app first"},
    {"caffeineLidNeedsAppBody",
     SettingsLanguage::en,
     "Lid-close sleep prevention keys off the apps in the list above. Add at least one app before turning it "
     "on, so there's something to keep the computer awake for."},
    {"caffeineLidRemovalCancelledBody",
     SettingsLanguage::en,
     "The administrator password prompt was cancelled, so the permission rule couldn't be removed. Lid-close "
     "sleep prevention is still on. Try turning it off again to revoke access."},
    {"hotkey", SettingsLanguage::en, "Hotkey"},
    {"pomodoroHotkey", SettingsLanguage::en, "Hotkey"},
    {"feedbackSendButton", SettingsLanguage::en, "Send"},
};

// The only fields that are templates, each with its placeholders.
struct TemplateField {
    std::string_view field;
    std::vector<FormatPlaceholder> placeholders;
};

const std::vector<TemplateField>& templateFields() {
    using enum FormatPlaceholder;
    static const std::vector<TemplateField> fields{
        {"pomodoroDashboardSessionFormat", {integer, integer}},
        {"clipboardPopupCountFormat", {integer}},
        {"clipboardPopupCountFilteredFormat", {integer, integer}},
        {"passwordToastCopiedSub", {integer, integer}},
        {"passwordToastCopiedSubNoClear", {integer}},
        {"keyboardLockOverlayAutoUnlockTemplate", {text}},
    };
    return fields;
}

/// The text of the field called `name`; fails the test when there is no such field.
std::string_view textOf(const SettingsStrings& strings, std::string_view name) {
    const auto& fields = SettingsStrings::fields();
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const SettingsStringsField& field) { return field.name == name; });
    if (found == fields.end()) {
        ADD_FAILURE() << "no field named " << name;
        return {};
    }
    return strings.*(found->member);
}

std::string_view languageName(SettingsLanguage language) {
    return rawValue(language);
}

/// True when `text` is well-formed UTF-8 without overlong forms or surrogates.
bool isValidUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t length = 0;
        char32_t value = 0;
        if (lead < 0x80) {
            ++i;
            continue;
        } else if ((lead & 0xE0) == 0xC0) {
            length = 2;
            value = lead & 0x1F;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3;
            value = lead & 0x0F;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4;
            value = lead & 0x07;
        } else {
            return false;
        }
        if (i + length > text.size()) return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            value = (value << 6) | (next & 0x3F);
        }
        const char32_t minimum = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
        if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return false;
        i += length;
    }
    return true;
}

TEST(SettingsStringsTest, HasExactly284Fields) {
    EXPECT_EQ(SettingsStrings::fields().size(), 284u);
    EXPECT_EQ(kSettingsStringsFieldCount, 284u);
    EXPECT_EQ(sizeof(SettingsStrings), 284 * sizeof(std::string_view));
}

TEST(SettingsStringsTest, FirstAndLastFieldsAreInPlace) {
    const auto& fields = SettingsStrings::fields();
    EXPECT_EQ(fields.front().name, "translator");
    EXPECT_EQ(fields.front().member, &SettingsStrings::translator);
    EXPECT_EQ(fields[1].name, "layoutSwitcher");
    EXPECT_EQ(fields[73].name, "general");
    EXPECT_EQ(fields[129].name, "passwordSection");
    EXPECT_EQ(fields.back().name, "keyboardLockOverlayAutoUnlockTemplate");
    EXPECT_EQ(fields.back().member, &SettingsStrings::keyboardLockOverlayAutoUnlockTemplate);
}

TEST(SettingsStringsTest, FieldNamesFollowTheRequiredOrder) {
    const auto& fields = SettingsStrings::fields();
    ASSERT_EQ(fields.size(), kExpectedFieldNames.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(fields[i].name, kExpectedFieldNames[i]) << "at index " << i;
    }
}

TEST(SettingsStringsTest, FieldNamesAreUnique) {
    std::set<std::string_view> seen;
    for (const auto& field : SettingsStrings::fields()) {
        EXPECT_TRUE(seen.insert(field.name).second) << field.name;
    }
}

// Each table row points at the member declared at its own position, so the table walks the
// record in declaration order and touches every member exactly once.
TEST(SettingsStringsTest, TableMembersFollowTheDeclarationOrder) {
    const SettingsStrings strings = SettingsStrings::make(SettingsLanguage::en);
    const auto* base = reinterpret_cast<const unsigned char*>(&strings);
    const auto& fields = SettingsStrings::fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto* member = reinterpret_cast<const unsigned char*>(&(strings.*(fields[i].member)));
        EXPECT_EQ(static_cast<std::size_t>(member - base), i * sizeof(std::string_view)) << fields[i].name;
    }
}

TEST(SettingsStringsTest, NoFieldIsEmptyInEitherLanguage) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const auto& field : SettingsStrings::fields()) {
            EXPECT_FALSE((strings.*(field.member)).empty()) << languageName(language) << "." << field.name;
        }
    }
}

TEST(SettingsStringsTest, TextsAreTidyUtf8) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const auto& field : SettingsStrings::fields()) {
            const std::string_view text = strings.*(field.member);
            SCOPED_TRACE(std::string(languageName(language)) + "." + std::string(field.name));
            EXPECT_TRUE(isValidUtf8(text));
            EXPECT_EQ(text.find('\r'), std::string_view::npos);
            EXPECT_EQ(text.find('\t'), std::string_view::npos);
            EXPECT_EQ(text.find('\0'), std::string_view::npos);
            ASSERT_FALSE(text.empty());
            EXPECT_NE(text.front(), ' ');
            EXPECT_NE(text.back(), ' ');
            EXPECT_NE(text.back(), '\n');
        }
    }
}

TEST(SettingsStringsTest, PlaceholdersMatchBetweenLanguages) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    for (const auto& field : SettingsStrings::fields()) {
        EXPECT_EQ(formatPlaceholders(english.*(field.member)), formatPlaceholders(russian.*(field.member)))
            << field.name;
    }
}

TEST(SettingsStringsTest, OnlyTheTemplateFieldsHoldPlaceholders) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const auto& field : SettingsStrings::fields()) {
            const auto expected = std::find_if(templateFields().begin(), templateFields().end(),
                                               [&](const TemplateField& t) { return t.field == field.name; });
            const std::vector<FormatPlaceholder> want =
                expected == templateFields().end() ? std::vector<FormatPlaceholder>{} : expected->placeholders;
            EXPECT_EQ(formatPlaceholders(strings.*(field.member)), want)
                << languageName(language) << "." << field.name;
        }
    }
}

TEST(SettingsStringsTest, SharedTextsHaveTheirExactWords) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    EXPECT_EQ(std::size(kSharedTexts), 81u);
    for (const BilingualText& row : kSharedTexts) {
        EXPECT_EQ(textOf(english, row.field), row.english) << row.field;
        EXPECT_EQ(textOf(russian, row.field), row.russian) << row.field;
    }
}

TEST(SettingsStringsTest, FeatureTextsHaveTheirExactWords) {
    for (const FixedText& fixed : kFeatureTexts) {
        const SettingsStrings strings = SettingsStrings::make(fixed.language);
        EXPECT_EQ(textOf(strings, fixed.field), fixed.text)
            << languageName(fixed.language) << "." << fixed.field;
    }
}

TEST(SettingsStringsTest, SomeScreensShareATextButKeepTheirOwnField) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    EXPECT_EQ(english.hotkey, "Hotkey");
    EXPECT_EQ(english.pomodoroHotkey, "Hotkey");
    EXPECT_NE(&english.hotkey, &english.pomodoroHotkey);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    EXPECT_EQ(russian.hotkey, russian.pomodoroHotkey);
}

TEST(SettingsStringsTest, FocusAlertBodyKeepsItsLineBreaks) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    EXPECT_EQ(english.focusMissingAlertBody,
              "You enabled “Focus during Pomodoro”, but the two required commands haven’t been created yet. "
              "Create them as executable files in ~/.config/orvantis/focus:\n\n"
              "   • “Orvantis Focus On” → turns Do Not Disturb on\n"
              "   • “Orvantis Focus Off” → turns Do Not Disturb off\n\n"
              "The Pomodoro will start without toggling Focus.");
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    // The two shortcuts are looked up by their exact names, which therefore stay untranslated.
    EXPECT_NE(russian.focusMissingAlertBody.find("«Orvantis Focus On»"), std::string_view::npos);
    EXPECT_NE(russian.focusMissingAlertBody.find("«Orvantis Focus Off»"), std::string_view::npos);
    EXPECT_EQ(std::count(russian.focusMissingAlertBody.begin(), russian.focusMissingAlertBody.end(), '\n'),
              std::count(english.focusMissingAlertBody.begin(), english.focusMissingAlertBody.end(), '\n'));
}

TEST(SettingsStringsTest, RussianIsATranslationNotACopy) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    std::vector<std::string_view> same;
    for (const auto& field : SettingsStrings::fields()) {
        if (english.*(field.member) == russian.*(field.member)) same.push_back(field.name);
    }
    EXPECT_EQ(same, std::vector<std::string_view>{});
}

TEST(SettingsStringsTest, ProductNameStandsWhereTheScreensNeedIt) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const std::string_view text : {strings.settingsWindowTitle, strings.menuQuitItem,
                                            strings.onboardingWelcomeTitle, strings.hotkeyOverlayTitle,
                                            strings.feedbackSubjectDefault}) {
            EXPECT_NE(text.find("Orvantis"), std::string_view::npos) << languageName(language) << ": " << text;
        }
    }
}

// The help pages name the default hotkeys as they are pressed on this desktop.
TEST(SettingsStringsTest, HelpTextsNameTheDefaultHotkeys) {
    struct Mention {
        std::string_view field;
        std::string_view hotkey;
    };
    constexpr Mention kMentions[] = {
        {"helpSwitcherText", "Shift+Backspace"},        {"helpTranslatorText", "Super+Shift+X"},
        {"helpTranslatorText", "Super+Alt+X"},          {"helpClipboardText", "Super+Shift+V"},
        {"helpClipboardText", "Ctrl+1…Ctrl+9"},         {"helpPomodoroText", "Super+Shift+M"},
        {"passwordHelpText", "Super+Shift+P"},          {"snippetsHelpText", "Super+Shift+Backspace"},
        {"textTransformerHelpText", "Super+Shift+T"},   {"onboardingTipsBody", "Super+Shift+H"},
        {"aboutBonus", "Super+Shift+L"},                {"aboutBonus", "Super+Shift+K"},
        {"aboutBonus", "Super+Shift+B"},
    };
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const Mention& mention : kMentions) {
            EXPECT_NE(textOf(strings, mention.field).find(mention.hotkey), std::string_view::npos)
                << languageName(language) << "." << mention.field << " lacks " << mention.hotkey;
        }
    }
}

TEST(SettingsStringsTest, NoTextUsesForeignModifierGlyphs) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const auto& field : SettingsStrings::fields()) {
            const std::string_view text = strings.*(field.member);
            for (const std::string_view glyph : {"⌘", "⌃", "⌥", "⇧", "⌫"}) {
                EXPECT_EQ(text.find(glyph), std::string_view::npos)
                    << languageName(language) << "." << field.name << " holds " << glyph;
            }
        }
    }
}

/// The code point that starts at `at`, or 0 outside the text; `at` may point into the middle of a
/// sequence, in which case the search goes back to its lead byte.
char32_t codePointAt(std::string_view text, std::size_t at) {
    if (at >= text.size()) return 0;
    while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) --at;
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80 ? 1 : (lead & 0xE0) == 0xC0 ? 2 : (lead & 0xF0) == 0xE0 ? 3 : 4;
    char32_t value = length == 1   ? lead
                     : length == 2 ? (lead & 0x1F)
                     : length == 3 ? (lead & 0x0F)
                                   : (lead & 0x07);
    for (std::size_t k = 1; k < length && at + k < text.size(); ++k) {
        value = (value << 6) | (static_cast<unsigned char>(text[at + k]) & 0x3F);
    }
    return value;
}

/// Letters and digits of the two interface languages, the characters that continue a word.
bool continuesAWord(char32_t c) {
    return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z') || (c >= U'0' && c <= U'9') ||
           (c >= 0x0400 && c <= 0x04FF);
}

/// The places where `word` stands in `text` as a word of its own, case-sensitively: "Mac" in "your
/// Mac." but not in "Machine"; glyphs match wherever they stand.
std::vector<std::size_t> wordOccurrences(std::string_view text, std::string_view word) {
    const bool isGlyph = !continuesAWord(codePointAt(word, 0));
    std::vector<std::size_t> found;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1)) {
        const bool startsAWord = at == 0 || !continuesAWord(codePointAt(text, at - 1));
        const bool endsAWord = !continuesAWord(codePointAt(text, at + word.size()));
        if (isGlyph || (startsAWord && endsAWord)) found.push_back(at);
    }
    return found;
}

// Names of the other desktop platform and its services, which the interface words the Linux way:
// "computer", "the system", "synced folder", "file manager", "mail client", Ctrl and Alt. Russian
// transliterations come with their case forms.
constexpr std::string_view kOtherPlatformWords[] = {
    "Mac", "Macs", "MacBook", "macOS", "OS X", "iCloud", "Finder", "Mail", "Apple", "⌘", "⌥",
    "Мак", "Мака", "Маку", "Маком", "Маке", "Макбук", "айклауд", "Айклауд", "Файндер", "Эппл",
};

TEST(SettingsStringsTest, WordFinderTellsWordsFromPartsOfWords) {
    EXPECT_EQ(wordOccurrences("Your Mac is asleep.", "Mac"), std::vector<std::size_t>{5});
    EXPECT_TRUE(wordOccurrences("This machine and Macintosh", "Mac").empty());
    EXPECT_TRUE(wordOccurrences("“mail” is an abbreviation", "Mail").empty());
    EXPECT_EQ(wordOccurrences("Mail → Settings", "Mail"), std::vector<std::size_t>{0});
    EXPECT_EQ(wordOccurrences("держать Мак активным", "Мак"), std::vector<std::size_t>{15});
    EXPECT_TRUE(wordOccurrences("Максим", "Мак").empty());
    EXPECT_EQ(wordOccurrences("Press ⌘C", "⌘"), std::vector<std::size_t>{6});
}

TEST(SettingsStringsTest, NoTextNamesTheOtherPlatform) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const auto& field : SettingsStrings::fields()) {
            const std::string_view text = strings.*(field.member);
            for (const std::string_view word : kOtherPlatformWords) {
                EXPECT_TRUE(wordOccurrences(text, word).empty())
                    << languageName(language) << "." << field.name << " names " << word << ": " << text;
            }
        }
    }
}

TEST(SettingsStringsTest, LongTextsRunOverSeveralLines) {
    for (const SettingsLanguage language : kAllSettingsLanguages) {
        const SettingsStrings strings = SettingsStrings::make(language);
        for (const std::string_view text :
             {strings.helpTranslatorText, strings.helpSwitcherText, strings.helpClipboardText,
              strings.helpPomodoroText, strings.passwordHelpText, strings.snippetsHelpText,
              strings.snippetsTips, strings.textTransformerHelpText, strings.textTransformerTips,
              strings.translatorTips, strings.switcherTips, strings.aboutFeatures, strings.aboutBonus,
              strings.aboutPrivacy, strings.aboutSystem, strings.aboutCredits, strings.onboardingTipsBody,
              strings.clipboardShortcutsHint}) {
            EXPECT_NE(text.find('\n'), std::string_view::npos) << languageName(language) << ": " << text;
        }
    }
}

TEST(SettingsStringsTest, MakeIsStateless) {
    const SettingsStrings englishFirst = SettingsStrings::make(SettingsLanguage::en);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    const SettingsStrings englishAgain = SettingsStrings::make(SettingsLanguage::en);
    EXPECT_EQ(englishFirst, englishAgain);
    EXPECT_NE(englishFirst, russian);
    EXPECT_EQ(russian, SettingsStrings::make(SettingsLanguage::ru));
    // The views point at literals, so a copy stays valid after the record that made it is gone.
    std::string_view kept;
    {
        const SettingsStrings temporary = SettingsStrings::make(SettingsLanguage::ru);
        kept = temporary.menuQuitItem;
    }
    EXPECT_EQ(kept, "Выйти из Orvantis");
}

TEST(SettingsStringsTest, UnknownStoredLanguageReadsAsEnglish) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    EXPECT_EQ(SettingsStrings::make(settingsLanguageFromRaw("de")), english);
    EXPECT_EQ(SettingsStrings::make(settingsLanguageFromRaw("")), english);
    EXPECT_EQ(SettingsStrings::make(settingsLanguageFromRaw("ru")), SettingsStrings::make(SettingsLanguage::ru));
}

TEST(SettingsStringsTest, LanguagesNameThemselves) {
    EXPECT_EQ(displayName(SettingsLanguage::en), "English");
    EXPECT_EQ(displayName(SettingsLanguage::ru), "Русский");
    EXPECT_EQ(rawValue(SettingsLanguage::en), "en");
    EXPECT_EQ(rawValue(SettingsLanguage::ru), "ru");
    ASSERT_EQ(kAllSettingsLanguages.size(), 2u);
    EXPECT_EQ(kAllSettingsLanguages[0], SettingsLanguage::en);
    EXPECT_EQ(kAllSettingsLanguages[1], SettingsLanguage::ru);
}

TEST(SettingsStringsTest, TemplatesFillAsTheScreensUseThem) {
    const SettingsStrings english = SettingsStrings::make(SettingsLanguage::en);
    const SettingsStrings russian = SettingsStrings::make(SettingsLanguage::ru);
    EXPECT_EQ(formatString(english.clipboardPopupCountFilteredFormat, {3, 20}), "3 of 20");
    EXPECT_EQ(formatString(russian.clipboardPopupCountFilteredFormat, {3, 20}), "3 из 20");
    EXPECT_EQ(formatString(english.pomodoroDashboardSessionFormat, {2, 4}), "Session 2 of 4");
    EXPECT_EQ(formatString(english.passwordToastCopiedSub, {16, 60}), "16 chars · clears in 60 s");
    EXPECT_EQ(formatString(russian.passwordToastCopiedSub, {16, 60}), "16 символов · очистится через 60 с");
    EXPECT_EQ(formatString(english.keyboardLockOverlayAutoUnlockTemplate, {"10:00"}), "Auto-unlock in 10:00");
    EXPECT_EQ(formatString(russian.keyboardLockOverlayAutoUnlockTemplate, {"9:59"}),
              "Авто-разблокировка через 9:59");
}

}  // namespace
}  // namespace orvantis
