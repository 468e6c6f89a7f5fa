#pragma once

/// All classes of data objects.

#include "oxdActions.h"
#include "oxdMaterials.h"
#include "oxdObject.h"
#include "oxdSceneObjects.h"
#include "oxdTimer.h"
#include "oxdWebEngine.h"
