#pragma once

class QApplication;
class QWidget;

/// The dark look of the process's windows, the same on every desktop.
void applyAppearance(QApplication *application);

/// For the widget that holds the overlay's contents: all of them on one tint. Each would have the
/// overlay's tint once more otherwise, and together they could not be seen through.
void applyOverlayAppearance(QWidget *contents);
