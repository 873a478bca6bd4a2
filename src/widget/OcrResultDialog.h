#pragma once

#include <QDialog>

class QGraphicsDropShadowEffect;
class QPushButton;
class QTextEdit;
class QVBoxLayout;

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
    // The theme's colours, and the shadow and round corners where a compositor can show them.
    void applyTheme();

    QVBoxLayout* m_outer;
    QGraphicsDropShadowEffect* m_shadow;
    QTextEdit* m_edit;
};

} // namespace zelmor::widget
