#pragma once

#include <array>
#include <string_view>

#include "core/settings/settings_language.h"

namespace orvantis::shell {

/// The updates notice: the program does not update itself; on Linux the package manager does.
/// English in both interface languages, as it speaks to whoever packages the program; no
/// menu row leads to it in this version.
inline constexpr std::string_view kUpdaterNotConfiguredMessage = "Updater not configured";
inline constexpr std::string_view kUpdaterNotConfiguredDetails =
    "Orvantis does not update itself: updates come through the system's package manager. "
    "To ship an update:\n"
    "1. Build the Debian package with scripts/package.sh.\n"
    "2. Sign it and publish it in the package repository your users have added.\n"
    "3. Users then get it with their package manager (for example: sudo apt update && sudo apt upgrade).";

/// Texts of the onboarding window beyond the shared string record: the second line of each
/// feature row and the words of the permission states.
struct OnboardingTexts {
    /// In the order of the feature rows: layout switcher, translator, clipboard history,
    /// Pomodoro, password generator, snippets, text tools.
    std::array<std::string_view, 7> featureSubtitles;
    std::string_view granted;        ///< a permission that is there
    std::string_view missing;        ///< a permission that is not
    std::string_view checking;       ///< the notification service has not answered yet
    std::string_view serviceFound;   ///< a notification service answers on the session bus
    std::string_view serviceAbsent;  ///< none does
    std::string_view serviceAbsentNote;

    static OnboardingTexts make(SettingsLanguage language);
};

/// Shown for a few seconds in a hotkey button whose capture ended because another program took
/// the keyboard (or the window lost it); the capture is cancelled and nothing changed.
std::string_view captureInterruptedText(SettingsLanguage language);

/// Texts of the synced-folder row of the settings window, beyond the shared string record.
struct SyncFolderTexts {
    std::string_view folder;       ///< the row's label
    std::string_view choose;       ///< the button that opens the folder dialog
    std::string_view dialogTitle;  ///< the folder dialog's title
    std::string_view notFound;     ///< in place of a path when no folder is in use
    /// Under the row: where the files go, and that a new choice waits for the next launch.
    std::string_view nextLaunchNote;
    /// Before the path of a folder chosen in this run.
    std::string_view chosenPrefix;
    /// The folder dialog's own labels: the folder shown, the typed folder, the file-type row,
    /// and its two buttons.
    std::string_view dialogLookIn, dialogFolder, dialogFileType, dialogAccept, dialogReject;

    static SyncFolderTexts make(SettingsLanguage language);
};

}  // namespace orvantis::shell
