#pragma once

#include <QWidget>

class QVBoxLayout;

namespace zelmor::service::mcp {
struct McpClientEntry;
}

namespace zelmor::widget {

// Enters zelmor-mcp into AI clients' configuration files and takes it out again, one card per
// known client and per custom file. Nothing here starts the server: a client does.
class McpSettingsPage : public QWidget
{
    Q_OBJECT
public:
    explicit McpSettingsPage(QWidget* parent = nullptr);

    // Cards for every client, installed or not, in the order of the client list.
    void rebuildClientList();

private:
    void addClientCard(const service::mcp::McpClientEntry& entry);
    void addCustomFile();

    QVBoxLayout* m_cards;
};

} // namespace zelmor::widget
