#pragma once

#include "FrameStore.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>

class QIODevice;

// Animated GIF output for recordings. Plain functions without shared state: safe to call on a
// pool thread, and the gifski subprocess lives and dies on the calling thread.
namespace zelmor::service::record {

// Told the number of frames written so far, from the encoding thread.
using ExportProgress = std::function<void(int framesWritten)>;

// Writes `frames` as one looping GIF at `path`, each shown for `intervalMs`. The size is
// rounded down to even numbers, at least 2; frames of another size are scaled to it.
// Tries gifski first and falls back to the own encoder. True means a file stands at `path`;
// `error` holds the reason of the last failure, which may be a gifski failure even on success.
// The file is replaced only once it is complete: a failure, or `cancel` set from another
// thread, leaves whatever stood at `path` as it was.
bool encodeGif(QString& error, const QString& path, const FrameSequence& frames, int intervalMs,
               int width, int height, const std::atomic_bool* cancel = nullptr,
               const ExportProgress& progress = {});
// The same for frames at hand, compressed into a store first.
bool encodeGif(QString& error, const QString& path, const QList<QImage>& frames, int intervalMs,
               int width, int height, const std::atomic_bool* cancel = nullptr);

// Streams the frames to gifski as YUV4MPEG2 on its standard input. False without touching
// `error` when no gifski is found.
bool encodeWithGifski(QString& error, const QString& path, const FrameSequence& frames,
                      int intervalMs, int width, int height,
                      const std::atomic_bool* cancel = nullptr,
                      const ExportProgress& progress = {});

// The own encoder: GIF89a with a median-cut 256-colour local table per frame. Frames are
// decoded and encoded on every core, and written in order.
bool writeGifParallel(QString& error, const QString& path, const FrameSequence& frames,
                      int intervalMs, int width, int height,
                      const std::atomic_bool* cancel = nullptr,
                      const ExportProgress& progress = {});
// The same encoder on one thread over frames at hand: the reference the parallel one matches
// byte for byte.
bool writeGifMedianCut(QString& error, const QString& path, const QList<QImage>& frames,
                       int intervalMs, int width, int height,
                       const std::atomic_bool* cancel = nullptr);

// The first gifski executable beside the program, in the working folder or on PATH; empty
// when there is none.
QString findGifski();

// The frame at exactly width x height in RGB32; a null frame becomes black so that the
// animation keeps its length.
QImage fitFrame(const QImage& frame, int width, int height);

// One "FRAME" of a C420jpeg YUV4MPEG2 stream; width and height are expected to be even.
QByteArray y4mFrame(const QImage& frame, int width, int height);

// 256 opaque colours: the frame's own colours when it has at most 256, else a median cut.
QList<QRgb> buildPalette(const QImage& frame);

// The image data of one GIF frame: code size, LZW codes in sub-blocks, terminator.
void writeLzw(QIODevice& out, const QImage& indexed);

} // namespace zelmor::service::record
