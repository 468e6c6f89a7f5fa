// Before any header of Qt, as Python's own headers ask for.
#include <PythonQt.h>
#include <PythonQt_QtAll.h>

#include "oxKernelInterfaceRemote.h"
#include "oxKernelInterfaceRemote_p.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QPointer>
#include <QThread>
#include <QVBoxLayout>
#include <QWidget>

#include "oxActionService.h"
#include "oxAmbientOcclusionService.h"
#include "oxCameraService.h"
#include "oxClippingService.h"
#include "oxClusterService.h"
#include "oxConnectorService.h"
#include "oxControllerService.h"
#include "oxDataObjectTypes.h"
#include "oxFileIOServiceRemoteImpl.h"
#include "oxGeometryService.h"
#include "oxKernelService.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxMaterialService.h"
#include "oxMessageService.h"
#include "oxNodeService.h"
#include "oxObjectService.h"
#include "oxOverlayService.h"
#include "oxPlatform.h"
#include "oxPlatformService.h"
#include "oxPluginSource.h"
#include "oxPreferencesServiceRemoteImpl.h"
#include "oxPythonEnvironment.h"
#include "oxQRPCClient.h"
#include "oxRenderServiceRemoteImpl.h"
#include "oxSequencerService.h"
#include "oxSurfaceAnalysisService.h"
#include "oxTouchSensorService.h"
#include "oxTransformService.h"
#include "oxTreeService.h"
#include "oxUndoService.h"
#include "oxVariantSetsService.h"
#include "oxVrpnTrackingService.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

template<class Interface, class Implementation = Interface, class... Arguments>
void createService(Arguments... arguments)
{
    auto *factory = oxKernelServiceFactory::the();
    auto *service = new Implementation(arguments...);
    factory->fileService<Interface>(service);
    // Services live until the process ends, but a script can delete the one it sees.
    QObject::connect(service, &QObject::destroyed, service, [factory, service] { factory->forgetService(service); });
}

void createServices()
{
    createService<oxBaseService>();   // Deliberate: a bare service under the base type's own key
    createService<oxKernelService>(); // Deliberate: not oxKernelServiceRemoteImpl
    createService<oxFileIOService, oxFileIOServiceRemoteImpl>();
    createService<oxMainWindowService, oxMainWindowServiceRemoteImpl>();
    createService<oxMessageService>();
    createService<oxRenderService, oxRenderServiceRemoteImpl>();
    createService<oxTreeService>();
    createService<oxControllerService>();
    createService<oxTouchSensorService>();
    createService<oxSequencerService>();
    createService<oxAmbientOcclusionService>();
    createService<oxOverlayService>();
    createService<oxTransformService>();
    createService<oxPlatformService>();
    createService<oxPreferencesService, oxPreferencesServiceRemoteImpl>(nullptr);
    createService<oxClippingService>();
    createService<oxVariantSetsService>();
    createService<oxSurfaceAnalysisService>();
    createService<oxVrpnTrackingService>();
    createService<oxMaterialService>();
    createService<oxGeometryService>();
    createService<oxCameraService>();
    createService<oxNodeService>();
    createService<oxConnectorService>();
    createService<oxObjectService>();
    createService<oxClusterService>();
    createService<oxActionService>();
    createService<oxUndoService>();
}

QByteArray nameInPython(const oxBaseService *service)
{
    QByteArray name = service->metaObject()->className();
    for (const char *suffix : {"RemoteImpl", "Impl"}) {
        if (name.endsWith(suffix)) {
            name.chop(static_cast<int>(qstrlen(suffix)));
            break;
        }
    }
    return name;
}

// The services that are filed now. A script, or what is called for one of them, may delete others.
QVector<QPointer<oxBaseService>> filedServices()
{
    const QList<oxBaseService *> services = oxKernelServiceFactory::the()->getServices();
    return {services.begin(), services.end()};
}

void addPythonBindings(PythonQtObjectPtr *module, bool verbose)
{
    if (!module)
        return;
    const QList<oxBaseService *> services = oxKernelServiceFactory::the()->getServices();
    for (oxBaseService *service : services) {
        if (!service)
            continue;
        const QByteArray name = nameInPython(service);
        if (name != "oxMessageService")
            continue;
        if (verbose)
            printf("python binding: %s\n", name.constData());
        module->addObject(QString::fromUtf8(name), service);
    }
}

// Without the trace function that a plugin may have set: if it raised an exception, there would be no module.
PythonQtObjectPtr *createPluginModule()
{
    PyThreadState *thread = PyThreadState_GET();
    ++thread->tracing; // as Python itself does while it calls that function
    auto *module = new PythonQtObjectPtr(PythonQt::self()->createUniqueModule());
    --thread->tracing;
    return module;
}

void evalStatements(PythonQtObjectPtr *module, const QString &text)
{
    module->evalScript(text, Py_file_input);
}

// A text may have deleted the variable itself; no error must be left pending for whoever is next.
void removeVariable(PythonQtObjectPtr *module, const QString &name)
{
    module->removeVariable(name);
    PyErr_Clear();
}

QString searchPathScript()
{
    const QByteArray base = QString::fromUtf8(oxPlatform::getBaseDir()).toUtf8();
    // Deliberate: the folder is not escaped; one with a double quote breaks the script.
    return QString::asprintf("sys.path.insert(0, \"%s/lib/python\")\n"
                             "sys.path.insert(0, \"%s/lib/python/lib-dynload\")\n"
                             "sys.path.insert(0, \"%s/examples/presentations\")\n"
                             "sys.path.insert(0, \"%s/lib/python/site-packages\")",
                             base.constData(), base.constData(), base.constData(), base.constData());
}

// Prints each complete line and keeps the rest. Only the new text is searched for line feeds, and
// all lines are encoded at once: the time is linear in the text, in one piece or in a million.
template<class PrintLine>
void echoLines(QString *buffer, const QString &text, const PrintLine &printLine)
{
    const int lastLineFeed = text.lastIndexOf(QLatin1Char('\n'));
    if (lastLineFeed < 0) {
        buffer->append(text);
        return;
    }
    const QStringRef complete = text.leftRef(lastLineFeed);
    QByteArray lines = buffer->isEmpty() ? complete.toUtf8() : buffer->append(complete).toUtf8();
    *buffer = text.mid(lastLineFeed + 1);

    char *line = lines.data();
    char *const end = line + lines.size();
    for (char *lineEnd = std::find(line, end, '\n'); lineEnd != end; lineEnd = std::find(line, end, '\n')) {
        *lineEnd = '\0';
        printLine(line);
        line = lineEnd + 1;
    }
    printLine(line);
}

QString pluginKey(const QString &path)
{
    return QFileInfo(path).baseName();
}

QString moduleName(const QString &key)
{
    return key.startsWith(QLatin1String("ox")) ? key.mid(2) : key;
}

const QLatin1String pluginMenu("Scripts");
const QLatin1String widgetVariable("TARNPluginWidget");
const QLatin1String widgetIdVariable("TARNPluginWidgetId");

QWidget *createContainer()
{
    auto *container = new QWidget;
    container->setContentsMargins(0, 0, 0, 0);
    auto *layout = new QVBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    container->setLayout(layout);
    return container;
}

QByteArray nameOf(PyObject *module)
{
    QByteArray name = PyModule_GetName(module);
    PyErr_Clear(); // a text may have deleted the name, or put something else in its place
    return name;
}

// A module that PythonQt makes is kept in sys.modules: emptied, it would stay there for good.
void leaveModules(PyObject *module, const QByteArray &name)
{
    PyObject *modules = PyImport_GetModuleDict();
    if (PyDict_GetItemString(modules, name.constData()) == module)
        PyDict_DelItemString(modules, name.constData());
}

// The clean-up script leaves its own variable.
bool isCleared(PyObject *module)
{
    return PyDict_Size(PyModule_GetDict(module)) <= 1;
}

// Python sets the globals of a module that dies to None: those as well that the clean-up could not delete
// and others still use. So the module dies without them, and they live as long as they are used.
void keepGlobals(PyObject *module)
{
    if (Py_REFCNT(module) == 1) {
        PythonQtObjectPtr globals;
        globals.setNewRef(std::exchange(*_PyObject_GetDictPtr(module), nullptr));
        return;
    }
    // Deliberate: who holds the module sees what is left of it, and so it never dies.
    if (!isCleared(module))
        Py_INCREF(module);
}

// The plugin's module is about to get a new content, and its globals a new module. Either may run
// code of the plugin as it goes, and that code end in another scan: the record is left first.
void discardContent(oxKernelInterfaceP::oxPluginInfo *plugin)
{
    const QPointer<QWidget> widget = std::exchange(plugin->widget, nullptr);
    PythonQtObjectPtr *module = std::exchange(plugin->module, nullptr);
    if (widget)
        widget->setParent(nullptr); // or else the other scan deletes it once more, as its dock's content
    delete widget;
    if (!module)
        return;
    const QByteArray name = nameOf(*module);
    evalStatements(module,
                   QStringLiteral("for name in dir():\n"
                                  "    del globals()[name]\n"));
    leaveModules(*module, name);
    keepGlobals(*module);
    delete module;
}

void showInMainWindow(const QString &name, QWidget *container, bool isReload)
{
    auto *factory = oxKernelServiceFactory::the();
    auto *mainWindow = factory->getService<oxMainWindowService>();
    if (isReload) {
        mainWindow->changeModule(name, pluginMenu, container);
        factory->getService<oxRenderService>()->updateOverlay(name);
    } else {
        mainWindow->addModule(name, pluginMenu, container, QString(), QIcon(), QString(), Qt::NoDockWidgetArea);
    }
}

const char *yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

// The part of loading that needs the file: opens it, decides on the binding and runs the text.
bool runPluginFile(const QString &path, PythonQtObjectPtr *module)
{
    QFile file(path);
    // A pipe would be waited for until somebody writes into it, and a device may have no end.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        fprintf(stderr, "Couldn't load '%s' plugin!\n", path.toUtf8().constData());
        return false;
    }
    const QByteArray source = file.readAll();
    file.close();
    const oxPluginBindings bindings = detectBindings(source);
    printf("PythonQt: %s PySide2: %s\n", yesOrNo(bindings.usesPythonQt), yesOrNo(bindings.usesPySide2));

    if (bindings.usesPythonQt && bindings.usesPySide2) {
        fprintf(stderr, "Couldn't load plugin '%s', it seems to use PythonQt annd PySide2!\n",
                path.toUtf8().constData());
        return false;
    }
    QString text = pluginText(source);
    if (bindings.usesPySide2)
        text = rewriteForPySide2(std::move(text));
    evalStatements(module, text);
    printf("Loaded '%s' python plugin.\n", pluginKey(path).toUtf8().constData());
    return true;
}

} // namespace

oxKernelInterface *oxKernelInterface::the()
{
    static oxKernelInterface ksi(qApp ? qApp->thread() : nullptr);
    return &ksi;
}

oxKernelInterface::oxKernelInterface()
    : oxKernelInterface(QThread::currentThread())
{}

oxKernelInterface::oxKernelInterface(const QThread *thread)
    : d(new oxKernelInterfaceP)
{
    if (thread != QThread::currentThread())
        moveToThread(nullptr);
}

oxKernelInterface::~oxKernelInterface()
{
    delete d;
}

void oxKernelInterface::init(oxQRPCClient *client, bool flag)
{
    d->client = client;
    d->initFlag = flag;
    createServices();
    registerDataObjectTypes();
    registerServices();
    initPythonInterpreter();
}

void oxKernelInterface::registerServices()
{
    const QVector<QPointer<oxBaseService>> services = filedServices();
    for (const QPointer<oxBaseService> &service : services) {
        if (service)
            service->setClient(d->client);
        if (service)
            d->client->registerService(service);
    }
}

void oxKernelInterface::initPythonInterpreter()
{
    if (d->pythonEngine) {
        const PyGILState_STATE state = PyGILState_Ensure();
        addPythonBindings(d->pythonEngine, true);
        PyGILState_Release(state);
        return;
    }

    // Python's output comes to the thread that the object lives in.
    if (!thread())
        moveToThread(QThread::currentThread());

    Py_DontWriteBytecodeFlag = 1;
    PyEval_InitThreads();
    PythonQt::init(PythonQt::RedirectStdOut | PythonQt::IgnoreSiteModule, QByteArray());
    PythonQt_QtAll::init();
    setPythonExecutable(QByteArray(oxPlatform::getBaseDir()).toStdString());
    completePythonStreams();

    // Start-up gives up the interpreter lock: whatever enters Python later has to take it.
    PythonQt::setEnableThreadSupport(true);
    // A script's sys.exit() ends the script, not the process: where PythonQt runs it, and where
    // Python itself prints the exception.
    PythonQt::self()->setSystemExitExceptionHandlerEnabled(true);
    Py_InspectFlag = 1;

    connect(PythonQt::self(), &PythonQt::pythonStdOut, this, &oxKernelInterface::pythonStdOut);
    connect(PythonQt::self(), &PythonQt::pythonStdErr, this, &oxKernelInterface::pythonStdErr);
    d->pythonEngine = new PythonQtObjectPtr(PythonQt::self()->getMainModule());

    PythonQtObjectPtr *engine = the()->getPythonEngine();
    evalStatements(engine, QStringLiteral("import sys"));
    evalStatements(engine, QStringLiteral("sys.dont_write_bytecode = True"));
    evalStatements(engine, searchPathScript());

    addPythonBindings(d->pythonEngine, true);
    registerDataObjectsToPython();
    PyEval_SaveThread();
}

PythonQtObjectPtr *oxKernelInterface::getPythonEngine() const
{
    return d->pythonEngine;
}

void oxKernelInterface::loadScriptPlugins()
{
    const PyGILState_STATE state = PyGILState_Ensure();
    PythonQt::self()->removeSignalHandlers();

    for (oxKernelInterfaceP::oxPluginInfo &plugin : d->plugins)
        plugin.found = 0;

    const QString folder = QString::fromUtf8(oxPlatform::getPluginsDir()) + QLatin1String("/Scripts");
    // Absolute, as each plugin is opened with its own folder as the current one.
    QDirIterator files(QDir::current().absoluteFilePath(folder), {QStringLiteral("*.js"), QStringLiteral("*.py")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        if (files.fileInfo().suffix() == QLatin1String("py"))
            loadPythonPlugin(files.filePath());
    }

    const QStringList keys = d->plugins.keys();
    for (const QString &key : keys) {
        // Code that runs as a module goes may end in another scan, which has then swept the rest.
        const auto plugin = d->plugins.constFind(key);
        if (plugin == d->plugins.constEnd() || plugin->found)
            continue;
        oxKernelServiceFactory::the()->getService<oxMainWindowService>()->subModule(moduleName(key));
        d->plugins.remove(key); // Deliberate: its Python module stays as it is, handle and globals
    }
    PyGILState_Release(state);
}

bool oxKernelInterface::loadPythonPlugin(const QString &path)
{
    const QString key = pluginKey(path);
    PythonQtObjectPtr *module = createPluginModule();
    const QPointer<QWidget> made = createContainer();

    const auto loaded = d->plugins.find(key);
    if (loaded != d->plugins.end())
        discardContent(&*loaded);
    const bool isReload = d->plugins.contains(key); // not if it was swept meanwhile
    // Until it is in the main window it is a window, which the old content may delete as it goes.
    QWidget *container = made ? made.data() : createContainer();

    module->addObject(widgetVariable, container);
    module->addVariable(widgetIdVariable, QVariant(reinterpret_cast<qulonglong>(container)));
    addPythonBindings(module, false);

    showInMainWindow(moduleName(key), container, isReload);
    d->plugins.insert(key, {1, container, module});
    connect(container, &QObject::destroyed, this, [this, key, container] { forgetContainer(key, container); });

    // A text that ends in another scan may reload this very plugin, and free the handle.
    PythonQtObjectPtr heldModule(*module);
    const QString previousFolder = QDir::currentPath();
    QDir::setCurrent(QFileInfo(path).absolutePath());
    const bool result = runPluginFile(path, &heldModule);
    removeVariable(&heldModule, widgetVariable);
    removeVariable(&heldModule, widgetIdVariable);
    QDir::setCurrent(previousFolder);
    return result;
}

void oxKernelInterface::callAllInit()
{
    const QVector<QPointer<oxBaseService>> services = filedServices();
    for (const QPointer<oxBaseService> &service : services)
        QMetaObject::invokeMethod(service, "init", Qt::DirectConnection);
}

void oxKernelInterface::loopAll() {}

void oxKernelInterface::pythonStdOut(QString text) // NOLINT(performance-unnecessary-value-param)
{
    echoLines(&d->stdOutBuffer, text, [](const char *line) { printf("python info: '%s'\n", line); });
}

void oxKernelInterface::pythonStdErr(QString text) // NOLINT(performance-unnecessary-value-param)
{
    echoLines(&d->stdErrBuffer, text, [](const char *line) { fprintf(stderr, "python error: '%s'\n", line); });
}

// A plugin may delete its own container, and the user the window that holds it.
void oxKernelInterface::forgetContainer(const QString &key, const QWidget *container)
{
    const auto plugin = d->plugins.find(key);
    if (plugin != d->plugins.end() && plugin->widget == container)
        plugin->widget = nullptr;
}
