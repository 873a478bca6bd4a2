#pragma once

#include <QColor>
#include <QList>
#include <QObject>

class QComboBox;
class QLabel;
class QSpinBox;
class QToolButton;
class QWidget;

namespace zelmor::widget::overlay {

// The three floating panels of the capture overlay: the action bar, the annotation bar
// and the side panel with size, position and a magnified preview.
class OverlayPanels : public QObject
{
    Q_OBJECT
public:
    enum Action {
        Copy,
        Pin,
        Save,
        Ocr,
        Translate,
        AiAnnotate,
        Undo,
        Redo,
        Reselect,
        Cancel,
        Start,
        AutoScroll
    };
    Q_ENUM(Action)

    explicit OverlayPanels(QWidget* overlay);

    QWidget* actionBar() const { return m_actionBar; }
    QWidget* annotationBar() const { return m_annotationBar; }
    QWidget* sidePanel() const { return m_sidePanel; }
    QToolButton* actionButton(Action action) const;
    QToolButton* toolButton(int tool) const; // tool 0 is the select button
    QToolButton* paletteButton(int digit) const;

    // Checks the buttons that belong to `tool` and enables the font box for text tools.
    void showTool(int tool);
    // Checks the palette button of a digit 1-9 and returns its colour.
    QColor pickPaletteColour(int digit);
    void setPenWidth(int width);
    void setFontSize(int size);
    void setButtonsForMode(int mode);
    void hideAll();
    // Shows and places every panel for the mode around the selection.
    void place(const QRect& selection, const QSize& overlaySize, bool withAnnotationBar);
    void refreshSidePanel(const QString& sizeHtml, const QString& position, const QPixmap& preview);
    int durationSecs() const;
    int fps() const;

Q_SIGNALS:
    void actionTriggered(int action);
    void toolPicked(int tool);
    void colourPicked(const QColor& colour);
    void penWidthEdited(int width);
    void fontSizeEdited(int size);

private:
    void buildActionBar(QWidget* overlay);
    void buildAnnotationBar(QWidget* overlay);
    void buildSidePanel(QWidget* overlay);

    QWidget* m_actionBar = nullptr;
    QWidget* m_annotationBar = nullptr;
    QWidget* m_sidePanel = nullptr;
    QList<QToolButton*> m_actionButtons; // indexed by Action
    QList<QToolButton*> m_toolButtons;   // indexed by tool, 0 is select
    QList<QToolButton*> m_paletteButtons;
    QComboBox* m_duration = nullptr;
    QComboBox* m_fps = nullptr;
    QSpinBox* m_widthBox = nullptr;
    QSpinBox* m_fontBox = nullptr;
    QLabel* m_sizeLabel = nullptr;
    QLabel* m_posLabel = nullptr;
    QLabel* m_magPreview = nullptr;
};

} // namespace zelmor::widget::overlay
