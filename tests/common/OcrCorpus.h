#pragma once

// The screenshots of real programs under tests/data/ocr, each beside its exact text, and the
// character error rate that the recognition test and the benchmark measure on them.

#include <QDir>
#include <QFile>
#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace zelmor::testing {

inline QString ocrCorpusDir()
{
    return QStringLiteral(ZELMOR_OCR_CORPUS);
}

inline QStringList ocrCorpusNames()
{
    QStringList names = QDir(ocrCorpusDir()).entryList({QStringLiteral("*.png")}, QDir::Files);
    for (QString& name : names)
        name.chop(4);
    return names;
}

inline QString ocrCorpusText(const QString& name)
{
    QFile file(ocrCorpusDir() + QLatin1Char('/') + name + QStringLiteral(".txt"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// Blanks folded to one space, and none next to a Chinese character, where readers differ.
inline QString foldedText(const QString& text)
{
    static const QRegularExpression cjkBlank(
        QStringLiteral(" (?=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}])|"
                       "(?<=[\\x{3000}-\\x{303F}\\x{4E00}-\\x{9FFF}\\x{FF00}-\\x{FFEF}]) "));
    return text.simplified().remove(cjkBlank);
}

// Edits from the truth to what was read, per character of the truth, after folding blanks.
inline double characterErrorRate(const QString& truthText, const QString& readText)
{
    const QString truth = foldedText(truthText), read = foldedText(readText);
    QList<int> previous(read.size() + 1), current(read.size() + 1);
    std::iota(previous.begin(), previous.end(), 0);
    for (int i = 1; i <= truth.size(); ++i) {
        current[0] = i;
        for (int j = 1; j <= read.size(); ++j)
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1,
                                   previous[j - 1] + (truth[i - 1] == read[j - 1] ? 0 : 1)});
        std::swap(previous, current);
    }
    return double(previous[read.size()]) / std::max<qsizetype>(1, truth.size());
}

} // namespace zelmor::testing
