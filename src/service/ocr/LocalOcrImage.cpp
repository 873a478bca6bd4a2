// What both builds share: the language list and the tidying of the text.

#include "LocalOcrEngine.h"

#include <QRegularExpression>

namespace zelmor::service::ocr {

namespace {

constexpr int kMaxLanguageChars = 64;

} // namespace

QString LocalOcrEngine::languageList(const QString& model)
{
    QStringList codes;
    for (const QString& part : model.split(QLatin1Char('+'), Qt::SkipEmptyParts)) {
        QString code = part.trimmed();
        code.remove(QRegularExpression(QStringLiteral("[^A-Za-z0-9_]")));
        if (!code.isEmpty() && !codes.contains(code)) codes << code;
    }
    const QString list = codes.join(QLatin1Char('+')).left(kMaxLanguageChars);
    return list.isEmpty() ? QStringLiteral("eng+chi_sim") : list;
}

QString LocalOcrEngine::tidy(QString text)
{
    static const QRegularExpression cjkGap(
        QStringLiteral("(?<=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}]) +"
                       "(?=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}])"));
    static const QRegularExpression trailingBlanks(QStringLiteral("[ \\t]+(?=\\n|$)"));
    // It reads the two hyphens before a long command-line option as one long dash.
    static const QRegularExpression optionDash(QStringLiteral("(?<!\\S)\\x{2014}(?=[A-Za-z])"));
    text.replace(optionDash, QStringLiteral("--"));
    text.remove(cjkGap);
    text.remove(trailingBlanks);
    return text.trimmed();
}

} // namespace zelmor::service::ocr
