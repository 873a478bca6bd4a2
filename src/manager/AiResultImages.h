#pragma once

#include "service/ai/AnnotationBox.h"

#include <QPixmap>

namespace zelmor::manager {

// The screenshot with each detected element outlined and labelled in green.
QPixmap drawAnnotationBoxes(const QPixmap& source, const QList<service::ai::AnnotationBox>& boxes);

// A yellow sticky note holding recognised text, for pinning.
QPixmap makeOcrNote(const QString& text);

// A plainer note holding a translation, for pinning.
QPixmap makeTranslationNote(const QString& text);

} // namespace zelmor::manager
