#pragma once

#include <QMap>
#include <QString>

class PythonQtObjectPtr;
class QWidget;
class oxQRPCClient;

class oxKernelInterfaceP
{
public:
    /// A loaded script plugin. Owns nothing.
    struct oxPluginInfo
    {
        qint32 found;              ///< 1: seen by the current, or last, scan
        QWidget *widget;           ///< the container; null once it is deleted
        PythonQtObjectPtr *module; ///< heap-held
    };

    oxQRPCClient *client = nullptr; ///< not owned
    bool initFlag = false;
    QMap<QString, oxPluginInfo> plugins;       ///< by plugin key
    PythonQtObjectPtr *pythonEngine = nullptr; ///< never freed: Python lives until the process ends
    QString stdOutBuffer = QLatin1String("");  ///< what does not yet end in a line feed
    QString stdErrBuffer = QLatin1String("");
};
