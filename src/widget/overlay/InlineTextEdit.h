#pragma once

#include <QColor>
#include <QTextEdit>

namespace zelmor::widget::overlay {

// The box over the overlay in which a text or stamp shape gets its text. Ctrl+Return, and
// Return for a stamp, accept it, as does losing the focus; Escape drops it.
class InlineTextEdit : public QTextEdit
{
    Q_OBJECT
public:
    explicit InlineTextEdit(QWidget* overlay);

    // Shows the box at `pos`, kept inside the overlay, holding `text`: all of it selected for
    // a stamp, the cursor at its end otherwise.
    void open(const QPoint& pos, const QString& text, int tool, const QColor& colour, int fontSize);
    // Shows the text at the size the shape will be drawn with.
    void setFontSize(int fontSize);
    // Hides the box and emits closed(); the text is empty unless accepted. Nothing when hidden.
    void finish(bool accept);

Q_SIGNALS:
    // `tool` is the one the box was opened for.
    void closed(const QString& text, int tool);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void fitToText();

    int m_tool = 0;
    QColor m_colour;
    QPoint m_anchor;
};

} // namespace zelmor::widget::overlay
