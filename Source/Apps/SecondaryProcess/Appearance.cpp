#include "Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>
#include <QWidget>

void applyAppearance(QApplication *application)
{
    const QColor window(0x2b, 0x2f, 0x36);
    const QColor base(0x21, 0x24, 0x2a);
    const QColor text(0xe3, 0xe6, 0xea);
    const QColor accent(0x3d, 0x8b, 0xd4);

    QPalette palette(window.lighter(125), window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, text.darker(180));

    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(palette);
    // A floating panel has no frame of its own on X11.
    application->setStyleSheet(
        QStringLiteral("QDockWidget { font-weight: bold; }"
                       "QDockWidget::title { background: #3a4049; padding: 5px 8px; }"
                       "QDockWidget > QWidget { font-weight: normal; border: 1px solid #3a4049; background: #2b2f36; }"
                       // Fusion would fill the pane of the overlay, which is to be seen through.
                       "#RenderWindow QTabWidget::pane { border: 1px solid #5a616c; }"));
}

void applyOverlayAppearance(QWidget *contents)
{
    contents->setStyleSheet(QStringLiteral(
        "QWidget { background-color: rgba(75, 75, 75, 0%); }"
        "QStackedWidget { background-color: rgba(75, 75, 75, 60%); }"
        "QPushButton, QLineEdit, QComboBox, QAbstractSpinBox { background-color: rgba(58, 64, 73, 80%); }"));
}
