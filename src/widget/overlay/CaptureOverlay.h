#pragma once

#include "OverlayPainter.h"
#include "ShapeEditor.h"

#include <QImage>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

class QTextEdit;

namespace zelmor::widget {

namespace overlay {
class InlineTextEdit;
class OverlayPanels;
} // namespace overlay

// One full-desktop window over a frozen picture: the user picks a region, adjusts it,
// draws on it and decides what happens to it. It ends by emitting one signal and closing;
// what the signal means is up to the caller. Where a window covers one output at most
// (Wayland), a full-desktop overlay is one window per output: this one shows the first
// output's part and speaks for the others, which hand it their outcomes.
class CaptureOverlay : public QWidget
{
    Q_OBJECT
public:
    enum Mode { Region = 0, Gif = 1, Scroll = 2 };

    CaptureOverlay(const QPixmap& frozen, QWidget* parent);
    CaptureOverlay(const QPixmap& frozen, const QRect& geometry, QWidget* parent);
    // Built ahead, with its panels and native window but no picture: a hotkey then only loads
    // the picture and shows the window.
    explicit CaptureOverlay(QWidget* parent = nullptr);
    // The frozen picture, over `geometry` (all screens when null); once, before showing.
    void load(const QPixmap& frozen, const QRect& geometry = QRect());

    void setMode(int mode);
    // What the idle overlay asks of the user instead of its mode's usual words.
    void setHint(const QString& hint);
    // The whole picture becomes the selection, ready for drawing.
    void selectWholeImage();
    // The selection with every shape painted on it; null without a selection.
    QPixmap croppedPixmap() const;

    // State, for the panels' owner and for tests.
    int mode() const { return m_mode; }
    int tool() const { return m_tool; }
    bool hasSelection() const { return m_hasSelection; }
    QRect selection() const { return m_selection; }
    QRect hoverRect() const { return m_hoverRect; }
    const QList<service::capture::AnnotationShape>& annotations() const
    {
        return m_shapes.annotations();
    }
    QColor penColor() const { return m_penColor; }
    int penWidth() const { return m_penWidth; }
    int fontSize() const { return m_fontSize; }
    overlay::OverlayPanels* panels() const { return m_panels; }
    QTextEdit* inlineEdit() const;
    // Paints the frame as it would appear now.
    QImage renderFrame() const;

    void setTool(int tool);
    void undo();
    void redo();

Q_SIGNALS:
    void copyRequested(const QPixmap& cropped);
    void pinRequested(const QPixmap& cropped);
    void saveRequested(const QPixmap& cropped);
    void ocrRequested(const QPixmap& cropped);
    void translateRequested(const QPixmap& cropped);
    void aiAnnotateRequested(const QPixmap& cropped);
    void cancelled();
    void recordStartRequested(const QRect& rect, int durationSecs, int fps);
    void scrollStartRequested(const QRect& rect);
    // The scrolling capture, with the page scrolled by the program.
    void autoScrollStartRequested(const QRect& rect);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void loadPart(const QPixmap& frozen, const QRect& geometry);
    void spreadOverScreens(const QPixmap& frozen);
    void adoptPart(CaptureOverlay* part);
    overlay::OverlayScene scene() const;
    void warmUpPainting();
    void collectWindowRects();
    void collectSnapRects();
    void takeKeyboard(int triesLeft);
    void repaintAtOutputScale(int triesLeft);
    void beginSelection(const QPoint& pos);
    void changeSelection(const QRect& rect);
    void completeSelection(bool refreshSidePanel);
    void renewSelectionImage();
    void refreshSidePanel();
    void placePanels();
    void updateHover(const QPoint& pos);
    void updateCursorAt(const QPoint& pos);
    void beginShape(const QPoint& pos);
    // Ends the drag of a shape; a text or stamp opens the box for its text.
    void finishShape(const QPoint& pos);
    bool handleToolKey(const QString& text);
    void copyColourUnderPointer();
    void reselect();
    void onAction(int action);
    void finishWith(void (CaptureOverlay::*signal)(const QPixmap&));

    QPixmap m_frozenPixmap;
    QImage m_frozenImage;
    QImage m_selectionImage;
    int m_mode = Region;
    bool m_selecting = false;
    bool m_hasSelection = false;
    QPoint m_dragStart;
    QPoint m_dragCurrent;
    QRect m_selection;
    QPoint m_mousePos;
    QList<QRect> m_snapRects;
    int m_resizeHandle = -1;
    QRect m_resizeStartRect;
    QPointF m_annotationAnchor;
    bool m_moving = false;
    QPoint m_movePressPos;
    QRect m_moveStartRect;
    QList<QRect> m_windowRects;
    QRect m_hoverRect;
    bool m_hoverPressed = false;
    QPoint m_hoverPressPos;
    overlay::OverlayPanels* m_panels = nullptr;
    overlay::ShapeEditor m_shapes;
    int m_tool = 0;
    QColor m_penColor = QColor(255, 82, 82, 255);
    int m_penWidth = 3;
    int m_fontSize = 18;
    overlay::InlineTextEdit* m_inlineEdit = nullptr; // made on first use
    bool m_altHeld = false;
    bool m_hexColor = true;
    QString m_copiedColorText;
    bool m_keyboardGrabbed = false;
    bool m_shownBefore = false;
    // The selection's offset on the desktop's picture: this window's place on it.
    QPoint m_desktopOffset;
    QString m_hint;
    QList<QPointer<CaptureOverlay>> m_parts; // the other outputs' windows, on the first one
    QPointer<CaptureOverlay> m_lead;         // on the others, the first one
};

} // namespace zelmor::widget
