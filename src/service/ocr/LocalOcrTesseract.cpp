// Tesseract through its C interface, loaded at first use, so that it stays optional at run time.

#include "LocalOcrEngine.h"

#include <QLibrary>
#include <QStringList>

#include <tesseract/capi.h>

#include <optional>

namespace zelmor::service::ocr {

namespace {

// A screen's resolution, which the enlargement multiplies.
constexpr double kScreenPpi = 96;

struct Tesseract
{
    QLibrary library{QStringLiteral("tesseract"), 5};
    QString error;
    decltype(&TessVersion) version = nullptr;
    decltype(&TessDeleteText) deleteText = nullptr;
    decltype(&TessDeleteTextArray) deleteTextArray = nullptr;
    decltype(&TessBaseAPICreate) create = nullptr;
    decltype(&TessBaseAPIDelete) destroy = nullptr;
    decltype(&TessBaseAPIInit2) init = nullptr;
    decltype(&TessBaseAPIGetLoadedLanguagesAsVector) loadedLanguages = nullptr;
    decltype(&TessBaseAPISetImage) setImage = nullptr;
    decltype(&TessBaseAPISetSourceResolution) setResolution = nullptr;
    decltype(&TessBaseAPIRecognize) recognize = nullptr;
    decltype(&TessBaseAPIGetUTF8Text) text = nullptr;
    decltype(&TessBaseAPIClear) clear = nullptr;
    decltype(&TessMonitorCreate) createMonitor = nullptr;
    decltype(&TessMonitorDelete) deleteMonitor = nullptr;
    decltype(&TessMonitorSetCancelFunc) setCancelFunc = nullptr;
    decltype(&TessMonitorSetCancelThis) setCancelThis = nullptr;
    // OpenMP's, through the engine's dependencies: its threads contend for the cores, so that
    // one thread alone reads a full screen of text twice as fast on two cores.
    void (*setMaxActiveLevels)(int) = nullptr;

    Tesseract()
    {
        const bool resolved =
            library.load() && bind(version, "TessVersion") && bind(deleteText, "TessDeleteText") &&
            bind(deleteTextArray, "TessDeleteTextArray") && bind(create, "TessBaseAPICreate") &&
            bind(destroy, "TessBaseAPIDelete") && bind(init, "TessBaseAPIInit2") &&
            bind(loadedLanguages, "TessBaseAPIGetLoadedLanguagesAsVector") &&
            bind(setImage, "TessBaseAPISetImage") &&
            bind(setResolution, "TessBaseAPISetSourceResolution") &&
            bind(recognize, "TessBaseAPIRecognize") && bind(text, "TessBaseAPIGetUTF8Text") &&
            bind(clear, "TessBaseAPIClear") && bind(createMonitor, "TessMonitorCreate") &&
            bind(deleteMonitor, "TessMonitorDelete") &&
            bind(setCancelFunc, "TessMonitorSetCancelFunc") &&
            bind(setCancelThis, "TessMonitorSetCancelThis");
        bind(setMaxActiveLevels, "omp_set_max_active_levels");
        if (!resolved)
            error = QStringLiteral("Tesseract 5 is not installed (Debian: libtesseract5): %1")
                        .arg(library.errorString());
    }

    template <typename Function> bool bind(Function& function, const char* name)
    {
        function = reinterpret_cast<Function>(library.resolve(name));
        return function != nullptr;
    }
};

const Tesseract& tesseract()
{
    static const Tesseract loaded;
    return loaded;
}

bool stopRequested(void* flag, int)
{
    return static_cast<const std::atomic_bool*>(flag)->load();
}

std::optional<QString> readBand(TessBaseAPI* api, const QImage& band, int ppi,
                                const std::atomic_bool* cancelled)
{
    const Tesseract& t = tesseract();
    if (t.setMaxActiveLevels) t.setMaxActiveLevels(0); // for this thread's regions
    t.setImage(api, band.constBits(), band.width(), band.height(), 1, int(band.bytesPerLine()));
    t.setResolution(api, ppi);
    ETEXT_DESC* monitor = t.createMonitor();
    if (cancelled) {
        t.setCancelFunc(monitor, &stopRequested);
        t.setCancelThis(monitor, const_cast<std::atomic_bool*>(cancelled));
    }
    const bool recognised = t.recognize(api, monitor) == 0;
    t.deleteMonitor(monitor);
    char* text = recognised ? t.text(api) : nullptr;
    t.clear(api);
    if (!text) return std::nullopt;
    const QString read = QString::fromUtf8(text);
    t.deleteText(text);
    return read;
}

} // namespace

struct LocalOcrEngine::State
{
    TessBaseAPI* api = nullptr;
    QString error;
};

LocalOcrEngine::LocalOcrEngine(const QString& languages) : m_state(std::make_unique<State>())
{
    const Tesseract& t = tesseract();
    if (!t.error.isEmpty()) {
        m_state->error = t.error;
        return;
    }
    const QByteArray list = languageList(languages).toLatin1();
    m_state->api = t.create();
    if (t.init(m_state->api, nullptr, list.constData(), tesseract::OEM_LSTM_ONLY) != 0)
        m_state->error =
            QStringLiteral("Tesseract cannot load the languages \"%1\". Install their data "
                           "(Debian: tesseract-ocr-eng, tesseract-ocr-chi-sim, …) or change the "
                           "language list in the provider's model field in Settings → AI.")
                .arg(QString::fromLatin1(list));
}

LocalOcrEngine::~LocalOcrEngine()
{
    if (m_state->api) tesseract().destroy(m_state->api);
}

QString LocalOcrEngine::loadError() const
{
    return m_state->error;
}

QString LocalOcrEngine::description() const
{
    if (!m_state->error.isEmpty()) return m_state->error;
    const Tesseract& t = tesseract();
    QStringList names;
    if (char** loaded = t.loadedLanguages(m_state->api)) {
        for (char** name = loaded; *name; ++name)
            names << QString::fromUtf8(*name);
        t.deleteTextArray(loaded);
    }
    return QStringLiteral("Tesseract %1, languages: %2")
        .arg(QString::fromLatin1(t.version()), names.join(QStringLiteral(", ")));
}

LocalOcrResult LocalOcrEngine::recognize(const QImage& image, const std::atomic_bool* cancelled)
{
    if (!m_state->error.isEmpty()) return {QString(), m_state->error};
    const QList<QImage> bands = prepareBands(image);
    if (bands.isEmpty()) return {QString(), QStringLiteral("The image is empty or too large.")};
    const int ppi = int(kScreenPpi * readingScale(image.size()));
    QStringList texts;
    for (const QImage& band : bands) {
        const std::optional<QString> text = readBand(m_state->api, band, ppi, cancelled);
        if (cancelled && cancelled->load()) return {QString(), QStringLiteral("OCR cancelled")};
        if (!text) return {QString(), QStringLiteral("Tesseract could not read the image.")};
        texts << *text;
    }
    return {tidy(texts.join(QLatin1Char('\n'))), QString()};
}

} // namespace zelmor::service::ocr
