// Before any header of Qt, as Python's own headers ask for.
#include <PythonQt.h>

#include "Scripting.h"

#include "Console.h"
#include "MainProcess.h"
#include "oxCameraService.h"
#include "oxFileIOService.h"
#include "oxKernelInterface.h"
#include "oxKernelServiceFactory.h"
#include "oxMaterialService.h"
#include "oxUndoService.h"

void bindServicesForScripts(MainProcess *mainProcess)
{
    auto *factory = oxKernelServiceFactory::the();
    PythonQtObjectPtr *main = oxKernelInterface::the()->getPythonEngine();
    const PyGILState_STATE state = PyGILState_Ensure();
    main->addObject(QStringLiteral("oxCameraService"), factory->getService<oxCameraService>());
    main->addObject(QStringLiteral("oxFileIOService"), factory->getService<oxFileIOService>());
    main->addObject(QStringLiteral("oxMainProcess"), mainProcess);
    main->addObject(QStringLiteral("oxMaterialService"), factory->getService<oxMaterialService>());
    main->addObject(QStringLiteral("oxUndoService"), factory->getService<oxUndoService>());
    PyGILState_Release(state);
}

void showScriptOutput(Console *console)
{
    QObject::connect(PythonQt::self(), &PythonQt::pythonStdOut, console, &Console::addOutput);
    QObject::connect(PythonQt::self(), &PythonQt::pythonStdErr, console, &Console::addError);
}
