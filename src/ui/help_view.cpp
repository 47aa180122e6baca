#include "ui/help_view.h"

#include <array>
#include <string_view>

#include <QButtonGroup>
#include <QFont>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include "core/strings/settings_strings.h"

namespace orvantis::ui {
namespace {

QString toQString(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

struct Section {
    const char* themeIcon;  ///< freedesktop icon name
    QStyle::StandardPixmap fallback;
    std::string_view SettingsStrings::*title;
    std::string_view SettingsStrings::*body;
};

constexpr std::array<Section, 4> kSections{{
    {"preferences-desktop-locale", QStyle::SP_DriveNetIcon, &SettingsStrings::helpTranslatorTitle,
     &SettingsStrings::helpTranslatorText},
    {"input-keyboard", QStyle::SP_ComputerIcon, &SettingsStrings::helpSwitcherTitle,
     &SettingsStrings::helpSwitcherText},
    {"edit-paste", QStyle::SP_FileDialogContentsView, &SettingsStrings::helpClipboardTitle,
     &SettingsStrings::helpClipboardText},
    {"alarm-symbolic", QStyle::SP_BrowserReload, &SettingsStrings::helpPomodoroTitle,
     &SettingsStrings::helpPomodoroText},
}};

}  // namespace

HelpView::HelpView(SettingsLanguage language, QWidget* parent) : QWidget(parent), language_(language) {
    auto* column = new QVBoxLayout(this);
    auto* header = new QHBoxLayout;
    auto* title = new QLabel(QStringLiteral("Orvantis"));
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.4);
    titleFont.setBold(true);
    title->setFont(titleFont);
    header->addWidget(title);
    header->addStretch();
    // The segmented picker: two exclusive buttons side by side.
    picker_ = new QButtonGroup(this);
    picker_->setExclusive(true);
    auto* segments = new QHBoxLayout;
    segments->setSpacing(0);
    for (SettingsLanguage option : {SettingsLanguage::en, SettingsLanguage::ru}) {
        auto* button = new QPushButton(toQString(displayName(option)));
        button->setCheckable(true);
        button->setChecked(option == language_);
        button->setObjectName(option == SettingsLanguage::ru ? QStringLiteral("helpLanguageRu")
                                                              : QStringLiteral("helpLanguageEn"));
        picker_->addButton(button, static_cast<int>(option));
        segments->addWidget(button);
    }
    header->addLayout(segments);
    column->addLayout(header);
    connect(picker_, &QButtonGroup::idClicked, this,
            [this](int id) { setLanguage(static_cast<SettingsLanguage>(id)); });

    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* content = new QWidget;
    sections_ = new QVBoxLayout(content);
    sections_->setSpacing(14);
    scroll->setWidget(content);
    column->addWidget(scroll, 1);
    rebuildSections();
}

void HelpView::setLanguage(SettingsLanguage language) {
    language_ = language;
    if (QAbstractButton* button = picker_->button(static_cast<int>(language))) button->setChecked(true);
    rebuildSections();
}

void HelpView::rebuildSections() {
    while (QLayoutItem* item = sections_->takeAt(0)) {
        if (QWidget* widget = item->widget()) widget->deleteLater();
        delete item;
    }
    const SettingsStrings strings = SettingsStrings::make(language_);
    for (const Section& section : kSections) {
        auto* box = new QWidget;
        auto* layout = new QVBoxLayout(box);
        layout->setContentsMargins(0, 0, 0, 0);
        auto* heading = new QHBoxLayout;
        auto* icon = new QLabel;
        const QIcon image = QIcon::fromTheme(QString::fromLatin1(section.themeIcon), style()->standardIcon(section.fallback));
        icon->setPixmap(image.pixmap(18, 18));
        heading->addWidget(icon);
        auto* title = new QLabel(toQString(strings.*section.title));
        title->setObjectName(QStringLiteral("helpSectionTitle"));
        QFont headline = title->font();
        headline.setBold(true);
        title->setFont(headline);
        heading->addWidget(title, 1);
        layout->addLayout(heading);
        auto* body = new QLabel(toQString(strings.*section.body));
        body->setWordWrap(true);
        body->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(body);
        sections_->addWidget(box);
    }
    sections_->addStretch();
}

QStringList HelpView::sectionTitles() const {
    QStringList titles;
    for (int i = 0; i < sections_->count(); ++i) {
        QWidget* box = sections_->itemAt(i)->widget();
        if (box == nullptr) continue;
        if (auto* title = box->findChild<QLabel*>(QStringLiteral("helpSectionTitle"))) titles << title->text();
    }
    return titles;
}

}  // namespace orvantis::ui
