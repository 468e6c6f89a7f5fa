#include "Census.h"

#include <QApplication>
#include <QDir>
#include <QFile>

#include <malloc.h>
#include <unistd.h>

#include "Beacon.h"
#include "PluginHost.h"

namespace {

long residentPages()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        qFatal("cannot read /proc/self/statm");
    return statm.readAll().split(' ').value(1).toLong();
}

} // namespace

Census Census::take(const Beacon &beacon)
{
    PluginHost::run(QStringLiteral("import gc, sys\n"
                                   "gc.collect()\n"));
    Census census;
    census.modules = PluginHost::evaluate(QStringLiteral("len(sys.modules)")).toInt();
    census.moduleObjects =
        PluginHost::evaluate(QStringLiteral("sum(type(o) is type(sys) for o in gc.get_objects())")).toInt();
    census.residentKilobytes = residentPages() * (sysconf(_SC_PAGESIZE) / 1024);
    const struct mallinfo2 heap = mallinfo2();
    census.heapKilobytes = long((heap.uordblks + heap.hblkhd) / 1024);
    census.widgets = QApplication::allWidgets().size();
    census.connections = beacon.connectionCount();
    census.descriptors =
        QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
    return census;
}

void Census::printHeader(FILE *stream)
{
    fprintf(stream, "rescans  memory kB    heap kB  widgets  sys.modules  modules  connections  files\n");
}

void Census::print(FILE *stream, int rescans) const
{
    fprintf(stream, "%7d %10ld %10ld %8d %12d %8d %12d %6d\n", rescans, residentKilobytes, heapKilobytes, widgets,
            modules, moduleObjects, connections, descriptors);
    fflush(stream);
}
