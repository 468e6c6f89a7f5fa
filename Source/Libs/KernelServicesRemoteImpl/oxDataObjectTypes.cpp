#include "oxDataObjectTypes.h"

void registerDataObjectTypes() {}

void registerDataObjectsToPython() {}
