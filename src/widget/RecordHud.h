#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QPushButton;

namespace zelmor::widget {

class StripSurface;

// The strip that stands over a recording: elapsed time, pause, stop, cancel and the keys just
// pressed. It never takes the focus from the program being recorded.
class RecordHud : public QWidget
{
    Q_OBJECT
public:
    explicit RecordHud(QWidget* parent = nullptr);
    // On Wayland the strip shows where it stands through the desktop's own layer.
    void setVisible(bool visible) override;

public slots:
    void setElapsed(int secs);
    void setPaused(bool paused);
    void setKeyChips(const QStringList& labels);
    // The seconds until the memory runs out at the current rate; below 0 shows nothing.
    void setTimeLeft(int secs);

signals:
    void pauseRequested();
    void stopRequested();
    void cancelRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    StripSurface* m_surface = nullptr;
    QLabel* m_timeLabel = nullptr;
    QLabel* m_timeLeftLabel = nullptr;
    QPushButton* m_pauseButton = nullptr;
    QPushButton* m_stopButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QLabel* m_keysLabel = nullptr;
    bool m_paused = false;
    int m_timeLeft = -1;
};

// Marks a recorded or scrolled region from just outside it; clicks go through it. Where the
// compositor places windows itself (Wayland) it could not surround the region, and would be
// tiled beside the recorded program, shrinking it: there it stays hidden.
class RecordRegionFrame : public QWidget
{
    Q_OBJECT
public:
    explicit RecordRegionFrame(const QRect& region, QWidget* parent = nullptr);
    void setVisible(bool visible) override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

// Window flags shared by the strips and the frame: on top, frameless, never activated, and
// out of the window manager's hands, which would otherwise focus them on a click.
Qt::WindowFlags recordOverlayFlags();

// The strips' look: a button with a border and a hover colour of its own, and the dark
// rounded background.
QPushButton* makeHudButton(QWidget* strip, const QString& text, const QString& border,
                           const QString& hover);
void paintHudBackground(QWidget* strip);

} // namespace zelmor::widget
