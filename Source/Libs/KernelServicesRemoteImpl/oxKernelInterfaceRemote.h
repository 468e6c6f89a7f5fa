#pragma once

#include <QObject>
#include <QString>

#include "oxkernelservicesremoteimpl_export.h"

class PythonQtObjectPtr;
class QThread;
class QWidget;
class oxKernelInterfaceP;
class oxQRPCClient;

/// The one object through which a process drives this library.
///
/// Call init() once, on the object that the() returns, then set the main window on the
/// main-window service, then loadScriptPlugins(). GUI thread only, but for the().
class OXKERNELSERVICESREMOTEIMPL_EXPORT oxKernelInterface : public QObject
{
    Q_OBJECT

public:
    /// The interface of the process, made on the first call, by whichever thread, and destroyed
    /// at process exit. It lives in the GUI thread. When another thread makes it, or the application
    /// object is not there yet, it lives in no thread before init(), and then in the one that calls it.
    static oxKernelInterface *the();

    oxKernelInterface();

    /// Leaves the services, the client, the Python engine and the interpreter as they are: they
    /// live until the process ends.
    ~oxKernelInterface() override;

    /// Starts everything: makes the 28 services and files them in oxKernelServiceFactory, makes
    /// the data-object types known, binds the services to @p client, starts Python.
    ///
    /// Afterwards no thread holds the interpreter lock: take it with PyGILState_Ensure() before
    /// each use of Python.
    ///
    /// Py_InspectFlag is 1 afterwards, so that sys.exit() in a plugin does not end the process. In
    /// the caller's own PyRun_SimpleString() it does not either, but prints the exception. Code that
    /// may end the process is run by PyRun_String(): when that fails and
    /// PyErr_ExceptionMatches(PyExc_SystemExit), set the flag to 0 and call PyErr_Print(), which ends
    /// the process. At any other time the flag stays 1, as plugins may run whenever Python does.
    ///
    /// @param client the connection to the main process; not null, not owned, and to outlive
    ///               the services
    /// @param flag   kept, and read by nothing in this library
    ///
    /// A second call makes 28 new services that replace the earlier ones, which stay alive; the
    /// running interpreter gets the new message service.
    ///
    /// Prints "python binding: oxMessageService" on standard output.
    void init(oxQRPCClient *client, bool flag);

    /// Gives every filed service the client and registers it there, one after another in the
    /// order of oxKernelServiceFactory::getServices(). Part of init().
    ///
    /// Works on the services that are filed when it is called, as callAllInit() does: null is
    /// passed over, and so is a service that is deleted before its turn.
    void registerServices();

    /// Starts the interpreter with its output echoed, and the search path below the base folder.
    /// Part of init(). Reports nothing; what fails in Python is echoed as its errors are.
    ///
    /// With a running interpreter it only binds the services anew.
    void initPythonInterpreter();

    /// Python's module __main__; null before init(). Owned by the library and never freed.
    PythonQtObjectPtr *getPythonEngine() const;

    /// Loads each file "*.py" anywhere below the folder "Scripts" of the plugins folder with
    /// loadPythonPlugin(): a plugin that is there already is reloaded in place. Then removes the
    /// modules of plugins whose files are gone. May be called at any time after init(); holds
    /// the interpreter lock meanwhile.
    ///
    /// Hidden files and folders, and folders that are only linked, are passed over. The files come
    /// in the order of the file system. Without a plugins folder, the folder is "/Scripts".
    ///
    /// All connections from Qt signals to Python callables are dropped first.
    void loadScriptPlugins();

    /// Runs a Python file in a module and a panel of its own. The caller holds the interpreter lock.
    ///
    /// The file's base name, up to its first dot, is the plugin's key; without a leading "ox" it
    /// is the title of its panel in the menu "Scripts". A key that was loaded before is reloaded
    /// in place: its old panel content is deleted and its old module emptied. While the text
    /// runs, its folder is the current one, and it sees the globals TARNPluginWidget (the
    /// panel's empty container, which has a vertical layout), TARNPluginWidgetId (its address)
    /// and oxMessageService; only the last stays.
    ///
    /// A text that imports PySide2 and not PythonQt has "uiTools.loadUiType" replaced by
    /// "uiTools.loadUiTypePySide" and "TARNPluginWidget" by "uiTools.getWidget(TARNPluginWidgetId)".
    ///
    /// @param path the full path: a relative one is looked up in the plugin's own folder
    /// @return true when the text was handed to Python, also if it failed there; false when the
    ///         file cannot be opened, which pipes and devices never are, or names both bindings.
    ///         The panel, empty, exists even then.
    ///
    /// Standard output: "PythonQt: yes PySide2: no", then "Loaded 'Key' python plugin."; standard
    /// error: "Couldn't load '/path' plugin!" or "Couldn't load plugin '/path', it seems to use
    /// PythonQt annd PySide2!".
    bool loadPythonPlugin(const QString &path);

    /// Invokes "init" on every filed service, in this thread, in the order of the registry. Qt
    /// prints a warning for a service without such a method.
    void callAllInit();

    /// To be called once in each turn of the process's main loop. Does nothing here.
    void loopAll();

    /// Take text that Python wrote, in pieces as they come, and print each complete line as
    /// "python info: '…'" on standard output or "python error: '…'" on standard error. What
    /// follows the last line feed waits for the next piece.
    void pythonStdOut(QString text);
    void pythonStdErr(QString text);

private:
    Q_DISABLE_COPY(oxKernelInterface)

    /// Lives in the current thread if that is @p thread, and otherwise in none, until Python starts.
    explicit oxKernelInterface(const QThread *thread);

    void forgetContainer(const QString &key, const QWidget *container);

    oxKernelInterfaceP *d;
};
