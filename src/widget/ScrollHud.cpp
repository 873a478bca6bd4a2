#include "ScrollHud.h"

#include "RecordHud.h"
#include "Translucency.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace zelmor::widget {

ScrollHud::ScrollHud(QWidget* parent) : QWidget(parent, recordOverlayFlags())
{
    setAttribute(Qt::WA_TranslucentBackground);
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
    QPushButton* stop =
        makeHudButton(this, tr("Stop", "scroll.hud.stop"), QStringLiteral("rgba(80,200,120,70)"),
                      QStringLiteral("rgba(80,200,120,120)"));
    QPushButton* cancel =
        makeHudButton(this, tr("Cancel", "scroll.hud.cancel"), QStringLiteral("rgba(255,90,90,70)"),
                      QStringLiteral("rgba(255,90,90,120)"));
    layout->addWidget(stop);
    layout->addWidget(cancel);
    connect(stop, &QPushButton::clicked, this, &ScrollHud::stopRequested);
    connect(cancel, &QPushButton::clicked, this, &ScrollHud::cancelRequested);
    adjustSize();
    setMinimumWidth(280);
    connect(&Translucency::instance(), &Translucency::availableChanged, this,
            qOverload<>(&QWidget::update));
}

void ScrollHud::setStitchedHeight(int px)
{
    m_heightLabel->setText(tr("Stitched %1 px", "scroll.hud.height.fmt").arg(px));
}

void ScrollHud::paintEvent(QPaintEvent*)
{
    paintHudBackground(this);
}

} // namespace zelmor::widget
