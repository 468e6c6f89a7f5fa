#pragma once

/// Makes the data-object types known to the meta-type system and to the kernel's object manager,
/// in catalogue order.
void registerDataObjectTypes();

/// Makes the data-object classes, and lists of them, known to Python. Holds for the one
/// interpreter of the process; the caller holds the interpreter lock.
void registerDataObjectsToPython();
