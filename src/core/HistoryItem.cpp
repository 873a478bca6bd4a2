#include "HistoryItem.h"

#include <iterator>

namespace zelmor::core {

namespace {

constexpr const char* kCategoryTexts[] = {"screenshot", "annotation", "recording", "ai"};

} // namespace

QString historyCategoryToText(HistoryCategory category)
{
    const int index = int(category);
    if (index < 0 || index >= int(std::size(kCategoryTexts))) return QStringLiteral("screenshot");
    return QLatin1String(kCategoryTexts[index]);
}

HistoryCategory historyCategoryFromText(const QString& text)
{
    for (int i = 1; i < int(std::size(kCategoryTexts)); ++i)
        if (text == QLatin1String(kCategoryTexts[i])) return HistoryCategory(i);
    return HistoryCategory::Screenshot;
}

} // namespace zelmor::core
