#include "oxPluginSource.h"

#include <QIODevice>
#include <QTextStream>

QString readPluginText(QIODevice *device)
{
    return QString::fromUtf8(device->readAll().constData());
}

oxPluginBindings detectBindings(QIODevice *device)
{
    oxPluginBindings bindings;
    QTextStream stream(device);
    QString line;
    while (stream.readLineInto(&line)) {
        if (line.startsWith(QLatin1Char('#')) || !line.contains(QLatin1String("import")))
            continue;
        bindings.usesPythonQt |= line.contains(QLatin1String("PythonQt"));
        bindings.usesPySide2 |= line.contains(QLatin1String("PySide2"));
    }
    return bindings;
}

QString rewriteForPySide2(QString text)
{
    // Deliberate: plain replacement, so "uiTools.loadUiTypePySide" ends up with its suffix
    // doubled and "TARNPluginWidgetId" as "uiTools.getWidget(TARNPluginWidgetId)Id".
    text.replace(QLatin1String("uiTools.loadUiType"), QLatin1String("uiTools.loadUiTypePySide"));
    text.replace(QLatin1String("TARNPluginWidget"), QLatin1String("uiTools.getWidget(TARNPluginWidgetId)"));
    return text;
}
