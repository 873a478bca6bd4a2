// The desktop's stream of the screen (its ScreenCast portal), read through PipeWire on
// PipeWire's own thread: grabs take the latest picture, which is what a recording or a scroll
// capture needs where the compositor lets no client copy the screen itself (KDE, GNOME).

#include "ScreenStream.h"
#include "../Pixels.h"
#include "portal/ScreenCastPortal.h"
#include "portal/ScreenshotPortal.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>

#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zelmor::platform::wayland {

namespace {

// A new stream that sends a picture at once sends it within this time.
constexpr int kFirstPictureMs = 500;
// A stream nobody grabbed from for this long is closed (the desktop shows that it casts).
constexpr qint64 kIdleMs = 15000;

class ScreenStream
{
public:
    ~ScreenStream() { stop(); } // the reading thread ends before the process does
    bool start(const ScreenCastGrant& grant);
    void stop();
    bool running() const { return m_loop && !m_broken; }
    bool copy(const Rect& rect, std::uint32_t* dest, int destStride);
    void standInForStill();

private:
    static void onState(void* self, pw_stream_state, pw_stream_state state, const char*);
    static void onFormat(void* self, std::uint32_t id, const spa_pod* param);
    static void onProcess(void* self);
    static void onIdleCheck(void* self, std::uint64_t);
    bool connect(std::uint32_t node);
    void take(const spa_buffer* buffer);

    pw_thread_loop* m_loop = nullptr;
    pw_context* m_context = nullptr;
    pw_core* m_core = nullptr;
    pw_stream* m_stream = nullptr;
    spa_source* m_idleTimer = nullptr;
    spa_hook m_listener{};
    spa_video_info_raw m_format{};
    std::atomic<bool> m_broken{false};

    std::mutex m_mutex; // guards what follows, shared with the grabbing threads
    bool m_open = false;
    bool m_closing = false;
    std::condition_variable m_pictureCame;
    QImage m_picture;
    Rect m_area;
    QElapsedTimer m_lastGrab;
};

ScreenStream& screenStream()
{
    static ScreenStream stream;
    return stream;
}

bool ScreenStream::start(const ScreenCastGrant& grant)
{
    static const bool initialized = (pw_init(nullptr, nullptr), true);
    (void)initialized;
    m_broken = false;
    m_loop = pw_thread_loop_new("zelmor-screen", nullptr);
    if (!m_loop) {
        ::close(grant.remote);
        return false;
    }
    pw_thread_loop_lock(m_loop);
    m_context = pw_context_new(pw_thread_loop_get_loop(m_loop), nullptr, 0);
    // The core owns the remote from here, and closes it.
    m_core = m_context ? pw_context_connect_fd(m_context, grant.remote, nullptr, 0) : nullptr;
    if (!m_context) ::close(grant.remote);
    const bool ok = m_core && connect(grant.node);
    pw_thread_loop_unlock(m_loop);
    if (!ok || pw_thread_loop_start(m_loop) < 0) {
        stop();
        return false;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_area = grant.area;
    m_lastGrab.start();
    m_open = true;
    m_closing = false;
    return true;
}

bool ScreenStream::connect(std::uint32_t node)
{
    m_stream = pw_stream_new(m_core, "zelmor",
                             pw_properties_new(PW_KEY_MEDIA_TYPE, "Video", PW_KEY_MEDIA_CATEGORY,
                                               "Capture", PW_KEY_MEDIA_ROLE, "Screen", nullptr));
    if (!m_stream) return false;
    static const pw_stream_events handlers = [] {
        pw_stream_events events{};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.state_changed = &ScreenStream::onState;
        events.param_changed = &ScreenStream::onFormat;
        events.process = &ScreenStream::onProcess;
        return events;
    }();
    pw_stream_add_listener(m_stream, &m_listener, &handlers, this);

    // Pixels in memory in the layouts a grab reads: four bytes, red and blue either way round.
    std::uint8_t buffer[1024];
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer, sizeof buffer);
    spa_rectangle size{1920, 1080}, minSize{1, 1}, maxSize{16384, 16384};
    spa_fraction rate{30, 1}, minRate{0, 1}, maxRate{1000, 1};
    const auto* format = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
        SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
        SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
        SPA_POD_CHOICE_ENUM_Id(5, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_BGRx,
                               SPA_VIDEO_FORMAT_BGRA, SPA_VIDEO_FORMAT_RGBx, SPA_VIDEO_FORMAT_RGBA),
        SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&size, &minSize, &maxSize),
        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&rate, &minRate, &maxRate)));
    if (pw_stream_connect(m_stream, PW_DIRECTION_INPUT, node,
                          pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS),
                          &format, 1) < 0)
        return false;
    m_idleTimer =
        pw_loop_add_timer(pw_thread_loop_get_loop(m_loop), &ScreenStream::onIdleCheck, this);
    timespec second{1, 0};
    return m_idleTimer && pw_loop_update_timer(pw_thread_loop_get_loop(m_loop), m_idleTimer,
                                               &second, &second, false) >= 0;
}

void ScreenStream::stop()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = false;
        m_picture = QImage();
    }
    if (m_loop) {
        pw_thread_loop_stop(m_loop);
        if (m_stream) pw_stream_destroy(m_stream);
        if (m_idleTimer) pw_loop_destroy_source(pw_thread_loop_get_loop(m_loop), m_idleTimer);
        if (m_core) pw_core_disconnect(m_core);
        if (m_context) pw_context_destroy(m_context);
        pw_thread_loop_destroy(m_loop);
    }
    m_loop = nullptr;
    m_context = nullptr;
    m_core = nullptr;
    m_stream = nullptr;
    m_idleTimer = nullptr;
}

void ScreenStream::onState(void* self, pw_stream_state, pw_stream_state state, const char*)
{
    auto* stream = static_cast<ScreenStream*>(self);
    if (state != PW_STREAM_STATE_ERROR && state != PW_STREAM_STATE_UNCONNECTED) return;
    std::lock_guard<std::mutex> lock(stream->m_mutex);
    stream->m_broken = true;
    stream->m_pictureCame.notify_all();
}

void ScreenStream::onFormat(void* self, std::uint32_t id, const spa_pod* param)
{
    auto* stream = static_cast<ScreenStream*>(self);
    std::uint32_t mediaType = 0, mediaSubtype = 0;
    if (!param || id != SPA_PARAM_Format ||
        spa_format_parse(param, &mediaType, &mediaSubtype) < 0 ||
        mediaType != SPA_MEDIA_TYPE_video || mediaSubtype != SPA_MEDIA_SUBTYPE_raw ||
        spa_format_video_raw_parse(param, &stream->m_format) < 0)
        return;
    // Buffers the stream's own memory holds, which a plain copy can read.
    std::uint8_t buffer[256];
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer, sizeof buffer);
    const auto* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &builder, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_dataType,
        SPA_POD_CHOICE_FLAGS_Int((1 << SPA_DATA_MemPtr) | (1 << SPA_DATA_MemFd))));
    pw_stream_update_params(stream->m_stream, &buffers, 1);
}

void ScreenStream::onProcess(void* self)
{
    auto* stream = static_cast<ScreenStream*>(self);
    // Only the newest picture counts; older ones queued meanwhile go back at once.
    pw_buffer* newest = nullptr;
    while (pw_buffer* next = pw_stream_dequeue_buffer(stream->m_stream)) {
        if (newest) pw_stream_queue_buffer(stream->m_stream, newest);
        newest = next;
    }
    if (!newest) return;
    stream->take(newest->buffer);
    pw_stream_queue_buffer(stream->m_stream, newest);
}

void ScreenStream::take(const spa_buffer* buffer)
{
    const int width = int(m_format.size.width), height = int(m_format.size.height);
    if (buffer->n_datas < 1 || width <= 0 || height <= 0) return;
    const spa_data& data = buffer->datas[0];
    // A buffer without a picture (one that only moves the pointer) keeps the last one.
    if (!data.data || !data.chunk || data.chunk->size == 0) return;
    const int stride = data.chunk->stride > 0 ? data.chunk->stride : width * 4;
    if (data.chunk->offset + std::size_t(stride) * height > data.maxsize) return;
    const QImage view(static_cast<const uchar*>(data.data) + data.chunk->offset, width, height,
                      stride, QImage::Format_RGB32);
    const bool redFirst =
        m_format.format == SPA_VIDEO_FORMAT_RGBx || m_format.format == SPA_VIDEO_FORMAT_RGBA;
    QImage picture = redFirst ? view.rgbSwapped() : view.copy();
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_area.isEmpty()) m_area = {0, 0, width, height};
    // A scaled monitor streams in its own pixels; grabs are in the desktop's.
    if (width != m_area.width || height != m_area.height)
        picture = picture.scaled(m_area.width, m_area.height, Qt::IgnoreAspectRatio,
                                 Qt::SmoothTransformation);
    m_picture = std::move(picture);
    m_pictureCame.notify_all();
}

void ScreenStream::onIdleCheck(void* self, std::uint64_t)
{
    auto* stream = static_cast<ScreenStream*>(self);
    {
        std::lock_guard<std::mutex> lock(stream->m_mutex);
        if (stream->m_closing || stream->m_lastGrab.elapsed() < kIdleMs) return;
        stream->m_closing = true;
    }
    // Closed where it was opened: this thread is the one being stopped.
    if (QCoreApplication* app = QCoreApplication::instance())
        QMetaObject::invokeMethod(app, [] {
            screenStream().stop();
            closeScreenCast();
        });
}

void ScreenStream::standInForStill()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_pictureCame.wait_for(lock, std::chrono::milliseconds(kFirstPictureMs),
                               [this] { return !m_picture.isNull() || m_broken; }))
        return;
    // A desktop may send no picture of a still screen (KWin's headless output sends none at
    // all): a screenshot stands in until it sends one.
    const Rect area = m_area;
    lock.unlock();
    QImage still(area.width, area.height, QImage::Format_RGB32);
    const bool taken =
        !area.isEmpty() &&
        grabThroughScreenshotPortal(area, area, reinterpret_cast<std::uint32_t*>(still.bits()),
                                    int(still.bytesPerLine() / 4));
    lock.lock();
    if (taken && m_picture.isNull()) m_picture = still;
}

bool ScreenStream::copy(const Rect& rect, std::uint32_t* dest, int destStride)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_open || m_closing) return false;
    m_lastGrab.restart();
    m_pictureCame.wait_for(lock, std::chrono::milliseconds(kFirstPictureMs),
                           [this] { return !m_picture.isNull() || m_broken; });
    if (m_picture.isNull()) return false;
    // The fourth byte of a stream's pixel may be anything; the copy makes it opaque.
    copyFromPicture(reinterpret_cast<const std::uint32_t*>(m_picture.constBits()),
                    int(m_picture.bytesPerLine() / 4), m_area, rect, dest, destStride);
    return true;
}

} // namespace

bool openScreenStream()
{
    ScreenStream& stream = screenStream();
    if (stream.running()) return true;
    stream.stop();
    ScreenCastGrant grant;
    if (!openScreenCast(&grant)) return false;
    if (!stream.start(grant)) {
        closeScreenCast();
        return false;
    }
    stream.standInForStill();
    return true;
}

bool grabFromScreenStream(const Rect& rect, std::uint32_t* dest, int destStride)
{
    return !rect.isEmpty() && dest && destStride >= rect.width &&
           screenStream().copy(rect, dest, destStride);
}

} // namespace zelmor::platform::wayland
