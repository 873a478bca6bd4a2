#include "InlineTextEdit.h"

#include "OverlayTools.h"

#include <QKeyEvent>

namespace zelmor::widget::overlay {

namespace {

constexpr QSize kBoxSize(240, 90);

} // namespace

InlineTextEdit::InlineTextEdit(QWidget* overlay) : QTextEdit(overlay)
{
    setObjectName(QStringLiteral("inlineTextEdit"));
    setAcceptRichText(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFixedSize(kBoxSize);
    hide();
}

void InlineTextEdit::open(const QPoint& pos, const QString& text, int tool, const QColor& colour,
                          int fontSize)
{
    m_tool = tool;
    setPlainText(text);
    setFontSize(fontSize);
    setStyleSheet(
        QStringLiteral("QTextEdit { background: rgba(255,255,255,228); color: %1;"
                       " border: 1px solid rgba(76,194,255,210); border-radius: 4px;"
                       " padding: 4px 6px; selection-background-color: rgba(76,194,255,120); }")
            .arg(colour.name()));
    const QWidget* overlay = parentWidget();
    move(qMax(0, qMin(pos.x(), overlay->width() - kBoxSize.width())),
         qMax(0, qMin(pos.y(), overlay->height() - kBoxSize.height())));
    if (tool == kStampTool) {
        selectAll();
    } else {
        moveCursor(QTextCursor::End);
    }
    show();
    raise();
    setFocus();
}

void InlineTextEdit::setFontSize(int fontSize)
{
    QFont f = font();
    f.setPointSize(qBound(8, fontSize, 40));
    f.setWeight(QFont::Bold);
    setFont(f);
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
