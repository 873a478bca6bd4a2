// Tesseract through its C interface, loaded at first use, so that it stays optional at run time.

#include "LocalOcrEngine.h"

#include <QLibrary>

#include <tesseract/capi.h>

namespace zelmor::service::ocr {

namespace {

// The prepared image is enlarged to about this many pixels per inch.
constexpr int kPreparedPpi = 288;

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
    const QImage prepared = prepare(image);
    if (prepared.isNull()) return {QString(), QStringLiteral("The image is empty or too large.")};
    const Tesseract& t = tesseract();
    if (t.setMaxActiveLevels) t.setMaxActiveLevels(0); // for this thread's regions
    t.setImage(m_state->api, prepared.constBits(), prepared.width(), prepared.height(), 1,
               int(prepared.bytesPerLine()));
    t.setResolution(m_state->api, kPreparedPpi);
    ETEXT_DESC* monitor = t.createMonitor();
    if (cancelled) {
        t.setCancelFunc(monitor, &stopRequested);
        t.setCancelThis(monitor, const_cast<std::atomic_bool*>(cancelled));
    }
    const bool recognised = t.recognize(m_state->api, monitor) == 0;
    t.deleteMonitor(monitor);
    char* text = recognised && !(cancelled && cancelled->load()) ? t.text(m_state->api) : nullptr;
    t.clear(m_state->api);
    if (cancelled && cancelled->load()) {
        if (text) t.deleteText(text);
        return {QString(), QStringLiteral("OCR cancelled")};
    }
    if (!text) return {QString(), QStringLiteral("Tesseract could not read the image.")};
    const QString result = tidy(QString::fromUtf8(text));
    t.deleteText(text);
    return {result, QString()};
}

} // namespace zelmor::service::ocr
