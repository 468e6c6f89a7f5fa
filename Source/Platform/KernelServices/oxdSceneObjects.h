#pragma once

#include "oxdObject.h"

/// What has a name in the main process.
class OXKERNELSERVICES_EXPORT oxdBaseObject : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdBaseObject(unsigned long long id = 0) { initialize(id); }
};

/// What can be placed in the scene.
class OXKERNELSERVICES_EXPORT oxdSceneObject : public virtual oxdObject
{
    Q_OBJECT

public:
    explicit oxdSceneObject(unsigned long long id = 0) { initialize(id); }
};

/// A picture, for textures and environments.
class OXKERNELSERVICES_EXPORT oxdImage : public oxdBaseObject
{
    Q_OBJECT

public:
    explicit oxdImage(unsigned long long id = 0) { initialize(id); }
};

/// A node of the scene tree. Not for scripts.
class OXKERNELSERVICES_EXPORT oxdNode : public oxdSceneObject
{
    Q_OBJECT

public:
    explicit oxdNode(unsigned long long id = 0) { initialize(id); }
};

OXD_SCENE_OBJECTS(OXD_DECLARE_METATYPES)
