#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "core/settings/settings_language.h"

namespace orvantis {

struct SettingsStrings;

/// Number of texts in one SettingsStrings record.
inline constexpr std::size_t kSettingsStringsFieldCount = 284;

/// One row of the reflection table of SettingsStrings: the field's name as written in the
/// code, and the member that holds its text.
struct SettingsStringsField {
    std::string_view name;
    std::string_view SettingsStrings::*member;
};

/// Every user-visible text of the interface in one language, one field per screen element.
/// Two elements that read the same today still have a field each, so that a translation of
/// one need not follow the other. The texts are string literals with static storage, so a
/// record may be copied freely and its views never dangle. The language comes from the
/// setting, never from the operating system; there is no fallback from one language to the
/// other. Immutable after construction; safe to use from any thread.
///
/// Fields whose names end in Format, Template or Sub (and the related SubNoClear) are
/// templates for formatString(): %d takes a whole number, %@ a text. Long texts hold line
/// breaks as "\n".
struct SettingsStrings {
    std::string_view translator;
    std::string_view layoutSwitcher;
    std::string_view enableTranslation;
    std::string_view translationHotkeyVariants;
    std::string_view translationHotkeyDirect;
    std::string_view enableLayoutSwitching;
    std::string_view hotkey;
    std::string_view delay;
    std::string_view launchAtLogin;
    std::string_view help;
    std::string_view helpTranslatorTitle;
    std::string_view helpTranslatorText;
    std::string_view helpSwitcherTitle;
    std::string_view helpSwitcherText;
    std::string_view cancel;
    std::string_view save;
    std::string_view conflictWarning;
    std::string_view pressKeys;
    std::string_view clipboardHistory;
    std::string_view enableClipboardHistory;
    std::string_view historySize;
    std::string_view storeNonText;
    std::string_view historyItems;
    std::string_view noHistory;
    std::string_view helpClipboardTitle;
    std::string_view helpClipboardText;
    std::string_view pomodoroTimer;
    std::string_view pomodoroHotkey;
    std::string_view enablePomodoro;
    std::string_view workDuration;
    std::string_view breakDuration;
    std::string_view longBreakDuration;
    std::string_view longBreakHint;
    std::string_view minutesUnit;
    std::string_view pomodoroStartItem;
    std::string_view pomodoroPauseItem;
    std::string_view pomodoroResumeItem;
    std::string_view pomodoroStopItem;
    std::string_view pomodoroDashboardMenuItem;
    std::string_view pomodoroDashboardTitle;
    std::string_view pomodoroPhaseFocus;
    std::string_view pomodoroPhaseBreak;
    std::string_view pomodoroPhaseLongBreak;
    std::string_view pomodoroDashboardStart;
    std::string_view pomodoroDashboardPause;
    std::string_view pomodoroDashboardResume;
    std::string_view pomodoroDashboardSkip;
    std::string_view pomodoroDashboardReset;
    std::string_view pomodoroDashboardSessionFormat;
    std::string_view pomodoroDashboardToday;
    std::string_view pomodoroDashboardFocused;
    std::string_view pomodoroDashboardThisWeek;
    std::string_view pomodoroDashboardDND;
    std::string_view pomodoroDashboardDNDHint;
    std::string_view notifWorkEndTitle;
    std::string_view notifWorkEndBody;
    std::string_view notifBreakEndTitle;
    std::string_view notifBreakEndBody;
    std::string_view helpPomodoroTitle;
    std::string_view helpPomodoroText;
    std::string_view clipboardSearchPlaceholder;
    std::string_view clipboardPopupShortcuts;
    std::string_view clipboardPopupCountFormat;
    std::string_view clipboardPopupCountFilteredFormat;
    std::string_view clipboardPersist;
    std::string_view clipboardPersistHint;
    std::string_view clipboardClear;
    std::string_view clipboardClearConfirm;
    std::string_view clipboardIgnoredApps;
    std::string_view clipboardIgnoredAppsHint;
    std::string_view clipboardAddApp;
    std::string_view clipboardShortcuts;
    std::string_view clipboardShortcutsHint;
    std::string_view general;
    std::string_view appearance;
    std::string_view language;
    std::string_view startup;
    std::string_view about;
    std::string_view aboutBody;
    std::string_view settingsWindowTitle;
    std::string_view focusToggleEnable;
    std::string_view focusToggleHint;
    std::string_view focusSectionTitle;
    std::string_view focusWhy;
    std::string_view focusStepsTitle;
    std::string_view focusStatusLabel;
    std::string_view focusStatusFound;
    std::string_view focusStatusMissing;
    std::string_view focusRecheck;
    std::string_view focusOpenShortcuts;
    std::string_view focusMissingAlertTitle;
    std::string_view focusMissingAlertBody;
    std::string_view focusMissingAlertContinue;
    std::string_view howItWorks;
    std::string_view tips;
    std::string_view translatorTips;
    std::string_view switcherTips;
    std::string_view aboutTagline;
    std::string_view aboutFeaturesTitle;
    std::string_view aboutFeatures;
    std::string_view aboutBonusTitle;
    std::string_view aboutBonus;
    std::string_view aboutPrivacyTitle;
    std::string_view aboutPrivacy;
    std::string_view aboutSystemTitle;
    std::string_view aboutSystem;
    std::string_view aboutCreditsTitle;
    std::string_view aboutCredits;
    std::string_view onboardingWindowTitle;
    std::string_view onboardingWelcomeTitle;
    std::string_view onboardingWelcomeSubtitle;
    std::string_view onboardingFeaturesTitle;
    std::string_view onboardingPermissionsTitle;
    std::string_view onboardingAccessibilityName;
    std::string_view onboardingAccessibilityWhy;
    std::string_view onboardingAccessibilityGrantedNote;
    std::string_view onboardingAccessibilityMissingNote;
    std::string_view onboardingOpenAccessibility;
    std::string_view onboardingInputMonitoringName;
    std::string_view onboardingInputMonitoringWhy;
    std::string_view onboardingInputMonitoringGrantedNote;
    std::string_view onboardingInputMonitoringMissingNote;
    std::string_view onboardingOpenInputMonitoring;
    std::string_view onboardingNotificationsName;
    std::string_view onboardingNotificationsWhy;
    std::string_view onboardingTipsTitle;
    std::string_view onboardingTipsBody;
    std::string_view onboardingGetStarted;
    std::string_view onboardingSkip;
    std::string_view passwordSection;
    std::string_view passwordEnable;
    std::string_view passwordMode;
    std::string_view passwordModePopup;
    std::string_view passwordModeAutoPaste;
    std::string_view passwordModeCopyOnly;
    std::string_view passwordLength;
    std::string_view passwordCharsetTitle;
    std::string_view passwordCharsetUppercase;
    std::string_view passwordCharsetLowercase;
    std::string_view passwordCharsetDigits;
    std::string_view passwordCharsetSymbols;
    std::string_view passwordClipboardClearTitle;
    std::string_view passwordClipboardClearHint;
    std::string_view passwordClipboardClearUnitSec;
    std::string_view passwordClipboardNever;
    std::string_view passwordPopupTitle;
    std::string_view passwordPopupCopy;
    std::string_view passwordPopupPaste;
    std::string_view passwordToastCopied;
    std::string_view passwordToastCopiedSub;
    std::string_view passwordToastCopiedSubNoClear;
    std::string_view passwordToastTyped;
    std::string_view passwordHelpTitle;
    std::string_view passwordHelpText;
    std::string_view snippetsSection;
    std::string_view snippetsEnable;
    std::string_view snippetsTableShortcut;
    std::string_view snippetsTableExpansion;
    std::string_view snippetsAdd;
    std::string_view snippetsRemove;
    std::string_view snippetsEmpty;
    std::string_view snippetsExampleShortcut;
    std::string_view snippetsExampleExpansion;
    std::string_view snippetsHelpTitle;
    std::string_view snippetsHelpText;
    std::string_view snippetsTipsTitle;
    std::string_view snippetsTips;
    std::string_view toolbarLabelSwitcher;
    std::string_view toolbarLabelClipboard;
    std::string_view toolbarLabelPomodoro;
    std::string_view toolbarLabelPassword;
    std::string_view toolbarLabelSnippets;
    std::string_view translationTabHint;
    std::string_view translationPopupHintVariants;
    std::string_view translationPopupHintDirect;
    std::string_view translatorLanguagesTitle;
    std::string_view translatorPrimaryLanguage;
    std::string_view translatorSecondaryLanguage;
    std::string_view translatorLanguagesHint;
    std::string_view iCloudSection;
    std::string_view iCloudSyncSettings;
    std::string_view iCloudSyncSettingsHint;
    std::string_view iCloudSyncClipboard;
    std::string_view iCloudSyncClipboardHint;
    std::string_view iCloudUnavailableNote;
    std::string_view iCloudClipboardConsentTitle;
    std::string_view iCloudClipboardConsentBody;
    std::string_view iCloudClipboardConsentEnable;
    std::string_view iCloudClipboardConsentCancel;
    std::string_view feedbackCardTitle;
    std::string_view feedbackCardHint;
    std::string_view feedbackButton;
    std::string_view feedbackWindowTitle;
    std::string_view feedbackRecipientLabel;
    std::string_view feedbackSubjectLabel;
    std::string_view feedbackSubjectDefault;
    std::string_view feedbackBodyLabel;
    std::string_view feedbackBodyPlaceholder;
    std::string_view feedbackIncludeLogs;
    std::string_view feedbackIncludeLogsHint;
    std::string_view feedbackSendButton;
    std::string_view feedbackUnavailableTitle;
    std::string_view feedbackUnavailableBody;
    std::string_view feedbackEmptyBodyTitle;
    std::string_view feedbackEmptyBodyMessage;
    std::string_view textTransformerSection;
    std::string_view toolbarLabelTextTransformer;
    std::string_view textTransformerEnable;
    std::string_view textTransformerWindowTitle;
    std::string_view textTransformerInputLabel;
    std::string_view textTransformerOutputLabel;
    std::string_view textTransformerTransformLabel;
    std::string_view textTransformerSearchPlaceholder;
    std::string_view textTransformerCopyButton;
    std::string_view textTransformerHelpTitle;
    std::string_view textTransformerHelpText;
    std::string_view textTransformerTipsTitle;
    std::string_view textTransformerTips;
    std::string_view hintsSection;
    std::string_view hintsCardHint;
    std::string_view hotkeyOverlayTitle;
    std::string_view overlayTranslatorVariants;
    std::string_view overlayTranslatorDirect;
    std::string_view menuSettingsItem;
    std::string_view menuCheckForUpdatesItem;
    std::string_view menuQuitItem;
    std::string_view menuEnablePermissionsItem;
    std::string_view menuKeyboardLockItem;
    std::string_view toolbarLabelKeyboardLock;
    std::string_view toolbarLabelBonus;
    std::string_view bonusSection;
    std::string_view bonusSectionHint;
    std::string_view scrollReverserCardTitle;
    std::string_view scrollReverserCardHint;
    std::string_view scrollReverserTrackpadLabel;
    std::string_view scrollReverserMouseLabel;
    std::string_view scrollReverserMagicMouseLabel;
    std::string_view finderCutCardTitle;
    std::string_view finderCutEnable;
    std::string_view finderCutCardHint;
    std::string_view menuBarHiderCardTitle;
    std::string_view menuBarHiderEnable;
    std::string_view menuBarHiderHotkeyLabel;
    std::string_view menuBarHiderAutoCollapseLabel;
    std::string_view menuBarHiderAutoCollapseOff;
    std::string_view menuBarHiderSecondsUnit;
    std::string_view menuBarHiderCardHint;
    std::string_view caffeineCardTitle;
    std::string_view caffeineEnable;
    std::string_view keyboardLockEnable;
    std::string_view caffeineHotkeyLabel;
    std::string_view caffeineDurationLabel;
    std::string_view caffeineDurationIndefinite;
    std::string_view caffeineMinutesUnit;
    std::string_view caffeineHoursUnit;
    std::string_view caffeineCardHint;
    std::string_view caffeineActiveApps;
    std::string_view caffeineActiveAppsHint;
    std::string_view caffeineLidCloseToggle;
    std::string_view caffeineLidCloseHint;
    std::string_view caffeineLidAlwaysToggle;
    std::string_view caffeineLidAlwaysHint;
    std::string_view menuCaffeineLidAlwaysItem;
    std::string_view caffeineLidExplainTitle;
    std::string_view caffeineLidExplainBody;
    std::string_view caffeineLidExplainAllow;
    std::string_view caffeineLidExplainCancel;
    std::string_view caffeineLidRevokedTitle;
    std::string_view caffeineLidRevokedBody;
    std::string_view caffeineLidRemovalCancelledTitle;
    std::string_view caffeineLidRemovalCancelledBody;
    std::string_view caffeineLidNeedsAppTitle;
    std::string_view caffeineLidNeedsAppBody;
    std::string_view menuCaffeineItem;
    std::string_view pomodoroDashboardPinTooltip;
    std::string_view keyboardLockSection;
    std::string_view keyboardLockHotkeyLabel;
    std::string_view keyboardLockAutoUnlockLabel;
    std::string_view keyboardLockCardHint;
    std::string_view keyboardLockOverlayTitle;
    std::string_view keyboardLockOverlaySubtitle;
    std::string_view keyboardLockOverlayEscHint;
    std::string_view keyboardLockOverlayUnlockButton;
    std::string_view keyboardLockOverlayAutoUnlockTemplate;

    /// The full record for `language`. Keeps no state: every call builds the record anew
    /// from constants, so a caller that needs many texts takes one copy and reads from it.
    static SettingsStrings make(SettingsLanguage language);

    /// All fields in declaration order, for tests and for tools that walk every text.
    static const std::array<SettingsStringsField, kSettingsStringsFieldCount>& fields();

    bool operator==(const SettingsStrings&) const = default;
};

}  // namespace orvantis
