#include "OverlayPanels.h"

#include "OverlayGeometry.h"
#include "service/capture/AnnotationShape.h"
#include "widget/ControlName.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

namespace zelmor::widget::overlay {

namespace {

// A text of the panels with its key. The tables write the context out in full: lupdate reads
// only literals.
struct Text
{
    const char* source;
    const char* comment;

    QString translated() const { return OverlayPanels::tr(source, comment); }
};

struct ButtonSpec
{
    OverlayPanels::Action action;
    const char* name;
    Text tooltip;
    const char* icon; // null: the button shows its text
    int spacingAfter; // 0: none
};

// In layout order; the combo boxes stand between Cancel and Start.
const ButtonSpec kActionButtons[] = {
    {OverlayPanels::Copy, "copy",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Copy", "overlay.btn.copy"),
     "overlay/copy", 0},
    {OverlayPanels::Pin, "pin",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Pin", "overlay.btn.pin"),
     "overlay/pin", 0},
    {OverlayPanels::Save, "save",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Save", "overlay.btn.save"),
     "overlay/save", 4},
    {OverlayPanels::Ocr, "ocr",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Extract Text (OCR)",
                        "overlay.btn.ocr"),
     "overlay/ocr", 0},
    {OverlayPanels::Translate, "translate",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Translate Image",
                        "overlay.btn.translate"),
     "overlay/translate", 0},
    {OverlayPanels::AiAnnotate, "aiAnnotate",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "AI Auto Annotate UI",
                        "overlay.btn.aiAnnotate"),
     "overlay/ai_annotate", 4},
    {OverlayPanels::Undo, "undo",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Undo", "overlay.btn.undo"),
     "annotate/undo", 0},
    {OverlayPanels::Redo, "redo",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Redo", "overlay.btn.redo"),
     "annotate/redo", 4},
    {OverlayPanels::Reselect, "reselect",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Reselect",
                        "overlay.btn.reselect"),
     "overlay/reselect", 4},
    {OverlayPanels::Cancel, "cancel",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Cancel", "overlay.btn.cancel"),
     "overlay/cancel", 0},
    {OverlayPanels::Start, "start",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Start", "overlay.btn.start"),
     "overlay/start", 0},
    {OverlayPanels::AutoScroll, "autoScroll",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Scroll for me",
                        "overlay.btn.autoScroll"),
     nullptr, 0},
};

struct ToolSpec
{
    const char* name;
    Text tooltip;
};

const ToolSpec kTools[] = {
    {"select", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Select / Move",
                                  "annotate.tool.select")},
    {"rect", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Rectangle",
                                "annotate.tool.rect")},
    {"ellipse", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Ellipse",
                                   "annotate.tool.ellipse")},
    {"arrow",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Arrow", "annotate.tool.arrow")},
    {"line",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Line", "annotate.tool.line")},
    {"brush",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Brush", "annotate.tool.brush")},
    {"highlight", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Highlighter",
                                     "annotate.tool.highlight")},
    {"mosaic", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Mosaic",
                                  "annotate.tool.mosaic")},
    {"blur",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Blur", "annotate.tool.blur")},
    {"text",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Text", "annotate.tool.text")},
    {"counter", QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Counter",
                                   "annotate.tool.counter")},
    {"stamp",
     QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Stamp", "annotate.tool.stamp")},
};

// Spoken and shown for the palette's swatches, in the palette's order.
const Text kColourNames[] = {
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Red", "overlay.colour.red"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Yellow", "overlay.colour.yellow"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Green", "overlay.colour.green"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Blue", "overlay.colour.blue"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Orange", "overlay.colour.orange"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Pink", "overlay.colour.pink"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Purple", "overlay.colour.purple"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Black", "overlay.colour.black"),
    QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "White", "overlay.colour.white"),
};

struct ComboItem
{
    Text text;
    int value;
};

const ComboItem kDurations[] = {
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "Manual", "overlay.dur.manual"),
     0},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "5s", "overlay.dur.5s"), 5},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "10s", "overlay.dur.10s"), 10},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "15s", "overlay.dur.15s"), 15},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "30s", "overlay.dur.30s"), 30},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "1 min", "overlay.dur.1m"), 60},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "2 min", "overlay.dur.2m"), 120},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "5 min", "overlay.dur.5m"), 300},
};

const ComboItem kFrameRates[] = {
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "8 fps", "overlay.fps.8"), 8},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "10 fps", "overlay.fps.10"), 10},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "15 fps", "overlay.fps.15"), 15},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "24 fps", "overlay.fps.24"), 24},
    {QT_TRANSLATE_NOOP3("zelmor::widget::overlay::OverlayPanels", "30 fps", "overlay.fps.30"), 30},
};

QToolButton* makeButton(QWidget* parent, const QString& objectName, const QString& tooltip,
                        const QString& icon, QSize size)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(objectName);
    setTipAndName(button, tooltip);
    if (!icon.isEmpty())
        button->setIcon(QIcon(QStringLiteral(":/icons/") + icon + QStringLiteral(".svg")));
    button->setIconSize(QSize(18, 18));
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedSize(size);
    return button;
}

QToolButton* makeTextButton(QWidget* parent, const QString& objectName, const QString& text)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(objectName);
    button->setText(text);
    button->setAccessibleName(text);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setStyleSheet(QStringLiteral("QToolButton { color: #ffffff; padding: 0 8px; }"));
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::NoFocus);
    button->setFixedHeight(30);
    return button;
}

QWidget* makePanel(QWidget* overlay, const char* objectName)
{
    auto* panel = new QWidget(overlay);
    panel->setObjectName(QLatin1String(objectName));
    panel->setAttribute(Qt::WA_StyledBackground);
    panel->hide();
    return panel;
}

QComboBox* makeCombo(QWidget* parent, const ComboItem* items, int count, const QString& tooltip,
                     int width)
{
    auto* combo = new QComboBox(parent);
    for (int i = 0; i < count; ++i)
        combo->addItem(items[i].text.translated(), items[i].value);
    combo->setCurrentIndex(0);
    setTipAndName(combo, tooltip);
    combo->setFixedWidth(width);
    combo->setFocusPolicy(Qt::NoFocus);
    return combo;
}

} // namespace

OverlayPanels::OverlayPanels(QWidget* overlay) : QObject(overlay)
{
    buildActionBar(overlay);
    buildAnnotationBar(overlay);
    buildSidePanel(overlay);
}

void OverlayPanels::buildActionBar(QWidget* overlay)
{
    m_actionBar = makePanel(overlay, "captureToolbar");
    auto* row = new QHBoxLayout(m_actionBar);
    row->setContentsMargins(6, 4, 6, 4);
    m_actionButtons.resize(AutoScroll + 1);
    for (const ButtonSpec& spec : kActionButtons) {
        if (spec.action == Start) {
            m_duration = makeCombo(m_actionBar, kDurations, int(std::size(kDurations)),
                                   tr("Recording duration", "overlay.label.duration"), 86);
            m_fps = makeCombo(m_actionBar, kFrameRates, int(std::size(kFrameRates)),
                              tr("Frame rate", "overlay.label.fps"), 80);
            row->addWidget(m_duration);
            row->addWidget(m_fps);
            row->addSpacing(6);
        }
        QToolButton* button =
            spec.icon
                ? makeButton(m_actionBar, QLatin1String(spec.name), spec.tooltip.translated(),
                             QLatin1String(spec.icon), QSize(32, 30))
                : makeTextButton(m_actionBar, QLatin1String(spec.name), spec.tooltip.translated());
        const int action = spec.action;
        connect(button, &QToolButton::clicked, this,
                [this, action] { Q_EMIT actionTriggered(action); });
        m_actionButtons[spec.action] = button;
        row->addWidget(button);
        if (spec.spacingAfter) row->addSpacing(spec.spacingAfter);
    }
}

void OverlayPanels::buildAnnotationBar(QWidget* overlay)
{
    m_annotationBar = makePanel(overlay, "captureAnnToolbar");
    auto* row = new QHBoxLayout(m_annotationBar);
    row->setContentsMargins(6, 4, 6, 4);
    for (int tool = 0; tool < int(std::size(kTools)); ++tool) {
        const QString name = QLatin1String(kTools[tool].name);
        QToolButton* button = makeButton(m_annotationBar, name, kTools[tool].tooltip.translated(),
                                         QStringLiteral("annotate/") + name, QSize(30, 30));
        button->setCheckable(true);
        connect(button, &QToolButton::clicked, this, [this, tool] { Q_EMIT toolPicked(tool); });
        m_toolButtons.append(button);
        row->addWidget(button);
        if (tool == 0) row->addSpacing(4);
    }
    row->addSpacing(6);

    const auto& palette = service::capture::annotationPalette();
    for (int i = 0; i < int(palette.size()); ++i) {
        const QColor colour = QColor::fromRgba(palette[i].argb);
        QToolButton* button = makeButton(m_annotationBar, QStringLiteral("palette%1").arg(i + 1),
                                         kColourNames[i].translated(), QString(), QSize(22, 22));
        button->setCheckable(true);
        button->setAutoExclusive(true);
        button->setChecked(i == 0);
        button->setProperty("rgb", colour);
        button->setStyleSheet(
            QStringLiteral("QToolButton { background: %1; border: 1px solid rgba(255,255,255,80);"
                           " border-radius: 11px; }"
                           "QToolButton:hover { border: 1px solid rgba(255,255,255,180); }"
                           "QToolButton:checked { border: 2px solid #ffffff; }")
                .arg(colour.name(QColor::HexArgb)));
        connect(button, &QToolButton::clicked, this,
                [this, colour] { Q_EMIT colourPicked(colour); });
        m_paletteButtons.append(button);
        row->addWidget(button);
    }
    row->addSpacing(6);

    m_widthBox = new QSpinBox(m_annotationBar);
    m_widthBox->setRange(1, 40);
    m_widthBox->setFixedWidth(48);
    setTipAndName(m_widthBox, tr("Pen width", "annotate.label.width"));
    connect(m_widthBox, &QSpinBox::valueChanged, this,
            [this](int v) { Q_EMIT penWidthEdited(qBound(1, v, 40)); });
    m_fontBox = new QSpinBox(m_annotationBar);
    m_fontBox->setRange(8, 96);
    m_fontBox->setFixedWidth(48);
    setTipAndName(m_fontBox, tr("Font size", "annotate.label.font"));
    m_fontBox->setEnabled(false);
    connect(m_fontBox, &QSpinBox::valueChanged, this,
            [this](int v) { Q_EMIT fontSizeEdited(qBound(8, v, 96)); });
    row->addWidget(m_widthBox);
    row->addWidget(m_fontBox);
}

void OverlayPanels::buildSidePanel(QWidget* overlay)
{
    m_sidePanel = makePanel(overlay, "captureSidePanel");
    auto* column = new QVBoxLayout(m_sidePanel);
    column->setContentsMargins(10, 10, 10, 10);
    m_sizeLabel = new QLabel(QStringLiteral("--"), m_sidePanel);
    m_posLabel = new QLabel(QStringLiteral("--"), m_sidePanel);
    m_magPreview = new QLabel(m_sidePanel);
    m_magPreview->setFixedSize(120, 120);
    m_magPreview->setStyleSheet(
        QStringLiteral("background: #000; border: 1px solid #4CC2FF; border-radius: 4px;"));
    column->addWidget(m_sizeLabel);
    column->addWidget(m_posLabel);
    column->addWidget(m_magPreview, 0, Qt::AlignCenter);
}

QToolButton* OverlayPanels::actionButton(Action action) const
{
    return m_actionButtons.value(action);
}

QToolButton* OverlayPanels::toolButton(int tool) const
{
    return m_toolButtons.value(tool);
}

QToolButton* OverlayPanels::paletteButton(int digit) const
{
    return m_paletteButtons.value(digit - 1);
}

void OverlayPanels::showTool(int tool)
{
    for (int i = 0; i < m_toolButtons.size(); ++i)
        m_toolButtons[i]->setChecked(i == tool);
    m_fontBox->setEnabled(tool >= 9 && tool <= 11);
}

QColor OverlayPanels::pickPaletteColour(int digit)
{
    QToolButton* button = paletteButton(digit);
    if (!button) return QColor();
    button->setChecked(true);
    return button->property("rgb").value<QColor>();
}

void OverlayPanels::setPenWidth(int width)
{
    m_widthBox->setValue(width);
}

void OverlayPanels::setFontSize(int size)
{
    m_fontBox->setValue(size);
}

void OverlayPanels::setButtonsForMode(int mode)
{
    const bool region = mode == 0;
    for (Action a : {Copy, Pin, Save, Ocr, AiAnnotate, Undo, Redo, Reselect})
        m_actionButtons[a]->setVisible(region);
    // In the recording and scrolling modes Translate keeps whatever the layout gave it.
    if (region) m_actionButtons[Translate]->setVisible(true);
    m_actionButtons[Cancel]->setVisible(true);
    m_duration->setVisible(mode == 1);
    m_fps->setVisible(mode == 1);
    m_actionButtons[Start]->setVisible(!region);
    m_actionButtons[AutoScroll]->setVisible(mode == 2);
}

void OverlayPanels::hideAll()
{
    m_actionBar->hide();
    m_annotationBar->hide();
    m_sidePanel->hide();
}

void OverlayPanels::place(const QRect& selection, const QSize& overlaySize, bool withAnnotationBar)
{
    m_actionBar->adjustSize();
    QSize annotationSize;
    if (withAnnotationBar) {
        m_annotationBar->adjustSize();
        annotationSize = m_annotationBar->size();
    }
    const ToolbarPlacement placement =
        placeToolbars(selection, overlaySize, m_actionBar->size(), annotationSize);
    m_actionBar->move(placement.actionBar);
    m_actionBar->show();
    m_actionBar->raise();
    m_annotationBar->setVisible(withAnnotationBar);
    if (withAnnotationBar) {
        m_annotationBar->move(placement.annotationBar);
        m_annotationBar->raise();
    }
    QRect toolbars = m_actionBar->geometry();
    if (withAnnotationBar) toolbars |= m_annotationBar->geometry();
    m_sidePanel->adjustSize();
    m_sidePanel->move(placeSidePanel(selection, overlaySize, m_sidePanel->size(), toolbars));
    m_sidePanel->show();
    m_sidePanel->raise();
}

void OverlayPanels::refreshSidePanel(const QString& sizeHtml, const QString& position,
                                     const QPixmap& preview)
{
    m_sizeLabel->setText(sizeHtml);
    m_posLabel->setText(position);
    m_magPreview->setPixmap(preview);
}

int OverlayPanels::durationSecs() const
{
    return m_duration->currentData().toInt();
}

int OverlayPanels::fps() const
{
    return m_fps->currentData().toInt();
}

} // namespace zelmor::widget::overlay
