#pragma once

class Console;
class MainProcess;

/// What this process adds to the library's scripts.

/// Lets scripts import what reaches the main process: "from __main__ import oxCameraService", and
/// likewise oxFileIOService, oxMaterialService, oxUndoService and, for @p mainProcess, oxMainProcess.
/// After oxKernelInterface::init(). Python keeps no object alive: all have to outlive the scripts.
void bindServicesForScripts(MainProcess *mainProcess);

/// Shows in @p console what Python prints from now on. After oxKernelInterface::init().
void showScriptOutput(Console *console);
