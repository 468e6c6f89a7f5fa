#include "InterpreterLock.h"

#include <PythonQt.h>
#include <QApplication>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include "Beacon.h"
#include "Census.h"
#include "PluginHost.h"
#include "SoakFolder.h"
#include "oxKernelInterfaceRemote.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxRenderService.h"

// Rescans plugins that change, come, go and fail, with panels on their way into the overlay and
// out of it, and looks what is left of each rescan. Fails when something grows that should not.
//
//     oxSoak [rescans]

namespace {

FILE *report = nullptr; // the standard output is the plugins'
int complaintCount = 0;

// What a swept plugin leaves: its module, with all its globals. Those here are small.
constexpr int keptModuleBytes = 10'000;
// Pages that come and go with the order in which memory is used.
constexpr int allowedNoiseBytes = 2'000'000;

// The address sanitizer keeps for a while what was freed, so that memory grows for its own reasons.
#ifdef __SANITIZE_ADDRESS__
constexpr bool measuresMemory = false;
#else
constexpr bool measuresMemory = true;
#endif

void complain(const QString &what)
{
    if (++complaintCount <= 20)
        fprintf(report, "%s\n", qPrintable(what));
}

void takeMessage(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (!text.startsWith(QLatin1String("This plugin does not support ")))
        complain(QStringLiteral("Qt says: ") + text);
}

void silenceStandardOutput()
{
    report = fdopen(dup(STDOUT_FILENO), "w");
    if (!report || !freopen("/dev/null", "w", stdout) || !freopen("/dev/null", "w", stderr))
        abort();
}

void giveToPython(QObject *beacon)
{
    const InterpreterLock lock;
    oxKernelInterface::the()->getPythonEngine()->addObject(QStringLiteral("beacon"), beacon);
}

void handleEvents()
{
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

class Soak
{
public:
    Soak();

    /// Rescans, prints a census now and then, and complains about what grew once it was warm.
    void run(int rescans, void (SoakFolder::*change)(int));

    long connectionsMade() const { return m_connectionsMade; }

private:
    void rescan(int number, void (SoakFolder::*change)(int));
    void flash();

    PluginHost m_host;
    Beacon m_beacon;
    SoakFolder m_folder{m_host};
    long m_connectionsMade = 0;
};

Soak::Soak()
{
    auto *view = new QWidget;
    view->setObjectName(QStringLiteral("RenderWindow"));
    m_host.window.setCentralWidget(view);
    m_host.window.resize(800, 600);
    m_host.window.show();
    giveToPython(&m_beacon);
    m_host.scan();
}

void compare(const char *what, int before, int after)
{
    if (after != before)
        complain(QStringLiteral("%1: %2 at first, %3 in the end").arg(QLatin1String(what)).arg(before).arg(after));
}

void Soak::run(int rescans, void (SoakFolder::*change)(int))
{
    const int period = rescans >= 1000 ? 2 * SoakFolder::pluginCount : SoakFolder::pluginCount;
    QVector<Census> rows;
    Census::printHeader(report);
    for (int number = 1; number <= rescans; ++number) {
        rescan(number, change);
        if (number % period == 0) {
            rows.append(Census::take(m_beacon));
            rows.last().print(report, number);
        }
    }

    // The first tenth is for what is filled once.
    const int warm = rows.size() / 10;
    const Census &first = rows.at(warm);
    const Census &last = rows.last();
    compare("widgets", first.widgets, last.widgets);
    compare("connections", first.connections, last.connections);
    compare("open files", first.descriptors, last.descriptors);
    const int measured = (rows.size() - 1 - warm) * period;
    // Deliberate: the module of a plugin that is gone is kept, as its handle is; one goes each time.
    compare("modules, but for those that are kept", first.moduleObjects,
            last.moduleObjects - (change == &SoakFolder::change ? measured : 0));
    compare("entries of sys.modules without a module", first.modules - first.moduleObjects,
            last.modules - last.moduleObjects);

    const double growth = double(last.residentKilobytes - first.residentKilobytes) * 1024 / measured;
    const double allowed = (change == &SoakFolder::change ? keptModuleBytes : 0) + double(allowedNoiseBytes) / measured;
    fprintf(report, "%.0f bytes for each rescan\n\n", growth);
    if (measuresMemory && growth > allowed)
        complain(QStringLiteral("more than %1 bytes").arg(allowed, 0, 'f', 0));
}

void Soak::rescan(int number, void (SoakFolder::*change)(int))
{
    auto *mainWindow = oxKernelServiceFactory::the()->getService<oxMainWindowService>();
    auto *render = oxKernelServiceFactory::the()->getService<oxRenderService>();
    const auto title = [number](int which) { return SoakFolder::remainingTitle(number, which); };

    (m_folder.*change)(number);
    render->addOverlay(title(0));
    render->addOverlay(title(1));
    render->showOverlay();
    mainWindow->showModule(title(2));
    handleEvents();

    m_host.scan();
    flash();
    render->addOverlay(title(3));
    handleEvents();
    render->subOverlay(title(3));
    render->hideOverlay();
    mainWindow->hideModule(title(2));
    handleEvents();
}

// Each handler of the plugins that are there is called once, and no other.
void Soak::flash()
{
    PluginHost::run(QStringLiteral("flashes = []"));
    Q_EMIT m_beacon.flash(1);
    const int called = PluginHost::evaluate(QStringLiteral("len(flashes)")).toInt();
    const int expected = 20 * m_folder.beaconCount();
    m_connectionsMade += expected;
    if (called != expected)
        complain(QStringLiteral("%1 handlers were called, not %2").arg(called).arg(expected));
}

} // namespace

int main(int argc, char **argv)
{
    silenceStandardOutput();
    const QApplication application(argc, argv);
    qInstallMessageHandler(takeMessage); // what Qt says as it starts is the machine's
    const int rescans = argc > 1 ? std::atoi(argv[1]) : 2000;
    if (rescans < 2 * SoakFolder::pluginCount) {
        fprintf(report, "usage: oxSoak [rescans, at least %d]\n", 2 * SoakFolder::pluginCount);
        return 2;
    }

    Soak soak;
    fprintf(report, "Each time another one of %d plugins is gone, and one is back:\n", SoakFolder::pluginCount);
    soak.run(rescans, &SoakFolder::change);
    fprintf(report, "All stay:\n");
    soak.run(std::max(rescans / 4, 2 * SoakFolder::pluginCount), &SoakFolder::changeText);
    fprintf(report, "%ld connections were made to one object\n", soak.connectionsMade());
    return complaintCount == 0 ? 0 : 1;
}
