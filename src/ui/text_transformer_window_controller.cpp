#include "ui/text_transformer_window_controller.h"

#include <algorithm>

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include "core/strings/settings_strings.h"
#include "core/text_tools/text_transformer_model.h"

namespace orvantis::ui {
namespace {

QString qs(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<int>(text.size())); }

/// The result view holds blocks of at most this many characters. Qt's text view lays out one
/// long line in time that grows with its square (two minutes for the Base64 of a megabyte), so
/// a longer line is shown in pieces of this size, which look the same wrapped. And it spends
/// most of the time of showing a text on making a block of every line (35 ms for the 17,000
/// lines of a megabyte), so in a result of many lines short lines are gathered into blocks of
/// up to kGatheredBlock characters, apart by line separators, which look the same as line ends
/// and read back as them (the accessibility interface, though, reads the separators as they
/// are, which is why a result of fewer lines keeps a block a line). A block is laid out whole
/// when any of it is in view, hence gathered blocks smaller than the pieces. Copy takes the
/// result itself.
constexpr qsizetype kShownBlock = 4096;
constexpr qsizetype kGatheredBlock = 1024;
/// Up to this many lines, each line of the result is a block of its own (about 4 ms to show).
constexpr qsizetype kBlockALineUpTo = 2000;

QString shownText(const std::string& result) {
    const QString text = QString::fromUtf8(result.data(), static_cast<qsizetype>(result.size()));
    QString shown;
    shown.reserve(text.size() + text.size() / kShownBlock + 1);
    qsizetype blockLength = -1;  // characters in the block being filled; -1 before the first line
    const bool gather = text.count(QLatin1Char('\n')) >= kBlockALineUpTo;
    auto addLine = [&](QStringView line) {
        if (gather && blockLength >= 0 && blockLength + 1 + line.size() <= kGatheredBlock) {
            shown += QChar(QChar::LineSeparator);
            blockLength += 1 + line.size();
        } else {
            if (blockLength >= 0) shown += QLatin1Char('\n');
            blockLength = line.size();
        }
        shown += line;
    };
    qsizetype lineStart = 0;
    while (lineStart <= text.size()) {
        qsizetype lineEnd = text.indexOf(QLatin1Char('\n'), lineStart);
        if (lineEnd < 0) lineEnd = text.size();
        if (lineEnd - lineStart <= kShownBlock) {
            addLine(QStringView(text).mid(lineStart, lineEnd - lineStart));
        } else {
            for (qsizetype p = lineStart; p < lineEnd;) {
                qsizetype end = std::min(p + kShownBlock, lineEnd);
                if (end < lineEnd && text[end - 1].isHighSurrogate()) ++end;  // a pair stays whole
                addLine(QStringView(text).mid(p, end - p));
                p = end;
            }
        }
        lineStart = lineEnd + 1;
    }
    return shown;
}

QFont sizedFont(QFont font, int pixels) {
    font.setPixelSize(pixels);
    return font;
}

}  // namespace

TransformPickerViewController::TransformPickerViewController(SettingsLanguage lang, TextTransform initial,
                                                             const QString& searchPlaceholder, QWidget* parent)
    : QFrame(parent, Qt::Popup), lang_(lang), searchField_(new QLineEdit(this)), tableView_(new QListWidget(this)) {
    setFrameShape(QFrame::StyledPanel);
    setFixedSize(320, 292);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    searchField_->setPlaceholderText(searchPlaceholder);
    searchField_->installEventFilter(this);
    tableView_->setFont(sizedFont(tableView_->font(), 13));
    tableView_->setSpacing(1);  // two pixels between rows of 22
    tableView_->setUniformItemSizes(true);
    tableView_->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(searchField_);
    layout->addWidget(tableView_);
    connect(searchField_, &QLineEdit::textChanged, this, [this] { searchChanged(); });
    connect(tableView_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { chooseRow(tableView_->row(item)); });
    reload();
    for (std::size_t i = 0; i < visible_.size(); ++i) {
        if (visible_[i] == initial) {
            tableView_->setCurrentRow(static_cast<int>(i));
            tableView_->scrollToItem(tableView_->currentItem());
        }
    }
    searchField_->setFocus();
}

void TransformPickerViewController::showEvent(QShowEvent* event) {
    QFrame::showEvent(event);
    layout()->activate();
    tableView_->scrollToTop();
    if (QListWidgetItem* item = tableView_->currentItem()) tableView_->scrollToItem(item);
}

void TransformPickerViewController::searchChanged() {
    reload();
    if (tableView_->count() > 0) {
        tableView_->setCurrentRow(0);
        tableView_->scrollToItem(tableView_->currentItem());
    }
}

void TransformPickerViewController::reload() {
    visible_ = orvantis::visibleTransforms(searchField_->text().toStdString(), lang_);
    tableView_->clear();
    for (TextTransform t : visible_) {
        auto* item = new QListWidgetItem(qs(displayName(t, lang_)), tableView_);
        item->setSizeHint(QSize(0, 22));
    }
}

void TransformPickerViewController::chooseRow(int row) {
    if (row < 0 || row >= static_cast<int>(visible_.size())) return;
    if (onSelect) onSelect(visible_[static_cast<std::size_t>(row)]);
}

bool TransformPickerViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == searchField_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up) {
            const int current = tableView_->currentRow();
            const auto moved = movedSelection(current >= 0 ? std::optional<std::size_t>(current) : std::nullopt,
                                              visible_.size(), key == Qt::Key_Down);
            if (moved) {
                tableView_->setCurrentRow(static_cast<int>(*moved));
                tableView_->scrollToItem(tableView_->currentItem());
            }
            return true;
        }
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            chooseRow(tableView_->currentRow());
            return true;
        }
    }
    return QFrame::eventFilter(watched, event);
}

TextTransformerWindowController::TextTransformerWindowController(AppSettings& settings,
                                                                 platform::Pasteboard& pasteboard,
                                                                 std::function<void()> onClosed)
    : settings_(settings), pasteboard_(pasteboard), onClosed_(std::move(onClosed)),
      inputTextView_(new QPlainTextEdit(this)), outputTextView_(new QPlainTextEdit(this)),
      transformButton_(new QPushButton(this)), statusLabel_(new QLabel(this)), copyButton_(new QPushButton(this)) {
    const SettingsStrings strings = SettingsStrings::make(settings_.settingsLanguage());
    setWindowTitle(qs(strings.textTransformerWindowTitle));
    setWindowFlag(Qt::Window);
    resize(640, 540);
    setMinimumSize(480, 420);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(qs(strings.textTransformerTransformLabel), this));
    transformButton_->setFixedHeight(24);
    transformButton_->setIcon(style()->standardIcon(QStyle::SP_TitleBarUnshadeButton));
    top->addWidget(transformButton_);
    top->addStretch();
    layout->addLayout(top);

    layout->addWidget(new QLabel(qs(strings.textTransformerInputLabel), this));
    inputTextView_->setFont(sizedFont(QApplication::font(), 13));
    inputTextView_->setMinimumHeight(140);
    layout->addWidget(inputTextView_, 1);

    layout->addWidget(new QLabel(qs(strings.textTransformerOutputLabel), this));
    outputTextView_->setReadOnly(true);
    outputTextView_->setFont(sizedFont(QFontDatabase::systemFont(QFontDatabase::FixedFont), 12));
    layout->addWidget(outputTextView_, 1);

    auto* bottom = new QHBoxLayout;
    statusLabel_->setFont(sizedFont(QApplication::font(), 11));
    statusLabel_->setWordWrap(true);
    bottom->addWidget(statusLabel_, 1);
    copyButton_->setText(qs(strings.textTransformerCopyButton));
    bottom->addWidget(copyButton_);
    layout->addLayout(bottom);

    connect(inputTextView_, &QPlainTextEdit::textChanged, this, [this] { recompute(); });
    connect(transformButton_, &QPushButton::clicked, this, [this] { openPicker(); });
    connect(copyButton_, &QPushButton::clicked, this, [this] { copyClicked(); });

    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        move(screen->availableGeometry().center() - rect().center());
    }
    refreshButtonTitle();
}

TextTransformerWindowController::~TextTransformerWindowController() = default;

void TextTransformerWindowController::showWindow() {
    prefillFromClipboard();
    refreshButtonTitle();
    recompute();
    show();
    raise();
    activateWindow();
    QTimer::singleShot(0, this, [this] { inputTextView_->setFocus(); });
}

void TextTransformerWindowController::prefillFromClipboard() {
    const std::optional<std::string> text = pasteboard_.data(platform::pasteboard_type::kText);
    if (!text || text->empty()) return;
    inputTextView_->setPlainText(QString::fromUtf8(text->data(), static_cast<int>(text->size())));
    inputTextView_->selectAll();  // typing or pasting replaces it
}

void TextTransformerWindowController::refreshButtonTitle() {
    transformButton_->setText(qs(displayName(selectedTransform_, settings_.settingsLanguage())));
}

void TextTransformerWindowController::recompute() {
    const std::string input = inputTextView_->toPlainText().toStdString();
    const TransformOutcome outcome = recomputeTransform(selectedTransform_, input, settings_.settingsLanguage());
    result_ = outcome.output;
    outputTextView_->setPlainText(shownText(result_));
    statusLabel_->setText(qs(outcome.status));
}

void TextTransformerWindowController::openPicker() {
    if (picker_ && picker_->isVisible()) {
        picker_->close();
        return;
    }
    const SettingsLanguage lang = settings_.settingsLanguage();
    const SettingsStrings strings = SettingsStrings::make(lang);
    auto* picker = new TransformPickerViewController(lang, selectedTransform_,
                                                     qs(strings.textTransformerSearchPlaceholder), this);
    picker->setAttribute(Qt::WA_DeleteOnClose);
    picker->onSelect = [this](TextTransform t) {
        selectTransform(t);
        if (picker_) picker_->close();
        inputTextView_->setFocus();
    };
    picker->move(transformButton_->mapToGlobal(QPoint(0, transformButton_->height())));
    picker_ = picker;
    picker->show();
    picker->searchField()->setFocus();
}

void TextTransformerWindowController::selectTransform(TextTransform transform) {
    selectedTransform_ = transform;
    refreshButtonTitle();
    recompute();
}

void TextTransformerWindowController::copyClicked() {
    // No acknowledgement to the clipboard monitor: the result enters the history by design.
    pasteboard_.write(platform::PasteboardItem::text(result_));
}

void TextTransformerWindowController::closeEvent(QCloseEvent* event) {
    if (picker_) picker_->close();
    QWidget::closeEvent(event);
    if (onClosed_) onClosed_();
}

}  // namespace orvantis::ui
