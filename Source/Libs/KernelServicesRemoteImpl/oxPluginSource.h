#pragma once

#include <QByteArray>
#include <QString>

/// Which of the two Qt bindings a plugin's lines import.
struct oxPluginBindings
{
    bool usesPythonQt = false;
    bool usesPySide2 = false;
};

/// What of a file's bytes is run: they are UTF-8 text, up to the first zero byte.
QString pluginText(const QByteArray &source);

/// Looks through all lines of a file, zero bytes or not. A line counts for a binding when it holds
/// the binding's name and "import", in any order, unless its very first character is a "#". A byte
/// order mark of UTF-8 is no character.
oxPluginBindings detectBindings(const QByteArray &source);

/// The text with the helpers' PySide2 variants in place of the ones for PythonQt.
QString rewriteForPySide2(QString text);
