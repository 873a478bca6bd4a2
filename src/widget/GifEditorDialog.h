#pragma once

#include "service/record/FrameStore.h"

#include <QDialog>
#include <QImage>
#include <QList>

#include <atomic>
#include <memory>

template <typename T> class QFutureWatcher;
class QLabel;
class QListView;
class QPushButton;
class QSlider;
class QSpinBox;
class QTimer;

namespace zelmor::widget {

class FrameListModel;

// Plays a recording's frames, lets the user drop frames and change the frame rate, and encodes
// the rest into a GIF on a pool thread. Nothing is written before an export.
class GifEditorDialog : public QDialog
{
    Q_OBJECT
public:
    GifEditorDialog(std::shared_ptr<const service::record::FrameStore> frames, int intervalMs,
                    const QString& path, QWidget* parent = nullptr);
    // Frames of a stored GIF: they are compressed into a store of their own first.
    GifEditorDialog(const QList<QImage>& frames, int intervalMs, const QString& path,
                    QWidget* parent = nullptr);
    // Cancels a running export; the job holds copies of all it uses.
    ~GifEditorDialog() override;

    // The working list decoded: for looking at a few frames, not at a long recording.
    QList<QImage> frames() const;
    int intervalMs() const { return m_intervalMs; }
    // The file of the last successful export, else the one the dialog was given.
    QString path() const { return m_path; }
    int currentIndex() const { return m_currentIndex; }
    bool isPlaying() const { return m_playing; }
    bool exported() const { return m_exported; }

public Q_SLOTS:
    void onPlayToggle();
    void onNextFrame();
    void onPrevFrame();
    void onSliderValueChanged(int value);
    void onThumbnailSelected();
    void onDeleteSelectedFrames();
    void onKeepOnlySelectedFrames();
    void onDeleteFirstFrame();
    void onDeleteLastFrame();
    void onRestoreOriginal();
    void onExport();
    void onSaveAs();

public Q_SLOTS:
    // Escape, the close button and Cancel: asks first before a long recording that was never
    // saved is dropped, and cancels a running export.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* buildHeader();
    QWidget* buildContent();
    QLayout* buildTransportRow(QWidget* parent);
    QListView* buildThumbnailStrip(QWidget* parent);
    QLayout* buildActionRow(QWidget* parent);
    QLayout* buildBottomRow(QWidget* parent);
    QPushButton* addButton(const QString& text, void (GifEditorDialog::*slot)(), QWidget* parent);
    void applyTheme();

    void advance();
    void stopPlayback();
    void step(int delta);
    void onFpsChanged(int fps);
    // The sorted rows of the selected thumbnails.
    QList<int> selectedRows() const;

    void doExport(const QString& target);
    void finishExport(const QString& target);
    void setEditingEnabled(bool enabled);
    void showExportProgress();
    void cancelExport();
    bool discardConfirmed();
    bool exporting() const { return m_exportWatcher != nullptr; }

    void refreshModel();
    void refreshView();
    void showPreview();
    void updateCountLabel();

    const std::shared_ptr<const service::record::FrameStore> m_store;
    // Rows of the store: every frame as recorded, and the ones still kept, in order.
    const QList<int> m_originalFrames;
    QList<int> m_frames;
    std::unique_ptr<service::record::FrameReader> m_reader;
    int m_intervalMs;
    QString m_path;
    int m_currentIndex = 0;
    bool m_playing = false;
    bool m_exported = false;
    QTimer* m_playTimer;

    FrameListModel* m_model;
    QFutureWatcher<bool>* m_exportWatcher = nullptr;
    std::shared_ptr<std::atomic_bool> m_exportCancel;  // shared with the running job
    std::shared_ptr<std::atomic_int> m_exportedFrames; // counted up by the running job
    QTimer* m_progressTimer;
    QLabel* m_preview = nullptr;
    QPushButton* m_playButton = nullptr;
    QSlider* m_slider = nullptr;
    QLabel* m_countLabel = nullptr;
    QListView* m_thumbnails = nullptr;
    QSpinBox* m_fpsBox = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QPushButton* m_saveAsButton = nullptr;
    QPushButton* m_exportButton = nullptr;
    // Transport, slider, strip, action row and frame rate: what an export freezes.
    QList<QWidget*> m_editingControls;
};

} // namespace zelmor::widget
