#include "DesktopDriver.h"
#include "TestMain.h"
#include "TestSupport.h"
#include "UrlCatcher.h"

#include "core/Log.h"
#include "core/Toast.h"
#include "manager/ActionManager.h"
#include "service/history/HistoryService.h"
#include "service/record/GifEncoder.h"
#include "widget/GifEditorDialog.h"
#include "widget/HistoryDetailPanel.h"
#include "widget/HistoryGrid.h"
#include "widget/HistoryPanel.h"
#include "widget/MainWindow.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFileDialog>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QTimer>

#include <optional>

using namespace zelmor;
using service::history::HistoryService;
using widget::HistoryPanel;
using widget::HistoryThumbnailView;

namespace {

// Runs `answer` on the first shown top-level T, from inside whatever modal loop shows it.
template <typename T> void answerWhenShown(std::function<void(T*)> answer)
{
    auto* poll = new QTimer(qApp);
    QObject::connect(poll, &QTimer::timeout, [poll, answer] {
        if (T* shown = test::shownTopLevel<T>()) {
            poll->deleteLater();
            poll->stop();
            answer(shown);
        }
    });
    poll->start(10);
}

} // namespace

class TestHistoryPanel : public QObject
{
    Q_OBJECT

    test::UrlCatcher m_opened;
    QTemporaryDir m_files;
    QHash<QString, qint64> m_ids;
    std::unique_ptr<HistoryPanel> m_ownPanel;
    HistoryPanel* m_panel = nullptr;

    // Noise compresses badly, so a wider side makes a larger file; side 0 writes no file.
    void addItem(const QString& name, int side, int daysBack, const QStringList& tags = {})
    {
        QImage image(qMax(side, 1), qMax(side, 1), QImage::Format_RGB32);
        QRandomGenerator noise(side);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, noise.generate());
        const QString path = m_files.filePath(name);
        if (side > 0) image.save(path);
        const qint64 id =
            HistoryService::instance().insert(QPixmap::fromImage(image), path, {}, QString());
        QSqlQuery age(QSqlDatabase::database(QStringLiteral("zelmor-history")));
        age.prepare(QStringLiteral("UPDATE items SET created_at = ? WHERE id = ?"));
        age.addBindValue(QDateTime::currentDateTime().addDays(-daysBack).toMSecsSinceEpoch());
        age.addBindValue(id);
        age.exec();
        HistoryService::instance().addTags(id, tags);
        m_ids.insert(name, id);
    }

    QStringList shownNames() const
    {
        QStringList names;
        for (const core::HistoryItem& item : m_panel->visibleItems())
            names << QFileInfo(item.path).fileName();
        return names;
    }
    HistoryThumbnailView* view() const { return m_panel->findChild<HistoryThumbnailView*>(); }
    QModelIndex indexOf(const QString& name) const
    {
        return view()->model()->index(int(shownNames().indexOf(name)), 0);
    }
    void clickItem(const QString& name)
    {
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {},
                          view()->visualRect(indexOf(name)).center());
    }
    QAbstractButton* detailButton(const QString& text) const
    {
        return test::buttonWithText(m_panel, text);
    }
    // Exports the item shown to `target` and returns what the closing message said.
    QString exportShown(const QString& target)
    {
        // The name typed in full: a file Qt selects in the list, as it does with the item's own
        // name while it loads the folder, would be taken over the name given to selectFile().
        answerWhenShown<QFileDialog>([target](QFileDialog* dialog) {
            dialog->findChild<QAbstractItemView*>(QStringLiteral("listView"))->clearSelection();
            auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            name->setText(target);
            QTest::keyClick(name, Qt::Key_Return);
        });
        QString told;
        answerWhenShown<QMessageBox>([&told](QMessageBox* box) {
            told = box->text();
            QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
        });
        QTest::mouseClick(detailButton(QStringLiteral("Export")), Qt::LeftButton);
        return told;
    }
    QLineEdit* tagLine() const { return m_panel->findChildren<QLineEdit*>("detailInput").first(); }
    // Null when the store has no such row.
    std::optional<QStringList> storedTags(const QString& name) const
    {
        for (const core::HistoryItem& item : HistoryService::instance().recent(500))
            if (item.id == m_ids.value(name)) return item.tags;
        return std::nullopt;
    }

private Q_SLOTS:
    // A missed file-manager call opens the folder: never a real program from a test. The
    // export dialog is Qt's own, so that the test can answer it on any desktop.
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init()
    {
        HistoryService::instance().clear();
        addItem(QStringLiteral("alpha.png"), 90, 0, {QStringLiteral("red"), core::kFavouriteTag});
        addItem(QStringLiteral("beta.png"), 30, 3);
        addItem(QStringLiteral("gamma.png"), 120, 6, {core::kFavouriteTag});
        addItem(QStringLiteral("delta.png"), 60, 7);
        m_ownPanel = std::make_unique<HistoryPanel>();
        m_panel = m_ownPanel.get();
        m_panel->resize(1200, 700);
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowActive(m_panel));
    }
    void cleanup() { m_ownPanel.reset(); }

    void filtersAndSort_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("tab");
        QTest::addColumn<int>("order");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all, newest") << "" << 0 << 0 << "alpha.png beta.png gamma.png delta.png";
        QTest::newRow("largest file") << "" << 0 << 2 << "gamma.png alpha.png delta.png beta.png";
        QTest::newRow("today") << "" << 1 << 0 << "alpha.png";
        QTest::newRow("favourites") << "" << 3 << 0 << "alpha.png gamma.png";
        QTest::newRow("name") << "bet" << 0 << 0 << "beta.png";
        QTest::newRow("tag") << "red" << 0 << 0 << "alpha.png";
        // The week is under 7 days back: delta.png, 7 days old, is left out.
        QTest::newRow("text, week, oldest") << "a.png" << 2 << 1 << "gamma.png beta.png alpha.png";
    }
    void filtersAndSort()
    {
        QFETCH(QString, typed);
        QFETCH(int, tab);
        QFETCH(int, order);
        m_panel->findChild<QComboBox*>("historySort")->setCurrentIndex(order);
        QTest::mouseClick(m_panel->findChildren<QPushButton*>("historyTab").at(tab),
                          Qt::LeftButton);
        QTest::keyClicks(m_panel->findChild<QLineEdit*>("historySearch"), typed);
        QTEST(shownNames().join(' '), "expected");
    }

    void everyControlHasAName() { QCOMPARE(test::unnamedControls(m_panel), QString()); }

    void missingFileShowsGreyTileAndNoImage()
    {
        addItem(QStringLiteral("missing.png"), 0, 0);
        QTRY_VERIFY(!indexOf("missing.png").data(Qt::DecorationRole).isNull());
        const QImage tile =
            indexOf("missing.png").data(Qt::DecorationRole).value<QPixmap>().toImage();
        QCOMPARE(tile.size(), QSize(256, 160));
        QCOMPARE(tile.convertToFormat(QImage::Format_RGB32).pixelColor(128, 80),
                 QColor(34, 34, 34));
        clickItem(QStringLiteral("missing.png"));
        QCOMPARE(m_panel->findChild<QLabel*>("detailPreview")->text(),
                 QStringLiteral("(no image)"));
        QCOMPARE(m_panel->findChildren<QLabel*>("detailValue").last()->text(), QStringLiteral("—"));
    }

    void favouriteTogglesTheMark()
    {
        QTest::mouseClick(m_panel->findChildren<QPushButton*>("historyTab").at(3), Qt::LeftButton);
        clickItem(QStringLiteral("alpha.png"));
        QTest::mouseClick(detailButton(QStringLiteral("Favorite")), Qt::LeftButton);
        QVERIFY(!storedTags("alpha.png")->contains(core::kFavouriteTag));
        QCOMPARE(shownNames(), QStringList{QStringLiteral("gamma.png")});
        QTest::mouseClick(m_panel->findChildren<QPushButton*>("historyTab").at(0), Qt::LeftButton);
        clickItem(QStringLiteral("beta.png"));
        QTest::mouseClick(detailButton(QStringLiteral("Favorite")), Qt::LeftButton);
        QVERIFY(storedTags("beta.png")->contains(core::kFavouriteTag));
    }

    void tagEditGoesToTheEditedItem_data()
    {
        QTest::addColumn<bool>("tabAway");
        QTest::addColumn<QString>("logged");
        QTest::newRow("select another item within 500 ms") << false << "flush-on-switch";
        QTest::newRow("tab away") << true << "editingFinished-save";
    }
    void tagEditGoesToTheEditedItem()
    {
        QFETCH(bool, tabAway);
        QFETCH(QString, logged);
        clickItem(QStringLiteral("alpha.png"));
        QCOMPARE(tagLine()->text(), QStringLiteral("red"));
        QSignalSpy saved(m_panel->findChild<widget::HistoryDetailPanel*>(),
                         &widget::HistoryDetailPanel::tagsEdited);
        tagLine()->setFocus();
        tagLine()->end(false);
        QTest::keyClicks(tagLine(), QStringLiteral(", blue"));
        if (tabAway) QTest::keyClick(tagLine(), Qt::Key_Tab);
        // Selecting without a click keeps the focus in the line; after a Tab nothing is pending.
        view()->setCurrentIndex(indexOf(QStringLiteral("beta.png")));
        QCOMPARE(saved.count(), 1);
        QCOMPARE(saved.first().first().toLongLong(), m_ids.value("alpha.png"));
        QStringList tags = storedTags("alpha.png").value();
        tags.sort();
        QCOMPARE(tags, (QStringList{"blue", "red", core::kFavouriteTag}));
        QVERIFY(storedTags("beta.png")->isEmpty());
        QVERIFY(
            test::readFile(core::logFilePath())
                .contains(
                    QStringLiteral("[tag] %1 id=%2").arg(logged).arg(m_ids["alpha.png"]).toUtf8()));
    }

    // A pause in typing saves the tags, and the line keeps what was typed: here, the comma.
    void pausingWhileTypingTagsKeepsTheLine()
    {
        clickItem(QStringLiteral("alpha.png"));
        QSignalSpy saved(m_panel->findChild<widget::HistoryDetailPanel*>(),
                         &widget::HistoryDetailPanel::tagsEdited);
        tagLine()->setFocus();
        tagLine()->end(false);
        QTest::keyClicks(tagLine(), QStringLiteral(", blue,"));
        QTRY_COMPARE(saved.count(), 1); // the pause
        QTest::keyClicks(tagLine(), QStringLiteral(" green"));
        QCOMPARE(tagLine()->text(), QStringLiteral("red, blue, green"));
    }

    // The column shows its whole preview and a long file name elided to fit; the cards tell
    // captures of different days apart.
    void detailsAndCardsShowWhatTheyHold()
    {
        const QString longName = QString(80, 'n') + QStringLiteral(".png");
        addItem(longName, 30, 1);
        addItem(QStringLiteral("same-a.png"), 30, 2); // the same picture a day earlier
        clickItem(longName);
        for (const char* name : {"detailPreview", "detailValue"}) {
            const QLabel* label = m_panel->findChild<QLabel*>(name);
            QCOMPARE(label->visibleRegion().boundingRect(), label->rect());
            QVERIFY(label->fontMetrics().horizontalAdvance(label->text()) <= label->width());
        }
        QVERIFY(m_panel->findChild<QLabel*>("detailValue")->text().contains(QChar(0x2026)));

        // The meta line under the thumbnail and the name: 189 px down each card.
        const auto metaLine = [this](const QString& name) {
            const QRect card = view()->visualRect(indexOf(name));
            return view()
                ->viewport()
                ->grab(QRect(card.left() + 5, card.top() + 190, 256, 14))
                .toImage();
        };
        QVERIFY(metaLine(longName) != metaLine(QStringLiteral("same-a.png")));
    }

    // Pictures past Qt's default decoding limit open and export; one past what the computer's
    // memory allows, here a smaller limit, says so.
    void largePictures_data()
    {
        QTest::addColumn<int>("limitMiB"); // 0: the program's own
        QTest::newRow("6000x6000, 137 MiB decoded") << 0;
        QTest::newRow("past the limit") << 64;
    }
    void largePictures()
    {
        QFETCH(int, limitMiB);
        const bool opens = limitMiB == 0;
        const int programLimit = QImageReader::allocationLimit();
        const auto restore = qScopeGuard([=] { QImageReader::setAllocationLimit(programLimit); });
        if (limitMiB) QImageReader::setAllocationLimit(limitMiB);
        const QString path = m_files.filePath(QStringLiteral("large.bmp"));
        QImage picture(6000, 6000, QImage::Format_RGB888);
        picture.fill(Qt::darkCyan);
        QVERIFY(picture.save(path));
        picture = QImage();
        addItem(QStringLiteral("large.bmp"), 0, 0);
        QSignalSpy copied(m_panel, &HistoryPanel::copyRequested);
        clickItem(QStringLiteral("large.bmp"));
        QTest::mouseClick(detailButton(QStringLiteral("Copy to clipboard")), Qt::LeftButton);
        QCOMPARE(copied.count(), int(opens));
        const QLabel* preview = m_panel->findChild<QLabel*>("detailPreview");
        QCOMPARE(!preview->pixmap().isNull(), opens);
        const QString target = m_files.filePath(QStringLiteral("large-%1.png").arg(limitMiB));
        const QString exported = exportShown(target);
        QCOMPARE(QFile::exists(target), opens);
        if (!opens) {
            QVERIFY2(preview->text().contains("too large"), qPrintable(preview->text()));
            QVERIFY(core::tool::Toast::current()->body().contains("too large"));
            QVERIFY2(exported.contains("too large"), qPrintable(exported));
        }
    }

    void deleteAsksAndKeepsTheFile_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("removed");
        QTest::newRow("yes") << int(QMessageBox::Yes) << true;
        QTest::newRow("no") << int(QMessageBox::No) << false;
    }
    void deleteAsksAndKeepsTheFile()
    {
        QFETCH(int, answer);
        clickItem(QStringLiteral("beta.png"));
        answerWhenShown<QMessageBox>([answer](QMessageBox* box) {
            QTest::mouseClick(box->button(QMessageBox::StandardButton(answer)), Qt::LeftButton);
        });
        QTest::mouseClick(detailButton(QStringLiteral("Delete")), Qt::LeftButton);
        QTEST(!storedTags("beta.png") && !shownNames().contains("beta.png"), "removed");
        QVERIFY(QFile::exists(m_files.filePath(QStringLiteral("beta.png"))));
    }

    void activationOpensTheEditor_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("image: re-edit on the overlay") << "alpha.png";
        QTest::newRow("gif: frame editor, suffix in capitals") << "clip.GIF";
    }
    void activationOpensTheEditor()
    {
        QFETCH(QString, name);
        QString error;
        const QImage frame(40, 30, QImage::Format_RGB32);
        QVERIFY(service::record::encodeGif(error, m_files.filePath("clip.GIF"), {frame, frame}, 100,
                                           40, 30));
        addItem(QStringLiteral("clip.GIF"), 0, 1);
        m_ownPanel.reset();
        widget::MainWindow window;
        manager::ActionManager actions(&window);
        window.showHistory();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        m_panel = window.historyPanel();
        int editedFrames = 0;
        if (name.endsWith(QLatin1String(".GIF")))
            answerWhenShown<widget::GifEditorDialog>([&](widget::GifEditorDialog* editor) {
                editedFrames = int(editor->frames().size());
                editor->reject();
            });
        // The view opens on the second press of a double click.
        const QPoint at = view()->visualRect(indexOf(name)).center();
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, at);
        if (editedFrames) {
            QCOMPARE(editedFrames, 2);
            return;
        }
        QTRY_VERIFY(test::shownTopLevel<widget::CaptureOverlay>());
        delete test::shownTopLevel<widget::CaptureOverlay>();
    }
};

ZELMOR_TEST_MAIN(TestHistoryPanel, QApplication)
#include "tst_historypanel.moc"
