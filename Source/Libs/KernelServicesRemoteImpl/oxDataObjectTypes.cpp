#include "oxDataObjectTypes.h"

#include "oxdDataObjects.h"
#include "oxdObjectManager.h"

void registerDataObjectTypes()
{
#define REGISTER_CLASS(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
#define REGISTER_ENUMERATION(Enumeration) qRegisterMetaTypeStreamOperators<Enumeration>();
    OXD_CATALOGUE(REGISTER_CLASS, REGISTER_ENUMERATION)
}
