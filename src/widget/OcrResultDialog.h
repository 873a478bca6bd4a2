#pragma once

#include <QDialog>

class QTextEdit;

namespace zelmor::widget {

// Shows recognised or translated text, editable, with copy, pin, move-to-chat and close.
class OcrResultDialog : public QDialog
{
    Q_OBJECT
public:
    explicit OcrResultDialog(const QString& text, QWidget* parent = nullptr);

    QString text() const;

Q_SIGNALS:
    void pinRequested(const QString& text);
    void chatRequested(const QString& text);

private:
    void applyTheme();

    QTextEdit* m_edit;
};

} // namespace zelmor::widget
