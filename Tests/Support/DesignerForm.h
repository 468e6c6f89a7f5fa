#pragma once

#include <QByteArray>
#include <QTest>

#include <cerrno>
#include <cstring>

/// The text of a file of Qt Designer: a form with a button, a box and a label in that, each named
/// after what it is.
///
/// @param topWidget its class
/// @param items     further items of the box, as the file has them
inline QByteArray designerForm(const QByteArray &topWidget, const QByteArray &items = {})
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ui version=\"4.0\">\n <class>Form</class>\n"
           " <widget class=\""
        + topWidget
        + "\" name=\"Form\">\n"
          "  <property name=\"windowTitle\"><string>A title</string></property>\n"
          "  <layout class=\"QVBoxLayout\" name=\"column\">\n"
          "   <item><widget class=\"QPushButton\" name=\"button\">"
          "<property name=\"text\"><string>Press</string></property></widget></item>\n"
          "   <item><widget class=\"QGroupBox\" name=\"box\"><layout class=\"QVBoxLayout\" name=\"inner\">"
          "<item><widget class=\"QLabel\" name=\"label\"/></item>"
        + items + "</layout></widget></item>\n  </layout>\n </widget>\n</ui>\n";
}

/// The column "name" with names of members of QDialog of every kind, for a form's object.
inline void addNamesOfMembers()
{
    QTest::addColumn<QByteArray>("name");

    for (const char *name : {"close", "layoutDirection", "windowTitle", "size", "finished", "Accepted", "DialogCode",
                             "accept", "event", "sizeHint", "children"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

/// A form that is a QDialog with a button of that name.
inline QByteArray formWithButton(const QByteArray &name)
{
    return designerForm("QDialog", "<item><widget class=\"QPushButton\" name=\"" + name + "\"/></item>");
}

/// The columns "text" and "error" with files that uiTools refuses, the first of them missing; %1 in an
/// error is the file's path.
///
/// @param module where classes of widgets are looked up
inline void addBadDesignerFiles(const QByteArray &module)
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("missing") << QByteArray() << "IOError: [Errno 2] " + QByteArray(strerror(ENOENT)) + ": '%1'";
    QTest::newRow("not XML") << QByteArray("panel\n")
                             << QByteArray("ValueError: %1: no Designer file: syntax error: line 1, column 0");
    QTest::newRow("other XML") << QByteArray("<html/>\n")
                               << QByteArray("ValueError: %1: no Designer file: it has no top widget");
    QTest::newRow("unknown class") << designerForm("Gadget")
                                   << "ValueError: %1: there is no class 'Gadget' in " + module;
}
