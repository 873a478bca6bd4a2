#include "AiSettingsPage.h"

#include "core/DesktopClipboard.h"
#include "core/Toast.h"
#include "service/ai/AiApiService.h"
#include "service/ai/AiProviderService.h"
#include "widget/ControlName.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

using service::ai::AiProvider;
using service::ai::AiProviderService;

constexpr int kTestResultMs = 2500;
constexpr int kFailureToastMs = 4000;
const QString kTestStyle = QStringLiteral(
    "background-color: %1; color: white; border: none; padding: 6px 20px; border-radius: 6px; "
    "min-width: 80px; font-weight: 500;");

AiProviderService& providers()
{
    return AiProviderService::instance();
}

QLineEdit* makeField(QVBoxLayout* form, const QString& label, QWidget* parent)
{
    auto* title = new QLabel(label, parent);
    title->setObjectName(QStringLiteral("aiFieldLabel"));
    form->addWidget(title);
    auto* field = new QLineEdit(parent);
    field->setObjectName(QStringLiteral("aiInput"));
    field->setAccessibleName(label);
    return field;
}

} // namespace

AiProviderItemWidget::AiProviderItemWidget(const AiProvider& provider, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("aiProviderItem"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 6, 10, 6);
    row->setSpacing(8);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    auto* name = new QLabel(provider.name.isEmpty() ? tr("New Provider") : provider.name, this);
    name->setObjectName(QStringLiteral("aiProviderItemName"));
    QFont bold = name->font();
    bold.setWeight(QFont::Bold);
    bold.setPointSize(10);
    name->setFont(bold);
    auto* model = new QLabel(provider.model, this);
    model->setObjectName(QStringLiteral("aiProviderItemModel"));
    QFont small = model->font();
    small.setPointSize(9);
    model->setFont(small);
    // The texts give way to the star and the protocol when the list is narrow.
    for (QLabel* text : {name, model}) {
        text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        text->setToolTip(text->text());
        texts->addWidget(text);
    }
    row->addLayout(texts, 1);
    auto* star = new QLabel(QStringLiteral("★"), this);
    star->setObjectName(QStringLiteral("aiProviderItemStar"));
    star->setAccessibleName(tr("Default provider", "settings.ai.list.default"));
    star->setVisible(provider.isDefault);
    row->addWidget(star, 0, Qt::AlignVCenter);
    auto* pill = new QLabel(
        provider.protocol.isEmpty() ? QStringLiteral("custom") : provider.protocol, this);
    pill->setObjectName(QStringLiteral("aiProviderItemPill"));
    row->addWidget(pill, 0, Qt::AlignVCenter);
}

AiSettingsPage::AiSettingsPage(QWidget* parent) : QWidget(parent)
{
    auto* page = new QVBoxLayout(this);
    auto* title = new QLabel(tr("AI", "settings.ai.title"), this);
    title->setObjectName(QStringLiteral("aiTabTitle"));
    auto* subtitle = new QLabel(tr("Configure providers for chat, OCR, translate, and annotation. "
                                   "Add one or more, then pick a default.",
                                   "settings.ai.subtitle"),
                                this);
    subtitle->setObjectName(QStringLiteral("aiTabSubtitle"));
    subtitle->setWordWrap(true);
    page->addWidget(title);
    page->addWidget(subtitle);
    auto* cards = new QHBoxLayout;
    cards->addWidget(buildList());
    cards->addWidget(buildForm(), 1);
    page->addLayout(cards, 1);
    page->addWidget(buildBottomRow());
    // Later, not inside the save: a field left by closing the window saves while it goes away.
    connect(&providers(), &AiProviderService::changed, this, &AiSettingsPage::refreshList,
            Qt::QueuedConnection);
    refreshList();
}

QWidget* AiSettingsPage::buildList()
{
    auto* card = new QFrame(this);
    card->setObjectName(QStringLiteral("aiListCard"));
    auto* column = new QVBoxLayout(card);
    m_list = new QListWidget(card);
    m_list->setObjectName(QStringLiteral("aiProviderList"));
    m_list->setFixedWidth(250);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setAccessibleName(tr("Providers", "settings.ai.list.name"));
    column->addWidget(m_list, 1);
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) {
        if (m_loading || row < 0) return;
        loadForm(m_list->item(row)->data(Qt::UserRole).toLongLong());
    });
    auto* wrap = new QWidget(card);
    wrap->setObjectName(QStringLiteral("aiListBtnWrap"));
    auto* buttons = new QVBoxLayout(wrap);
    buttons->setContentsMargins(8, 8, 8, 8);
    const auto add = [&](const QString& text, auto action) {
        QPushButton* button = makeButton(text, "aiListBtn", wrap);
        connect(button, &QPushButton::clicked, this, action);
        buttons->addWidget(button);
    };
    add(tr("Add", "settings.ai.list.add"), [this] { addProvider(); });
    add(tr("Remove", "settings.ai.list.remove"), [this] {
        if (m_currentId > 0) providers().remove(m_currentId);
    });
    add(tr("Set default", "settings.ai.list.setDefault"), [this] {
        if (m_currentId > 0) providers().setDefault(m_currentId);
    });
    add(tr("Share", "settings.ai.list.share"), [this] { share(); });
    add(tr("Paste import", "settings.ai.list.pasteImport"), [this] { pasteImport(); });
    column->addWidget(wrap);
    return card;
}

QWidget* AiSettingsPage::buildForm()
{
    auto* card = new QFrame(this);
    card->setObjectName(QStringLiteral("aiFormCard"));
    auto* form = new QVBoxLayout(card);
    form->setContentsMargins(14, 12, 14, 12);
    m_name = makeField(form, tr("Name", "settings.ai.form.name"), card);
    m_name->setPlaceholderText(tr("Provider name"));
    form->addWidget(m_name);

    const QString presetLabel = tr("Preset", "settings.ai.form.preset");
    auto* presetTitle = new QLabel(presetLabel, card);
    presetTitle->setObjectName(QStringLiteral("aiFieldLabel"));
    form->addWidget(presetTitle);
    m_preset = new QComboBox(card);
    m_preset->setAccessibleName(presetLabel);
    m_preset->addItem(tr("Custom"));
    for (const service::ai::AiProviderPreset& preset : service::ai::presets())
        m_preset->addItem(preset.name);
    form->addWidget(m_preset);
    connect(m_preset, &QComboBox::currentIndexChanged, this, &AiSettingsPage::onPresetChanged);

    m_endpoint = makeField(form, tr("Endpoint", "settings.ai.form.endpoint"), card);
    form->addWidget(m_endpoint);
    m_key = makeField(form, tr("API key", "settings.ai.form.apiKey"), card);
    m_key->setEchoMode(QLineEdit::Password);
    m_key->setPlaceholderText(QStringLiteral("sk-..."));
    m_eye = m_key->addAction(QIcon(QStringLiteral(":/icons/common/eye.svg")),
                             QLineEdit::TrailingPosition);
    m_eye->setCheckable(true);
    m_eye->setToolTip(tr("Show", "settings.ai.reveal"));
    connect(m_eye, &QAction::toggled, this, &AiSettingsPage::reveal);
    auto* keyRow = new QWidget(card);
    keyRow->setObjectName(QStringLiteral("aiKeyRow"));
    auto* keyLine = new QHBoxLayout(keyRow);
    keyLine->setContentsMargins(0, 0, 0, 0);
    keyLine->addWidget(m_key, 1);
    m_test = makeButton(tr("Test", "settings.ai.form.test"), "aiGhostBtn", keyRow);
    keyLine->addWidget(m_test);
    form->addWidget(keyRow);
    connect(m_test, &QPushButton::clicked, this, &AiSettingsPage::test);

    const QString modelLabel = tr("Chat model", "settings.ai.form.model");
    auto* modelTitle = new QLabel(modelLabel, card);
    modelTitle->setObjectName(QStringLiteral("aiFieldLabel"));
    form->addWidget(modelTitle);
    m_model = new QComboBox(card);
    m_model->setEditable(true);
    m_model->setAccessibleName(modelLabel);
    form->addWidget(m_model);
    auto* hint = new QLabel(tr("API keys are stored locally and never uploaded. Use Test to "
                               "verify credentials before applying."),
                            card);
    hint->setObjectName(QStringLiteral("aiFormHint"));
    hint->setWordWrap(true);
    form->addWidget(hint);
    form->addStretch(1);

    for (QLineEdit* field : {m_name, m_endpoint, m_key})
        connect(field, &QLineEdit::editingFinished, this, [this] {
            if (!m_loading) saveForm();
        });
    // Saved when the user is done: saving reloads the form, which would move the cursor of a
    // box still being typed in.
    const auto saveModel = [this] {
        if (!m_loading) saveForm();
    };
    connect(m_model->lineEdit(), &QLineEdit::editingFinished, this, saveModel);
    connect(m_model, &QComboBox::activated, this, saveModel);
    return card;
}

QWidget* AiSettingsPage::buildBottomRow()
{
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    m_chat = makeButton(tr("Open AI chat..."), "aiPrimaryBtn", row);
    // By name and queued: the page needs nothing of the window's class.
    connect(m_chat, &QPushButton::clicked, this,
            [this] { QMetaObject::invokeMethod(window(), "showAiChat", Qt::QueuedConnection); });
    line->addWidget(m_chat);
    line->addStretch(1);
    QPushButton* cancel = makeButton(tr("Cancel"), "aiBottomBtn", row);
    QPushButton* apply = makeButton(tr("Apply"), "aiBottomBtn", row);
    QPushButton* ok = makeButton(tr("OK"), "aiPrimaryBtn", row);
    connect(cancel, &QPushButton::clicked, this, [this] { loadForm(m_currentId); });
    connect(apply, &QPushButton::clicked, this, &AiSettingsPage::saveForm);
    connect(ok, &QPushButton::clicked, this, [this] {
        saveForm();
        window()->hide();
    });
    for (QPushButton* button : {cancel, apply, ok})
        line->addWidget(button);
    return row;
}

// Offered only where the window holds a chat to open.
void AiSettingsPage::showEvent(QShowEvent* event)
{
    m_chat->setVisible(window()->metaObject()->indexOfMethod("showAiChat()") >= 0);
    QWidget::showEvent(event);
}

void AiSettingsPage::refreshList()
{
    m_loading = true;
    m_list->clear();
    const QList<AiProvider> all = providers().list();
    for (const AiProvider& provider : all) {
        auto* item = new QListWidgetItem(m_list);
        auto* widget = new AiProviderItemWidget(provider, m_list);
        item->setSizeHint(widget->sizeHint());
        item->setData(Qt::UserRole, provider.id);
        item->setData(Qt::AccessibleTextRole, provider.name);
        m_list->setItemWidget(item, widget);
    }
    m_loading = false;
    if (all.isEmpty()) {
        loadForm(0);
        return;
    }
    const bool stillThere = std::any_of(
        all.cbegin(), all.cend(), [this](const AiProvider& p) { return p.id == m_currentId; });
    selectRow(stillThere ? m_currentId : all.first().id);
}

void AiSettingsPage::selectRow(qint64 id)
{
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->data(Qt::UserRole).toLongLong() != id) continue;
        m_loading = true;
        m_list->setCurrentRow(row);
        m_list->scrollToItem(m_list->item(row));
        m_loading = false;
        loadForm(id);
        return;
    }
}

void AiSettingsPage::loadForm(qint64 id)
{
    m_currentId = id;
    m_loading = true;
    const AiProvider provider = id > 0 ? providers().get(id) : AiProvider();
    int presetRow = 0;
    if (provider.id == 0) {
        m_currentId = 0;
        m_name->clear();
        m_endpoint->clear();
        m_key->clear();
        fillModels(0, QString());
    } else {
        m_name->setText(provider.name);
        m_endpoint->setText(provider.baseUrl);
        m_key->setText(provider.apiKey);
        const QList<service::ai::AiProviderPreset> all = service::ai::presets();
        for (int i = 0; i < all.size() && presetRow == 0; ++i)
            if (all[i].protocol == provider.protocol &&
                all[i].baseUrl.compare(provider.baseUrl, Qt::CaseInsensitive) == 0 &&
                all[i].defaultModel == provider.model)
                presetRow = i + 1;
        fillModels(presetRow, provider.model);
    }
    showProtocolFields(provider.protocol);
    m_preset->setCurrentIndex(presetRow);
    m_loading = false;
}

void AiSettingsPage::showProtocolFields(const QString& protocol)
{
    const bool local = protocol == service::ai::localOcrProtocol();
    m_endpoint->setEnabled(!local);
    m_key->setEnabled(!local);
    m_model->setToolTip(local ? tr("Recognition languages joined by +, such as eng+chi_sim",
                                   "settings.ai.form.ocrLanguages")
                              : QString());
}

void AiSettingsPage::fillModels(int presetRow, const QString& model)
{
    const QStringList models = presetRow > 0 ? service::ai::presets().value(presetRow - 1).models
                                             : service::ai::commonModels();
    m_model->clear();
    m_model->addItems(models);
    if (!model.isEmpty() && !models.contains(model)) m_model->insertItem(0, model);
    m_model->setEditText(model);
}

void AiSettingsPage::saveForm()
{
    if (m_currentId <= 0) return;
    AiProvider provider = providers().get(m_currentId);
    if (provider.id == 0) return;
    provider.name = m_name->text();
    provider.baseUrl = m_endpoint->text();
    provider.apiKey = m_key->text();
    provider.model = m_model->currentText();
    providers().update(provider);
}

void AiSettingsPage::onPresetChanged(int index)
{
    if (m_loading || index < 1) return;
    const service::ai::AiProviderPreset preset = service::ai::presets().value(index - 1);
    const bool local = preset.protocol == service::ai::localOcrProtocol();
    m_loading = true;
    if (!preset.baseUrl.isEmpty()) m_endpoint->setText(preset.baseUrl);
    if (local) {
        m_endpoint->clear();
        m_key->clear();
    }
    fillModels(index, preset.defaultModel);
    showProtocolFields(preset.protocol);
    m_loading = false;
    if (m_currentId <= 0) return;
    AiProvider provider = providers().get(m_currentId);
    if (provider.id == 0) return;
    provider.protocol = preset.protocol;
    if (!preset.baseUrl.isEmpty() || local) provider.baseUrl = preset.baseUrl;
    if (local) provider.apiKey.clear();
    provider.model = m_model->currentText();
    providers().update(provider);
}

void AiSettingsPage::addProvider()
{
    AiProvider provider;
    provider.name = tr("New Provider", "settings.ai.list.newProvider");
    provider.protocol = QStringLiteral("openai-compat");
    provider.baseUrl = service::ai::presets().value(0).baseUrl;
    provider.model = QStringLiteral("gpt-4o");
    const qint64 id = providers().insert(provider);
    if (id <= 0) {
        QMessageBox::warning(this, tr("Add"),
                             tr("Failed to add provider. The history database is not open.",
                                "settings.ai.list.add.failed"));
        return;
    }
    refreshList();
    selectRow(id);
    m_name->setFocus();
    m_name->selectAll();
}

void AiSettingsPage::share()
{
    if (m_currentId <= 0) return;
    const QString text = providers().exportJson(m_currentId);
    if (text.isEmpty()) return;
    core::setClipboardText(text);
    QMessageBox::information(
        this, tr("Share"), tr("Provider config copied to clipboard.", "settings.ai.share.copied"));
}

void AiSettingsPage::pasteImport()
{
    const QString text = core::clipboardText().value_or(QString());
    if (text.trimmed().isEmpty()) {
        QMessageBox::warning(this, tr("Paste import"),
                             tr("Clipboard is empty.", "settings.ai.pasteImport.empty"));
        return;
    }
    const qint64 id = providers().importJson(text);
    if (id > 0) {
        refreshList();
        selectRow(id);
        return;
    }
    QMessageBox::warning(this, tr("Paste import"),
                         tr("Invalid JSON. Expected {name, protocol, baseUrl, apiKey, model}.",
                            "settings.ai.pasteImport.invalid"));
}

void AiSettingsPage::reveal(bool shown)
{
    m_revealed = shown;
    m_key->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
    m_eye->setIcon(QIcon(shown ? QStringLiteral(":/icons/common/eye-off.svg")
                               : QStringLiteral(":/icons/common/eye.svg")));
    m_eye->setToolTip(shown ? tr("Hide", "settings.ai.reveal.hide")
                            : tr("Show", "settings.ai.reveal"));
}

void AiSettingsPage::test()
{
    if (m_currentId <= 0) return;
    saveForm();
    const AiProvider provider = providers().get(m_currentId);
    const bool keyless = provider.protocol == QLatin1String("ollama") ||
                         provider.protocol == QLatin1String("lmstudio") ||
                         service::ai::isLocalOcr(provider);
    if (provider.apiKey.isEmpty() && !keyless) {
        QMessageBox::warning(this, tr("Test"), tr("API key is empty.", "settings.ai.test.noKey"));
        return;
    }
    m_testText = m_test->text();
    m_test->setEnabled(false);
    m_eye->setEnabled(false);
    m_test->setText(tr("Testing...", "settings.ai.form.testing"));
    // A child of the page: closing it during the test leaves no callback behind.
    auto* api = new service::ai::AiApiService(this);
    api->testConnection(provider, [this, api](bool ok, const QString& message) {
        m_test->setEnabled(true);
        m_eye->setEnabled(true);
        m_test->setText(ok ? tr("Test Succeeded", "settings.ai.test.success")
                           : tr("Test Failed", "settings.ai.test.failed"));
        m_test->setStyleSheet(
            kTestStyle.arg(ok ? QStringLiteral("#2ECC71") : QStringLiteral("#E74C3C")));
        if (!ok)
            core::notifyUser(tr("AI test failed", "settings.ai.test.title.failed"), message,
                             kFailureToastMs);
        else if (!message.isEmpty()) // a local engine tells what it loaded
            core::notifyUser(tr("AI test succeeded", "settings.ai.test.title.succeeded"), message,
                             kFailureToastMs);
        QTimer::singleShot(kTestResultMs, this, [this] {
            m_test->setText(m_testText);
            m_test->setStyleSheet(QString());
        });
        api->deleteLater();
    });
}

} // namespace zelmor::widget
