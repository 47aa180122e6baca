#pragma once

#include <QWidget>

#include "core/settings/settings_language.h"

class QButtonGroup;
class QLabel;
class QVBoxLayout;

namespace orvantis::ui {

/// The content of the help window: the title "Orvantis", a two-way language picker that changes
/// this view's language only (the settings are not touched), and below it, scrolling, four
/// sections (translator, layout switcher, clipboard history, Pomodoro), each an icon and a title
/// above its wrapped text. Owned by whoever shows it; main thread only.
class HelpView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int kWidth = 420;
    static constexpr int kHeight = 360;

    explicit HelpView(SettingsLanguage language, QWidget* parent = nullptr);

    SettingsLanguage language() const { return language_; }
    /// Shows the texts of `language`, as the picker does.
    void setLanguage(SettingsLanguage language);
    /// The section titles in their order, for tests.
    QStringList sectionTitles() const;

private:
    void rebuildSections();

    SettingsLanguage language_;
    QButtonGroup* picker_ = nullptr;
    QVBoxLayout* sections_ = nullptr;
};

}  // namespace orvantis::ui
