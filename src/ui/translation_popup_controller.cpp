#include "ui/translation_popup_controller.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include "platform/key_output.h"
#include "ui/popup_look.h"

namespace orvantis::ui {
namespace {

using Model = TranslationPopupModel;

/// Key code of keypad Enter, which confirms like Return.
constexpr std::uint16_t kKeypadEnterCode = 76;
/// Stands for the keys that the popup has no rule for.
constexpr std::uint16_t kNoKeyCode = 0xFFFF;

QFont optionFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(13);
    return font;
}

/// Lays `text` out in `font`, wrapped to `width` at word boundaries or, inside a word longer
/// than a line, anywhere. Answers the height of the lines.
double layOut(QTextLayout& layout, double width) {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, height));
        height += line.height();
    }
    layout.endLayout();
    return std::ceil(height);
}

PopupTextMetrics textMetrics() {
    return {
        .singleLineWidth =
            [](std::string_view text) { return QFontMetricsF(optionFont()).horizontalAdvance(toQString(text)); },
        .wrappedHeight =
            [](std::string_view text, double width) {
                QTextLayout layout(toQString(text), optionFont());
                return layOut(layout, width);
            },
    };
}

PopupKey popupKey(const QKeyEvent& event) {
    PopupKey key;
    switch (event.key()) {
        case Qt::Key_Return: key.keyCode = platform::key_code::kReturn; break;
        case Qt::Key_Enter: key.keyCode = kKeypadEnterCode; break;
        case Qt::Key_Tab:
        case Qt::Key_Backtab: key.keyCode = platform::key_code::kTab; break;
        case Qt::Key_Escape: key.keyCode = platform::key_code::kEscape; break;
        case Qt::Key_Down: key.keyCode = platform::key_code::kDownArrow; break;
        case Qt::Key_Up: key.keyCode = platform::key_code::kUpArrow; break;
        default: key.keyCode = kNoKeyCode; break;
    }
    key.flags = popupKeyFlags(event.modifiers());
    // Qt names the key pressed, before Ctrl: Ctrl+1 is Key_1, in every layout with digits there.
    if (event.key() >= Qt::Key_0 && event.key() <= Qt::Key_9)
        key.charactersIgnoringModifiers = std::string(1, static_cast<char>('0' + (event.key() - Qt::Key_0)));
    else
        key.charactersIgnoringModifiers = event.text().toStdString();
    return key;
}

/// A small spinning arc. Its timer only paints, so it is Qt's own rather than the main loop's.
class Spinner final : public QWidget {
public:
    explicit Spinner(QWidget* parent) : QWidget(parent) {
        setFixedSize(14, 14);
        timer_.setInterval(80);
        QObject::connect(&timer_, &QTimer::timeout, this, [this] {
            angle_ = (angle_ + 30) % 360;
            update();
        });
    }

protected:
    void showEvent(QShowEvent*) override { timer_.start(); }
    void hideEvent(QHideEvent*) override { timer_.stop(); }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF box = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
        QColor track = popupSecondaryColor(palette());
        track.setAlphaF(0.25f);
        painter.setPen(QPen(track, 2));
        painter.drawEllipse(box);
        painter.setPen(QPen(popupSecondaryColor(palette()), 2, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(box, -angle_ * 16, 100 * 16);
    }

private:
    QTimer timer_;
    int angle_ = 0;
};

/// A row of fixed height with one centred or leading message: the loading and error rows.
QWidget* makeMessageRow(QWidget* parent, const char* objectName, const QString& text, bool withSpinner) {
    auto* row = new QWidget(parent);
    row->setObjectName(QString::fromLatin1(objectName));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(10, 0, 10, 0);
    layout->setSpacing(6);
    if (withSpinner) layout->addWidget(new Spinner(row));
    auto* label = new QLabel(text, row);
    label->setObjectName(QStringLiteral("message"));
    label->setFont(popupPlainFont(13));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, popupSecondaryColor(palette));
    label->setPalette(palette);
    if (withSpinner) {
        layout->addWidget(label, 1);
    } else {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label, 1);
    }
    return row;
}

}  // namespace

/// One numbered option: the highlight, the number and the wrapped text, drawn by hand so the
/// text wraps exactly as the model measured it. A press selects, a double click confirms.
class OptionRowView final : public QWidget {
public:
    OptionRowView(QWidget* parent, TranslationPopupController& controller, std::size_t index, QString text)
        : QWidget(parent), controller_(controller), index_(index), text_(std::move(text)) {
        setObjectName(QStringLiteral("translationPopupOption"));
        setProperty("index", static_cast<qulonglong>(index));
        setProperty("text", text_);
        setFocusPolicy(Qt::NoFocus);
    }

    void setHighlighted(bool highlighted) {
        if (highlighted == highlighted_) return;
        highlighted_ = highlighted;
        setProperty("highlighted", highlighted);
        update();
    }
    bool isHighlighted() const { return highlighted_; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette& pal = palette();
        if (highlighted_) {
            QPainterPath shape;
            shape.addRoundedRect(QRectF(rect()).adjusted(4, 1, -4, -1), 5, 5);
            painter.fillPath(shape, pal.color(QPalette::Highlight));
        }
        const QColor textColor = highlighted_ ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::WindowText);
        const QColor numberColor = highlighted_ ? pal.color(QPalette::HighlightedText) : popupSecondaryColor(pal);

        const double top = Model::kLabelVerticalInset;
        const QFont labelFont = optionFont();
        const double firstLine = QFontMetricsF(labelFont).height();
        painter.setFont(popupNumberFont());
        painter.setPen(numberColor);
        painter.drawText(QRectF(Model::kRowLeadingInset, top, Model::kNumberWidth, firstLine), Qt::AlignCenter,
                         QString::number(index_ + 1));

        QTextLayout layout(text_, labelFont);
        layOut(layout, width() - Model::kRowChrome);
        painter.setPen(textColor);
        layout.draw(&painter, QPointF(Model::kRowLeadingInset + Model::kNumberWidth + Model::kNumberGap, top));
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton)
            controller_.handleRowClick(index_, 1);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton)
            controller_.handleRowClick(index_, 2);
    }

private:
    TranslationPopupController& controller_;
    std::size_t index_;
    QString text_;
    bool highlighted_ = false;
};

/// The footer: a separator line and one line of small grey text, cut at the end.
class HintRowView final : public QWidget {
public:
    explicit HintRowView(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("translationPopupHint"));
        setFocusPolicy(Qt::NoFocus);
    }
    void setText(QString text) {
        text_ = std::move(text);
        setProperty("text", text_);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QColor line = palette().color(QPalette::WindowText);
        line.setAlphaF(0.12f);
        painter.fillRect(QRect(0, 0, width(), 1), line);
        const QFont font = popupPlainFont(10);
        painter.setFont(font);
        painter.setPen(popupSecondaryColor(palette()));
        const QRect area = rect().adjusted(10, 1, -10, 0);
        painter.drawText(area, Qt::AlignCenter, QFontMetrics(font).elidedText(text_, Qt::ElideRight, area.width()));
    }

private:
    QString text_;
};

/// The window: frameless, above other windows, never focused, kept out of the window
/// manager's hands so it neither takes the focus nor gets decorated or moved.
class TranslationPopupPanel final : public QWidget {
public:
    explicit TranslationPopupPanel(TranslationPopupController& controller)
        : QWidget(nullptr, kPopupWindowFlags), controller_(controller) {
        setObjectName(QStringLiteral("translationPopup"));
        setPopupWindowAttributes(*this);
        setFocusPolicy(Qt::NoFocus);
        setAutoFillBackground(false);
        loading_ = makeMessageRow(this, "translationPopupLoading", QStringLiteral("Translating…"), true);
        error_ = makeMessageRow(this, "translationPopupError", QString(), false);
        hint_ = new HintRowView(this);
        loading_->hide();
        error_->hide();
        hint_->hide();
    }

    /// Shows what the model says, at the model's frame.
    void present(const TranslationPopupModel& model) {
        const PopupRect& frame = model.frame();
        const int width = static_cast<int>(std::lround(frame.width));
        const int height = static_cast<int>(std::lround(frame.height));
        if (model.isVisible())
            setGeometry(static_cast<int>(std::lround(frame.x)), static_cast<int>(std::lround(frame.y)), width, height);

        const auto state = model.state();
        const bool rowsChanged = state != TranslationPopupState::list || shownOptions_ != model.options();
        if (rowsChanged) {
            qDeleteAll(rows_);
            rows_.clear();
            shownOptions_.clear();
        }
        const int rowHeight = static_cast<int>(Model::kRowHeight);
        int y = static_cast<int>(Model::kVerticalInsets / 2);
        loading_->setVisible(state == TranslationPopupState::loading);
        error_->setVisible(state == TranslationPopupState::error);
        if (state == TranslationPopupState::loading) {
            loading_->setGeometry(0, y, width, rowHeight);
            y += rowHeight;
        } else if (state == TranslationPopupState::error) {
            error_->findChild<QLabel*>(QStringLiteral("message"))->setText(toQString(model.errorMessage()));
            error_->setGeometry(0, y, width, rowHeight);
            y += rowHeight;
        } else if (state == TranslationPopupState::list) {
            if (rowsChanged) {
                shownOptions_ = model.options();
                for (std::size_t i = 0; i < shownOptions_.size(); ++i) {
                    auto* row = new OptionRowView(this, controller_, i, toQString(shownOptions_[i].displayText));
                    rows_.push_back(row);
                    row->show();
                }
            }
            for (std::size_t i = 0; i < rows_.size(); ++i) {
                const int h = static_cast<int>(std::lround(model.optionRowHeight(i)));
                rows_[i]->setGeometry(0, y, width, h);
                y += h;
            }
            updateHighlight(model.selectedIndex());
        }
        const auto& hint = model.footerHint();
        hint_->setVisible(model.isVisible() && hint.has_value());
        if (hint) {
            hint_->setText(toQString(*hint));
            const int hintHeight = static_cast<int>(Model::kHintHeight);
            // Below the rows; kept inside the panel when the rows run past its height limit.
            const int hintTop = std::min(y, height - static_cast<int>(Model::kVerticalInsets / 2) - hintHeight);
            hint_->setGeometry(0, hintTop, width, hintHeight);
            hint_->raise();
        }
        update();
    }

    void updateHighlight(std::size_t selected) {
        for (std::size_t i = 0; i < rows_.size(); ++i) rows_[i]->setHighlighted(i == selected);
    }

protected:
    bool event(QEvent* event) override {
        // Keys reach the controller through its application-wide filter; none of them may
        // move a focus chain here (Tab).
        if (event->type() == QEvent::KeyPress) return true;
        return QWidget::event(event);
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton || event->button() == Qt::RightButton)
            controller_.handlePanelPress(event->globalPosition().toPoint());
    }
    void paintEvent(QPaintEvent*) override {
        paintPopupFrame(*this);
    }

private:
    TranslationPopupController& controller_;
    QWidget* loading_ = nullptr;
    QWidget* error_ = nullptr;
    HintRowView* hint_ = nullptr;
    std::vector<OptionRowView*> rows_;
    std::vector<PopupOption> shownOptions_;
};

TranslationPopupController::TranslationPopupController(platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                                                       ActivationWatch watchActivation)
    : loop_(loop),
      grab_(grab ? std::move(grab) : KeyboardGrab::none()),
      model_(textMetrics(), [this] { return visibleFrame(); }),
      panel_(std::make_unique<TranslationPopupPanel>(*this)),
      keyboard_(*grab_, loop_),
      outside_(loop_, [this] {
          if (model_.isVisible()) dismiss();
      }, std::move(watchActivation)) {}

TranslationPopupController::~TranslationPopupController() {
    keyFilter_.remove();
    keyboard_.release();
    outside_.stop();
}

QWidget& TranslationPopupController::panel() { return *panel_; }

bool TranslationPopupController::isVisible() const { return model_.isVisible(); }

std::optional<PopupRect> TranslationPopupController::visibleFrame() const {
    return popupScreenArea(pointer_);
}

void TranslationPopupController::show(QPoint pointer) {
    pointer_ = pointer;
    errorDismissal_.cancel();
    outside_.cancelPendingClose();
    model_.show({static_cast<double>(pointer.x()), static_cast<double>(pointer.y())});
    applyModel();
    // A window that is mapped anew goes on top of the others; one still shown is lifted.
    if (panel_->isVisible())
        panel_->raise();
    else
        panel_->show();
    keyFilter_.install();
    if (QWindow* window = panel_->windowHandle()) keyboard_.hold(*window);
    // One turn later, so that an activation under way while showing does not close the popup.
    outside_.startAfter(1);
}

void TranslationPopupController::showOptions(std::vector<PopupOption> options) {
    model_.showOptions(std::move(options));
    applyModel();
}

void TranslationPopupController::setFooterHint(std::optional<std::string> hint) {
    model_.setFooterHint(std::move(hint));
    applyModel();
}

void TranslationPopupController::showError(const std::string& message) {
    model_.showError(message);
    applyModel();
    errorDismissal_ = loop_.postAfter(std::chrono::seconds(Model::kErrorDismissDelaySeconds), [this] { dismiss(); });
}

void TranslationPopupController::dismiss() {
    if (!model_.isVisible()) return;
    keyboard_.release();
    keyFilter_.remove();
    outside_.stop();
    errorDismissal_.cancel();
    model_.dismiss();
    applyModel();
    // Out of sight before anyone hears of it, so a callback that shows the popup again works.
    panel_->hide();
    if (onDismiss_) onDismiss_();
}

bool TranslationPopupController::handleKeyPress(const QKeyEvent& event) {
    const PopupOutcome outcome = model_.handleKey(popupKey(event));
    carryOut(outcome);
    return outcome.taken;
}

void TranslationPopupController::handleRowClick(std::size_t index, int clickCount) {
    if (!model_.isVisible()) return;
    carryOut(model_.click(index, clickCount));
}

bool TranslationPopupController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !model_.isVisible()) return QObject::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    // A key passed on climbs from widget to parent and comes by again: a key that the popup
    // does not take changes nothing, so looking at it twice is harmless.
    const bool taken = handleKeyPress(*key);
    key->setAccepted(taken);
    return taken;
}

void TranslationPopupController::handlePanelPress(QPoint globalPosition) {
    if (!model_.isVisible()) return;
    outside_.press(panel_->geometry().contains(globalPosition));
}

void TranslationPopupController::carryOut(const PopupOutcome& outcome) {
    switch (outcome.action) {
        case PopupAction::none: break;
        case PopupAction::selectionChanged: panel_->updateHighlight(model_.selectedIndex()); break;
        case PopupAction::confirm: confirm(outcome.value); break;
        case PopupAction::dismiss: dismiss(); break;
        case PopupAction::tab:
            if (onTabPressed_) onTabPressed_();
            break;
    }
}

void TranslationPopupController::confirm(const std::string& value) {
    // Closed first: the grab is gone and the target application has the keyboard when the
    // text goes in.
    dismiss();
    if (onConfirm_) onConfirm_(value);
}

void TranslationPopupController::applyModel() { panel_->present(model_); }

}  // namespace orvantis::ui
