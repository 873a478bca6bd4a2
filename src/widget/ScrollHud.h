#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace zelmor::widget {

class StripSurface;

// The strip that stands over a scroll capture: the height stitched so far, stop and cancel.
class ScrollHud : public QWidget
{
    Q_OBJECT
public:
    explicit ScrollHud(QWidget* parent = nullptr);
    // On Wayland the strip shows where it stands through the desktop's own layer.
    void setVisible(bool visible) override;

public slots:
    void setStitchedHeight(int px);
    // While the image is written the strip says so and takes no more clicks.
    void setSaving(bool saving);
    // Asks the user to scroll back: the page moved further than the region in one step.
    void setTooFast(bool tooFast);

signals:
    void stopRequested();
    void cancelRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    StripSurface* m_surface = nullptr;
    static QString heightText(int px);
    static QString savingText();
    static QString tooFastText();
    QString labelText() const;
    void fitLabelWidth();

    QLabel* m_heightLabel = nullptr;
    QPushButton* m_stopButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    bool m_saving = false;
    bool m_tooFast = false;
    int m_height = 0;
};

} // namespace zelmor::widget
