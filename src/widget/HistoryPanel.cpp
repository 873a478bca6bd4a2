#include "HistoryPanel.h"

#include "ControlName.h"
#include "GifEditorDialog.h"
#include "HistoryDetailPanel.h"
#include "HistoryGrid.h"
#include "core/Log.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "manager/ThemeManager.h"
#include "service/history/HistoryService.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImageReader>
#include <QImageWriter>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>
#include <QSplitter>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace zelmor::widget {

namespace {

using service::history::HistoryService;

constexpr int kListLimit = 500;
// The details' 288 px preview and their margins of 16 px.
constexpr int kDetailsWidth = 320;
// A stored GIF is read whole for the frame editor; a huge one stops here instead of
// taking all memory.
constexpr qint64 kGifFrameBudgetBytes = qint64(1) << 30;

bool isAnimation(const QString& path)
{
    return path.endsWith(QLatin1String(".gif"), Qt::CaseInsensitive);
}

qint64 sizeOnDisk(const QString& path)
{
    return QFileInfo(path).size(); // 0 for a file that has gone
}

// The picture for copy, pin and re-edit; one too large to decode is told, not skipped.
QPixmap openPicture(const QString& path)
{
    QString tooLarge;
    const QPixmap pixmap = HistoryDetailPanel::loadPicture(path, &tooLarge);
    if (!tooLarge.isEmpty())
        core::notifyUser(HistoryPanel::tr("Picture too large", "history.tooLarge.title"), tooLarge,
                         3000);
    return pixmap;
}

void openWithViewer(const QString& path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

// Writes the image in the format its new suffix names, so that "a.jpg" really is a JPEG.
bool exportConverted(const QString& source, const QString& destination, QString* tooLarge)
{
    const QImage image = HistoryDetailPanel::loadPicture(source, tooLarge).toImage();
    if (image.isNull()) return false;
    QSaveFile file(destination);
    if (!file.open(QIODevice::WriteOnly)) return false;
    QImageWriter writer(&file, QFileInfo(destination).suffix().toLower().toLatin1());
    if (!writer.write(image)) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

QLabel* statusLabel(QWidget* parent, Qt::Alignment alignment)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QStringLiteral("historyStatusText"));
    label->setAlignment(alignment | Qt::AlignVCenter);
    return label;
}

} // namespace

HistoryPanel::HistoryPanel(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("historyWindow"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(buildToolbar());

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->setObjectName(QStringLiteral("historySplit"));
    split->setHandleWidth(1);
    split->setChildrenCollapsible(false);
    m_view = new HistoryThumbnailView(split);
    m_details = new HistoryDetailPanel(split);
    m_details->setFixedWidth(kDetailsWidth);
    split->addWidget(m_view);
    split->addWidget(m_details);
    split->setStretchFactor(0, 72);
    split->setStretchFactor(1, 28);
    layout->addWidget(split, 1);
    layout->addWidget(buildStatusBar());

    connect(m_view, &HistoryThumbnailView::selectionChangedTo, this, &HistoryPanel::showSelected);
    connect(m_view, &HistoryThumbnailView::itemActivated, this, &HistoryPanel::activate);
    connect(m_view, &QWidget::customContextMenuRequested, this, &HistoryPanel::showContextMenu);
    connectDetails();
    connect(&HistoryService::instance(), &HistoryService::itemsChanged, this,
            &HistoryPanel::reload);

    reload();
    applyTheme(manager::ThemeManager::isDarkTheme());
    connect(&manager::ThemeManager::instance(), &manager::ThemeManager::themeChanged, this,
            &HistoryPanel::applyTheme);
}

HistoryPanel::~HistoryPanel()
{
    m_details->showItem(nullptr);
    disconnect(m_details, nullptr, this, nullptr);
}

QWidget* HistoryPanel::buildToolbar()
{
    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("historyToolbar"));
    bar->setFixedHeight(52);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(16, 0, 16, 0);
    row->setSpacing(16);

    m_search = new QLineEdit(bar);
    m_search->setObjectName(QStringLiteral("historySearch"));
    m_search->setMinimumWidth(200);
    m_search->setFixedHeight(30);
    const QString searchName = tr("Search", "history.search");
    // The icon is a button of its own to screen readers, named after its action.
    m_search
        ->addAction(QIcon(QStringLiteral(":/icons/common/search.svg")), QLineEdit::LeadingPosition)
        ->setText(searchName);
    m_search->setPlaceholderText(
        tr("Search file name, tags or OCR text...", "history.searchPlaceholder"));
    m_search->setAccessibleName(searchName);
    connect(m_search, &QLineEdit::textChanged, this, &HistoryPanel::applyFilters);
    row->addWidget(m_search);

    const QString tabTexts[] = {tr("All", "history.tab.all"), tr("Today", "history.tab.today"),
                                tr("This week", "history.tab.week"),
                                tr("Favorites", "history.tab.favorites")};
    for (int tab = AllTab; tab <= FavouritesTab; ++tab) {
        auto* button = new QPushButton(tabTexts[tab], bar);
        button->setObjectName(QStringLiteral("historyTab"));
        button->setCheckable(true);
        button->setFixedHeight(28);
        button->setChecked(tab == m_currentTab);
        connect(button, &QPushButton::clicked, this, [this, tab] { setTab(tab); });
        m_tabs << button;
        row->addWidget(button);
    }
    row->addStretch(1);
    row->addWidget(buildViewSwitch());

    m_filter = new QComboBox(bar);
    m_filter->setObjectName(QStringLiteral("historyFilter"));
    m_filter->setMinimumWidth(110);
    m_filter->setFixedHeight(32);
    m_filter->setAccessibleName(tr("Type", "history.filter"));
    m_filter->addItem(tr("All types", "history.filter.all"), QString());
    m_filter->addItem(tr("Screenshot", "history.filter.screenshot"), QStringLiteral("screenshot"));
    m_filter->addItem(tr("Annotation", "history.filter.annotation"), QStringLiteral("annotation"));
    m_filter->addItem(tr("Recording", "history.filter.recording"), QStringLiteral("recording"));
    m_filter->addItem(tr("AI", "history.filter.ai"), QStringLiteral("ai"));
    connect(m_filter, &QComboBox::currentIndexChanged, this, &HistoryPanel::applyFilters);
    row->addWidget(m_filter);

    m_sort = new QComboBox(bar);
    m_sort->setObjectName(QStringLiteral("historySort"));
    m_sort->setMinimumWidth(95);
    m_sort->setFixedHeight(32);
    m_sort->setAccessibleName(tr("Sort", "history.sort"));
    m_sort->addItems({tr("Newest", "history.sort.newest"), tr("Oldest", "history.sort.oldest"),
                      tr("Largest", "history.sort.largest")});
    connect(m_sort, &QComboBox::currentIndexChanged, this, &HistoryPanel::applyFilters);
    row->addWidget(m_sort);

    auto* refresh = new QPushButton(bar);
    refresh->setObjectName(QStringLiteral("historyRefreshBtn"));
    refresh->setFixedSize(32, 32);
    refresh->setIcon(QIcon(QStringLiteral(":/icons/common/refresh.svg")));
    setTipAndName(refresh, tr("Refresh", "history.btn.refresh"));
    connect(refresh, &QPushButton::clicked, this, &HistoryPanel::reload);
    row->addWidget(refresh);
    return bar;
}

QWidget* HistoryPanel::buildViewSwitch()
{
    auto* frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("historyViewSwitch"));
    frame->setFixedSize(72, 34);
    auto* row = new QHBoxLayout(frame);
    row->setContentsMargins(2, 2, 2, 2);
    row->setSpacing(2);
    auto* group = new QButtonGroup(frame);
    group->setExclusive(true);
    const auto addButton = [&](const char* icon, const QString& tip, bool list) {
        auto* button = new QPushButton(frame);
        button->setObjectName(QStringLiteral("historyViewBtn"));
        button->setCheckable(true);
        button->setChecked(!list);
        button->setIcon(QIcon(QLatin1String(icon)));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setTipAndName(button, tip);
        connect(button, &QPushButton::clicked, this, [this, list] { m_view->setListMode(list); });
        group->addButton(button);
        row->addWidget(button);
    };
    addButton(":/icons/common/grid.svg", tr("Grid view", "history.view.grid"), false);
    addButton(":/icons/common/list.svg", tr("List view", "history.view.list"), true);
    return frame;
}

QWidget* HistoryPanel::buildStatusBar()
{
    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("historyStatusBar"));
    bar->setFixedHeight(28);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(16, 0, 16, 0);
    m_statusLeft = statusLabel(bar, Qt::AlignLeft);
    m_statusMiddle = statusLabel(bar, Qt::AlignHCenter);
    QLabel* right = statusLabel(bar, Qt::AlignRight);
    right->setText(QStringLiteral("history.db"));
    row->addWidget(m_statusLeft, 1);
    row->addWidget(m_statusMiddle, 1);
    row->addWidget(right, 1);
    return bar;
}

void HistoryPanel::connectDetails()
{
    connect(m_details, &HistoryDetailPanel::copyRequested, this, &HistoryPanel::copyImage);
    connect(m_details, &HistoryDetailPanel::favoriteRequested, this,
            &HistoryPanel::toggleFavourite);
    connect(m_details, &HistoryDetailPanel::exportRequested, this, &HistoryPanel::exportItem);
    connect(m_details, &HistoryDetailPanel::locateRequested, this,
            [](const QString& path) { core::showInFileManager(path); });
    connect(m_details, &HistoryDetailPanel::deleteRequested, this, &HistoryPanel::deleteItem);
    connect(m_details, &HistoryDetailPanel::tagsEdited, this, &HistoryPanel::reconcileTags);
    // The store keeps no OCR text, so an edit of it isn't kept.
    connect(m_details, &HistoryDetailPanel::ocrEdited, this, [] {});
}

void HistoryPanel::reload()
{
    m_allItems = HistoryService::instance().recent(kListLimit);
    applyFilters();
}

void HistoryPanel::setTab(int tab)
{
    m_currentTab = tab;
    for (int i = 0; i < m_tabs.size(); ++i)
        m_tabs[i]->setChecked(i == tab);
    applyFilters();
}

void HistoryPanel::applyFilters()
{
    // A pending tag edit goes to its item while that item is still in the lists.
    m_details->showItem(nullptr);
    const QString text = m_search->text().trimmed();
    const QString type = m_filter->currentData().toString();
    const QList<core::HistoryItem> candidates =
        text.isEmpty() ? m_allItems : HistoryService::instance().search(text, kListLimit);
    const QDateTime now = QDateTime::currentDateTime();
    m_visibleItems.clear();
    for (const core::HistoryItem& item : candidates) {
        if (!passesTab(item, now)) continue;
        if (!type.isEmpty() && core::historyCategoryToText(item.category) != type) continue;
        m_visibleItems << item;
    }
    sortVisible();
    m_view->setItems(m_visibleItems);
    m_details->showItem(nullptr);

    qint64 total = 0;
    for (const core::HistoryItem& item : m_visibleItems)
        total += sizeOnDisk(item.path);
    m_statusLeft->setText(tr("%1 item(s) · %2", "history.status.left")
                              .arg(m_visibleItems.size())
                              .arg(core::formatFileSize(total)));
    m_statusMiddle->clear();
}

bool HistoryPanel::passesTab(const core::HistoryItem& item, const QDateTime& now) const
{
    switch (m_currentTab) {
    case TodayTab:
        return item.createdAt.date() == now.date();
    case WeekTab:
        return item.createdAt.daysTo(now) < 7; // days back, not the calendar week
    case FavouritesTab:
        return item.tags.contains(core::kFavouriteTag);
    }
    return true;
}

void HistoryPanel::sortVisible()
{
    const auto newest = [](const core::HistoryItem& a, const core::HistoryItem& b) {
        return a.createdAt > b.createdAt;
    };
    switch (m_sort->currentIndex()) {
    case 0:
        std::sort(m_visibleItems.begin(), m_visibleItems.end(), newest);
        break;
    case 1:
        std::sort(m_visibleItems.begin(), m_visibleItems.end(),
                  [](const core::HistoryItem& a, const core::HistoryItem& b) {
                      return a.createdAt < b.createdAt;
                  });
        break;
    case 2: {
        QHash<qint64, qint64> sizes;
        for (const core::HistoryItem& item : m_visibleItems)
            sizes.insert(item.id, sizeOnDisk(item.path));
        std::sort(m_visibleItems.begin(), m_visibleItems.end(),
                  [&sizes](const core::HistoryItem& a, const core::HistoryItem& b) {
                      return sizes.value(a.id) > sizes.value(b.id);
                  });
        break;
    }
    }
}

void HistoryPanel::showSelected(const core::HistoryItem* item)
{
    if (!item) {
        m_details->showItem(nullptr);
        m_statusMiddle->clear();
        return;
    }
    // A copy: the details may save a pending tag edit first, which rewrites the view's rows.
    const core::HistoryItem shown = *item;
    m_details->showItem(&shown);
    m_statusMiddle->setText(tr("Selected 1 · %1", "history.status.mid")
                                .arg(core::formatFileSize(sizeOnDisk(shown.path))));
}

const core::HistoryItem* HistoryPanel::findVisible(qint64 id) const
{
    for (const core::HistoryItem& item : m_visibleItems)
        if (item.id == id) return &item;
    return nullptr;
}

void HistoryPanel::activate(const core::HistoryItem& item)
{
    if (isAnimation(item.path)) {
        editGif(item.path);
        return;
    }
    const QPixmap pixmap = openPicture(item.path);
    if (!pixmap.isNull()) emit reeditRequested(pixmap);
}

void HistoryPanel::editGif(const QString& path)
{
    QImageReader reader(path);
    QList<QImage> frames;
    int intervalMs = 0;
    qint64 bytes = 0;
    while (bytes < kGifFrameBudgetBytes) {
        const QImage frame = reader.read();
        if (frame.isNull()) break;
        if (frames.isEmpty()) intervalMs = reader.nextImageDelay();
        bytes += frame.sizeInBytes();
        frames << frame;
    }
    if (frames.isEmpty()) {
        QMessageBox::warning(
            this, tr("读取失败", "history.gif.loadErrTitle"),
            tr("无法读取 GIF 图像帧，请检查文件是否存在。", "history.gif.loadErrBody"));
        return;
    }
    GifEditorDialog editor(frames, intervalMs, path, this);
    editor.exec();
    reload();
}

void HistoryPanel::showContextMenu(const QPoint& position)
{
    const core::HistoryItem* hit = m_view->itemAt(position);
    if (!hit) return;
    const core::HistoryItem item = *hit;
    m_details->showItem(&item);

    QMenu menu(this);
    menu.addAction(tr("Open with viewer", "history.ctx.openViewer"), this,
                   [path = item.path] { openWithViewer(path); });
    if (isAnimation(item.path))
        menu.addAction(tr("✂️ 编辑 GIF...", "history.ctx.editGif"), this,
                       [this, path = item.path] { editGif(path); });
    else
        menu.addAction(tr("Re-edit", "history.ctx.reedit"), this, [this, item] { activate(item); });
    menu.addAction(tr("Pin to screen", "history.ctx.pin"), this, [this, path = item.path] {
        const QPixmap pixmap = openPicture(path);
        if (!pixmap.isNull()) emit pinRequested(pixmap);
    });
    menu.addAction(tr("Copy to clipboard", "history.ctx.copyImage"), this,
                   [this, path = item.path] { copyImage(path); });
    const bool favourite = item.tags.contains(core::kFavouriteTag);
    menu.addAction(favourite ? tr("Unfavorite", "history.ctx.unfavorite")
                             : tr("Favorite", "history.ctx.favorite"),
                   this, [this, id = item.id] {
                       toggleFavourite(id);
                       const core::HistoryItem* now = findVisible(id);
                       m_details->showItem(now);
                   });
    menu.addSeparator();
    menu.addAction(tr("Export...", "history.ctx.export"), this,
                   [this, id = item.id] { exportItem(id); });
    menu.addAction(tr("Locate original file", "history.ctx.locate"), this,
                   [path = item.path] { core::showInFileManager(path); });
    menu.addAction(tr("Modify tags...", "history.ctx.modifyTags"), m_details,
                   &HistoryDetailPanel::focusTags);
    menu.addSeparator();
    menu.addAction(tr("Delete", "history.ctx.delete"), this, [this, id = item.id] {
        deleteItem(id);
        m_details->showItem(nullptr);
    });
    menu.exec(m_view->viewport()->mapToGlobal(position));
}

void HistoryPanel::copyImage(const QString& path)
{
    const QPixmap pixmap = openPicture(path);
    if (!pixmap.isNull()) emit copyRequested(pixmap);
}

void HistoryPanel::toggleFavourite(qint64 id)
{
    const core::HistoryItem* item = findVisible(id);
    if (!item) return;
    if (item->tags.contains(core::kFavouriteTag))
        HistoryService::instance().removeTag(id, core::kFavouriteTag);
    else
        HistoryService::instance().addTags(id, {core::kFavouriteTag});
    reload();
}

void HistoryPanel::exportItem(qint64 id)
{
    const core::HistoryItem* item = findVisible(id);
    if (!item) return;
    const QString source = item->path;
    QFileDialog dialog(this, tr("Export", "history.export.title"),
                       QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters({tr("PNG image (*.png)", "history.export.filter"),
                           tr("JPEG image (*.jpg *.jpeg)", "history.export.filterJpeg"),
                           tr("BMP image (*.bmp)", "history.export.filterBmp")});
    dialog.setDefaultSuffix(QStringLiteral("png"));
    dialog.selectFile(QFileInfo(source).fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    const QString destination = dialog.selectedFiles().constFirst();

    const bool sameFormat = QFileInfo(source).suffix().compare(QFileInfo(destination).suffix(),
                                                               Qt::CaseInsensitive) == 0;
    QString tooLarge;
    const bool saved = sameFormat ? HistoryService::instance().exportTo(id, destination)
                                  : exportConverted(source, destination, &tooLarge);
    if (saved)
        QMessageBox::information(this, tr("Export", "history.export.done.title"),
                                 tr("Saved to %1", "history.export.done.body").arg(destination));
    else
        QMessageBox::warning(this, tr("Export failed", "history.export.fail.title"),
                             tooLarge.isEmpty()
                                 ? tr("Could not export the image.", "history.export.fail.body")
                                 : tooLarge);
}

void HistoryPanel::deleteItem(qint64 id)
{
    const auto answer = QMessageBox::question(
        this, tr("Delete record", "history.del.title"),
        tr("Delete this record? File on disk will be kept.", "history.del.confirm"),
        QMessageBox::Yes | QMessageBox::No);
    if (answer != QMessageBox::Yes) return;
    if (HistoryService::instance().remove(id)) reload();
}

// No reload here, so that typing in the tag line doesn't reset the view.
void HistoryPanel::reconcileTags(qint64 id, const QStringList& tags)
{
    const core::HistoryItem* found = findVisible(id);
    core::writeLogLine(QStringLiteral("[tag] reconcile id=%1 found=%2 tags=%3")
                           .arg(id)
                           .arg(found ? 1 : 0)
                           .arg(tags.join(QLatin1Char('|'))));
    if (!found) return;
    HistoryService& store = HistoryService::instance();
    for (const QString& tag : found->tags)
        if (tag != core::kFavouriteTag && !tags.contains(tag)) store.removeTag(id, tag);
    store.addTags(id, tags);

    // The tag line never shows the favourite mark, so it is carried over here.
    QStringList updated;
    if (found->tags.contains(core::kFavouriteTag)) updated << core::kFavouriteTag;
    for (const QString& tag : tags)
        if (!tag.trimmed().isEmpty()) updated << tag.trimmed();
    for (QList<core::HistoryItem>* list : {&m_allItems, &m_visibleItems})
        for (core::HistoryItem& item : *list)
            if (item.id == id) item.tags = updated;
    m_view->updateItemTags(id, updated);
    const core::HistoryItem shown = *findVisible(id);
    m_details->showItem(&shown);
}

void HistoryPanel::applyTheme(bool dark)
{
    HistoryGridDelegate::applyTheme(dark);
    m_view->viewport()->update();
}

} // namespace zelmor::widget
