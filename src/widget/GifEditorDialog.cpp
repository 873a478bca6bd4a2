#include "GifEditorDialog.h"

#include "ControlName.h"
#include "FrameListModel.h"
#include "MainWindow.h"
#include "core/DesktopClipboard.h"
#include "core/Toast.h"
#include "manager/ThemeManager.h"
#include "service/history/HistoryService.h"
#include "service/record/GifEncoder.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QThreadPool>
#include <QTimer>
#include <QVBoxLayout>
#include <QtConcurrent>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zelmor::widget {

namespace {

constexpr int kDefaultIntervalMs = 100;
// The recorder holds the same floor: most viewers slow faster GIFs down to 10 fps.
constexpr int kMinIntervalMs = 20;
// A recording at least this long is not dropped without asking.
constexpr int kAskBeforeDropMs = 10000;

QString playText(bool playing)
{
    return playing ? GifEditorDialog::tr("⏸ 暂停", "gif.editor.pause")
                   : GifEditorDialog::tr("▶ 播放", "gif.editor.play");
}

struct EditorPalette
{
    const char* window;
    const char* panel;
    const char* text;
    const char* muted;
    const char* border;
    const char* button;
    const char* buttonHover;
    const char* preview;
};

constexpr EditorPalette kDark{"#141418", "#18181C", "#E5E7EB", "#9CA3AF",
                              "#2A2A30", "#26262C", "#32323A", "#0B0B0E"};
constexpr EditorPalette kLight{"#FFFFFF", "#F8F9FA", "#1F2937", "#6B7280",
                               "#E5E7EB", "#F3F4F6", "#E5E7EB", "#1F2023"};

QString editorSheet(const EditorPalette& p)
{
    return QStringLiteral(
               "#gifEditorDialog { background: %1; border: 1px solid %5; }"
               "#gifEditorHeader { background: %2; border-bottom: 1px solid %5; }"
               "#gifEditorTitle { color: %3; font-size: 14px; font-weight: bold; }"
               "#gifEditorTip, #fpsLabel, #gifEditorFrameCount { color: %4; font-size: 12px; }"
               "#gifEditorContent { background: %1; }"
               "#gifEditorPreview { background: %8; color: #E5E7EB; border-radius: 8px;"
               " font-size: 14px; }"
               "QPushButton { background: %6; color: %3; border: 1px solid %5; border-radius: 6px;"
               " padding: 4px 12px; font-size: 12px; }"
               "QPushButton:hover { background: %7; }"
               "QPushButton:disabled { color: %4; }"
               "#gifEditorClose { border: none; background: transparent; font-size: 14px; }"
               "#gifEditorClose:hover { background: %7; }"
               "#gifDeleteSelected { background: #DC2626; color: #FFFFFF; border: none; }"
               "#gifDeleteSelected:hover { background: #B91C1C; }"
               "#gifKeepSelected { background: #059669; color: #FFFFFF; border: none; }"
               "#gifKeepSelected:hover { background: #047857; }"
               "#gifExport { background: #E67E22; color: #FFFFFF; border: none;"
               " font-weight: bold; }"
               "#gifExport:hover { background: #D35400; }"
               "QSlider::groove:horizontal { height: 4px; background: %5; border-radius: 2px; }"
               "QSlider::handle:horizontal { background: #E67E22; width: 14px; margin: -5px 0;"
               " border-radius: 7px; }"
               "QListView { background: %2; color: %3; border: 1px solid %5; border-radius: 8px;"
               " font-size: 11px; }"
               "QListView::item:selected { background: rgba(230, 126, 34, 0.35);"
               " border-radius: 6px; }"
               "QSpinBox { background: %2; color: %3; border: 1px solid %5; border-radius: 6px;"
               " padding: 2px 4px; font-size: 12px; }"
               "QSpinBox::up-button, QSpinBox::down-button { width: 16px; }")
        .arg(QLatin1String(p.window), QLatin1String(p.panel), QLatin1String(p.text),
             QLatin1String(p.muted), QLatin1String(p.border), QLatin1String(p.button),
             QLatin1String(p.buttonHover), QLatin1String(p.preview));
}

// The keys act on the dialog, not on whichever control was clicked last.
QPushButton* makeButton(const QString& text, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoDefault(false);
    return button;
}

QList<int> allRows(int count)
{
    QList<int> rows(count);
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

} // namespace

GifEditorDialog::GifEditorDialog(const QList<QImage>& frames, int intervalMs, const QString& path,
                                 QWidget* parent)
    : GifEditorDialog(service::record::FrameStore::fromImages(frames), intervalMs, path, parent)
{}

GifEditorDialog::GifEditorDialog(std::shared_ptr<const service::record::FrameStore> frames,
                                 int intervalMs, const QString& path, QWidget* parent)
    : QDialog(parent), m_store(std::move(frames)), m_originalFrames(allRows(m_store->count())),
      m_frames(m_originalFrames), m_reader(std::make_unique<service::record::FrameReader>(m_store)),
      m_intervalMs(intervalMs > 0 ? intervalMs : kDefaultIntervalMs), m_path(path),
      m_playTimer(new QTimer(this)), m_model(new FrameListModel(this)),
      m_progressTimer(new QTimer(this))
{
    setObjectName(QStringLiteral("gifEditorDialog"));
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowTitle(tr("GIF Frame Editor", "gif.editor.title"));
    setMinimumSize(860, 640);
    resize(960, 720);
    connect(m_playTimer, &QTimer::timeout, this, &GifEditorDialog::advance);
    connect(m_progressTimer, &QTimer::timeout, this, &GifEditorDialog::showExportProgress);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(buildHeader());
    column->addWidget(buildContent(), 1);

    applyTheme();
    connect(&manager::ThemeManager::instance(), &manager::ThemeManager::themeChanged, this,
            &GifEditorDialog::applyTheme);
    refreshModel();
    refreshView();
    m_playButton->setText(playText(m_playing));
}

GifEditorDialog::~GifEditorDialog()
{
    cancelExport();
}

void GifEditorDialog::cancelExport()
{
    if (!m_exportWatcher) return;
    m_progressTimer->stop();
    *m_exportCancel = true;
    m_exportWatcher->disconnect(this);
    m_exportWatcher->deleteLater();
    m_exportWatcher = nullptr;
}

void GifEditorDialog::reject()
{
    if (!discardConfirmed()) return;
    cancelExport();
    QDialog::reject();
}

bool GifEditorDialog::discardConfirmed()
{
    const qint64 lengthMs = qint64(m_originalFrames.size()) * m_intervalMs;
    // A stored GIF stays on disk: only a recording that was never written is lost.
    if (m_exported || lengthMs < kAskBeforeDropMs || QFileInfo::exists(m_path)) return true;
    const auto answer = QMessageBox::question(
        this, tr("Discard recording?", "gif.editor.discardTitle"),
        tr("This recording of %1 s has not been saved. Discard it?", "gif.editor.discardBody")
            .arg(lengthMs / 1000),
        QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Cancel);
    // An export may have ended while the question was open.
    return answer == QMessageBox::Discard && !m_exported;
}

QWidget* GifEditorDialog::buildHeader()
{
    auto* header = new QWidget(this);
    header->setObjectName(QStringLiteral("gifEditorHeader"));
    header->setAttribute(Qt::WA_StyledBackground);
    header->setFixedHeight(42);
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(16, 0, 8, 0);
    auto* title = new QLabel(tr("GIF Frame Editor", "gif.editor.title"), header);
    title->setObjectName(QStringLiteral("gifEditorTitle"));
    auto* tip = new QLabel(
        tr("(Paused - Space: Play/Pause | Left/Right: Step | Delete: Remove | Ctrl+Z: Restore)",
           "gif.editor.tip"),
        header);
    tip->setObjectName(QStringLiteral("gifEditorTip"));
    QPushButton* close = makeButton(QStringLiteral("✕"), header);
    close->setObjectName(QStringLiteral("gifEditorClose"));
    close->setFixedSize(28, 28);
    setTipAndName(close, tr("关闭", "gif.editor.close"));
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    row->addWidget(title);
    row->addWidget(tip);
    row->addStretch();
    row->addWidget(close);
    return header;
}

QWidget* GifEditorDialog::buildContent()
{
    auto* content = new QWidget(this);
    content->setObjectName(QStringLiteral("gifEditorContent"));
    content->setAttribute(Qt::WA_StyledBackground);
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(10);

    m_preview = new QLabel(content);
    m_preview->setObjectName(QStringLiteral("gifEditorPreview"));
    m_preview->setAccessibleName(tr("预览", "gif.editor.preview"));
    m_preview->setAlignment(Qt::AlignCenter);
    m_preview->setMinimumHeight(320);
    // The scaled frame follows the label's size and must not push it.
    m_preview->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    // The frame is scaled to the label whenever the label changes size, also when the layout
    // first gives it its size after the dialog is shown.
    m_preview->installEventFilter(this);
    column->addWidget(m_preview, 1);
    column->addLayout(buildTransportRow(content));
    column->addWidget(buildThumbnailStrip(content));
    column->addLayout(buildActionRow(content));
    column->addLayout(buildBottomRow(content));
    return content;
}

QPushButton* GifEditorDialog::addButton(const QString& text, void (GifEditorDialog::*slot)(),
                                        QWidget* parent)
{
    QPushButton* button = makeButton(text, parent);
    connect(button, &QPushButton::clicked, this, slot);
    m_editingControls << button;
    return button;
}

QLayout* GifEditorDialog::buildTransportRow(QWidget* parent)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    QPushButton* prev =
        addButton(tr("⏮ 上一帧", "gif.editor.prevFrame"), &GifEditorDialog::onPrevFrame, parent);
    m_playButton = addButton(playText(false), &GifEditorDialog::onPlayToggle, parent);
    QPushButton* next =
        addButton(tr("下一帧 ⏭", "gif.editor.nextFrame"), &GifEditorDialog::onNextFrame, parent);
    for (QPushButton* button : {prev, m_playButton, next}) {
        button->setFixedSize(80, 32);
        row->addWidget(button);
    }

    m_slider = new QSlider(Qt::Horizontal, parent);
    m_slider->setAccessibleName(tr("帧位置", "gif.editor.position"));
    m_slider->setFocusPolicy(Qt::NoFocus);
    connect(m_slider, &QSlider::valueChanged, this, &GifEditorDialog::onSliderValueChanged);
    m_editingControls << m_slider;
    row->addWidget(m_slider, 1);

    m_countLabel = new QLabel(parent);
    m_countLabel->setObjectName(QStringLiteral("gifEditorFrameCount"));
    m_countLabel->setMinimumWidth(110);
    m_countLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(m_countLabel);
    return row;
}

QListView* GifEditorDialog::buildThumbnailStrip(QWidget* parent)
{
    m_thumbnails = new QListView(parent);
    m_thumbnails->setAccessibleName(tr("帧缩略图", "gif.editor.thumbnails"));
    m_thumbnails->setViewMode(QListView::IconMode);
    m_thumbnails->setFlow(QListView::LeftToRight);
    m_thumbnails->setWrapping(false);
    m_thumbnails->setMovement(QListView::Static);
    m_thumbnails->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_thumbnails->setSpacing(6);
    m_thumbnails->setIconSize(QSize(100, 70));
    m_thumbnails->setFixedHeight(115);
    m_thumbnails->setFocusPolicy(Qt::NoFocus);
    m_thumbnails->setModel(m_model);
    connect(m_thumbnails->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &GifEditorDialog::onThumbnailSelected);
    m_editingControls << m_thumbnails;
    return m_thumbnails;
}

QLayout* GifEditorDialog::buildActionRow(QWidget* parent)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    QPushButton* deleteSelected = addButton(tr("🗑️ 删除选中帧", "gif.editor.delSel"),
                                            &GifEditorDialog::onDeleteSelectedFrames, parent);
    deleteSelected->setObjectName(QStringLiteral("gifDeleteSelected"));
    QPushButton* keepSelected = addButton(tr("✂️ 仅保留框选帧", "gif.editor.keepSel"),
                                          &GifEditorDialog::onKeepOnlySelectedFrames, parent);
    keepSelected->setObjectName(QStringLiteral("gifKeepSelected"));
    row->addWidget(deleteSelected);
    row->addWidget(keepSelected);
    row->addWidget(addButton(tr("⏮ 删首帧", "gif.editor.delFirst"),
                             &GifEditorDialog::onDeleteFirstFrame, parent));
    row->addWidget(addButton(tr("⏭ 删尾帧", "gif.editor.delLast"),
                             &GifEditorDialog::onDeleteLastFrame, parent));
    row->addWidget(addButton(tr("↺ 还原所有帧", "gif.editor.restore"),
                             &GifEditorDialog::onRestoreOriginal, parent));
    row->addStretch();

    auto* fpsLabel = new QLabel(tr("帧率 FPS:", "gif.editor.fps"), parent);
    fpsLabel->setObjectName(QStringLiteral("fpsLabel"));
    m_fpsBox = new QSpinBox(parent);
    m_fpsBox->setAccessibleName(fpsLabel->text());
    m_fpsBox->setRange(1, 60);
    m_fpsBox->setFixedWidth(65);
    // Only a click focuses it, so that the arrow keys keep stepping through the frames.
    m_fpsBox->setFocusPolicy(Qt::ClickFocus);
    m_fpsBox->setValue(std::clamp(int(std::lround(1000.0 / m_intervalMs)), 1, 60));
    fpsLabel->setBuddy(m_fpsBox);
    connect(m_fpsBox, &QSpinBox::valueChanged, this, &GifEditorDialog::onFpsChanged);
    m_editingControls << m_fpsBox;
    row->addWidget(fpsLabel);
    row->addWidget(m_fpsBox);
    return row;
}

QLayout* GifEditorDialog::buildBottomRow(QWidget* parent)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    m_cancelButton = makeButton(tr("取消", "common.cancel"), parent);
    connect(m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    m_saveAsButton = makeButton(tr("💾 另存为...", "gif.editor.saveAs"), parent);
    connect(m_saveAsButton, &QPushButton::clicked, this, &GifEditorDialog::onSaveAs);
    m_exportButton = makeButton(tr("💾 导出保存", "gif.editor.export"), parent);
    m_exportButton->setObjectName(QStringLiteral("gifExport"));
    connect(m_exportButton, &QPushButton::clicked, this, &GifEditorDialog::onExport);
    row->addWidget(m_cancelButton);
    row->addStretch();
    row->addWidget(m_saveAsButton);
    row->addWidget(m_exportButton);
    return row;
}

void GifEditorDialog::applyTheme()
{
    const bool dark = manager::ThemeManager::instance().currentTheme() == QLatin1String("dark");
    setStyleSheet(editorSheet(dark ? kDark : kLight));
}

void GifEditorDialog::advance()
{
    if (m_frames.isEmpty()) return;
    m_currentIndex = (m_currentIndex + 1) % int(m_frames.size());
    refreshView();
}

void GifEditorDialog::onPlayToggle()
{
    m_playing = !m_playing;
    m_playButton->setText(playText(m_playing));
    if (m_playing)
        m_playTimer->start(m_intervalMs);
    else
        m_playTimer->stop();
}

void GifEditorDialog::stopPlayback()
{
    m_playing = false;
    m_playTimer->stop();
    m_playButton->setText(playText(false));
}

void GifEditorDialog::step(int delta)
{
    if (m_frames.isEmpty()) return;
    stopPlayback();
    const int count = int(m_frames.size());
    m_currentIndex = ((m_currentIndex + delta) % count + count) % count;
    refreshView();
}

void GifEditorDialog::onNextFrame()
{
    step(1);
}

void GifEditorDialog::onPrevFrame()
{
    step(-1);
}

void GifEditorDialog::onSliderValueChanged(int value)
{
    if (value < 0 || value >= m_frames.size()) return;
    stopPlayback();
    m_currentIndex = value;
    refreshView();
}

void GifEditorDialog::onThumbnailSelected()
{
    stopPlayback();
    const QModelIndex current = m_thumbnails->currentIndex();
    if (!current.isValid() || current.row() >= m_frames.size()) return;
    m_currentIndex = current.row();
    refreshView();
}

QList<int> GifEditorDialog::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex& index : m_thumbnails->selectionModel()->selectedIndexes())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    return rows;
}

void GifEditorDialog::onDeleteSelectedFrames()
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty()) return;
    // From the back, so that each removal leaves the rows still to go where they were.
    for (auto row = rows.crbegin(); row != rows.crend(); ++row)
        if (*row >= 0 && *row < m_frames.size()) m_frames.removeAt(*row);
    refreshModel();
    refreshView();
}

void GifEditorDialog::onKeepOnlySelectedFrames()
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty()) return;
    QList<int> kept;
    for (int row : rows)
        if (row >= 0 && row < m_frames.size()) kept << m_frames.at(row);
    m_frames = kept;
    m_currentIndex = 0;
    refreshModel();
    refreshView();
}

void GifEditorDialog::onDeleteFirstFrame()
{
    if (m_frames.isEmpty()) return;
    m_frames.removeFirst();
    refreshModel();
    refreshView();
}

void GifEditorDialog::onDeleteLastFrame()
{
    if (m_frames.isEmpty()) return;
    m_frames.removeLast();
    refreshModel();
    refreshView();
}

void GifEditorDialog::onRestoreOriginal()
{
    m_frames = m_originalFrames;
    m_currentIndex = 0;
    refreshModel();
    refreshView();
}

void GifEditorDialog::onFpsChanged(int fps)
{
    m_intervalMs = std::max(1000 / std::max(fps, 1), kMinIntervalMs);
    if (m_playing) m_playTimer->start(m_intervalMs);
}

void GifEditorDialog::keyPressEvent(QKeyEvent* event)
{
    // While the encoder runs the frames stay as they were handed over; Escape still closes.
    if (exporting()) {
        QDialog::keyPressEvent(event);
        return;
    }
    const int key = event->key();
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    if (key == Qt::Key_Space)
        onPlayToggle();
    else if (key == Qt::Key_Left)
        onPrevFrame();
    else if (key == Qt::Key_Right)
        onNextFrame();
    else if (key == Qt::Key_Delete || key == Qt::Key_Backspace)
        onDeleteSelectedFrames();
    else if (ctrl && key == Qt::Key_Z)
        onRestoreOriginal();
    else if (ctrl && key == Qt::Key_A)
        m_thumbnails->selectAll();
    else {
        QDialog::keyPressEvent(event);
        return;
    }
    event->accept();
}

bool GifEditorDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_preview && event->type() == QEvent::Resize) showPreview();
    return QDialog::eventFilter(watched, event);
}

void GifEditorDialog::onExport()
{
    doExport(m_path);
}

void GifEditorDialog::onSaveAs()
{
    const QString target =
        QFileDialog::getSaveFileName(this, tr("另存为 GIF", "gif.editor.saveAsTitle"), m_path,
                                     tr("GIF Animation (*.gif)", "gif.editor.filter"));
    if (!target.isEmpty()) doExport(target);
}

void GifEditorDialog::doExport(const QString& target)
{
    if (m_frames.isEmpty()) {
        QMessageBox::warning(this, tr("导出错误", "gif.editor.errTitle"),
                             tr("无法导出包含 0 帧的空 GIF。", "gif.editor.errBody"));
        return;
    }
    stopPlayback();
    setEditingEnabled(false);
    m_exportButton->setText(tr("⏳ 正在后台合成 GIF...", "gif.editor.exporting"));

    const service::record::FrameSequence frames{m_store, m_frames};
    const int interval = m_intervalMs;
    const QSize size = m_store->frameSize();
    m_exportCancel = std::make_shared<std::atomic_bool>(false);
    m_exportedFrames = std::make_shared<std::atomic_int>(0);
    showExportProgress();
    m_progressTimer->start(100);
    m_exportWatcher = new QFutureWatcher<bool>(this);
    connect(m_exportWatcher, &QFutureWatcher<bool>::finished, this,
            [this, target] { finishExport(target); });
    m_exportWatcher->setFuture(QtConcurrent::run(
        QThreadPool::globalInstance(),
        [target, frames, interval, size, cancel = m_exportCancel, done = m_exportedFrames] {
            QString error;
            return service::record::encodeGif(error, target, frames, interval, size.width(),
                                              size.height(), cancel.get(),
                                              [done](int written) { *done = written; });
        }));
}

void GifEditorDialog::showExportProgress()
{
    m_preview->setText(
        tr("⏳ 正在后台极速合成编码高清晰 GIF，请稍候...", "gif.editor.exportingText") +
        QLatin1Char('\n') +
        tr("Frame %1 of %2", "gif.editor.exportProgress")
            .arg(m_exportedFrames->load())
            .arg(m_frames.size()));
}

void GifEditorDialog::finishExport(const QString& target)
{
    m_progressTimer->stop();
    const bool written = m_exportWatcher->result();
    m_exportWatcher->deleteLater();
    m_exportWatcher = nullptr;
    if (!written) {
        setEditingEnabled(true);
        m_exportButton->setText(tr("💾 导出保存", "gif.editor.export"));
        refreshView();
        QMessageBox::critical(this, tr("导出错误", "gif.editor.errTitle"),
                              tr("GIF 编码合成失败，请重试。", "gif.editor.errBody"));
        return;
    }

    const QPixmap thumbnail = m_frames.isEmpty()
                                  ? QPixmap(target)
                                  : QPixmap::fromImage(m_reader->frame(m_frames.first()));
    service::history::HistoryService::instance().insert(thumbnail, target,
                                                        core::HistoryCategory::Recording);
    // The file rather than the picture, so that it pastes as an animated GIF.
    core::setClipboardFiles({target});
    core::notifyUser(
        tr("GIF 导出成功", "record.gif.saved"),
        tr("已合成导出高清晰 GIF 并自动记入历史记录:\n%1", "record.gif.savedBody").arg(target),
        3000);
    m_path = target;
    m_exported = true;

    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<MainWindow*>(widget)) {
            window->showHistory();
            window->show();
            window->raise();
            window->activateWindow();
            break;
        }
    }
    accept();
}

void GifEditorDialog::setEditingEnabled(bool enabled)
{
    for (QWidget* control : m_editingControls)
        control->setEnabled(enabled);
    m_cancelButton->setEnabled(enabled);
    m_saveAsButton->setEnabled(enabled);
    m_exportButton->setEnabled(enabled);
}

void GifEditorDialog::refreshModel()
{
    m_model->setFrames(m_store, m_frames);
    const QSignalBlocker blocker(m_slider);
    m_slider->setRange(0, std::max(int(m_frames.size()) - 1, 0));
    updateCountLabel();
}

void GifEditorDialog::refreshView()
{
    if (m_frames.isEmpty()) {
        showPreview();
        const QSignalBlocker blocker(m_slider);
        m_slider->setValue(0);
        updateCountLabel();
        return;
    }
    m_currentIndex = std::clamp(m_currentIndex, 0, int(m_frames.size()) - 1);
    showPreview();
    {
        const QSignalBlocker blocker(m_slider);
        m_slider->setValue(m_currentIndex);
    }
    QItemSelectionModel* selection = m_thumbnails->selectionModel();
    if (!m_playing && selection->selectedIndexes().size() <= 1) {
        const QSignalBlocker blocker(selection);
        const QModelIndex current = m_model->index(m_currentIndex);
        selection->setCurrentIndex(current, QItemSelectionModel::ClearAndSelect);
        m_thumbnails->scrollTo(current);
        m_thumbnails->viewport()->update(); // the view missed the blocked selection signals
    }
    updateCountLabel();
}

void GifEditorDialog::showPreview()
{
    if (exporting()) return;
    if (m_frames.isEmpty()) {
        m_preview->setText(tr("暂无剩余帧", "gif.editor.empty"));
        return;
    }
    const QPixmap frame = QPixmap::fromImage(
        m_reader->frame(m_frames.at(std::clamp(m_currentIndex, 0, int(m_frames.size()) - 1))));
    if (!frame.isNull())
        m_preview->setPixmap(
            frame.scaled(m_preview->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

QList<QImage> GifEditorDialog::frames() const
{
    QList<QImage> images;
    for (int row : m_frames)
        images << m_reader->frame(row);
    return images;
}

void GifEditorDialog::updateCountLabel()
{
    const int count = int(m_frames.size());
    m_countLabel->setText(tr("第 %1 / %2 帧", "gif.editor.frameCount")
                              .arg(count == 0 ? 0 : m_currentIndex + 1)
                              .arg(count));
}

} // namespace zelmor::widget
