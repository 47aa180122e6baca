#include "ui/clipboard_history_popup.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextLayout>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>

#include "core/text/utf.h"
#include "platform/key_output.h"
#include "ui/popup_look.h"

namespace orvantis::ui {
namespace {

using Model = ClipboardPopupModel;

constexpr double kRowLeadingInset = 8;
constexpr double kNumberWidth = 18;
constexpr double kPinGap = 4;
constexpr double kPinSize = 11;
constexpr double kTextGap = 6;
constexpr double kMetaTrailingInset = 12;
constexpr int kEdgeMargin = 5;  ///< above the search field and below the footer: 10 in all
/// Stands for the keys that the popup has no rule for.
constexpr std::uint16_t kNoKeyCode = 0xFFFF;


QColor tertiaryColor(const QPalette& palette) {
    QColor color = palette.color(QPalette::WindowText);
    color.setAlphaF(0.35f);
    return color;
}

/// The mark behind a match: yellow at a third of its strength.
QColor matchColor() {
    QColor yellow(255, 204, 0);
    yellow.setAlphaF(0.35f);
    return yellow;
}

/// Ctrl+digit keys by the key positions of the digits 1-9.
std::uint16_t digitKeyCode(int qtKey) {
    if (qtKey < Qt::Key_1 || qtKey > Qt::Key_9) return kNoKeyCode;
    return Model::kDigitKeyCodes[static_cast<std::size_t>(qtKey - Qt::Key_1)];
}

PopupKey popupKey(const QKeyEvent& event) {
    PopupKey key;
    const int qtKey = event.key();
    switch (qtKey) {
        case Qt::Key_Return: key.keyCode = platform::key_code::kReturn; break;
        case Qt::Key_Enter: key.keyCode = Model::kKeypadEnterKeyCode; break;
        case Qt::Key_Escape: key.keyCode = platform::key_code::kEscape; break;
        case Qt::Key_Down: key.keyCode = platform::key_code::kDownArrow; break;
        case Qt::Key_Up: key.keyCode = platform::key_code::kUpArrow; break;
        case Qt::Key_Backspace: key.keyCode = platform::key_code::kDelete; break;
        case Qt::Key_P: key.keyCode = Model::kPinKeyCode; break;
        default: key.keyCode = digitKeyCode(qtKey); break;
    }
    // Ctrl+1 comes as Key_1 in every layout with digits there; in one whose digit keys type
    // other characters (the French one) the native key code tells the position.
    if (key.keyCode == kNoKeyCode && (event.modifiers() & Qt::ControlModifier)) {
        // X keycodes 10-18 are the digit row 1-9 on PC keyboards.
        const quint32 native = event.nativeScanCode();
        if (native >= 10 && native <= 18) key.keyCode = Model::kDigitKeyCodes[native - 10];
    }
    key.flags = popupKeyFlags(event.modifiers());
    key.charactersIgnoringModifiers = event.text().toStdString();
    return key;
}

/// A magnifying glass, drawn so that no icon theme is needed.
class SearchIcon final : public QWidget {
public:
    explicit SearchIcon(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("clipboardPopupSearchIcon"));
        setFixedSize(16, 16);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(popupSecondaryColor(palette()), 1.6, Qt::SolidLine, Qt::RoundCap));
        painter.drawEllipse(QRectF(2, 2, 8.5, 8.5));
        painter.drawLine(QPointF(9.5, 9.5), QPointF(14, 14));
    }
};

/// A filled pin in orange.
void drawPin(QPainter& painter, const QRectF& box) {
    const QColor orange(255, 149, 0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(orange);
    const double cx = box.center().x();
    painter.drawEllipse(QRectF(cx - box.width() * 0.32, box.top(), box.width() * 0.64, box.height() * 0.5));
    painter.drawRect(QRectF(cx - box.width() * 0.4, box.top() + box.height() * 0.42, box.width() * 0.8, 1.5));
    painter.setPen(QPen(orange, 1.2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(cx, box.top() + box.height() * 0.5), QPointF(cx, box.bottom()));
    painter.restore();
}

}  // namespace

/// One entry: its number, a pin when pinned, the preview with the search marked, and the
/// source application's name at the right. Painted by hand. A press selects, a double click
/// confirms.
class ClipboardRowView final : public QWidget {
public:
    ClipboardRowView(QWidget* parent, ClipboardPopupController& controller, std::size_t index,
                     const ClipboardItem& item, std::vector<TextMatch> matches, QString appName)
        : QWidget(parent),
          controller_(controller),
          index_(index),
          preview_(toQString(item.previewText())),
          pinned_(item.isPinned()),
          appName_(std::move(appName)) {
        setObjectName(QStringLiteral("clipboardPopupRow"));
        setFocusPolicy(Qt::NoFocus);
        setFixedHeight(static_cast<int>(Model::kRowHeight));
        // The marks in UTF-16 units, as the text layout counts.
        for (const TextMatch& match : matches) {
            const auto begin = static_cast<int>(text::utf16OffsetFromByteOffset(item.previewText(), match.begin));
            const auto end = static_cast<int>(text::utf16OffsetFromByteOffset(item.previewText(), match.end));
            if (end > begin) marks_.push_back({begin, end});
        }
        setProperty("index", static_cast<qulonglong>(index));
        setProperty("number", QString::number(index + 1));
        setProperty("preview", preview_);
        setProperty("pinned", pinned_);
        setProperty("appName", appName_);
        setProperty("markCount", static_cast<int>(marks_.size()));
        setProperty("highlighted", false);
    }

    void setHighlighted(bool highlighted) {
        if (highlighted == highlighted_) return;
        highlighted_ = highlighted;
        setProperty("highlighted", highlighted);
        update();
    }
    std::size_t index() const { return index_; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette& pal = palette();
        if (highlighted_) {
            QColor fill = pal.color(QPalette::Highlight);
            fill.setAlphaF(0.35f);
            QPainterPath shape;
            shape.addRoundedRect(QRectF(rect()).adjusted(4, 1, -4, -1), 5, 5);
            painter.fillPath(shape, fill);
        }
        const double h = height();
        double x = kRowLeadingInset;
        painter.setFont(popupNumberFont());
        painter.setPen(popupSecondaryColor(pal));
        painter.drawText(QRectF(x, 0, kNumberWidth, h), Qt::AlignVCenter | Qt::AlignHCenter,
                         QString::number(index_ + 1));
        x += kNumberWidth;
        if (pinned_) {
            x += kPinGap;
            drawPin(painter, QRectF(x, (h - kPinSize) / 2, kPinSize, kPinSize));
            x += kPinSize;
        }
        x += kTextGap;

        double right = width() - kMetaTrailingInset;
        if (!appName_.isEmpty()) {
            const QFont metaFont = popupPlainFont(10);
            const QFontMetrics metrics(metaFont);
            const int metaWidth = std::min(metrics.horizontalAdvance(appName_), width() / 3);
            painter.setFont(metaFont);
            painter.setPen(tertiaryColor(pal));
            painter.drawText(QRectF(right - metaWidth, 0, metaWidth, h), Qt::AlignVCenter | Qt::AlignRight,
                             metrics.elidedText(appName_, Qt::ElideRight, metaWidth));
            right -= metaWidth + 8;
        }
        drawPreview(painter, QRectF(x, 0, std::max(0.0, right - x), h));
    }

    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton) controller_.handleRowClick(index_, 1);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton) controller_.handleRowClick(index_, 2);
    }

private:
    /// One line, cut with "…" at the end when too long; the marks in a heavier face on yellow.
    void drawPreview(QPainter& painter, const QRectF& area) {
        const QFont font = popupPlainFont(13);
        const QFontMetrics metrics(font);
        QString shown = metrics.elidedText(preview_, Qt::ElideRight, static_cast<int>(area.width()));
        // The part of the preview that is still shown, before the "…" of a cut.
        const int kept = shown == preview_ ? static_cast<int>(preview_.size()) : std::max(0, int(shown.size()) - 1);
        QList<QTextLayout::FormatRange> formats;
        for (const auto& [begin, end] : marks_) {
            if (begin >= kept) continue;
            QTextLayout::FormatRange range;
            range.start = begin;
            range.length = std::min(end, kept) - begin;
            range.format.setBackground(matchColor());
            range.format.setFontWeight(QFont::DemiBold);
            formats.push_back(range);
        }
        QTextLayout layout(shown, font);
        layout.setFormats(formats);
        QTextOption option;
        option.setWrapMode(QTextOption::NoWrap);
        layout.setTextOption(option);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        if (line.isValid()) line.setLineWidth(area.width());
        layout.endLayout();
        painter.setPen(palette().color(QPalette::WindowText));
        painter.save();
        painter.setClipRect(area);
        const double top = area.top() + (area.height() - (line.isValid() ? line.height() : 0)) / 2;
        layout.draw(&painter, QPointF(area.left(), top));
        painter.restore();
    }

    ClipboardPopupController& controller_;
    std::size_t index_;
    QString preview_;
    bool pinned_;
    QString appName_;
    std::vector<std::pair<int, int>> marks_;
    bool highlighted_ = false;
};

/// The window: frameless, above the others, kept out of the window manager's hands so that it
/// neither takes the focus nor gets decorated or moved. The search field is its focus widget,
/// so the keys that the grab brings to the window are typed there.
class ClipboardPopupPanel final : public QWidget {
public:
    explicit ClipboardPopupPanel(ClipboardPopupController& controller)
        : QWidget(nullptr, kPopupWindowFlags), controller_(controller) {
        setObjectName(QStringLiteral("clipboardPopup"));
        setPopupWindowAttributes(*this);
        setFixedWidth(static_cast<int>(Model::kPopupWidth));

        auto* layout = new QVBoxLayout(this);
        // The model sets the frame; the parts' own wishes must not make the window taller.
        layout->setSizeConstraint(QLayout::SetNoConstraint);
        layout->setContentsMargins(0, kEdgeMargin, 0, kEdgeMargin);
        layout->setSpacing(0);

        auto* searchRow = new QWidget(this);
        searchRow->setObjectName(QStringLiteral("clipboardPopupSearchRow"));
        searchRow->setFixedHeight(static_cast<int>(Model::kSearchHeight));
        auto* searchLayout = new QHBoxLayout(searchRow);
        searchLayout->setContentsMargins(10, 2, 10, 2);
        searchLayout->setSpacing(6);
        searchLayout->addWidget(new SearchIcon(searchRow));
        search_ = new QLineEdit(searchRow);
        search_->setObjectName(QStringLiteral("clipboardPopupSearch"));
        search_->setFrame(false);
        search_->setFont(popupPlainFont(14));
        search_->setAttribute(Qt::WA_MacShowFocusRect, false);
        searchLayout->addWidget(search_, 1);
        layout->addWidget(searchRow);

        scroll_ = new QScrollArea(this);
        scroll_->setObjectName(QStringLiteral("clipboardPopupScroll"));
        scroll_->setFrameShape(QFrame::NoFrame);
        scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        scroll_->setFocusPolicy(Qt::NoFocus);
        scroll_->verticalScrollBar()->setFocusPolicy(Qt::NoFocus);
        scroll_->setWidgetResizable(true);
        scroll_->setMinimumHeight(static_cast<int>(Model::kRowHeight));
        scroll_->viewport()->setAutoFillBackground(false);
        rowsHost_ = new QWidget(scroll_);
        rowsHost_->setObjectName(QStringLiteral("clipboardPopupRows"));
        rowsHost_->setAutoFillBackground(false);
        rowsLayout_ = new QVBoxLayout(rowsHost_);
        rowsLayout_->setContentsMargins(0, 0, 0, 0);
        rowsLayout_->setSpacing(0);
        rowsLayout_->addStretch(1);
        scroll_->setWidget(rowsHost_);
        layout->addWidget(scroll_, 1);

        empty_ = new QLabel(this);
        empty_->setObjectName(QStringLiteral("clipboardPopupEmpty"));
        empty_->setAlignment(Qt::AlignCenter);
        empty_->setMinimumHeight(static_cast<int>(Model::kRowHeight));
        empty_->setFont(popupPlainFont(13));
        QPalette emptyPalette = empty_->palette();
        emptyPalette.setColor(QPalette::WindowText, popupSecondaryColor(emptyPalette));
        empty_->setPalette(emptyPalette);
        layout->addWidget(empty_, 1);

        auto* footer = new QWidget(this);
        footer->setObjectName(QStringLiteral("clipboardPopupFooter"));
        footer->setFixedHeight(static_cast<int>(Model::kFooterHeight));
        auto* footerLayout = new QHBoxLayout(footer);
        footerLayout->setContentsMargins(10, 0, 10, 0);
        footerLayout->setSpacing(8);
        count_ = new QLabel(footer);
        count_->setObjectName(QStringLiteral("clipboardPopupCount"));
        shortcuts_ = new QLabel(footer);
        shortcuts_->setObjectName(QStringLiteral("clipboardPopupShortcuts"));
        shortcuts_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        shortcuts_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        for (QLabel* label : {count_, shortcuts_}) {
            label->setFont(popupPlainFont(10));
            QPalette pal = label->palette();
            pal.setColor(QPalette::WindowText, popupSecondaryColor(pal));
            label->setPalette(pal);
        }
        footerLayout->addWidget(count_);
        footerLayout->addWidget(shortcuts_, 1);
        layout->addWidget(footer);

        for (QWidget* w : findChildren<QWidget*>())
            if (w != search_) w->setFocusPolicy(Qt::NoFocus);
        setFocusProxy(search_);
    }

    QLineEdit& search() { return *search_; }
    QScrollArea& scroll() { return *scroll_; }

    /// Shows what the model says: rows, empty label, texts and frame.
    void present(const ClipboardPopupModel& model) {
        const PopupRect& frame = model.frame();
        setGeometry(static_cast<int>(std::lround(frame.x)), static_cast<int>(std::lround(frame.y)),
                    static_cast<int>(std::lround(frame.width)), static_cast<int>(std::lround(frame.height)));
        const ClipboardPopupTexts& texts = model.texts();
        search_->setPlaceholderText(toQString(texts.searchPlaceholder));
        empty_->setText(toQString(texts.emptyText));
        shortcuts_->setText(toQString(texts.shortcutsHint));
        shortcuts_->setToolTip(shortcuts_->text());
        count_->setText(toQString(model.countText()));

        for (ClipboardRowView* row : rows_) {
            rowsLayout_->removeWidget(row);
            delete row;
        }
        rows_.clear();
        const auto& items = model.filteredItems();
        for (std::size_t i = 0; i < items.size(); ++i) {
            auto* row = new ClipboardRowView(rowsHost_, controller_, i, items[i], model.matchesIn(items[i].previewText()),
                                             toQString(controller_.appName(items[i].sourceBundleID())));
            rowsLayout_->insertWidget(static_cast<int>(i), row);
            rows_.push_back(row);
        }
        scroll_->setVisible(!model.showsEmptyLabel());
        empty_->setVisible(model.showsEmptyLabel());
        updateHighlight(model.selectedIndex());
        update();
    }

    void updateHighlight(int selected) {
        for (ClipboardRowView* row : rows_) row->setHighlighted(static_cast<int>(row->index()) == selected);
    }

    void scrollToRow(int index) {
        if (index < 0 || static_cast<std::size_t>(index) >= rows_.size()) return;
        // The row's place is known from its index even before the layout has run.
        const int top = index * static_cast<int>(Model::kRowHeight);
        const int bottom = top + static_cast<int>(Model::kRowHeight);
        QScrollBar* bar = scroll_->verticalScrollBar();
        const int visible = scroll_->viewport()->height();
        if (top < bar->value())
            bar->setValue(top);
        else if (bottom > bar->value() + visible)
            bar->setValue(bottom - visible);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton)
            controller_.handlePanelPress(event->globalPosition().toPoint());
    }
    void paintEvent(QPaintEvent*) override {
        paintPopupFrame(*this);
        QPainter painter(this);
        const QPalette& pal = palette();
        QColor line = pal.color(QPalette::WindowText);
        line.setAlphaF(0.12f);
        const int searchBottom = kEdgeMargin + static_cast<int>(Model::kSearchHeight);
        painter.fillRect(QRect(0, searchBottom, width(), 1), line);
        const int footerTop = height() - kEdgeMargin - static_cast<int>(Model::kFooterHeight);
        painter.fillRect(QRect(0, footerTop, width(), 1), line);
    }

private:
    ClipboardPopupController& controller_;
    QLineEdit* search_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QWidget* rowsHost_ = nullptr;
    QVBoxLayout* rowsLayout_ = nullptr;
    QLabel* empty_ = nullptr;
    QLabel* count_ = nullptr;
    QLabel* shortcuts_ = nullptr;
    std::vector<ClipboardRowView*> rows_;
};

ClipboardPopupController::ClipboardPopupController(platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                                                   AppNameLookup appName, ActivationWatch watchActivation)
    : loop_(loop),
      grab_(grab ? std::move(grab) : KeyboardGrab::none()),
      appNameLookup_(std::move(appName)),
      model_([this] { return visibleFrame(); }),
      panel_(std::make_unique<ClipboardPopupPanel>(*this)),
      keyboard_(*grab_, loop_),
      outside_(loop_, [this] {
          if (model_.isVisible()) dismiss();
      }, std::move(watchActivation)) {
    connect(&panel_->search(), &QLineEdit::textChanged, this, [this](const QString& text) { searchChanged(text); });
}

ClipboardPopupController::~ClipboardPopupController() {
    keyFilter_.remove();
    keyboard_.release();
    outside_.stop();
}

QWidget& ClipboardPopupController::panel() { return *panel_; }
QLineEdit& ClipboardPopupController::searchField() { return panel_->search(); }

std::optional<PopupRect> ClipboardPopupController::visibleFrame() const {
    return popupScreenArea(pointer_);
}

std::string ClipboardPopupController::appName(const std::optional<std::string>& bundleID) {
    if (!bundleID || bundleID->empty()) return {};
    if (const auto cached = appNames_.find(*bundleID); cached != appNames_.end()) return cached->second;
    std::string name;
    if (appNameLookup_) {
        if (auto found = appNameLookup_(*bundleID)) name = std::move(*found);
    }
    if (name.size() > 4 && name.ends_with(".app")) name.resize(name.size() - 4);
    appNames_.emplace(*bundleID, name);
    return name;
}

void ClipboardPopupController::show(QPoint pointer, std::vector<ClipboardItem> items, ClipboardPopupTexts texts) {
    pointer_ = pointer;
    outside_.cancelPendingClose();
    model_.show({static_cast<double>(pointer.x()), static_cast<double>(pointer.y())}, std::move(items),
                std::move(texts));
    settingField_ = true;
    panel_->search().clear();
    settingField_ = false;
    rebuild();
    panel_->scroll().verticalScrollBar()->setValue(0);
    if (panel_->isVisible())
        panel_->raise();
    else
        panel_->show();
    // The field is the focus widget of a window that is never activated: the keys that the
    // grab brings to the window go to it all the same.
    panel_->search().setFocus(Qt::OtherFocusReason);
    keyFilter_.install();
    if (QWindow* window = panel_->windowHandle()) keyboard_.hold(*window);
    scrollLater_ = loop_.postAfter(platform::Duration::zero(), [this] { panel_->scrollToRow(0); });
    // A turn later than that, so that the event that opened the popup does not close it.
    outside_.startAfter(2);
}

void ClipboardPopupController::refresh(std::vector<ClipboardItem> items) {
    model_.refresh(std::move(items));
    rebuild();
    panel_->scrollToRow(model_.selectedIndex());
}

void ClipboardPopupController::dismiss() {
    if (!model_.isVisible()) return;
    keyboard_.release();
    keyFilter_.remove();
    outside_.stop();
    scrollLater_.cancel();
    model_.dismiss();
    if (onDismiss_) onDismiss_();
    panel_->hide();
}

void ClipboardPopupController::rebuild() { panel_->present(model_); }

void ClipboardPopupController::searchChanged(const QString& text) {
    if (settingField_ || !model_.isVisible()) return;
    model_.setSearchText(text.toStdString());
    rebuild();
    panel_->scroll().verticalScrollBar()->setValue(0);
    panel_->scrollToRow(model_.selectedIndex());
}

bool ClipboardPopupController::handleKeyPress(const QKeyEvent& event) {
    const ClipboardPopupOutcome outcome = model_.handleKey(popupKey(event));
    carryOut(outcome);
    return outcome.taken;
}

void ClipboardPopupController::handleRowClick(std::size_t index, int clickCount) {
    if (!model_.isVisible()) return;
    carryOut(model_.click(index, clickCount));
}

void ClipboardPopupController::handlePanelPress(QPoint globalPosition) {
    if (!model_.isVisible()) return;
    outside_.press(panel_->geometry().contains(globalPosition));
}

bool ClipboardPopupController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !model_.isVisible()) return QObject::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    QLineEdit& field = panel_->search();
    if (watched == &field) {
        // The rules first; what they leave is typed into the field, except chords with the
        // Super key: those are the desktop's hotkeys, which the grab keeps from firing.
        if (!handleKeyPress(*key)) {
            if (!(key->modifiers() & Qt::MetaModifier)) return false;
            key->accept();
            return true;
        }
        key->accept();
        return true;
    }
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget) return false;
    if (widget->window() == panel_.get()) {
        // A key the field left climbing to its parents, or one that reached the panel without
        // the field: typed into the field, once.
        if (key->spontaneous() && panel_->focusWidget() != &field) {
            QKeyEvent copy(key->type(), key->key(), key->modifiers(), key->text(), key->isAutoRepeat(),
                           static_cast<ushort>(key->count()));
            QCoreApplication::sendEvent(&field, &copy);
        }
        return true;
    }
    // A key meant for another of our windows while the popup is up: the popup's.
    QKeyEvent copy(key->type(), key->key(), key->modifiers(), key->nativeScanCode(), key->nativeVirtualKey(),
                   key->nativeModifiers(), key->text(), key->isAutoRepeat(), static_cast<ushort>(key->count()));
    QCoreApplication::sendEvent(&field, &copy);
    return true;
}

void ClipboardPopupController::carryOut(const ClipboardPopupOutcome& outcome) {
    switch (outcome.action) {
        case ClipboardPopupAction::none: break;
        case ClipboardPopupAction::selectionChanged:
            panel_->updateHighlight(model_.selectedIndex());
            panel_->scrollToRow(model_.selectedIndex());
            break;
        case ClipboardPopupAction::contentChanged:
            settingField_ = true;
            panel_->search().setText(QString::fromStdString(model_.searchText()));
            settingField_ = false;
            rebuild();
            panel_->scrollToRow(model_.selectedIndex());
            break;
        case ClipboardPopupAction::confirm: {
            const Uuid id = *outcome.id;
            // Closed first: the grab is gone and the target application has the keyboard
            // when the paste arrives.
            dismiss();
            if (onConfirm_) onConfirm_(id);
            break;
        }
        case ClipboardPopupAction::togglePin:
            if (onTogglePin_) onTogglePin_(*outcome.id);
            break;
        case ClipboardPopupAction::remove:
            if (onDelete_) onDelete_(*outcome.id);
            break;
        case ClipboardPopupAction::dismiss: dismiss(); break;
    }
}

}  // namespace orvantis::ui
