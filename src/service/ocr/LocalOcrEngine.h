#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>

namespace zelmor::service::ocr {

// What a recognition gives: the text with its line breaks, or why there is none.
struct LocalOcrResult
{
    QString text;
    QString error; // empty on success
};

// Text recognition on this machine, without network, through Tesseract. An engine loads its
// language data once and belongs to the thread that made it.
class LocalOcrEngine
{
public:
    explicit LocalOcrEngine(const QString& languages);
    ~LocalOcrEngine();

    // Why the engine cannot recognise anything; empty when it can.
    QString loadError() const;
    // "Tesseract 5.3.0, languages: eng, chi_sim".
    QString description() const;
    // Stops early, with an error, once `cancelled` is set.
    LocalOcrResult recognize(const QImage& image, const std::atomic_bool* cancelled = nullptr);

    // The provider's model field as a language list: "eng+chi_sim" when empty, and nothing
    // but language codes joined by "+".
    static QString languageList(const QString& model);
    // Blocks of text are read on this many threads at once, each with an engine of its own.
    static constexpr int kThreads = 2;
    // Tesseract puts spaces between Chinese characters; a reader does not.
    static QString tidy(QString text);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace zelmor::service::ocr
