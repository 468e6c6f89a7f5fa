#pragma once

#include "oxdObject.h"

/// A set of action graphs.
class OXKERNELSERVICES_EXPORT oxdActionProject : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdActionProject(unsigned long long id = 0) { initialize(id); }
};

/// A graph of action containers, and how they follow each other.
class OXKERNELSERVICES_EXPORT oxdActionGraph : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdActionGraph(unsigned long long id = 0) { initialize(id); }
};

/// One step of an action graph.
class OXKERNELSERVICES_EXPORT oxdActionContainer : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdActionContainer(unsigned long long id = 0) { initialize(id); }
};

/// An input or output of an action container.
class OXKERNELSERVICES_EXPORT oxdActionSlot : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdActionSlot(unsigned long long id = 0) { initialize(id); }
};

OXD_ACTIONS(OXD_DECLARE_METATYPES)
