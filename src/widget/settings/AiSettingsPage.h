#pragma once

#include "service/ai/AiProvider.h"

#include <QWidget>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace zelmor::widget {

// One row of the provider list: name, model, the default's star and the protocol.
class AiProviderItemWidget : public QWidget
{
    Q_OBJECT
public:
    explicit AiProviderItemWidget(const service::ai::AiProvider& provider,
                                  QWidget* parent = nullptr);
};

// The editor of the AI providers: a list, a form whose finished fields are stored at once,
// presets, a connection test, and sharing a provider through the clipboard.
class AiSettingsPage : public QWidget
{
    Q_OBJECT
public:
    explicit AiSettingsPage(QWidget* parent = nullptr);

    qint64 currentId() const { return m_currentId; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* buildList();
    QWidget* buildForm();
    QWidget* buildBottomRow();
    void refreshList();
    void loadForm(qint64 id);
    void fillModels(int presetRow, const QString& model);
    // A local OCR provider has no endpoint and no key, and its model box holds languages.
    void showProtocolFields(const QString& protocol);
    void saveForm();
    void onPresetChanged(int index);
    void addProvider();
    void share();
    void pasteImport();
    void reveal(bool shown);
    void test();
    void selectRow(qint64 id);

    qint64 m_currentId = 0;
    bool m_loading = false;
    bool m_revealed = false;
    QString m_testText;
    QListWidget* m_list = nullptr;
    QLineEdit* m_name = nullptr;
    QComboBox* m_preset = nullptr;
    QLineEdit* m_endpoint = nullptr;
    QLineEdit* m_key = nullptr;
    QAction* m_eye = nullptr;
    QPushButton* m_test = nullptr;
    QComboBox* m_model = nullptr;
    QPushButton* m_chat = nullptr;
};

} // namespace zelmor::widget
