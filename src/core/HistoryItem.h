#pragma once

#include "CaptureResult.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QStringList>

namespace zelmor::core {

// Where a history item came from; stored as text, so the numbers never reach the file.
enum class HistoryCategory : qint32 { Screenshot = 0, Annotation = 1, Recording = 2, Ai = 3 };

// The favourite mark is an ordinary tag with this one-character name.
inline const QString kFavouriteTag = QStringLiteral("\u2605");

struct HistoryItem
{
    qint64 id = 0;
    CaptureKind kind = Image;
    HistoryCategory category = HistoryCategory::Screenshot;
    QString path;
    QDateTime createdAt;
    qint32 width = 0;
    qint32 height = 0;
    QString ocrText; // edited by the details column; the store never fills it
    QString note;    // reserved
    QStringList tags;
};

// Unknown values write "screenshot".
QString historyCategoryToText(HistoryCategory category);
// Unknown texts, NULL included, read as Screenshot.
HistoryCategory historyCategoryFromText(const QString& text);

} // namespace zelmor::core

Q_DECLARE_METATYPE(zelmor::core::HistoryItem)
