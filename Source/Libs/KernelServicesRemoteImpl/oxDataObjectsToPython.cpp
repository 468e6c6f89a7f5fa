// Before any header of Qt, as Python's own headers ask for.
#include "oxdObjectManagerPython.h"

#include "oxDataObjectTypes.h"

#include "oxdDataObjects.h"

void registerDataObjectsToPython()
{
#define REGISTER_InPython(Class) oxdObjectManager::registerToPython<Class>();
#define REGISTER_NotInPython(Class)
#define REGISTER_CLASS(Class, Levels, Container, Python) REGISTER_##Python(Class)
    OXD_CLASSES(REGISTER_CLASS)
}
