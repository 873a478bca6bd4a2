#pragma once

#include <QElapsedTimer>
#include <QPixmap>
#include <QWidget>

class QMimeData;

namespace zelmor::widget {

// An image kept on top of the desktop in a small frameless window. It can be zoomed,
// rotated, flipped and moved; copying, saving and double-clicking always use the image
// as pinned, while painting and dragging out use it as transformed.
class PinWindow : public QWidget
{
    Q_OBJECT
public:
    explicit PinWindow(const QPixmap& pixmap, QWidget* parent = nullptr);

    QSize sizeHint() const override { return m_windowSize; }

    const QPixmap& sourcePixmap() const { return m_sourcePixmap; }
    const QPixmap& displayPixmap() const { return m_displayPixmap; }
    double zoom() const { return m_zoom; }
    int rotation() const { return m_rotation; }
    bool flipH() const { return m_flipH; }
    bool flipV() const { return m_flipV; }
    bool clickThrough() const { return m_clickThrough; }
    // Where the image sits inside the window, around it the shadow and the border.
    QRect imageRect() const;

    // The drag-out payload: the transformed image as PNG and a temporary file holding it.
    // Null when the file cannot be written; the caller owns the result.
    QMimeData* createDragMimeData() const;

public Q_SLOTS:
    void toggleClickThrough();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void placeAt(const QPoint& topLeft);
    // Keeps the pin alive while a menu, dialog or drag of its own runs a nested event loop.
    class NestedLoop;

    void updateDisplayPixmap();
    void fitToImage();
    void relayout();
    void zoomBy(double factor);
    // The pin's own F9 and menu, which also tell how to get back.
    void toggleClickThroughFromPin();
    void startDragOut();
    void copyToClipboard();
    void saveAs();

    QPixmap m_sourcePixmap;
    QPixmap m_displayPixmap;
    QPoint m_dragOffset;
    bool m_dragging = false;
    // Where the pin asked to be, held against the window manager for a moment after a show.
    QPoint m_askedAt;
    QElapsedTimer m_sinceShown;
    bool m_dragOutArmed = false;
    QPoint m_dragOutStart;
    double m_zoom = 1.0;
    int m_rotation = 0;
    bool m_flipH = false;
    bool m_flipV = false;
    bool m_clickThrough = false;
    int m_shadowMargin = 0; // room for the shadow, where a compositor can show one
    int m_borderWidth = 1;
    QSize m_windowSize;
    int m_nestedLoops = 0;
    bool m_deleteAfterLoops = false;
};

} // namespace zelmor::widget
