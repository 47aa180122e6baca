#include "ui/settings_window_controller.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QShortcut>
#include <QSlider>
#include <QStackedWidget>
#include <QStyle>
#include <QTableWidget>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>
#include <QWindow>

#include "core/language/language_catalog.h"
#include "core/settings/hotkey_names.h"
#include "core/shell/shell_texts.h"

namespace orvantis::ui {
namespace {

namespace s = settings;

/// How long a hotkey button says that its capture was interrupted.
constexpr int kInterruptionMessageTime = 4000;

QString q(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

/// A toolbar icon from the icon theme, else a drawn one: a rounded square with the page's
/// initial, so that a bare desktop without a theme still shows icons.
QIcon sectionIcon(SettingsSection section, const QString& label) {
    QIcon themed = QIcon::fromTheme(q(iconName(section)));
    if (!themed.isNull()) return themed;
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    static const QColor kColors[] = {"#6d7b8d", "#3b82f6", "#8b5cf6", "#0ea5e9", "#ef4444",
                                     "#f59e0b", "#10b981", "#ec4899", "#eab308", "#64748b"};
    painter.setBrush(kColors[static_cast<int>(section)]);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(2, 2, 28, 28, 7, 7);
    painter.setPen(Qt::white);
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(17);
    painter.setFont(font);
    painter.drawText(QRect(2, 2, 28, 28), Qt::AlignCenter, label.left(1).toUpper());
    return QIcon(pixmap);
}

std::uint64_t modifierBits(Qt::KeyboardModifiers modifiers) {
    std::uint64_t bits = 0;
    if (modifiers & Qt::ControlModifier) bits |= HotkeyDescriptor::kCommand;
    if (modifiers & Qt::MetaModifier) bits |= HotkeyDescriptor::kControl;
    if (modifiers & Qt::AltModifier) bits |= HotkeyDescriptor::kOption;
    if (modifiers & Qt::ShiftModifier) bits |= HotkeyDescriptor::kShift;
    return bits;
}

}  // namespace

/// Builds the pages: cards of rows, each control bound to the form.
struct SettingsWindowController::Builder {
    SettingsWindowController& w;
    SettingsStrings t;

    QVBoxLayout* card(QVBoxLayout* page, std::string_view title) {
        auto* box = new QGroupBox(q(title));
        box->setObjectName("card");
        auto* layout = new QVBoxLayout(box);
        layout->setSpacing(6);
        page->addWidget(box);
        return layout;
    }
    QLabel* caption(QVBoxLayout* card, std::string_view text) {
        auto* label = new QLabel(q(text));
        label->setWordWrap(true);
        label->setObjectName("caption");
        // Secondary text: two thirds of the way from the background to the text colour, so it
        // reads on light and dark themes alike.
        QPalette palette = label->palette();
        const QColor fore = palette.color(QPalette::WindowText), back = palette.color(QPalette::Window);
        palette.setColor(QPalette::WindowText, QColor((fore.red() * 2 + back.red()) / 3, (fore.green() * 2 + back.green()) / 3,
                                                      (fore.blue() * 2 + back.blue()) / 3));
        label->setPalette(palette);
        card->addWidget(label);
        return label;
    }
    QCheckBox* toggle(QVBoxLayout* card, std::string_view label, const BoolSetting& setting) {
        auto* box = new QCheckBox(q(label));
        box->setObjectName(q(setting.name));
        box->setChecked(w.form_.get(setting));
        QObject::connect(box, &QCheckBox::toggled, &w, [this, &setting](bool on) { w.form_.set(setting, on); });
        card->addWidget(box);
        return box;
    }
    QHBoxLayout* row(QVBoxLayout* card, std::string_view label) {
        auto* layout = new QHBoxLayout;
        auto* text = new QLabel(q(label));
        text->setMinimumWidth(170);
        layout->addWidget(text);
        card->addLayout(layout);
        return layout;
    }
    void hotkeyRow(QVBoxLayout* card, std::string_view label, HotkeyField field) {
        auto* layout = row(card, label);
        auto* button = new QPushButton(q(w.form_.buttonTitle(field)));
        button->setObjectName(QString("hotkey:") + q(caseName(field)));
        button->setMinimumWidth(200);
        button->setMaximumWidth(260);
        QObject::connect(button, &QPushButton::clicked, &w, [this, field] { w.hotkeyButtonClicked(field); });
        layout->addWidget(button);
        auto* warning = new QLabel(q(t.conflictWarning));
        warning->setStyleSheet("color: #d97706;");
        warning->setVisible(w.form_.conflictShown(field));
        layout->addWidget(warning, 1);
        w.hotkeyButtons_[field] = button;
        w.hotkeyConflictLabels_[field] = warning;
    }
    void slider(QVBoxLayout* card, std::string_view label, const IntSetting& setting,
                std::function<std::string(std::int64_t)> display) {
        auto* layout = row(card, label);
        const auto range = *sliderRange(setting);
        auto* slider = new QSlider(Qt::Horizontal);
        slider->setObjectName(q(setting.name));
        slider->setRange(static_cast<int>(range.minimum), static_cast<int>(range.maximum));
        slider->setValue(static_cast<int>(sliderPosition(setting, w.form_.get(setting))));
        auto* value = new QLabel(q(display(w.form_.get(setting))));
        value->setMinimumWidth(90);
        QObject::connect(slider, &QSlider::valueChanged, &w, [this, &setting, value, display](int position) {
            w.form_.set(setting, sliderValue(setting, position));
            value->setText(q(display(w.form_.get(setting))));
        });
        layout->addWidget(slider, 1);
        layout->addWidget(value);
    }
    std::function<std::string(std::int64_t)> unit(std::string_view unitText) {
        return [u = std::string(unitText)](std::int64_t v) { return std::to_string(v) + " " + u; };
    }
    QComboBox* languagePopup(QVBoxLayout* card, std::string_view label, const StringSetting& setting) {
        auto* layout = row(card, label);
        auto* popup = new QComboBox;
        popup->setObjectName(q(setting.name));
        const auto current = w.form_.get(setting);
        for (const auto code : LanguageCatalog::supported) {
            popup->addItem(q(LanguageCatalog::displayName(code, rawValue(w.form_.language()))), q(code));
            if (code == current) popup->setCurrentIndex(popup->count() - 1);
        }
        QObject::connect(popup, &QComboBox::currentIndexChanged, &w, [this, popup, &setting](int) {
            w.form_.set(setting, popup->currentData().toString().toStdString());
        });
        layout->addWidget(popup, 1);
        return popup;
    }
    void appList(QVBoxLayout* card, const StringListSetting& setting) {
        auto* list = new QVBoxLayout;
        list->setObjectName(q(setting.name));
        card->addLayout(list);
        w.rebuildAppList(list, setting);
        auto* add = new QPushButton(q(t.clipboardAddApp));
        add->setObjectName(q(setting.name) + ".add");
        QObject::connect(add, &QPushButton::clicked, &w, [this, list, &setting] { w.addAppClicked(list, setting); });
        auto* buttons = new QHBoxLayout;
        buttons->addWidget(add);
        buttons->addStretch();
        card->addLayout(buttons);
    }
    void help(QVBoxLayout* page, std::string_view title, std::string_view text) {
        caption(card(page, title), text);
    }

    void general(QVBoxLayout* p) {
        toggle(card(p, t.startup), t.launchAtLogin, s::kLaunchAtLogin);
        auto* appearance = card(p, t.appearance);
        auto* languageRow = row(appearance, t.language);
        auto* group = new QButtonGroup(appearance->parentWidget());
        for (const auto language : kAllSettingsLanguages) {
            auto* button = new QPushButton(q(displayName(language)));
            button->setObjectName(QString("language:") + q(rawValue(language)));
            button->setCheckable(true);
            button->setChecked(language == w.form_.language());
            group->addButton(button);
            languageRow->addWidget(button);
            QObject::connect(button, &QPushButton::clicked, &w, [this, language] {
                if (language != w.form_.language()) w.form_.setLanguage(language);
            });
        }
        languageRow->addStretch();
        auto* hints = card(p, t.hintsSection);
        hotkeyRow(hints, t.hotkeyOverlayTitle, HotkeyField::hotkeyOverlay);
        caption(hints, t.hintsCardHint);
        auto* sync = card(p, t.iCloudSection);
        toggle(sync, t.iCloudSyncSettings, s::kICloudSyncSettingsEnabled);
        caption(sync, t.iCloudSyncSettingsHint);
        toggle(sync, t.iCloudSyncClipboard, s::kICloudSyncClipboardEnabled);
        caption(sync, t.iCloudSyncClipboardHint);
        syncFolderRow(sync);
        if (!w.services_.syncFolder) caption(sync, t.iCloudUnavailableNote);
    }
    /// The folder in use and the button that chooses another, for the next launch. The choice
    /// is stored at once: it is no part of the form and no Save waits for it.
    void syncFolderRow(QVBoxLayout* card) {
        const auto texts = shell::SyncFolderTexts::make(w.form_.language());
        auto* layout = row(card, texts.folder);
        const std::string chosen = w.settings_.get(s::kSyncFolderPath);
        auto* path = new QLabel(w.services_.syncFolder ? q(*w.services_.syncFolder) : q(texts.notFound));
        path->setObjectName("syncFolderPath");
        path->setTextInteractionFlags(Qt::TextSelectableByMouse);
        path->setWordWrap(true);
        layout->addWidget(path, 1);
        auto* choose = new QPushButton(q(texts.choose));
        choose->setObjectName("syncFolderPath.choose");
        layout->addWidget(choose);
        caption(card, texts.nextLaunchNote);
        auto* pending = caption(card, "");
        pending->setObjectName("syncFolderPath.pending");
        pending->setVisible(false);
        QObject::connect(choose, &QPushButton::clicked, &w, [this, texts, pending, chosen] {
            QFileDialog dialog(&w, q(texts.dialogTitle), chosen.empty() ? QDir::homePath() : q(chosen));
            dialog.setFileMode(QFileDialog::Directory);
            dialog.setOption(QFileDialog::ShowDirsOnly);
            dialog.setLabelText(QFileDialog::LookIn, q(texts.dialogLookIn));
            dialog.setLabelText(QFileDialog::FileName, q(texts.dialogFolder));
            dialog.setLabelText(QFileDialog::FileType, q(texts.dialogFileType));
            dialog.setLabelText(QFileDialog::Accept, q(texts.dialogAccept));
            dialog.setLabelText(QFileDialog::Reject, q(texts.dialogReject));
            if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
            const QString folder = dialog.selectedFiles().first();
            w.settings_.set(s::kSyncFolderPath, folder.toStdString());
            pending->setText(q(texts.chosenPrefix) + folder);
            pending->setVisible(true);
            // The note sits at the foot of a long page: scrolled into view once laid out.
            QTimer::singleShot(0, pending, [pending] {
                for (QWidget* p = pending->parentWidget(); p != nullptr; p = p->parentWidget())
                    if (auto* scroll = qobject_cast<QScrollArea*>(p)) {
                        scroll->ensureWidgetVisible(pending);
                        break;
                    }
            });
        });
    }
    void translator(QVBoxLayout* p) {
        auto* main = card(p, t.translator);
        toggle(main, t.enableTranslation, s::kTranslationEnabled);
        hotkeyRow(main, t.translationHotkeyVariants, HotkeyField::translation);
        hotkeyRow(main, t.translationHotkeyDirect, HotkeyField::directTranslation);
        auto* languages = card(p, t.translatorLanguagesTitle);
        languagePopup(languages, t.translatorPrimaryLanguage, s::kTranslatorPrimaryLanguage);
        languagePopup(languages, t.translatorSecondaryLanguage, s::kTranslatorSecondaryLanguage);
        caption(languages, t.translatorLanguagesHint);
        help(p, t.howItWorks, t.helpTranslatorText);
        help(p, t.tips, t.translatorTips);
    }
    void layoutSwitcher(QVBoxLayout* p) {
        auto* main = card(p, t.layoutSwitcher);
        toggle(main, t.enableLayoutSwitching, s::kLayoutSwitchEnabled);
        hotkeyRow(main, t.hotkey, HotkeyField::layoutSwitch);
        // The delay's unit is the one text of the page outside the string tables.
        slider(main, t.delay, s::kSwitchDelayMs, unit(w.form_.language() == SettingsLanguage::ru ? "мс" : "ms"));
        help(p, t.howItWorks, t.helpSwitcherText);
        help(p, t.tips, t.switcherTips);
    }
    void clipboard(QVBoxLayout* p) {
        auto* main = card(p, t.clipboardHistory);
        toggle(main, t.enableClipboardHistory, s::kClipboardHistoryEnabled);
        hotkeyRow(main, t.hotkey, HotkeyField::clipboard);
        slider(main, t.historySize, s::kClipboardHistorySize, [](std::int64_t v) { return std::to_string(v); });
        toggle(main, t.storeNonText, s::kClipboardStoreNonText);
        auto* persist = card(p, {});
        toggle(persist, t.clipboardPersist, s::kClipboardPersistEnabled);
        caption(persist, t.clipboardPersistHint);
        auto* clear = new QPushButton(q(t.clipboardClear));
        clear->setObjectName("clipboardClear");
        QObject::connect(clear, &QPushButton::clicked, &w, [this] {
            QMessageBox box(QMessageBox::Warning, q(t.clipboardClear), q(t.clipboardClearConfirm),
                            QMessageBox::NoButton, &w);
            auto* yes = box.addButton(q(t.clipboardClear), QMessageBox::DestructiveRole);
            box.addButton(q(t.cancel), QMessageBox::RejectRole);
            box.exec();
            if (box.clickedButton() == yes && w.services_.clearClipboardHistory) w.services_.clearClipboardHistory();
        });
        auto* clearRow = new QHBoxLayout;
        clearRow->addWidget(clear);
        clearRow->addStretch();
        persist->addLayout(clearRow);
        caption(card(p, t.clipboardShortcuts), t.clipboardShortcutsHint);
        auto* ignored = card(p, t.clipboardIgnoredApps);
        appList(ignored, s::kClipboardIgnoredApps);
        caption(ignored, t.clipboardIgnoredAppsHint);
    }
    void pomodoro(QVBoxLayout* p) {
        auto* main = card(p, t.pomodoroTimer);
        toggle(main, t.enablePomodoro, s::kPomodoroEnabled);
        hotkeyRow(main, t.pomodoroHotkey, HotkeyField::pomodoro);
        slider(main, t.workDuration, s::kWorkDurationMinutes, unit(t.minutesUnit));
        slider(main, t.breakDuration, s::kBreakDurationMinutes, unit(t.minutesUnit));
        slider(main, t.longBreakDuration, s::kLongBreakDurationMinutes, unit(t.minutesUnit));
        caption(main, t.longBreakHint);
        auto* focus = card(p, t.focusSectionTitle);
        toggle(focus, t.focusToggleEnable, s::kPomodoroToggleDND);
        // The status line: whether both commands are in their folder, with Recheck and Open.
        auto* status = new QHBoxLayout;
        status->addWidget(new QLabel(q(t.focusStatusLabel)));
        w.focusStatusIcon_ = new QLabel;
        w.focusStatusIcon_->setObjectName("focusStatusIcon");
        status->addWidget(w.focusStatusIcon_);
        w.focusStatusText_ = new QLabel;
        w.focusStatusText_->setObjectName("focusStatusText");
        status->addWidget(w.focusStatusText_, 1);
        auto* recheck = new QPushButton(q(t.focusRecheck));
        recheck->setObjectName("focusRecheck");
        QObject::connect(recheck, &QPushButton::clicked, &w, [this] { w.recheckFocusClicked(); });
        status->addWidget(recheck);
        auto* open = new QPushButton(q(t.focusOpenShortcuts));
        open->setObjectName("focusOpenShortcuts");
        QObject::connect(open, &QPushButton::clicked, &w, [this] {
            if (w.services_.openFocusCommandFolder) w.services_.openFocusCommandFolder();
        });
        status->addWidget(open);
        focus->addLayout(status);
        w.recheckFocusClicked();
        caption(focus, t.focusToggleHint);
        caption(focus, t.focusWhy);
        help(p, t.helpPomodoroTitle, t.helpPomodoroText);
    }
    void password(QVBoxLayout* p) {
        auto* main = card(p, t.passwordSection);
        toggle(main, t.passwordEnable, s::kPasswordEnabled);
        hotkeyRow(main, t.hotkey, HotkeyField::password);
        auto* modeRow = row(main, t.passwordMode);
        auto* mode = new QComboBox;
        mode->setObjectName("passwordMode");
        for (const auto& [m, label] : {std::pair{PasswordMode::popup, t.passwordModePopup},
                                      std::pair{PasswordMode::autoPaste, t.passwordModeAutoPaste},
                                      std::pair{PasswordMode::copyOnly, t.passwordModeCopyOnly}}) {
            mode->addItem(q(label), q(rawValue(m)));
            if (m == w.form_.get(s::kPasswordMode)) mode->setCurrentIndex(mode->count() - 1);
        }
        QObject::connect(mode, &QComboBox::currentIndexChanged, &w, [this, mode](int) {
            w.form_.set(s::kPasswordMode, passwordModeFromRaw(mode->currentData().toString().toStdString()));
        });
        modeRow->addWidget(mode, 1);
        auto* charset = card(p, t.passwordCharsetTitle);
        slider(charset, t.passwordLength, s::kPasswordLength, [](std::int64_t v) { return std::to_string(v); });
        toggle(charset, t.passwordCharsetUppercase, s::kPasswordIncludeUppercase);
        toggle(charset, t.passwordCharsetLowercase, s::kPasswordIncludeLowercase);
        toggle(charset, t.passwordCharsetDigits, s::kPasswordIncludeDigits);
        toggle(charset, t.passwordCharsetSymbols, s::kPasswordIncludeSymbols);
        auto* clear = card(p, t.passwordClipboardClearTitle);
        slider(clear, t.passwordClipboardClearTitle, s::kPasswordClipboardClearSeconds,
               [this](std::int64_t v) { return clearSecondsDisplay(v, t); });
        caption(clear, t.passwordClipboardClearHint);
        help(p, t.passwordHelpTitle, t.passwordHelpText);
    }
    void snippets(QVBoxLayout* p) {
        auto* main = card(p, t.snippetsSection);
        toggle(main, t.snippetsEnable, s::kSnippetExpanderEnabled);
        hotkeyRow(main, t.hotkey, HotkeyField::snippets);
        auto* tableCard = card(p, {});
        auto* table = new QTableWidget(0, 2);
        table->setObjectName("snippetTable");
        table->setHorizontalHeaderLabels({q(t.snippetsTableShortcut), q(t.snippetsTableExpansion)});
        table->setSelectionMode(QAbstractItemView::SingleSelection);
        table->setSelectionBehavior(QAbstractItemView::SelectRows);
        table->setAlternatingRowColors(false);
        table->verticalHeader()->setVisible(false);
        table->verticalHeader()->setDefaultSectionSize(22);
        table->setColumnWidth(0, 140);
        table->horizontalHeader()->setMinimumSectionSize(80);
        table->horizontalHeader()->setStretchLastSection(true);
        table->setMinimumHeight(160);
        tableCard->addWidget(table);
        auto* empty = new QLabel(q(w.form_.snippetsUnreadable() ? std::string_view("⚠ ") : std::string_view()) +
                                 q(t.snippetsEmpty));
        empty->setObjectName("snippetEmptyLabel");
        tableCard->addWidget(empty);
        auto* buttons = new QHBoxLayout;
        auto* add = new QPushButton(q(t.snippetsAdd));
        add->setObjectName("snippetsAdd");
        auto* remove = new QPushButton(q(t.snippetsRemove));
        remove->setObjectName("snippetsRemove");
        buttons->addWidget(add);
        buttons->addWidget(remove);
        buttons->addStretch();
        tableCard->addLayout(buttons);
        w.snippetTable_ = table;
        w.snippetEmptyLabel_ = empty;
        w.snippetRemoveButton_ = remove;
        w.refreshSnippets();
        QObject::connect(table, &QTableWidget::itemChanged, &w, [this](QTableWidgetItem* item) {
            const auto text = item->text().toStdString();
            if (item->column() == 0) w.form_.editSnippet(static_cast<std::size_t>(item->row()), text, std::nullopt);
            else w.form_.editSnippet(static_cast<std::size_t>(item->row()), std::nullopt, text);
        });
        QObject::connect(table, &QTableWidget::itemSelectionChanged, &w, [this] {
            w.snippetRemoveButton_->setEnabled(!w.snippetTable_->selectedItems().isEmpty());
        });
        QObject::connect(add, &QPushButton::clicked, &w, [this] {
            const int row = static_cast<int>(w.form_.addSnippet());
            w.refreshSnippets();
            w.snippetTable_->scrollToItem(w.snippetTable_->item(row, 0));
            w.snippetTable_->setCurrentCell(row, 0);
            w.snippetTable_->editItem(w.snippetTable_->item(row, 0));
        });
        QObject::connect(remove, &QPushButton::clicked, &w, [this] {
            const int row = w.snippetTable_->currentRow();
            if (row < 0) return;
            w.form_.removeSnippet(static_cast<std::size_t>(row));
            w.refreshSnippets();
        });
        help(p, t.snippetsHelpTitle, t.snippetsHelpText);
        help(p, t.snippetsTipsTitle, t.snippetsTips);
    }
    void textTransformer(QVBoxLayout* p) {
        auto* main = card(p, t.textTransformerSection);
        toggle(main, t.textTransformerEnable, s::kTextTransformerEnabled);
        hotkeyRow(main, t.hotkey, HotkeyField::textTransformer);
        help(p, t.textTransformerHelpTitle, t.textTransformerHelpText);
        help(p, t.textTransformerTipsTitle, t.textTransformerTips);
    }
    void bonus(QVBoxLayout* p) {
        auto* intro = new QLabel(q(t.bonusSectionHint));
        intro->setWordWrap(true);
        p->addWidget(intro);
        auto* lock = card(p, t.keyboardLockSection);
        slider(lock, t.keyboardLockAutoUnlockLabel, s::kKeyboardLockAutoUnlockMinutes, unit(t.minutesUnit));
        toggle(lock, t.keyboardLockEnable, s::kKeyboardLockEnabled);
        hotkeyRow(lock, t.keyboardLockHotkeyLabel, HotkeyField::keyboardLock);
        caption(lock, t.keyboardLockCardHint);
        auto* scroll = card(p, t.scrollReverserCardTitle);
        toggle(scroll, t.scrollReverserTrackpadLabel, s::kReverseTrackpadScroll);
        toggle(scroll, t.scrollReverserMouseLabel, s::kReverseMouseScroll);
        toggle(scroll, t.scrollReverserMagicMouseLabel, s::kReverseMagicMouseScroll);
        caption(scroll, t.scrollReverserCardHint);
        auto* cut = card(p, t.finderCutCardTitle);
        toggle(cut, t.finderCutEnable, s::kFinderCutEnabled);
        caption(cut, t.finderCutCardHint);
        auto* hider = card(p, t.menuBarHiderCardTitle);
        slider(hider, t.menuBarHiderAutoCollapseLabel, s::kMenuBarHiderAutoCollapseSeconds,
               [this](std::int64_t v) { return menuBarHiderAutoCollapseDisplay(v, t); });
        toggle(hider, t.menuBarHiderEnable, s::kMenuBarHiderEnabled);
        hotkeyRow(hider, t.menuBarHiderHotkeyLabel, HotkeyField::menuBarHider);
        caption(hider, t.menuBarHiderCardHint);
        auto* caffeine = card(p, t.caffeineCardTitle);
        toggle(caffeine, t.caffeineEnable, s::kCaffeineEnabled);
        hotkeyRow(caffeine, t.caffeineHotkeyLabel, HotkeyField::caffeine);
        auto* durationRow = row(caffeine, t.caffeineDurationLabel);
        auto* duration = new QComboBox;
        duration->setObjectName("caffeineDefaultDurationMinutes");
        const auto stored = w.form_.get(s::kCaffeineDefaultDurationMinutes);
        for (const auto minutes : caffeineDurationChoices(stored)) {
            duration->addItem(q(caffeineDurationDisplay(minutes, t)), QVariant::fromValue<qlonglong>(minutes));
            if (minutes == stored) duration->setCurrentIndex(duration->count() - 1);
        }
        QObject::connect(duration, &QComboBox::currentIndexChanged, &w, [this, duration](int) {
            w.form_.set(s::kCaffeineDefaultDurationMinutes, duration->currentData().toLongLong());
        });
        durationRow->addWidget(duration, 1);
        caption(caffeine, t.caffeineCardHint);
        auto* apps = new QLabel(q(t.caffeineActiveApps));
        caffeine->addWidget(apps);
        appList(caffeine, s::kCaffeineActiveApps);
        caption(caffeine, t.caffeineActiveAppsHint);
        toggle(caffeine, t.caffeineLidCloseToggle, s::kCaffeineLidClose);
        caption(caffeine, t.caffeineLidCloseHint);
        toggle(caffeine, t.caffeineLidAlwaysToggle, s::kCaffeineLidCloseAlways);
        caption(caffeine, t.caffeineLidAlwaysHint);
    }
    void about(QVBoxLayout* p) {
        auto* header = new QLabel("<h2>Orvantis</h2>" + q(t.aboutTagline).toHtmlEscaped() + "<br>" +
                                  q(w.services_.version).toHtmlEscaped());
        header->setWordWrap(true);
        p->addWidget(header);
        auto* feedback = card(p, t.feedbackCardTitle);
        caption(feedback, t.feedbackCardHint);
        auto* button = new QPushButton(q(t.feedbackButton));
        button->setObjectName("feedbackButton");
        QObject::connect(button, &QPushButton::clicked, &w, [this] {
            if (w.services_.openFeedback) w.services_.openFeedback();
        });
        feedback->addWidget(button);
        help(p, t.aboutFeaturesTitle, t.aboutFeatures);
        help(p, t.aboutBonusTitle, t.aboutBonus);
        help(p, t.aboutPrivacyTitle, t.aboutPrivacy);
        help(p, t.aboutSystemTitle, t.aboutSystem);
        help(p, t.aboutCreditsTitle, t.aboutCredits);
    }
};

SettingsWindowController::SettingsWindowController(AppSettings& settings, SettingsWindowServices services,
                                                   std::function<void()> onClosed)
    : settings_(settings), services_(std::move(services)), onClosed_(std::move(onClosed)), form_(settings) {
    const auto madeAt = std::chrono::steady_clock::now();
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    resize(760, 560);
    form_.onLanguagePreview = [this] {
        // Not inside the click's own handler: the button that was clicked goes with the rebuild.
        QTimer::singleShot(0, this, [this] { rebuildEverything(); });
    };
    form_.onCaptureActive = [this](bool active) {
        bool taken = true;
        if (active) {
            interruptedField_.reset();
            grabKeyboard();
            if (services_.grabKeyboard && windowHandle() != nullptr) taken = services_.grabKeyboard(*windowHandle());
            qApp->installEventFilter(this);
        } else {
            qApp->removeEventFilter(this);
            releaseKeyboard();
            if (services_.grabKeyboard && windowHandle() != nullptr) windowHandle()->setKeyboardGrabEnabled(false);
        }
        if (services_.suspendGrabs) services_.suspendGrabs(active);
        // Another program holds the keyboard: the keys would never come here. Ended on the next
        // turn, outside the form's own call.
        if (!taken)
            QTimer::singleShot(0, this, [this] { captureInterrupted("another program holds the keyboard"); });
    };
    form_.onExternalChange = [this] {
        // The setting changed elsewhere: untouched fields follow, and the pages are rebuilt from
        // the form (the user's edits live there and survive).
        QTimer::singleShot(0, this, [this] { rebuildEverything(); });
    };
    root_ = new QVBoxLayout(this);
    root_->setContentsMargins(0, 0, 0, 0);
    // Ctrl+Page Down and Ctrl+Page Up walk the pages, as in tabbed windows.
    const auto step = [this](int by) {
        const int count = static_cast<int>(kAllSettingsSections.size());
        selectSection(kAllSettingsSections[static_cast<std::size_t>((static_cast<int>(currentSection_) + by + count) % count)]);
    };
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageDown), this), &QShortcut::activated, this,
            [step] { step(1); });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_PageUp), this), &QShortcut::activated, this,
            [step] { step(-1); });
    // Return saves, wherever the focus is; Esc (the Cancel button's shortcut) cancels.
    connect(new QShortcut(QKeySequence(Qt::Key_Return), this), &QShortcut::activated, this,
            &SettingsWindowController::saveClicked);
    buildUI();
    watchPaint(currentSection_, madeAt);
}

SettingsWindowController::~SettingsWindowController() {
    form_.cancelCapture();
    form_.onCaptureActive = nullptr;
    // The children die after the page builders their handlers refer to: silence them first.
    for (QObject* child : findChildren<QObject*>()) child->blockSignals(true);
}

void SettingsWindowController::buildUI() {
    const auto t = form_.strings();
    setWindowTitle(q(t.settingsWindowTitle));
    toolbar_ = new QToolBar(this);
    toolbar_->setObjectName("OrvantisSettings");
    toolbar_->setMovable(false);
    toolbar_->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    toolbar_->setIconSize(QSize(24, 24));
    // Ten pages must fit 760 pixels in either language: narrow buttons, no extension arrow.
    toolbar_->setStyleSheet("QToolButton { padding: 2px 0px; margin: 0px; }");
    toolbar_->layout()->setSpacing(0);
    QFont small = toolbar_->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    toolbar_->setFont(small);
    auto* group = new QActionGroup(toolbar_);
    for (const auto section : kAllSettingsSections) {
        const QString label = q(toolbarLabel(section, t));
        auto* action = toolbar_->addAction(sectionIcon(section, label), label);
        action->setObjectName(QString("settings.") + q(caseName(section)));
        action->setCheckable(true);
        action->setChecked(section == currentSection_);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, section] { selectSection(section); });
    }
    root_->addWidget(toolbar_);
    stack_ = new QStackedWidget(this);
    root_->addWidget(stack_, 1);
    auto* bottom = new QHBoxLayout;
    bottom->setContentsMargins(12, 6, 12, 12);
    bottom->addStretch();
    auto* cancel = new QPushButton(q(t.cancel));
    cancel->setObjectName("cancel");
    cancel->setShortcut(QKeySequence(Qt::Key_Escape));
    auto* save = new QPushButton(q(t.save));
    save->setObjectName("save");
    save->setDefault(true);
    connect(cancel, &QPushButton::clicked, this, &SettingsWindowController::cancelClicked);
    connect(save, &QPushButton::clicked, this, &SettingsWindowController::saveClicked);
    bottom->addWidget(cancel);
    bottom->addWidget(save);
    root_->addLayout(bottom);
    selectSection(currentSection_);
}

void SettingsWindowController::rebuildEverything() {
    form_.cancelCapture();
    pageCache_.clear();
    hotkeyButtons_.clear();
    hotkeyConflictLabels_.clear();
    focusStatusIcon_ = nullptr;
    focusStatusText_ = nullptr;
    paintWatched_ = nullptr;  // the pages go; the rebuilt one is not timed
    snippetTable_ = nullptr;
    snippetEmptyLabel_ = nullptr;
    snippetRemoveButton_ = nullptr;
    while (QLayoutItem* item = root_->takeAt(0)) {
        if (QWidget* widget = item->widget()) delete widget;
        else if (QLayout* layout = item->layout()) {
            while (QLayoutItem* inner = layout->takeAt(0)) {
                delete inner->widget();
                delete inner;
            }
        }
        delete item;
    }
    builders_.clear();
    buildUI();
}

QWidget* SettingsWindowController::buildPage(SettingsSection section) {
    auto* scroll = new QScrollArea;
    scroll->setObjectName(QString("page.") + q(caseName(section)));
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(16, 12, 16, 12);
    layout->setSpacing(10);
    builders_.push_back(std::make_unique<Builder>(Builder{*this, form_.strings()}));
    Builder& b = *builders_.back();
    switch (section) {
        case SettingsSection::general: b.general(layout); break;
        case SettingsSection::translator: b.translator(layout); break;
        case SettingsSection::layoutSwitcher: b.layoutSwitcher(layout); break;
        case SettingsSection::clipboard: b.clipboard(layout); break;
        case SettingsSection::pomodoro: b.pomodoro(layout); break;
        case SettingsSection::password: b.password(layout); break;
        case SettingsSection::snippets: b.snippets(layout); break;
        case SettingsSection::textTransformer: b.textTransformer(layout); break;
        case SettingsSection::bonus: b.bonus(layout); break;
        case SettingsSection::about: b.about(layout); break;
    }
    layout->addStretch();
    scroll->setWidget(content);
    return scroll;
}

QWidget* SettingsWindowController::page(SettingsSection section) {
    auto it = pageCache_.find(section);
    if (it != pageCache_.end()) return it->second;
    QWidget* built = buildPage(section);
    stack_->addWidget(built);
    pageCache_[section] = built;
    return built;
}

void SettingsWindowController::watchPaint(SettingsSection section, std::chrono::steady_clock::time_point since) {
    if (!services_.pagePainted) return;
    if (paintWatched_ != nullptr) paintWatched_->removeEventFilter(this);
    auto* scroll = qobject_cast<QScrollArea*>(page(section));
    paintWatched_ = scroll != nullptr ? scroll->widget() : nullptr;
    if (paintWatched_ == nullptr) return;
    paintWatchedSection_ = section;
    paintWatchedSince_ = since;
    paintWatched_->installEventFilter(this);
}

void SettingsWindowController::selectSection(SettingsSection section) {
    const auto chosenAt = std::chrono::steady_clock::now();
    const bool switching = section != currentSection_ && windowPainted_;
    currentSection_ = section;
    stack_->setCurrentWidget(page(section));
    for (QAction* action : toolbar_->actions())
        if (action->objectName() == QString("settings.") + q(caseName(section))) action->setChecked(true);
    if (switching) watchPaint(section, chosenAt);
}

QPushButton* SettingsWindowController::hotkeyButton(HotkeyField field) const {
    auto it = hotkeyButtons_.find(field);
    return it == hotkeyButtons_.end() ? nullptr : it->second;
}

QLabel* SettingsWindowController::conflictLabel(HotkeyField field) const {
    auto it = hotkeyConflictLabels_.find(field);
    return it == hotkeyConflictLabels_.end() ? nullptr : it->second;
}

void SettingsWindowController::recheckFocusClicked() {
    showFocusStatus(services_.focusCommandsAvailable && services_.focusCommandsAvailable());
}

void SettingsWindowController::showFocusStatus(bool available) {
    if (focusStatusText_ == nullptr) return;
    const auto t = form_.strings();
    const QColor colour = available ? QColor(0x2e, 0x9e, 0x5b) : QColor(0xd9, 0x7a, 0x00);
    const QIcon icon = available ? QIcon::fromTheme("emblem-ok-symbolic", style()->standardIcon(QStyle::SP_DialogApplyButton))
                                 : QIcon::fromTheme("dialog-warning", style()->standardIcon(QStyle::SP_MessageBoxWarning));
    focusStatusIcon_->setPixmap(icon.pixmap(16, 16));
    QPalette palette = focusStatusText_->palette();
    palette.setColor(QPalette::WindowText, colour);
    focusStatusText_->setPalette(palette);
    focusStatusText_->setText(q(available ? t.focusStatusFound : t.focusStatusMissing));
}

QString SettingsWindowController::focusStatusText() const {
    return focusStatusText_ == nullptr ? QString() : focusStatusText_->text();
}

void SettingsWindowController::refreshHotkeyButtons() {
    for (auto& [field, button] : hotkeyButtons_) button->setText(q(form_.buttonTitle(field)));
    for (auto& [field, label] : hotkeyConflictLabels_) label->setVisible(form_.conflictShown(field));
}

void SettingsWindowController::refreshSnippets() {
    if (!snippetTable_) return;
    const QSignalBlocker blocker(snippetTable_);
    const auto& entries = form_.snippets();
    snippetTable_->setRowCount(static_cast<int>(entries.size()));
    for (std::size_t i = 0; i < entries.size(); ++i) {
        snippetTable_->setItem(static_cast<int>(i), 0, new QTableWidgetItem(q(entries[i].shortcut)));
        snippetTable_->setItem(static_cast<int>(i), 1, new QTableWidgetItem(q(entries[i].expansion)));
    }
    snippetEmptyLabel_->setVisible(entries.empty());
    snippetRemoveButton_->setEnabled(!snippetTable_->selectedItems().isEmpty());
}

void SettingsWindowController::rebuildAppList(QVBoxLayout* list, const StringListSetting& setting) {
    while (QLayoutItem* item = list->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const auto installed = services_.installedApps ? services_.installedApps() : std::vector<InstalledApp>{};
    for (const auto& id : form_.get(setting)) {
        auto* rowWidget = new QWidget;
        auto* row = new QHBoxLayout(rowWidget);
        row->setContentsMargins(0, 0, 0, 0);
        QString name = q(id);
        QIcon icon;
        for (const auto& app : installed)
            if (app.id == id) {
                name = q(app.name);
                icon = QIcon::fromTheme(q(app.icon));
            }
        auto* iconLabel = new QLabel;
        iconLabel->setPixmap((icon.isNull() ? style()->standardIcon(QStyle::SP_DesktopIcon) : icon).pixmap(16, 16));
        row->addWidget(iconLabel);
        row->addWidget(new QLabel(name), 1);
        auto* remove = new QPushButton("−");
        remove->setObjectName("remove:" + q(id));
        remove->setFixedWidth(28);
        connect(remove, &QPushButton::clicked, this, [this, list, &setting, id] {
            form_.removeApp(setting, id);
            QTimer::singleShot(0, this, [this, list, &setting] { rebuildAppList(list, setting); });
        });
        row->addWidget(remove);
        list->addWidget(rowWidget);
    }
}

void SettingsWindowController::addAppClicked(QVBoxLayout* list, const StringListSetting& setting) {
    const auto t = form_.strings();
    QDialog dialog(this);
    dialog.setWindowTitle(q(t.clipboardAddApp));
    auto* layout = new QVBoxLayout(&dialog);
    auto* apps = new QListWidget;
    apps->setObjectName("installedApps");
    auto installed = services_.installedApps ? services_.installedApps() : std::vector<InstalledApp>{};
    std::sort(installed.begin(), installed.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    for (const auto& app : installed) {
        auto* item = new QListWidgetItem(QIcon::fromTheme(q(app.icon)), q(app.name) + "  (" + q(app.id) + ")");
        item->setData(Qt::UserRole, q(app.id));
        apps->addItem(item);
    }
    layout->addWidget(apps);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(q(t.clipboardAddApp));
    buttons->button(QDialogButtonBox::Cancel)->setText(q(t.cancel));
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    connect(apps, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    dialog.resize(420, 480);
    if (dialog.exec() != QDialog::Accepted || apps->currentItem() == nullptr) return;
    if (form_.addApp(setting, apps->currentItem()->data(Qt::UserRole).toString().toStdString()))
        rebuildAppList(list, setting);
}

void SettingsWindowController::hotkeyButtonClicked(HotkeyField field) {
    form_.beginCapture(field);
    refreshHotkeyButtons();
}

void SettingsWindowController::captureInterrupted(const char* why) {
    const std::optional<HotkeyField> field = form_.activeCapture();
    if (!field) return;
    form_.cancelCapture();  // gives the keyboard back and restores the global hotkeys
    refreshHotkeyButtons();
    if (services_.captureInterrupted) services_.captureInterrupted(why);
    interruptedField_ = field;
    if (QPushButton* button = hotkeyButton(*field)) {
        button->setText(q(shell::captureInterruptedText(form_.language())));
        button->setToolTip(button->text());
    }
    QTimer::singleShot(kInterruptionMessageTime, this, [this, field] {
        if (interruptedField_ != field) return;
        interruptedField_.reset();
        if (QPushButton* button = hotkeyButton(*field)) button->setToolTip({});
        refreshHotkeyButtons();
    });
}

bool SettingsWindowController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == paintWatched_ && event->type() == QEvent::Paint) {
        paintWatched_->removeEventFilter(this);
        paintWatched_ = nullptr;
        const bool first = !windowPainted_;
        windowPainted_ = true;
        const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - paintWatchedSince_;
        services_.pagePainted(paintWatchedSection_, first, elapsed.count());
        return false;
    }
    if (form_.activeCapture() && watched == this && event->type() == QEvent::WindowDeactivate) {
        // The window lost the keyboard: another program's grab, or another window activated.
        QTimer::singleShot(0, this, [this] { captureInterrupted("the window lost the keyboard"); });
        return QWidget::eventFilter(watched, event);
    }
    if (form_.activeCapture() && event->type() == QEvent::ShortcutOverride) {
        // While capturing, Return, Esc and the page keys belong to the capture, not to shortcuts.
        event->accept();
        return true;
    }
    if (!form_.activeCapture() || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    std::optional<std::uint16_t> code;
    if (services_.virtualKeyForScanCode) code = services_.virtualKeyForScanCode(key->nativeScanCode());
    if (!code && key->key() == Qt::Key_Escape) code = 53;
    if (!code) return true;  // a modifier alone or a key without a position: keep capturing
    form_.captureKeyDown(*code, modifierBits(key->modifiers()));
    refreshHotkeyButtons();
    return true;
}

void SettingsWindowController::saveClicked() {
    // Commits an edit in progress (a snippet cell being typed in).
    if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
    if (snippetTable_ && snippetTable_->currentItem()) {
        // Closing the cell editor writes its text into the item, and so into the form.
        snippetTable_->setCurrentCell(-1, -1);
    }
    if (!services_.makeSaveTarget) return;
    auto target = services_.makeSaveTarget(*this);
    form_.save(*target);
}

void SettingsWindowController::cancelClicked() { close(); }

bool SettingsWindowController::askClipboardConsent() {
    const auto t = form_.strings();
    QMessageBox box(QMessageBox::Warning, q(t.iCloudClipboardConsentTitle), q(t.iCloudClipboardConsentBody),
                    QMessageBox::NoButton, this);
    auto* enable = box.addButton(q(t.iCloudClipboardConsentEnable), QMessageBox::AcceptRole);
    box.addButton(q(t.iCloudClipboardConsentCancel), QMessageBox::RejectRole);
    box.exec();
    return box.clickedButton() == enable;
}

void SettingsWindowController::showAlert(std::string_view title, std::string_view body) {
    QMessageBox::warning(this, q(title), q(body));
}

void SettingsWindowController::closeEvent(QCloseEvent* event) {
    form_.cancelCapture();
    event->accept();
    if (!closing_) {
        closing_ = true;
        if (onClosed_) onClosed_();
    }
}

}  // namespace orvantis::ui
