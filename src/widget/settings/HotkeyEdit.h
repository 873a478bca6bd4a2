#pragma once

#include <QKeySequenceEdit>

namespace zelmor::widget::settings {

// Records the one key combination of a global hotkey. It keeps its value until a whole
// combination is typed, so that a modifier pressed alone (Shift before Tab, Alt before F4)
// changes nothing; Backspace or Delete alone clears it, and Tab or Shift+Tab move on. While
// it has the focus the global hotkeys are let go, so that a key bound already reaches it.
class HotkeyEdit : public QKeySequenceEdit
{
    Q_OBJECT
public:
    explicit HotkeyEdit(const QKeySequence& sequence, QWidget* parent = nullptr);
    ~HotkeyEdit() override;

Q_SIGNALS:
    // A finished combination, or an empty sequence when the user cleared the field.
    void committed(const QKeySequence& sequence);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void holdHotkeys(bool hold);

    bool m_holding = false;
};

} // namespace zelmor::widget::settings
