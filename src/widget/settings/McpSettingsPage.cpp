#include "McpSettingsPage.h"

#include "SettingsBlocks.h"
#include "core/ConfigManager.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "service/mcp/ClientConfig.h"

#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

namespace mcp = service::mcp;
using settings::makeSettingsButton;

const QString kServerName = QStringLiteral("zelmor");
constexpr int kToastMs = 2200;

// The status words and buttons of one card, switched together.
struct CardState
{
    QLabel* status;
    QPushButton* connect;
    QPushButton* disconnect;

    void show(bool configured) const
    {
        status->setText(configured
                            ? McpSettingsPage::tr("已接入", "settings.mcp.status.connected")
                            : McpSettingsPage::tr("未接入", "settings.mcp.status.disconnected"));
        status->setStyleSheet(configured ? QStringLiteral("color: #E67E22; font-weight: bold;")
                                         : QString());
        connect->setText(configured ? McpSettingsPage::tr("重新接入", "settings.mcp.reconnect")
                                    : McpSettingsPage::tr("接入", "settings.mcp.connect"));
        disconnect->setVisible(configured);
    }
};

void copySnippet(const QString& title, const QString& body)
{
    core::copyTextToClipboard(mcp::clientConfigSnippet(kServerName));
    core::notifyUser(title, body, kToastMs);
}

} // namespace

McpSettingsPage::McpSettingsPage(QWidget* parent) : QWidget(parent)
{
    const settings::Page page =
        settings::makePage(tr("MCP AI 客户端接入", "settings.mcp.page.title"),
                           tr("支持通过 MCP 协议接入 AI 客户端。\n接入后可直接调用 Zelmor "
                              "截图能力。\n提供接入文档入口。",
                              "settings.mcp.page.desc"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(page.scroll);

    QVBoxLayout* pathCard =
        settings::addCard(page.body, tr("MCP 服务路径配置", "settings.mcp.path.title"), QString());
    auto* pathRow = new QHBoxLayout;
    pathRow->setSpacing(8);
    auto* path = new QLineEdit(mcp::mcpExecutablePath());
    path->setReadOnly(true);
    path->setAccessibleName(tr("MCP server path", "settings.mcp.path.name"));
    QPushButton* generate = makeSettingsButton(tr("生产构建", "settings.mcp.path.generate"), true);
    connect(generate, &QPushButton::clicked, this, [] {
        copySnippet(tr("生产构建", "settings.mcp.build"),
                    tr("MCP 配置已生成并复制到剪贴板！", "settings.mcp.build.success"));
    });
    pathRow->addWidget(path, 1);
    pathRow->addWidget(generate);
    pathCard->addLayout(pathRow);

    auto* groupTitle = new QLabel(tr("AI 客户端列表", "settings.mcp.clients.title"));
    groupTitle->setObjectName(QStringLiteral("groupTitle"));
    groupTitle->setContentsMargins(0, 16, 0, 4);
    page.body->addWidget(groupTitle);
    m_cards = new QVBoxLayout;
    m_cards->setSpacing(8);
    page.body->addLayout(m_cards);
    QPushButton* addCustom =
        makeSettingsButton(tr("➕ 添加自定义配置文件...", "settings.mcp.add_custom"), false);
    connect(addCustom, &QPushButton::clicked, this, &McpSettingsPage::addCustomFile);
    page.body->addWidget(addCustom, 0, Qt::AlignLeft);
    page.body->addStretch(1);
    rebuildClientList();
}

void McpSettingsPage::rebuildClientList()
{
    while (QLayoutItem* item = m_cards->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const mcp::McpClientEntry& entry : mcp::mcpClientEntries())
        addClientCard(entry);
}

void McpSettingsPage::addClientCard(const mcp::McpClientEntry& entry)
{
    QVBoxLayout* card = settings::addCard(m_cards, entry.displayName, entry.configPath);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 8, 0, 0);
    row->setSpacing(8);
    auto* status = new QLabel;
    status->setObjectName(QStringLiteral("fieldHint"));
    QPushButton* disconnectButton =
        makeSettingsButton(tr("取消接入", "settings.mcp.disconnect"), false);
    QPushButton* connectButton = makeSettingsButton(tr("接入", "settings.mcp.connect"), true);
    QPushButton* copy = makeSettingsButton(tr("复制 JSON", "settings.mcp.copy_json"), false);
    row->addWidget(status);
    row->addStretch(1);
    for (QPushButton* button : {disconnectButton, connectButton, copy}) {
        button->setAccessibleDescription(entry.displayName);
        row->addWidget(button);
    }
    card->addLayout(row);

    const CardState state{status, connectButton, disconnectButton};
    state.show(mcp::isClientConfigured(entry.configPath, kServerName));
    const QString path = entry.configPath;
    const QString name = entry.displayName;
    // A stale entry is removed first so that it is written anew.
    connect(connectButton, &QPushButton::clicked, this, [this, state, path, name] {
        if (mcp::isClientConfigured(path, kServerName)) mcp::removeClientConfig(path, kServerName);
        const QString failure = mcp::injectClientConfig(path, kServerName);
        if (!failure.isEmpty()) {
            QMessageBox::warning(this, tr("接入失败", "settings.mcp.inject.failed"), failure,
                                 QMessageBox::Ok);
            return;
        }
        state.show(true);
        core::notifyUser(
            tr("接入成功", "settings.mcp.inject.success"),
            tr("已成功将 Zelmor MCP 注入到 %1。", "settings.mcp.inject.body").arg(name), kToastMs);
    });
    connect(disconnectButton, &QPushButton::clicked, this, [this, state, path, name] {
        const QString failure = mcp::removeClientConfig(path, kServerName);
        if (!failure.isEmpty()) {
            QMessageBox::warning(this, tr("取消失败", "settings.mcp.remove.failed"), failure,
                                 QMessageBox::Ok);
            return;
        }
        state.show(false);
        core::notifyUser(tr("取消成功", "settings.mcp.remove.success"),
                         tr("已从 %1 取消 Zelmor MCP 接入。", "settings.mcp.remove.body").arg(name),
                         kToastMs);
    });
    connect(copy, &QPushButton::clicked, this, [] {
        copySnippet(tr("已复制", "settings.mcp.copied"),
                    tr("JSON 配置已复制到剪贴板！", "settings.mcp.copied.body"));
    });
    if (!entry.id.startsWith(QLatin1String("custom_"))) return;

    // The card stays until the next rebuild, and its buttons keep working on its path.
    QPushButton* remove = makeSettingsButton(tr("删除此项", "settings.mcp.delete_entry"), false);
    remove->setAccessibleDescription(name);
    row->addWidget(remove);
    connect(remove, &QPushButton::clicked, this, [path] {
        if (mcp::isClientConfigured(path, kServerName)) mcp::removeClientConfig(path, kServerName);
        core::ConfigManager::instance().removeMcpCustomPath(path);
        core::notifyUser(tr("已删除", "settings.mcp.deleted"),
                         tr("自定义 MCP 配置项已删除。", "settings.mcp.deleted.body"), kToastMs);
    });
}

void McpSettingsPage::addCustomFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("选择 MCP 配置文件", "settings.mcp.select_file"), QDir::homePath(),
        tr("JSON 配置文件 (*.json);;所有文件 (*.*)", "settings.mcp.file_filter"));
    if (path.isEmpty()) return;
    core::ConfigManager::instance().addMcpCustomPath(path);
    core::notifyUser(tr("添加成功", "settings.mcp.custom_added"),
                     tr("已添加自定义 MCP 配置文件路径。", "settings.mcp.custom_added.body"),
                     kToastMs);
    rebuildClientList();
}

} // namespace zelmor::widget
