#pragma once

#include <QString>

class QWidget;

/// Saves what the user sees, the window and what lies over it, as a PNG file. A file that cannot
/// be written is reported on standard error.
bool saveScreenshot(const QWidget *window, const QString &fileName);
