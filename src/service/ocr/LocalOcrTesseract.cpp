// Tesseract through its C interface, loaded at first use, so that it stays optional at run time.

#include "LocalOcrEngine.h"
#include "LocalOcrLayout.h"

#include <QLibrary>
#include <QStringList>
#include <QThread>

#include <tesseract/capi.h>

#include <memory>
#include <optional>
#include <vector>

namespace zelmor::service::ocr {

namespace {

// A screen's resolution, which the enlargement multiplies.
constexpr double kScreenPpi = 96;
// Below this mean confidence a block is read again, this many times as large.
constexpr int kSureConfidence = 80;
constexpr double kRetryScale = 1.5;
// A bitmap font still unsure at the larger size is read once more, blurred more; that reading
// counts only when this sure, as on a barely readable prompt it turns symbols into others.
constexpr int kSofterConfidence = 50;

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
    decltype(&TessBaseAPISetPageSegMode) setPageSegMode = nullptr;
    decltype(&TessBaseAPISetImage) setImage = nullptr;
    decltype(&TessBaseAPISetSourceResolution) setResolution = nullptr;
    decltype(&TessBaseAPIRecognize) recognize = nullptr;
    decltype(&TessBaseAPIGetUTF8Text) text = nullptr;
    decltype(&TessBaseAPIMeanTextConf) confidence = nullptr;
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
            bind(setPageSegMode, "TessBaseAPISetPageSegMode") &&
            bind(setImage, "TessBaseAPISetImage") &&
            bind(setResolution, "TessBaseAPISetSourceResolution") &&
            bind(recognize, "TessBaseAPIRecognize") && bind(text, "TessBaseAPIGetUTF8Text") &&
            bind(confidence, "TessBaseAPIMeanTextConf") && bind(clear, "TessBaseAPIClear") &&
            bind(createMonitor, "TessMonitorCreate") && bind(deleteMonitor, "TessMonitorDelete") &&
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

// An engine for one thread, reading a block of lines at a time; null when it cannot load.
TessBaseAPI* createApi(const QByteArray& languages)
{
    const Tesseract& t = tesseract();
    TessBaseAPI* api = t.create();
    if (t.init(api, nullptr, languages.constData(), tesseract::OEM_LSTM_ONLY) != 0) {
        t.destroy(api);
        return nullptr;
    }
    t.setPageSegMode(api, tesseract::PSM_SINGLE_BLOCK);
    return api;
}

struct Reading
{
    QString text;
    int confidence = 0; // 0 to 100
};

std::optional<Reading> readImage(TessBaseAPI* api, const QImage& block, int ppi,
                                 const std::atomic_bool* cancelled)
{
    const Tesseract& t = tesseract();
    if (t.setMaxActiveLevels) t.setMaxActiveLevels(0); // for this thread's regions
    t.setImage(api, block.constBits(), block.width(), block.height(), 1, int(block.bytesPerLine()));
    t.setResolution(api, ppi);
    ETEXT_DESC* monitor = t.createMonitor();
    if (cancelled) {
        t.setCancelFunc(monitor, &stopRequested);
        t.setCancelThis(monitor, const_cast<std::atomic_bool*>(cancelled));
    }
    const bool recognised = t.recognize(api, monitor) == 0;
    t.deleteMonitor(monitor);
    char* text = recognised ? t.text(api) : nullptr;
    const int confidence = recognised ? t.confidence(api) : 0;
    t.clear(api);
    if (!text) return std::nullopt;
    const Reading read{QString::fromUtf8(text), confidence};
    t.deleteText(text);
    return read;
}

std::optional<Reading> readPrepared(TessBaseAPI* api, const LocalOcrLayout& layout,
                                    const OcrBlock& block, const std::atomic_bool* cancelled)
{
    const QImage prepared = layout.prepared(block);
    if (prepared.isNull()) return std::nullopt;
    return readImage(api, prepared, int(kScreenPpi * block.scale), cancelled);
}

// A block the engine is unsure of, as a line of Chinese taken for Latin letters, is read once
// more at another size, and the surer reading kept.
std::optional<QString> readBlock(TessBaseAPI* api, const LocalOcrLayout& layout,
                                 const OcrBlock& block, const std::atomic_bool* cancelled)
{
    std::optional<Reading> best = readPrepared(api, layout, block, cancelled);
    if (!best) return std::nullopt;
    const auto keepSurer = [&](const OcrBlock& other, int atLeast) {
        const std::optional<Reading> reading = readPrepared(api, layout, other, cancelled);
        if (reading && reading->confidence > best->confidence && reading->confidence >= atLeast)
            best = reading;
    };
    OcrBlock larger = block;
    larger.scale *= kRetryScale;
    if (best->confidence < kSureConfidence) keepSurer(larger, 0);
    OcrBlock softer = block;
    softer.softness = OcrBlock::Softness::Strong;
    if (block.sharp && best->confidence < kSureConfidence) keepSurer(softer, kSofterConfidence);
    return best->text;
}

} // namespace

struct LocalOcrEngine::State
{
    QByteArray languages;
    std::vector<TessBaseAPI*> apis; // the first thread's, then the helpers', loaded when needed
    QString error;

    TessBaseAPI* api(size_t thread)
    {
        if (!apis[thread]) apis[thread] = createApi(languages);
        return apis[thread];
    }
};

LocalOcrEngine::LocalOcrEngine(const QString& languages) : m_state(std::make_unique<State>())
{
    const Tesseract& t = tesseract();
    if (!t.error.isEmpty()) {
        m_state->error = t.error;
        return;
    }
    m_state->languages = languageList(languages).toLatin1();
    m_state->apis.resize(kThreads, nullptr);
    if (!m_state->api(0))
        m_state->error =
            QStringLiteral("Tesseract cannot load the languages \"%1\". Install their data "
                           "(Debian: tesseract-ocr-eng, tesseract-ocr-chi-sim, …) or change the "
                           "language list in the provider's model field in Settings → AI.")
                .arg(QString::fromLatin1(m_state->languages));
}

LocalOcrEngine::~LocalOcrEngine()
{
    for (TessBaseAPI* api : m_state->apis)
        if (api) tesseract().destroy(api);
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
    if (char** loaded = t.loadedLanguages(m_state->apis[0])) {
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
    if (image.isNull()) return {QString(), QStringLiteral("The image is empty or too large.")};
    const LocalOcrLayout layout(image);
    const QList<OcrBlock>& blocks = layout.blocks();
    QList<std::optional<QString>> texts(blocks.size());
    std::atomic_int next = 0;
    std::atomic_bool failed = false;
    // Each thread takes the next block until none is left, with an engine of its own.
    const auto work = [&](size_t thread) {
        TessBaseAPI* api = m_state->api(thread);
        for (int i = 0; api && (i = next++) < blocks.size();) {
            if (failed || (cancelled && cancelled->load())) return;
            texts[i] = readBlock(api, layout, blocks[i], cancelled);
            if (!texts[i]) failed = true;
        }
    };
    std::vector<std::unique_ptr<QThread>> helpers;
    for (size_t thread = 1; thread < size_t(kThreads) && thread < size_t(blocks.size()); ++thread) {
        helpers.emplace_back(QThread::create(work, thread));
        helpers.back()->start();
    }
    work(0);
    for (const auto& helper : helpers)
        helper->wait();
    if (cancelled && cancelled->load()) return {QString(), QStringLiteral("OCR cancelled")};
    if (failed) return {QString(), QStringLiteral("Tesseract could not read the image.")};
    QString text;
    for (int i = 0; i < blocks.size(); ++i) {
        if (i > 0) text += blocks[i].joinsPrevious ? QLatin1Char(' ') : QLatin1Char('\n');
        text += texts[i]->trimmed();
    }
    return {tidy(text), QString()};
}

} // namespace zelmor::service::ocr
