#include "AiResultImages.h"

#include <QPainter>

namespace zelmor::manager {

namespace {

QFont noteFont()
{
    QFont font(QStringLiteral("Segoe UI"));
    font.setPointSize(12);
    return font;
}

QRect noteTextBounds(const QString& text)
{
    return QFontMetrics(noteFont()).boundingRect(QRect(0, 0, 420, 1000), Qt::TextWordWrap, text);
}

} // namespace

QPixmap drawAnnotationBoxes(const QPixmap& source, const QList<service::ai::AnnotationBox>& boxes)
{
    QPixmap result = source.copy();
    QPainter painter(&result);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font(QStringLiteral("Segoe UI"));
    font.setPointSize(10);
    font.setWeight(QFont::Bold);
    painter.setFont(font);
    const QColor green(0, 184, 107, 255);
    const QPen outline(green, 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    for (const service::ai::AnnotationBox& box : boxes) {
        painter.setPen(outline);
        painter.drawRect(box.rect);
        // Measured without the two leading blanks, so a long label runs to the plate's edge.
        const int top = box.rect.top() - 18 > 0 ? box.rect.top() - 18 : 0;
        const QRect plate(box.rect.left(), top,
                          painter.fontMetrics().horizontalAdvance(box.label) + 8, 18);
        painter.fillRect(plate, green);
        painter.setPen(Qt::white);
        painter.drawText(plate, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("  ") + box.label);
    }
    return result;
}

QPixmap makeOcrNote(const QString& text)
{
    const QRect b = noteTextBounds(text);
    const int width = qMax(b.width() + 36, 260);
    const int height = b.height() + 36;
    QPixmap note(width, height);
    note.fill(Qt::transparent);
    QPainter painter(&note);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(255, 249, 196));
    painter.setPen(QPen(QColor(241, 196, 15), 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.drawRoundedRect(QRectF(0, 0, width, height), 8.0, 8.0);
    painter.setFont(noteFont());
    painter.setPen(QColor(44, 62, 80));
    const int textWidth = b.width() + 36 > 260 ? b.width() : 224;
    painter.drawText(QRect(18, 18, textWidth, b.height()), Qt::TextWordWrap, text);
    return note;
}

QPixmap makeTranslationNote(const QString& text)
{
    const QRect b = noteTextBounds(text);
    QPixmap note(qMax(b.width() + 32, 240), qMax(b.height() + 32, 120));
    note.fill(QColor(254, 243, 199));
    QPainter painter(&note);
    painter.setFont(noteFont());
    painter.setPen(QColor(120, 53, 15));
    painter.drawText(QRect(16, 16, note.width() - 32, note.height() - 32), Qt::TextWordWrap, text);
    return note;
}

} // namespace zelmor::manager
