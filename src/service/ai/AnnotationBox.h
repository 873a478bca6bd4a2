#pragma once

#include <QList>
#include <QMetaType>
#include <QRect>
#include <QString>

namespace zelmor::service::ai {

// One detected interface element, in image pixels.
struct AnnotationBox
{
    QRect rect;
    QString label;
};

struct AnnotationParse
{
    QList<AnnotationBox> boxes;
    QString error; // empty on success
};

// Reads the detector's answer: the JSON array between the first "[" and the last "]", prose
// around it tolerated; boxes without area are dropped and the rest clamped into the image.
AnnotationParse parseAnnotationBoxes(const QString& answer, const QSize& imageSize);

} // namespace zelmor::service::ai

Q_DECLARE_METATYPE(zelmor::service::ai::AnnotationBox)
