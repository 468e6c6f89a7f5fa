#pragma once

#include <QMainWindow>
#include <QString>
#include <QTemporaryDir>

#include "oxQRPCClient.h"

class QAction;
class QDockWidget;
class QMenu;

/// What a process does that loads the library: a client, a main window with a menu "&Help", the
/// real oxKernelInterface::init(), a plugins folder with an empty subfolder "Scripts", and a base
/// folder with an empty lib/python.
///
/// One in each process, as the interface is one.
class PluginHost
{
public:
    PluginHost();
    ~PluginHost();

    QMainWindow window;
    oxQRPCClient client;

    /// The folder "Scripts"; empty at first.
    QString scripts() const;

    /// Writes a file below the folder "Scripts", with its subfolders, and returns its full path.
    QString write(const QString &relativePath, const QByteArray &text) const;

    /// Writes a Python module that plugins can import, below the base folder's lib/python.
    QString writeModule(const QString &relativePath, const QByteArray &text) const;

    /// Removes everything below "Scripts" and scans once, so that no plugin is left.
    void clear();

    void scan();
    /// Loads one file as the scan does, with the interpreter lock held.
    bool load(const QString &path);

    /// The value of a Python expression in the module __main__, or in a plugin's.
    static QVariant evaluate(const QString &expression);
    QVariant evaluateIn(const QString &pluginKey, const QString &expression) const;
    /// Runs statements in __main__.
    static void run(const QString &statements);
    /// Gives __main__ a name for the object, which Python does not keep alive.
    static void bind(const QString &name, QObject *object);

    QMenu *menu(const QString &title) const;
    QAction *entry(const QString &moduleName) const;
    QDockWidget *dock(const QString &moduleName) const;

private:
    Q_DISABLE_COPY(PluginHost)

    QTemporaryDir m_folder;
};
