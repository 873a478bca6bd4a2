#pragma once

#include <QObject>

namespace zelmor::service::capture {
class CaptureService;
}
namespace zelmor::widget {
class MainWindow;
}

namespace zelmor::manager {

// The one entrance to what the program does: tray, hotkeys, the command line and the
// panels call these slots, and each slot is a short script over the services.
class ActionManager : public QObject
{
    Q_OBJECT
public:
    explicit ActionManager(widget::MainWindow* mainWindow, QObject* parent = nullptr);

    service::capture::CaptureService* captureService() const { return m_captureService; }

public Q_SLOTS:
    void captureFullscreen();
    void captureWindow();
    void captureDelayed(int secs = 3);
    void showHistory();
    void openOutputDir();
    void restartAsAdmin();
    void quit();

private:
    widget::MainWindow* m_mainWindow;
    service::capture::CaptureService* m_captureService;
};

} // namespace zelmor::manager
