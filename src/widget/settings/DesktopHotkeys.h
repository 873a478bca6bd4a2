#pragma once

#include <QList>
#include <QString>

class QVBoxLayout;

namespace zelmor::widget::settings {

struct HotkeyLabel
{
    const char* name; // the setting's name, without "hotkeys/"
    QString label;    // as its field shows it, without the colon
};

// Where only the desktop binds global keys: a card that says so and gives what to bind, on sway
// the lines of its configuration. It follows the keys of the hotkey fields.
void addDesktopBindingsCard(QVBoxLayout* page, const QList<HotkeyLabel>& hotkeys);

// What the card shows: the command of each action, or sway's lines.
QString desktopBindingsText(const QList<HotkeyLabel>& hotkeys);

} // namespace zelmor::widget::settings
