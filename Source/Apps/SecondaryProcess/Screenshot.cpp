#include "Screenshot.h"

#include <QPixmap>
#include <QScreen>
#include <QWidget>

#include <cstdio>

bool saveScreenshot(const QWidget *window, const QString &fileName)
{
    const QRect area = window->frameGeometry();
    const QPixmap picture = window->screen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
    if (!picture.save(fileName)) {
        fprintf(stderr, "oxSecondaryProcess: cannot write '%s'\n", qPrintable(fileName));
        return false;
    }
    return true;
}
