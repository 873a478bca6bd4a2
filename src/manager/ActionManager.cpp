#include "ActionManager.h"

#include "core/ConfigManager.h"
#include "core/DesktopClipboard.h"
#include "core/Log.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "manager/AiResultImages.h"
#include "manager/PinManager.h"
#include "manager/TaskManager.h"
#include "manager/ThemeManager.h"
#include "platform/Elevation.h"
#include "platform/Session.h"
#include "service/ai/AiWorkflow.h"
#include "service/capture/CaptureService.h"
#include "service/capture/OutputFile.h"
#include "service/capture/ScreenGrabber.h"
#include "service/capture/WindowList.h"
#include "service/history/HistoryService.h"
#include "service/record/RecordingService.h"
#include "widget/LicenseDialog.h"
#include "widget/MainWindow.h"
#include "widget/OcrResultDialog.h"
#include "widget/TaskNotificationToast.h"
#include "widget/overlay/CaptureOverlay.h"
#include "widget/settings/ShortcutSheetDialog.h"

#include <QApplication>
#include <QCoreApplication>
#include <QCursor>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QUrl>

#include <memory>

namespace zelmor::manager {

namespace {

constexpr int kToastMs = 3000;
// Long enough for the windows under a closed menu to paint themselves again.
constexpr int kMenuGoneMs = 200;

void toast(const QString& title, const QString& body)
{
    core::notifyUser(title, body, kToastMs);
}

QString newCapturePath()
{
    core::ConfigManager& config = core::ConfigManager::instance();
    return service::capture::makeOutputPath(config.outputDir(), config.fileNaming(),
                                            QStringLiteral("png"));
}

} // namespace

ActionManager::ActionManager(widget::MainWindow* mainWindow, QObject* parent)
    : QObject(parent), m_mainWindow(mainWindow)
{
    QElapsedTimer timer;
    timer.start();
    const auto trace = [&timer](const char* what) {
        core::writeLogLine(QStringLiteral("[startup]   actions %1 dt=%2ms")
                               .arg(QLatin1String(what))
                               .arg(timer.restart()));
    };
    m_captureService = new service::capture::CaptureService(this);
    trace("CaptureService");
    m_recordingService = new service::record::RecordingService(this);
    trace("RecordingService");
    m_pinManager = new PinManager(this);
    trace("PinManager");
    connectRecording();
    connectScrolling();
    connectHistory();
    trace("hud wiring");
    QTimer::singleShot(0, this, &ActionManager::prepareOverlay);
    // Its texts follow the language, and the translators change after this object hears of it.
    connect(&core::ConfigManager::instance(), &core::ConfigManager::languageChanged, this,
            &ActionManager::dropPreparedOverlay);
}

ActionManager::~ActionManager()
{
    delete m_preparedOverlay;
}

void ActionManager::prepareOverlay()
{
    if (m_preparedOverlay) return;
    QElapsedTimer timer;
    timer.start();
    m_preparedOverlay = new widget::CaptureOverlay;
    service::capture::prepareScreenGrab();
    core::writeLogLine(
        QStringLiteral("[actions] capture overlay prepared in %1 ms").arg(timer.elapsed()));
}

void ActionManager::dropPreparedOverlay()
{
    delete m_preparedOverlay;
    QTimer::singleShot(0, this, &ActionManager::prepareOverlay);
}

widget::CaptureOverlay* ActionManager::takeOverlay(const QPixmap& pixmap, const QRect& geometry)
{
    widget::CaptureOverlay* overlay =
        m_preparedOverlay ? m_preparedOverlay.data() : new widget::CaptureOverlay;
    m_preparedOverlay = nullptr;
    overlay->load(pixmap, geometry);
    // The next one is built once this one is gone, not while the user works with it.
    connect(overlay, &QObject::destroyed, this,
            [this] { QTimer::singleShot(0, this, &ActionManager::prepareOverlay); });
    return overlay;
}

void ActionManager::runAfterMenu(void (ActionManager::*entry)())
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (qobject_cast<core::tool::Toast*>(window) ||
            qobject_cast<widget::TaskNotificationToast*>(window))
            window->hide();
    QTimer::singleShot(kMenuGoneMs, this, entry);
}

void ActionManager::toastCaptureFailed()
{
    const QString reason = service::capture::CaptureService::failureReason();
    core::writeLogLine(QStringLiteral("[capture] failed: ") + reason);
    toast(tr("Capture failed", "capture.failed.title"), reason);
}

void ActionManager::connectHistory()
{
    if (!m_mainWindow) return;
    connect(m_mainWindow, &widget::MainWindow::pinFromHistoryRequested, this,
            &ActionManager::pinFromPixmap);
    connect(m_mainWindow, &widget::MainWindow::copyFromHistoryRequested, this,
            [](const QPixmap& pm) { core::copyPixmapToClipboard(pm); });
    connect(m_mainWindow, &widget::MainWindow::reeditFromHistoryRequested, this,
            &ActionManager::reeditFromPixmap);
    connect(m_mainWindow, &widget::MainWindow::captureForAiChatRequested, this,
            &ActionManager::captureForAiChat);
}

// The pointer's screen and its place; on Wayland, where a program learns where the pointer is
// only over its own windows, the whole desktop, which the overlay spreads over every output.
QPixmap ActionManager::regionPicture(QRect* place) const
{
    if (platform::desktopPlacesWindows()) return m_captureService->grabScreens();
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) screen = QGuiApplication::primaryScreen();
    if (!screen) return {};
    QPixmap pixmap = service::capture::grabScreen(int(QGuiApplication::screens().indexOf(screen)));
    *place = screen->geometry();
    // The overlay paints logical pixels one to one on a scaled display.
    if (!pixmap.isNull() && pixmap.size() != place->size())
        pixmap = pixmap.scaled(place->size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return pixmap;
}

void ActionManager::captureRegion()
{
    openRegionOverlay(QString());
}

void ActionManager::openRegionOverlay(const QString& hint)
{
    if (m_regionCaptureActive) return;
    QRect place;
    const QPixmap pixmap = regionPicture(&place);
    if (pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    auto* overlay = takeOverlay(pixmap, place);
    if (!hint.isEmpty()) overlay->setHint(hint);
    m_regionCaptureActive = true;
    const auto clearFlag = [this] { m_regionCaptureActive = false; };
    connect(overlay, &widget::CaptureOverlay::copyRequested, this, [this](const QPixmap& cropped) {
        m_regionCaptureActive = false;
        copyAndSave(cropped);
    });
    connect(overlay, &widget::CaptureOverlay::pinRequested, this, [this](const QPixmap& cropped) {
        m_regionCaptureActive = false;
        m_pinManager->addPin(cropped);
    });
    connect(overlay, &widget::CaptureOverlay::saveRequested, this, [this](const QPixmap& cropped) {
        m_regionCaptureActive = false;
        saveCropped(cropped, SaveKind::Capture);
    });
    connectAiOutcomes(overlay);
    connect(overlay, &widget::CaptureOverlay::ocrRequested, this, clearFlag);
    connect(overlay, &widget::CaptureOverlay::translateRequested, this, clearFlag);
    connect(overlay, &widget::CaptureOverlay::aiAnnotateRequested, this, clearFlag);
    connect(overlay, &widget::CaptureOverlay::cancelled, this, clearFlag);
    connect(overlay, &QObject::destroyed, this, clearFlag);
    overlay->show();
    overlay->raise();
    overlay->activateWindow();
}

void ActionManager::connectAiOutcomes(widget::CaptureOverlay* overlay)
{
    connect(overlay, &widget::CaptureOverlay::ocrRequested, this, &ActionManager::ocrWithPixmap);
    connect(overlay, &widget::CaptureOverlay::translateRequested, this,
            &ActionManager::translateWithPixmap);
    connect(overlay, &widget::CaptureOverlay::aiAnnotateRequested, this,
            &ActionManager::aiAnnotateWithPixmap);
}

void ActionManager::quickOcr()
{
    openAiOverlay(AiOverlay::QuickOcr);
}

void ActionManager::aiAnnotate()
{
    openAiOverlay(AiOverlay::AiAnnotate);
}

// An overlay whose plain copy goes to recognition or detection instead of the clipboard.
void ActionManager::openAiOverlay(AiOverlay kind)
{
    const QPixmap pixmap = m_captureService->grabScreens();
    if (pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    auto* overlay = takeOverlay(pixmap);
    connect(overlay, &widget::CaptureOverlay::copyRequested, this,
            kind == AiOverlay::QuickOcr ? &ActionManager::ocrWithPixmap
                                        : &ActionManager::aiAnnotateWithPixmap);
    connectAiOutcomes(overlay);
    overlay->show();
}

// OCR and translation keep their source picture in the history before any answer comes.
void ActionManager::saveAiSource(const QPixmap& pixmap)
{
    const QPixmap copy = pixmap.copy();
    const QString path = newCapturePath();
    if (service::capture::savePixmapFile(copy, path))
        service::history::HistoryService::instance().insert(copy, path, core::HistoryCategory::Ai,
                                                            QString());
}

// A workflow with its task: a cancel of the task reaches the workflow, and a failure marks
// the task with `failedMessage` and the reason. No toast: the task card carries it.
ActionManager::AiJob ActionManager::startAiJob(const QPixmap& pixmap, const QString& title,
                                               const QString& message, const QString& failedMessage)
{
    auto* workflow = new service::ai::AiWorkflow(this);
    // The abort that a cancel causes comes back as a failure, which the task must not show.
    auto cancelled = std::make_shared<bool>(false);
    const quint64 task = TaskManager::instance().addTask(
        title, message, pixmap, [guard = QPointer<service::ai::AiWorkflow>(workflow), cancelled] {
            *cancelled = true;
            if (guard) guard->cancel();
        });
    connect(workflow, &service::ai::AiWorkflow::failed, this,
            [workflow, task, failedMessage, cancelled](const QString& reason) {
                if (!*cancelled)
                    TaskManager::instance().updateTask(task, TaskItem::Failed, failedMessage,
                                                       reason);
                workflow->deleteLater();
            });
    return {workflow, task};
}

void ActionManager::ocrWithPixmap(const QPixmap& pixmap)
{
    if (pixmap.isNull() || !aiProviderReady(true)) return;
    toast(tr("OCR", "tray.ocr"), tr("🔍 正在提取文字，请稍候...", "ai.ocr.processing"));
    const AiJob job =
        startAiJob(pixmap, tr("文字识别 (OCR)", "ai.ocr.title"),
                   tr("正在提取文字...", "ai.ocr.processing"), tr("识别失败", "ai.ocr.failed"));
    service::ai::AiWorkflow* workflow = job.workflow; // named for the lambdas below
    const quint64 task = job.task;
    saveAiSource(pixmap);
    connect(workflow, &service::ai::AiWorkflow::resultReady, this,
            [this, workflow, task](const QString&, const QString& text) {
                TaskManager::instance().updateTask(task, TaskItem::Finished,
                                                   tr("提取成功", "ai.ocr.success"), text);
                showTextResult(text, false);
                workflow->deleteLater();
            });
    workflow->ocr(pixmap);
}

void ActionManager::translateWithPixmap(const QPixmap& pixmap)
{
    if (pixmap.isNull() || !aiProviderReady(false)) return;
    toast(tr("Translation", "tray.translate"),
          tr("🌐 正在翻译图片内容，请稍候...", "ai.translate.processing"));
    const AiJob job = startAiJob(pixmap, tr("截图翻译", "ai.translate.title"),
                                 tr("正在翻译图片...", "ai.translate.processing"),
                                 tr("翻译失败", "ai.translate.failed"));
    service::ai::AiWorkflow* workflow = job.workflow; // named for the lambdas below
    const quint64 task = job.task;
    saveAiSource(pixmap);
    connect(workflow, &service::ai::AiWorkflow::resultReady, this,
            [this, workflow, task](const QString&, const QString& text) {
                TaskManager::instance().updateTask(task, TaskItem::Finished,
                                                   tr("翻译成功", "ai.translate.success"), text);
                showTextResult(text, true);
                workflow->deleteLater();
            });
    workflow->translate(pixmap, QStringLiteral("中文"));
}

// The text goes to the clipboard and into the result dialog, from where it can be pinned.
void ActionManager::showTextResult(const QString& text, bool translation)
{
    core::copyTextToClipboard(text);
    auto* dialog = new widget::OcrResultDialog(text, m_mainWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (translation) dialog->setWindowTitle(tr("截图翻译结果", "ai.translate.dialogTitle"));
    connect(dialog, &widget::OcrResultDialog::pinRequested, this,
            [this, translation](const QString& note) {
                const QPixmap pixmap = translation ? makeTranslationNote(note) : makeOcrNote(note);
                if (!pixmap.isNull()) m_pinManager->addPin(pixmap);
            });
    // Recognised text goes on as a chat message; a translation only opens the chat.
    connect(dialog, &widget::OcrResultDialog::chatRequested, this,
            [this, translation](const QString& text) {
                if (translation) {
                    if (m_mainWindow) m_mainWindow->showAiChat();
                } else {
                    handTextToChat(text);
                }
            });
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void ActionManager::aiAnnotateWithPixmap(const QPixmap& pixmap)
{
    if (pixmap.isNull() || !aiProviderReady(false)) return;
    toast(tr("AI 自动标注", "ai.annotate.processing.title"),
          tr("✏️ AI 正在智能识别并标注 UI 控件，请稍候...",
             "ai.annotate.processing.body"));
    const AiJob job = startAiJob(pixmap, tr("AI 自动标注", "ai.annotate.title"),
                                 tr("正在识别 UI 控件...", "ai.annotate.processing"),
                                 tr("标注失败", "ai.annotate.failed"));
    service::ai::AiWorkflow* workflow = job.workflow; // named for the lambdas below
    const quint64 task = job.task;
    workflow->setProperty("__srcPixmap", QVariant::fromValue(pixmap));
    connect(workflow, &service::ai::AiWorkflow::boxesReady, this,
            [this, workflow, task](const QList<service::ai::AnnotationBox>& boxes) {
                TaskManager::instance().updateTask(
                    task, TaskItem::Finished,
                    tr("标注成功 (%1 个控件)", "ai.annotate.success").arg(boxes.size()), QString());
                const QPixmap source = workflow->property("__srcPixmap").value<QPixmap>();
                if (!source.isNull()) {
                    const QPixmap marked = drawAnnotationBoxes(source, boxes);
                    core::copyPixmapToClipboard(marked);
                    m_pinManager->addPin(marked);
                    const QString path = newCapturePath();
                    if (service::capture::savePixmapFile(marked, path))
                        service::history::HistoryService::instance().insert(
                            marked, path, core::HistoryCategory::Ai, QString());
                }
                workflow->deleteLater();
            });
    workflow->annotate(pixmap);
}

void ActionManager::annotateScreen()
{
    const QPixmap pixmap = m_captureService->grabScreens();
    if (pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    openAnnotationOverlay(pixmap, tr("Annotation copied (%1x%2)"));
}

void ActionManager::reeditFromPixmap(const QPixmap& pixmap)
{
    if (pixmap.isNull()) {
        toast(tr("Re-edit failed", "capture.failed.title"), tr("Image could not be loaded."));
        return;
    }
    openAnnotationOverlay(pixmap, tr("Region copied to clipboard (%1x%2)"));
}

void ActionManager::openAnnotationOverlay(const QPixmap& pixmap, const QString& copiedBody)
{
    auto* overlay = takeOverlay(pixmap);
    connect(overlay, &widget::CaptureOverlay::copyRequested, this,
            [this, copiedBody](const QPixmap& cropped) { copyOnly(cropped, copiedBody); });
    connect(overlay, &widget::CaptureOverlay::pinRequested, m_pinManager, &PinManager::addPin);
    connect(overlay, &widget::CaptureOverlay::saveRequested, this,
            [this](const QPixmap& cropped) { saveCropped(cropped, SaveKind::Annotation); });
    overlay->selectWholeImage();
    overlay->show();
    overlay->raise();
    overlay->activateWindow();
}

void ActionManager::pinHideAll()
{
    m_pinManager->hideAll();
}

void ActionManager::pinRestoreAll()
{
    m_pinManager->restoreAll();
}

void ActionManager::clearAllPins()
{
    m_pinManager->clearAll();
}

void ActionManager::pinFromPixmap(const QPixmap& pixmap)
{
    if (!pixmap.isNull()) m_pinManager->addPin(pixmap);
}

void ActionManager::pinFromClipboard()
{
    const QImage image = core::clipboardImage();
    if (image.isNull()) {
        toast(tr("No image", "tray.clipboard.empty.title"),
              tr("Clipboard doesn't contain an image."));
        return;
    }
    const QPixmap pixmap = QPixmap::fromImage(image);
    if (!pixmap.isNull()) m_pinManager->addPin(pixmap);
}

void ActionManager::togglePinClickThrough()
{
    m_pinManager->toggleClickThroughAtCursor();
}

void ActionManager::copyAndSave(const QPixmap& cropped)
{
    core::copyPixmapToClipboard(cropped);
    const QString path = newCapturePath();
    if (service::capture::savePixmapFile(cropped, path))
        service::history::HistoryService::instance().insert(
            cropped, path, core::HistoryCategory::Screenshot, QString());
    // Copied is true whatever became of the file.
    toast(tr("Copied", "capture.copied.title"),
          tr("Region copied to clipboard (%1x%2)").arg(cropped.width()).arg(cropped.height()));
}

void ActionManager::saveCropped(const QPixmap& cropped, SaveKind kind)
{
    const QString path = newCapturePath();
    const bool annotation = kind == SaveKind::Annotation;
    if (!service::capture::savePixmapFile(cropped, path)) {
        if (!annotation) toast(tr("Save failed", "capture.savefail.title"), path);
        return;
    }
    service::history::HistoryService::instance().insert(
        cropped, path,
        annotation ? core::HistoryCategory::Annotation : core::HistoryCategory::Screenshot,
        QString());
    toast(tr("Saved", "capture.saved.title"), path);
}

void ActionManager::copyOnly(const QPixmap& cropped, const QString& body)
{
    core::copyPixmapToClipboard(cropped);
    toast(tr("Copied", "capture.copied.title"),
          QString(body).arg(cropped.width()).arg(cropped.height()));
}

void ActionManager::captureFullscreen()
{
    const core::CaptureResult result = m_captureService->captureFullscreen();
    if (result.pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    core::copyPixmapToClipboard(result.pixmap);
    const QString path = newCapturePath();
    service::capture::savePixmapFile(result.pixmap, path);
    // The row is made even when the save failed.
    service::history::HistoryService::instance().insert(
        result.pixmap, path, core::HistoryCategory::Screenshot, QString());
    toast(tr("Captured", "capture.captured.title"),
          tr("Captured %1x%2").arg(result.width).arg(result.height));
}

void ActionManager::captureWindow()
{
    const service::capture::WindowInfo window = service::capture::foregroundWindow();
    // Where the desktop tells no window's place (Wayland), the user shows it on the overlay.
    if (window.rect.isNull() && platform::desktopPlacesWindows()) {
        openRegionOverlay(tr("Drag over the window to capture", "overlay.hint.window"));
        return;
    }
    if (window.rect.isNull()) {
        toast(tr("No window", "capture.window.empty.title"),
              tr("Could not detect foreground window."));
        return;
    }
    const core::CaptureResult result = m_captureService->captureRegion(window.rect);
    if (result.pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    core::copyPixmapToClipboard(result.pixmap);
    toast(tr("Captured", "capture.captured.title"), tr("Window captured: %1").arg(window.title));
}

void ActionManager::captureDelayed(int secs)
{
    toast(tr("Delayed capture", "capture.delayed.title"),
          tr("Capturing in %1 seconds...").arg(secs));
    // The notices, this one and the task card, leave the screen a moment before the grab.
    QTimer::singleShot(qMax(secs, 1) * 1000 - kMenuGoneMs, this,
                       [this] { runAfterMenu(&ActionManager::copyFullscreen); });
}

void ActionManager::copyFullscreen()
{
    const core::CaptureResult result = m_captureService->captureFullscreen();
    if (result.pixmap.isNull()) {
        toastCaptureFailed();
        return;
    }
    core::copyPixmapToClipboard(result.pixmap);
    toast(tr("Captured", "capture.captured.title"),
          tr("Delayed capture done (%1x%2)").arg(result.width).arg(result.height));
}

void ActionManager::showHistory()
{
    if (m_mainWindow) m_mainWindow->showHistory();
}

void ActionManager::showSettings()
{
    if (m_mainWindow) m_mainWindow->showSettings();
}

void ActionManager::showAbout()
{
    showSettings();
}

void ActionManager::showAiSettings()
{
    if (m_mainWindow) m_mainWindow->showAiSettings();
}

void ActionManager::openOutputDir()
{
    const QString dir = core::ConfigManager::instance().outputDir();
    QDir().mkpath(dir);
    QDesktopServices::openUrl(QUrl::fromLocalFile(dir));
}

// One sheet at a time: the hotkey pressed again brings the open one forward.
void ActionManager::showShortcutSheet()
{
    static QPointer<widget::ShortcutSheetDialog> sheet;
    if (!sheet) {
        sheet = new widget::ShortcutSheetDialog(nullptr);
        sheet->setAttribute(Qt::WA_DeleteOnClose);
    }
    sheet->show();
    sheet->raise();
    sheet->activateWindow();
}

void ActionManager::showLicense()
{
    auto* dialog = new widget::LicenseDialog(nullptr);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

void ActionManager::restartAsAdmin()
{
    const auto outcome =
        platform::relaunchElevated(QCoreApplication::applicationFilePath().toStdString());
    if (outcome == platform::Elevation::Started) {
        QCoreApplication::quit();
        return;
    }
    if (outcome == platform::Elevation::Unavailable) {
        core::writeLogLine(
            QStringLiteral("[actions] restart as administrator is not available on X11"));
        toast(tr("Elevation canceled", "tray.elevation.canceled"),
              tr("Running Zelmor as administrator is not supported on X11 desktops."));
        return;
    }
    toast(tr("Elevation canceled", "tray.elevation.canceled"),
          tr("Restart as administrator was not granted."));
}

// Applied here at once; a changed setting makes the start-up wiring apply it once more.
void ActionManager::setTheme(const QString& name)
{
    ThemeManager::instance().apply(name);
    core::ConfigManager::instance().setTheme(name);
}

// Not quit(): that first asks every window to close, and the main window refuses, since
// closing it only hides it.
void ActionManager::quit()
{
    QCoreApplication::exit(0);
}

} // namespace zelmor::manager
