#include "HistoryDetailPanel.h"

#include "ControlName.h"
#include "core/Log.h"
#include "core/PictureFile.h"
#include "core/Utilities.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

constexpr int kDebounceMs = 500;
const QSize kPreviewSize(288, 160);
const QString kFavourite = QStringLiteral("★");

// The tags of a tag line: comma-separated, trimmed. Blank parts stay as empty texts, which the
// store skips.
QStringList parseTags(const QString& line)
{
    QStringList tags;
    for (const QString& part : line.split(QLatin1Char(','), Qt::SkipEmptyParts))
        tags << part.trimmed();
    return tags;
}

QHash<QString, QString>& shaCache()
{
    static QHash<QString, QString> cache;
    return cache;
}

} // namespace

HistoryDetailPanel::HistoryDetailPanel(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("historyDetail"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(12);
    layout->addWidget(makeLabel(tr("Details", "history.detail.title"), "detailTitle", this));
    m_preview = makeLabel(QString(), "detailPreview", this);
    m_preview->setAlignment(Qt::AlignCenter);
    m_preview->setMinimumHeight(160);
    m_preview->setFixedWidth(kPreviewSize.width());
    m_preview->setAccessibleName(tr("Preview", "history.detail.preview"));
    layout->addWidget(m_preview);
    addRow(layout, File, tr("File name", "history.detail.k.file"));
    addRow(layout, Size, tr("Dimensions", "history.detail.k.size"));
    addRow(layout, Bytes, tr("Size", "history.detail.k.bytes"));
    addRow(layout, Created, tr("Created", "history.detail.k.created"));
    addRow(layout, Sha, tr("SHA-256", "history.detail.k.sha"));

    const QString tagsLabel = tr("Tags", "history.detail.tagsLabel");
    layout->addWidget(makeLabel(tagsLabel, "detailFieldLabel", this));
    m_tags = new QLineEdit(this);
    m_tags->setObjectName(QStringLiteral("detailInput"));
    m_tags->setPlaceholderText(
        tr("Separate multiple tags with commas...", "history.detail.tagsPlaceholder"));
    m_tags->setAccessibleName(tagsLabel);
    layout->addWidget(m_tags);
    const QString ocrLabel = tr("OCR", "history.detail.ocrLabel");
    layout->addWidget(makeLabel(ocrLabel, "detailFieldLabel", this));
    m_ocr = new QLineEdit(this);
    m_ocr->setObjectName(QStringLiteral("detailInput"));
    m_ocr->setPlaceholderText(
        tr("(none) — run OCR on the preview to fill", "history.detail.ocrPlaceholder"));
    m_ocr->setAccessibleName(ocrLabel);
    layout->addWidget(m_ocr);
    addButtons(layout);
    layout->addStretch(1);

    m_debounce.setSingleShot(true);
    m_debounce.setInterval(kDebounceMs);
    connect(&m_debounce, &QTimer::timeout, this, [this] {
        if (m_item.id != 0) saveTags("debounce-save");
    });
    connect(m_tags, &QLineEdit::textChanged, this, [this] {
        if (m_item.id != 0) m_debounce.start();
    });
    connect(m_tags, &QLineEdit::editingFinished, this, [this] {
        // A pending debounce would save the same text a second time.
        m_debounce.stop();
        if (m_item.id != 0) saveTags("editingFinished-save");
    });
    connect(m_ocr, &QLineEdit::editingFinished, this, [this] {
        if (m_item.id != 0) emit ocrEdited(m_item.id, m_ocr->text());
    });
}

void HistoryDetailPanel::addRow(QVBoxLayout* layout, Row row, const QString& key)
{
    auto* line = new QHBoxLayout;
    line->setSpacing(8);
    QLabel* keyLabel = makeLabel(key, "detailKey", this);
    keyLabel->setFixedWidth(80);
    QLabel* value = makeLabel(QString(), "detailValue", this);
    // The file name is elided to the column instead: a long name has nowhere to wrap.
    value->setWordWrap(row != File);
    if (row == File) value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    value->setAccessibleName(key);
    line->addWidget(keyLabel);
    line->addWidget(value, 1);
    layout->addLayout(line);
    m_values[row] = value;
}

void HistoryDetailPanel::addButtons(QVBoxLayout* layout)
{
    QPushButton* copy =
        makeButton(tr("Copy to clipboard", "history.detail.copy"), "detailPrimary", this);
    connect(copy, &QPushButton::clicked, this, [this] {
        if (!m_item.path.isEmpty()) emit copyRequested(m_item.path);
    });
    layout->addWidget(copy);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    const auto secondary = [this, row](const QString& text, auto emitFor) {
        QPushButton* button = makeButton(text, "detailSecondary", this);
        connect(button, &QPushButton::clicked, this, [this, emitFor] {
            if (m_item.id != 0) emitFor();
        });
        row->addWidget(button);
    };
    secondary(tr("Favorite", "history.detail.favorite"),
              [this] { emit favoriteRequested(m_item.id); });
    secondary(tr("Export", "history.detail.export"), [this] { emit exportRequested(m_item.id); });
    secondary(tr("Locate", "history.detail.locate"), [this] { emit locateRequested(m_item.path); });
    layout->addLayout(row);
    QPushButton* remove = makeButton(tr("Delete", "history.detail.delete"), "detailDanger", this);
    connect(remove, &QPushButton::clicked, this, [this] {
        if (m_item.id != 0) emit deleteRequested(m_item.id);
    });
    layout->addWidget(remove);
}

void HistoryDetailPanel::showItem(const core::HistoryItem* item)
{
    flush();
    if (!item || item->id == 0) {
        clear();
        return;
    }
    const bool again = item->id == m_item.id;
    m_item = *item;
    showPreview(m_item.path);
    const QFileInfo file(m_item.path);
    elideFileName();
    m_values[Size]->setText(QStringLiteral("%1×%2 px").arg(m_item.width).arg(m_item.height));
    m_values[Bytes]->setText(core::formatFileSize(file.size()));
    m_values[Created]->setText(m_item.createdAt.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
    const QString sha = fileSha256(m_item.path);
    m_values[Sha]->setText(sha.isEmpty() ? QStringLiteral("—")
                                         : sha.left(16) + QStringLiteral("…"));

    m_debounce.stop();
    const QSignalBlocker tagsQuiet(m_tags);
    const QSignalBlocker ocrQuiet(m_ocr);
    QStringList shown = m_item.tags;
    shown.removeAll(kFavourite);
    QStringList typed = parseTags(m_tags->text());
    typed.removeAll(QString());
    // Shown again after its own save, the line keeps what the user is typing, such as a
    // trailing comma.
    if (!again || typed != shown) m_tags->setText(shown.join(QStringLiteral(", ")));
    m_ocr->setText(m_item.ocrText);
}

void HistoryDetailPanel::focusTags()
{
    m_tags->setFocus();
}

QString HistoryDetailPanel::fileSha256(const QString& path)
{
    const auto cached = shaCache().constFind(path);
    if (cached != shaCache().constEnd()) return *cached;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return QString();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    const QString hex = QString::fromLatin1(hash.result().toHex());
    shaCache().insert(path, hex);
    return hex;
}

void HistoryDetailPanel::clear()
{
    m_debounce.stop();
    m_item = core::HistoryItem();
    m_preview->clear();
    for (QLabel* value : m_values)
        value->clear();
    m_values[File]->setToolTip(QString());
    const QSignalBlocker tagsQuiet(m_tags);
    const QSignalBlocker ocrQuiet(m_ocr);
    m_tags->clear();
    m_ocr->clear();
}

QPixmap HistoryDetailPanel::loadPicture(const QString& path, QString* tooLarge)
{
    core::DecodedPicture picture = core::decodePicture(path);
    if (tooLarge && picture.fault == core::DecodedPicture::TooLarge)
        *tooLarge = tr("%1×%2 px is too large to open with the memory of this computer.",
                       "history.tooLarge")
                        .arg(picture.size.width())
                        .arg(picture.size.height());
    return QPixmap::fromImage(std::move(picture.image));
}

void HistoryDetailPanel::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    elideFileName();
}

void HistoryDetailPanel::elideFileName()
{
    QLabel* label = m_values[File];
    const QString name = m_item.id == 0 ? QString() : QFileInfo(m_item.path).fileName();
    label->setText(label->fontMetrics().elidedText(name, Qt::ElideMiddle, label->width()));
    label->setToolTip(name);
}

void HistoryDetailPanel::showPreview(const QString& path)
{
    QString tooLarge;
    const QPixmap pixmap = loadPicture(path, &tooLarge);
    if (pixmap.isNull()) {
        m_preview->setWordWrap(true);
        m_preview->setText(tooLarge.isEmpty() ? tr("(no image)", "history.detail.noImage")
                                              : tooLarge);
        return;
    }
    QPixmap canvas(kPreviewSize);
    canvas.fill(QColor(245, 245, 245));
    const QPixmap scaled =
        pixmap.scaled(kPreviewSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(&canvas);
    painter.drawPixmap((kPreviewSize.width() - scaled.width()) / 2,
                       (kPreviewSize.height() - scaled.height()) / 2, scaled);
    painter.end();
    m_preview->setPixmap(canvas);
}

void HistoryDetailPanel::saveTags(const char* how)
{
    const QStringList tags = parseTags(m_tags->text());
    core::writeLogLine(QStringLiteral("[tag] %1 id=%2 tags=%3")
                           .arg(QLatin1String(how))
                           .arg(m_item.id)
                           .arg(tags.join(QLatin1Char('|'))));
    emit tagsEdited(m_item.id, tags);
}

// A pending edit goes to the item it was typed on; without one nothing is written.
void HistoryDetailPanel::flush()
{
    if (!m_debounce.isActive()) return;
    m_debounce.stop();
    if (m_item.id != 0) saveTags("flush-on-switch");
}

} // namespace zelmor::widget
