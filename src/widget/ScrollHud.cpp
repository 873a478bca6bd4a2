#include "ScrollHud.h"

#include "FollowLanguage.h"
#include "RecordHud.h"
#include "StripSurface.h"
#include "Translucency.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include <algorithm>

namespace zelmor::widget {

ScrollHud::ScrollHud(QWidget* parent) : QWidget(parent, recordOverlayFlags())
{
    setAttribute(Qt::WA_TranslucentBackground);
    m_surface = new StripSurface(this);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setAccessibleName(tr("Scroll capture", "record.scroll.saved"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 6);
    layout->setSpacing(10);
    m_heightLabel = new QLabel(tr("Stitched 0 px", "scroll.hud.height"), this);
    m_heightLabel->setStyleSheet(QStringLiteral(
        "color:#ffffff; font-family:'Cascadia Mono','Consolas',monospace;font-size:13px;"));
    m_heightLabel->setAccessibleName(tr("Stitched height", "scroll.hud.heightName"));
    layout->addWidget(m_heightLabel);
    m_stopButton =
        makeHudButton(this, tr("Stop", "scroll.hud.stop"), QStringLiteral("rgba(80,200,120,70)"),
                      QStringLiteral("rgba(80,200,120,120)"));
    m_cancelButton =
        makeHudButton(this, tr("Cancel", "scroll.hud.cancel"), QStringLiteral("rgba(255,90,90,70)"),
                      QStringLiteral("rgba(255,90,90,120)"));
    layout->addWidget(m_stopButton);
    layout->addWidget(m_cancelButton);
    connect(m_stopButton, &QPushButton::clicked, this, &ScrollHud::stopRequested);
    connect(m_cancelButton, &QPushButton::clicked, this, &ScrollHud::cancelRequested);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    followLanguage(this, [this] {
        setAccessibleName(tr("Scroll capture", "record.scroll.saved"));
        m_heightLabel->setAccessibleName(tr("Stitched height", "scroll.hud.heightName"));
        m_heightLabel->setText(labelText());
        fitLabelWidth();
        m_stopButton->setText(tr("Stop", "scroll.hud.stop"));
        m_cancelButton->setText(tr("Cancel", "scroll.hud.cancel"));
    });
    connect(&Translucency::instance(), &Translucency::availableChanged, this,
            qOverload<>(&QWidget::update));
}

// Wide enough for a height of seven digits and for the notices, in the current language, so
// that the strip keeps its width while the label changes.
void ScrollHud::fitLabelWidth()
{
    m_heightLabel->ensurePolished();
    const QFontMetrics metrics = m_heightLabel->fontMetrics();
    m_heightLabel->setMinimumWidth(std::max({metrics.horizontalAdvance(heightText(9999999)),
                                             metrics.horizontalAdvance(savingText()),
                                             metrics.horizontalAdvance(tooFastText())}));
}

QString ScrollHud::heightText(int px)
{
    return tr("Stitched %1 px", "scroll.hud.height.fmt").arg(px);
}

QString ScrollHud::savingText()
{
    return tr("Saving…", "scroll.hud.saving");
}

QString ScrollHud::tooFastText()
{
    return tr("scrolled too fast — scroll back a little", "scroll.hud.tooFast");
}

QString ScrollHud::labelText() const
{
    if (m_saving) return savingText();
    return m_tooFast ? tooFastText() : heightText(m_height);
}

void ScrollHud::setStitchedHeight(int px)
{
    m_height = px;
    m_heightLabel->setText(labelText());
}

void ScrollHud::setTooFast(bool tooFast)
{
    m_tooFast = tooFast;
    m_heightLabel->setText(labelText());
}

void ScrollHud::setSaving(bool saving)
{
    m_saving = saving;
    m_stopButton->setEnabled(!saving);
    m_cancelButton->setEnabled(!saving);
    setCursor(saving ? Qt::BusyCursor : Qt::ArrowCursor);
    m_heightLabel->setText(labelText());
}

void ScrollHud::setVisible(bool visible)
{
    if (m_surface->setShown(visible)) return;
    QWidget::setVisible(visible);
}

void ScrollHud::paintEvent(QPaintEvent*)
{
    paintHudBackground(this);
}

} // namespace zelmor::widget
