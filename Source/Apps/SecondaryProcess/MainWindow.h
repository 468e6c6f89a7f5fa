#pragma once

#include <QMainWindow>

#include "oxMessageService.h"

class QLabel;

/// The window of the secondary process: the render view, the menus, and the messages of scripts
/// in the status bar.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

public Q_SLOTS:
    void showMessage(oxMessageService::Severity severity, const QString &text);

Q_SIGNALS:
    void reloadRequested();

private:
    void showAbout();

    QLabel *m_message;
};
