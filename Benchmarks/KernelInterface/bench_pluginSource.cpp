#include "oxPluginSource.h"

#include <benchmark/benchmark.h>

#include <QTemporaryFile>

// All that is done with the text of a large plugin before Python gets it: beside reading and
// decoding it. The size is in megabytes.

namespace {

QString pluginFile(qint64 size)
{
    static QTemporaryFile file;
    if (!file.open() || file.size() >= size)
        return file.fileName();
    const QByteArray block("# from PySide2 the widgets, from uiTools the form\n"
                           "import os, sys\n"
                           "\n"
                           "class Panel(object):\n"
                           "    def __init__(self, parent, rows=12, columns=7):\n"
                           "        self.cells = [[row * column for column in range(columns)] for row in range(rows)]\n"
                           "        self.total = sum(sum(row) for row in self.cells)\n"
                           "\n"
                           "    def describe(self):\n"
                           "        return \"a table of %d cells, %d altogether\" % (len(self.cells), self.total)\n"
                           "\n");
    file.write("from PySide2 import QtWidgets\nimport uiTools\n");
    while (file.size() < size) {
        file.write(block.repeated(100));
        file.write("form, base = uiTools.loadUiType(\"panel.ui\")\npanel = Panel(TARNPluginWidget)\n");
    }
    file.close();
    return file.fileName();
}

QString readAndDecode(QFile *file)
{
    return QString::fromUtf8(file->readAll());
}

QString prepare(QFile *file)
{
    const QByteArray source = file->readAll();
    if (!detectBindings(source).usesPySide2)
        return QString();
    return rewriteForPySide2(pluginText(source));
}

void pluginText(benchmark::State &state, QString (*read)(QFile *))
{
    QFile file(pluginFile(state.range(0) << 20));
    for (auto _ : state) {
        file.open(QIODevice::ReadOnly);
        if (read(&file).size() < (state.range(0) << 20))
            state.SkipWithError("text is missing");
        file.close();
    }
}

BENCHMARK_CAPTURE(pluginText, bare, readAndDecode)->Name("50 MB of source/bare")->Arg(50);
BENCHMARK_CAPTURE(pluginText, ours, prepare)->Name("50 MB of source/ours")->Arg(50);

} // namespace
