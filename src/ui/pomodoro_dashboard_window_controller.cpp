#include "ui/pomodoro_dashboard_window_controller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/strings/settings_strings.h"

namespace orvantis::ui {
namespace dash = pomodoro_dashboard;
namespace {

QString qs(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

QColor accent(const QWidget* w) { return w->palette().color(QPalette::Highlight); }
QColor separatorColour(const QWidget* w) { return w->palette().color(QPalette::Mid); }
QColor secondaryLabel(const QWidget* w) { return w->palette().color(QPalette::PlaceholderText); }
QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}
const QColor kSystemGreen(52, 199, 89);

SettingsLanguage languageOf(const AppSettings& settings) { return settings.get(settings::kSettingsLanguage); }

/// A pin, drawn: the head, the needle; filled when pinned.
QIcon pinIcon(bool pinned, const QColor& colour) {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    QPen pen(colour, 2.5);
    p.setPen(pen);
    p.setBrush(pinned ? QBrush(colour) : Qt::NoBrush);
    p.translate(16, 16);
    p.rotate(45);
    p.drawRoundedRect(QRectF(-6, -13, 12, 12), 2, 2);
    p.drawLine(QPointF(-9, -1), QPointF(9, -1));
    p.drawLine(QPointF(0, -1), QPointF(0, 13));
    p.end();
    return QIcon(pixmap);
}

}  // namespace

// ---- ring ----

PomodoroRingView::PomodoroRingView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ring"));
    setFixedSize(160, 160);
    timeLabel_ = new QLabel(this);
    timeLabel_->setObjectName(QStringLiteral("timeLabel"));
    QFont timeFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    timeFont.setPixelSize(32);
    timeFont.setWeight(QFont::Medium);
    timeLabel_->setFont(timeFont);
    timeLabel_->setAlignment(Qt::AlignCenter);
    phaseLabel_ = new QLabel(this);
    phaseLabel_->setObjectName(QStringLiteral("phaseLabel"));
    QFont phaseFont = font();
    phaseFont.setPixelSize(10);
    phaseFont.setWeight(QFont::DemiBold);
    phaseLabel_->setFont(phaseFont);
    phaseLabel_->setAlignment(Qt::AlignCenter);
    QPalette palette = phaseLabel_->palette();
    palette.setColor(QPalette::WindowText, accent(this));
    phaseLabel_->setPalette(palette);
}

void PomodoroRingView::resizeEvent(QResizeEvent*) {
    const int h = timeLabel_->sizeHint().height();
    timeLabel_->setGeometry(0, height() / 2 - h + 6, width(), h);
    phaseLabel_->setGeometry(0, height() / 2 + 8, width(), phaseLabel_->sizeHint().height());
}

void PomodoroRingView::update(double progress, const QString& timeText, const QString& phaseText, bool active) {
    progress_ = std::clamp(progress, 0.0, 1.0);
    active_ = active;
    timeLabel_->setText(timeText);
    phaseLabel_->setText(phaseText);
    QWidget::update();
}

void PomodoroRingView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPointF centre = QRectF(rect()).center();
    const double r = std::min(width(), height()) / 2.0 - 4;
    const QRectF circle(centre.x() - r, centre.y() - r, 2 * r, 2 * r);
    p.setPen(QPen(withAlpha(separatorColour(this), 0.45), 5));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(circle);
    if (progress_ > 0) {
        QPen arc(active_ ? accent(this) : secondaryLabel(this), 5);
        arc.setCapStyle(Qt::RoundCap);
        p.setPen(arc);
        // From the top, clockwise (Qt's angles run counter-clockwise, in 1/16 degrees).
        p.drawArc(circle, 90 * 16, -static_cast<int>(std::lround(progress_ * 360 * 16)));
    }
    p.setPen(QPen(separatorColour(this), 1));
    for (int i = 0; i < 12; ++i) {
        const double a = i * M_PI / 6;
        const QPointF direction(std::cos(a), -std::sin(a));
        p.drawLine(centre + direction * (r - 2), centre + direction * (r - 6));
    }
}

// ---- dots ----

PomodoroSessionDotsView::PomodoroSessionDotsView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("sessionDotsView"));
    setFixedHeight(static_cast<int>(dash::kDotsIntrinsicHeight));
}

void PomodoroSessionDotsView::setSessions(int current, int total) {
    current_ = current;
    total_ = total;
    updateGeometry();
    update();
}

QSize PomodoroSessionDotsView::sizeHint() const {
    return {static_cast<int>(dash::dotsIntrinsicWidth(total_)) + 4, static_cast<int>(dash::kDotsIntrinsicHeight)};
}

void PomodoroSessionDotsView::paintEvent(QPaintEvent*) {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.translate(2, 0);
    for (int i = 1; i <= total_; ++i) {
        const dash::Rect r = dash::dotRect(i, height());
        const QRectF oval(r.x, r.y, r.width, r.height);
        p.setPen(Qt::NoPen);
        switch (dash::dotFill(i, current_)) {
            case dash::DotFill::finished: p.setBrush(withAlpha(accent(this), 0.45)); break;
            case dash::DotFill::current: p.setBrush(accent(this)); break;
            case dash::DotFill::upcoming: p.setBrush(separatorColour(this)); break;
        }
        p.drawEllipse(oval);
        if (i == current_) {
            const dash::Rect ring = dash::currentDotRing(i, height());
            p.setBrush(Qt::NoBrush);
            p.setPen(QPen(withAlpha(accent(this), 0.35), 1));
            p.drawEllipse(QRectF(ring.x, ring.y, ring.width, ring.height));
        }
    }
}

// ---- heat map ----

PomodoroHeatmapView::PomodoroHeatmapView(std::function<SettingsLanguage()> language, QWidget* parent)
    : QWidget(parent), language_(std::move(language)) {
    setObjectName(QStringLiteral("heatmapView"));
    setMouseTracking(true);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

PomodoroHeatmapView::~PomodoroHeatmapView() { delete tooltipPanel_; }

void PomodoroHeatmapView::setCounts(std::map<TimePoint, int> counts, TimePoint today, PomodoroCalendar calendar) {
    counts_ = std::move(counts);
    today_ = today;
    calendar_ = std::move(calendar);
    update();
}

int PomodoroHeatmapView::heightForWidth(int width) const {
    return static_cast<int>(std::ceil(dash::heatmapIntrinsicHeight(dash::heatmapCellSize(width))));
}

QSize PomodoroHeatmapView::sizeHint() const { return {336, heightForWidth(336)}; }

void PomodoroHeatmapView::paintEvent(QPaintEvent*) {
    if (!calendar_) return;
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    const double cell = dash::heatmapCellSize(width());
    const TimePoint monday = dash::heatmapMonday(today_, *calendar_);
    for (int c = 0; c < dash::kHeatmapWeeks; ++c) {
        for (int r = 0; r < 7; ++r) {
            const auto date = dash::heatmapCellDate(c, r, monday, today_, *calendar_);
            if (!date) continue;
            const auto found = counts_.find(*date);
            const dash::HeatColour colour = dash::heatColour(found == counts_.end() ? 0 : found->second);
            p.setBrush(withAlpha(colour.base == dash::HeatColour::Base::green ? kSystemGreen : separatorColour(this),
                                 colour.alpha));
            const dash::Rect rect = dash::heatmapCellRect(c, r, cell);
            p.drawRoundedRect(QRectF(rect.x, rect.y, rect.width, rect.height), dash::kHeatmapCornerRadius,
                              dash::kHeatmapCornerRadius);
        }
    }
}

std::optional<QString> PomodoroHeatmapView::tooltipTextAt(QPoint point) const {
    if (!calendar_) return std::nullopt;
    const double cell = dash::heatmapCellSize(width());
    const auto at = dash::heatmapCellAt({static_cast<double>(point.x()), static_cast<double>(point.y())}, cell);
    if (!at) return std::nullopt;
    const auto date = dash::heatmapCellDate(at->first, at->second, dash::heatmapMonday(today_, *calendar_), today_,
                                            *calendar_);
    if (!date) return std::nullopt;
    const auto found = counts_.find(*date);
    const int count = found == counts_.end() ? 0 : found->second;
    return QString::fromStdString(
        dash::tooltipText(*date, count, language_ ? language_() : SettingsLanguage::en, *calendar_));
}

void PomodoroHeatmapView::showTooltipAt(QPoint point) {
    const auto text = tooltipTextAt(point);
    if (!text) {
        hideTooltip();
        return;
    }
    if (!tooltipPanel_) {
        tooltipPanel_ = new QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
        tooltipPanel_->setObjectName(QStringLiteral("heatmapTooltip"));
        tooltipPanel_->setAttribute(Qt::WA_TranslucentBackground);
        tooltipPanel_->setAttribute(Qt::WA_TransparentForMouseEvents);
        tooltipPanel_->setAttribute(Qt::WA_ShowWithoutActivating);
        tooltipPanel_->setStyleSheet(
            QStringLiteral("QLabel { background: rgba(0,0,0,209); color: white; border-radius: 5px; "
                           "padding: 4px 8px; }"));
        tooltipLabel_ = new QLabel(tooltipPanel_);
        QFont f = tooltipLabel_->font();
        f.setPixelSize(11);
        f.setWeight(QFont::Medium);
        tooltipLabel_->setFont(f);
    }
    tooltipLabel_->setText(*text);
    tooltipLabel_->ensurePolished();
    // The label's own measure, padding included, less the padding that the frame adds back.
    const QSize hint = tooltipLabel_->sizeHint();
    const QSize textSize(hint.width() - 16, hint.height() - 8);
    const QPoint global = mapToGlobal(point);
    const QScreen* screen = QGuiApplication::screenAt(global);
    const QRect visible = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
    const dash::Rect frame =
        dash::tooltipFrame(textSize.width(), textSize.height(), {static_cast<double>(global.x()), static_cast<double>(global.y())},
                           {static_cast<double>(visible.x()), static_cast<double>(visible.y()),
                            static_cast<double>(visible.width()), static_cast<double>(visible.height())});
    tooltipPanel_->setGeometry(static_cast<int>(frame.x), static_cast<int>(frame.y), static_cast<int>(frame.width),
                               static_cast<int>(frame.height));
    tooltipLabel_->setGeometry(0, 0, static_cast<int>(frame.width), static_cast<int>(frame.height));
    tooltipPanel_->show();
    tooltipPanel_->raise();
}

void PomodoroHeatmapView::hideTooltip() {
    if (tooltipPanel_) tooltipPanel_->hide();
}

void PomodoroHeatmapView::mouseMoveEvent(QMouseEvent* event) { showTooltipAt(event->position().toPoint()); }
void PomodoroHeatmapView::leaveEvent(QEvent*) { hideTooltip(); }
void PomodoroHeatmapView::hideEvent(QHideEvent*) { hideTooltip(); }

// ---- window ----

PomodoroDashboardWindowController::PomodoroDashboardWindowController(PomodoroCoordinator& coordinator,
                                                                     std::function<PomodoroCalendar()> calendar,
                                                                     std::function<void()> onClosed)
    : QWidget(nullptr, Qt::Window), coordinator_(coordinator), calendar_(std::move(calendar)),
      onClosed_(std::move(onClosed)) {
    setObjectName(QStringLiteral("pomodoroDashboard"));
    buildUI();
    applyPin();
    coordinator_.onDashboardStateChange = [this] { refresh(); };
    refresh();
}

PomodoroDashboardWindowController::~PomodoroDashboardWindowController() {
    coordinator_.onDashboardStateChange = nullptr;
}

QWidget* PomodoroDashboardWindowController::statColumn(const QString& title, QLabel*& value) {
    auto* column = new QWidget(this);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    value = new QLabel(column);
    QFont valueFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    valueFont.setPixelSize(18);
    valueFont.setWeight(QFont::Medium);
    value->setFont(valueFont);
    value->setAlignment(Qt::AlignCenter);
    auto* caption = new QLabel(title, column);
    QFont captionFont = font();
    captionFont.setPixelSize(10);
    captionFont.setWeight(QFont::Medium);
    caption->setFont(captionFont);
    caption->setAlignment(Qt::AlignCenter);
    QPalette palette = caption->palette();
    palette.setColor(QPalette::WindowText, secondaryLabel(this));
    caption->setPalette(palette);
    layout->addWidget(value);
    layout->addWidget(caption);
    return column;
}

void PomodoroDashboardWindowController::buildUI() {
    AppSettings& settings = coordinator_.settings();
    const SettingsStrings s = SettingsStrings::make(languageOf(settings));
    setWindowTitle(qs(s.pomodoroDashboardTitle));
    resize(380, 560);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(20, 36, 20, 16);
    root->setSpacing(12);

    pinButton_ = new QToolButton(this);
    pinButton_->setObjectName(QStringLiteral("pinButton"));
    pinButton_->setAutoRaise(true);
    pinButton_->setFixedSize(22, 22);
    pinButton_->setIconSize(QSize(16, 16));
    pinButton_->setToolTip(qs(s.pomodoroDashboardPinTooltip));
    connect(pinButton_, &QToolButton::clicked, this, [this] { pinClicked(); });

    ring_ = new PomodoroRingView(this);
    root->addWidget(ring_, 0, Qt::AlignHCenter);

    auto* transport = new QHBoxLayout;
    transport->setSpacing(10);
    primaryButton_ = new QPushButton(this);
    primaryButton_->setObjectName(QStringLiteral("primaryButton"));
    primaryButton_->setMinimumHeight(32);
    skipButton_ = new QPushButton(style()->standardIcon(QStyle::SP_MediaSkipForward), qs(s.pomodoroDashboardSkip), this);
    skipButton_->setObjectName(QStringLiteral("skipButton"));
    resetButton_ = new QPushButton(style()->standardIcon(QStyle::SP_BrowserReload), qs(s.pomodoroDashboardReset), this);
    resetButton_->setObjectName(QStringLiteral("resetButton"));
    connect(primaryButton_, &QPushButton::clicked, this, [this] { primaryClicked(); });
    connect(skipButton_, &QPushButton::clicked, this, [this] { coordinator_.skipPhase(); });
    connect(resetButton_, &QPushButton::clicked, this, [this] { coordinator_.resetPhase(); });
    transport->addStretch();
    transport->addWidget(primaryButton_);
    transport->addWidget(skipButton_);
    transport->addWidget(resetButton_);
    transport->addStretch();
    root->addLayout(transport);

    auto* sessionRow = new QHBoxLayout;
    sessionRow->setSpacing(8);
    sessionDotsView_ = new PomodoroSessionDotsView(this);
    sessionLabel_ = new QLabel(this);
    sessionLabel_->setObjectName(QStringLiteral("sessionLabel"));
    sessionRow->addStretch();
    sessionRow->addWidget(sessionDotsView_);
    sessionRow->addWidget(sessionLabel_);
    sessionRow->addStretch();
    root->addLayout(sessionRow);

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFixedHeight(1);
    root->addWidget(line);

    auto* stats = new QHBoxLayout;
    stats->addWidget(statColumn(qs(s.pomodoroDashboardToday), todayValueLabel_));
    stats->addWidget(statColumn(qs(s.pomodoroDashboardFocused), focusedValueLabel_));
    stats->addWidget(statColumn(qs(s.pomodoroDashboardThisWeek), weekValueLabel_));
    todayValueLabel_->setObjectName(QStringLiteral("todayValueLabel"));
    focusedValueLabel_->setObjectName(QStringLiteral("focusedValueLabel"));
    weekValueLabel_->setObjectName(QStringLiteral("weekValueLabel"));
    root->addLayout(stats);

    dndCheckbox_ = new QCheckBox(qs(s.pomodoroDashboardDND), this);
    dndCheckbox_->setObjectName(QStringLiteral("dndCheckbox"));
    dndCheckbox_->setToolTip(qs(s.pomodoroDashboardDNDHint));
    QFont small = dndCheckbox_->font();
    small.setPixelSize(11);
    dndCheckbox_->setFont(small);
    connect(dndCheckbox_, &QCheckBox::toggled, this,
            [this](bool on) { coordinator_.settings().set(settings::kPomodoroToggleDND, on); });
    auto* hint = new QLabel(qs(s.pomodoroDashboardDNDHint), this);
    hint->setWordWrap(true);
    hint->setFont(small);
    QPalette hintPalette = hint->palette();
    hintPalette.setColor(QPalette::WindowText, secondaryLabel(this));
    hint->setPalette(hintPalette);
    root->addWidget(dndCheckbox_);
    root->addWidget(hint);

    root->addStretch();
    heatmapView_ = new PomodoroHeatmapView([&settings] { return languageOf(settings); }, this);
    root->addWidget(heatmapView_);

    pinButton_->move(380 - 10 - 22, 10);
    pinButton_->raise();
}

void PomodoroDashboardWindowController::refresh() {
    AppSettings& settings = coordinator_.settings();
    PomodoroCalendar calendar = calendar_ ? calendar_() : PomodoroCalendar::current();
    dash::View view = dash::makeView(coordinator_.currentState(), coordinator_.currentSessionInCycle(),
                                     PomodoroCoordinator::kSessionsPerCycle, settings, coordinator_.history(), calendar);
    ring_->update(view.progress, QString::fromStdString(view.timeText), QString::fromStdString(view.phaseText),
                  view.ringActive);
    primaryButton_->setText(QString::fromStdString(view.primaryTitle));
    primaryButton_->setIcon(style()->standardIcon(view.primary == dash::PrimaryAction::pause ? QStyle::SP_MediaPause
                                                                                              : QStyle::SP_MediaPlay));
    skipButton_->setEnabled(view.transportEnabled);
    resetButton_->setEnabled(view.transportEnabled);
    sessionDotsView_->setSessions(view.sessionCurrent, view.sessionTotal);
    sessionLabel_->setText(QString::fromStdString(view.sessionText));
    todayValueLabel_->setText(QString::fromStdString(view.todayText));
    focusedValueLabel_->setText(QString::fromStdString(view.focusedText));
    weekValueLabel_->setText(QString::fromStdString(view.weekText));
    const auto today = calendar.startOfDay(coordinator_.history().clock().wallNow());
    heatmapView_->setCounts(std::move(view.counts), today, std::move(calendar));
    const QSignalBlocker blocker(dndCheckbox_);
    dndCheckbox_->setChecked(view.focusChecked);
    refreshPinButton();
}

void PomodoroDashboardWindowController::primaryClicked() {
    if (!coordinator_.currentState().isActive())
        coordinator_.startSession();
    else
        coordinator_.togglePauseResume();
}

void PomodoroDashboardWindowController::pinClicked() {
    AppSettings& settings = coordinator_.settings();
    settings.set(settings::kPomodoroDashboardPinned, !settings.get(settings::kPomodoroDashboardPinned));
    applyPin();
    refreshPinButton();
}

void PomodoroDashboardWindowController::applyPin() {
    const bool pinned = coordinator_.settings().get(settings::kPomodoroDashboardPinned);
    const bool wasVisible = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, pinned);  // hides a shown window
    if (wasVisible) show();
}

void PomodoroDashboardWindowController::refreshPinButton() {
    const bool pinned = coordinator_.settings().get(settings::kPomodoroDashboardPinned);
    pinButton_->setIcon(pinIcon(pinned, pinned ? accent(this) : secondaryLabel(this)));
    pinButton_->setChecked(pinned);
}

void PomodoroDashboardWindowController::bringToFront() {
    resize(380, 560);
    refresh();
    show();
    raise();
    activateWindow();
}

void PomodoroDashboardWindowController::closeEvent(QCloseEvent* event) {
    heatmapView_->hideTooltip();
    coordinator_.onDashboardStateChange = nullptr;
    event->accept();
    if (onClosed_) onClosed_();
}

}  // namespace orvantis::ui
