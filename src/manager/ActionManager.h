#pragma once

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>

#include <memory>

class QMessageBox;
class QPixmap;

namespace zelmor::manager {
class PinManager;
}
namespace zelmor::service::ai {
class AiWorkflow;
}
namespace zelmor::service::capture {
class CaptureService;
}
namespace zelmor::service::gesture {
class MouseGestureService;
}
namespace zelmor::service::record {
class FrameStore;
class RecordingService;
} // namespace zelmor::service::record
namespace zelmor::widget {
class CaptureOverlay;
class MainWindow;
class RecordHud;
class RecordRegionFrame;
class ScrollHud;
} // namespace zelmor::widget

namespace zelmor::manager {

// The one entrance to what the program does: tray, hotkeys, the command line and the
// panels call these slots, and each slot is a short script over the services.
class ActionManager : public QObject
{
    Q_OBJECT
public:
    explicit ActionManager(widget::MainWindow* mainWindow, QObject* parent = nullptr);
    ~ActionManager() override;

    service::capture::CaptureService* captureService() const { return m_captureService; }
    PinManager* pinManager() const { return m_pinManager; }
    service::record::RecordingService* recordingService() const { return m_recordingService; }
    // Null until gestures are first switched on.
    service::gesture::MouseGestureService* gestureService() const { return m_gestureService; }

    bool regionCaptureActive() const { return m_regionCaptureActive; }

    // Runs an entry that grabs the screen once a menu that asked for it has left the screen,
    // with Zelmor's own notices hidden, so that none of them is in the picture.
    void runAfterMenu(void (ActionManager::*entry)());

public Q_SLOTS:
    void captureRegion();
    void quickOcr();
    void aiAnnotate();
    void ocrWithPixmap(const QPixmap& pixmap);
    void translateWithPixmap(const QPixmap& pixmap);
    void aiAnnotateWithPixmap(const QPixmap& pixmap);
    void captureForAiChat();
    void aiChat();
    void captureFullscreen();
    void captureWindow();
    void captureDelayed(int secs = 3);
    void recordGif();
    void scrollCapture();
    void annotateScreen();
    void pinHideAll();
    void pinRestoreAll();
    void clearAllPins();
    void pinFromPixmap(const QPixmap& pixmap);
    void pinFromClipboard();
    void togglePinClickThrough();
    void reeditFromPixmap(const QPixmap& pixmap);
    void showHistory();
    void showSettings();
    // The same call as showSettings: the panel's About page is one of its pages.
    void showAbout();
    void showAiSettings();
    void openOutputDir();
    void showShortcutSheet();
    void showLicense();
    void restartAsAdmin();
    void setTheme(const QString& name);
    void checkUpdates();
    void toggleMouseGesture(bool on);
    void quit();

private:
    enum class SaveKind { Capture, Annotation };
    void openAnnotationOverlay(const QPixmap& pixmap, const QString& copiedBody);
    enum class AiOverlay { QuickOcr, AiAnnotate };
    void openAiOverlay(AiOverlay kind);
    void connectAiOutcomes(widget::CaptureOverlay* overlay);
    struct AiJob
    {
        service::ai::AiWorkflow* workflow;
        quint64 task;
    };
    AiJob startAiJob(const QPixmap& pixmap, const QString& title, const QString& message,
                     const QString& failedMessage);
    // False, and one message that leads to the AI settings, when no provider can do the job.
    bool aiProviderReady(bool recognitionOnly);
    void saveAiSource(const QPixmap& pixmap);
    void showTextResult(const QString& text, bool translation);
    void reopenChat();
    void toastCaptureFailed();
    // Where the screen comes only picture by picture, for recording and scroll capture.
    bool refuseScreenSeries();
    // The end of a delayed capture: the whole screen to the clipboard only.
    void copyFullscreen();
    void handTextToChat(const QString& text);
    void copyAndSave(const QPixmap& cropped);
    void saveCropped(const QPixmap& cropped, SaveKind kind);
    void copyOnly(const QPixmap& cropped, const QString& body);
    void connectRecording();
    void showRecordHud();
    void tellUnmarked();
    void openGifEditor(std::shared_ptr<const service::record::FrameStore> frames, int intervalMs,
                       const QString& path);
    void showRegionFrame(const QRect& rect);
    void retireRegionFrame();
    void connectScrolling();
    void connectHistory();
    void startScroll(const QRect& rect, bool autoScroll = false);
    void endScroll();
    void onGesture(const QString& action);
    widget::CaptureOverlay* takeOverlay(const QPixmap& pixmap, const QRect& geometry = QRect());
    QPixmap regionPicture(QRect* place) const;
    void openRegionOverlay(const QString& hint);
    void prepareOverlay();
    void dropPreparedOverlay();

    widget::MainWindow* m_mainWindow;
    service::capture::CaptureService* m_captureService;
    service::record::RecordingService* m_recordingService;
    PinManager* m_pinManager;
    service::gesture::MouseGestureService* m_gestureService = nullptr;
    widget::RecordHud* m_recordHud = nullptr;
    widget::RecordRegionFrame* m_regionFrame = nullptr;
    widget::ScrollHud* m_scrollHud = nullptr;
    qint64 m_scrollLimitBytes = 0; // the budget the running scroll capture reached, else 0
    bool m_scrollAuto = false;     // the running scroll capture scrolls the page itself
    int m_scrollStep = 0;          // what the stitcher last found, a ScrollStitcher::Step
    bool m_regionCaptureActive = false;
    bool m_toldUnmarked = false;
    // Built while nobody waits, so that a hotkey costs only the grab and the first frame.
    QPointer<widget::CaptureOverlay> m_preparedOverlay;
    QPointer<QMessageBox> m_aiSetupPrompt;
};

} // namespace zelmor::manager
