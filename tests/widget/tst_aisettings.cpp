#include "FakeAiServer.h"
#include "TestMain.h"

#include "core/Toast.h"
#include "service/ai/AiProviderService.h"
#include "widget/settings/AiSettingsPage.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

using namespace zelmor;
using service::ai::AiProviderService;
using widget::AiSettingsPage;

namespace {

QPushButton* button(QWidget& page, const QString& text)
{
    for (QPushButton* b : page.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

QLineEdit* field(QWidget& page, const QString& name)
{
    for (QLineEdit* f : page.findChildren<QLineEdit*>())
        if (f->accessibleName() == name) return f;
    return nullptr;
}

// The next message box is answered as soon as it shows.
void acceptNextBox()
{
    QTimer::singleShot(0, [] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->accept();
        else
            acceptNextBox();
    });
}

} // namespace

class TestAiSettings : public QObject
{
    Q_OBJECT

    test::FakeAiServer m_ai;

private slots:
    void cleanup()
    {
        for (const auto& p : AiProviderService::instance().list())
            AiProviderService::instance().remove(p.id);
        delete core::tool::Toast::current();
    }

    // A field saves when it is left; Cancel brings back what is stored.
    void cancelReloadsWhatIsStored()
    {
        AiSettingsPage page;
        button(page, "Add")->click();
        QLineEdit* name = field(page, "Name");
        name->setText("typed, not left");
        button(page, "Cancel")->click();
        QCOMPARE(name->text(), "New Provider");
        name->setText("left");
        emit name->editingFinished();
        button(page, "Cancel")->click();
        QCOMPARE(AiProviderService::instance().get(page.currentId()).name, "left");
        QCOMPARE(name->text(), "left");
    }

    // Saved when done: a save reloads the form, which would move the cursor of a box in use.
    void typingInTheModelBoxKeepsTheCursor()
    {
        AiSettingsPage page;
        page.show();
        button(page, "Add")->click();
        QLineEdit* model = page.findChildren<QComboBox*>().last()->lineEdit();
        model->setFocus();
        model->setCursorPosition(3);
        QTest::keyClicks(model, "XY");
        QCOMPARE(model->text(), "gptXY-4o");
        QTest::keyClick(model, Qt::Key_Return);
        QCOMPARE(AiProviderService::instance().get(page.currentId()).model, "gptXY-4o");
    }

    void presetFillsTheForm()
    {
        AiSettingsPage page;
        button(page, "Add")->click();
        auto* preset = page.findChild<QComboBox*>();
        preset->setCurrentIndex(2);
        const auto chosen = service::ai::presets().value(1);
        QCOMPARE(field(page, "Endpoint")->text(), chosen.baseUrl);
        const auto stored = AiProviderService::instance().get(page.currentId());
        QCOMPARE(stored.protocol, chosen.protocol);
        QCOMPARE(stored.model, chosen.defaultModel);
        preset->setCurrentIndex(0); // Custom changes nothing
        QCOMPARE(field(page, "Endpoint")->text(), chosen.baseUrl);
    }

    void testAgainstTheServer_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("shown");
        QTest::newRow("succeeded") << 200 << "Test Succeeded";
        QTest::newRow("failed") << 500 << "Test Failed";
    }
    void testAgainstTheServer()
    {
        QFETCH(int, status);
        QFETCH(QString, shown);
        AiSettingsPage page;
        button(page, "Add")->click();
        field(page, "Endpoint")->setText(m_ai.baseUrl());
        emit field(page, "Endpoint")->editingFinished();
        field(page, "API key")->setText("k");
        emit field(page, "API key")->editingFinished();
        m_ai.enqueue(status, R"({"choices":[{"message":{"content":"hi"}}]})");
        button(page, "Test")->click();
        QTRY_VERIFY(button(page, shown));
        QCOMPARE(core::tool::Toast::current() != nullptr, status != 200);
    }

    void shareThenPasteImport()
    {
        AiSettingsPage page;
        button(page, "Add")->click();
        field(page, "API key")->setText("secret");
        emit field(page, "API key")->editingFinished();
        acceptNextBox();
        button(page, "Share")->click();
        QVERIFY(QApplication::clipboard()->text().contains("secret"));
        const qint64 shared = page.currentId();
        button(page, "Paste import")->click();
        QCOMPARE(page.findChild<QListWidget*>()->count(), 2);
        QVERIFY(page.currentId() != shared);
        QCOMPARE(field(page, "API key")->text(), "secret");
    }
};

ZELMOR_TEST_MAIN(TestAiSettings, QApplication)
#include "tst_aisettings.moc"
