#pragma once

#include "core/HistoryItem.h"

#include <QHash>
#include <QStringList>
#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QVBoxLayout;

namespace zelmor::widget {

// The right column of the history page: one item's preview, facts, tags and OCR text, and
// the buttons that ask the page to act on it. Tag edits save themselves while the user types,
// and a pending edit goes to the item it was made on when the selection moves.
class HistoryDetailPanel : public QWidget
{
    Q_OBJECT
public:
    explicit HistoryDetailPanel(QWidget* parent = nullptr);

    // Null, or an item with id 0, empties the column.
    void showItem(const core::HistoryItem* item);
    void focusTags();

    // Lower-case hexadecimal SHA-256 of the file, computed once per path and process; empty
    // when the file cannot be read.
    static QString fileSha256(const QString& path);
    // The picture at `path`; when it is readable but too large to decode here, `tooLarge`
    // says so with its size.
    static QPixmap loadPicture(const QString& path, QString* tooLarge = nullptr);

signals:
    void copyRequested(const QString& path);
    void favoriteRequested(qint64 id);
    void exportRequested(qint64 id);
    void locateRequested(const QString& path);
    void deleteRequested(qint64 id);
    void tagsEdited(qint64 id, const QStringList& tags);
    void ocrEdited(qint64 id, const QString& ocr);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    enum Row { File, Size, Bytes, Created, Sha, RowCount };
    void addRow(QVBoxLayout* layout, Row row, const QString& key);
    void addButtons(QVBoxLayout* layout);
    void clear();
    void showPreview(const QString& path);
    void saveTags(const char* how);
    void flush();
    void elideFileName();

    core::HistoryItem m_item; // id 0: nothing shown
    QLabel* m_preview = nullptr;
    QLabel* m_values[RowCount] = {};
    QLineEdit* m_tags = nullptr;
    QLineEdit* m_ocr = nullptr;
    QTimer m_debounce;
};

} // namespace zelmor::widget
