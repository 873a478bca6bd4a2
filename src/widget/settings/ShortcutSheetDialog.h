#pragma once

#include <QDialog>

class QTableWidget;

namespace zelmor::widget {

// The global hotkeys as they are stored when the sheet opens, beside the keys of the capture
// overlay. An open sheet does not follow later remaps.
class ShortcutSheetDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ShortcutSheetDialog(QWidget* parent = nullptr);

    // What the hotkey of settings name `hotkey` ("region") does, as the sheet names it.
    static QString hotkeyTitle(const QString& hotkey);

    QTableWidget* table() const { return m_table; }
    QTableWidget* overlayTable() const { return m_overlayTable; }

private:
    QTableWidget* m_table = nullptr;
    QTableWidget* m_overlayTable = nullptr;
};

} // namespace zelmor::widget
