#pragma once

#include <QWidget>

class QLabel;

namespace zelmor::widget {

// The strip that stands over a scroll capture: the height stitched so far, stop and cancel.
class ScrollHud : public QWidget
{
    Q_OBJECT
public:
    explicit ScrollHud(QWidget* parent = nullptr);

public slots:
    void setStitchedHeight(int px);

signals:
    void stopRequested();
    void cancelRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QLabel* m_heightLabel = nullptr;
};

} // namespace zelmor::widget
