#include "HotkeyEdit.h"

#include "core/HotkeyState.h"

#include <QKeyEvent>

namespace zelmor::widget::settings {

namespace {

bool isModifierKey(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
           key == Qt::Key_Meta || key == Qt::Key_AltGr || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R || key == Qt::Key_Hyper_L || key == Qt::Key_Hyper_R ||
           key == Qt::Key_unknown;
}

} // namespace

HotkeyEdit::HotkeyEdit(const QKeySequence& sequence, QWidget* parent)
    : QKeySequenceEdit(sequence, parent)
{}

HotkeyEdit::~HotkeyEdit()
{
    holdHotkeys(false);
}

bool HotkeyEdit::event(QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool plain =
            !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
        if (plain && (key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab)) {
            focusNextPrevChild(key->key() == Qt::Key_Tab &&
                               !(key->modifiers() & Qt::ShiftModifier));
            return true;
        }
    }
    return QKeySequenceEdit::event(event);
}

void HotkeyEdit::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (isModifierKey(key)) return; // the rest of the combination is still to come
    if (event->modifiers() == Qt::NoModifier &&
        (key == Qt::Key_Backspace || key == Qt::Key_Delete)) {
        clear();
        Q_EMIT committed(QKeySequence());
        return;
    }
    QKeySequenceEdit::keyPressEvent(event);
    if (keySequence().isEmpty()) return;
    // A hotkey is one combination: recording ends with the first instead of waiting for chords.
    const QKeySequence typed(keySequence()[0]);
    setKeySequence(typed);
    Q_EMIT committed(typed);
}

void HotkeyEdit::focusInEvent(QFocusEvent* event)
{
    holdHotkeys(true);
    QKeySequenceEdit::focusInEvent(event);
}

void HotkeyEdit::focusOutEvent(QFocusEvent* event)
{
    QKeySequenceEdit::focusOutEvent(event);
    holdHotkeys(false);
}

void HotkeyEdit::holdHotkeys(bool hold)
{
    if (hold == m_holding) return;
    m_holding = hold;
    if (hold)
        core::HotkeyState::instance().suspend();
    else
        core::HotkeyState::instance().resume();
}

} // namespace zelmor::widget::settings
