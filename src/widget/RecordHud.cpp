#include "RecordHud.h"

#include "FollowLanguage.h"
#include "StripSurface.h"
#include "Translucency.h"
#include "platform/Session.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace zelmor::widget {

namespace {

constexpr int kFrameMargin = 4; // the frame stands this far outside the region
constexpr int kKeyChipCount = 6;

} // namespace

QPushButton* makeHudButton(QWidget* strip, const QString& text, const QString& border,
                           const QString& hover)
{
    auto* button = new QPushButton(text, strip);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::NoFocus);
    button->setStyleSheet(QStringLiteral("QPushButton { background: rgba(60,60,68,220); "
                                         "color:#e4e4e7;  border:1px solid %1; border-radius:4px; "
                                         "padding:2px 10px; }QPushButton:hover { background: %2; }")
                              .arg(border, hover));
    return button;
}

void paintHudBackground(QWidget* strip)
{
    QPainter painter(strip);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(26, 26, 31, 230));
    painter.setPen(QPen(QColor(76, 194, 255, 90), 1));
    // Without a compositor the corners outside the rounding would show black.
    const qreal radius = Translucency::instance().available() ? 8.0 : 0.0;
    painter.drawRoundedRect(QRectF(strip->rect().adjusted(0, 0, -1, -1)), radius, radius);
}

Qt::WindowFlags recordOverlayFlags()
{
    return Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
           Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint;
}

RecordHud::RecordHud(QWidget* parent) : QWidget(parent, recordOverlayFlags())
{
    setAttribute(Qt::WA_TranslucentBackground);
    m_surface = new StripSurface(this);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("Recording", "record.hud.name"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 6);
    layout->setSpacing(10);
    auto* dot = new QLabel(QStringLiteral("●"), this);
    dot->setStyleSheet(QStringLiteral("color: #%1; font-size: 14px;").arg(0xFFFF3B3Bu, 0, 16));
    dot->setAccessibleName(tr("Recording", "record.hud.name"));
    layout->addWidget(dot);
    m_timeLabel = new QLabel(QStringLiteral("0:00"), this);
    m_timeLabel->setStyleSheet(QStringLiteral(
        "color:#ffffff; font-family:'Cascadia Mono','Consolas',monospace;font-size:13px;"));
    m_timeLabel->setAccessibleName(tr("Elapsed time", "record.hud.elapsed"));
    layout->addWidget(m_timeLabel);
    m_timeLeftLabel = new QLabel(this);
    m_timeLeftLabel->setStyleSheet(QStringLiteral("color:#ffb347; font-size:12px;"));
    m_timeLeftLabel->setAccessibleName(tr("Recording time left", "record.hud.timeLeftName"));
    layout->addWidget(m_timeLeftLabel);
    m_pauseButton =
        makeHudButton(this, tr("Pause", "record.hud.pause"), QStringLiteral("rgba(76,194,255,90)"),
                      QStringLiteral("rgba(76,194,255,70)"));
    m_stopButton =
        makeHudButton(this, tr("Stop", "record.hud.stop"), QStringLiteral("rgba(80,200,120,70)"),
                      QStringLiteral("rgba(80,200,120,120)"));
    m_cancelButton =
        makeHudButton(this, tr("Cancel", "record.hud.cancel"), QStringLiteral("rgba(255,90,90,70)"),
                      QStringLiteral("rgba(255,90,90,120)"));
    for (QPushButton* button : {m_pauseButton, m_stopButton, m_cancelButton})
        layout->addWidget(button);
    connect(m_pauseButton, &QPushButton::clicked, this, &RecordHud::pauseRequested);
    connect(m_stopButton, &QPushButton::clicked, this, &RecordHud::stopRequested);
    connect(m_cancelButton, &QPushButton::clicked, this, &RecordHud::cancelRequested);
    layout->addSpacing(8);
    m_keysLabel = new QLabel(this);
    m_keysLabel->setStyleSheet(QStringLiteral(
        "color:#c8c8d0; font-family:'Cascadia Mono','Consolas',monospace;font-size:12px;"));
    m_keysLabel->setAccessibleName(tr("Keys pressed", "record.hud.keys"));
    // Room for six chips of common keys from the start, so that the strip never changes size;
    // the strip itself is always as wide as its contents, in every language.
    m_keysLabel->ensurePolished();
    const QString sample = QStringList(kKeyChipCount, QStringLiteral("[Shift]")).join(' ');
    m_keysLabel->setFixedWidth(m_keysLabel->fontMetrics().horizontalAdvance(sample));
    layout->addWidget(m_keysLabel);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setTimeLeft(-1);
    followLanguage(this, [this, dot] {
        setAccessibleName(tr("Recording", "record.hud.name"));
        dot->setAccessibleName(accessibleName());
        m_timeLabel->setAccessibleName(tr("Elapsed time", "record.hud.elapsed"));
        m_keysLabel->setAccessibleName(tr("Keys pressed", "record.hud.keys"));
        setPaused(m_paused);
        m_timeLeftLabel->setAccessibleName(tr("Recording time left", "record.hud.timeLeftName"));
        setTimeLeft(m_timeLeft);
        m_stopButton->setText(tr("Stop", "record.hud.stop"));
        m_cancelButton->setText(tr("Cancel", "record.hud.cancel"));
    });
    connect(&Translucency::instance(), &Translucency::availableChanged, this,
            qOverload<>(&QWidget::update));
}

void RecordHud::setElapsed(int secs)
{
    const int minutes = secs / 60;
    m_timeLabel->setText(
        QStringLiteral("%1:%2").arg(minutes).arg(secs - minutes * 60, 2, 10, QLatin1Char('0')));
}

void RecordHud::setPaused(bool paused)
{
    m_paused = paused;
    m_pauseButton->setText(paused ? tr("Resume", "record.hud.resume")
                                  : tr("Pause", "record.hud.pause"));
}

void RecordHud::setTimeLeft(int secs)
{
    m_timeLeft = secs;
    // Room for the longest text from the start, so that the strip keeps its size.
    m_timeLeftLabel->ensurePolished();
    m_timeLeftLabel->setFixedWidth(m_timeLeftLabel->fontMetrics().horizontalAdvance(
        tr("%1 s left", "record.hud.timeLeft").arg(29)));
    m_timeLeftLabel->setText(secs < 0 ? QString()
                                      : tr("%1 s left", "record.hud.timeLeft").arg(secs));
}

void RecordHud::setKeyChips(const QStringList& labels)
{
    QStringList chips;
    for (const QString& label : labels)
        chips << QStringLiteral("[%1]").arg(label);
    // Longer names give way at the oldest end.
    m_keysLabel->setText(m_keysLabel->fontMetrics().elidedText(
        chips.join(QLatin1Char(' ')), Qt::ElideLeft, m_keysLabel->width()));
}

void RecordHud::setVisible(bool visible)
{
    if (m_surface->setShown(visible)) return;
    QWidget::setVisible(visible);
}

void RecordHud::paintEvent(QPaintEvent*)
{
    paintHudBackground(this);
}

RecordRegionFrame::RecordRegionFrame(const QRect& region, QWidget* parent)
    : QWidget(parent, recordOverlayFlags() | Qt::WindowTransparentForInput)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setGeometry(region.adjusted(-kFrameMargin, -kFrameMargin, kFrameMargin, kFrameMargin));
    // Only the ring is window: the region shows through even where no compositor blends.
    const QRect all(QPoint(), size());
    setMask(QRegion(all) -
            QRegion(all.adjusted(kFrameMargin, kFrameMargin, -kFrameMargin, -kFrameMargin)));
}

void RecordRegionFrame::setVisible(bool visible)
{
    QWidget::setVisible(visible && !platform::desktopPlacesWindows());
}

void RecordRegionFrame::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect r = rect().adjusted(0, 0, -1, -1);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 160), 1));
    painter.drawRect(r);
    painter.setPen(QPen(QColor(76, 194, 255, 220), 2));
    painter.drawRect(r.adjusted(1, 1, -1, -1));
}

} // namespace zelmor::widget
