#include "ShortcutSheetDialog.h"

#include "core/ConfigManager.h"
#include "platform/Hotkeys.h"
#include "widget/FollowLanguage.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
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

// The capture overlay's own keys; they work only while it is open, whatever the settings say.
struct OverlayKey
{
    struct
    {
        const char* source;
        const char* comment;
    } text;
    const char* keys; // key names as the keyboard shows them
};

const OverlayKey kOverlayKeys[] = {
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Copy the selection",
                        "shortcutSheet.overlay.copy"),
     "Enter / Ctrl+C"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Save the selection",
                        "shortcutSheet.overlay.save"),
     "Ctrl+S"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Undo",
                        "shortcutSheet.overlay.undo"),
     "Ctrl+Z"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Redo",
                        "shortcutSheet.overlay.redo"),
     "Ctrl+Y"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog",
                        "Cancel, or drop the mark being drawn", "shortcutSheet.overlay.cancel"),
     "Esc"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Rectangle, ellipse, arrow, line",
                        "shortcutSheet.overlay.shapes"),
     "R E A L"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Brush, highlighter, mosaic",
                        "shortcutSheet.overlay.brushes"),
     "B H M"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Text, counter, stamp",
                        "shortcutSheet.overlay.texts"),
     "T C S"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Colour of the palette",
                        "shortcutSheet.overlay.palette"),
     "1 … 9"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Size of the last mark",
                        "shortcutSheet.overlay.size"),
     nullptr}, // the wheel's name is translated
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Copy the colour under the pointer",
                        "shortcutSheet.overlay.pickColour"),
     "C"},
    {QT_TRANSLATE_NOOP3("zelmor::widget::ShortcutSheetDialog", "Colour as RGB or hex",
                        "shortcutSheet.overlay.colourFormat"),
     "Shift"},
};

QTableWidgetItem* readOnlyItem(const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled);
    return item;
}

// A read-only table of actions, named later, and their keys.
QTableWidget* makeTable(const QStringList& keys)
{
    auto* table = new QTableWidget(int(keys.size()), 2);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setFocusPolicy(Qt::NoFocus);
    table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int row = 0; row < keys.size(); ++row) {
        table->setItem(row, 0, readOnlyItem(QString()));
        table->setItem(row, 1, readOnlyItem(keys[row]));
    }
    return table;
}

// As tall as its rows, so that none of them hides behind a scroll bar.
void fitRows(QTableWidget* table)
{
    table->resizeColumnsToContents();
    table->resizeRowsToContents();
    const int frame = 2 * table->frameWidth();
    table->setFixedHeight(table->horizontalHeader()->sizeHint().height() +
                          table->verticalHeader()->length() + frame);
    table->setMinimumWidth(table->horizontalHeader()->length() + frame);
}

} // namespace

QString ShortcutSheetDialog::hotkeyTitle(const QString& hotkey)
{
    for (const SheetRow& row : kRows)
        if (hotkey == QLatin1String(row.hotkey)) return tr(row.text.source, row.text.comment);
    return hotkey;
}

ShortcutSheetDialog::ShortcutSheetDialog(QWidget* parent) : QDialog(parent)
{
    setMinimumWidth(420);
    auto* layout = new QVBoxLayout(this);
    auto* hint = new QLabel;
    hint->setObjectName(QStringLiteral("fieldHint"));
    layout->addWidget(hint);

    const core::ConfigManager& config = core::ConfigManager::instance();
    QStringList globalKeys;
    for (const SheetRow& row : kRows)
        globalKeys << config.hotkey(row.hotkey);
    QStringList overlayKeys;
    for (const OverlayKey& key : kOverlayKeys)
        overlayKeys << QString::fromUtf8(key.keys ? key.keys : "");
    m_table = makeTable(globalKeys);
    m_overlayTable = makeTable(overlayKeys);
    auto* tables = new QHBoxLayout;
    QList<QLabel*> titles;
    for (QTableWidget* table : {m_table, m_overlayTable}) {
        auto* column = new QVBoxLayout;
        titles << new QLabel;
        titles.last()->setObjectName(QStringLiteral("settingsCardTitle"));
        column->addWidget(titles.last());
        column->addWidget(table);
        column->addStretch(1);
        tables->addLayout(column);
    }
    layout->addLayout(tables);
    followLanguage(this, [this, hint, titles] {
        setWindowTitle(tr("Zelmor — Shortcut cheat sheet", "shortcutSheet.title"));
        // Where the desktop binds the keys, the table shows the keys offered to it.
        hint->setText(platform::hotkeyBinder() == platform::HotkeyBinder::Program
                          ? tr("Current global hotkeys. Remap them in Settings → Hotkeys.",
                               "shortcutSheet.hint")
                          : tr("The keys Zelmor offers the desktop, which binds them; Settings → "
                               "Hotkeys shows how.",
                               "shortcutSheet.hintDesktop"));
        titles[0]->setText(tr("Global hotkeys", "shortcutSheet.global.title"));
        titles[1]->setText(tr("In the capture overlay", "shortcutSheet.overlay.title"));
        for (int row = 0; row < int(std::size(kRows)); ++row)
            m_table->item(row, 0)->setText(tr(kRows[row].text.source, kRows[row].text.comment));
        for (int row = 0; row < int(std::size(kOverlayKeys)); ++row) {
            const OverlayKey& key = kOverlayKeys[row];
            m_overlayTable->item(row, 0)->setText(tr(key.text.source, key.text.comment));
            if (!key.keys)
                m_overlayTable->item(row, 1)->setText(
                    tr("Ctrl+Wheel", "shortcutSheet.overlay.wheel"));
        }
        for (int t = 0; t < 2; ++t) {
            QTableWidget* table = t == 0 ? m_table : m_overlayTable;
            table->setAccessibleName(titles[t]->text());
            table->setHorizontalHeaderLabels({tr("Action", "shortcutSheet.col.action"),
                                              tr("Shortcut", "shortcutSheet.col.shortcut")});
            fitRows(table);
        }
    });

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    layout->addWidget(buttons);
}

} // namespace zelmor::widget
