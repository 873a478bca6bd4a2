#include "ShortcutSheetDialog.h"

#include "core/ConfigManager.h"
#include "widget/FollowLanguage.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

struct SheetRow
{
    struct
    {
        const char* source;
        const char* comment;
    } text;
    const char* hotkey;
};

// The context is written out in full: lupdate reads only literals.
const SheetRow kRows[] = {
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Capture region",
                        "shortcutSheet.row.region"),
     "region"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Capture fullscreen",
                        "shortcutSheet.row.fullscreen"),
     "fullscreen"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Capture window",
                        "shortcutSheet.row.window"),
     "window"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Delayed capture",
                        "shortcutSheet.row.delayed"),
     "delayed"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Record GIF",
                        "shortcutSheet.row.gif"),
     "gif"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Scroll capture",
                        "shortcutSheet.row.scroll"),
     "scroll"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Toggle pin click-through",
                        "shortcutSheet.row.pinClickThru"),
     "pinClickThrough"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Pin from clipboard",
                        "shortcutSheet.row.pinClip"),
     "pinFromClipboard"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Open history",
                        "shortcutSheet.row.history"),
     "history"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Shortcut cheat sheet",
                        "shortcutSheet.row.sheet"),
     "shortcutSheet"},
};

QTableWidgetItem* readOnlyItem(const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled);
    return item;
}

} // namespace

ShortcutSheetDialog::ShortcutSheetDialog(QWidget* parent)
    : QDialog(parent), m_table(new QTableWidget(this))
{
    setMinimumWidth(420);
    auto* layout = new QVBoxLayout(this);
    auto* hint = new QLabel;
    hint->setObjectName(QStringLiteral("fieldHint"));
    layout->addWidget(hint);

    m_table->setColumnCount(2);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionMode(QAbstractItemView::NoSelection);
    m_table->setFocusPolicy(Qt::NoFocus);
    m_table->setRowCount(int(std::size(kRows)));
    const core::ConfigManager& config = core::ConfigManager::instance();
    int row = 0;
    for (const SheetRow& sheetRow : kRows) {
        m_table->setItem(row, 0, readOnlyItem(QString()));
        m_table->setItem(row, 1, readOnlyItem(config.hotkey(sheetRow.hotkey)));
        ++row;
    }
    followLanguage(this, [this, hint] {
        setWindowTitle(tr("Zelmor — Shortcut cheat sheet", "shortcutSheet.title"));
        hint->setText(
            tr("Current global hotkeys. Remap them in Settings → Hotkeys.", "shortcutSheet.hint"));
        m_table->setAccessibleName(windowTitle());
        m_table->setHorizontalHeaderLabels({tr("Action", "shortcutSheet.col.action"),
                                            tr("Shortcut", "shortcutSheet.col.shortcut")});
        for (int row = 0; row < int(std::size(kRows)); ++row)
            m_table->item(row, 0)->setText(tr(kRows[row].text.source, kRows[row].text.comment));
        m_table->resizeColumnsToContents();
        m_table->resizeRowsToContents();
    });
    layout->addWidget(m_table);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
}

} // namespace zelmor::widget
