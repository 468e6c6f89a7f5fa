#pragma once

#include "oxdSceneObjects.h"

/// A timer of the main process, which drives animations.
class OXKERNELSERVICES_EXPORT oxdTimer : public oxdBaseObject
{
    Q_OBJECT

public:
    explicit oxdTimer(unsigned long long id = 0) { initialize(id); }
};

OXD_TIMER(OXD_DECLARE_METATYPES)
