// A plain Qt message box whose text, font and size come from the command line, for the corpus.
//   qtdialog FAMILY PIXELS TITLE TEXTFILE
#include <QApplication>
#include <QFile>
#include <QMessageBox>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (argc < 5) return 2;
    QFont font(QString::fromUtf8(argv[1]));
    font.setPixelSize(atoi(argv[2]));
    QApplication::setFont(font);
    QFile file(QString::fromUtf8(argv[4]));
    if (!file.open(QIODevice::ReadOnly)) return 2;
    QMessageBox box(QMessageBox::Information, QString::fromUtf8(argv[3]),
                    QString::fromUtf8(file.readAll()).trimmed(),
                    QMessageBox::Ok | QMessageBox::Cancel);
    box.show();
    return app.exec();
}
