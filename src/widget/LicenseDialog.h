#pragma once

#include <QDialog>
#include <QList>
#include <QString>

namespace zelmor::widget {

// One open-source component Zelmor is built on or ships with.
struct LicenseNotice
{
    QString component;
    QString use;
    QString license;
    QString fullText; // where the whole licence and copyright text can be read
};

// The components of this build, gifski only when it is installed.
QList<LicenseNotice> licenseNotices();

// The open-source notices: each component, what it does here, its licence and where the full
// text lies.
class LicenseDialog : public QDialog
{
    Q_OBJECT
public:
    explicit LicenseDialog(QWidget* parent = nullptr);
};

} // namespace zelmor::widget
