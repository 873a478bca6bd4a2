#pragma once

#include <QImage>
#include <QList>
#include <QRect>

#include <vector>

namespace zelmor::service::ocr {

// A region of text of one size, and how to enlarge it for the engine.
struct OcrBlock
{
    QRect rect;
    double scale = 1;
    bool sharp = false;         // a bitmap font: enlarged by whole pixels, then blurred
    bool joinsPrevious = false; // on the same line as the block before it
    QList<QRect> stacked;       // characters written one under another, read side by side
    // How much a sharp block is blurred once enlarged: bitmap letters read best with their
    // steps rounded off, lightly, or for the finest fonts, as "w" with a short middle, more.
    enum class Softness { Light, Strong } softness = Softness::Light;
};

// The text of a screenshot as the engine reads it best: on a light background, without ruling
// lines, box borders and cursor blocks, cut into blocks of lines of one size, each enlarged so
// that its letters are about as tall as those the engine was trained on.
class LocalOcrLayout
{
public:
    explicit LocalOcrLayout(const QImage& image);

    const QList<OcrBlock>& blocks() const { return m_blocks; }
    // The pixels of the largest block that a picture of this size can give.
    static qint64 largestBlockPixels(const QSize& size);
    // The block enlarged on a white margin; null when it does not fit in memory.
    QImage prepared(const OcrBlock& block) const;

private:
    struct Component
    {
        QRect rect;
        int pixels = 0;
        int coloured = 0;
        // The sum of the coloured pixels' hues as vectors as long as their chroma, and of
        // their chroma: near alike where they share a hue.
        double hueX = 0, hueY = 0, chroma = 0;
        int darkest = 255;
    };

    // Numbers the eight-connected shapes of the pixels `inside` in m_labels and calls
    // `visit(label, x, y)` for each of their pixels, the first pixel of a shape first.
    template <typename Inside, typename Visit> void label(Inside inside, Visit visit);
    void eraseShadedIcons(int light);
    void findComponents(const QImage& colour);
    int typicalHeight(const QRect& within, const Component* except = nullptr) const;
    enum class Verdict { Text, Line, Icon };
    Verdict judge(int label) const;
    bool isRing(int label) const;
    void eraseNonText();
    void squareDots();
    int lineCount(const QRect& rect, int height) const;
    void cut(const QRect& rect, QList<QRect>& lines) const;
    void groupLines(const QList<QRect>& lines);
    QImage sideBySide(const QList<QRect>& characters) const;
    bool isSharp(const QRect& rect) const;

    QImage m_grey;
    QImage m_ink;              // 1 where the grey differs from the background
    std::vector<int> m_labels; // per pixel, its component's index, or -1
    QList<Component> m_components;
    int m_faint = 255; // shapes with nothing darker are no text
    QList<OcrBlock> m_blocks;
};

} // namespace zelmor::service::ocr
