// Records a 3 s GIF at 10 frames a second of a region, as the recording does, and writes its
// frames as PNG files; exits 3 where the desktop gives single pictures only.
//   zelmor-wl-record X Y WIDTH HEIGHT FOLDER

#include "core/DisplaySession.h"
#include "platform/ScreenGrab.h"
#include "service/record/FrameStore.h"
#include "service/record/RecordingService.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

using namespace zelmor;

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc != 6) return std::fprintf(stderr, "usage: %s X Y W H FOLDER\n", argv[0]), 2;
    core::tellDisplayServer();
    if (platform::grabsAreSinglePictures()) return 3;
    const QString folder = QString::fromLocal8Bit(argv[5]);
    service::record::RecordingService recording;
    QObject::connect(&recording, &service::record::RecordingService::framesRecorded, &app,
                     [&](std::shared_ptr<const service::record::FrameStore> frames) {
                         service::record::FrameReader reader(frames);
                         for (int i = 0; i < frames->count(); ++i)
                             reader.frame(i).save(folder +
                                                  QString("/%1.png").arg(i, 3, 10, QChar('0')));
                         app.exit(frames->count() > 1 ? 0 : 1);
                     });
    recording.recordGif({atoi(argv[1]), atoi(argv[2]), atoi(argv[3]), atoi(argv[4])}, 3, 10);
    QTimer::singleShot(30000, &app, [&] { app.exit(1); });
    return app.exec();
}
