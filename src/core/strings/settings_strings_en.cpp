// The English interface texts.
#include "core/strings/settings_strings_tables.h"

namespace orvantis {
namespace {

constexpr SettingsStrings kEnglish{
    .translator = "Translator",
    .layoutSwitcher = "Layout Switcher",
    .enableTranslation = "Enable translator",
    .translationHotkeyVariants = "Variants hotkey",
    .translationHotkeyDirect = "Direct translation hotkey",
    .enableLayoutSwitching = "Enable layout switching",
    .hotkey = "Hotkey",
    .delay = "Retype delay",
    .launchAtLogin = "Launch at login",
    .help = "Help",
    .helpTranslatorTitle = "Translator",
    .helpTranslatorText =
        "Select text in any application and press Super+Shift+X.\n"
        "• Up to ten words become eleven identifier variants in English: camelCase, PascalCase, snake_case, "
        "SCREAMING_SNAKE_CASE, kebab-case, Title Case, dot.case and more. Text in another language is "
        "translated first, and small words such as “the” and “of” are left out.\n"
        "• Press Tab in the list to swap the words for synonyms, one word at a time.\n"
        "• A longer selection, or Super+Alt+X, gives a direct translation between your two languages.\n"
        "• ↑ ↓ choose, Enter or a double click puts the choice in place of the selection, Ctrl+1…Ctrl+9 takes "
        "a row at once, Esc closes the list.\n"
        "Only the selected text is sent to an online translation service. The language of very short or mixed "
        "text may be recognised wrongly.",
    .helpSwitcherTitle = "Layout Switcher",
    .helpSwitcherText =
        "Typed in the wrong layout? Press Shift+Backspace right after the word: “ghbdtn” becomes “привет”, "
        "the keyboard switches to the other layout, and you simply type on.\n"
        "• With text selected, the selection is retyped instead of the last word.\n"
        "• Press the hotkey again to turn both the word and the layout back.\n"
        "• With nothing to convert, the hotkey just switches the layout.\n"
        "• A capital first letter stays a capital: Ghbdtn becomes Привет.\n"
        "Orvantis needs two keyboard layouts, for example English (US) and Russian; every Russian variant "
        "works, phonetic included. Password fields are never touched.",
    .cancel = "Cancel",
    .save = "Save",
    .conflictWarning = "⚠ May conflict with a system shortcut",
    .pressKeys = "Press keys…",
    .clipboardHistory = "Clipboard History",
    .enableClipboardHistory = "Enable clipboard history",
    .historySize = "History size",
    .storeNonText = "Also keep images and rich text",
    .historyItems = "items",
    .noHistory = "No clipboard history",
    .helpClipboardTitle = "Clipboard History",
    .helpClipboardText =
        "Everything you copy is kept in a history. Press Super+Shift+V to open it at the mouse pointer.\n"
        "• Type to search: the search looks through whole texts, not only their first line.\n"
        "• Enter or a double click pastes the selected entry into the application in front; Ctrl+1…Ctrl+9 "
        "pastes one of the first nine.\n"
        "• Ctrl+P pins an entry: pinned entries stay at the top and are never pushed out.\n"
        "• Ctrl+Backspace deletes an entry; Esc clears the search, then closes the list.\n"
        "Nothing is recorded from password fields, from ignored apps, or when the content is marked as "
        "secret. Copied files are listed too, images and rich text only if you allow them; only text is kept "
        "across restarts.",
    .pomodoroTimer = "Pomodoro Timer",
    .pomodoroHotkey = "Hotkey",
    .enablePomodoro = "Enable Pomodoro timer",
    .workDuration = "Work",
    .breakDuration = "Break",
    .longBreakDuration = "Long break",
    .longBreakHint = "A long break follows every fourth work session.",
    .minutesUnit = "min",
    .pomodoroStartItem = "Start Pomodoro",
    .pomodoroPauseItem = "Pause Pomodoro",
    .pomodoroResumeItem = "Resume Pomodoro",
    .pomodoroStopItem = "Stop Pomodoro",
    .pomodoroDashboardMenuItem = "Open Pomodoro Dashboard…",
    .pomodoroDashboardTitle = "Pomodoro Dashboard",
    .pomodoroPhaseFocus = "FOCUS",
    .pomodoroPhaseBreak = "BREAK",
    .pomodoroPhaseLongBreak = "LONG BREAK",
    .pomodoroDashboardStart = "Start",
    .pomodoroDashboardPause = "Pause",
    .pomodoroDashboardResume = "Resume",
    .pomodoroDashboardSkip = "Skip",
    .pomodoroDashboardReset = "Reset",
    .pomodoroDashboardSessionFormat = "Session %d of %d",
    .pomodoroDashboardToday = "TODAY",
    .pomodoroDashboardFocused = "FOCUSED",
    .pomodoroDashboardThisWeek = "THIS WEEK",
    .pomodoroDashboardDND = "Do Not Disturb while working",
    .pomodoroDashboardDNDHint = "Needs the two Focus shortcuts described in Settings → Pomodoro.",
    .notifWorkEndTitle = "Break time!",
    .notifWorkEndBody = "Great work! Time for a short break.",
    .notifBreakEndTitle = "Back to work!",
    .notifBreakEndBody = "Break over — start your next focus session.",
    .helpPomodoroTitle = "Pomodoro Timer",
    .helpPomodoroText =
        "Work in focused stretches with breaks in between. Press Super+Shift+M to start, and again to stop.\n"
        "• A work session lasts 25 minutes and is followed by a 5-minute break; after every fourth session "
        "the break is a long one of 15 minutes. All three lengths can be changed.\n"
        "• The tray icon shows the time left; the tray menu pauses, resumes and stops the timer.\n"
        "• A notification tells you when work or a break is over.\n"
        "• The dashboard shows the phase, the sessions of today and of this week, and a map of the recent "
        "weeks.\n"
        "• The timer pauses while the computer sleeps.",
    .clipboardSearchPlaceholder = "Search clipboard…",
    .clipboardPopupShortcuts = "↑↓ select · Enter paste · Ctrl+1…9 · Ctrl+P pin · Ctrl+Backspace delete",
    .clipboardPopupCountFormat = "%d items",
    .clipboardPopupCountFilteredFormat = "%d of %d",
    .clipboardPersist = "Keep history after restart",
    .clipboardPersistHint =
        "Text entries are saved in a file in your data folder. Images, rich text and files are kept only "
        "until Orvantis quits.",
    .clipboardClear = "Clear History…",
    .clipboardClearConfirm = "Remove all clipboard entries? Pinned items will also be removed.",
    .clipboardIgnoredApps = "Ignored Apps",
    .clipboardIgnoredAppsHint =
        "Nothing that you copy while one of these applications is in front enters the history. Password "
        "fields are always skipped.",
    .clipboardAddApp = "Add App…",
    .clipboardShortcuts = "Popup Keys",
    .clipboardShortcutsHint =
        "↑ ↓ — move through the list\n"
        "Enter or double click — paste the selected entry\n"
        "Ctrl+1…Ctrl+9 — paste entry 1 to 9\n"
        "Ctrl+P — pin or unpin\n"
        "Ctrl+Backspace — delete the entry\n"
        "Esc — clear the search, then close",
    .general = "General",
    .appearance = "Appearance",
    .language = "Language",
    .startup = "Startup",
    .about = "About",
    .aboutBody =
        "Orvantis is a keyboard and text companion in the system tray. It fixes words typed in the wrong "
        "layout, translates and renames selected text, keeps a clipboard history, times your work and brings "
        "a handful of small tools — all through global hotkeys, in any application.",
    .settingsWindowTitle = "Orvantis Settings",
    .focusToggleEnable = "Focus during Pomodoro",
    .focusToggleHint =
        "Turns Do Not Disturb on when a work session starts and off when its break begins, and off again when "
        "you stop the timer.",
    .focusSectionTitle = "Focus (Do Not Disturb)",
    .focusWhy =
        "Orvantis doesn’t switch Do Not Disturb by itself: it runs two commands that you create once, "
        "“Orvantis Focus On” and “Orvantis Focus Off”. Without them the Pomodoro still runs, only without "
        "Focus.",
    .focusStepsTitle = "How to set it up",
    .focusStatusLabel = "Status:",
    .focusStatusFound = "Both commands found",
    .focusStatusMissing = "Commands not found",
    .focusRecheck = "Check Again",
    .focusOpenShortcuts = "Open Folder",
    .focusMissingAlertTitle = "Focus shortcuts not configured",
    .focusMissingAlertBody =
        "You enabled “Focus during Pomodoro”, but the two required commands haven’t been created yet. "
        "Create them as executable files in ~/.config/orvantis/focus:\n"
        "\n"
        "   • “Orvantis Focus On” → turns Do Not Disturb on\n"
        "   • “Orvantis Focus Off” → turns Do Not Disturb off\n"
        "\n"
        "The Pomodoro will start without toggling Focus.",
    .focusMissingAlertContinue = "Start without Focus",
    .howItWorks = "How It Works",
    .tips = "Tips",
    .translatorTips =
        "• Select a phrase such as “get user name” and pick getUserName, get_user_name or GET-USER-NAME.\n"
        "• Russian works too: “имя пользователя” gives userName and its siblings.\n"
        "• Tab starts working a moment after the list appears, once the synonyms have arrived.\n"
        "• Choose your two languages above: text in one of them is translated into the other, text in any "
        "other language into the primary one.\n"
        "• If an application doesn’t expose its selection, Orvantis copies it to read it.",
    .switcherTips =
        "• A space, a click or an arrow key starts a new word: convert a word before you move on.\n"
        "• If letters come out garbled in a slow application, raise the retype delay.\n"
        "• A warning on the tray icon means that only one keyboard layout is set up: add a second one in your "
        "desktop’s keyboard settings.",
    .aboutTagline = "Keyboard and text tools for people who type in two languages",
    .aboutFeaturesTitle = "Features",
    .aboutFeatures =
        "• Layout switcher — Shift+Backspace retypes the last word in the other layout\n"
        "• Translator — Super+Shift+X for identifier variants, Super+Alt+X for a direct translation\n"
        "• Clipboard history with search and pins — Super+Shift+V\n"
        "• Pomodoro timer with notifications and statistics — Super+Shift+M\n"
        "• Password generator — Super+Shift+P\n"
        "• Snippet expander — Super+Shift+Backspace\n"
        "• Text tools, 25 transforms — Super+Shift+T\n"
        "• All hotkeys at a glance — hold Super+Shift+H",
    .aboutBonusTitle = "Bonus",
    .aboutBonus =
        "• Keyboard lock for cleaning — Super+Shift+L\n"
        "• Caffeine keeps the computer awake, even with the lid closed — Super+Shift+K\n"
        "• Scroll direction for each kind of device\n"
        "• Cut and move files in the file manager\n"
        "• Tray icon hider — Super+Shift+B",
    .aboutPrivacyTitle = "Privacy",
    .aboutPrivacy =
        "Orvantis has no account, no analytics and no tracking. The only text it sends over the network is "
        "the text you ask it to translate.\n"
        "The clipboard history and the Pomodoro statistics stay in files on this computer. Settings, and the "
        "text history if you allow it, travel only through your own synced folder.\n"
        "Password fields and content marked as secret are never recorded. Feedback leaves only through your "
        "own mail client, and only when you send it.",
    .aboutSystemTitle = "System",
    .aboutSystem =
        "Runs on Linux in an X11 session with a system tray.\n"
        "Reads and replaces text through the desktop accessibility bus (AT-SPI), and follows the keyboard "
        "through the X input extension.\n"
        "The layout switcher needs two keyboard layouts, for example English (US) and Russian.",
    .aboutCreditsTitle = "Credits",
    .aboutCredits =
        "Made for people who type in two languages.\n"
        "Built with Qt, ICU and libxkbcommon.\n"
        "Thank you to everyone who sends feedback and ideas.",
    .onboardingWindowTitle = "Getting Started",
    .onboardingWelcomeTitle = "Welcome to Orvantis",
    .onboardingWelcomeSubtitle =
        "Orvantis lives in the system tray and works in every application through global hotkeys. Two "
        "permissions, and you’re ready.",
    .onboardingFeaturesTitle = "What Orvantis Does",
    .onboardingPermissionsTitle = "Permissions",
    .onboardingAccessibilityName = "Accessibility (AT-SPI)",
    .onboardingAccessibilityWhy =
        "Lets Orvantis read the selected text and the word before the cursor through the desktop "
        "accessibility bus (AT-SPI), and write the result back.",
    .onboardingAccessibilityGrantedNote = "Accessibility is on: Orvantis can read and replace text.",
    .onboardingAccessibilityMissingNote =
        "Turn on accessibility in the desktop’s accessibility settings, then come back: this window notices "
        "the change by itself.",
    .onboardingOpenAccessibility = "Open Accessibility Settings",
    .onboardingInputMonitoringName = "Keyboard Input (X Input Extension)",
    .onboardingInputMonitoringWhy =
        "Lets Orvantis follow the keys you type and catch its global hotkeys through the X input extension. "
        "Keys only make up the current word; nothing is recorded or sent.",
    .onboardingInputMonitoringGrantedNote = "Keyboard input is available.",
    .onboardingInputMonitoringMissingNote =
        "Orvantis can’t follow the keyboard. Make sure you are in an X11 session whose server offers the X "
        "input extension.",
    .onboardingOpenInputMonitoring = "Open Keyboard Settings",
    .onboardingNotificationsName = "Notifications",
    .onboardingNotificationsWhy =
        "The Pomodoro timer tells you when work or a break is over. Notifications go through your desktop’s "
        "notification service and can be turned off there.",
    .onboardingTipsTitle = "First Steps",
    .onboardingTipsBody =
        "• Typed in the wrong layout? Press Shift+Backspace.\n"
        "• Select text and press Super+Shift+X for identifier names, or Super+Alt+X for a translation.\n"
        "• Super+Shift+V opens the clipboard history.\n"
        "• Hold Super+Shift+H to see every hotkey.\n"
        "• Everything else is in Settings, from the tray icon’s menu.",
    .onboardingGetStarted = "Get Started",
    .onboardingSkip = "Skip",
    .passwordSection = "Password Generator",
    .passwordEnable = "Enable password generator",
    .passwordMode = "On hotkey",
    .passwordModePopup = "Show popup",
    .passwordModeAutoPaste = "Type into the field",
    .passwordModeCopyOnly = "Copy to clipboard",
    .passwordLength = "Length",
    .passwordCharsetTitle = "Characters",
    .passwordCharsetUppercase = "Uppercase (A–Z)",
    .passwordCharsetLowercase = "Lowercase (a–z)",
    .passwordCharsetDigits = "Digits (0–9)",
    .passwordCharsetSymbols = "Symbols (!@#…)",
    .passwordClipboardClearTitle = "Clear clipboard after",
    .passwordClipboardClearHint =
        "A copied password is wiped from the clipboard after this time, unless you have copied something else "
        "in the meantime. Passwords never enter the clipboard history.",
    .passwordClipboardClearUnitSec = "sec",
    .passwordClipboardNever = "Never",
    .passwordPopupTitle = "Generate password",
    .passwordPopupCopy = "Copy",
    .passwordPopupPaste = "Paste here",
    .passwordToastCopied = "Password copied",
    .passwordToastCopiedSub = "%d chars · clears in %d s",
    .passwordToastCopiedSubNoClear = "%d chars",
    .passwordToastTyped = "Password typed",
    .passwordHelpTitle = "How It Works",
    .passwordHelpText =
        "Press Super+Shift+P for a new random password. What happens next depends on the mode:\n"
        "• Show popup: the password appears hidden, with its length and character classes at hand. Space "
        "makes a new one, Enter types it into the field you were in, Ctrl+C copies it, Esc closes.\n"
        "• Type into the field: the password is typed straight into the focused field.\n"
        "• Copy to clipboard: the password goes to the clipboard and is wiped after the time set below.\n"
        "Every chosen class of characters occurs at least once. Passwords come from the system’s secure "
        "random source and never enter the clipboard history.",
    .snippetsSection = "Snippet Expander",
    .snippetsEnable = "Enable snippet expander",
    .snippetsTableShortcut = "Abbreviation",
    .snippetsTableExpansion = "Expansion",
    .snippetsAdd = "Add",
    .snippetsRemove = "Remove",
    .snippetsEmpty = "No snippets yet. Click Add to create one.",
    .snippetsExampleShortcut = ";sig",
    .snippetsExampleExpansion =
        "Best regards,\n"
        "Alex",
    .snippetsHelpTitle = "How It Works",
    .snippetsHelpText =
        "Type an abbreviation, then press Super+Shift+Backspace: the abbreviation before the cursor is "
        "replaced by its expansion.\n"
        "• The abbreviation is everything between the last space or line break and the cursor, punctuation "
        "included.\n"
        "• Case matters: “sig” and “Sig” are two different abbreviations.\n"
        "• Nothing is ever expanded into a password field.\n"
        "• The expansion is pasted through the clipboard, which gets its previous content back a moment "
        "later.",
    .snippetsTipsTitle = "Tips",
    .snippetsTips =
        "• Start abbreviations with a sign you don’t otherwise type, such as ; or /, so they never clash with "
        "real words.\n"
        "• An expansion may hold several lines: addresses, signatures, code templates.\n"
        "• Rows with an empty abbreviation or an empty expansion are dropped when you save.\n"
        "• When two rows share an abbreviation, the upper one wins.",
    .toolbarLabelSwitcher = "Switcher",
    .toolbarLabelClipboard = "Clipboard",
    .toolbarLabelPomodoro = "Pomodoro",
    .toolbarLabelPassword = "Password",
    .toolbarLabelSnippets = "Snippets",
    .translationTabHint = "Press Tab in the variants list to cycle through synonyms of the words.",
    .translationPopupHintVariants = "↑↓ select · Enter insert · Tab synonyms · Esc close",
    .translationPopupHintDirect = "Enter insert · Esc close",
    .translatorLanguagesTitle = "Translation Languages",
    .translatorPrimaryLanguage = "Primary language",
    .translatorSecondaryLanguage = "Secondary language",
    .translatorLanguagesHint =
        "Direct translation goes from the primary language to the secondary one and back. Text in any other "
        "language is translated into the primary language.",
    .iCloudSection = "Synced Folder",
    .iCloudSyncSettings = "Sync settings",
    .iCloudSyncSettingsHint =
        "Settings, hotkeys and snippets are mirrored between your computers through a synced folder. The "
        "latest change wins.",
    .iCloudSyncClipboard = "Sync clipboard history",
    .iCloudSyncClipboardHint =
        "The text entries of the history travel through the synced folder too. Images and files stay on this "
        "computer.",
    .iCloudUnavailableNote =
        "No synced folder found. Sync stays off until the folder exists and Orvantis is restarted.",
    .iCloudClipboardConsentTitle = "Sync clipboard history through the synced folder?",
    .iCloudClipboardConsentBody =
        "Everything you copy as text will be written to a file in the synced folder and copied to your other "
        "computers by the sync service, including anything sensitive that isn’t marked as a password. "
        "Passwords from Orvantis and from password managers that mark their content are never recorded.",
    .iCloudClipboardConsentEnable = "Enable sync",
    .iCloudClipboardConsentCancel = "Cancel",
    .feedbackCardTitle = "Feedback",
    .feedbackCardHint = "Found a bug or missing something? Write to the developer.",
    .feedbackButton = "Send Feedback…",
    .feedbackWindowTitle = "Send Feedback",
    .feedbackRecipientLabel = "Your message goes straight to the developer.",
    .feedbackSubjectLabel = "Subject:",
    .feedbackSubjectDefault = "Orvantis feedback",
    .feedbackBodyLabel = "Message:",
    .feedbackBodyPlaceholder =
        "Describe what you saw, what you expected, or what you’d like to see in the app…",
    .feedbackIncludeLogs = "Attach diagnostic logs",
    .feedbackIncludeLogsHint =
        "Adds the last 3 days of app log entries plus app and system versions. No clipboard contents or "
        "selected text is included.",
    .feedbackSendButton = "Send",
    .feedbackUnavailableTitle = "No mail client configured",
    .feedbackUnavailableBody =
        "This computer doesn’t have a mail account set up. Add one in your mail client’s settings and try "
        "again.",
    .feedbackEmptyBodyTitle = "Message is empty",
    .feedbackEmptyBodyMessage = "Add a few words about what you’d like to report before sending.",
    .textTransformerSection = "Text Tools",
    .toolbarLabelTextTransformer = "Text Tools",
    .textTransformerEnable = "Enable text tools",
    .textTransformerWindowTitle = "Text Tools",
    .textTransformerInputLabel = "Input",
    .textTransformerOutputLabel = "Result",
    .textTransformerTransformLabel = "Transform:",
    .textTransformerSearchPlaceholder = "Search transforms…",
    .textTransformerCopyButton = "Copy Result",
    .textTransformerHelpTitle = "How It Works",
    .textTransformerHelpText =
        "Press Super+Shift+T to open the text tools window. Text on the clipboard is already in the input, "
        "selected, so you can also type or paste over it.\n"
        "• Choose one of 25 transforms: MD5, SHA-1, SHA-256 and SHA-512 hashes; Base64, URL and Hex encoding "
        "and decoding; HTML and Unicode escapes; JSON pretty-print and minify; upper, lower and title case; "
        "reverse; ROT13; trim; Unix time ⇄ ISO 8601; and a count of lines, words and characters.\n"
        "• The result follows every keystroke.\n"
        "• Copy Result puts it on the clipboard.",
    .textTransformerTipsTitle = "Tips",
    .textTransformerTips =
        "• Type in the search field of the transform list to find a transform by name; ↑ ↓ and Enter "
        "choose.\n"
        "• Invalid input shows the reason below the result instead of a result.\n"
        "• Hashes count every character, a trailing line break included.\n"
        "• Closing the window resets the transform to Base64 encode.",
    .hintsSection = "Hint",
    .hintsCardHint = "Hold this hotkey to see every feature with its hotkey; let go to hide the list.",
    .hotkeyOverlayTitle = "Orvantis Hotkeys",
    .overlayTranslatorVariants = "Translator — variants",
    .overlayTranslatorDirect = "Translator — direct",
    .menuSettingsItem = "Settings…",
    .menuCheckForUpdatesItem = "Check for Updates…",
    .menuQuitItem = "Quit Orvantis",
    .menuEnablePermissionsItem = "Enable Permissions…",
    .menuKeyboardLockItem = "Lock Keyboard for Cleaning",
    .toolbarLabelKeyboardLock = "Lock",
    .toolbarLabelBonus = "Bonus",
    .bonusSection = "Bonus",
    .bonusSectionHint = "Small system utilities, each with its own switch.",
    .scrollReverserCardTitle = "Scroll Direction",
    .scrollReverserCardHint =
        "Reverses scrolling for one kind of device only, so that a touchpad and a mouse wheel can each go "
        "their own way.",
    .scrollReverserTrackpadLabel = "Reverse touchpad scrolling",
    .scrollReverserMouseLabel = "Reverse mouse wheel scrolling",
    .scrollReverserMagicMouseLabel = "Reverse Magic Mouse scrolling",
    .finderCutCardTitle = "Cut and Move Files",
    .finderCutEnable = "Ctrl+X cuts files in the file manager",
    .finderCutCardHint =
        "The desktop’s file manager already cuts and moves files with Ctrl+X and Ctrl+V, so this switch "
        "changes nothing there. While you rename a file, Ctrl+X cuts text as usual.",
    .menuBarHiderCardTitle = "Tray Icon Hider",
    .menuBarHiderEnable = "Hide tray icons",
    .menuBarHiderHotkeyLabel = "Hotkey",
    .menuBarHiderAutoCollapseLabel = "Hide again after",
    .menuBarHiderAutoCollapseOff = "off",
    .menuBarHiderSecondsUnit = "s",
    .menuBarHiderCardHint =
        "The system tray of this desktop gives no way to hide other applications’ icons, so this feature "
        "and its hotkey do nothing here.",
    .caffeineCardTitle = "Caffeine",
    .caffeineEnable = "Enable Caffeine",
    .keyboardLockEnable = "Enable keyboard lock",
    .caffeineHotkeyLabel = "Hotkey",
    .caffeineDurationLabel = "Stay awake for",
    .caffeineDurationIndefinite = "Indefinitely",
    .caffeineMinutesUnit = "min",
    .caffeineHoursUnit = "h",
    .caffeineCardHint =
        "Keeps the computer and its screen awake. Turn it on with the hotkey or from the tray menu; the tray "
        "icon turns red while sleep is held off.",
    .caffeineActiveApps = "Stay awake while these apps are in front",
    .caffeineActiveAppsHint =
        "While one of these applications is in front, the computer stays awake without the hotkey.",
    .caffeineLidCloseToggle = "Keep awake with the lid closed while a listed app runs",
    .caffeineLidCloseHint =
        "While one of the apps above is running, in front or not, closing the lid doesn’t put the computer "
        "to sleep. Nothing is asked: the login manager lets any program of your session hold the lid "
        "switch.",
    .caffeineLidAlwaysToggle = "Keep awake with the lid closed, whatever runs",
    .caffeineLidAlwaysHint =
        "Adds a switch to the tray menu that keeps the computer awake with the lid closed, regardless of "
        "the app list. Nothing is asked: the login manager lets any program of your session hold the lid "
        "switch.",
    .menuCaffeineLidAlwaysItem = "Keep awake with lid closed",
    .caffeineLidExplainTitle = "Allow keeping the computer awake with the lid closed?",
    .caffeineLidExplainBody =
        "Closing the lid puts the computer to sleep, and only an administrator can change that. Orvantis will "
        "ask for your administrator password once, to install a small rule that lets it turn lid-close sleep "
        "off and back on — nothing else. The rule is removed again when you turn this feature off.",
    .caffeineLidExplainAllow = "Allow",
    .caffeineLidExplainCancel = "Cancel",
    .caffeineLidRevokedTitle = "Administrator access removed",
    .caffeineLidRevokedBody =
        "Lid-close sleep prevention is off. The permission rule has been removed — Orvantis no longer has any "
        "administrator access.",
    .caffeineLidRemovalCancelledTitle = "Feature left on",
    .caffeineLidRemovalCancelledBody =
        "The administrator password prompt was cancelled, so the permission rule couldn't be removed. "
        "Lid-close sleep prevention is still on. Try turning it off again to revoke access.",
    .caffeineLidNeedsAppTitle = "Add an app first",
    .caffeineLidNeedsAppBody =
        "Lid-close sleep prevention keys off the apps in the list above. Add at least one app before turning "
        "it on, so there's something to keep the computer awake for.",
    .menuCaffeineItem = "Caffeine",
    .pomodoroDashboardPinTooltip = "Keep window on top",
    .keyboardLockSection = "Keyboard Lock",
    .keyboardLockHotkeyLabel = "Hotkey",
    .keyboardLockAutoUnlockLabel = "Auto-unlock after",
    .keyboardLockCardHint =
        "Locks the keyboard so that you can wipe it; the mouse keeps working. Unlock with the button on the "
        "screen, by holding Esc for 3 seconds, or wait for the time limit.",
    .keyboardLockOverlayTitle = "Keyboard locked for cleaning",
    .keyboardLockOverlaySubtitle = "Wipe away — key presses are ignored.",
    .keyboardLockOverlayEscHint = "Hold Esc for 3 seconds to unlock",
    .keyboardLockOverlayUnlockButton = "Unlock",
    .keyboardLockOverlayAutoUnlockTemplate = "Auto-unlock in %@",
};

}  // namespace

SettingsStrings englishSettingsStrings() {
    return kEnglish;
}

}  // namespace orvantis
