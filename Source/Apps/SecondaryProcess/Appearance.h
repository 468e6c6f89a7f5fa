#pragma once

class QApplication;

/// The dark look of the process's windows, the same on every desktop.
void applyAppearance(QApplication *application);
