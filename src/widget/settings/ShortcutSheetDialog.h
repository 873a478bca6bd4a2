#pragma once

#include <QDialog>

class QTableWidget;

namespace zelmor::widget {

// The global hotkeys as they are stored when the sheet opens; an open sheet does not follow
// later remaps.
class ShortcutSheetDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ShortcutSheetDialog(QWidget* parent = nullptr);

    QTableWidget* table() const { return m_table; }

private:
    QTableWidget* m_table;
};

} // namespace zelmor::widget
