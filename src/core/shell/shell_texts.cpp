#include "core/shell/shell_texts.h"

namespace orvantis::shell {

OnboardingTexts OnboardingTexts::make(SettingsLanguage language) {
    if (language == SettingsLanguage::ru) {
        return OnboardingTexts{
            .featureSubtitles = {"Перепечатывает слово, набранное не в той раскладке",
                                 "Варианты имён идентификаторов и перевод выделенного текста",
                                 "Всё скопированное — с поиском и закреплением",
                                 "Рабочие отрезки с перерывами и статистика",
                                 "Надёжные пароли по горячей клавише",
                                 "Короткие сокращения разворачиваются в готовый текст",
                                 "Двадцать пять преобразований текста в одном окне"},
            .granted = "Разрешено",
            .missing = "Не разрешено",
            .checking = "Проверка…",
            .serviceFound = "Служба уведомлений найдена",
            .serviceAbsent = "Служба уведомлений не найдена",
            .serviceAbsentNote = "Без неё Orvantis подаёт звуковой сигнал вместо уведомления.",
        };
    }
    return OnboardingTexts{
        .featureSubtitles = {"Retypes a word typed in the wrong layout",
                             "Identifier names and translations of the selected text",
                             "Everything you copy, with search and pins",
                             "Focused work stretches with breaks, and statistics",
                             "Strong passwords on a hotkey",
                             "Short abbreviations that expand into text",
                             "Twenty-five text transforms in one window"},
        .granted = "Granted",
        .missing = "Not granted",
        .checking = "Checking…",
        .serviceFound = "Notification service found",
        .serviceAbsent = "No notification service found",
        .serviceAbsentNote = "Without one, Orvantis rings the bell instead of showing a notice.",
    };
}

std::string_view captureInterruptedText(SettingsLanguage language) {
    return language == SettingsLanguage::ru ? "Клавиатура занята, не записано" : "Keyboard taken; not recorded";
}

SyncFolderTexts SyncFolderTexts::make(SettingsLanguage language) {
    if (language == SettingsLanguage::ru) {
        return SyncFolderTexts{
            .folder = "Папка",
            .choose = "Выбрать…",
            .dialogTitle = "Синхронизируемая папка",
            .notFound = "не найдена",
            .nextLaunchNote = "Orvantis хранит свои файлы в папке «Orvantis» внутри неё. Без выбора берётся первая "
                              "из ~/Nextcloud, ~/Dropbox, ~/Sync, ~/OneDrive. Выбранная папка действует со "
                              "следующего запуска Orvantis.",
            .chosenPrefix = "Со следующего запуска: ",
            .dialogLookIn = "Где:",
            .dialogFolder = "Папка:",
            .dialogFileType = "Показывать:",
            .dialogAccept = "Выбрать",
            .dialogReject = "Отмена",
        };
    }
    return SyncFolderTexts{
        .folder = "Folder",
        .choose = "Choose…",
        .dialogTitle = "Synced Folder",
        .notFound = "none found",
        .nextLaunchNote = "Orvantis keeps its files in an “Orvantis” folder inside it. Without a choice, the first of "
                          "~/Nextcloud, ~/Dropbox, ~/Sync and ~/OneDrive is used. A folder chosen here takes effect "
                          "at the next launch of Orvantis.",
        .chosenPrefix = "From the next launch: ",
        .dialogLookIn = "Look in:",
        .dialogFolder = "Folder:",
        .dialogFileType = "Show:",
        .dialogAccept = "Choose",
        .dialogReject = "Cancel",
    };
}

}  // namespace orvantis::shell
