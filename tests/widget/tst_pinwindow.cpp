#include "DesktopDriver.h"
#include "TestMain.h"
#include "TestSupport.h"

#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "manager/PinManager.h"
#include "widget/PinWindow.h"

#include <QClipboard>
#include <QFileDialog>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>

using zelmor::core::ConfigManager;
using zelmor::core::tool::Toast;
using zelmor::manager::PinManager;
using zelmor::widget::PinWindow;

namespace {

constexpr int kPadding = 2 * 1; // the border on each side; no shadow without a compositor

// Red, green / blue, yellow quadrants: every rotation and flip moves another to the top left.
QPixmap quadrants()
{
    QImage image(200, 100, QImage::Format_RGB32);
    QPainter p(&image);
    const Qt::GlobalColor colours[] = {Qt::red, Qt::green, Qt::blue, Qt::yellow};
    for (int i = 0; i < 4; ++i)
        p.fillRect(i % 2 * 100, i / 2 * 50, 100, 50, colours[i]);
    return QPixmap::fromImage(image);
}

QImage rgb(const QImage& image)
{
    return image.convertToFormat(QImage::Format_RGB32);
}

// A window wider than a pin on every side: pins open in the middle of the screen.
QRect underThePin()
{
    QRect area(QPoint(), QSize(600, 400));
    area.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    return area;
}

// "wheel+" and "wheel-" turn the wheel; anything else is a key sequence.
void input(PinWindow* pin, const QString& what)
{
    if (what.startsWith(QLatin1String("wheel"))) {
        const QPointF at = pin->rect().center();
        QWheelEvent event(at, pin->mapToGlobal(at), {}, QPoint(0, what.endsWith('+') ? 120 : -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(pin, &event);
    } else {
        const QKeyCombination key = QKeySequence(what)[0];
        QTest::keyClick(pin, key.key(), key.keyboardModifiers());
    }
}

// Sent directly: QTest's double click would leave its button state pressed.
void doubleClick(PinWindow* pin)
{
    const QPointF at = pin->imageRect().center();
    QMouseEvent event(QEvent::MouseButtonDblClick, at, pin->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(pin, &event);
}

// Picks `entry` from the pin's context menu; `onDialog` handles the dialog it opens.
void chooseFromMenu(PinWindow* pin, const QString& entry,
                    const std::function<void(QWidget*)>& onDialog = {})
{
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (QWidget* modal = QApplication::activeModalWidget(); modal && onDialog) {
            poll.stop();
            onDialog(modal);
        } else if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
            for (QAction* action : menu->actions())
                if (action->text() == entry) menu->setActiveAction(action);
            QTest::keyClick(menu, Qt::Key_Return);
            if (!onDialog) poll.stop();
        }
    });
    poll.start(10);
    const QPoint at = pin->imageRect().center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, pin->mapToGlobal(at));
    QApplication::sendEvent(pin, &event);
}

} // namespace

class TestPinWindow : public QObject
{
    Q_OBJECT

    std::unique_ptr<PinManager> m_manager;

    // A new pin of the quadrants, on screen; the test fails if it never shows.
    PinWindow* pin()
    {
        m_manager->addPin(quadrants());
        PinWindow* p = m_manager->pins().last();
        [p] { QVERIFY(QTest::qWaitForWindowExposed(p)); }();
        return p;
    }

private Q_SLOTS:
    void init() { m_manager = std::make_unique<PinManager>(); }
    void cleanup()
    {
        m_manager.reset();
        ConfigManager::instance().setPinMinZoom(0.1);
        ConfigManager::instance().setPinMaxZoom(5.0);
    }

    void transformsKeepTheCentre_data()
    {
        QTest::addColumn<QSize>("imageSize");
        QTest::addColumn<QColor>("topLeft");
        QTest::newRow("wheel-") << QSize(182, 91) << QColor(Qt::red);
        QTest::newRow("R") << QSize(100, 200) << QColor(Qt::blue);
        QTest::newRow("F") << QSize(200, 100) << QColor(Qt::green);
    }
    void transformsKeepTheCentre()
    {
        QFETCH(QSize, imageSize);
        PinWindow* p = pin();
        // The window manager places the frame a moment after the window is shown.
        QTRY_COMPARE(p->frameGeometry().center(), p->screen()->availableGeometry().center());
        const QPoint centre = p->frameGeometry().center();

        input(p, QString::fromLatin1(QTest::currentDataTag()));
        const QImage shown = p->displayPixmap().toImage();
        QCOMPARE(shown.size(), imageSize);
        QTEST(shown.pixelColor(2, 2), "topLeft");
        QCOMPARE(p->size(), imageSize + QSize(kPadding, kPadding));
        QTRY_COMPARE(p->frameGeometry().center(), centre);
    }

    void zoomStopsAtTheLimitsReadAtEachStep_data()
    {
        QTest::addColumn<double>("limit");
        QTest::addColumn<double>("changedLimit");
        QTest::newRow("+") << 5.0 << 2.0;
        QTest::newRow("-") << 0.1 << 0.5;
    }
    void zoomStopsAtTheLimitsReadAtEachStep()
    {
        QFETCH(double, changedLimit);
        const QString key = QString::fromLatin1(QTest::currentDataTag());
        PinWindow* p = pin();
        for (int i = 0; i < 40; ++i)
            input(p, key);
        QTEST(p->zoom(), "limit");
        ConfigManager& config = ConfigManager::instance();
        key == QLatin1String("+") ? config.setPinMaxZoom(changedLimit)
                                  : config.setPinMinZoom(changedLimit);
        input(p, key);
        QCOMPARE(p->zoom(), changedLimit);
    }

    void copyAndSaveTakeThePinnedImageDragOutTheShownOne()
    {
        PinWindow* p = pin();
        input(p, QStringLiteral("R"));
        const QImage pinned = rgb(p->sourcePixmap().toImage());
        const QImage shown = rgb(p->displayPixmap().toImage());
        QVERIFY(pinned.size() != shown.size());

        std::unique_ptr<QMimeData> data(p->createDragMimeData());
        QVERIFY(data);
        for (const char* type : {"image/png", "application/x-qt-image"})
            QCOMPARE(rgb(QImage::fromData(data->data(QLatin1String(type)), "PNG")), shown);
        QCOMPARE(data->urls().size(), 1);
        const QString dragged = data->urls().first().toLocalFile();
        QCOMPARE(rgb(QImage(dragged)), shown);
        QFile::remove(dragged);

        const QString path = QDir::homePath() + QStringLiteral("/saved-pin.png");
        chooseFromMenu(p, QStringLiteral("Save as..."), [&](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            QVERIFY(dialog && dialog->selectedFiles().value(0).endsWith(QLatin1String(".png")));
            dialog->selectFile(path);
            static_cast<QDialog*>(dialog)->accept(); // protected in QFileDialog
        });
        QCOMPARE(rgb(QImage(path)), pinned);

        QGuiApplication::clipboard()->clear();
        doubleClick(p); // copies, then closes the pin
        QCOMPARE(rgb(QGuiApplication::clipboard()->image()), pinned);
    }

    void resetLeavesClickThroughAlone()
    {
        PinWindow* p = pin();
        input(p, QStringLiteral("F9"));
        QVERIFY(p->clickThrough());
        // X11 gives an input-transparent window no keys, so the toast names the way back.
        QVERIFY(Toast::current() && Toast::current()->body().contains(QLatin1String("F9")));
        for (const char* key : {"R", "F", "Shift+F", "+", "0"})
            input(p, QLatin1String(key));
        // The untransformed picture is shown again, and the way through stays.
        QCOMPARE(p->displayPixmap().cacheKey(), p->sourcePixmap().cacheKey());
        QCOMPARE(p->size(), QSize(200 + kPadding, 100 + kPadding));
        QVERIFY(p->clickThrough());
        const QColor frame = p->grab().toImage().pixelColor(0, p->height() / 2);
        QVERIFY(frame.alpha() > 0 && frame.blue() > frame.red());
    }

    void clickThroughPassesRealClicksAndComesBack()
    {
        QPushButton below(QStringLiteral("below"));
        below.setGeometry(underThePin());
        below.show();
        QVERIFY(QTest::qWaitForWindowExposed(&below));
        QSignalSpy clicked(&below, &QPushButton::clicked);

        PinWindow* p = pin();
        const QRect before = p->frameGeometry();
        // The pin's red corner is on screen over the button, so a click there must pass through.
        const QPoint red = p->mapToGlobal(p->imageRect().topLeft() + QPoint(20, 20));
        QTRY_COMPARE(zelmor::test::screenPixel(red), qRgb(255, 0, 0));
        QVERIFY(zelmor::test::moveTo(red));

        m_manager->toggleClickThroughAtCursor();
        QVERIFY(p->clickThrough());
        QVERIFY(QTest::qWaitForWindowExposed(p));
        // Until the window manager lets go of the pin, its frame takes the clicks.
        QTRY_COMPARE(zelmor::test::windowIndex({}, p->winId()), -1);
        QTRY_COMPARE(p->frameGeometry(), before);
        QTRY_COMPARE(zelmor::test::screenPixel(red), qRgb(255, 0, 0)); // still shown
        QVERIFY(zelmor::test::click(red));
        QTRY_COMPARE(clicked.count(), 1);

        // The pointer alone finds a pin that takes no clicks.
        m_manager->toggleClickThroughAtCursor();
        QVERIFY(!p->clickThrough());
        QVERIFY(QTest::qWaitForWindowExposed(p));
        QTRY_COMPARE(p->frameGeometry(), before);

        // A hidden pin under the pointer counts as well, and stays hidden.
        m_manager->hideAll();
        m_manager->toggleClickThroughAtCursor();
        QVERIFY(p->clickThrough());
        QVERIFY(!p->isVisible());
        m_manager->toggleClickThroughAtCursor();
        m_manager->restoreAll();
    }

    void shiftPressWithoutDragLeavesThePin()
    {
        PinWindow* p = pin();
        const QPoint start = p->pos();
        const QPoint at(60, 40);
        QTest::mousePress(p, Qt::LeftButton, Qt::ShiftModifier, at);
        QTest::mouseMove(p, at + QPoint(4, 3));
        QTest::mouseRelease(p, Qt::LeftButton, Qt::ShiftModifier, at + QPoint(4, 3));
        QCOMPARE(p->pos(), start);
        QTest::mousePress(p, Qt::LeftButton, {}, at);
        QTest::mouseMove(p, at + QPoint(30, 20));
        QTest::mouseRelease(p, Qt::LeftButton, {}, at + QPoint(30, 20));
        QTRY_COMPARE(p->pos(), start + QPoint(30, 20));
    }

    void closingByAnyMeansEmitsPinsChanged_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("Escape") << "Escape";
        QTest::newRow("menu") << "Close";
        QTest::newRow("clearAll") << "clearAll";
    }
    void closingByAnyMeansEmitsPinsChanged()
    {
        QFETCH(QString, how);
        QSignalSpy changed(m_manager.get(), &PinManager::pinsChanged);
        m_manager->addPin(QPixmap()); // nothing to pin, nothing to tell
        QPointer<PinWindow> p = pin();
        QCOMPARE(changed.count(), 1);
        if (how == QLatin1String("Escape"))
            input(p, how);
        else if (how == QLatin1String("Close"))
            chooseFromMenu(p, how);
        else
            m_manager->clearAll();
        QTRY_VERIFY(p.isNull());
        m_manager->clearAll(); // nothing left to clear
        QCOMPARE(changed.count(), 2);
        QVERIFY(m_manager->pins().isEmpty());
    }

    // The menu and the dialog live on the pin's stack while "Clear all pins" comes in.
    void clearAllWhileTheSaveDialogIsOpen()
    {
        QPointer<PinWindow> p = pin();
        bool hidden = false;
        chooseFromMenu(p, QStringLiteral("Save as..."), [&](QWidget* modal) {
            QPointer<QWidget> dialog = modal;
            m_manager->clearAll();
            hidden = p && !p->isVisible();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            if (dialog) static_cast<QDialog*>(dialog.data())->reject();
        });
        QVERIFY(hidden);
        QVERIFY(m_manager->pins().isEmpty());
        QTRY_VERIFY(p.isNull());
    }

    // The test session runs no compositor, under which a see-through margin shows black.
    void edgesShowTheDesktopAndFollowTheCompositor()
    {
        const auto backdrop =
            zelmor::test::makeSolidWindow(QStringLiteral("backdrop"), Qt::magenta, underThePin());
        QVERIFY(QTest::qWaitForWindowExposed(backdrop.get()));
        PinWindow* p = pin();
        const auto onScreen = [p](QPoint at) {
            return zelmor::test::screenPixel(p->mapToGlobal(p->imageRect().topLeft() + at));
        };
        QTRY_COMPARE(onScreen(QPoint(20, 20)), qRgb(255, 0, 0));
        for (const QPoint& outside : {QPoint(-6, -6), QPoint(206, 50), QPoint(100, 106)})
            QCOMPARE(onScreen(outside), qRgb(255, 0, 255));

        QProcess compositor; // a real, small compositing manager
        compositor.start(QStringLiteral("xcompmgr"), {});
        QVERIFY(compositor.waitForStarted());
        QTRY_COMPARE(p->size(), QSize(200, 100) + QSize(kPadding + 24, kPadding + 24));
        compositor.kill();
        compositor.waitForFinished();
        QTRY_COMPARE(p->size(), QSize(200, 100) + QSize(kPadding, kPadding));
    }
};

ZELMOR_TEST_MAIN(TestPinWindow, QApplication)
#include "tst_pinwindow.moc"
