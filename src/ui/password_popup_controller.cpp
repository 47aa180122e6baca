#include "ui/password_popup_controller.h"

#include <utility>

#include <QApplication>
#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidget>
#include <QWindow>

#include "core/settings/app_settings.h"
#include "platform/key_output.h"
#include "ui/popup_look.h"

namespace orvantis::ui {

namespace {

constexpr int kButtonSize = 22;
/// X keycode of the C key on PC keyboards, for Ctrl+C in layouts where the key types no C.
constexpr quint32 kNativeKeyC = 54;

/// The symbols of the buttons, drawn so that no icon theme is needed: "eye", "eye.slash" and
/// "arrow.clockwise".
QIcon symbolIcon(std::string_view name, const QColor& color) {
    const qreal ratio = qApp ? qApp->devicePixelRatio() : 1.0;
    QPixmap pixmap(QSize(16, 16) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (name == "arrow.clockwise") {
        const QRectF box(2.5, 2.5, 11, 11);
        painter.drawArc(box, 100 * 16, -300 * 16);
        QPainterPath head;
        head.moveTo(8.5, 0.8);
        head.lineTo(11.2, 2.9);
        head.lineTo(8.2, 4.8);
        painter.drawPath(head);
    } else {
        QPainterPath eye;
        eye.moveTo(1, 8);
        eye.quadTo(8, 1, 15, 8);
        eye.quadTo(8, 15, 1, 8);
        painter.drawPath(eye);
        painter.setBrush(color);
        painter.drawEllipse(QPointF(8, 8), 2.2, 2.2);
        if (name == "eye.slash") {
            painter.setBrush(Qt::NoBrush);
            painter.drawLine(QPointF(2.5, 2.5), QPointF(13.5, 13.5));
        }
    }
    return QIcon(pixmap);
}

QFont monospaceFont(int pixelSize) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(pixelSize);
    return font;
}

}  // namespace

/// The panel: frameless, above the others, never focused. A press anywhere (the pointer grab
/// brings presses outside to it as well) is reported to the controller.
class PasswordPopupPanel final : public QWidget {
public:
    explicit PasswordPopupPanel(PasswordPopupController& controller)
        : QWidget(nullptr, kPopupWindowFlags), controller_(controller) {
        setObjectName(QStringLiteral("passwordPopup"));
        setPopupWindowAttributes(*this);
        setFixedSize(PasswordPopupController::kWidth, PasswordPopupController::kHeight);

        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(16, 12, 16, 14);
        layout->setSpacing(8);

        title = new QLabel(this);
        title->setObjectName(QStringLiteral("passwordPopupTitle"));
        title->setFont(popupPlainFont(13, QFont::DemiBold));
        layout->addWidget(title);

        auto* passwordRow = new QHBoxLayout;
        passwordRow->setSpacing(4);
        password = new QLineEdit(this);
        password->setObjectName(QStringLiteral("passwordPopupPassword"));
        password->setReadOnly(true);
        password->setFont(monospaceFont(14));
        password->setFocusPolicy(Qt::NoFocus);
        passwordRow->addWidget(password, 1);
        reveal = new QToolButton(this);
        reveal->setObjectName(QStringLiteral("passwordPopupReveal"));
        regenerate = new QToolButton(this);
        regenerate->setObjectName(QStringLiteral("passwordPopupRegenerate"));
        for (QToolButton* button : {reveal, regenerate}) {
            button->setFixedSize(kButtonSize, kButtonSize);
            button->setAutoRaise(true);
            button->setFocusPolicy(Qt::NoFocus);
            passwordRow->addWidget(button);
        }
        regenerate->setIcon(symbolIcon("arrow.clockwise", palette().color(QPalette::WindowText)));
        layout->addLayout(passwordRow);

        auto* sliderRow = new QHBoxLayout;
        slider = new QSlider(Qt::Horizontal, this);
        slider->setObjectName(QStringLiteral("passwordPopupLength"));
        slider->setRange(PasswordPopupModel::kSliderMinimum, PasswordPopupModel::kSliderMaximum);
        slider->setFocusPolicy(Qt::NoFocus);
        sliderRow->addWidget(slider, 1);
        length = new QLabel(this);
        length->setObjectName(QStringLiteral("passwordPopupLengthLabel"));
        length->setFont(monospaceFont(13));
        length->setMinimumWidth(24);
        length->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        sliderRow->addWidget(length);
        layout->addLayout(sliderRow);

        auto* classes = new QGridLayout;
        classes->setHorizontalSpacing(12);
        classes->setVerticalSpacing(4);
        const char* names[] = {"passwordPopupUppercase", "passwordPopupLowercase", "passwordPopupDigits",
                               "passwordPopupSymbols"};
        for (int i = 0; i < 4; ++i) {
            boxes[i] = new QCheckBox(this);
            boxes[i]->setObjectName(QString::fromLatin1(names[i]));
            boxes[i]->setFocusPolicy(Qt::NoFocus);
            classes->addWidget(boxes[i], i / 2, i % 2);
        }
        layout->addLayout(classes);
        layout->addStretch(1);

        auto* buttons = new QHBoxLayout;
        buttons->addStretch(1);
        copy = new QPushButton(this);
        copy->setObjectName(QStringLiteral("passwordPopupCopy"));
        paste = new QPushButton(this);
        paste->setObjectName(QStringLiteral("passwordPopupPaste"));
        paste->setDefault(true);
        for (QPushButton* button : {copy, paste}) {
            button->setFocusPolicy(Qt::NoFocus);
            buttons->addWidget(button);
        }
        layout->addLayout(buttons);
    }

    QLabel* title = nullptr;
    QLineEdit* password = nullptr;
    QToolButton* reveal = nullptr;
    QToolButton* regenerate = nullptr;
    QSlider* slider = nullptr;
    QLabel* length = nullptr;
    QCheckBox* boxes[4] = {};
    QPushButton* copy = nullptr;
    QPushButton* paste = nullptr;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        controller_.handlePanelPress(event->globalPosition().toPoint());
    }
    void paintEvent(QPaintEvent*) override { paintPopupFrame(*this); }

private:
    PasswordPopupController& controller_;
};

PasswordPopupController::PasswordPopupController(const PasswordConfig& initial, PasswordGenerator& generator,
                                                 AppSettings& settings, Callbacks callbacks,
                                                 platform::MainLoop& loop, std::unique_ptr<KeyboardGrab> grab,
                                                 OutsideWatch::ActivationWatch watchActivation)
    : model_(initial, generator, settings),
      callbacks_(std::move(callbacks)),
      loop_(loop),
      grab_(grab ? std::move(grab) : KeyboardGrab::none()),
      strings_(SettingsStrings::make(settings.settingsLanguage())),
      panel_(std::make_unique<PasswordPopupPanel>(*this)),
      keyboard_(*grab_, loop_),
      outside_(loop_, [this] { close(); }, std::move(watchActivation)) {
    PasswordPopupPanel& p = *panel_;
    p.setWindowTitle(toQString(strings_.passwordPopupTitle));
    p.title->setText(toQString(strings_.passwordPopupTitle));
    p.copy->setText(toQString(strings_.passwordPopupCopy));
    p.paste->setText(toQString(strings_.passwordPopupPaste));
    p.boxes[0]->setText(toQString(strings_.passwordCharsetUppercase));
    p.boxes[1]->setText(toQString(strings_.passwordCharsetLowercase));
    p.boxes[2]->setText(toQString(strings_.passwordCharsetDigits));
    p.boxes[3]->setText(toQString(strings_.passwordCharsetSymbols));

    connect(p.reveal, &QToolButton::clicked, this, [this] {
        model_.toggleReveal();
        updateControls();
    });
    connect(p.regenerate, &QToolButton::clicked, this, [this] {
        model_.regenerate();
        updateControls();
    });
    connect(p.slider, &QSlider::valueChanged, this, [this](int value) {
        if (updating_) return;
        model_.setLength(value);
        updateControls();
    });
    const PasswordClass classes[] = {PasswordClass::uppercase, PasswordClass::lowercase, PasswordClass::digits,
                                     PasswordClass::symbols};
    for (int i = 0; i < 4; ++i) {
        connect(p.boxes[i], &QCheckBox::toggled, this, [this, which = classes[i]](bool on) {
            if (updating_) return;
            model_.setClass(which, on);
            updateControls();
        });
    }
    connect(p.copy, &QPushButton::clicked, this, [this] { copy(); });
    connect(p.paste, &QPushButton::clicked, this, [this] { paste(); });
    updateControls();
}

PasswordPopupController::~PasswordPopupController() {
    keyFilter_.remove();
    keyboard_.release();
    outside_.stop();
}

void PasswordPopupController::updateControls() {
    updating_ = true;
    PasswordPopupPanel& p = *panel_;
    p.password->setText(QString::fromStdString(model_.displayText()));
    p.password->setCursorPosition(0);
    p.reveal->setIcon(symbolIcon(model_.revealSymbol(), p.palette().color(QPalette::WindowText)));
    p.reveal->setToolTip(toQString(model_.revealDescription()));
    p.reveal->setAccessibleName(toQString(model_.revealDescription()));
    p.regenerate->setAccessibleName(QStringLiteral("Regenerate"));
    p.slider->setValue(model_.sliderValue());
    p.length->setText(QString::number(model_.sliderValue()));
    p.boxes[0]->setChecked(model_.config().includeUppercase);
    p.boxes[1]->setChecked(model_.config().includeLowercase);
    p.boxes[2]->setChecked(model_.config().includeDigits);
    p.boxes[3]->setChecked(model_.config().includeSymbols);
    updating_ = false;
}

void PasswordPopupController::place() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return;
    const QRect area = screen->availableGeometry();
    // Slightly above the centre, wherever the pointer is.
    panel_->move(area.x() + area.width() / 2 - kWidth / 2, area.y() + area.height() / 2 - kHeight / 2 - kRaise);
}

void PasswordPopupController::show() {
    place();
    outside_.cancelPendingClose();
    visible_ = true;
    panel_->show();
    panel_->raise();
    keyFilter_.install();
    if (QWindow* window = panel_->windowHandle()) keyboard_.hold(*window);
    // A turn later than the grab, so that the event that opened the popup does not close it.
    outside_.startAfter(2);
}

void PasswordPopupController::bringToFront() {
    if (!visible_) return;
    panel_->raise();
    if (!keyboard_.isHeld())
        if (QWindow* window = panel_->windowHandle()) keyboard_.hold(*window);
}

void PasswordPopupController::copy() {
    const std::string password = model_.password();
    close();
    if (callbacks_.onCopy) callbacks_.onCopy(password);
}

void PasswordPopupController::paste() {
    const std::string password = model_.password();
    close();
    if (callbacks_.onPaste) callbacks_.onPaste(password);
}

void PasswordPopupController::close() {
    if (!visible_) return;
    visible_ = false;
    keyboard_.release();
    keyFilter_.remove();
    outside_.stop();
    if (callbacks_.onDismiss) callbacks_.onDismiss();
    panel_->hide();
}

bool PasswordPopupController::handleKeyPress(const QKeyEvent& event) {
    std::uint16_t code = 0xFFFF;
    switch (event.key()) {
        case Qt::Key_Return: code = platform::key_code::kReturn; break;
        case Qt::Key_Enter: code = PasswordPopupModel::kKeypadEnter; break;
        case Qt::Key_Space: code = platform::key_code::kSpace; break;
        case Qt::Key_Escape: code = platform::key_code::kEscape; break;
        case Qt::Key_C: code = platform::key_code::kC; break;
        default:
            // Ctrl+C where the key types another letter (a Russian layout): by its position.
            if (event.nativeScanCode() == kNativeKeyC) code = platform::key_code::kC;
            break;
    }
    switch (PasswordPopupModel::actionForKey(code, popupKeyFlags(event.modifiers()))) {
        case PasswordPopupAction::copy: copy(); return true;
        case PasswordPopupAction::paste: paste(); return true;
        case PasswordPopupAction::regenerate:
            model_.regenerate();
            updateControls();
            return true;
        case PasswordPopupAction::close: close(); return true;
        case PasswordPopupAction::none: break;
    }
    return false;
}

void PasswordPopupController::handlePanelPress(QPoint globalPosition) {
    if (!visible_) return;
    outside_.press(panel_->geometry().contains(globalPosition));
}

bool PasswordPopupController::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !visible_) return QObject::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    if (handleKeyPress(*key)) {
        key->accept();
        return true;
    }
    // Other keys are not the popup's; chords with the Super key are kept from firing anywhere.
    return (key->modifiers() & Qt::MetaModifier) != 0;
}

QWidget& PasswordPopupController::panel() { return *panel_; }
QLineEdit& PasswordPopupController::passwordField() { return *panel_->password; }
QToolButton& PasswordPopupController::revealButton() { return *panel_->reveal; }
QToolButton& PasswordPopupController::regenerateButton() { return *panel_->regenerate; }
QSlider& PasswordPopupController::lengthSlider() { return *panel_->slider; }
QLabel& PasswordPopupController::lengthLabel() { return *panel_->length; }
QCheckBox& PasswordPopupController::checkbox(PasswordClass which) { return *panel_->boxes[static_cast<int>(which)]; }
QPushButton& PasswordPopupController::copyButton() { return *panel_->copy; }
QPushButton& PasswordPopupController::pasteButton() { return *panel_->paste; }
QLabel& PasswordPopupController::titleLabel() { return *panel_->title; }

}  // namespace orvantis::ui
