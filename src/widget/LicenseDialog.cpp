#include "LicenseDialog.h"

#include "FollowLanguage.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

// Debian keeps each package's copyright and licence text here (a Windows build ships them
// beside the executable instead).
QString packageNotice(const char* package)
{
    return QStringLiteral("/usr/share/doc/%1/copyright").arg(QLatin1String(package));
}

QString noticeHtml(const LicenseNotice& notice)
{
    const QString where = QFileInfo::exists(notice.fullText)
                              ? QStringLiteral("<a href=\"%1\">%2</a>")
                                    .arg(QUrl::fromLocalFile(notice.fullText).toString(),
                                         notice.fullText.toHtmlEscaped())
                              : notice.fullText.toHtmlEscaped();
    return QStringLiteral("<h3>%1</h3><p>%2<br><b>%3</b><br>%4</p>")
        .arg(notice.component.toHtmlEscaped(), notice.use.toHtmlEscaped(),
             notice.license.toHtmlEscaped(), where);
}

} // namespace

QList<LicenseNotice> licenseNotices()
{
    QList<LicenseNotice> notices{
        {QStringLiteral("Qt %1").arg(QLatin1String(qVersion())),
         QStringLiteral("Application framework: windows, images, networking, SQL, D-Bus."),
         QStringLiteral("GNU Lesser General Public License, version 3"),
         packageNotice("libqt6core6")},
        {QStringLiteral("SQLite"),
         QStringLiteral("The history database and its full-text index (FTS5)."),
         QStringLiteral("Public domain"), packageNotice("libsqlite3-0")},
        {QStringLiteral("libatspi (AT-SPI 2)"),
         QStringLiteral("Reading and operating the controls of other programs."),
         QStringLiteral("GNU Lesser General Public License, version 2.1 or later"),
         packageNotice("libatspi2.0-0")},
        {QStringLiteral("GLib"), QStringLiteral("Used by libatspi."),
         QStringLiteral("GNU Lesser General Public License, version 2.1 or later"),
         packageNotice("libglib2.0-0")},
        {QStringLiteral("libdbus"), QStringLiteral("Used by libatspi."),
         QStringLiteral("Academic Free License 2.1, or GNU General Public License 2 or later"),
         packageNotice("libdbus-1-3")},
        {QStringLiteral("libxcb (with RandR, SHM, XTest, XKB, keysyms)"),
         QStringLiteral("Screens, windows, hotkeys and input on X11."),
         QStringLiteral("MIT/X11 License"), packageNotice("libxcb1")},
        {QStringLiteral("libxkbcommon"), QStringLiteral("Keyboard layouts for hotkeys and typing."),
         QStringLiteral("MIT License"), packageNotice("libxkbcommon0")},
        {QStringLiteral("DejaVu fonts"), QStringLiteral("Latin, Greek and Cyrillic text."),
         QStringLiteral("Bitstream Vera Fonts License; DejaVu changes in the public domain"),
         packageNotice("fonts-dejavu-core")},
        {QStringLiteral("Noto Sans CJK"), QStringLiteral("Chinese, Japanese and Korean text."),
         QStringLiteral("SIL Open Font License, version 1.1"), packageNotice("fonts-noto-cjk")},
        {QStringLiteral("Noto Color Emoji"), QStringLiteral("Emoji in menus and messages."),
         QStringLiteral("SIL Open Font License, version 1.1"),
         packageNotice("fonts-noto-color-emoji")},
    };
    const QString gifski = QStandardPaths::findExecutable(QStringLiteral("gifski"));
    if (!gifski.isEmpty())
        notices.append({QStringLiteral("gifski"),
                        QStringLiteral("GIF encoding, run as a separate program: %1").arg(gifski),
                        QStringLiteral("GNU Affero General Public License, version 3 or later"),
                        packageNotice("gifski")});
    return notices;
}

LicenseDialog::LicenseDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("licenseDialog"));
    resize(620, 560);

    auto* intro = new QLabel(this);
    intro->setWordWrap(true);

    auto* text = new QTextBrowser(this);
    text->setObjectName(QStringLiteral("licenseText"));
    text->setOpenExternalLinks(true);
    QString html;
    for (const LicenseNotice& notice : licenseNotices())
        html += noticeHtml(notice);
    text->setHtml(html);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(text, 1);
    layout->addWidget(buttons);
    followLanguage(this, [this, intro, text] {
        setWindowTitle(tr("Open-source licenses", "license.title"));
        intro->setText(tr("Zelmor is built on these open-source components. Each is used "
                          "under its own license, whose full text is named below.",
                          "license.intro"));
        text->setAccessibleName(windowTitle());
    });
}

} // namespace zelmor::widget
