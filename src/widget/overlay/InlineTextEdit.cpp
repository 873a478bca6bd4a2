#include "InlineTextEdit.h"

#include "OverlayTools.h"

#include <QKeyEvent>

namespace zelmor::widget::overlay {

namespace {

constexpr QSize kMinimumBox(240, 90);

} // namespace

InlineTextEdit::InlineTextEdit(QWidget* overlay) : QTextEdit(overlay)
{
    setObjectName(QStringLiteral("inlineTextEdit"));
    setAcceptRichText(false);
    // The shape is drawn without wrapping: the box grows with its lines instead.
    setLineWrapMode(QTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFixedSize(kMinimumBox);
    connect(this, &QTextEdit::textChanged, this, &InlineTextEdit::fitToText);
    hide();
}

void InlineTextEdit::open(const QPoint& pos, const QString& text, int tool, const QColor& colour,
                          int fontSize)
{
    m_tool = tool;
    m_colour = colour;
    m_anchor = pos;
    setFontSize(fontSize);
    setPlainText(text);
    if (tool == kStampTool) {
        selectAll();
    } else {
        moveCursor(QTextCursor::End);
    }
    show();
    raise();
    setFocus();
}

// The size goes into the box's own style sheet: the application's sheet names a font size for
// every widget, which would win over setFont() and show the text smaller than it is drawn.
void InlineTextEdit::setFontSize(int fontSize)
{
    setStyleSheet(
        QStringLiteral("QTextEdit { background: rgba(255,255,255,228); color: %1;"
                       " border: 1px solid rgba(76,194,255,210); border-radius: 4px;"
                       " padding: 4px 6px; selection-background-color: rgba(76,194,255,120);"
                       " font-size: %2pt; font-weight: bold; }")
            .arg(m_colour.name())
            .arg(fontSize));
    fitToText();
}

void InlineTextEdit::fitToText()
{
    const QWidget* overlay = parentWidget();
    const QSize text = document()->size().toSize();
    const QSize chrome = size() - viewport()->size();
    const QSize box = QSize(qMax(kMinimumBox.width(), text.width() + chrome.width()),
                            qMax(kMinimumBox.height(), text.height() + chrome.height()))
                          .boundedTo(overlay->size());
    setFixedSize(box);
    move(qMax(0, qMin(m_anchor.x(), overlay->width() - box.width())),
         qMax(0, qMin(m_anchor.y(), overlay->height() - box.height())));
}

void InlineTextEdit::finish(bool accept)
{
    if (!isVisible()) return;
    const QString text = accept ? toPlainText().trimmed() : QString();
    hide();
    const int tool = m_tool;
    m_tool = 0;
    Q_EMIT closed(text, tool);
}

void InlineTextEdit::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && ((event->modifiers() & Qt::ControlModifier) || m_tool == kStampTool)) {
        finish(true);
    } else if (event->key() == Qt::Key_Escape) {
        finish(false);
    } else {
        QTextEdit::keyPressEvent(event); // Return alone makes a new line in a text
    }
}

void InlineTextEdit::focusOutEvent(QFocusEvent* event)
{
    finish(true);
    QTextEdit::focusOutEvent(event);
}

} // namespace zelmor::widget::overlay
